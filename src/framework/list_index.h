// Answers about long reference lists in little time: which element is the n-th of a list
// with holes, and where a list holds an element. An index is made when somebody first
// asks, kept up by removals and appends, dropped by anything else; short lists and lists
// without holes never get here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

#include "framework/storage.h"

namespace mf::zero {

/// Counts the elements of one list, by position.
class HoleIndex {
 public:
  explicit HoleIndex(const ReferenceList& list);
  /// The slot of the element number `index` < list.live().
  std::uint32_t slotAt(std::size_t index) const;
  /// How many elements stand before `slot`.
  std::size_t countBefore(std::uint32_t slot) const;
  void removed(std::uint32_t slot) noexcept;
  /// False when there was no room, and the index is of no use any more.
  bool appended() noexcept;

 private:
  std::vector<std::uint32_t> tree_;  ///< a binary indexed tree (Fenwick 1994), 1-based
};

/// Finds an element's slot in one list. Slots are checked against the list when they are looked
/// up, so taking an element out needs no notice.
class SlotIndex {
 public:
  explicit SlotIndex(const ReferenceList& list);
  std::optional<std::uint32_t> find(const ReferenceList& list, ElementId target) const;
  /// False when there was no room, and the index is of no use any more.
  bool appended(ElementId target, std::uint32_t slot) noexcept;

 private:
  struct Place {
    ElementId target = kNoElement;
    std::uint32_t slot = 0;
  };
  Place& placeOf(ElementId target);
  const Place& placeOf(ElementId target) const {
    return const_cast<SlotIndex&>(*this).placeOf(target);
  }

  std::vector<Place> table_;  ///< open addressing; a power of two
  std::size_t used_ = 0;
};

/// The indexes of one model's lists.
class ListIndexes {
 public:
  /// Identifies a list: its owner and property.
  static std::uint64_t key(ElementId owner, std::uint16_t property) {
    return std::uint64_t{owner} << 16 | property;
  }

  const HoleIndex& holes(const ReferenceList& list, std::uint64_t listKey);
  const SlotIndex& slots(const ReferenceList& list, std::uint64_t listKey);

  bool empty() const { return holes_.empty() && slots_.empty(); }
  void removed(std::uint64_t listKey, std::uint32_t slot) noexcept;
  void appended(std::uint64_t listKey, ElementId target, std::uint32_t slot) noexcept;
  void drop(std::uint64_t listKey) noexcept;
  void clear() noexcept;

 private:
  std::unordered_map<std::uint64_t, HoleIndex> holes_;
  std::unordered_map<std::uint64_t, SlotIndex> slots_;
};

}  // namespace mf::zero
