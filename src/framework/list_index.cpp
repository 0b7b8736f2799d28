#include "framework/list_index.h"

#include <algorithm>
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

std::size_t HoleIndex::countBefore(std::uint32_t slot) const {
  std::size_t total = 0;
  for (std::size_t i = slot; i > 0; i -= lowBit(i)) total += tree_[i];
  return total;
}

void HoleIndex::removed(std::uint32_t slot) noexcept {
  for (std::size_t i = slot + 1; i < tree_.size(); i += lowBit(i)) --tree_[i];
}

bool HoleIndex::appended() noexcept {
  if (tree_.size() == tree_.capacity()) return false;
  const auto i = static_cast<std::uint32_t>(tree_.size());
  const std::size_t below =
      countBefore(i - 1) - countBefore(static_cast<std::uint32_t>(i - lowBit(i)));
  tree_.push_back(static_cast<std::uint32_t>(1 + below));
  return true;
}

// SlotIndex

SlotIndex::SlotIndex(const ReferenceList& list)
    : table_(std::bit_ceil(3 * std::size_t{list.size})) {
  for (std::uint32_t slot = 0; slot < list.size; ++slot) {
    const ElementId target = list.slots[slot].target;
    if (target != kNoElement) appended(target, slot);
  }
}

SlotIndex::Place& SlotIndex::placeOf(ElementId target) {
  std::size_t at = target * 0x9e3779b97f4a7c15U >> 32;
  for (;; ++at) {
    Place& place = table_[at & (table_.size() - 1)];
    if (place.target == target || place.target == kNoElement) return place;
  }
}

std::optional<std::uint32_t> SlotIndex::find(const ReferenceList& list, ElementId target) const {
  const Place& place = placeOf(target);
  const bool isThere =
      place.target == target && place.slot < list.size && list.slots[place.slot].target == target;
  return isThere ? std::optional(place.slot) : std::nullopt;
}

bool SlotIndex::appended(ElementId target, std::uint32_t slot) noexcept {
  Place& place = placeOf(target);
  if (place.target == kNoElement) {
    if (4 * (used_ + 1) > 3 * table_.size()) return false;
    ++used_;
  }
  place = {target, slot};
  return true;
}

// ListIndexes

const HoleIndex& ListIndexes::holes(const ReferenceList& list, std::uint64_t listKey) {
  return holes_.try_emplace(listKey, list).first->second;
}

const SlotIndex& ListIndexes::slots(const ReferenceList& list, std::uint64_t listKey) {
  return slots_.try_emplace(listKey, list).first->second;
}

void ListIndexes::removed(std::uint64_t listKey, std::uint32_t slot) noexcept {
  const auto found = holes_.find(listKey);
  if (found != holes_.end()) found->second.removed(slot);
}

void ListIndexes::appended(std::uint64_t listKey, ElementId target, std::uint32_t slot) noexcept {
  // An index without room for more is made anew when it is asked for.
  const auto hole = holes_.find(listKey);
  if (hole != holes_.end() && !hole->second.appended()) holes_.erase(hole);
  const auto place = slots_.find(listKey);
  if (place != slots_.end() && !place->second.appended(target, slot)) slots_.erase(place);
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
