// Where a model's elements live: cells of one size per class in aligned chunks of
// 16 KiB. An element's address leads to its chunk, and so to its model and class,
// without a pointer in the element; a four-byte id leads to its address.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "framework/class_info.h"
#include "framework/class_layout.h"
#include "framework/export.h"
#include "framework/storage.h"

namespace mf::zero {

class ModelImpl;
class ElementPool;

inline constexpr std::size_t kChunkBytes = 16 * 1024;
inline constexpr std::size_t kCellUnit = 8;  ///< an id counts cells in units of eight bytes
inline constexpr std::size_t kUnitsPerChunk = kChunkBytes / kCellUnit;
inline constexpr std::size_t kMaxChunks = (std::size_t{1} << 32) / kUnitsPerChunk - 1;
inline constexpr std::size_t kStorageOffset = 48;

/// The head of a chunk; its cells follow.
struct Chunk {
  ModelImpl* model;
  const ClassInfo* info;
  const ClassLayout* layout;
  ElementPool* pool;
  std::uint32_t firstId;  ///< id of the chunk's first unit, the head itself
  std::uint32_t cellUnits;
  std::uint32_t used;  ///< units handed out so far, head included; grows only
  Chunk* next;         ///< of the same class

  static Chunk* of(const ElementImpl* element) {
    return reinterpret_cast<Chunk*>(reinterpret_cast<std::uintptr_t>(element) & ~(kChunkBytes - 1));
  }
  ElementId idOf(const ElementImpl* element) const {
    return firstId +
           static_cast<std::uint32_t>(
               (reinterpret_cast<std::uintptr_t>(element) & (kChunkBytes - 1)) / kCellUnit);
  }
  /// The element with that id in the same model as `near`.
  inline static ElementImpl* find(const ElementImpl& near, ElementId id);
};

/// Memory of one model: aligned chunks for elements, and blocks for lists that are recycled by
/// size. Everything is given back at once when the pool ends.
class MF0_API BlockArena {
 public:
  BlockArena() = default;
  BlockArena(const BlockArena&) = delete;
  BlockArena& operator=(const BlockArena&) = delete;
  ~BlockArena();

  /// A chunk of kChunkBytes, aligned to its size; not zeroed. Throws std::bad_alloc.
  void* chunk();
  /// A block of at least `bytes`; `bytes` is rounded up in place to what was given.
  void* allocate(std::size_t& bytes) {
    const std::size_t sizeClass = roundToClass(bytes);
    const bool isNext = sizeClass <= kSmallClasses && !free_[sizeClass] &&
                        bytes <= static_cast<std::size_t>(blockLimit_ - block_);
    return isNext ? std::exchange(block_, block_ + bytes) : allocateElsewhere(bytes, sizeClass);
  }
  /// A block of at least `bytes` with the first `oldBytes` of `block`, which is taken back.
  void* reallocate(void* block, std::size_t oldBytes, std::size_t& bytes);
  /// Takes back a block of the size that `allocate` reported.
  void release(void* block, std::size_t bytes) noexcept;
  /// Bytes of chunks and blocks, those included that wait to be used again. Regions may have more
  /// room, which is not counted.
  std::size_t bytesReserved() const { return reserved_; }

 private:
  struct FreeBlock {
    FreeBlock* next;
  };
  struct Region {
    std::byte* memory;
    std::size_t bytes;
  };
  /// Stands before a large block, which is malloc's own; all of them form a ring.
  struct alignas(16) LargeBlock {
    LargeBlock* previous;
    LargeBlock* next;
  };

  // Classes of sizes: multiples of eight up to 1 KiB; then sixteen from one power of two to the
  // next, so that at most a sixteenth is lost, and a line of the cache more, so that neighbouring
  // blocks do not compete for the same places in it; then one, of what is malloc's own.
  static constexpr std::size_t kSmallClasses = 128;
  static constexpr std::size_t kSteps = 16;
  static constexpr std::size_t kDoublings = 10;
  static constexpr std::size_t kLine = 64;
  static constexpr std::size_t kSmallest = kSmallClasses * kCellUnit;  ///< of those with steps
  static constexpr std::size_t kLargestBlock = (kSmallest << kDoublings) + kLine;
  static constexpr std::size_t kLargeClass = kSmallClasses + kSteps * kDoublings + 1;

  static std::size_t roundToClass(std::size_t& bytes) {
    if (bytes > kSmallest) return roundToLargerClass(bytes);
    bytes = (std::max<std::size_t>(bytes, 16) + kCellUnit - 1) / kCellUnit * kCellUnit;
    return bytes / kCellUnit;
  }
  static std::size_t roundToLargerClass(std::size_t& bytes);
  /// What blocks of a class above the small ones have.
  static std::size_t sizeOfLargerClass(std::size_t sizeClass);
  /// A recycled block, one from a new chunk or straight from a region, or a large one.
  void* allocateElsewhere(std::size_t& bytes, std::size_t sizeClass);
  /// The newest of that class that waits to be used again; null if none does.
  void* recycle(std::size_t bytes, std::size_t sizeClass);
  /// A recycled block, which may be up to a quarter larger, or one from the end of a region.
  void* allocateLong(std::size_t& bytes, std::size_t sizeClass);
  void* allocateLarge(std::size_t bytes);
  void* reallocateLarge(void* block, std::size_t oldBytes, std::size_t bytes);
  /// Opens a region with room for `bytes`.
  void grow(std::size_t bytes);

  std::array<FreeBlock*, kLargeClass> free_{};
  std::vector<Region> regions_;
  std::byte* cursor_ = nullptr;  ///< of the newest region: chunks are cut from its beginning,
  std::byte* limit_ = nullptr;   ///< blocks of more than 1 KiB from its end
  std::byte* block_ = nullptr;   ///< next free byte of the chunk that small blocks come from
  std::byte* blockLimit_ = nullptr;
  LargeBlock large_{&large_, &large_};
  std::size_t reserved_ = 0;
};

/// The cells of all elements of one model.
class MF0_API ElementPool {
 public:
  explicit ElementPool(ModelImpl& model) : model_(model) {}
  ~ElementPool();

  /// Builds an element of a concrete class with that identity. Throws std::bad_alloc, and raises
  /// ModelIsFull at 2^32 cell units.
  ElementImpl* create(const ClassInfo& info, const uuid& identity) {
    Cells& cells = cellsOf(info);
    Chunk* const chunk = cells.last;
    if (cells.free || !chunk || chunk->used + chunk->cellUnits > kUnitsPerChunk) [[unlikely]]
      return createElsewhere(info, identity, cells);
    return createNext(info, identity, cells, *chunk);
  }
  /// Ends an element's storage and recycles its cell.
  void release(ElementImpl* element) noexcept;
  ElementImpl* at(ElementId id) const {
    return reinterpret_cast<ElementImpl*>(chunks_[id / kUnitsPerChunk] +
                                          id % kUnitsPerChunk * kCellUnit);
  }

  /// Calls `test(ElementImpl&)` for the cells in use of the class itself, in creation order as far
  /// as cells were not recycled, until it answers true; says whether it did.
  template <class Test>
  bool anyOf(const ClassInfo& info, Test&& test) const {
    for (const Chunk* chunk = firstChunk(info); chunk; chunk = chunk->next) {
      if (anyIn(*chunk, test)) return true;
    }
    return false;
  }
  /// Calls `visit(ElementImpl&)` for all of them.
  template <class Visit>
  void forEach(const ClassInfo& info, Visit&& visit) const {
    anyOf(info, [&](ElementImpl& element) { return visit(element), false; });
  }
  /// The same for every class.
  template <class Visit>
  void forEach(Visit&& visit) const {
    forEachClass([&](const ClassInfo& info) { forEach(info, visit); });
  }
  /// Calls `visit(const ClassInfo&)` for every class that has had an element.
  template <class Visit>
  void forEachClass(Visit&& visit) const {
    for (const Cells& cells : cells_) {
      if (cells.first) visit(*cells.first->info);
    }
  }

  /// Cells in use: live elements, and destroyed ones that a handle or a record still holds.
  std::size_t size() const {
    std::size_t count = 0;
    for (const Cells& cells : cells_) count += cells.inUse;
    return count;
  }

  BlockArena& arena() { return arena_; }
  const BlockArena& arena() const { return arena_; }

 private:
  struct FreeCell {
    void* marker;  ///< null where an element has its table of virtual functions
    FreeCell* next;
  };
  struct Cells {
    Chunk* first = nullptr;
    Chunk* last = nullptr;
    FreeCell* free = nullptr;
    std::size_t inUse = 0;
    std::unique_ptr<const ClassLayout> layout;
  };

  template <class Test>
  static bool anyIn(const Chunk& chunk, Test& test) {
    const auto base = reinterpret_cast<std::uintptr_t>(&chunk);
    for (std::size_t unit = firstUnit(); unit + chunk.cellUnits <= chunk.used;
         unit += chunk.cellUnits) {
      void* cell = reinterpret_cast<void*>(base + unit * kCellUnit);
      if (static_cast<FreeCell*>(cell)->marker && test(*static_cast<ElementImpl*>(cell))) {
        return true;
      }
    }
    return false;
  }
  static constexpr std::size_t firstUnit() { return (sizeof(Chunk) + kCellUnit - 1) / kCellUnit; }
  const Chunk* firstChunk(const ClassInfo& info) const;
  /// In the chunk's next cell.
  static ElementImpl* createNext(const ClassInfo& info, const uuid& identity, Cells& cells,
                                 Chunk& chunk) {
    void* const cell = reinterpret_cast<std::byte*>(&chunk) + chunk.used * kCellUnit;
    chunk.used += chunk.cellUnits;
    ++cells.inUse;
    return info.native.construct(cell, identity);
  }
  /// In a recycled cell or a new chunk.
  ElementImpl* createElsewhere(const ClassInfo& info, const uuid& identity, Cells& cells);
  Chunk* addChunk(const ClassInfo& info, Cells& cells);
  Cells& cellsOf(const ClassInfo& info) {
    const std::uint32_t number = info.number.load(std::memory_order_acquire);
    return number > 0 && number < cells_.size() ? cells_[number] : addCells(info);
  }
  Cells& addCells(const ClassInfo& info);

  ModelImpl& model_;
  BlockArena arena_;
  std::vector<std::byte*> chunks_;
  std::vector<Cells> cells_;  ///< by the class's number
};

inline ElementImpl* Chunk::find(const ElementImpl& near, ElementId id) {
  return Chunk::of(&near)->pool->at(id);
}

}  // namespace mf::zero
