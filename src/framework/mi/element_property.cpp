#include "framework/mi/element_property.h"

#include <algorithm>
#include <string>

#include "framework/element.h"
#include "framework/mi/enum_value_marshaler.h"
#include "framework/mi/host_objects.h"
#include "framework/mi/meta_marshaler_registry.h"
#include "framework/raw.h"
#include "framework/text.h"
#include "host/text.h"
#include "host/vcos/name.h"
#include "host/vcos/type_repository.h"

namespace mf::zero::mi {
namespace {

using vcos::Native;
using vcos::factory::PropertyRow;
using vcos::internal::keptForEver;
using vexal::ArrayPtr;

ElementImpl& elementIn(const Native& native) { return *static_cast<ElementImpl*>(native.object); }

const PropertyInfo& propertyOf(const PropertyRow& row) {
  return *static_cast<const PropertyInfo*>(row.context);
}

// The value where it lies; a proxy is loaded first.
template <class T>
const T& stored(const PropertyRow& row, const Native& native) {
  Raw::prepareRead(elementIn(native));
  return Raw::at<T>(elementIn(native), propertyOf(row));
}

void assign(const PropertyRow& row, const Native& native, const Value& value) {
  elementIn(native).set(propertyOf(row), value);
}

// Reading and writing, kind by kind ---------------------------------------------------------------

ArrayPtr readReal(const PropertyRow& row, const Native& native) {
  return vexal::createDouble(stored<double>(row, native));
}
void writeReal(const PropertyRow& row, const Native& native, const vxArray* value) {
  assign(row, native, Value(vexal::doubleData(value)[0]));
}

ArrayPtr readBoolean(const PropertyRow& row, const Native& native) {
  return vexal::createLogical(stored<bool>(row, native));
}
void writeBoolean(const PropertyRow& row, const Native& native, const vxArray* value) {
  assign(row, native, Value(vexal::elements<bool>(value)[0]));
}

ArrayPtr readText(const PropertyRow& row, const Native& native) {
  return vexal::createChar(stored<Text>(row, native).str());
}
void writeText(const PropertyRow& row, const Native& native, const vxArray* value) {
  assign(row, native, Value(vcos::factory::extractString(value)));
}

ArrayPtr readEnum(const PropertyRow& row, const Native& native) {
  return enumMember(*propertyOf(row).enumeration, stored<std::int32_t>(row, native));
}
void writeEnum(const PropertyRow& row, const Native& native, const vxArray* value) {
  const EnumInfo& info = *propertyOf(row).enumeration;
  assign(row, native, Value(&info, enumInteger(info, value)));
}

ArrayPtr readArray(const PropertyRow& row, const Native& native) {
  return MarshalPolicy<const vxArray*>::toArray(stored<ArraySlot>(row, native).array);
}
void writeArray(const PropertyRow& row, const Native& native, const vxArray* value) {
  assign(row, native, Value::ofArray(value));
}

// Small integers, single elements and derived values: what is read seldom.
ArrayPtr readOther(const PropertyRow& row, const Native& native) {
  return arrayOf(propertyOf(row), elementIn(native).get(propertyOf(row)));
}
void writeOther(const PropertyRow& row, const Native& native, const vxArray* value) {
  assign(row, native, valueOf(propertyOf(row), value));
}

ArrayPtr readCollection(const PropertyRow& row, const Native& native) {
  return toHost(elementIn(native), propertyOf(row));
}

void listElements(const PropertyRow& row, const Native& native, vcos::NativeList& to) {
  const ReferenceList& list = stored<ReferenceList>(row, native);
  for (std::uint32_t slot = 0; slot < list.size; ++slot) {
    const ElementId held = list.slots[slot].target;
    if (held != kNoElement) to.add(kElements, Chunk::find(elementIn(native), held));
  }
}

struct Access {
  vcos::factory::ReadProperty read;
  vcos::factory::WriteProperty write;
  vcos::factory::ListNatives list = nullptr;
};

Access accessTo(const PropertyInfo& property) {
  if (property.isReferenceList() && !property.derive)
    return {&readCollection, nullptr, &listElements};
  if (property.has(kMany)) return {&readCollection, nullptr};
  if (property.derive) return {&readOther, nullptr};
  switch (property.kind) {
    case ValueKind::kReal: return {&readReal, &writeReal};
    case ValueKind::kBoolean: return {&readBoolean, &writeBoolean};
    case ValueKind::kString: return {&readText, &writeText};
    case ValueKind::kEnumeration: return {&readEnum, &writeEnum};
    case ValueKind::kArray: return {&readArray, &writeArray};
    case ValueKind::kInteger8:
    case ValueKind::kInteger:
    case ValueKind::kElement: break;
  }
  return {&readOther, &writeOther};
}

}  // namespace

std::string_view dataTypeOf(const PropertyInfo& property) {
  if (property.kind == ValueKind::kElement) {
    if (property.has(kMany)) return "mf.zero.Set";
    return keptForEver(std::string(property.target->qualifiedName) + " property");
  }
  if (property.has(kMany)) return "mf.zero.PrimitiveSet";
  if (property.kind == ValueKind::kEnumeration) return enumDataType(*property.enumeration);
  return PrimitiveProperty::dataTypeOf(property);
}

const PropertyInfo* propertyNamed(const ClassInfo& info, std::string_view name) {
  for (const ClassInfo* each = &info; each; each = each->super) {
    for (const PropertyInfo& property : each->properties) {
      if (std::ranges::equal(property.name, name)) return &property;  // names are ASCII
    }
  }
  return nullptr;
}

void completeProperties(const ClassInfo& info, vcos::ClassDefinition& definition) {
  for (const PropertyInfo& property : info.properties) {
    auto row = std::ranges::find(definition.properties, &property, &PropertyRow::context);
    if (row == definition.properties.end()) {
      definition.properties.push_back(
          elementProperty(keptForEver(toUtf8(property.name)), property, {}));
      row = definition.properties.end() - 1;
    }
    if (row->read) {
      row->dataType = PrimitiveProperty::dataTypeOf(property);
    } else {
      row->dataType = dataTypeOf(property);
      const Access access = accessTo(property);
      row->read = access.read;
      row->write = access.write;
      row->list = access.list;
    }
    if (property.has(kReadOnly)) row->write = nullptr;
  }
}

// PrimitiveProperty

std::string_view PrimitiveProperty::dataTypeOf(const PropertyInfo& property) {
  if (!property.has(kMany)) return marshalerOf(property).dataType();
  if (property.kind == ValueKind::kString) return vcos::factory::detail::kStringVector;
  const std::string_view one = marshalerOf(property).dataType();
  return keptForEver(std::string(one.substr(0, one.find(' '))) + " vector");
}

ArrayPtr PrimitiveProperty::get(const PropertyRow& row, const Native& native) {
  const PropertyInfo& property = propertyOf(row);
  if (property.kind == ValueKind::kArray) return readArray(row, native);
  const ValueMarshaler& marshaler = marshalerOf(property);
  if (!property.has(kMany)) return marshaler.toVxArray(elementIn(native).get(property));
  return marshaler.fromCollection(AbstractPrimitiveCollection(&elementIn(native), property));
}

void PrimitiveProperty::set(const PropertyRow& row, const Native& native, const vxArray* value) {
  const PropertyInfo& property = propertyOf(row);
  const ValueMarshaler& marshaler = marshalerOf(property);
  if (!property.has(kMany)) return assign(row, native, marshaler.toUnmanagedSetValue(value));
  AbstractPrimitiveCollection(&elementIn(native), property)
      .assignValues(marshaler.toValueVector(value));
}

}  // namespace mf::zero::mi
