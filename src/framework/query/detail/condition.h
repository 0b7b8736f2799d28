// One condition of a query, made ready for many elements: where the value lies, the
// function that tests it there, and what it is compared with.
#pragma once

#include <cstddef>
#include <cstdint>

#include "framework/class_info.h"
#include "framework/element.h"
#include "framework/query/constraints.h"
#include "framework/text.h"
#include "framework/value.h"

namespace mf::zero::query {

/// What a value is compared with, in the form that the property's kind needs.
struct Operand {
  double number = 0.0;  ///< of every number, truth value and literal: a double holds them all
  Text text;
  ElementId target = kNoElement;
  ModelElement element;  ///< keeps the target's id from being given to another element
  const EnumInfo* enumeration = nullptr;
};

class Condition {
 public:
  /// A function on the value as it lies in the storage.
  using Test = bool (*)(const std::byte* value, const Operand& operand);

  /// Raises CannotCastIncompatibleTypes for an operand of another type than the property's, and
  /// InvalidValue for a comparison that the property does not admit.
  Condition(ModelImpl& model, const PropertyInfo& property, Comparison comparison,
            const Value& operand);

  /// `storage` is that of `element`, which is neither a proxy nor destroyed.
  bool holds(const ElementImpl& element, const std::byte* storage) const {
    if (property_->derive) [[unlikely]]
      return holdsDerived(element);
    return test_(storage + offset_, operand_) == wanted_;
  }

 private:
  bool holdsDerived(const ElementImpl& element) const;
  template <class T>
  bool holdsFor(const T& value) const {
    return test_(reinterpret_cast<const std::byte*>(&value), operand_) == wanted_;
  }

  Test test_;
  std::uint32_t offset_;
  bool wanted_;  ///< false where the comparison is the opposite of the test
  const PropertyInfo* property_;
  Operand operand_;
};

}  // namespace mf::zero::query
