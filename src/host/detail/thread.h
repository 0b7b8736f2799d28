// The check that stands before every host operation: is this the host's thread?
#pragma once

#include <atomic>

#if defined(__GNUC__)
// Spares the call that a thread-local of a shared library otherwise costs.
#define VEXAL_THREAD_LOCAL [[gnu::tls_model("initial-exec")]] extern constinit thread_local
#else
#define VEXAL_THREAD_LOCAL extern constinit thread_local
#endif

namespace vexal::detail {

/// Only its address matters: it names the thread.
VEXAL_THREAD_LOCAL char threadMark;

/// The mark of the host's thread; null before the first use.
extern constinit std::atomic<const char*> hostThread;

/// Starts the host on this thread, or raises "Vexal:host:WrongThread".
void startOrRefuse();

inline bool onHostThread() noexcept {
  return hostThread.load(std::memory_order_relaxed) == &threadMark;
}

inline void requireHostThread() {
  if (!onHostThread()) [[unlikely]]
    startOrRefuse();
}

}  // namespace vexal::detail
