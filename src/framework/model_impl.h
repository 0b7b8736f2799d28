// The behaviour of a model: its elements, the open transaction, its observers.
#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "framework/class_info.h"
#include "framework/element.h"
#include "framework/element_pool.h"
#include "framework/export.h"
#include "framework/identity_index.h"
#include "framework/list_index.h"
#include "framework/model.h"
#include "framework/undo_log.h"

namespace mf::zero {

/// `Model::Impl`. Used from one thread at a time.
class MF0_API ModelImpl {
 public:
  explicit ModelImpl(bool shared);
  ModelImpl(const ModelImpl&) = delete;
  ModelImpl& operator=(const ModelImpl&) = delete;
  ~ModelImpl();

  void addRef() noexcept { shared_ ? addSharedRef() : static_cast<void>(++refs_); }
  void removeRef() noexcept {
    if (shared_) {
      removeSharedRef();
    } else if (--refs_ == 0) {
      delete this;
    }
  }

  /// Begins a transaction inside the open one, if any. With `outermost` set, raises
  /// CannotNestTransaction when another is open. Raises CannotUseClosedModel.
  [[nodiscard]] Transaction beginTransaction(bool outermost = false);
  bool isInTransaction() const { return depth_ > 0; }

  /// The element with that identity, of any class; empty if there is none.
  ModelElement findElement(const uuid& identity,
                           FindElementBehavior behavior = FindElementBehavior::kAsItIs);
  /// How many elements the model holds, contained ones and proxies included.
  std::size_t size() const { return liveElements_; }
  /// All elements of the class (and, if asked, its subclasses) in creation order per class.
  std::vector<ModelElement> elements(const ClassInfo& info, bool withSubclasses = true);
  /// The elements that no other contains.
  std::vector<ModelElement> roots();

  /// The observer is told until the subscription ends; it must live as long.
  [[nodiscard]] Subscription addObserver(Observer& observer);
  /// The same with a function.
  [[nodiscard]] Subscription observe(std::function<void(const ChangeSet&)> observer);

  void setLoader(std::shared_ptr<ElementLoader> loader) { loader_ = std::move(loader); }
  const std::shared_ptr<ElementLoader>& loader() const { return loader_; }
  /// The element of that identity, made as a proxy if the model does not hold it. Raises
  /// CannotCreateAbstractClass, CannotCreateDuplicateIdentity if the identity belongs to an
  /// element of another class, InvalidValue for the nil identity.
  ModelElement createProxy(const meta::Class& metaClass, const uuid& identity);
  ModelElement createProxy(const ClassInfo& info, const uuid& identity);

  /// Destroys everything without notice and refuses all further use; handles stay safe. Raises
  /// CannotCloseModelInTransaction while a transaction is open or observers are being told.
  void close();
  bool isOpen() const { return (state_ & kClosed) == 0; }
  bool isFrozen() const { return (state_ & kFrozen) != 0; }

  /// Bytes the model has reserved for elements and lists.
  std::size_t bytesReserved() const { return pool_.arena().bytesReserved(); }

  // For the runtime. ------------------------------------------------------------------------------

  ElementPool& pool() { return pool_; }
  IdentityIndex& identities() { return identities_; }
  UndoLog& log() { return *log_; }
  ListIndexes& lists() { return lists_; }
  /// Stands before every change: raises CannotModifyFrozenModel or CannotUseClosedModel, and sees
  /// to it that there is a log to record in.
  void checkWritable() {
    if (state_ & (kFrozen | kClosed)) [[unlikely]]
      refuseWrite();
    openLog();
  }
  /// Sets a log aside that observers are being told of, or will be; throws std::bad_alloc.
  void openLog() {
    if (log_->isCommitted()) [[unlikely]]
      addLog();
  }
  /// Whether a plain value may simply be stored: nobody may undo it, hears of it or forbids it.
  bool isUnwatched() const { return state_ == 0; }
  /// Whether a change must be recorded: somebody may undo it or wants to hear of it.
  bool isRecording() const { return (state_ & (kRecording | kObserved)) != 0; }
  /// Whether foreign code may run at the end of each change.
  bool isObserved() const { return (state_ & kObserved) != 0; }
  /// Whether positions in lists may be given anew.
  bool isIdle() const { return isQuiet() && cursors == 0 && !shared_; }
  /// Whether no record anywhere refers to elements or positions.
  bool isQuiet() const { return depth_ == 0 && !told_ && (log_->empty() || log_->isCommitted()); }
  /// Where the innermost transaction begins in the log.
  std::size_t mark() const { return mark_; }
  /// After a single change: outside a transaction, tells the observers.
  void publishIfOutermost() {
    if (depth_ == 0 && !log_->empty()) publish();
  }
  /// Tells the observers what the log holds, or lets it wait until they have been told of what came
  /// before. Passes on what they throw.
  void publish();
  ElementImpl* createElement(const ClassInfo& info, const uuid& identity);
  /// Takes back what `createElement` has just done.
  void uncreate(ElementImpl& element) noexcept;
  void elementsGone(std::size_t count) { liveElements_ -= count; }
  void elementBack() { ++liveElements_; }
  /// Takes back what was recorded from `mark` on; does not allocate.
  void rollbackTo(std::size_t mark) noexcept;
  TextCache& texts() { return texts_; }
  [[noreturn]] void refuseWrite() const;

  /// An inner transaction of the runtime's own composite changes: undone unless `done`.
  class Scope {
   public:
    explicit Scope(ModelImpl& model);
    ~Scope();
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;
    /// Commits; the outermost one tells the observers and passes on what they threw.
    void done();

   private:
    ModelImpl& model_;
    bool open_ = true;
  };

  /// List positions must stay while somebody iterates.
  std::uint32_t cursors = 0;
  /// Whether several threads may be reading, so that a read must not change anything at all.
  bool isShared() const { return shared_; }

 private:
  friend class Transaction;
  friend class Change;
  friend class ChangeSet;
  friend class Model::Freezer;
  friend class Model::Thawer;
  friend class Subscription;

  enum State : std::uint32_t {
    kFrozen = 1,
    kClosed = 2,
    kRecording = 4,
    kObserved = 8,
    kObserverEnded = 16  ///< and is to be dropped when nobody is being told
  };

  void freeze(int freezes, int thaws) noexcept;
  void addLog();
  void addSharedRef() noexcept;
  void removeSharedRef() noexcept;
  std::uint32_t enter();
  /// Of the open transaction at that depth, 1 and up; 0 when none is.
  std::uint64_t serialAt(std::uint32_t depth) const {
    return depth > 0 && depth <= open_.size() ? open_[depth - 1].serial : 0;
  }
  void leave(bool keep, std::optional<Value> result);
  void endInnermost() noexcept;
  void announce();
  void dropEndedObservers();
  void tell(UndoLog& log, std::exception_ptr& first);
  void finish(UndoLog& log) noexcept;
  void settle(const UndoLog& log) noexcept;
  void recycle(UndoLog& log) noexcept;
  void setState(State bit, bool on) { state_ = on ? state_ | bit : state_ & ~bit; }
  /// An element with empty values, unrecorded. The identity must be free.
  ElementImpl* newElement(const ClassInfo& info, const uuid& identity);

  std::uint32_t state_ = 0;
  std::uint32_t depth_ = 0;
  std::size_t mark_ = 0;
  struct OpenTransaction {
    std::size_t outerMark;  ///< where the one around it begins
    std::uint64_t serial;   ///< tells it from an earlier one at the same depth
  };
  std::vector<OpenTransaction> open_;  ///< outermost first
  std::uint64_t lastSerial_ = 0;
  // Logs, which belong to the model.
  UndoLog* log_;             ///< the newest: of the open transaction, or committed with none after
  UndoLog* told_ = nullptr;  ///< committed and being told; those after it are behind it, up to log_
  UndoLog* spare_ = nullptr;  ///< empty ones
  std::vector<std::shared_ptr<Subscription::Entry>> observers_;
  std::shared_ptr<ElementLoader> loader_;
  ElementPool pool_;
  IdentityIndex identities_;
  ListIndexes lists_;
  TextCache texts_;
  std::size_t liveElements_ = 0;
  std::uint32_t refs_ = 0;
  int thaws_ = 0;
  bool toBeFrozen_ = false;
  bool shared_;
};

}  // namespace mf::zero
