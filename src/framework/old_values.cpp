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

bool touches(UndoLog& log, const ElementImpl& element, const PropertyInfo& property) {
  if (!log.isOnePlainSet()) return entryOf(log, element, property) != nullptr;
  const UndoRecord& only = log.records.front();  // no need of an index
  return only.element == element.id() && only.property == property.index;
}

/// The later logs that touch the property, oldest first; of a single value only the first, which
/// has the value. Those that observers have yet to be told of can be many.
std::vector<UndoLog*> laterTouching(UndoLog& log, const ElementImpl& element,
                                    const PropertyInfo& property) {
  std::vector<UndoLog*> found;
  for (UndoLog* next = log.next; next; next = next->next) {
    if (!touches(*next, element, property)) continue;
    found.push_back(next);
    if (!property.has(kMany)) break;
  }
  return found;
}

void takeBack(Slots& slots, UndoLog& log, const ChangeIndex::Entry& entry) {
  forEachStepBack(log, entry, [&](const UndoRecord& record, std::uint32_t sub) {
    if (record.kind == UndoKind::kInsert) {
      const auto first = slots.begin() + record.position;
      slots.erase(first, first + record.count);
    } else if (record.kind == UndoKind::kRemove) {
      slots[record.position] = static_cast<ElementId>(record.old);
    } else if (record.kind == UndoKind::kDestroy) {
      const links::KeptReferrers referrers(record);
      slots[links::positionOf(referrers.entries()[sub].link)] = record.element;
    }
  });
}

Value listOf(const ElementImpl& element, const Slots& slots) {
  std::vector<Value> items;
  for (const ElementId target : slots) {
    if (target != kNoElement) items.emplace_back(ModelElement(Chunk::find(element, target)));
  }
  return Value::ofList(std::move(items));
}

void takeBack(std::vector<Value>& items, UndoLog& log, const ChangeIndex::Entry& entry,
              const PropertyInfo& property) {
  forEachStepBack(log, entry, [&](const UndoRecord& record, std::uint32_t) {
    const auto at = items.begin() + record.position;
    if (record.kind == UndoKind::kValueInsert) {
      items.erase(at, at + record.count);
    } else {
      items.insert(at, values::isText(property) ? Value(Text::share(record.old))
                                                : values::fromBits(property, record.old));
    }
  });
}

/// A collection's present value with the changes of these logs taken back, the last one first.
Value collectionBefore(const std::vector<UndoLog*>& logs, const ElementImpl& element,
                       const PropertyInfo& property) {
  if (property.isReferenceList()) {
    const ReferenceList& list = Raw::at<ReferenceList>(element, property);
    Slots slots(list.size);
    std::transform(list.slots, list.slots + list.size, slots.begin(),
                   [](const ReferenceSlot& slot) { return slot.target; });
    for (auto log = logs.rbegin(); log != logs.rend(); ++log) {
      takeBack(slots, **log, *entryOf(**log, element, property));
    }
    return listOf(element, slots);
  }
  const Value present = values::read(element, property);
  std::vector<Value> items(present.items().begin(), present.items().end());
  for (auto log = logs.rbegin(); log != logs.rend(); ++log) {
    takeBack(items, **log, *entryOf(**log, element, property), property);
  }
  return Value::ofList(std::move(items));
}

/// The value before the first change of a log that touches the property.
Value singleBefore(UndoLog& log, const ElementImpl& element, const PropertyInfo& property) {
  const std::uint32_t first =
      log.isOnePlainSet() ? 0 : log.index().step(entryOf(log, element, property)->firstStep).record;
  const UndoRecord& record = log.records[first];
  const auto handle = [&](ElementId id) { return ModelElement(Chunk::find(element, id)); };
  switch (record.kind) {
    case UndoKind::kText: return Text::share(record.old);
    case UndoKind::kArray: return Value::ofArray(reinterpret_cast<const vxArray*>(record.old));
    case UndoKind::kReference:
      return record.old ? Value(handle(static_cast<ElementId>(record.old))) : Value();
    case UndoKind::kDestroy: return handle(record.element);
    default: return values::fromBits(property, record.old);
  }
}

/// The value before all of these logs, oldest first, of which each touches the property.
Value before(const std::vector<UndoLog*>& logs, const ElementImpl& element,
             const PropertyInfo& property) {
  if (logs.empty()) return values::read(element, property);
  return property.has(kMany) ? collectionBefore(logs, element, property)
                             : singleBefore(*logs.front(), element, property);
}

}  // namespace

bool isCreatedIn(UndoLog& log, const ElementImpl& element) {
  const ChangeIndex::Entry* life = log.index().find(element.id(), ChangeIndex::kLifetime);
  return life && log.records[log.index().step(life->firstStep).record].kind == UndoKind::kCreate;
}

Value valueBefore(UndoLog& log, const ElementImpl& element, const PropertyInfo& property) {
  std::vector<UndoLog*> logs = laterTouching(log, element, property);
  if (touches(log, element, property)) logs.insert(logs.begin(), &log);
  return before(logs, element, property);
}

Value valueAfter(UndoLog& log, const ElementImpl& element, const PropertyInfo& property) {
  return before(laterTouching(log, element, property), element, property);
}

}  // namespace mf::zero::undo
