#include "framework/undo.h"

#include <algorithm>

#include "framework/change_set.h"
#include "framework/links.h"
#include "framework/model_impl.h"
#include "framework/raw.h"
#include "framework/values.h"
#include "host/array.h"

namespace mf::zero {

// UndoLog

UndoLog::UndoLog(ModelImpl& owner) : model(owner) {}

UndoLog::~UndoLog() = default;

void UndoLog::noteCreated(ElementId element, std::uint32_t cellUnits, std::size_t mark) {
  const bool extends = records.size() > mark && records.back().kind == UndoKind::kCreate &&
                       newestId_ + cellUnits == element && records.back().position == cellUnits;
  if (extends) {
    ++records.back().count;
  } else {
    add({.kind = UndoKind::kCreate, .element = element, .position = cellUnits, .count = 1});
  }
  newestId_ = element;
  indexed_ = false;
}

bool UndoLog::coversNew(ElementId element, std::size_t mark) const {
  return newestId_ == element && records.size() > mark && records.back().kind == UndoKind::kCreate;
}

bool UndoLog::hasSet(UndoKind kind, ElementId element, std::uint16_t property,
                     std::size_t mark) const {
  if (records.size() <= mark) return false;
  const UndoRecord& last = records.back();
  return last.kind == kind && last.element == element && last.property == property;
}

void UndoLog::noteInsert(ElementId element, std::uint16_t property, std::uint32_t position,
                         UndoKind kind, std::size_t mark) {
  if (hasSet(kind, element, property, mark) &&
      records.back().position + records.back().count == position) {
    ++records.back().count;
    return;
  }
  add({.kind = kind, .property = property, .element = element, .position = position, .count = 1});
}

ChangeIndex& UndoLog::index() {
  if (!indexed_) index_.clear();
  indexed_ = true;
  index_.extend(records, model);
  return index_;
}

void UndoLog::clear() {
  constexpr std::size_t kKept = 4096;  // room that is worth keeping for the next transaction
  records.clear();
  changes.clear();
  if (records.capacity() > kKept) records.shrink_to_fit();
  if (changes.capacity() > kKept) changes.shrink_to_fit();
  shrunk();
}

void UndoLog::shrunk() {
  indexed_ = false;
  newestId_ = kNoElement;
  if (!records.empty()) return;
  loaded.clear();
  sawNewProxies = false;
}

// ChangeIndex

void ChangeIndex::clear() {
  entries_.clear();
  steps_.clear();
  byKey_.clear();
  taken_ = 0;
}

void ChangeIndex::extend(const std::vector<UndoRecord>& records, ModelImpl& model) {
  for (; taken_ < records.size(); ++taken_) {
    const UndoRecord& record = records[taken_];
    const auto number = static_cast<std::uint32_t>(taken_);
    if (record.kind == UndoKind::kNothing) continue;
    if (record.kind == UndoKind::kCreate) {
      for (std::uint32_t i = 0; i < record.count; ++i) {
        note(record.element + i * record.position, kLifetime, number, i);
      }
      continue;
    }
    if (record.kind != UndoKind::kDestroy) {
      note(record.element, record.property, number, 0);
      continue;
    }
    note(record.element, kLifetime, number, 0);
    auto* referrers = reinterpret_cast<IncomingList*>(record.old);
    for (std::uint32_t i = 0; referrers && i < referrers->size; ++i) {
      const Incoming& entry = referrers->entries()[i];
      const PropertyInfo& property = links::propertyOf(*model.pool().at(entry.owner), entry.link);
      note(entry.owner, property.index, number, i);
    }
  }
}

void ChangeIndex::note(ElementId element, std::uint16_t property, std::uint32_t record,
                       std::uint32_t sub) {
  const auto step = static_cast<std::uint32_t>(steps_.size());
  const auto [found, isNew] = byKey_.try_emplace(std::uint64_t{element} << 16 | property,
                                                 static_cast<std::uint32_t>(entries_.size()));
  if (isNew) {
    entries_.push_back({element, property, step, step});
    steps_.push_back({record, sub, kNone});
  } else {
    Entry& entry = entries_[found->second];
    steps_.push_back({record, sub, entry.lastStep});
    entry.lastStep = step;
  }
}

const ChangeIndex::Entry* ChangeIndex::find(ElementId element, std::uint16_t property) const {
  const auto found = byKey_.find(std::uint64_t{element} << 16 | property);
  return found == byKey_.end() ? nullptr : &entries_[found->second];
}

// Undoing

namespace undo {

namespace {

// Loading proxies is not recorded. What it has put into the way of an undo is taken out again.

void takeOut(ModelImpl& model, ElementId owner, std::uint32_t link) noexcept {
  ElementImpl& holder = *model.pool().at(owner);
  links::unplace(holder, links::propertyOf(holder, link), links::positionOf(link));
}

void leaveOwner(ModelImpl& model, ElementImpl& element) noexcept {
  if (Raw::owner(element) == kNoElement) return;
  const ElementImpl& owner = *model.pool().at(Raw::owner(element));
  const PropertyInfo& property = *owner.classInfo().findByIndex(Raw::ownerProperty(element));
  takeOut(model, owner.id(), links::link(property, Raw::position(element)));
}

void leaveReferrers(ModelImpl& model, ElementImpl& element) noexcept {
  while (Raw::incoming(element) && Raw::incoming(element)->size > 0) {
    const Incoming last = Raw::incoming(element)->entries()[Raw::incoming(element)->size - 1];
    takeOut(model, last.owner, last.link);
  }
}

/// Fills a slot again. Room is there, unless a proxy that was loaded meanwhile took it.
void putBack(ModelImpl& model, ElementImpl& owner, const PropertyInfo& property,
             std::uint32_t position, ElementImpl& target) noexcept {
  property.has(kContainment) ? leaveOwner(model, target) : links::reserveReferrer(target);
  links::place(owner, property, position, target);
}

void revertCreate(ModelImpl& model, ElementImpl& element) noexcept {
  leaveReferrers(model, element);
  leaveOwner(model, element);
  links::withdraw(element);
  model.identities().remove(element);
  model.elementGone();
  Raw::setDestroyed(element, true);
  discard(model, element);
}

void leaveContents(ModelImpl& model, ElementImpl& element) noexcept {
  forEachProperty(element.classInfo(), [&](const PropertyInfo& property) {
    if (!property.has(kContainment)) return;
    const std::uint32_t count =
        property.has(kMany) ? Raw::at<ReferenceList>(element, property).size : 1;
    for (std::uint32_t i = 0; i < count; ++i) {
      if (links::slotAt(element, property, i).target == kNoElement) continue;
      takeOut(model, element.id(), links::link(property, i));
    }
  });
}

/// A proxy that was made for the identity of a destroyed element gives way to it.
void replaceStandIn(ModelImpl& model, ElementImpl& element) noexcept {
  ElementImpl* standIn =
      model.log().sawNewProxies ? model.identities().find(element.Uuid()) : nullptr;
  if (!standIn) return;
  const bool fits = &standIn->classInfo() == &element.classInfo();
  while (fits && Raw::incoming(*standIn) && Raw::incoming(*standIn)->size > 0) {
    const Incoming last = Raw::incoming(*standIn)->entries()[Raw::incoming(*standIn)->size - 1];
    ElementImpl& holder = *model.pool().at(last.owner);
    takeOut(model, last.owner, last.link);
    putBack(model, holder, links::propertyOf(holder, last.link), links::positionOf(last.link),
            element);
  }
  leaveContents(model, *standIn);
  std::erase(model.log().loaded, standIn->id());
  revertCreate(model, *standIn);
}

void revertDestroy(ModelImpl& model, ElementImpl& element, IncomingList* referrers) noexcept {
  Raw::setDestroyed(element, false);
  Raw::setInLog(element, false);
  links::enter(element);
  Raw::incoming(element) = referrers;
  for (std::uint32_t i = 0; referrers && i < referrers->size; ++i) {
    const Incoming& entry = referrers->entries()[i];
    const ElementImpl& owner = *model.pool().at(entry.owner);
    const PropertyInfo& property = links::propertyOf(owner, entry.link);
    links::slotAt(owner, property, links::positionOf(entry.link)) = {element.id(), i};
    if (property.has(kMany)) --Raw::at<ReferenceList>(owner, property).holes;
  }
  replaceStandIn(model, element);
  model.identities().restore(element);
  model.elementBack();
}

void revertReference(ModelImpl& model, ElementImpl& element, const PropertyInfo& property,
                     ElementId old) noexcept {
  if (Raw::at<ReferenceSlot>(element, property).target != kNoElement) {
    links::unplace(element, property, 0);
  }
  if (old != kNoElement) putBack(model, element, property, 0, *model.pool().at(old));
}

void revertInsert(ElementImpl& element, const PropertyInfo& property, std::uint32_t position,
                  std::uint32_t count) noexcept {
  const ReferenceList& list = Raw::at<ReferenceList>(element, property);
  for (std::uint32_t i = position; i < position + count; ++i) {
    if (list.slots[i].target != kNoElement) links::unplace(element, property, i);
  }
  links::closeGap(element, property, position, count);
}

void dropRaw(const UndoRecord& record, std::uint64_t raw) noexcept {
  if (record.ownsText) Text::adopt(raw);
}

void revertValues(ElementImpl& element, const PropertyInfo& property,
                  const UndoRecord& record) noexcept {
  PrimitiveValues& items = *Raw::at<PrimitiveList>(element, property).values;
  if (record.kind == UndoKind::kValueRemove) {
    values::insertRaw(property, items, record.position, record.old);
    return;
  }
  const std::uint32_t count = record.kind == UndoKind::kValueSet ? 1 : record.count;
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint64_t raw = values::removeRaw(property, items, record.position);
    if (values::isText(property)) Text::adopt(raw);
  }
  if (record.kind == UndoKind::kValueSet) {
    values::insertRaw(property, items, record.position, record.old);
  }
}

}  // namespace

void revert(ModelImpl& model, const UndoRecord& record) noexcept {
  if (record.kind == UndoKind::kNothing) return;
  if (record.kind == UndoKind::kCreate) {
    for (std::uint32_t i = record.count; i-- > 0;) {
      revertCreate(model, *model.pool().at(record.element + i * record.position));
    }
    return;
  }
  ElementImpl& element = *model.pool().at(record.element);
  if (record.kind == UndoKind::kDestroy) {
    return revertDestroy(model, element, reinterpret_cast<IncomingList*>(record.old));
  }
  const PropertyInfo& property = *element.classInfo().findByIndex(record.property);
  switch (record.kind) {
    case UndoKind::kWord: Raw::store(element, property, record.old, 8); break;
    case UndoKind::kHalf: Raw::store(element, property, record.old, 4); break;
    case UndoKind::kByte: Raw::store(element, property, record.old, 1); break;
    case UndoKind::kText: Raw::at<Text>(element, property) = Text::adopt(record.old); break;
    case UndoKind::kArray: {
      const vxArray*& slot = Raw::at<ArraySlot>(element, property).array;
      const vxArray* undone = std::exchange(slot, reinterpret_cast<const vxArray*>(record.old));
      vexal::deletePropertyArray(const_cast<vxArray*>(undone));
      break;
    }
    case UndoKind::kReference:
      revertReference(model, element, property, static_cast<ElementId>(record.old));
      break;
    case UndoKind::kInsert: revertInsert(element, property, record.position, record.count); break;
    case UndoKind::kRemove:
      putBack(model, element, property, record.position,
              *model.pool().at(static_cast<ElementId>(record.old)));
      break;
    default: revertValues(element, property, record); break;
  }
}

void settle(ModelImpl& model, const UndoRecord& record) noexcept {
  switch (record.kind) {
    case UndoKind::kText: Text::adopt(record.old); break;
    case UndoKind::kArray:
      vexal::deletePropertyArray(reinterpret_cast<vxArray*>(record.old));
      break;
    case UndoKind::kValueRemove:
    case UndoKind::kValueSet: dropRaw(record, record.old); break;
    case UndoKind::kDestroy: {
      ElementImpl& element = *model.pool().at(record.element);
      links::release(element, reinterpret_cast<IncomingList*>(record.old));
      Raw::setInLog(element, false);
      discard(model, element);
      break;
    }
    default: break;
  }
}

void discard(ModelImpl& model, ElementImpl& element) noexcept {
  links::release(element);
  if (Raw::refs(element) == 0) {
    model.pool().release(&element);
    return;
  }
  auto* storage = reinterpret_cast<ElementStorage*>(Raw::storage(element));
  element.classInfo().native.destroyStorage(storage);
  element.classInfo().native.constructStorage(storage);
}

// Old values

namespace {

using Slots = std::vector<ElementId>;

/// The steps of one entry, newest first.
template <class Visit>
void forEachStepBack(UndoLog& log, const ChangeIndex::Entry& entry, Visit&& visit) {
  const ChangeIndex& index = log.index();
  for (std::uint32_t number = entry.lastStep; number != ChangeIndex::kNone;) {
    const ChangeIndex::Step step = index.step(number);
    visit(log.records[step.record], step.sub);
    number = step.previous;
  }
}

const ChangeIndex::Entry* entryOf(UndoLog& log, const ElementImpl& element,
                                  const PropertyInfo& property) {
  return log.index().find(element.id(), property.index);
}

/// The next later log that touches the property; null when the present value is meant.
UndoLog* nextTouching(UndoLog& log, const ElementImpl& element, const PropertyInfo& property) {
  UndoLog* next = log.model.logAfter(log);
  while (next && !entryOf(*next, element, property)) next = log.model.logAfter(*next);
  return next;
}

Slots slotsBefore(UndoLog& log, const ElementImpl& element, const PropertyInfo& property);

Slots slotsAfter(UndoLog& log, const ElementImpl& element, const PropertyInfo& property) {
  if (UndoLog* next = nextTouching(log, element, property)) {
    return slotsBefore(*next, element, property);
  }
  const ReferenceList& list = Raw::at<ReferenceList>(element, property);
  Slots slots(list.size);
  std::transform(list.slots, list.slots + list.size, slots.begin(),
                 [](const ReferenceSlot& slot) { return slot.target; });
  return slots;
}

Slots slotsBefore(UndoLog& log, const ElementImpl& element, const PropertyInfo& property) {
  Slots slots = slotsAfter(log, element, property);
  const ChangeIndex::Entry* entry = entryOf(log, element, property);
  if (!entry) return slots;
  forEachStepBack(log, *entry, [&](const UndoRecord& record, std::uint32_t sub) {
    if (record.kind == UndoKind::kInsert) {
      const auto first = slots.begin() + record.position;
      slots.erase(first, first + record.count);
    } else if (record.kind == UndoKind::kRemove) {
      slots[record.position] = static_cast<ElementId>(record.old);
    } else if (record.kind == UndoKind::kDestroy) {
      auto* referrers = reinterpret_cast<IncomingList*>(record.old);
      slots[links::positionOf(referrers->entries()[sub].link)] = record.element;
    }
  });
  return slots;
}

Value listOf(const ElementImpl& element, const Slots& slots) {
  std::vector<Value> items;
  for (const ElementId target : slots) {
    if (target != kNoElement) items.emplace_back(ModelElement(Chunk::find(element, target)));
  }
  return Value::ofList(std::move(items));
}

Value itemsBefore(UndoLog& log, const ChangeIndex::Entry& entry, const PropertyInfo& property,
                  const Value& after) {
  std::vector<Value> items(after.items().begin(), after.items().end());
  const auto old = [&](const UndoRecord& record) {
    if (!values::isText(property)) return values::fromBits(property, record.old);
    return Value(Text::share(record.old));
  };
  forEachStepBack(log, entry, [&](const UndoRecord& record, std::uint32_t) {
    const auto at = items.begin() + record.position;
    if (record.kind == UndoKind::kValueInsert) {
      items.erase(at, at + record.count);
    } else if (record.kind == UndoKind::kValueRemove) {
      items.insert(at, old(record));
    } else {
      *at = old(record);
    }
  });
  return Value::ofList(std::move(items));
}

Value scalarBefore(const UndoRecord& record, std::uint32_t sub, const ElementImpl& element,
                   const PropertyInfo& property) {
  switch (record.kind) {
    case UndoKind::kText: return Text::share(record.old);
    case UndoKind::kArray: return Value::ofArray(reinterpret_cast<const vxArray*>(record.old));
    case UndoKind::kReference:
      return record.old
                 ? Value(ModelElement(Chunk::find(element, static_cast<ElementId>(record.old))))
                 : Value();
    case UndoKind::kDestroy:
      static_cast<void>(sub);
      return ModelElement(Chunk::find(element, record.element));
    default: return values::fromBits(property, record.old);
  }
}

}  // namespace

Value valueBefore(UndoLog& log, const ElementImpl& element, const PropertyInfo& property) {
  if (log.records.size() == 1 && isPlainSet(log.records.front().kind)) {
    const UndoRecord& only = log.records.front();
    return only.element == element.id() && only.property == property.index
               ? values::fromBits(property, only.old)
               : valueAfter(log, element, property);
  }
  const ChangeIndex::Entry* entry = entryOf(log, element, property);
  if (!entry) return valueAfter(log, element, property);
  if (property.isReferenceList()) return listOf(element, slotsBefore(log, element, property));
  if (property.has(kMany)) {
    return itemsBefore(log, *entry, property, valueAfter(log, element, property));
  }
  const ChangeIndex::Step first = log.index().step(entry->firstStep);
  return scalarBefore(log.records[first.record], first.sub, element, property);
}

Value valueAfter(UndoLog& log, const ElementImpl& element, const PropertyInfo& property) {
  if (UndoLog* next = nextTouching(log, element, property)) {
    return valueBefore(*next, element, property);
  }
  return values::read(element, property);
}

}  // namespace undo

}  // namespace mf::zero
