// One condition of a query, made ready for many elements: where the value lies, the
// function that tests it there, and what it is compared with.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "framework/class_info.h"
#include "framework/element.h"
#include "framework/export.h"
#include "framework/query/constraints.h"
#include "framework/value.h"

namespace mf::zero::query {

/// What a value is compared with; the part that the property's type needs.
struct Operand {
  double number = 0.0;  ///< of every number type, truth values and enumerations; exact for them all
  std::u16string text;
  ElementId element = kNoElement;
};

class Condition {
 public:
  /// Raises CannotCastIncompatibleTypes for an operand of another type than the property's, and
  /// InvalidValue for a comparison that the type does not admit.
  Condition(const PropertyInfo& property, Comparison comparison, const Value& operand);

  /// `storage` is the storage of `element`, which is neither a proxy nor destroyed.
  bool holds(const ElementImpl& element, const std::byte* storage) const {
    return property_->derive ? holdsDerived(element)
                             : test_(storage + offset_, operand_) == wanted_;
  }

 private:
  using Test = bool (*)(const std::byte* value, const Operand& operand);
  bool holdsDerived(const ElementImpl& element) const;

  Test test_;
  std::uint32_t offset_;
  bool wanted_;
  const PropertyInfo* property_;
  Operand operand_;
};

}  // namespace mf::zero::query
