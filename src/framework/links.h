// References as they lie in memory: slots on the one side, lists of referrers on the
// other, each knowing where the other notes it, so that either end is taken away in
// constant time. Nothing here checks, records or notifies; what can fail is in the
// functions that make room.
#pragma once

#include <bit>
#include <cstdint>
#include <span>

#include "framework/element.h"
#include "framework/element_pool.h"
#include "framework/raw.h"
#include "framework/storage.h"
#include "framework/undo_records.h"

namespace mf::zero::links {

// A link names a slot within its owner: six bits of property index, 26 of position.

inline constexpr std::uint32_t kPositionBits = 26;
inline constexpr std::uint32_t kMaxPositions = 1U << kPositionBits;

inline std::uint32_t link(const PropertyInfo& property, std::uint32_t position) {
  return static_cast<std::uint32_t>(property.index) << kPositionBits | position;
}
inline std::uint16_t propertyIndexOf(std::uint32_t link) {
  return static_cast<std::uint16_t>(link >> kPositionBits);
}
inline std::uint32_t positionOf(std::uint32_t link) { return link & (kMaxPositions - 1); }
inline const PropertyInfo& propertyOf(const ElementImpl& owner, std::uint32_t link) {
  return Raw::layout(owner).property(link >> kPositionBits);
}

/// The slot at a position; position 0 of a single reference is the reference itself.
inline ReferenceSlot& slotAt(const ElementImpl& owner, const PropertyInfo& property,
                             std::uint32_t position) {
  return property.has(kMany) ? Raw::at<ReferenceList>(owner, property).slots[position]
                             : Raw::at<ReferenceSlot>(owner, property);
}

/// The block's head: how many slots it has room for; stands in the place of one slot before them.
inline std::uint32_t& capacityOf(ReferenceSlot* slots) { return slots[-1].back; }
inline std::uint32_t roomOf(const ReferenceList& list) {
  return list.slots ? capacityOf(list.slots) : 0;
}
/// Gives a list the block that `bytes` were allocated for.
inline void setBlock(ReferenceList& list, void* block, std::size_t bytes) {
  list.slots = static_cast<ReferenceSlot*>(block) + 1;
  capacityOf(list.slots) = static_cast<std::uint32_t>(bytes / sizeof(ReferenceSlot) - 1);
}
[[noreturn]] void raiseListIsFull();
/// More room for a list that has some.
void growSlots(ElementImpl& owner, ReferenceList& list, std::size_t count);
/// Makes room for `count` slots in all. Throws std::bad_alloc, raises ListIsFull.
inline void reserveSlots(ElementImpl& owner, const PropertyInfo& property, std::size_t count) {
  ReferenceList& list = Raw::at<ReferenceList>(owner, property);
  if (count <= roomOf(list)) return;
  if (count >= kMaxPositions) [[unlikely]]
    raiseListIsFull();
  if (list.slots) return growSlots(owner, list, count);
  std::size_t bytes = (count + 1) * sizeof(ReferenceSlot);
  void* const block = Chunk::of(&owner)->pool->arena().allocate(bytes);
  setBlock(list, block, bytes);
}
/// Who refers to an element, in the order of their numbers.
inline std::span<Incoming> referrersOf(const ElementImpl& element) {
  Referrers& referrers = Raw::referrers(const_cast<ElementImpl&>(element));
  if (Raw::hasOnlyReferrer(element)) return {&referrers.only, 1};
  if (!referrers.list) return {};
  return {referrers.list->entries(), referrers.list->size};
}
/// How many more referrers there is room for.
inline std::size_t roomForReferrers(const ElementImpl& element) {
  if (Raw::hasOnlyReferrer(element)) return 0;
  const IncomingList* list = Raw::referrers(const_cast<ElementImpl&>(element)).list;
  return list ? list->capacity - list->size : 1;
}
/// Makes room for `count` more referrers of `target`, often for many more, in a list.
void growReferrers(ElementImpl& target, std::size_t count);
/// Makes room for one more, often for many more, and answers the list; null where the first one is
/// noted in place.
inline IncomingList* reserveReferrer(ElementImpl& target) {
  IncomingList*& list = Raw::referrers(target).list;
  if (Raw::hasOnlyReferrer(target)) [[unlikely]]
    growReferrers(target, 1);
  if (list && list->size == list->capacity) [[unlikely]]
    growReferrers(target, 1);
  return list;
}

/// Fills an empty slot: notes the referrer at the target, or the owner in a contained child.
/// Room must have been made.
void place(ElementImpl& owner, const PropertyInfo& property, std::uint32_t position,
           ElementImpl& target) noexcept;
/// Notes a referrer at the target, in the list that `reserveReferrer` answers; answers the note's
/// number. What is often referred to will be again: the line of memory after the note is asked for.
inline std::uint32_t noteReferrer(ElementImpl& target, IncomingList* list,
                                  Incoming entry) noexcept {
  if (!list) {
    Raw::setReferrers(target, {.only = entry}, true);
    return 0;
  }
  Incoming* const note = list->entries() + list->size;
  *note = entry;
  __builtin_prefetch(note + 8, 1);
  return list->size++;
}
/// The same where room was made before.
inline std::uint32_t noteReferrer(ElementImpl& target, Incoming entry) noexcept {
  return noteReferrer(target, Raw::referrers(target).list, entry);
}
/// Whether a list's newest note is from the same list or reference as `entry`.
inline bool isNewestFrom(const IncomingList& list, Incoming entry) noexcept {
  if (list.size == 0) return false;
  const Incoming& newest = list.entries()[list.size - 1];
  return newest.owner == entry.owner && propertyIndexOf(newest.link) == propertyIndexOf(entry.link);
}
/// Forgets the target's newest note.
inline void forgetNewest(ElementImpl& target) noexcept {
  if (Raw::hasOnlyReferrer(target)) return Raw::setReferrers(target, {}, false);
  --Raw::referrers(target).list->size;
}
/// Empties a slot, at both ends. In a list this leaves a hole, which is counted.
void unplace(ElementImpl& owner, const PropertyInfo& property, std::uint32_t position) noexcept;

/// For who fills or empties a list's slot without the above: counts the holes, and tells the list's
/// index.
void filled(ElementImpl& owner, const PropertyInfo& property, std::uint32_t position) noexcept;
void emptied(const ElementImpl& owner, const PropertyInfo& property,
             std::uint32_t position) noexcept;

/// Opens a gap of empty slots (counted as holes) at `position`; room must have been made.
void openGap(ElementImpl& owner, const PropertyInfo& property, std::uint32_t position,
             std::uint32_t count) noexcept;
/// Takes empty slots out again.
void closeGap(ElementImpl& owner, const PropertyInfo& property, std::uint32_t position,
              std::uint32_t count) noexcept;
/// For who has put references at the end of a list without the above.
void dropIndex(const ElementImpl& owner, const PropertyInfo& property) noexcept;
/// Closes all gaps.
void compact(ElementImpl& owner, const PropertyInfo& property) noexcept;

/// Notes every outgoing reference of `element` at its target again, after `withdraw`, which left
/// the room.
void enter(ElementImpl& element) noexcept;
/// Takes the notes of every outgoing reference out of the targets; the slots stay filled.
void withdraw(ElementImpl& element) noexcept;

/// Gives back the block of one reference list, which is empty then; its references must have been
/// withdrawn.
void releaseSlots(ElementImpl& element, const PropertyInfo& property) noexcept;
/// Whether the element may hold blocks of the pool.
inline bool hasBlocks(const ElementImpl& element) {
  return Raw::referrers(const_cast<ElementImpl&>(element)).list ||
         !Raw::layout(element).elementLists().empty();
}
/// Gives back the blocks of all lists of the element.
void release(ElementImpl& element) noexcept;

/// What referred to an element that is destroyed, as the record of that keeps it.
class KeptReferrers {
 public:
  explicit KeptReferrers(const UndoRecord& record)
      : referrers_(std::bit_cast<Referrers>(record.old)), only_(record.property != 0) {}
  void giveBack(ElementImpl& element) const noexcept {
    Raw::setReferrers(element, referrers_, only_);
  }
  std::span<const Incoming> entries() const&;
  std::span<const Incoming> entries() const&& = delete;  ///< the only one lies in here
  /// Gives back the memory of a list.
  void release(ElementImpl& anyOfModel) const noexcept;

 private:
  Referrers referrers_;
  bool only_;
};
/// Takes the notes of an element over into the record of its destruction.
inline KeptReferrers takeReferrers(ElementImpl& element, UndoRecord& record) noexcept {
  record.old = std::bit_cast<std::uint64_t>(Raw::referrers(element));
  record.property = Raw::hasOnlyReferrer(element);
  Raw::setReferrers(element, {}, false);
  return KeptReferrers(record);
}

}  // namespace mf::zero::links
