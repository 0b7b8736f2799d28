// The model: a container of elements with transactions, observers and a loader.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "framework/export.h"
#include "framework/uuid.h"
#include "framework/value.h"

namespace mf::zero {

class BuilderValues;
class ChangeSet;
class ModelElement;
class ModelImpl;
namespace meta {
class Class;
}

/// Hears of every committed change set of a model, once, after the outermost commit; a set in which
/// everything ended where it began is not told. It may read, write (in a new transaction, heard of
/// afterwards), unsubscribe and destroy. An exception reaches the caller of the commit after the
/// other observers were told; what was committed stays.
class MF0_API Observer {
 public:
  virtual ~Observer() = default;
  virtual void changed(const ChangeSet& changes) = 0;
};

/// Ends the observation when it is destroyed. Safe to outlive the model.
class MF0_API Subscription {
 public:
  Subscription() = default;
  Subscription(Subscription&& other) noexcept;
  Subscription& operator=(Subscription&& other) noexcept;
  ~Subscription() { end(); }
  void end();

 private:
  friend class ModelImpl;
  struct Entry;
  explicit Subscription(std::shared_ptr<Entry> entry) : entry_(std::move(entry)) {}
  std::shared_ptr<Entry> entry_;
};

/// Brings elements into memory when they are looked at.
class MF0_API ElementLoader {
 public:
  virtual ~ElementLoader() = default;
  /// Fills `values` with what the element of that identity and class holds; references may be
  /// proxies. Returns false for an identity it does not know. It must not change the model except
  /// by creating proxies. Where the other end of a two-sided reference, or the owner of a child, is
  /// in memory and says otherwise, that counts.
  virtual bool load(const uuid& identity, BuilderValues& values) = 0;
};

/// What `findElement` does with an element that is not loaded.
enum class FindElementBehavior {
  kAsItIs,  ///< answers the proxy
  kLoaded,  ///< loads it first
};

/// A change in progress. Destroyed without commit, it rolls everything back to where it began.
/// Transactions of one model end in the reverse order of their beginning.
class MF0_API Transaction {
 public:
  Transaction(Transaction&& other) noexcept;
  Transaction& operator=(Transaction&&) = delete;
  ~Transaction();

  /// Ends the transaction and keeps its changes; the outermost one tells the observers, which see
  /// `result` in the change set. Raises CannotEndTransaction when it has ended already or an inner
  /// one is still open, and what observers threw.
  void commit(std::optional<Value> result = std::nullopt);
  /// Ends the transaction and undoes its changes. Raises CannotEndTransaction as commit does.
  void rollback();
  bool isOpen() const;

 private:
  friend class ModelImpl;
  Transaction(ModelImpl& model, std::uint32_t depth);
  void end(bool keep, std::optional<Value> result);
  ModelImpl* model_;
  std::uint32_t depth_;
  std::uint64_t serial_;
};

/// The counted handle of a model. Empty by default; `create` makes a new model. A model lives as
/// long as handles on it or on any of its elements.
class MF0_API Model {
 public:
  using Impl = ModelImpl;
  class Freezer;
  class Thawer;

  Model() = default;
  explicit Model(ModelImpl* impl);
  Model(const Model& other) : Model(other.impl_) {}
  Model(Model&& other) noexcept : impl_(std::exchange(other.impl_, nullptr)) {}
  Model& operator=(Model other) noexcept {
    std::swap(impl_, other.impl_);
    return *this;
  }
  ~Model();

  static Model create();
  /// A model whose handles several threads may copy at once, for one that is read everywhere after
  /// it was filled; changing it stays one thread's business. Its elements do not keep it alive.
  static Model createShared();

  explicit operator bool() const { return impl_ != nullptr; }
  /// Raises CannotUseEmptyHandle for an empty handle.
  ModelImpl* operator->() const;
  ModelImpl* impl() const { return impl_; }
  bool operator==(const Model& other) const = default;

 private:
  ModelImpl* impl_ = nullptr;
};

/// Makes a frozen model writable while it lives; the last of several freezes it again.
class MF0_API Model::Thawer {
 public:
  explicit Thawer(Model model);
  Thawer(Thawer&& other) noexcept;
  Thawer& operator=(Thawer&&) = delete;
  ~Thawer();

 private:
  Model model_;
};

/// Freezes a model: every change raises CannotModifyFrozenModel until it is thawed.
class MF0_API Model::Freezer {
 public:
  explicit Freezer(Model model) : model_(std::move(model)) {}
  void freeze() const;
  [[nodiscard]] Thawer thaw() const { return Thawer(model_); }
  /// Makes the model writable for good.
  void unfreeze() const;

 private:
  Model model_;
};

}  // namespace mf::zero
