#include "framework/mi/creation_arguments.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

#include "framework/collection.h"
#include "framework/messages.h"
#include "framework/mi/element_property.h"
#include "framework/mi/meta_marshaler_registry.h"
#include "framework/model_impl.h"
#include "framework/raw.h"
#include "host/cell.h"
#include "host/record.h"
#include "host/text.h"

namespace mf::zero::mi {

namespace detail {
namespace {

constexpr std::size_t kTextLength = 36;
constexpr std::size_t kByteCount = 16;

[[noreturn]] void refuse() { reportException(mf0::messages::InvalidValue()); }

uuid fromText(std::u16string_view text) {
  const bool isBraced = text.starts_with(u'{') && text.ends_with(u'}') && text.size() > 1;
  if (isBraced) text = text.substr(1, text.size() - 2);
  std::string digits;
  for (const char16_t c : text.substr(0, kTextLength + 1)) {
    digits += c < 0x80 ? static_cast<char>(c) : '?';
  }
  return uuid::parse(digits).value_or(uuid{});
}

uuid fromBytes(std::span<const double> bytes) {
  uuid identity;
  for (std::size_t k = 0; k < kByteCount; ++k) {
    if (!(bytes[k] >= 0 && bytes[k] <= 0xFF) || bytes[k] != std::trunc(bytes[k])) refuse();
    std::uint64_t& half = k < kByteCount / 2 ? identity.high : identity.low;
    half = half << 8 | static_cast<std::uint64_t>(bytes[k]);
  }
  return identity;
}

bool isRowOfText(const vxArray* array) {
  return vexal::isClass(array, vexal::ClassId::Char) && vexal::dimensions(array).size() == 2 &&
         vexal::dimensions(array)[0] == 1;
}

}  // namespace

uuid extractUuid(const vxArray* identity) {
  uuid found;
  if (isRowOfText(identity)) {
    found = fromText(vexal::charText(identity));
  } else if (vexal::elementCount(identity) == kByteCount) {
    const bool isInteger = vexal::isClass(identity, vexal::ClassId::Int32);
    if (!isInteger && !vexal::isClass(identity, vexal::ClassId::Double)) refuse();
    std::array<double, kByteCount> bytes;
    for (std::size_t k = 0; k < kByteCount; ++k) {
      bytes[k] =
          isInteger ? vexal::elements<std::int32_t>(identity)[k] : vexal::doubleData(identity)[k];
    }
    found = fromBytes(bytes);
  }
  if (found.isNil()) refuse();
  return found;
}

// Builders from structs

namespace {

bool isStruct(const vxArray* array) { return vexal::isClass(array, vexal::ClassId::Struct); }

void addChildren(BuilderValues& values, const PropertyInfo& property, const vxArray* records) {
  if (!property.has(kMany) && vexal::elementCount(records) > 1) refuse();
  for (std::size_t k = 0; k < vexal::elementCount(records); ++k) {
    values.addChild(property,
                    createBuilderFromStruct(records, k, values.model(), *property.target));
  }
}

// Structs, or cells with a struct each; elements that exist already are not for a builder.
void setContents(BuilderValues& values, const PropertyInfo& property, const vxArray* value) {
  if (isStruct(value)) return addChildren(values, property, value);
  if (!vexal::isCell(value) && !vexal::isEmpty(value)) refuse();
  if (!property.has(kMany) && vexal::elementCount(value) > 1) refuse();
  for (std::size_t k = 0; vexal::isCell(value) && k < vexal::elementCount(value); ++k) {
    const vxArray* const record = vexal::cellElement(value, k);
    if (!isStruct(record)) refuse();
    addChildren(values, property, record);
  }
}

}  // namespace

const PropertyInfo& settableProperty(const ClassInfo& info, std::string_view name) {
  const PropertyInfo* const property = propertyNamed(info, name);
  if (!property) reportException(mf0::messages::NoSuchProperty(info.qualifiedName, name));
  if (property->has(kReadOnly)) {
    reportException(mf0::messages::CannotSetReadOnlyProperty(
        std::string(property->owner->qualifiedName) + '.' + std::string(name)));
  }
  return *property;
}

void setProperty(BuilderValues& values, const PropertyInfo& property, const vxArray* value) {
  if (property.has(kContainment)) return setContents(values, property, value);
  if (!property.has(kMany)) return values.set(property, valueOf(property, value));
  for (Value& item : valuesOf(property, value)) values.add(property, std::move(item));
}

std::unique_ptr<Builder> createBuilderFromStruct(const vxArray* records, std::size_t index,
                                                 const Model& model, const ClassInfo& info) {
  auto builder = std::make_unique<Builder>(info, model);
  BuilderValues& values = builder->values();
  const std::span<const std::string> names = vexal::fieldNames(records);
  values.reserve(names.size());
  for (std::size_t k = 0; k < names.size(); ++k) {
    setProperty(values, settableProperty(info, names[k]), vexal::fieldAt(records, k, index));
  }
  return builder;
}

std::unique_ptr<Builder> createBuilderFromStruct(const vxArray* records, std::size_t index,
                                                 const Model& model, const meta::Class& metaClass) {
  const ClassInfo* const info = metaClass->info();
  if (!info) reportException(mf0::messages::NoSuchType(metaClass->getQualifiedName()));
  return createBuilderFromStruct(records, index, model, *info);
}

std::unique_ptr<Builder> createBuilderFromStructFirst(const vxArray* records, const Model& model,
                                                      const ClassInfo& info) {
  return createBuilderFromStruct(records, 0, model, info);
}

}  // namespace detail

CreationArguments readCreationArguments(std::span<const vxArray* const> inputs, const Model& model,
                                        const ClassInfo& info) {
  CreationArguments arguments;
  for (const vxArray* const input : inputs) {
    if (vexal::isClass(input, vexal::ClassId::Struct) && vexal::elementCount(input) == 1) {
      if (arguments.hasValues) detail::refuse();
      arguments.hasValues = true;
      arguments.builder = detail::createBuilderFromStructFirst(input, model, info);
    } else {
      if (!arguments.identity.isNil()) detail::refuse();
      arguments.identity = detail::extractUuid(input);
    }
  }
  if (!arguments.builder) arguments.builder = std::make_unique<Builder>(info, model);
  return arguments;
}

// Whatever is contained may be of a class with checks.
bool hasChecks(const ClassInfo& info) {
  const auto mayAsk = [](const PropertyInfo& property) {
    return property.check || property.has(kContainment);
  };
  return std::ranges::any_of(info.properties, mayAsk) || (info.super && hasChecks(*info.super));
}

void askChecks(const ElementImpl& element) {
  forEachProperty(element.classInfo(), [&](const PropertyInfo& property) {
    if (property.check) {
      const vxArray* const array = Raw::at<ArraySlot>(element, property).array;
      if (array) property.check(element, array);
    } else if (property.has(kContainment) && property.has(kMany)) {
      for (const ModelElement& child : ReferenceCollection(&element, property)) {
        askChecks(*child.impl());
      }
    } else if (property.has(kContainment)) {
      const ModelElement child = element.get(property).getValue<ModelElement>();
      if (child) askChecks(*child.impl());
    }
  });
}

}  // namespace mf::zero::mi
