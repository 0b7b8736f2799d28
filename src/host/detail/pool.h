// Memory for blocks of one small size, taken from large chunks and used again; the chunks
// stay with the process. For the host's thread only.
#pragma once

#include <cstddef>
#include <cstdlib>

#include "host/detail/messages.h"

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
  static constexpr std::size_t kChunkSize = 2048 * kBlockSize;

  void grow() {
    fresh_ = static_cast<std::byte*>(allocateOrFail(kChunkSize));
    freshEnd_ = fresh_ + kChunkSize;
  }

  Link* free_ = nullptr;
  std::byte* fresh_ = nullptr;
  std::byte* freshEnd_ = nullptr;
#endif
};

}  // namespace vexal::detail
