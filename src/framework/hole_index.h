// Finds the n-th element of a long list that has holes, in logarithmic time. Made
// when somebody first asks by position, kept up by removals and appends, dropped
// by anything else. Lists without holes never get here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "framework/storage.h"

namespace mf::zero {

class HoleIndexes {
 public:
  /// Identifies a list: its owner and property.
  static std::uint64_t key(ElementId owner, std::uint16_t property) {
    return std::uint64_t{owner} << 16 | property;
  }

  /// The slot of the element number `index` < list.live().
  std::uint32_t slotAt(const ReferenceList& list, std::uint64_t listKey, std::size_t index);
  /// How many elements stand before `slot`.
  std::size_t indexOf(const ReferenceList& list, std::uint64_t listKey, std::uint32_t slot);

  bool empty() const { return trees_.empty(); }
  void removed(std::uint64_t listKey, std::uint32_t slot) noexcept;
  void appended(std::uint64_t listKey) noexcept;
  void drop(std::uint64_t listKey) noexcept { trees_.erase(listKey); }
  void clear() noexcept { trees_.clear(); }

 private:
  /// Counts of elements as a binary indexed tree (Fenwick 1994), 1-based.
  using Tree = std::vector<std::uint32_t>;
  Tree& treeOf(const ReferenceList& list, std::uint64_t listKey);
  static std::uint32_t sum(const Tree& tree, std::size_t count);

  std::unordered_map<std::uint64_t, Tree> trees_;
};

}  // namespace mf::zero
