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

Lifetime lifetimeOf(const UndoLog& log, const ChangeIndex& index,
                    const ChangeIndex::Entry* entry) {
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
  if (!(change.oldValue() == change.newValue())) log_.changes.push_back(change);
}

std::span<const Change> ChangeSet::changes() const {
  if (collected_) return log_.changes;
  collected_ = true;
  log_.changes.clear();
  if (log_.records.size() == 1 && isPlainSet(log_.records.front().kind)) {
    const UndoRecord& record = log_.records.front();
    ElementImpl* element = log_.model.pool().at(record.element);
    log_.changes.push_back(Change(*this, ChangeKind::kModified, element,
                                  element->classInfo().findByIndex(record.property)));
    return log_.changes;
  }
  const ChangeIndex& index = log_.index();
  for (const ChangeIndex::Entry& entry : index.entries()) collect(index, entry);
  return log_.changes;
}

}  // namespace mf::zero
