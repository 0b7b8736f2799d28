#include "framework/element_pool.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <utility>

#include "framework/messages.h"
#include "framework/raw.h"

#if __has_include(<sys/mman.h>)
#include <sys/mman.h>
#endif
#if __has_include(<sanitizer/asan_interface.h>)
#include <sanitizer/asan_interface.h>  // whose macros do nothing in other builds
#else
#define ASAN_POISON_MEMORY_REGION(address, size) static_cast<void>(0)
#define ASAN_UNPOISON_MEMORY_REGION(address, size) static_cast<void>(0)
#endif

namespace mf::zero {

namespace {

constexpr std::size_t kFirstRegion = 4 * kChunkBytes;
/// Many huge pages, since the allocator may write between two regions, and a page that was written
/// to before it was asked for remains a small one. A chunk less than eight of them: what it puts
/// before a region that it cuts from its heap then opens no gap before the next.
constexpr std::size_t kLargestRegion = 1023 * kChunkBytes;
constexpr std::size_t kHugePage = 2 * 1024 * 1024;
/// Left between long blocks where a sanitizer watches over them.
#if defined(__SANITIZE_ADDRESS__)
#define MF0_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define MF0_ASAN 1
#endif
#endif
#if defined(MF0_ASAN)
constexpr std::size_t kGuard = 64;
#else
constexpr std::size_t kGuard = 0;
#endif

std::size_t roundUp(std::size_t value, std::size_t unit) {
  return (value + unit - 1) / unit * unit;
}

/// Memory of whole chunks. A large model asks for huge pages, where the system has them: one page
/// fault then serves thousands of elements.
std::byte* allocateRegion(std::size_t bytes) {
  const bool large = bytes > kHugePage / 2;
  void* memory = nullptr;
  if (posix_memalign(&memory, large ? kHugePage : kChunkBytes, bytes) != 0) throw std::bad_alloc();
#ifdef MADV_HUGEPAGE
  if (large)
    madvise(memory, roundUp(bytes, kHugePage), MADV_HUGEPAGE);  // no matter if it is refused
#endif
  return static_cast<std::byte*>(memory);
}

std::uint32_t numberOf(const ClassInfo& info) {
  if (const std::uint32_t known = info.number.load(std::memory_order_acquire)) return known;
  static std::mutex mutex;
  static std::uint32_t last = 0;
  const std::lock_guard lock(mutex);
  if (info.number.load(std::memory_order_relaxed) == 0) {
    info.number.store(++last, std::memory_order_release);
  }
  return info.number.load(std::memory_order_relaxed);
}

}  // namespace

// BlockArena

BlockArena::~BlockArena() {
  while (large_.next != &large_) {
    LargeBlock* block = large_.next;
    large_.next = block->next;
    std::free(block);
  }
  for (const Region& region : regions_) {
    ASAN_UNPOISON_MEMORY_REGION(region.memory, region.bytes);
    std::free(region.memory);
  }
}

void BlockArena::grow(std::size_t wanted) {
  std::size_t bytes =
      regions_.empty() ? kFirstRegion : std::min(regions_.back().bytes * 2, kLargestRegion);
  while (bytes < wanted) bytes *= 2;
  regions_.reserve(regions_.size() + 1);
  std::byte* memory = allocateRegion(bytes);
  regions_.push_back({memory, bytes});
  cursor_ = memory;
  limit_ = memory + bytes;
  ASAN_POISON_MEMORY_REGION(memory, bytes);
}

void* BlockArena::chunk() {
  if (static_cast<std::size_t>(limit_ - cursor_) < kChunkBytes) grow(kChunkBytes);
  reserved_ += kChunkBytes;
  ASAN_UNPOISON_MEMORY_REGION(cursor_, kChunkBytes);
  return std::exchange(cursor_, cursor_ + kChunkBytes);
}

std::size_t BlockArena::roundToLargerClass(std::size_t& bytes) {
  if (bytes > kLargestBlock) {
    bytes = roundUp(bytes, kCellUnit);
    return kLargeClass;
  }
  const std::size_t least = std::max(bytes - kLine, kSmallest + 1);
  const auto doubling = static_cast<std::size_t>(std::bit_width((least - 1) / kSmallest)) - 1;
  const std::size_t step = kSmallest / kSteps << doubling;
  const std::size_t steps = (least + step - 1) / step;
  bytes = steps * step + kLine;
  return kSmallClasses + kSteps * doubling + steps - kSteps;
}

std::size_t BlockArena::sizeOfLargerClass(std::size_t sizeClass) {
  const std::size_t number = sizeClass - kSmallClasses - 1;
  const std::size_t step = kSmallest / kSteps << number / kSteps;
  return (kSteps + 1 + number % kSteps) * step + kLine;
}

void* BlockArena::recycle(std::size_t bytes, std::size_t sizeClass) {
  FreeBlock* const block = free_[sizeClass];
  if (!block) return nullptr;
  ASAN_UNPOISON_MEMORY_REGION(block, bytes);
  free_[sizeClass] = block->next;
  return block;
}

void* BlockArena::allocateElsewhere(std::size_t& bytes, std::size_t sizeClass) {
  if (sizeClass == kLargeClass) return allocateLarge(bytes);
  if (sizeClass > kSmallClasses) return allocateLong(bytes, sizeClass);
  if (void* const block = recycle(bytes, sizeClass)) return block;
  if (static_cast<std::size_t>(blockLimit_ - block_) < bytes) {
    block_ = static_cast<std::byte*>(chunk());
    blockLimit_ = block_ + kChunkBytes;
  }
  return std::exchange(block_, block_ + bytes);
}

void* BlockArena::allocateLong(std::size_t& bytes, std::size_t sizeClass) {
  const std::size_t end = std::min(sizeClass + kSteps / 4 + 1, kLargeClass);
  for (std::size_t larger = sizeClass; larger < end; ++larger) {
    const std::size_t size = sizeOfLargerClass(larger);
    if (void* const block = recycle(size, larger)) {
      bytes = size;
      return block;
    }
  }
  if (static_cast<std::size_t>(limit_ - cursor_) < bytes + kGuard) grow(bytes + kGuard);
  reserved_ += bytes;
  limit_ -= bytes + kGuard;
  ASAN_UNPOISON_MEMORY_REGION(limit_, bytes);
  return limit_;
}

void* BlockArena::allocateLarge(std::size_t bytes) {
  void* const memory = std::malloc(bytes + sizeof(LargeBlock));
  if (!memory) throw std::bad_alloc();
  reserved_ += bytes;
  auto* block = static_cast<LargeBlock*>(memory);
  block->previous = large_.previous;
  block->next = &large_;
  block->previous->next = block;
  large_.previous = block;
  return block + 1;
}

void* BlockArena::reallocate(void* block, std::size_t oldBytes, std::size_t& bytes) {
  if (oldBytes > kLargestBlock) {
    bytes = roundUp(bytes, kCellUnit);
    return reallocateLarge(block, oldBytes, bytes);
  }
  void* bigger = allocate(bytes);
  std::memcpy(bigger, block, oldBytes);
  release(block, oldBytes);
  return bigger;
}

/// A very large block moves without being copied.
void* BlockArena::reallocateLarge(void* block, std::size_t oldBytes, std::size_t bytes) {
  void* moved = std::realloc(static_cast<LargeBlock*>(block) - 1, bytes + sizeof(LargeBlock));
  if (!moved) throw std::bad_alloc();
  reserved_ += bytes - oldBytes;
  auto* head = static_cast<LargeBlock*>(moved);
  head->previous->next = head;
  head->next->previous = head;
  return head + 1;
}

void BlockArena::release(void* block, std::size_t bytes) noexcept {
  const std::size_t sizeClass = roundToClass(bytes);
  if (sizeClass == kLargeClass) {
    auto* head = static_cast<LargeBlock*>(block) - 1;
    head->previous->next = head->next;
    head->next->previous = head->previous;
    reserved_ -= bytes;
    std::free(head);
    return;
  }
  auto* freed = static_cast<FreeBlock*>(block);
  freed->next = free_[sizeClass];
  free_[sizeClass] = freed;
  ASAN_POISON_MEMORY_REGION(freed, bytes);
}

// ElementPool

namespace {

ElementStorage* storageOf(ElementImpl& element) {
  return reinterpret_cast<ElementStorage*>(Raw::storage(element));
}

}  // namespace

ElementPool::~ElementPool() {
  for (const Cells& cells : cells_) {
    if (!cells.first || !cells.layout->ownsOutsideMemory()) continue;
    const ClassInfo& info = *cells.first->info;
    forEach(info, [&](ElementImpl& element) { info.native.destroyStorage(storageOf(element)); });
  }
}

const Chunk* ElementPool::firstChunk(const ClassInfo& info) const {
  const std::uint32_t number = info.number.load(std::memory_order_acquire);
  return number < cells_.size() ? cells_[number].first : nullptr;
}

ElementPool::Cells& ElementPool::addCells(const ClassInfo& info) {
  const std::uint32_t number = numberOf(info);
  if (number >= cells_.size()) cells_.resize(number + 1);
  return cells_[number];
}

Chunk* ElementPool::addChunk(const ClassInfo& info, Cells& cells) {
  if (chunks_.size() >= kMaxChunks) {
    reportException(mf0::messages::ModelIsFull("elements"));
  }
  if (!cells.layout) cells.layout = std::make_unique<const ClassLayout>(info);
  chunks_.push_back(nullptr);
  auto* chunk = new (arena_.chunk()) Chunk{};
  chunk->model = &model_;
  chunk->info = &info;
  chunk->layout = cells.layout.get();
  chunk->pool = this;
  chunk->firstId = static_cast<std::uint32_t>((chunks_.size() - 1) * kUnitsPerChunk);
  chunk->cellUnits = static_cast<std::uint32_t>(
      roundUp(kStorageOffset + info.native.storageSize, kCellUnit) / kCellUnit);
  chunk->used = static_cast<std::uint32_t>(firstUnit());
  chunks_.back() = reinterpret_cast<std::byte*>(chunk);
  (cells.last ? cells.last->next : cells.first) = chunk;
  cells.last = chunk;
  return chunk;
}

ElementImpl* ElementPool::createElsewhere(const ClassInfo& info, const uuid& identity,
                                          Cells& cells) {
  if (!cells.free) return createNext(info, identity, cells, *addChunk(info, cells));
  void* const cell = cells.free;
  cells.free = cells.free->next;
  ASAN_UNPOISON_MEMORY_REGION(cell, cells.last->cellUnits * kCellUnit);
  ++cells.inUse;
  return info.native.construct(cell, identity);
}

void ElementPool::release(ElementImpl* element) noexcept {
  const ClassInfo& info = element->classInfo();
  info.native.destroyStorage(storageOf(*element));
  Cells& cells = cells_[info.number.load(std::memory_order_relaxed)];
  --cells.inUse;
  cells.free = new (element) FreeCell{nullptr, cells.free};
  ASAN_POISON_MEMORY_REGION(cells.free + 1, cells.last->cellUnits * kCellUnit - sizeof(FreeCell));
}

}  // namespace mf::zero
