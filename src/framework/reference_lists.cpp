// Changes of whole reference lists: many at once, moving, closing gaps.
#include <algorithm>
#include <vector>

#include "framework/messages.h"
#include "framework/reference_steps.h"
#include "framework/references.h"

namespace mf::zero::references {

namespace {

/// Lists up to this long are compared element by element, which beats every cleverness.
constexpr std::size_t kShortList = 32;

/// Whether nothing speaks against a plain reference but that it may be held already.
bool isWelcome(const ModelImpl& model, const ClassInfo& wanted, const ElementImpl* target) {
  if (!target || !Raw::isPlain(*target)) return false;
  const Chunk& chunk = *Chunk::of(target);
  return chunk.model == &model && chunk.info->isA(wanted);
}

bool holds(const ReferenceList& list, ElementId id) {
  for (std::uint32_t i = 0; i < list.size; ++i) {
    if (list.slots[i].target == id) return true;
  }
  return false;
}

/// Checks a few targets for a short list, against it and against each other.
void checkFew(const ElementImpl& owner, const PropertyInfo& property,
              std::span<ElementImpl* const> targets) {
  const ReferenceList& list = listOf(owner, property);
  const ModelImpl& model = owner.model();
  bool held = false;
  for (std::size_t i = 0; i < targets.size(); ++i) {
    if (!isWelcome(model, *property.target, targets[i])) admit(owner, property, targets[i]);
    for (std::size_t k = 0; k < i; ++k) held |= targets[k] == targets[i];
    held |= list.size > 0 && holds(list, targets[i]->id());
    if (held) reportException(mf0::messages::CannotAddSecondObject());
  }
}

/// Checks any number of targets for an empty list, against each other.
void checkMany(const ElementImpl& owner, const PropertyInfo& property,
               std::span<ElementImpl* const> targets) {
  std::vector<ElementId> ids;
  ids.reserve(targets.size());
  for (ElementImpl* target : targets) {
    if (!isWelcome(owner.model(), *property.target, target)) admit(owner, property, target);
    ids.push_back(target->id());
  }
  std::ranges::sort(ids);
  if (std::ranges::adjacent_find(ids) != ids.end()) {
    reportException(mf0::messages::CannotAddSecondObject());
  }
}

/// The quick way for plain references: all checks, all room, one record, no undo.
void appendAtOnce(ElementImpl& owner, const PropertyInfo& property,
                  std::span<ElementImpl* const> targets) {
  ModelImpl& model = owner.model();
  ReferenceList& list = listOf(owner, property);
  const std::size_t total = list.size + targets.size();
  total <= kShortList ? checkFew(owner, property, targets) : checkMany(owner, property, targets);
  links::reserveSlots(owner, property, total);
  for (ElementImpl* target : targets) links::reserveReferrer(*target);
  if (model.isRecording() && !coveredByCreation(model, owner, property)) {
    model.log().add({.kind = UndoKind::kInsert,
                     .property = property.index,
                     .element = owner.id(),
                     .position = list.size,
                     .count = static_cast<std::uint32_t>(targets.size())});
  }
  links::placeAtEnd(owner, property, targets);
  model.publishIfOutermost();
}

}  // namespace

void append(ElementImpl& owner, const PropertyInfo& property,
            std::span<ElementImpl* const> targets) {
  ModelImpl& model = owner.model();
  model.checkWritable();
  if (targets.empty()) return;
  const ReferenceList& list = listOf(owner, property);
  const std::size_t total = list.size + targets.size();
  if (isSimple(property) && (total <= kShortList || list.size == 0)) {
    return appendAtOnce(owner, property, targets);
  }
  ModelImpl::Scope scope(model);
  links::reserveSlots(owner, property, total);
  for (ElementImpl* target : targets) insert(owner, property, kEnd, target);
  scope.done();
}

void move(ElementImpl& owner, const PropertyInfo& property, std::uint32_t from,
          std::uint32_t before) {
  ModelImpl& model = owner.model();
  model.checkWritable();
  ModelImpl::Scope scope(model);
  ElementImpl& target = targetAt(owner, property, from);
  takeFromList(owner, property, from);
  putInList(owner, property, before, target);
  scope.done();
}

namespace {

/// Makes a list that holds the right elements hold them in the right order.
void reorder(ElementImpl& owner, const PropertyInfo& property,
             std::span<ElementImpl* const> targets) {
  const ReferenceList& list = listOf(owner, property);
  std::vector<ElementId> present;
  for (std::uint32_t i = 0; i < list.size; ++i) {
    if (list.slots[i].target != kNoElement) present.push_back(list.slots[i].target);
  }
  if (std::ranges::equal(present, targets, {}, {}, &ElementImpl::id)) return;
  for (std::uint32_t i = list.size; i-- > 0;) {
    if (list.slots[i].target != kNoElement) takeFromList(owner, property, i);
  }
  for (ElementImpl* target : targets) putInList(owner, property, kEnd, *target);
}

}  // namespace

void assign(ElementImpl& owner, const PropertyInfo& property,
            std::span<ElementImpl* const> targets) {
  ModelImpl& model = owner.model();
  model.checkWritable();
  std::vector<ElementId> wanted;
  for (ElementImpl* target : targets) {
    admit(owner, property, target);
    wanted.push_back(target->id());
  }
  std::ranges::sort(wanted);
  if (std::ranges::adjacent_find(wanted) != wanted.end()) {
    reportException(mf0::messages::CannotAddSecondObject());
  }
  ModelImpl::Scope scope(model);
  const ReferenceList& list = listOf(owner, property);
  for (std::uint32_t i = list.size; i-- > 0;) {
    const ElementId held = list.slots[i].target;
    if (held != kNoElement && !std::ranges::binary_search(wanted, held)) {
      unlink(owner, property, i);
    }
  }
  for (ElementImpl* target : targets) {
    if (!find(owner, property, target)) insert(owner, property, kEnd, target);
  }
  reorder(owner, property, targets);
  scope.done();
  tidy(owner, property);
}

void clear(ElementImpl& owner, const PropertyInfo& property) {
  ModelImpl& model = owner.model();
  model.checkWritable();
  ModelImpl::Scope scope(model);
  ReferenceList& list = listOf(owner, property);
  for (std::uint32_t i = list.size; i-- > 0;) {
    if (list.slots[i].target != kNoElement) unlink(owner, property, i);
  }
  scope.done();
  tidy(owner, property);
}

void tidyAfter(ModelImpl& model, std::span<const UndoRecord> records) noexcept {
  const auto visit = [&](ElementId id, std::uint16_t index) {
    ElementImpl& owner = *model.pool().at(id);
    if (owner.isDestroyed()) return;
    const PropertyInfo& property = *owner.classInfo().findByIndex(index);
    if (property.isReferenceList()) tidy(owner, property);
  };
  for (const UndoRecord& record : records) {
    if (record.kind == UndoKind::kRemove) visit(record.element, record.property);
    if (record.kind != UndoKind::kDestroy) continue;
    auto* referrers = reinterpret_cast<IncomingList*>(record.old);
    for (std::uint32_t i = 0; referrers && i < referrers->size; ++i) {
      const Incoming& entry = referrers->entries()[i];
      visit(entry.owner, links::propertyIndexOf(entry.link));
    }
  }
}

}  // namespace mf::zero::references
