#include "framework/list_index.h"

#include <bit>

namespace mf::zero {

namespace {

constexpr std::size_t lowBit(std::size_t n) { return n & (~n + 1); }

}  // namespace

// HoleIndex

HoleIndex::HoleIndex(const ReferenceList& list) {
  tree_.reserve(list.size + list.size / 2 + 1);
  tree_.resize(list.size + 1);
  for (std::size_t i = 1; i <= list.size; ++i) {
    tree_[i] += list.slots[i - 1].target != kNoElement;
    const std::size_t parent = i + lowBit(i);
    if (parent <= list.size) tree_[parent] += tree_[i];
  }
}

std::uint32_t HoleIndex::slotAt(std::size_t index) const {
  std::size_t slot = 0;
  for (std::size_t step = std::bit_floor(tree_.size()); step > 0; step /= 2) {
    if (slot + step < tree_.size() && tree_[slot + step] <= index) {
      slot += step;
      index -= tree_[slot];
    }
  }
  return static_cast<std::uint32_t>(slot);
}

std::size_t HoleIndex::countBefore(std::size_t slot) const {
  std::size_t total = 0;
  for (std::size_t i = slot; i > 0; i -= lowBit(i)) total += tree_[i];
  return total;
}

void HoleIndex::add(std::uint32_t slot, std::uint32_t change) noexcept {
  for (std::size_t i = std::size_t{slot} + 1; i < tree_.size(); i += lowBit(i)) tree_[i] += change;
}

bool HoleIndex::grown() noexcept {
  if (tree_.size() == tree_.capacity()) return false;
  const std::size_t i = tree_.size();
  tree_.push_back(static_cast<std::uint32_t>(countBefore(i - 1) - countBefore(i - lowBit(i))));
  return true;
}

// SlotIndex

SlotIndex::SlotIndex(const ReferenceList& list)
    : table_(std::bit_ceil(3 * std::size_t{list.size})) {
  for (std::uint32_t slot = 0; slot < list.size; ++slot) {
    const ElementId target = list.slots[slot].target;
    if (target != kNoElement) filled(slot, target);
  }
}

std::size_t SlotIndex::placeOf(ElementId target) const {
  std::size_t at = target * 0x9e3779b97f4a7c15U >> 32;
  for (;; ++at) {
    at &= table_.size() - 1;
    if (table_[at].target == target || table_[at].target == kNoElement) return at;
  }
}

std::optional<std::uint32_t> SlotIndex::find(const ReferenceList& list, ElementId target) const {
  const Place& place = table_[placeOf(target)];
  const bool isThere =
      place.target == target && place.slot < list.size && list.slots[place.slot].target == target;
  return isThere ? std::optional(place.slot) : std::nullopt;
}

bool SlotIndex::filled(std::uint32_t slot, ElementId target) noexcept {
  Place& place = table_[placeOf(target)];
  if (place.target == kNoElement) {
    if (4 * (used_ + 1) > 3 * table_.size()) return false;
    ++used_;
  }
  place = {target, slot};
  return true;
}

// ListIndexes

namespace {

template <class Indexes>
auto& indexOf(Indexes& indexes, const ReferenceList& list, std::uint64_t listKey,
              std::size_t most) {
  if (indexes.size() >= most && !indexes.contains(listKey)) indexes.clear();
  return indexes.try_emplace(listKey, list).first->second;
}

/// Tells a list's index, if it has one, of a change; drops one that had no room for it.
template <class Indexes, class Tell>
void tell(Indexes& indexes, std::uint64_t listKey, Tell tell) noexcept {
  const auto found = indexes.find(listKey);
  if (found != indexes.end() && !tell(found->second)) indexes.erase(found);
}

}  // namespace

const HoleIndex& ListIndexes::holes(const ReferenceList& list, std::uint64_t listKey) {
  return indexOf(holes_, list, listKey, kMost);
}

const SlotIndex& ListIndexes::slots(const ReferenceList& list, std::uint64_t listKey) {
  return indexOf(slots_, list, listKey, kMost);
}

void ListIndexes::filled(std::uint64_t listKey, std::uint32_t slot, ElementId target) noexcept {
  tell(holes_, listKey, [&](HoleIndex& index) { return index.filled(slot), true; });
  tell(slots_, listKey, [&](SlotIndex& index) { return index.filled(slot, target); });
}

void ListIndexes::emptied(std::uint64_t listKey, std::uint32_t slot) noexcept {
  tell(holes_, listKey, [&](HoleIndex& index) { return index.emptied(slot), true; });
}

void ListIndexes::grown(std::uint64_t listKey) noexcept {
  tell(holes_, listKey, [](HoleIndex& index) { return index.grown(); });
}

void ListIndexes::shrunk(std::uint64_t listKey, std::uint32_t count) noexcept {
  tell(holes_, listKey, [&](HoleIndex& index) { return index.shrunk(count), true; });
}

void ListIndexes::drop(std::uint64_t listKey) noexcept {
  holes_.erase(listKey);
  slots_.erase(listKey);
}

void ListIndexes::clear() noexcept {
  holes_.clear();
  slots_.clear();
}

}  // namespace mf::zero
