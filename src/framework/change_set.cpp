#include "framework/change_set.h"

#include "framework/model_impl.h"
#include "framework/raw.h"
#include "framework/undo.h"

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
  // A collection that grew or shrank has changed; no need to look at all it holds.
  const bool changed = (property->has(kMany) && growthOf(log_, index, entry) != 0) ||
                       !(change.oldValue() == change.newValue());
  if (changed) log_.changes.push_back(change);
}

std::span<const Change> ChangeSet::changes() const {
  if (collected_) return log_.changes;
  collected_ = true;
  log_.changes.clear();
  if (log_.records.size() == 1 && isPlainSet(log_.records.front().kind)) {
    const UndoRecord& record = log_.records.front();
    ElementImpl* element = log_.model.pool().at(record.element);
    const Change change(*this, ChangeKind::kModified, element,
                        element->classInfo().findByIndex(record.property));
    if (!(change.oldValue() == change.newValue())) log_.changes.push_back(change);
    return log_.changes;
  }
  const ChangeIndex& index = log_.index();
  for (const ChangeIndex::Entry& entry : index.entries()) collect(index, entry);
  return log_.changes;
}

}  // namespace mf::zero
