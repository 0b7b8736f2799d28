#include "framework/undo.h"

#include "framework/creation.h"
#include "framework/links.h"
#include "framework/model_impl.h"
#include "framework/raw.h"
#include "framework/values.h"
#include "host/array.h"

namespace mf::zero::undo {

namespace {

void unplaceOutgoing(ElementImpl& element, const PropertyInfo& property, std::uint32_t position,
                     std::uint32_t count) noexcept {
  for (std::uint32_t i = position; i < position + count; ++i) {
    if (links::slotAt(element, property, i).target != kNoElement) {
      links::unplace(element, property, i);
    }
  }
}

void revertCreate(ModelImpl& model, ElementImpl& element) noexcept {
  links::withdraw(element);
  model.identities().remove(element);
  model.elementsGone(1);
  Raw::setDestroyed(element, true);
  discard(model, element);
}

void revertDestroy(ModelImpl& model, ElementImpl& element, const UndoRecord& record) noexcept {
  Raw::setRetired(element, false);
  links::enter(element);
  const links::KeptReferrers referrers(record);
  referrers.giveBack(element);
  std::uint32_t number = 0;
  for (const Incoming& entry : referrers.entries()) {
    ElementImpl& owner = *model.pool().at(entry.owner);
    const PropertyInfo& property = links::propertyOf(owner, entry.link);
    const std::uint32_t position = links::positionOf(entry.link);
    links::slotAt(owner, property, position) = {element.id(), number++};
    if (property.has(kMany)) links::filled(owner, property, position);
  }
  model.identities().restore(element);
  model.elementBack();
}

void revertLoad(ElementImpl& element) noexcept {
  Creation::empty(element);
  Raw::setProxy(element, true);
}

void revertReference(ModelImpl& model, ElementImpl& element, const PropertyInfo& property,
                     ElementId old) noexcept {
  unplaceOutgoing(element, property, 0, 1);
  if (old != kNoElement) links::place(element, property, 0, *model.pool().at(old));
}

void revertInsert(ElementImpl& element, const PropertyInfo& property, std::uint32_t position,
                  std::uint32_t count) noexcept {
  unplaceOutgoing(element, property, position, count);
  if (property.has(kMany)) links::closeGap(element, property, position, count);
}

void revertValues(ElementImpl& element, const PropertyInfo& property,
                  const UndoRecord& record) noexcept {
  PrimitiveValues& items = *Raw::at<PrimitiveList>(element, property).values;
  if (record.kind == UndoKind::kValueRemove) {
    values::insertRaw(property, items, record.position, record.old);
    return;
  }
  for (std::uint32_t i = record.count; i-- > 0;) {
    const std::uint64_t raw = values::removeRaw(property, items, record.position + i);
    if (values::isText(property)) Text::adopt(raw);
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
    for (std::uint32_t i = record.count; i-- > 0;) {
      revertDestroy(model, *model.pool().at(record.element + i * record.position), record);
    }
    return;
  }
  if (record.kind == UndoKind::kProxy) return revertCreate(model, element);
  if (record.kind == UndoKind::kLoad) return revertLoad(element);
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
    case UndoKind::kForgotten:
      revertReference(model, element, property, static_cast<ElementId>(record.old));
      break;
    case UndoKind::kInsert:
    case UndoKind::kLoadInto: revertInsert(element, property, record.position, record.count); break;
    case UndoKind::kRemove:
      links::place(element, property, record.position,
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
    case UndoKind::kValueRemove: {
      const ClassInfo& info = model.pool().at(record.element)->classInfo();
      if (values::isText(*info.findByIndex(record.property))) Text::adopt(record.old);
      break;
    }
    case UndoKind::kDestroy: {
      ElementImpl& first = *model.pool().at(record.element);
      links::KeptReferrers(record).release(first);
      for (std::uint32_t i = 0; i < record.count; ++i) {
        ElementImpl& element = *model.pool().at(record.element + i * record.position);
        Raw::setInLog(element, false);
        discard(model, element);
      }
      break;
    }
    default: break;
  }
}

void discard(ModelImpl& model, ElementImpl& element) noexcept {
  if (links::hasBlocks(element)) links::release(element);
  if (Raw::refs(element) == 0) {
    model.pool().release(&element);
    return;
  }
  auto* storage = reinterpret_cast<ElementStorage*>(Raw::storage(element));
  element.classInfo().native.destroyStorage(storage);
  element.classInfo().native.constructStorage(storage);
}

}  // namespace mf::zero::undo
