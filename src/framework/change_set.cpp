#include "framework/change_set.h"

#include <bit>

#include "framework/model_impl.h"
#include "framework/raw.h"
#include "framework/undo.h"
#include "framework/values.h"

namespace mf::zero {

Value Change::oldValue() const {
  return property_ ? undo::valueBefore(set_->log_, *element_, *property_) : Value();
}

Value Change::newValue() const {
  return property_ ? undo::valueAfter(set_->log_, *element_, *property_) : Value();
}

ModelImpl& ChangeSet::model() const { return log_.model; }

namespace {

/// What a log did to the existence of an element.
struct Lifetime {
  bool created = false;
  bool destroyed = false;
};

Lifetime lifetimeOf(const UndoLog& log, const ChangeIndex& index, const ChangeIndex::Entry* entry) {
  Lifetime lifetime;
  if (!entry) return lifetime;
  for (std::uint32_t step = entry->lastStep; step != ChangeIndex::kNone;
       step = index.step(step).previous) {
    const UndoKind kind = log.records[index.step(step).record].kind;
    lifetime.created |= kind == UndoKind::kCreate;
    lifetime.destroyed |= kind == UndoKind::kDestroy;
  }
  return lifetime;
}

/// By how many items a log made a collection longer.
std::int64_t growthOf(const UndoLog& log, const ChangeIndex& index,
                      const ChangeIndex::Entry& entry) {
  std::int64_t growth = 0;
  for (std::uint32_t step = entry.lastStep; step != ChangeIndex::kNone;
       step = index.step(step).previous) {
    const UndoRecord& record = log.records[index.step(step).record];
    const bool isInsert = record.kind == UndoKind::kInsert || record.kind == UndoKind::kValueInsert;
    growth += isInsert ? std::int64_t{record.count} : -1;
  }
  return growth;
}

/// Whether the one plain value that a log replaced was another afterwards.
bool isChanged(UndoLog& log) {
  const UndoRecord& record = log.records.front();
  const ElementImpl& element = *log.model.pool().at(record.element);
  const PropertyInfo& property = *element.classInfo().findByIndex(record.property);
  if (log.next) {
    return !(undo::valueBefore(log, element, property) == undo::valueAfter(log, element, property));
  }
  if (property.kind == ValueKind::kReal) {
    return Raw::at<double>(element, property) != std::bit_cast<double>(record.old);
  }
  return Raw::load(element, property, values::sizeOf(property)) != record.old;
}

/// Whether elements were made and none destroyed: no need to look any further.
bool someAreNew(const UndoLog& log) {
  bool created = false;
  for (const UndoRecord& record : log.records) {
    if (record.kind == UndoKind::kDestroy) return false;
    created |= record.kind == UndoKind::kCreate;
  }
  return created;
}

}  // namespace

void ChangeSet::collect(const ChangeIndex& index, const ChangeIndex::Entry& entry) const {
  ElementImpl* element = log_.model.pool().at(entry.element);
  const ChangeIndex::Entry* life = index.find(entry.element, ChangeIndex::kLifetime);
  const Lifetime lifetime = lifetimeOf(log_, index, life);
  if (entry.property == ChangeIndex::kLifetime) {
    if (lifetime.created == lifetime.destroyed) return;
    const ChangeKind kind = lifetime.created ? ChangeKind::kCreated : ChangeKind::kDestroyed;
    log_.changes.push_back(Change(*this, kind, element, nullptr));
    return;
  }
  if (life) return;
  const PropertyInfo* property = element->classInfo().findByIndex(entry.property);
  const Change change(*this, ChangeKind::kModified, element, property);
  if (hasChanged(change, entry)) log_.changes.push_back(change);
}

bool ChangeSet::hasChanged(const Change& change, const ChangeIndex::Entry& entry) const {
  const PropertyInfo& property = *change.property();
  // A collection that grew or shrank has changed; no need to look at all it holds.
  if (property.has(kMany) && growthOf(log_, log_.index(), entry) != 0) return true;
  const Value before = change.oldValue();
  const Value after = change.newValue();
  if (property.kind == ValueKind::kArray) {
    // As for the setter, another array is a change, whatever it holds.
    return before.getValue<const vxArray*>() || after.getValue<const vxArray*>();
  }
  return !(before == after);
}

bool ChangeSet::empty() const {
  if (collected_) return log_.changes.empty();
  if (log_.isOnePlainSet()) return !isChanged(log_);
  return !someAreNew(log_) && changes().empty();
}

std::span<const Change> ChangeSet::changes() const {
  if (collected_) return log_.changes;
  log_.changes.clear();
  if (log_.isOnePlainSet()) {
    const UndoRecord& record = log_.records.front();
    ElementImpl* element = log_.model.pool().at(record.element);
    if (isChanged(log_)) {
      log_.changes.push_back(Change(*this, ChangeKind::kModified, element,
                                    element->classInfo().findByIndex(record.property)));
    }
  } else {
    const ChangeIndex& index = log_.index();
    for (const ChangeIndex::Entry& entry : index.entries()) {
      if (entry.lastStep != ChangeIndex::kNone) collect(index, entry);
    }
  }
  collected_ = true;
  return log_.changes;
}

}  // namespace mf::zero
