// Memory for blocks of one small size, taken from ever larger chunks and used again; the
// chunks stay with the process. For the host's thread only.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>

#include "host/detail/messages.h"

#if __has_include(<sys/mman.h>)
#include <sys/mman.h>
#endif

#if defined(__SANITIZE_ADDRESS__)
#define VEXAL_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VEXAL_ASAN 1
#endif
#endif

namespace vexal::detail {

inline void* allocateOrFail(std::size_t bytes) {
  void* memory = std::malloc(bytes);
  if (memory == nullptr) fail("OutOfMemory");
  return memory;
}

/// The same for memory that is filled at once: a large piece asks for huge pages where the system
/// has them, so that one page fault serves thousands of blocks or numbers.
inline void* allocateToFill(std::size_t bytes) {
#ifdef MADV_HUGEPAGE
  constexpr std::size_t kHugePage = 2 * 1024 * 1024;
  void* memory = nullptr;
  if (bytes >= kHugePage) {
    if (posix_memalign(&memory, kHugePage, bytes) != 0) fail("OutOfMemory");
    madvise(memory, bytes, MADV_HUGEPAGE);  // no matter if it is refused
    return memory;
  }
#endif
  return allocateOrFail(bytes);
}

template <std::size_t kBlockSize>
class Pool {
  static_assert(kBlockSize % 16 == 0, "blocks are as aligned as those of malloc");

 public:
#if defined(VEXAL_ASAN)
  // Left to the sanitizer, which then sees every use after release.
  void* take() { return allocateOrFail(kBlockSize); }
  void give(void* block) noexcept { std::free(block); }
#else
  /// Raises "Vexal:host:OutOfMemory".
  void* take() {
    if (free_ != nullptr) {
      Link* const block = free_;
      free_ = block->next;
      return block;
    }
    if (fresh_ == freshEnd_) grow();
    void* const block = fresh_;
    fresh_ += kBlockSize;
    return block;
  }

  void give(void* block) noexcept { free_ = new (block) Link{free_}; }

 private:
  struct Link {
    Link* next;
  };
  static constexpr std::size_t kFirstChunk = 32 * 1024;
  static constexpr std::size_t kLargestChunk = 16 * 1024 * 1024;  ///< whole huge pages

  void grow() {
    fresh_ = static_cast<std::byte*>(allocateToFill(nextChunk_));
    freshEnd_ = fresh_ + nextChunk_ / kBlockSize * kBlockSize;
    nextChunk_ = std::min(2 * nextChunk_, kLargestChunk);
  }

  Link* free_ = nullptr;
  std::byte* fresh_ = nullptr;
  std::byte* freshEnd_ = nullptr;
  std::size_t nextChunk_ = kFirstChunk;
#endif
};

}  // namespace vexal::detail
