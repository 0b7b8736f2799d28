#include "framework/references.h"

#include <algorithm>
#include <vector>

#include "framework/links.h"
#include "framework/messages.h"
#include "framework/model_impl.h"
#include "framework/raw.h"

namespace mf::zero::references {

namespace {

ReferenceList& listOf(const ElementImpl& owner, const PropertyInfo& property) {
  return Raw::at<ReferenceList>(owner, property);
}

ElementImpl* singleOf(const ElementImpl& owner, const PropertyInfo& property) {
  const ElementId id = Raw::at<ReferenceSlot>(owner, property).target;
  return id == kNoElement ? nullptr : Chunk::find(owner, id);
}

ElementImpl& targetAt(const ElementImpl& owner, const PropertyInfo& property,
                      std::uint32_t position) {
  return *Chunk::find(owner, links::slotAt(owner, property, position).target);
}

/// Whether a reference of an element made by the newest record needs no record of its own.
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

/// Both ends. A proxy has none of its own to take; nor does the old one come back when it is
/// loaded.
void unlink(ElementImpl& owner, const PropertyInfo& property, std::uint32_t position) {
  ElementImpl& target = targetAt(owner, property, position);
  take(owner, property, position);
  if (!property.opposite) return;
  if (const auto back = find(target, *property.opposite, &owner)) {
    take(target, *property.opposite, *back);
  }
}

}  // namespace

void detach(ElementImpl& child) {
  if (Raw::owner(child) == kNoElement) return;
  ElementImpl& owner = *Chunk::find(child, Raw::owner(child));
  const PropertyInfo& property = *owner.classInfo().findByIndex(Raw::ownerProperty(child));
  unlink(owner, property, property.has(kMany) ? Raw::position(child) : 0);
}

namespace {

/// Makes the opposite end of a new reference; frees it first where it holds just one.
void linkOpposite(ElementImpl& owner, const PropertyInfo& property, ElementImpl& target) {
  if (!property.opposite) return;
  const PropertyInfo& opposite = *property.opposite;
  if (&opposite == &property && &owner == &target) return;  // a friend of its own
  if (opposite.has(kContainment)) detach(owner);
  if (opposite.has(kMany)) return putInList(target, opposite, kEnd, owner);
  if (singleOf(target, opposite)) unlink(target, opposite, 0);
  putSingle(target, opposite, &owner);
}

/// A change of one list or slot and nothing else needs no transaction of its own.
bool isSimple(const PropertyInfo& property) {
  return !property.has(kContainment) && !property.opposite;
}

void tidy(ElementImpl& owner, const PropertyInfo& property) {
  const ReferenceList& list = listOf(owner, property);
  if (list.holes < 16 || list.holes < list.size / 2) return;
  ModelImpl& model = owner.model();
  if (!model.isIdle()) return;
  links::compact(owner, property);
}

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

/// `check`, and loads a proxy that must not be held as one or whose own end changes too.
void admit(const ElementImpl& owner, const PropertyInfo& property, const ElementImpl* target) {
  check(owner, property, target);
  if (!target->isProxy()) return;
  if (property.opposite || (property.has(kMany) && !property.has(kWithProxies))) target->resolve();
}

}  // namespace

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
  IncomingList* referrers = Raw::incoming(held);
  if (!referrers) return std::nullopt;
  if (std::min(referrers->size, list.size) > kLongSearch && !owner.model().isShared()) {
    const std::uint64_t key = ListIndexes::key(owner.id(), property.index);
    return owner.model().lists().slots(list, key).find(list, id);
  }
  if (referrers->size < list.size) {
    const ElementId ownerId = owner.id();
    const std::uint32_t index = links::link(property, 0);
    for (std::uint32_t i = 0; i < referrers->size; ++i) {
      const Incoming& entry = referrers->entries()[i];
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
  if (target) admit(owner, property, target);
  ElementImpl* const old = singleOf(owner, property);
  if (old == target) return;
  if (isSimple(property)) {
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

bool isReferencedFromOutside(const ElementImpl& element, const ElementImpl& whole) {
  IncomingList* list = Raw::incoming(const_cast<ElementImpl&>(element));
  if (!list) return false;
  return std::any_of(list->entries(), list->entries() + list->size, [&](const Incoming& entry) {
    return !contains(whole, *Chunk::find(element, entry.owner));
  });
}

void clearIncoming(ElementImpl& element) {
  ModelImpl& model = element.model();
  model.checkWritable();
  ModelImpl::Scope scope(model);
  while (Raw::incoming(element) && Raw::incoming(element)->size > 0) {
    const Incoming entry = Raw::incoming(element)->entries()[Raw::incoming(element)->size - 1];
    ElementImpl& owner = *model.pool().at(entry.owner);
    unlink(owner, links::propertyOf(owner, entry.link), links::positionOf(entry.link));
  }
  scope.done();
}

}  // namespace mf::zero::references
