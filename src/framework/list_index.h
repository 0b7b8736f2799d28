// Answers about long reference lists in little time: which element is the n-th of a list
// with holes, and where a list holds an element. An index is made when somebody first asks
// and follows every change of its list's slots; short lists never get here.
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
  std::size_t countBefore(std::size_t slot) const;
  void filled(std::uint32_t slot) noexcept { add(slot, 1); }
  void emptied(std::uint32_t slot) noexcept { add(slot, static_cast<std::uint32_t>(-1)); }
  /// The list has one more slot, or some fewer, at its end; they are empty. False when there was
  /// no room, and the index is of no use any more.
  bool grown() noexcept;
  void shrunk(std::uint32_t count) noexcept { tree_.resize(tree_.size() - count); }

 private:
  void add(std::uint32_t slot, std::uint32_t change) noexcept;
  std::vector<std::uint32_t> tree_;  ///< a binary indexed tree (Fenwick 1994), 1-based
};

/// Finds an element's slot in one list. What it says is checked against the list, so an element
/// that is taken out needs no notice.
class SlotIndex {
 public:
  explicit SlotIndex(const ReferenceList& list);
  std::optional<std::uint32_t> find(const ReferenceList& list, ElementId target) const;
  /// False when there was no room, and the index is of no use any more.
  bool filled(std::uint32_t slot, ElementId target) noexcept;

 private:
  struct Place {
    ElementId target = kNoElement;
    std::uint32_t slot = 0;
  };
  std::size_t placeOf(ElementId target) const;

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
  void filled(std::uint64_t listKey, std::uint32_t slot, ElementId target) noexcept;
  void emptied(std::uint64_t listKey, std::uint32_t slot) noexcept;
  void grown(std::uint64_t listKey) noexcept;
  void shrunk(std::uint64_t listKey, std::uint32_t count) noexcept;
  /// Slots have come to stand elsewhere.
  void drop(std::uint64_t listKey) noexcept;
  void clear() noexcept;

 private:
  /// So many lists at most have an index, so that it is memory for the lists in use only.
  static constexpr std::size_t kMost = 256;

  std::unordered_map<std::uint64_t, HoleIndex> holes_;
  std::unordered_map<std::uint64_t, SlotIndex> slots_;
};

}  // namespace mf::zero
