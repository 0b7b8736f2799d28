#include "framework/element.h"

#include <atomic>

#include "framework/links.h"
#include "framework/meta/meta.h"
#include "framework/model_impl.h"
#include "framework/raw.h"
#include "framework/references.h"
#include "framework/undo.h"
#include "framework/values.h"
#include "host/array.h"

namespace mf::zero {

ArraySlot::~ArraySlot() { vexal::deletePropertyArray(const_cast<vxArray*>(array)); }

void ModelElement::raiseEmpty() { reportException(mf0::messages::CannotUseEmptyHandle()); }

// Counting

void ElementImpl::firstRef() { model().addRef(); }

void ElementImpl::lastRef() noexcept {
  ModelImpl& owner = model();
  if (isDestroyed() && (flags_ & kInLog) == 0) owner.pool().release(this);
  owner.removeRef();
}

void ElementImpl::addSharedRef() { std::atomic_ref(refs_).fetch_add(1, std::memory_order_relaxed); }

void ElementImpl::removeSharedRef() noexcept {
  // A destroyed one keeps its cell: other threads may be holding on to it.
  std::atomic_ref(refs_).fetch_sub(1, std::memory_order_release);
}

// State

Model ElementImpl::getModel() const { return Model(&model()); }

ModelElement ElementImpl::getOwner() const {
  if (owner_ == kNoElement || isDestroyed()) return {};
  return ModelElement(Chunk::find(*this, owner_));
}

void ElementImpl::prepareRead() const {
  if (isDestroyed()) {
    reportException(mf0::messages::CannotUseDestroyedElement(classInfo().qualifiedName));
  }
  if (isProxy()) resolve();
}

void ElementImpl::refuseChange() const {
  if (isDestroyed()) {
    reportException(mf0::messages::CannotUseDestroyedElement(classInfo().qualifiedName));
  }
  reportException(mf0::messages::CannotModifyProxy());
}

// Setters: record the old value, store the new one, tell the observers. What can fail comes first.

namespace {

/// Whether undoing the newest record of the open transaction restores the value anyway.
inline bool isCovered(const ModelImpl& model, const UndoLog& log, UndoKind kind, ElementId element,
                      const PropertyInfo& property) {
  return model.isInTransaction() && (log.hasSet(kind, element, property.index, model.mark()) ||
                                     log.coversNew(element, model.mark()));
}

template <class Bits>
constexpr UndoKind kKindOf = sizeof(Bits) == 8   ? UndoKind::kWord
                             : sizeof(Bits) == 4 ? UndoKind::kHalf
                                                 : UndoKind::kByte;

/// Apart, so that the change that nobody watches stays short.
template <class Bits>
[[gnu::noinline]] void changeRecorded(ElementImpl& element, const PropertyInfo& property,
                                      void* slot, Bits bits) {
  ModelImpl& model = element.model();
  model.checkWritable();
  Bits old;
  std::memcpy(&old, slot, sizeof old);
  const ElementId id = element.id();
  if (UndoLog& log = model.log(); !isCovered(model, log, kKindOf<Bits>, id, property)) {
    log.add({.kind = kKindOf<Bits>, .property = property.index, .element = id, .old = old});
  }
  std::memcpy(slot, &bits, sizeof bits);
  if (!model.isInTransaction()) model.publish();
}

template <class Bits>
void changePlain(ElementImpl& element, const PropertyInfo& property, void* slot, Bits bits) {
  if (!element.model().isUnwatched()) return changeRecorded(element, property, slot, bits);
  std::memcpy(slot, &bits, sizeof bits);
}

/// Whether the old value of an owning property must be kept for undoing.
bool mustKeep(ModelImpl& model, const ElementImpl& element, UndoKind kind,
              const PropertyInfo& property) {
  return model.isRecording() && !isCovered(model, model.log(), kind, element.id(), property);
}

}  // namespace

void ElementImpl::changeWord(const PropertyInfo& property, void* slot, std::uint64_t bits) {
  changePlain(*this, property, slot, bits);
}

void ElementImpl::changeHalf(const PropertyInfo& property, void* slot, std::uint32_t bits) {
  changePlain(*this, property, slot, bits);
}

void ElementImpl::changeLiteral(const PropertyInfo& property, void* slot, std::int32_t number) {
  values::checkLiteral(*property.enumeration, Value(property.enumeration, number));
  changeHalf(property, slot, static_cast<std::uint32_t>(number));
}

void ElementImpl::changeByte(const PropertyInfo& property, void* slot, std::uint8_t bits) {
  changePlain(*this, property, slot, bits);
}

void ElementImpl::changeText(const PropertyInfo& property, Text& slot, std::u16string_view value) {
  ModelImpl& owner = model();
  owner.checkWritable();
  Text next(owner.texts(), value);
  if (mustKeep(owner, *this, UndoKind::kText, property)) {
    owner.log().add({.kind = UndoKind::kText, .property = property.index, .element = id()});
    owner.log().records.back().old = slot.detach();
  }
  slot = std::move(next);
  owner.publishIfOutermost();
}

void ElementImpl::changeArray(const PropertyInfo& property, ArraySlot& slot, const vxArray* value) {
  if (property.check) property.check(*this, value);
  // The check is foreign code: it may have destroyed the element or set the property itself.
  if (flags_ & kAttention) refuseChange();
  ModelImpl& owner = model();
  owner.checkWritable();
  vexal::PropertyArrayPtr copy = vexal::copyForProperty(value);
  const bool keep = mustKeep(owner, *this, UndoKind::kArray, property);
  if (keep) {
    owner.log().add({.kind = UndoKind::kArray, .property = property.index, .element = id()});
    owner.log().records.back().old = reinterpret_cast<std::uintptr_t>(slot.array);
  }
  // Released at the very end: the payload of a host object is foreign code.
  const auto old = const_cast<vxArray*>(std::exchange(slot.array, copy.release()));
  const vexal::PropertyArrayPtr replaced(keep ? nullptr : old);
  owner.publishIfOutermost();
}

void ElementImpl::assign(const PropertyInfo& property, ReferenceSlot& slot,
                         const ModelElement& value) {
  if (flags_ & kAttention) [[unlikely]]
    refuseChange();
  if (target(slot) == value.impl()) return;
  references::set(*this, property, value.impl());
}

// Ending

void ElementImpl::doDestroy(bool withContents, bool evenIfReferenced) {
  if (flags_ & kAttention) refuseChange();
  const ModelElement keep(this);
  references::destroy(*this, withContents, evenIfReferenced);
}

void ElementImpl::reserveReferrers(std::size_t count) {
  if (isDestroyed()) refuseChange();
  if (count > links::roomForReferrers(*this)) links::growReferrers(*this, count);
}

// Not in the header: compilers drop loops that do nothing but give hints.
void ElementImpl::prefetchReferrers() const {
  if (!referrers_.list || (flags_ & kOnlyReferrer)) return;
  __builtin_prefetch(referrers_.list->entries() + std::ptrdiff_t{referrers_.list->size} - 1, 1);
}

void ElementImpl::disassociateIncoming() {
  if (isDestroyed()) refuseChange();
  references::clearIncoming(*this);
}

void ElementImpl::basicDisassociateAll() {
  if (flags_ & kAttention) refuseChange();
  ModelImpl::Scope scope(model());
  forEachProperty(classInfo(), [&](const PropertyInfo& property) {
    if (property.kind != ValueKind::kElement || property.has(kContainment)) return;
    property.has(kMany) ? references::clear(*this, property)
                        : references::set(*this, property, nullptr);
  });
  scope.done();
}

namespace {

void checkReference(const PropertyInfo& property) {
  if (property.kind == ValueKind::kElement) return;
  reportException(mf0::messages::CannotCastIncompatibleTypes(property.type));
}

}  // namespace

void ElementImpl::inverseAdd(const ModelElement& element, const meta::Property& property) {
  if (flags_ & kAttention) refuseChange();
  const PropertyInfo& info = checkedInfo(property);
  checkReference(info);
  if (!info.has(kMany)) return assign(info, Raw::at<ReferenceSlot>(*this, info), element);
  references::insert(*this, info, references::kEnd, element.impl());
}

void ElementImpl::inverseRemove(const ModelElement& element, const meta::Property& property) {
  if (flags_ & kAttention) refuseChange();
  const PropertyInfo& info = checkedInfo(property);
  checkReference(info);
  const std::optional<std::uint32_t> position = references::find(*this, info, element.impl());
  if (!position) reportException(mf0::messages::NoSuchElement());
  references::removeSlot(*this, info, *position);
}

ModelElement ElementImpl::createInto(const PropertyInfo& property, Builder& builder,
                                     const uuid& identity) {
  if (flags_ & kAttention) refuseChange();
  ModelImpl::Scope scope(model());
  builder.setModel(getModel());
  ModelElement child = builder.create(identity);
  if (property.has(kMany)) {
    references::insert(*this, property, references::kEnd, child.impl());
  } else {
    references::set(*this, property, child.impl());
  }
  scope.done();
  return child;
}

}  // namespace mf::zero
