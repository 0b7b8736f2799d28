// A table that any thread reads while one thread prepares its next version: changes
// go into a copy, which is published as a whole or dropped.
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <utility>

namespace mf::zero::meta {

struct NameHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view name) const {
    return std::hash<std::string_view>()(name);
  }
};

/// A hash table by name that is searched without making a string.
template <class T>
using NameMap = std::unordered_map<std::string, T, NameHash, std::equal_to<>>;

template <class T>
class Staged {
 public:
  explicit Staged(T first = {}) : now_(std::move(first)) {}

  /// The next version in the making, which its thread alone sees. One at a time.
  class Edit {
   public:
    explicit Edit(Staged& staged) : staged_(staged) {
      staged_.next_ = staged_.read([](const T& now) { return now; });
      staged_.editor_.store(std::this_thread::get_id(), std::memory_order_relaxed);
    }
    Edit(const Edit&) = delete;
    Edit& operator=(const Edit&) = delete;
    ~Edit() {
      staged_.editor_.store(std::thread::id(), std::memory_order_relaxed);
      staged_.next_.reset();
    }
    /// Makes it the present version; no more changes then.
    void publish() noexcept {
      const std::unique_lock lock(staged_.mutex_);
      std::swap(staged_.now_, *staged_.next_);
      staged_.editor_.store(std::thread::id(), std::memory_order_relaxed);
    }

   private:
    Staged& staged_;
  };

  /// Whether this thread is preparing the next version.
  bool isEditing() const {
    return editor_.load(std::memory_order_relaxed) == std::this_thread::get_id();
  }
  T& next() { return *next_; }

  /// What `look(table)` answers about the version that this thread sees.
  template <class Look>
  auto read(Look&& look) const {
    if (isEditing()) return look(*next_);
    const std::shared_lock lock(mutex_);
    return look(now_);
  }

 private:
  mutable std::shared_mutex mutex_;
  T now_;
  std::optional<T> next_;
  std::atomic<std::thread::id> editor_{};
};

}  // namespace mf::zero::meta
