#include "framework/undo.h"

#include "framework/links.h"
#include "framework/model_impl.h"
#include "framework/raw.h"
#include "framework/values.h"
#include "host/array.h"

namespace mf::zero::undo {

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

}  // namespace mf::zero::undo
