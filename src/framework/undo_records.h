// The records of a log: what happened, to what, and what was there before. A flat list
// of small ones, to which adding is a compare and three stores.
#pragma once

#include <cstddef>
#include <cstdint>

#include "framework/storage.h"

namespace mf::zero {

enum class UndoKind : std::uint8_t {
  kNothing,      ///< a record that was withdrawn
  kCreate,       ///< `count` elements from `element` on, `position` cell units apart
  kDestroy,      ///< the same; of a single one `old`: its referrers, `property`: whether it is one
  kProxy,        ///< a proxy was made; not told
  kLoad,         ///< a proxy was loaded; not told
  kLoadInto,     ///< `count` contents from `position` on came with it; not told
  kWord,         ///< eight bytes; `old`: the bits before
  kHalf,         ///< four bytes
  kByte,         ///< one byte
  kText,         ///< `old`: the text before, owned by the record
  kArray,        ///< `old`: the property copy before, owned by the record
  kReference,    ///< a single reference or containment; `old`: id of the target before
  kForgotten,    ///< the same, where the reference has come back to what it was; not told
  kInsert,       ///< `count` slots from `position` on were put into a reference list
  kRemove,       ///< the slot at `position` was emptied; `old`: id of its target
  kValueInsert,  ///< `count` values from `position` on were put into a primitive list
  kValueRemove,  ///< the value at `position` was taken out; `old`: its bits or text
};

/// Whether observers are told of what the record is of: not that an element which exists elsewhere
/// has come into memory, nor of what was withdrawn.
constexpr bool isTold(UndoKind kind) {
  switch (kind) {
    case UndoKind::kNothing:
    case UndoKind::kProxy:
    case UndoKind::kLoad:
    case UndoKind::kLoadInto:
    case UndoKind::kForgotten: return false;
    default: return true;
  }
}

/// Whether the record is the replacement of one plain number, flag or literal.
constexpr bool isPlainSet(UndoKind kind) {
  return kind == UndoKind::kWord || kind == UndoKind::kHalf || kind == UndoKind::kByte;
}

struct UndoRecord {
  UndoKind kind;
  std::uint16_t property = 0;
  ElementId element = kNoElement;
  std::uint32_t position = 0;
  std::uint32_t count = 0;
  std::uint64_t old = 0;
};
static_assert(sizeof(UndoRecord) == 24);

/// A vector of records whose `add` is inlined where a change is made, so that a record is made in
/// its place: a copy would wait for the stores that have just made it.
class UndoRecords {
 public:
  UndoRecords() = default;
  UndoRecords(const UndoRecords&) = delete;
  UndoRecords& operator=(const UndoRecords&) = delete;
  ~UndoRecords() { release(); }

  std::size_t size() const { return size_; }
  std::size_t capacity() const { return capacity_; }
  bool empty() const { return size_ == 0; }
  UndoRecord* begin() { return records_; }
  UndoRecord* end() { return records_ + size_; }
  const UndoRecord* begin() const { return records_; }
  const UndoRecord* end() const { return records_ + size_; }
  UndoRecord& operator[](std::size_t number) { return records_[number]; }
  const UndoRecord& operator[](std::size_t number) const { return records_[number]; }
  const UndoRecord& front() const { return records_[0]; }
  UndoRecord& back() { return records_[size_ - 1]; }
  const UndoRecord& back() const { return records_[size_ - 1]; }

  /// Throws std::bad_alloc, as does `makeRoom`.
  [[gnu::always_inline]] void add(const UndoRecord& record) {
    makeRoom();
    records_[size_++] = record;
  }
  void makeRoom() {
    if (size_ == capacity_) [[unlikely]]
      grow();
  }
  /// Forgets all but the first `size` records.
  void shrink(std::size_t size) { size_ = size; }
  void clear() { size_ = 0; }
  /// Forgets all, and gives the memory back.
  void release();

 private:
  void grow();

  UndoRecord* records_ = nullptr;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace mf::zero
