#include "framework/collection.h"

#include <algorithm>

#include "framework/collection_access.h"
#include "framework/links.h"
#include "framework/model_impl.h"
#include "framework/references.h"

namespace mf::zero {

namespace {

/// Lists up to this long are searched through; longer ones with holes get an index.
constexpr std::uint32_t kShortList = 64;

std::uint64_t keyOf(const ElementImpl& owner, const PropertyInfo& property) {
  return ListIndexes::key(owner.id(), property.index);
}

/// The slot of element number `index`, which must be below the live count.
std::uint32_t slotOf(const ElementImpl& owner, const PropertyInfo& property,
                     const ReferenceList& list, std::size_t index) {
  if (list.holes == 0) return static_cast<std::uint32_t>(index);
  if (list.size > kShortList && !owner.model().isShared()) {
    return owner.model().lists().holes(list, keyOf(owner, property)).slotAt(index);
  }
  std::uint32_t slot = 0;
  for (std::size_t passed = 0;; ++slot) {
    if (list.slots[slot].target == kNoElement) continue;
    if (passed++ == index) return slot;
  }
}

std::size_t indexOfSlot(const ElementImpl& owner, const PropertyInfo& property,
                        const ReferenceList& list, std::uint32_t slot) {
  if (list.holes == 0) return slot;
  if (list.size > kShortList && !owner.model().isShared()) {
    return owner.model().lists().holes(list, keyOf(owner, property)).countBefore(slot);
  }
  return static_cast<std::size_t>(std::count_if(
      list.slots, list.slots + slot, [](const auto& held) { return held.target != kNoElement; }));
}

std::vector<ElementImpl*> implsOf(std::span<const ModelElement> elements) {
  std::vector<ElementImpl*> impls(elements.size());
  std::ranges::transform(elements, impls.begin(), [](const auto& one) { return one.impl(); });
  return impls;
}

}  // namespace

std::size_t ReferenceCollection::size() const {
  return readable<ReferenceList>(owner_, *property_).live();
}

ModelElement ReferenceCollection::at(std::size_t index) const {
  const ReferenceList& list = readable<ReferenceList>(owner_, *property_);
  if (index >= list.live()) raiseOutOfRange(index, list.live());
  const std::uint32_t slot = slotOf(*owner_.impl(), *property_, list, index);
  return ModelElement(Chunk::find(*owner_.impl(), list.slots[slot].target));
}

void ReferenceCollection::copyTo(std::vector<ElementImpl*>& elements) const {
  const ReferenceList& list = readable<ReferenceList>(owner_, *property_);
  const ElementPool& pool = *Chunk::of(owner_.impl())->pool;
  for (const ReferenceSlot& slot : std::span(list.slots, list.size)) {
    if (slot.target != kNoElement) elements.push_back(pool.at(slot.target));
  }
}

bool ReferenceCollection::contains(const ModelElement& element) const {
  readable<ReferenceList>(owner_, *property_);
  return references::find(*owner_.impl(), *property_, element.impl()).has_value();
}

std::optional<std::size_t> ReferenceCollection::indexOf(const ModelElement& element) const {
  const ReferenceList& list = readable<ReferenceList>(owner_, *property_);
  const auto slot = references::find(*owner_.impl(), *property_, element.impl());
  if (!slot) return std::nullopt;
  return indexOfSlot(*owner_.impl(), *property_, list, *slot);
}

bool ReferenceCollection::isProxyAt(std::size_t index) const { return at(index)->isProxy(); }

void ReferenceCollection::add(const ModelElement& element) {
  references::insert(writable(owner_), *property_, references::kEnd, element.impl());
}

void ReferenceCollection::insert(std::size_t index, const ModelElement& element) {
  ElementImpl& owner = writable(owner_);
  const ReferenceList& list = Raw::at<ReferenceList>(owner, *property_);
  if (index > list.live()) raiseOutOfRange(index, list.live());
  const std::uint32_t slot =
      index == list.live() ? references::kEnd : slotOf(owner, *property_, list, index);
  references::insert(owner, *property_, slot, element.impl());
}

void ReferenceCollection::append(std::span<const ModelElement> elements) {
  append(implsOf(elements));
}

void ReferenceCollection::append(std::span<ElementImpl* const> elements) {
  references::append(writable(owner_), *property_, elements);
}

void ReferenceCollection::remove(const ModelElement& element) {
  ElementImpl& owner = writable(owner_);
  const auto slot = references::find(owner, *property_, element.impl());
  if (!slot) reportException(mf0::messages::NoSuchElement());
  references::removeSlot(owner, *property_, *slot);
}

void ReferenceCollection::removeAt(std::size_t index) {
  ElementImpl& owner = writable(owner_);
  const ReferenceList& list = Raw::at<ReferenceList>(owner, *property_);
  if (index >= list.live()) raiseOutOfRange(index, list.live());
  references::removeSlot(owner, *property_, slotOf(owner, *property_, list, index));
}

void ReferenceCollection::move(std::size_t from, std::size_t to) {
  ElementImpl& owner = writable(owner_);
  const ReferenceList& list = Raw::at<ReferenceList>(owner, *property_);
  if (from >= list.live()) raiseOutOfRange(from, list.live());
  if (to >= list.live()) raiseOutOfRange(to, list.live());
  if (from == to) return;
  const std::size_t next = to > from ? to + 1 : to;
  const std::uint32_t before =
      next == list.live() ? references::kEnd : slotOf(owner, *property_, list, next);
  references::move(owner, *property_, slotOf(owner, *property_, list, from), before);
}

void ReferenceCollection::clear() { references::clear(writable(owner_), *property_); }

void ReferenceCollection::assign(std::span<const ModelElement> elements) {
  references::assign(writable(owner_), *property_, implsOf(elements));
}

void ReferenceCollection::reserve(std::size_t count) {
  ElementImpl& owner = writable(owner_);
  const ReferenceList& list = Raw::at<ReferenceList>(owner, *property_);
  links::reserveSlots(owner, *property_,
                      std::min<std::size_t>(count, links::kMaxPositions) + list.holes);
}

// Cursor

ReferenceCollection::Cursor::Cursor(const ReferenceCollection& collection)
    : owner_(collection.owner_), property_(collection.property_) {
  const ReferenceList& list = readable<ReferenceList>(owner_, *property_);
  count(1);
  // What was emptied from the front is not passed slot by slot every time.
  const bool skips = list.holes > 0 && list.live() > 0 && list.slots[0].target == kNoElement;
  seek(skips ? slotOf(*owner_.impl(), *property_, list, 0) : 0);
}

ReferenceCollection::Cursor::Cursor(const Cursor& other)
    : owner_(other.owner_), property_(other.property_), slot_(other.slot_) {
  count(1);
}

ReferenceCollection::Cursor& ReferenceCollection::Cursor::operator=(Cursor other) noexcept {
  std::swap(owner_, other.owner_);
  std::swap(property_, other.property_);
  std::swap(slot_, other.slot_);
  return *this;
}

ReferenceCollection::Cursor::~Cursor() { count(-1); }

void ReferenceCollection::Cursor::count(int change) const {
  if (!owner_ || owner_->model().isShared()) return;
  owner_->model().cursors += static_cast<std::uint32_t>(change);
}

}  // namespace mf::zero
