#include "framework/creation.h"

#include <algorithm>
#include <vector>

#include "framework/links.h"
#include "framework/model_impl.h"
#include "framework/primitive_collection.h"
#include "framework/raw.h"
#include "framework/references.h"
#include "framework/values.h"
#include "host/array.h"

namespace mf::zero {

namespace {

/// Stores one value of a new or hollow element: nobody can have seen an old one.
void storeSingle(ElementImpl& element, const PropertyInfo& property, const Value& value) {
  switch (property.kind) {
    case ValueKind::kBoolean: Raw::at<bool>(element, property) = value.getValue<bool>(); break;
    case ValueKind::kInteger8:
      Raw::at<std::int8_t>(element, property) = value.getValue<std::int8_t>();
      break;
    case ValueKind::kReal: Raw::at<double>(element, property) = value.getValue<double>(); break;
    case ValueKind::kInteger:
    case ValueKind::kEnumeration:
      Raw::store(element, property, value.bits(), sizeof(std::int32_t));
      break;
    case ValueKind::kString:
      Raw::at<Text>(element, property) =
          Text(element.model().texts(), value.getValue<std::u16string>());
      break;
    case ValueKind::kArray: {
      const vxArray*& slot = Raw::at<ArraySlot>(element, property).array;
      vexal::PropertyArrayPtr copy = vexal::copyForProperty(value.getValue<const vxArray*>());
      const vexal::PropertyArrayPtr old(const_cast<vxArray*>(std::exchange(slot, copy.release())));
      break;
    }
    case ValueKind::kElement: break;
  }
}

void storeItem(ElementImpl& element, const PropertyInfo& property, const Value& value) {
  PrimitiveList& list = Raw::at<PrimitiveList>(element, property);
  PrimitiveValues& items = values::reserveItem(property, list);
  const std::size_t place = property.has(kOrdered) ? values::countOf(property, list)
                                                   : values::lowerBound(property, list, value);
  if (!property.has(kOrdered) && values::holdsAt(property, list, place, value)) return;
  if (values::isText(property)) {
    Text text(element.model().texts(), value.getValue<std::u16string>());
    values::insertRaw(property, items, place, text.detach());
  } else {
    values::insertRaw(property, items, place, values::bitsOf(property, value));
  }
}

/// Whether a loaded containment is outdated: the child has moved on, or the only place is taken.
bool isOutdated(const ElementImpl& element, const PropertyInfo& property, ElementImpl& target) {
  return property.has(kContainment) &&
         (Raw::owner(target) != kNoElement ||
          (!property.has(kMany) && Raw::at<ReferenceSlot>(element, property).target != kNoElement));
}

/// One end of a loaded reference.
void storeReference(ElementImpl& element, const PropertyInfo& property, ElementImpl* target) {
  if (!target || references::find(element, property, target)) return;
  if (isOutdated(element, property, *target)) return;
  if (property.has(kMany)) {
    const ReferenceList& list = Raw::at<ReferenceList>(element, property);
    links::reserveSlots(element, property, std::size_t{list.size} + 1);
  }
  if (!property.has(kContainment)) links::reserveReferrer(*target);
  const std::uint32_t position =
      property.has(kMany) ? Raw::at<ReferenceList>(element, property).size : 0;
  if (property.has(kContainment)) {
    ModelImpl& model = element.model();
    model.log().noteInsert(element.id(), property.index, position, UndoKind::kLoadInto,
                           model.mark());
  }
  if (property.has(kMany)) links::openGap(element, property, position, 1);
  links::place(element, property, position, *target);
}

/// Whether another loaded element holds `target` in its own `property`.
bool isHeldByAnother(const ElementImpl& element, const PropertyInfo& property,
                     ElementImpl& target) {
  return std::ranges::any_of(links::referrersOf(target), [&](const Incoming& entry) {
    const ElementImpl& owner = *Chunk::find(target, entry.owner);
    return &owner != &element && !owner.isProxy() &&
           &links::propertyOf(owner, entry.link) == &property;
  });
}

/// Lets go of what the other end, where it is loaded, has let go of meanwhile.
void dropOutdatedEnds(ElementImpl& element, const PropertyInfo& property) {
  const std::uint32_t count =
      property.has(kMany) ? Raw::at<ReferenceList>(element, property).size : 1;
  for (std::uint32_t i = 0; i < count; ++i) {
    const ElementId id = links::slotAt(element, property, i).target;
    if (id == kNoElement) continue;
    ElementImpl& target = *Chunk::find(element, id);
    const bool outdated =
        target.isProxy()
            ? !property.opposite->has(kMany) && isHeldByAnother(element, property, target)
            : !references::find(target, *property.opposite, &element);
    if (outdated) links::unplace(element, property, i);
  }
}

/// Makes the own ends of references that loaded elements have made meanwhile.
void addMissingEnds(ElementImpl& element) {
  for (std::size_t i = 0; i < links::referrersOf(element).size(); ++i) {
    const Incoming entry = links::referrersOf(element)[i];
    ElementImpl& owner = *Chunk::find(element, entry.owner);
    const PropertyInfo* property = links::propertyOf(owner, entry.link).opposite;
    if (!property || owner.isProxy() || references::find(element, *property, &owner)) continue;
    const bool taken =
        !property->has(kMany) && Raw::at<ReferenceSlot>(element, *property).target != kNoElement;
    if (taken) links::unplace(element, *property, 0);
    storeReference(element, *property, &owner);
  }
}

struct Task {
  const BuilderValues* values;
  ElementImpl* owner;
  const PropertyInfo* property;
};

}  // namespace

ModelElement Creation::create(const BuilderValues& root, const uuid& identity) {
  const Model& model = root.model();
  if (!model || !model->isOpen()) reportException(mf0::messages::CannotCreateWithoutModel());
  ModelImpl::Scope scope(*model.impl());
  ModelElement created;
  // Breadth first, so that deep contents do not deepen the stack and lists keep their order.
  std::vector<Task> tasks{{&root, nullptr, nullptr}};
  for (std::size_t i = 0; i < tasks.size(); ++i) {
    const Task task = tasks[i];
    ElementImpl* element =
        model->createElement(task.values->classInfo(), created ? uuid{} : identity);
    if (!created) created = ModelElement(element);
    if (task.owner) {
      task.property->has(kMany)
          ? references::insert(*task.owner, *task.property, references::kEnd, element)
          : references::set(*task.owner, *task.property, element);
    }
    fill(*element, *task.values);
    for (const BuilderValues::Item& item : task.values->items_) {
      if (item.child) tasks.push_back({&item.child->values(), element, item.property});
    }
  }
  scope.done();
  return created;
}

void Creation::fill(ElementImpl& element, const BuilderValues& values) {
  for (const BuilderValues::Item& item : values.items_) {
    if (item.child) continue;
    const PropertyInfo& property = *item.property;
    if (property.kind == ValueKind::kElement) {
      const ModelElement target = item.value.getValue<ModelElement>();
      if (property.has(kMany)) {
        references::insert(element, property, references::kEnd, target.impl());
      } else {
        references::set(element, property, target.impl());
      }
    } else if (property.has(kMany)) {
      AbstractPrimitiveCollection(&element, property).addValue(item.value);
    } else {
      storeSingle(element, property, item.value);
    }
  }
}

namespace {

void storeLoaded(ElementImpl& element, const PropertyInfo& property, const Value& value) {
  if (property.kind == ValueKind::kElement) {
    storeReference(element, property, value.getValue<ModelElement>().impl());
  } else if (property.has(kMany)) {
    storeItem(element, property, value);
  } else {
    storeSingle(element, property, value);
  }
}

/// Makes the two-sided references of a loaded element agree with their other ends, which were in
/// memory while it was not.
void matchEnds(ElementImpl& element) {
  forEachProperty(element.classInfo(), [&](const PropertyInfo& property) {
    if (property.opposite) dropOutdatedEnds(element, property);
  });
  addMissingEnds(element);
}

}  // namespace

void Creation::load(ElementImpl& proxy, const BuilderValues& values) {
  for (const BuilderValues::Item& item : values.items_) {
    if (item.child) {
      reportException(mf0::messages::CannotResolveProxy(
          proxy.Uuid().toString(), "its loader answers contents that exist nowhere yet"));
    }
    if (item.property->kind != ValueKind::kElement || item.value.isEmpty()) continue;
    references::check(proxy, *item.property, item.value.getValue<ModelElement>().impl());
  }
  ModelImpl& model = proxy.model();
  model.openLog();
  const std::size_t mark = model.log().records.size();
  model.log().add({.kind = UndoKind::kLoad, .element = proxy.id()});
  Raw::layout(proxy).applyDefaults(proxy);
  try {
    for (const BuilderValues::Item& item : values.items_) {
      storeLoaded(proxy, *item.property, item.value);
    }
    matchEnds(proxy);
  } catch (...) {
    const vexal::ReleasePause pause;
    model.rollbackTo(mark);
    throw;
  }
  Raw::setProxy(proxy, false);
  if (!model.isInTransaction()) model.log().drop(mark);
}

void Creation::empty(ElementImpl& element) noexcept {
  links::withdraw(element);
  forEachProperty(element.classInfo(), [&](const PropertyInfo& property) {
    if (property.has(kContainment)) return;
    if (property.isReferenceList()) {
      links::releaseSlots(element, property);
    } else if (property.has(kMany)) {
      Raw::at<PrimitiveList>(element, property).values.reset();
    } else if (property.kind == ValueKind::kElement) {
      Raw::at<ReferenceSlot>(element, property) = {};
    } else if (property.kind == ValueKind::kString) {
      Raw::at<Text>(element, property) = {};
    } else if (property.kind == ValueKind::kArray) {
      const vxArray*& slot = Raw::at<ArraySlot>(element, property).array;
      vexal::deletePropertyArray(const_cast<vxArray*>(std::exchange(slot, nullptr)));
    } else {
      Raw::store(element, property, 0, values::sizeOf(property));
    }
  });
}

}  // namespace mf::zero
