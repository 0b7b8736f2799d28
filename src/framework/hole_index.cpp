#include "framework/hole_index.h"

#include <bit>

namespace mf::zero {

namespace {

constexpr std::size_t lowBit(std::size_t n) { return n & (~n + 1); }

}  // namespace

std::uint32_t HoleIndexes::slotAt(const ReferenceList& list, std::uint64_t listKey,
                                  std::size_t index) {
  const Tree& tree = treeOf(list, listKey);
  std::size_t slot = 0;
  std::size_t rest = index;
  for (std::size_t step = std::bit_floor(tree.size()); step > 0; step /= 2) {
    if (slot + step < tree.size() && tree[slot + step] <= rest) {
      slot += step;
      rest -= tree[slot];
    }
  }
  return static_cast<std::uint32_t>(slot);
}

std::size_t HoleIndexes::indexOf(const ReferenceList& list, std::uint64_t listKey,
                                 std::uint32_t slot) {
  return sum(treeOf(list, listKey), slot);
}

void HoleIndexes::removed(std::uint64_t listKey, std::uint32_t slot) noexcept {
  const auto found = trees_.find(listKey);
  if (found == trees_.end()) return;
  Tree& tree = found->second;
  for (std::size_t i = slot + 1; i < tree.size(); i += lowBit(i)) --tree[i];
}

void HoleIndexes::appended(std::uint64_t listKey) noexcept {
  const auto found = trees_.find(listKey);
  if (found == trees_.end()) return;
  Tree& tree = found->second;
  if (tree.size() == tree.capacity()) {  // making room could fail; it will be made anew
    trees_.erase(found);
    return;
  }
  const std::size_t i = tree.size();
  tree.push_back(1 + sum(tree, i - 1) - sum(tree, i - lowBit(i)));
}

HoleIndexes::Tree& HoleIndexes::treeOf(const ReferenceList& list, std::uint64_t listKey) {
  const auto found = trees_.find(listKey);
  if (found != trees_.end()) return found->second;
  Tree tree;
  tree.reserve(list.size + list.size / 2 + 1);
  tree.resize(list.size + 1);
  for (std::size_t i = 1; i <= list.size; ++i) {
    tree[i] += list.slots[i - 1].target != kNoElement;
    const std::size_t parent = i + lowBit(i);
    if (parent <= list.size) tree[parent] += tree[i];
  }
  return trees_.emplace(listKey, std::move(tree)).first->second;
}

std::uint32_t HoleIndexes::sum(const Tree& tree, std::size_t count) {
  std::uint32_t total = 0;
  for (std::size_t i = count; i > 0; i -= lowBit(i)) total += tree[i];
  return total;
}

}  // namespace mf::zero
