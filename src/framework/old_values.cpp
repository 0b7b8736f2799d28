// Values before and after a log's changes, worked out from its records.
#include <algorithm>
#include <vector>

#include "framework/links.h"
#include "framework/model_impl.h"
#include "framework/raw.h"
#include "framework/undo.h"
#include "framework/values.h"

namespace mf::zero::undo {

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

}  // namespace mf::zero::undo
