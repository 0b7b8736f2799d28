#include "framework/links.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

#include "framework/element_pool.h"
#include "framework/messages.h"
#include "framework/model_impl.h"

namespace mf::zero::links {

namespace {

BlockArena& arenaOf(const ElementImpl& element) { return Chunk::of(&element)->pool->arena(); }

ElementImpl& elementAt(const ElementImpl& near, ElementId id) { return *Chunk::find(near, id); }

void forgetReferrer(ElementImpl& target, std::uint32_t back) noexcept {
  if (Raw::hasOnlyReferrer(target)) return forgetNewest(target);
  IncomingList* list = Raw::referrers(target).list;
  const Incoming last = list->entries()[--list->size];
  if (back == list->size) return;
  list->entries()[back] = last;
  const ElementImpl& owner = elementAt(target, last.owner);
  slotAt(owner, propertyOf(owner, last.link), positionOf(last.link)).back = back;
}

/// A filled slot has come to stand at `position`: tells the other end.
void moved(ElementImpl& owner, const PropertyInfo& property, std::uint32_t position) noexcept {
  const ReferenceSlot& slot = slotAt(owner, property, position);
  if (slot.target == kNoElement) return;
  ElementImpl& target = elementAt(owner, slot.target);
  if (property.has(kContainment)) {
    Raw::position(target) = position;
  } else {
    referrersOf(target)[slot.back].link = link(property, position);
  }
}

/// Tells the index of a list, where there is one, of a change of its slots.
template <class Tell>
void tellIndex(const ElementImpl& owner, const PropertyInfo& property, Tell tell) noexcept {
  ListIndexes& lists = owner.model().lists();
  if (!lists.empty()) tell(lists, ListIndexes::key(owner.id(), property.index));
}

template <class Visit>
void forEachOutgoing(ElementImpl& element, Visit&& visit) {
  for (const PropertyInfo* property : Raw::layout(element).references()) {
    if (!property->has(kMany)) {
      visit(*property, 0, Raw::at<ReferenceSlot>(element, *property));
      continue;
    }
    const ReferenceList& list = Raw::at<ReferenceList>(element, *property);
    for (std::uint32_t i = 0; i < list.size; ++i) visit(*property, i, list.slots[i]);
  }
}

}  // namespace

void raiseListIsFull() {
  reportException(mf0::messages::ListIsFull("a collection", std::to_string(kMaxPositions - 1)));
}

void growSlots(ElementImpl& owner, ReferenceList& list, std::size_t count) {
  const std::size_t before = (std::size_t{roomOf(list)} + 1) * sizeof(ReferenceSlot);
  std::size_t bytes = std::max((count + 1) * sizeof(ReferenceSlot), 2 * before);
  void* const block = arenaOf(owner).reallocate(list.slots - 1, before, bytes);
  setBlock(list, block, bytes);
}

void growReferrers(ElementImpl& target, std::size_t count) {
  constexpr std::size_t kMost = std::numeric_limits<std::uint32_t>::max() - 1;
  const std::span<const Incoming> notes = referrersOf(target);
  if (count > kMost - notes.size()) {
    reportException(
        mf0::messages::ListIsFull("an element's list of referrers", std::to_string(kMost)));
  }
  std::size_t bytes = (notes.size() + count + 1) * sizeof(Incoming);
  IncomingList* list = Raw::hasOnlyReferrer(target) ? nullptr : Raw::referrers(target).list;
  if (list) {
    const std::size_t before = (std::size_t{list->capacity} + 1) * sizeof(Incoming);
    bytes = std::min(std::max(bytes, 2 * before), (kMost + 1) * sizeof(Incoming));
    list = static_cast<IncomingList*>(arenaOf(target).reallocate(list, before, bytes));
  } else {
    list = static_cast<IncomingList*>(arenaOf(target).allocate(bytes));
    list->size = static_cast<std::uint32_t>(notes.size());
    std::ranges::copy(notes, list->entries());
  }
  list->capacity = static_cast<std::uint32_t>(bytes / sizeof(Incoming) - 1);
  Raw::setReferrers(target, {.list = list}, false);
}

void place(ElementImpl& owner, const PropertyInfo& property, std::uint32_t position,
           ElementImpl& target) noexcept {
  ReferenceSlot& slot = slotAt(owner, property, position);
  slot.target = target.id();
  if (property.has(kContainment)) {
    Raw::owner(target) = owner.id();
    Raw::ownerProperty(target) = property.index;
    Raw::position(target) = position;
  } else {
    slot.back = noteReferrer(target, {owner.id(), link(property, position)});
  }
  if (property.has(kMany)) filled(owner, property, position);
}

void filled(ElementImpl& owner, const PropertyInfo& property, std::uint32_t position) noexcept {
  ReferenceList& list = Raw::at<ReferenceList>(owner, property);
  --list.holes;
  tellIndex(owner, property, [&](ListIndexes& lists, std::uint64_t key) {
    lists.filled(key, position, list.slots[position].target);
  });
}

void emptied(const ElementImpl& owner, const PropertyInfo& property,
             std::uint32_t position) noexcept {
  ++Raw::at<ReferenceList>(owner, property).holes;
  tellIndex(owner, property,
            [&](ListIndexes& lists, std::uint64_t key) { lists.emptied(key, position); });
}

void dropIndex(const ElementImpl& owner, const PropertyInfo& property) noexcept {
  tellIndex(owner, property, [](ListIndexes& lists, std::uint64_t key) { lists.drop(key); });
}

void unplace(ElementImpl& owner, const PropertyInfo& property, std::uint32_t position) noexcept {
  ReferenceSlot& slot = slotAt(owner, property, position);
  ElementImpl& target = elementAt(owner, slot.target);
  if (property.has(kContainment)) {
    Raw::owner(target) = kNoElement;
  } else {
    forgetReferrer(target, slot.back);
  }
  slot.target = kNoElement;
  if (property.has(kMany)) emptied(owner, property, position);
}

void openGap(ElementImpl& owner, const PropertyInfo& property, std::uint32_t position,
             std::uint32_t count) noexcept {
  ReferenceList& list = Raw::at<ReferenceList>(owner, property);
  std::memmove(list.slots + position + count, list.slots + position,
               (list.size - position) * sizeof(ReferenceSlot));
  std::fill_n(list.slots + position, count, ReferenceSlot{});
  list.size += count;
  list.holes += count;
  for (std::uint32_t i = position + count; i < list.size; ++i) moved(owner, property, i);
  const bool isAtEnd = position + count == list.size;
  tellIndex(owner, property, [&](ListIndexes& lists, std::uint64_t key) {
    isAtEnd&& count == 1 ? lists.grown(key) : lists.drop(key);
  });
}

void closeGap(ElementImpl& owner, const PropertyInfo& property, std::uint32_t position,
              std::uint32_t count) noexcept {
  ReferenceList& list = Raw::at<ReferenceList>(owner, property);
  list.size -= count;
  list.holes -= count;
  std::memmove(list.slots + position, list.slots + position + count,
               (list.size - position) * sizeof(ReferenceSlot));
  for (std::uint32_t i = position; i < list.size; ++i) moved(owner, property, i);
  const bool isAtEnd = position == list.size;
  tellIndex(owner, property, [&](ListIndexes& lists, std::uint64_t key) {
    isAtEnd ? lists.shrunk(key, count) : lists.drop(key);
  });
}

void compact(ElementImpl& owner, const PropertyInfo& property) noexcept {
  ReferenceList& list = Raw::at<ReferenceList>(owner, property);
  std::uint32_t kept = 0;
  for (std::uint32_t i = 0; i < list.size; ++i) {
    if (list.slots[i].target == kNoElement) continue;
    list.slots[kept] = list.slots[i];
    if (kept != i) moved(owner, property, kept);
    ++kept;
  }
  list.size = kept;
  list.holes = 0;
  dropIndex(owner, property);
}

void enter(ElementImpl& element) noexcept {
  forEachOutgoing(element,
                  [&](const PropertyInfo& property, std::uint32_t position, ReferenceSlot& slot) {
                    if (slot.target == kNoElement) return;
                    ElementImpl& target = elementAt(element, slot.target);
                    slot.back = noteReferrer(target, {element.id(), link(property, position)});
                  });
}

void withdraw(ElementImpl& element) noexcept {
  forEachOutgoing(element, [&](const PropertyInfo&, std::uint32_t, ReferenceSlot& slot) {
    if (slot.target != kNoElement) forgetReferrer(elementAt(element, slot.target), slot.back);
  });
}

void releaseSlots(ElementImpl& element, const PropertyInfo& property) noexcept {
  const ReferenceList list = std::exchange(Raw::at<ReferenceList>(element, property), {});
  if (!list.slots) return;
  dropIndex(element, property);
  arenaOf(element).release(list.slots - 1, (capacityOf(list.slots) + 1) * sizeof(ReferenceSlot));
}

namespace {

void releaseList(ElementImpl& anyOfModel, Referrers referrers, bool only) noexcept {
  IncomingList* const list = only ? nullptr : referrers.list;
  if (list) arenaOf(anyOfModel).release(list, (list->capacity + 1) * sizeof(Incoming));
}

}  // namespace

void release(ElementImpl& element) noexcept {
  for (const PropertyInfo* property : Raw::layout(element).elementLists()) {
    releaseSlots(element, *property);
  }
  releaseList(element, Raw::referrers(element), Raw::hasOnlyReferrer(element));
  Raw::setReferrers(element, {}, false);
}

std::span<const Incoming> KeptReferrers::entries() const& {
  if (only_) return {&referrers_.only, 1};
  if (!referrers_.list) return {};
  return {referrers_.list->entries(), referrers_.list->size};
}

void KeptReferrers::release(ElementImpl& anyOfModel) const noexcept {
  releaseList(anyOfModel, referrers_, only_);
}

}  // namespace mf::zero::links
