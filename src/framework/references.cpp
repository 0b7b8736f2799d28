#include "framework/references.h"

#include <algorithm>

#include "framework/messages.h"
#include "framework/reference_steps.h"

namespace mf::zero::references {

namespace {

bool contains(const ElementImpl& container, const ElementImpl& element) {
  for (const ElementImpl* e = &element;;) {
    if (e == &container) return true;
    const ElementId owner = Raw::owner(const_cast<ElementImpl&>(*e));
    if (owner == kNoElement) return false;
    e = Chunk::find(element, owner);
  }
}

bool hasContents(const ElementImpl& element) {
  bool has = false;
  forEachProperty(element.classInfo(), [&](const PropertyInfo& property) {
    if (!property.has(kContainment)) return;
    has |= property.has(kMany) ? listOf(element, property).live() > 0
                               : Raw::at<ReferenceSlot>(element, property).target != kNoElement;
  });
  return has;
}

}  // namespace

void check(const ElementImpl& owner, const PropertyInfo& property, const ElementImpl* target) {
  if (!target || target->isDestroyed()) {
    reportException(mf0::messages::CannotAddNonExistentObject());
  }
  if (!target->classInfo().isA(*property.target)) {
    reportException(mf0::messages::CannotAddIncompatibleTypes(
        toUtf16(property.target->qualifiedName), toUtf16(target->classInfo().qualifiedName)));
  }
  if (&target->model() != &owner.model()) {
    reportException(mf0::messages::CannotCreateCrossModelAssociation());
  }
  const auto cycle = [](const ElementImpl& container, const ElementImpl& content) {
    // An element without contents contains nothing but itself.
    return &content == &container || (hasContents(content) && contains(content, container));
  };
  const bool closesCycle = property.has(kContainment) ? cycle(owner, *target)
                           : property.opposite && property.opposite->has(kContainment)
                               ? cycle(*target, owner)
                               : false;
  if (closesCycle) reportException(mf0::messages::CannotCreateContainmentCycle());
}

namespace {

/// Beyond this, searching one after the other costs more than keeping an index.
constexpr std::uint32_t kLongSearch = 64;

}  // namespace

std::optional<std::uint32_t> find(const ElementImpl& owner, const PropertyInfo& property,
                                  const ElementImpl* target) {
  if (!target || &target->model() != &owner.model()) return std::nullopt;
  const ElementId id = target->id();
  if (!property.has(kMany)) {
    if (Raw::at<ReferenceSlot>(owner, property).target == id) return 0;
    return std::nullopt;
  }
  auto& held = const_cast<ElementImpl&>(*target);
  if (property.has(kContainment)) {
    const bool here = Raw::owner(held) == owner.id() && Raw::ownerProperty(held) == property.index;
    return here ? std::optional(Raw::position(held)) : std::nullopt;
  }
  const ReferenceList& list = listOf(owner, property);
  const std::span<const Incoming> referrers = links::referrersOf(held);
  if (std::min<std::size_t>(referrers.size(), list.size) > kLongSearch &&
      !owner.model().isShared()) {
    const std::uint64_t key = ListIndexes::key(owner.id(), property.index);
    return owner.model().lists().slots(list, key).find(list, id);
  }
  if (referrers.size() < list.size) {
    const ElementId ownerId = owner.id();
    const std::uint32_t index = links::link(property, 0);
    for (const Incoming& entry : referrers) {
      if (entry.owner == ownerId && entry.link - links::positionOf(entry.link) == index) {
        return links::positionOf(entry.link);
      }
    }
    return std::nullopt;
  }
  for (std::uint32_t i = 0; i < list.size; ++i) {
    if (list.slots[i].target == id) return i;
  }
  return std::nullopt;
}

void set(ElementImpl& owner, const PropertyInfo& property, ElementImpl* target) {
  ModelImpl& model = owner.model();
  model.checkWritable();
  const bool simple = isSimple(property);
  if (target && !(simple && isWelcome(model, property, target))) admit(owner, property, target);
  ElementImpl* const old = singleOf(owner, property);
  if (old == target) return;
  if (simple) {
    putSingle(owner, property, target);
    return model.publishIfOutermost();
  }
  ModelImpl::Scope scope(model);
  if (old) unlink(owner, property, 0);
  if (target) {
    if (property.has(kContainment)) detach(*target);
    linkOpposite(owner, property, *target);
    putSingle(owner, property, target);
  }
  scope.done();
}

void insert(ElementImpl& owner, const PropertyInfo& property, std::uint32_t position,
            ElementImpl* target) {
  ModelImpl& model = owner.model();
  model.checkWritable();
  admit(owner, property, target);
  if (find(owner, property, target)) reportException(mf0::messages::CannotAddSecondObject());
  if (position == kEnd) tidy(owner, property);
  if (isSimple(property)) {
    putInList(owner, property, position, *target);
    return model.publishIfOutermost();
  }
  if (!property.opposite && Raw::owner(*target) == kNoElement) {
    putInList(owner, property, position, *target);
    return model.publishIfOutermost();
  }
  ModelImpl::Scope scope(model);
  if (property.has(kContainment)) detach(*target);
  linkOpposite(owner, property, *target);
  putInList(owner, property, position, *target);
  scope.done();
}

void removeSlot(ElementImpl& owner, const PropertyInfo& property, std::uint32_t position) {
  ModelImpl& model = owner.model();
  model.checkWritable();
  if (!property.opposite) {
    take(owner, property, position);
    if (property.has(kMany)) tidy(owner, property);
    return model.publishIfOutermost();
  }
  ModelImpl::Scope scope(model);
  unlink(owner, property, position);
  scope.done();
}

bool isReferencedFromOutside(const ElementImpl& element, const ElementImpl& whole) {
  return std::ranges::any_of(links::referrersOf(element), [&](const Incoming& entry) {
    return !contains(whole, *Chunk::find(element, entry.owner));
  });
}

void clearIncoming(ElementImpl& element) {
  ModelImpl& model = element.model();
  model.checkWritable();
  ModelImpl::Scope scope(model);
  while (!links::referrersOf(element).empty()) {
    const Incoming entry = links::referrersOf(element).back();
    ElementImpl& owner = *model.pool().at(entry.owner);
    unlink(owner, links::propertyOf(owner, entry.link), links::positionOf(entry.link));
  }
  scope.done();
}

}  // namespace mf::zero::references
