// Counts calls of malloc and its like in the whole process, shared libraries included, by standing
// in front of the C library's own.
#include <cerrno>
#include <cstddef>
#include <cstdint>

#include "meter.h"

namespace {
constinit std::uint64_t count = 0;
}

std::uint64_t kxsim::bench::allocationCount() { return count; }

extern "C" {

void* __libc_malloc(std::size_t bytes);
void* __libc_calloc(std::size_t number, std::size_t bytes);
void* __libc_realloc(void* block, std::size_t bytes);
void* __libc_memalign(std::size_t alignment, std::size_t bytes);

void* malloc(std::size_t bytes) noexcept {
  ++count;
  return __libc_malloc(bytes);
}

void* calloc(std::size_t number, std::size_t bytes) noexcept {
  ++count;
  return __libc_calloc(number, bytes);
}

void* realloc(void* block, std::size_t bytes) noexcept {
  ++count;
  return __libc_realloc(block, bytes);
}

void* aligned_alloc(std::size_t alignment, std::size_t bytes) noexcept {
  ++count;
  return __libc_memalign(alignment, bytes);
}

int posix_memalign(void** block, std::size_t alignment, std::size_t bytes) noexcept {
  ++count;
  *block = __libc_memalign(alignment, bytes);
  return *block ? 0 : ENOMEM;
}
}
