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

bool holds(const ReferenceList& list, ElementId id) {
  for (std::uint32_t i = 0; i < list.size; ++i) {
    if (list.slots[i].target == id) return true;
  }
  return false;
}

/// Slots behind a list's end that are being filled; their notes go again unless they are kept.
struct Filling {
  const ElementImpl& owner;
  ReferenceSlot* first;
  ReferenceSlot* next = first;
  ~Filling() {
    while (next != first) links::forgetNewest(*Chunk::find(owner, (--next)->target));
  }
  void keep() { first = next; }
};

/// Puts plain references at the end of a list, each checked and noted in one go. False, and none is
/// there, when a target needs a closer look: it may be a proxy, held already, or none to refer to.
bool putAtEnd(ElementImpl& owner, const PropertyInfo& property,
              std::span<ElementImpl* const> targets) {
  ReferenceList& list = listOf(owner, property);
  const std::uint32_t before = list.size;
  links::reserveSlots(owner, property, before + targets.size());
  Filling filling{owner, list.slots + before};
  Incoming note{owner.id(), links::link(property, before)};
  const ClassLayout* welcome = nullptr;  // says class and model at once
  for (ElementImpl* target : targets) {
    if (!target || !Raw::isPlain(*target)) return false;
    const Chunk& chunk = *Chunk::of(target);
    if (chunk.layout != welcome) {
      if (!isWelcome(owner.model(), property, target)) return false;
      welcome = chunk.layout;
    }
    const ElementId id = chunk.idOf(target);
    if (before > 0 && holds(list, id)) return false;
    links::reserveReferrer(*target);
    // What this very call has put there has its note as the newest.
    if (links::isNewestFrom(*target, note)) return false;
    *filling.next = {id, links::noteReferrer(*target, note)};
    ++filling.next;
    ++note.link;
  }
  list.size += static_cast<std::uint32_t>(targets.size());
  filling.keep();
  return true;
}

/// The quick way for plain references: no undo, one record.
bool appendAtOnce(ElementImpl& owner, const PropertyInfo& property,
                  std::span<ElementImpl* const> targets) {
  ModelImpl& model = owner.model();
  const bool recorded = model.isRecording() && !coveredByCreation(model, owner, property);
  if (recorded) model.log().makeRoom();
  const std::uint32_t before = listOf(owner, property).size;
  if (!putAtEnd(owner, property, targets)) return false;
  if (recorded) {
    model.log().add({.kind = UndoKind::kInsert,
                     .property = property.index,
                     .element = owner.id(),
                     .position = before,
                     .count = static_cast<std::uint32_t>(targets.size())});
  }
  links::dropIndex(owner, property);
  return true;
}

}  // namespace

void append(ElementImpl& owner, const PropertyInfo& property,
            std::span<ElementImpl* const> targets) {
  ModelImpl& model = owner.model();
  model.checkWritable();
  if (targets.empty()) return;
  const ReferenceList& list = listOf(owner, property);
  const std::size_t total = list.size + targets.size();
  if (isSimple(property) && (total <= kShortList || list.size == 0) &&
      appendAtOnce(owner, property, targets)) {
    return model.publishIfOutermost();
  }
  ModelImpl::Scope scope(model);
  links::reserveSlots(owner, property, total);
  for (ElementImpl* target : targets) insert(owner, property, kEnd, target);
  scope.done();
}

namespace {

/// A new element of which nobody has been told, its plain list filled at once; null, and nothing
/// done, where that does not go.
ElementImpl* createAtOnce(ModelImpl& model, const ClassInfo& info, const PropertyInfo& property,
                          std::span<ElementImpl* const> targets) {
  if (!isSimple(property)) return nullptr;
  ElementImpl* const element = model.createElement(info, {});
  try {
    if (putAtEnd(*element, property, targets)) return element;
  } catch (...) {
    model.uncreate(*element);
    throw;
  }
  model.uncreate(*element);
  return nullptr;
}

}  // namespace

ModelElement create(ModelImpl& model, const ClassInfo& info, const PropertyInfo& property,
                    std::span<ElementImpl* const> targets) {
  if (ElementImpl* const element = createAtOnce(model, info, property, targets)) {
    ModelElement created(element);
    model.publishIfOutermost();
    return created;
  }
  ModelImpl::Scope scope(model);
  ModelElement created(model.createElement(info, {}));
  append(*created.impl(), property, targets);
  scope.done();
  return created;
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
