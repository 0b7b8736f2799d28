// Elements by reflection: values by property, whole states, old values.
#include <algorithm>

#include "framework/collection.h"
#include "framework/element.h"
#include "framework/meta/meta.h"
#include "framework/model_impl.h"
#include "framework/primitive_collection.h"
#include "framework/raw.h"
#include "framework/undo.h"
#include "framework/values.h"
#include "host/array.h"

namespace mf::zero {

namespace {

std::vector<ModelElement> elementsOf(const PropertyInfo& property, const Value& list) {
  std::vector<ModelElement> elements;
  for (const Value& item : list.items()) {
    if (item.meta() != Value::metaOf<ModelElement>() && !item.isEmpty()) {
      reportException(mf0::messages::CannotCastIncompatibleTypes(property.type));
    }
    elements.push_back(item.getValue<ModelElement>());
  }
  return elements;
}

void setMany(ElementImpl& element, const PropertyInfo& property, const Value& value) {
  if (!value.isEmpty() && !value.isList()) {
    reportException(mf0::messages::CannotCastIncompatibleTypes(property.type));
  }
  if (property.isReferenceList()) {
    ReferenceCollection(&element, property).assign(elementsOf(property, value));
  } else {
    AbstractPrimitiveCollection(&element, property).assignValues(value.items());
  }
}

[[noreturn]] void raiseReadOnly(const PropertyInfo& property) {
  reportException(mf0::messages::CannotSetReadOnlyProperty(
      std::string(property.owner->qualifiedName) + '.' + toUtf8(property.name)));
}

/// The description of a number that the element has and may simply be read and set, which is what
/// most are; null where that takes a closer look.
inline const PropertyInfo* plainRealOf(const ElementImpl& element, const meta::Property& property) {
  if (!property || !Raw::isPlain(*property.impl())) [[unlikely]]
    return nullptr;
  const PropertyInfo* const info = property->storedReal();
  return info && element.classInfo().isA(*info->owner) ? info : nullptr;
}

}  // namespace

const PropertyInfo& ElementImpl::checkedInfo(const meta::Property& property) const {
  const PropertyInfo& info = meta::infoOf(property);
  if (classInfo().isA(*info.owner)) return info;
  reportException(mf0::messages::NoSuchProperty(classInfo().qualifiedName, toUtf8(info.name)));
}

bool ElementImpl::hasPropertyValue(const meta::Property& property) const {
  return has(checkedInfo(property));
}

const double* ElementImpl::findReal(const meta::Property& property) const {
  const PropertyInfo* const info = plainRealOf(*this, property);
  return info && Raw::isPlain(*this) ? &Raw::at<double>(*this, *info) : nullptr;
}

Value ElementImpl::readProperty(const meta::Property& property) const {
  return get(checkedInfo(property));
}

Value ElementImpl::get(const PropertyInfo& property) const {
  if (flags_ & kAttention) [[unlikely]]
    prepareRead();
  return property.derive ? property.derive(*this) : values::read(*this, property);
}

void ElementImpl::writeReal(const meta::Property& property, double value) {
  const PropertyInfo* const info = plainRealOf(*this, property);
  if (!info) [[unlikely]]
    return writeProperty(property, value);
  assign(*info, Raw::at<double>(*this, *info), value);
}

/// Not inlined: it would take registers from those that write a plain number.
[[gnu::noinline]] void ElementImpl::writeProperty(const meta::Property& property,
                                                  const Value& value) {
  set(checkedInfo(property), value);
}

bool ElementImpl::has(const PropertyInfo& property) const {
  if (flags_ & kAttention) prepareRead();
  if (property.derive) return values::isPresent(property.derive(*this));
  return values::isPresent(*this, property);
}

void ElementImpl::set(const PropertyInfo& property, const Value& value) {
  if (property.has(kReadOnly)) raiseReadOnly(property);
  if (property.has(kMany)) return setMany(*this, property, value);
  values::checkSingle(property, value);
  switch (property.kind) {
    case ValueKind::kBoolean:
      return assign(property, Raw::at<bool>(*this, property), value.bits() != 0);
    case ValueKind::kInteger8:
      return assign(property, Raw::at<std::int8_t>(*this, property),
                    static_cast<std::int8_t>(value.bits()));
    case ValueKind::kInteger:
    case ValueKind::kEnumeration:
      return assign(property, Raw::at<std::int32_t>(*this, property),
                    static_cast<std::int32_t>(value.bits()));
    case ValueKind::kReal:
      return assign(property, Raw::at<double>(*this, property),
                    std::bit_cast<double>(value.bits()));
    default: return setShared(property, value);
  }
}

void ElementImpl::setShared(const PropertyInfo& property, const Value& value) {
  if (property.kind == ValueKind::kString) {
    assign(property, Raw::at<Text>(*this, property),
           std::u16string_view(value.getValue<std::u16string>()));
  } else if (property.kind == ValueKind::kArray) {
    assign(property, Raw::at<ArraySlot>(*this, property), value.getValue<const vxArray*>());
  } else {
    assign(property, Raw::at<ReferenceSlot>(*this, property), value.getValue<ModelElement>());
  }
}

// Old values

namespace {

/// Takes an entry's records out of the log; none, if another element's destruction is among them.
/// References keep theirs: while they were away, others may have taken their room at the targets,
/// and undoing that must find it free again.
bool withdraw(ModelImpl& model, const ChangeIndex::Entry& entry) {
  UndoLog& log = model.log();
  const ChangeIndex& index = log.index();
  std::vector<std::uint32_t> records;
  for (std::uint32_t step = entry.lastStep; step != ChangeIndex::kNone;
       step = index.step(step).previous) {
    records.push_back(index.step(step).record);
    if (log.records[records.back()].kind == UndoKind::kDestroy) return false;
  }
  for (const std::uint32_t number : records) {
    UndoRecord& record = log.records[number];
    undo::settle(model, record);
    record.kind = record.kind == UndoKind::kReference ? UndoKind::kForgotten : UndoKind::kNothing;
  }
  log.index().forget(entry);
  return true;
}

}  // namespace

Value ElementImpl::getOldValue(const meta::Property& property) const {
  const PropertyInfo& info = checkedInfo(property);
  if (info.derive || !model().isInTransaction()) return get(info);
  if (isProxy() || (isDestroyed() && !Raw::isInLog(*this))) prepareRead();
  UndoLog& log = model().log();
  return undo::isCreatedIn(log, *this) ? Value() : undo::valueBefore(log, *this, info);
}

int ElementImpl::revertUnchanged() {
  if (!model().isInTransaction()) return 0;
  const vexal::ReleasePause pause;
  UndoLog& log = model().log();
  const ChangeIndex& index = log.index();
  int reverted = 0;
  forEachProperty(classInfo(), [&](const PropertyInfo& property) {
    // What is contained has moved by way of other elements, whose records need this one's.
    if (property.has(kMany) || property.has(kContainment)) return;
    const ChangeIndex::Entry* entry = index.find(id(), property.index);
    if (!entry || index.step(entry->firstStep).record < model().mark()) return;
    if (undo::valueBefore(log, *this, property) != values::read(*this, property)) return;
    reverted += withdraw(model(), *entry);
  });
  return reverted;
}

// Whole states

ElementState::ElementState(const ClassInfo& info) : info_(&info), values_(info.indexCount) {
  forEachProperty(info, [this](const PropertyInfo& property) {
    setValue(property.index, values::startOf(property));
  });
}

const Value& ElementState::value(int index) const {
  if (index < 1 || static_cast<std::size_t>(index) > values_.size()) {
    reportException(mf0::messages::NoSuchProperty(info_->qualifiedName, std::to_string(index)));
  }
  return values_[static_cast<std::size_t>(index) - 1];
}

void ElementState::setValue(int index, Value value) {
  const_cast<Value&>(std::as_const(*this).value(index)) = std::move(value);
}

ElementState ElementImpl::createStorage() const { return ElementState(classInfo()); }

ElementState ElementImpl::createChanges() const {
  ElementState state(classInfo());
  for (int index = 1; index <= classInfo().indexCount; ++index) copyValue(state, index);
  return state;
}

void ElementImpl::copyValue(ElementState& into, int index) const {
  const PropertyInfo* property = classInfo().findByIndex(index);
  if (!property) {
    reportException(
        mf0::messages::NoSuchProperty(classInfo().qualifiedName, std::to_string(index)));
  }
  into.setValue(index, get(*property));
}

void ElementImpl::copyStateFromStorage(const ElementState& state) {
  if (&state.classInfo() != &classInfo()) {
    reportException(mf0::messages::CannotCastIncompatibleTypes(classInfo().qualifiedName));
  }
  if (flags_ & kAttention) refuseChange();
  ModelImpl::Scope scope(model());
  forEachProperty(classInfo(), [&](const PropertyInfo& property) {
    const Value& value = state.value(property.index);
    if (property.kind != ValueKind::kArray) return set(property, value);
    // Once in an element, an array needs no check to come back.
    PropertyInfo unchecked{property.name,  property.type,   property.kind,     property.flags,
                           property.index, property.offset, property.identity, property.owner};
    const auto* array = value.getValue<const vxArray*>();
    if (values::read(*this, property) != value) {
      assign(unchecked, Raw::at<ArraySlot>(*this, property), array);
    }
  });
  scope.done();
}

}  // namespace mf::zero
