#include "framework/reference_steps.h"

#include <algorithm>

#include "framework/references.h"

namespace mf::zero::references {

bool coveredByCreation(const ModelImpl& model, const ElementImpl& owner,
                       const PropertyInfo& property) {
  return !property.has(kContainment) &&
         const_cast<ModelImpl&>(model).log().coversNew(owner.id(), model.mark());
}

// One end of a reference, recorded. The other end, if it is two-sided, is the caller's.

void putSingle(ElementImpl& owner, const PropertyInfo& property, ElementImpl* target) {
  ModelImpl& model = owner.model();
  if (target && !property.has(kContainment)) links::reserveReferrer(*target);
  const ElementId old = Raw::at<ReferenceSlot>(owner, property).target;
  if (model.isRecording() && !coveredByCreation(model, owner, property)) {
    model.log().add({.kind = UndoKind::kReference,
                     .property = property.index,
                     .element = owner.id(),
                     .old = old});
  }
  if (old != kNoElement) links::unplace(owner, property, 0);
  if (target) links::place(owner, property, 0, *target);
}

void putInList(ElementImpl& owner, const PropertyInfo& property, std::uint32_t position,
               ElementImpl& target) {
  ModelImpl& model = owner.model();
  ReferenceList& list = listOf(owner, property);
  links::reserveSlots(owner, property, std::size_t{list.size} + 1);
  if (!property.has(kContainment)) links::reserveReferrer(target);
  position = std::min(position, list.size);
  if (model.isRecording() && !coveredByCreation(model, owner, property)) {
    model.log().noteInsert(owner.id(), property.index, position, UndoKind::kInsert, model.mark());
  }
  links::openGap(owner, property, position, 1);
  links::place(owner, property, position, target);
}

void takeFromList(ElementImpl& owner, const PropertyInfo& property, std::uint32_t position) {
  ModelImpl& model = owner.model();
  ReferenceList& list = listOf(owner, property);
  if (model.isRecording()) {
    model.log().add({.kind = UndoKind::kRemove,
                     .property = property.index,
                     .element = owner.id(),
                     .position = position,
                     .old = list.slots[position].target});
  }
  links::unplace(owner, property, position);
}

void take(ElementImpl& owner, const PropertyInfo& property, std::uint32_t position) {
  property.has(kMany) ? takeFromList(owner, property, position)
                      : putSingle(owner, property, nullptr);
}

void unlink(ElementImpl& owner, const PropertyInfo& property, std::uint32_t position) {
  ElementImpl& target = targetAt(owner, property, position);
  take(owner, property, position);
  if (!property.opposite) return;
  if (const auto back = find(target, *property.opposite, &owner)) {
    take(target, *property.opposite, *back);
  }
}
void detach(ElementImpl& child) {
  if (Raw::owner(child) == kNoElement) return;
  ElementImpl& owner = *Chunk::find(child, Raw::owner(child));
  const PropertyInfo& property = *owner.classInfo().findByIndex(Raw::ownerProperty(child));
  unlink(owner, property, property.has(kMany) ? Raw::position(child) : 0);
}

void linkOpposite(ElementImpl& owner, const PropertyInfo& property, ElementImpl& target) {
  if (!property.opposite) return;
  const PropertyInfo& opposite = *property.opposite;
  if (&opposite == &property && &owner == &target) return;  // a friend of its own
  if (opposite.has(kContainment)) detach(owner);
  if (opposite.has(kMany)) return putInList(target, opposite, kEnd, owner);
  if (singleOf(target, opposite)) unlink(target, opposite, 0);
  putSingle(target, opposite, &owner);
}
void admit(const ElementImpl& owner, const PropertyInfo& property, const ElementImpl* target) {
  check(owner, property, target);
  if (!target->isProxy()) return;
  if (property.opposite || (property.has(kMany) && !property.has(kWithProxies))) target->resolve();
}
void tidy(ElementImpl& owner, const PropertyInfo& property) {
  const ReferenceList& list = listOf(owner, property);
  if (list.holes < 16 || list.holes < list.size / 2) return;
  ModelImpl& model = owner.model();
  if (!model.isIdle()) return;
  links::compact(owner, property);
}

}  // namespace mf::zero::references
