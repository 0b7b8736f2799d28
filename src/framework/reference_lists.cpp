// Changes of whole reference lists: many at once, moving, closing gaps.
#include <algorithm>
#include <vector>

#include "framework/messages.h"
#include "framework/reference_steps.h"
#include "framework/references.h"

namespace mf::zero {

namespace references {

namespace {

/// Lists up to this long are compared element by element, which beats every cleverness.
constexpr std::size_t kShortList = 32;

/// Whether a list holds one of `targets`, or may: null is none of its elements either.
bool mayHoldAny(const ReferenceList& list, std::span<ElementImpl* const> targets) {
  const std::span slots(list.slots, list.size);
  return !slots.empty() && std::ranges::any_of(targets, [&](const ElementImpl* target) {
    return !target || std::ranges::find(slots, target->id(), &ReferenceSlot::target) != slots.end();
  });
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
/// `welcome` is the layout of targets that suited before, which says class and model at once.
bool putAtEnd(ElementImpl& owner, const PropertyInfo& property,
              std::span<ElementImpl* const> targets, const ClassLayout*& welcome) {
  ReferenceList& list = listOf(owner, property);
  if (mayHoldAny(list, targets)) return false;
  const std::uint32_t before = list.size;
  links::reserveSlots(owner, property, before + targets.size());
  Filling filling{owner, list.slots + before};
  Incoming note{owner.id(), links::link(property, before)};
  for (ElementImpl* target : targets) {
    if (!target || !Raw::isPlain(*target)) return false;
    const Chunk& chunk = *Chunk::of(target);
    if (chunk.layout != welcome) {
      if (!isWelcome(owner.model(), property, target)) return false;
      welcome = chunk.layout;
    }
    IncomingList* const referrers = links::reserveReferrer(*target);
    // What this very call has put there has its note as the newest.
    if (referrers && links::isNewestFrom(*referrers, note)) return false;
    *filling.next = {chunk.idOf(target), links::noteReferrer(*target, referrers, note)};
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
  const ClassLayout* welcome = nullptr;
  if (!putAtEnd(owner, property, targets, welcome)) return false;
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
    const links::KeptReferrers referrers(record);
    for (const Incoming& entry : referrers.entries()) {
      visit(entry.owner, links::propertyIndexOf(entry.link));
    }
  }
}

}  // namespace references

// ElementSeries

/// An element of which nobody has been told, its plain list filled at once; null, and nothing done,
/// where that does not go.
inline ElementImpl* ElementSeries::createAtOnce(std::span<ElementImpl* const> targets) {
  if (!references::isSimple(list_)) return nullptr;
  ElementImpl* const element = model_.createElement(info_, {});
  try {
    if (references::putAtEnd(*element, list_, targets, welcome_)) return element;
  } catch (...) {
    model_.uncreate(*element);
    throw;
  }
  model_.uncreate(*element);
  return nullptr;
}

ModelElement ElementSeries::create(std::span<ElementImpl* const> targets) {
  if (ElementImpl* const element = createAtOnce(targets)) {
    ModelElement created(element);
    model_.publishIfOutermost();
    return created;
  }
  ModelImpl::Scope scope(model_);
  ModelElement created(model_.createElement(info_, {}));
  references::append(*created.impl(), list_, targets);
  scope.done();
  return created;
}

}  // namespace mf::zero
