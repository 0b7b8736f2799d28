// Values by description: how a property's value is read from and written to memory,
// for reflection, builders, change sets and the loading of proxies.
#pragma once

#include <cstdint>
#include <vector>

#include "framework/element.h"
#include "framework/raw.h"

namespace mf::zero::values {

/// What `read` answers where that is not just a number, flag or literal.
Value readShared(const ElementImpl& element, const PropertyInfo& property);
/// The value as it lies in memory; a list for a many-valued property. Looks at nothing else: a
/// proxy reads as its empty values, a destroyed element as its last ones.
inline Value read(const ElementImpl& element, const PropertyInfo& property) {
  if (property.has(kMany)) return readShared(element, property);
  switch (property.kind) {
    case ValueKind::kBoolean: return Raw::at<bool>(element, property);
    case ValueKind::kInteger8: return Raw::at<std::int8_t>(element, property);
    case ValueKind::kInteger: return Raw::at<std::int32_t>(element, property);
    case ValueKind::kReal: return Raw::at<double>(element, property);
    case ValueKind::kEnumeration:
      return Value(property.enumeration, Raw::at<std::int32_t>(element, property));
    default: return readShared(element, property);
  }
}
/// The value without boxing lists: whether it is there at all (see hasPropertyValue).
bool isPresent(const ElementImpl& element, const PropertyInfo& property);
/// The same of a value by itself.
bool isPresent(const Value& value);

/// The bytes of a plain number, flag or literal of the property's kind.
std::size_t sizeOf(const PropertyInfo& property);

[[noreturn]] void raiseMisfit(const PropertyInfo& property);
/// Raises InvalidValue for a number that is neither a literal nor 0, which is none.
void checkLiteral(const EnumInfo& enumeration, const Value& value);
/// Raises CannotCastIncompatibleTypes unless `value` is empty or fits one value of the property.
inline void checkSingle(const PropertyInfo& property, const Value& value) {
  const ValueMeta wanted{ValueMeta::Form::kSingle, property.kind, property.enumeration};
  if (value.meta() != wanted && !value.isEmpty()) raiseMisfit(property);
  if (property.enumeration) checkLiteral(*property.enumeration, value);
}
/// The value of a new element's property: its declared default, or what reads as nothing.
Value startOf(const PropertyInfo& property);
/// The value that a declared default stands for.
Value parseDefault(const PropertyInfo& property);

// One value of a primitive list, as eight bits of memory or a text.

bool isText(const PropertyInfo& property);
/// The bits of a number, flag or literal of the property's kind; 0 for the empty value.
std::uint64_t bitsOf(const PropertyInfo& property, const Value& value);
Value fromBits(const PropertyInfo& property, std::uint64_t bits);

std::size_t countOf(const PropertyInfo& property, const PrimitiveList& list);
/// Whether two values of a list's kind are the same; NaN is the same as NaN.
bool same(const Value& a, const Value& b);
/// Where a value stands, or would stand, among the sorted ones of a set.
std::size_t lowerBound(const PropertyInfo& property, const PrimitiveList& list, const Value& value);
/// Whether a set holds the value there.
bool holdsAt(const PropertyInfo& property, const PrimitiveList& list, std::size_t index,
             const Value& value);
Value itemAt(const PropertyInfo& property, const PrimitiveList& list, std::size_t index);
/// Opens room for one more item. Throws std::bad_alloc.
PrimitiveValues& reserveItem(const PropertyInfo& property, PrimitiveList& list);
/// Inserts an item for which there is room. `raw` is its bits, or an owned text.
void insertRaw(const PropertyInfo& property, PrimitiveValues& items, std::size_t index,
               std::uint64_t raw) noexcept;
/// Takes an item out and answers its bits or its text, now owned by the caller.
std::uint64_t removeRaw(const PropertyInfo& property, PrimitiveValues& items,
                        std::size_t index) noexcept;

}  // namespace mf::zero::values
