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
  /// Begins a new version, which this thread alone sees. One at a time.
  void begin() {
    next_ = read([](const T& now) { return now; });
    editor_.store(std::this_thread::get_id(), std::memory_order_relaxed);
  }
  T& next() { return *next_; }
  void publish() noexcept {
    {
      const std::unique_lock lock(mutex_);
      std::swap(now_, *next_);
    }
    drop();
  }
  void drop() noexcept {
    editor_.store(std::thread::id(), std::memory_order_relaxed);
    next_.reset();
  }

  /// What `look(table)` answers about the version that this thread sees.
  template <class Look>
  auto read(Look&& look) const {
    if (editor_.load(std::memory_order_relaxed) == std::this_thread::get_id()) return look(*next_);
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
