// What the generated tables are made of: a row per property and operation, a
// description per class. All of it is worked out by the compiler.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "framework/class_info.h"
#include "framework/element.h"
#include "framework/native.h"
#include "framework/value.h"

namespace mf::zero::table {

// So that a source of tables needs one using-directive.
using namespace mf::zero;
using namespace mf::zero::literals;

/// The type of a property, as the registry and the runtime know it.
struct PropertyType {
  std::string_view name;
  ValueKind kind;
  const ClassInfo* target = nullptr;
  const EnumInfo* enumeration = nullptr;
};

inline constexpr PropertyType kBoolean = {"Boolean", ValueKind::kBoolean};
inline constexpr PropertyType kInteger8 = {"Integer8", ValueKind::kInteger8};
inline constexpr PropertyType kInteger = {"Integer", ValueKind::kInteger};
inline constexpr PropertyType kReal = {"Real", ValueKind::kReal};
inline constexpr PropertyType kString = {"String", ValueKind::kString};
inline constexpr PropertyType kStdString = {"StdString", ValueKind::kString};
inline constexpr PropertyType kArray = {"VxArray", ValueKind::kArray};

/// Elements of handle class X, by its qualified name.
template <class X>
constexpr PropertyType element(std::string_view qualifiedName) {
  return {qualifiedName, ValueKind::kElement, &X::Impl::kClass};
}

/// Literals of enumeration E, by its qualified name.
template <class E>
constexpr PropertyType enumeration(std::string_view qualifiedName) {
  return {qualifiedName, ValueKind::kEnumeration, nullptr, &EnumTraits<E>::kInfo};
}

/// What goes beyond a plain single value.
struct PropertyFacts {
  int flags = kOrdered | kUnique;
  const char* defaultValue = nullptr;
  const PropertyInfo* opposite = nullptr;
  void (*check)(const ElementImpl&, const vxArray*) = nullptr;
  Value (*derive)(const ElementImpl&) = nullptr;
};

/// The row of one property in a class's table.
constexpr PropertyInfo property(const PropertyType& type, std::u16string_view name,
                                std::uint16_t index, std::size_t offset, const ClassInfo& owner,
                                const uuid& identity, const PropertyFacts& facts = {}) {
  if (type.kind == ValueKind::kElement && index > kMaxReferenceIndex) {
    throw "a link in memory has six bits for the index of a reference";  // stops the compiler
  }
  return {.name = name,
          .type = type.name,
          .kind = type.kind,
          .flags = static_cast<std::uint16_t>(facts.flags),
          .index = index,
          .offset = static_cast<std::uint32_t>(offset),
          .identity = identity,
          .owner = &owner,
          .target = type.target,
          .enumeration = type.enumeration,
          .defaultValue = facts.defaultValue,
          .opposite = facts.opposite,
          .check = facts.check,
          .derive = facts.derive};
}

enum Access : bool { kNotPublic = false, kPublic = true };
enum Results : bool { kOneResult = false, kManyResults = true };

/// The row of one operation.
constexpr OperationInfo operation(std::u16string_view name, const uuid& identity, Access access,
                                  std::string_view resultType, Results results,
                                  Value (*invoke)(const ElementImpl&)) {
  return {.name = name,
          .identity = identity,
          .isPublic = access == kPublic,
          .resultType = resultType,
          .resultMany = results == kManyResults,
          .invoke = invoke};
}

/// For `describe`: a class that has no elements of its own.
inline constexpr NativeInfo kAbstract = {};

/// A class. `firstIndex` is the index of its first own stored property, `indexCount` that of the
/// last, inherited ones included.
constexpr ClassInfo describe(std::u16string_view name, std::string_view qualifiedName,
                             std::string_view scopedName, const uuid& identity,
                             const ClassInfo& super, const NativeInfo& native,
                             std::span<const PropertyInfo> properties,
                             std::span<const OperationInfo> operations, std::uint16_t firstIndex,
                             std::uint16_t indexCount, void (*ensureRegistered)()) {
  return {.name = name,
          .qualifiedName = qualifiedName,
          .scopedName = scopedName,
          .identity = identity,
          .isAbstract = native.storageSize == 0,
          .super = &super,
          .properties = properties,
          .operations = operations,
          .firstIndex = firstIndex,
          .indexCount = indexCount,
          .native = native,
          .ensureRegistered = ensureRegistered};
}

// What hand-written functions look like from the tables.

template <class T>
Value toValue(const T& result) {
  return Value(result);
}
template <class T>
Value toValue(const std::vector<T>& results) {
  std::vector<Value> items;
  items.reserve(results.size());
  for (const T& result : results) items.emplace_back(result);
  return Value::ofList(std::move(items));
}

template <class C, class R, class... A>
C* ownerOf(R (C::*)(A...) const);
template <auto kMethod>
using OwnerOf = std::remove_pointer_t<decltype(ownerOf(kMethod))>;

/// Asks the check of a host array.
template <auto kMethod>
void check(const ElementImpl& element, const vxArray* proposed) {
  (static_cast<const OwnerOf<kMethod>&>(element).*kMethod)(proposed);
}

/// Calls an operation or the getter of a derived property.
template <auto kMethod>
Value call(const ElementImpl& element) {
  return toValue((static_cast<const OwnerOf<kMethod>&>(element).*kMethod)());
}

}  // namespace mf::zero::table
