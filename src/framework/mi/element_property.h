// Properties of elements as rows of host class tables. One function per kind of value reads, and
// one writes, the properties of all classes; the row's context says which it is.
#pragma once

#include <string_view>

#include "framework/class_info.h"
#include "framework/export.h"
#include "host/vcos/class_info.h"

namespace mf::zero::mi {

/// The data type that scripts see for a property: "double scalar", "kxsim.design.FigureType
/// scalar", "mf.zero.Set", ... Valid for ever.
MF0_API std::string_view dataTypeOf(const PropertyInfo& property);

/// As ClassInfo::findByName, for names as scripts have them.
MF0_API const PropertyInfo* propertyNamed(const ClassInfo& info, std::string_view name);

/// A row of which only the name and the documentation are known yet; `completeProperties` does the
/// rest when the class is first used.
constexpr vcos::factory::PropertyRow elementProperty(std::string_view name,
                                                     const PropertyInfo& property,
                                                     std::string_view doc) {
  return {.name = name, .dataType = {}, .doc = doc, .context = &property};
}

/// A primitive property whose values go through the marshaler registry.
struct MF0_API PrimitiveProperty : vcos::factory::PropertyRow {
  constexpr PrimitiveProperty(std::string_view rowName, const PropertyInfo& property,
                              std::string_view rowDoc)
      : PropertyRow{rowName, {}, &get, &set, rowDoc, &property} {}

  /// The marshaler's data type; "vector" in place of "scalar" for many values. Raises NoSuchType
  /// for a property without a marshaler.
  static std::string_view dataTypeOf(const PropertyInfo& property);

 private:
  static vexal::ArrayPtr get(const PropertyRow& row, const vcos::Native& native);
  static void set(const PropertyRow& row, const vcos::Native& native, const vxArray* value);
};

/// Completes the rows of a class's own properties and adds those that are missing, under the
/// property's name. Collections, derived and read-only properties become read-only.
MF0_API void completeProperties(const ClassInfo& info, vcos::ClassDefinition& definition);

}  // namespace mf::zero::mi
