#include "framework/query/detail/condition.h"

#include <algorithm>
#include <bit>
#include <functional>

#include "framework/messages.h"
#include "framework/model_impl.h"
#include "framework/storage.h"

namespace mf::zero::query {
namespace {

using Test = Condition::Test;

// No element has it: the pool never gives out its last chunk.
constexpr ElementId kNobody = ~ElementId{0};

template <class T>
const T& valueAt(const std::byte* value) {
  return *reinterpret_cast<const T*>(value);
}

// Tests of single values.

template <class T, class Compare>
bool compares(const std::byte* value, const Operand& operand) {
  return Compare{}(static_cast<double>(valueAt<T>(value)), operand.number);
}

bool isNoLiteral(const std::byte* value, const Operand& operand) {
  return operand.enumeration->find(valueAt<std::int32_t>(value)) == nullptr;
}

bool equalsText(const std::byte* value, const Operand& operand) {
  return valueAt<Text>(value) == operand.text;
}

bool startsWith(const std::byte* value, const Operand& operand) {
  return valueAt<Text>(value).str().starts_with(operand.text.str());
}

bool refersTo(const std::byte* value, const Operand& operand) {
  return valueAt<ReferenceSlot>(value).target == operand.target;
}

bool isNull(const std::byte* value, const Operand&) {
  return valueAt<ArraySlot>(value).array == nullptr;
}

// Tests of collections.

bool holdsNoElement(const std::byte* value, const Operand&) {
  return valueAt<ReferenceList>(value).live() == 0;
}

bool holdsElement(const std::byte* value, const Operand& operand) {
  const auto& list = valueAt<ReferenceList>(value);
  return std::any_of(list.slots, list.slots + list.size,
                     [&](const ReferenceSlot& slot) { return slot.target == operand.target; });
}

bool holdsNoValue(const std::byte* value, const Operand&) {
  const PrimitiveValues* values = valueAt<PrimitiveList>(value).values.get();
  return !values || (values->reals.empty() && values->integers.empty() && values->texts.empty());
}

bool holdsReal(const std::byte* value, const Operand& operand) {
  const PrimitiveValues* values = valueAt<PrimitiveList>(value).values.get();
  if (!values) return false;
  return std::ranges::any_of(values->reals, [wanted = operand.number](double held) {
    return held == wanted || (held != held && wanted != wanted);  // as a set holds NaN
  });
}

bool holdsInteger(const std::byte* value, const Operand& operand) {
  const PrimitiveValues* values = valueAt<PrimitiveList>(value).values.get();
  const auto wanted = static_cast<std::int64_t>(operand.number);
  return values && std::ranges::find(values->integers, wanted) != values->integers.end();
}

bool holdsText(const std::byte* value, const Operand& operand) {
  const PrimitiveValues* values = valueAt<PrimitiveList>(value).values.get();
  return values && std::ranges::find(values->texts, operand.text) != values->texts.end();
}

// The test of each kind of property; null for a comparison that the kind does not admit.

template <class T>
Test numberTest(Comparison comparison) {
  switch (comparison) {
    case Comparison::kEqual: return compares<T, std::equal_to<>>;
    case Comparison::kLess: return compares<T, std::less<>>;
    case Comparison::kAtMost: return compares<T, std::less_equal<>>;
    case Comparison::kGreater: return compares<T, std::greater<>>;
    case Comparison::kAtLeast: return compares<T, std::greater_equal<>>;
    default: return nullptr;
  }
}

Test singleTest(ValueKind kind, Comparison comparison) {
  const bool isEqual = comparison == Comparison::kEqual;
  switch (kind) {
    case ValueKind::kBoolean: return isEqual ? compares<bool, std::equal_to<>> : nullptr;
    case ValueKind::kInteger8: return numberTest<std::int8_t>(comparison);
    case ValueKind::kInteger: return numberTest<std::int32_t>(comparison);
    case ValueKind::kReal: return numberTest<double>(comparison);
    case ValueKind::kString:
      if (comparison == Comparison::kStartsWith) return startsWith;
      return isEqual ? equalsText : nullptr;
    case ValueKind::kEnumeration:
      return isEqual ? compares<std::int32_t, std::equal_to<>> : nullptr;
    case ValueKind::kElement: return isEqual ? refersTo : nullptr;
    case ValueKind::kArray: return nullptr;
  }
  return nullptr;
}

Test membershipTest(ValueKind kind) {
  switch (kind) {
    case ValueKind::kElement: return holdsElement;
    case ValueKind::kReal: return holdsReal;
    case ValueKind::kString: return holdsText;
    default: return holdsInteger;
  }
}

// Unset is being equal to an operand of zero, the empty text or no element, where there is no
// better test.
Test unsetTest(const PropertyInfo& property) {
  if (property.isReferenceList()) return holdsNoElement;
  if (property.has(kMany)) return holdsNoValue;
  if (property.kind == ValueKind::kEnumeration) return isNoLiteral;
  if (property.kind == ValueKind::kArray) return isNull;
  return singleTest(property.kind, Comparison::kEqual);
}

bool isPresence(Comparison comparison) {
  return comparison == Comparison::kSet || comparison == Comparison::kUnset;
}

Test testFor(const PropertyInfo& property, Comparison comparison) {
  if (property.has(kMany) && property.has(kDerived)) return nullptr;
  if (isPresence(comparison)) return unsetTest(property);
  if (property.has(kMany)) {
    return comparison == Comparison::kContains ? membershipTest(property.kind) : nullptr;
  }
  const bool isOpposite = comparison == Comparison::kNotEqual;
  return singleTest(property.kind, isOpposite ? Comparison::kEqual : comparison);
}

void checkType(const PropertyInfo& property, const Value& operand) {
  const auto isInteger = [](ValueKind kind) {
    return kind == ValueKind::kInteger || kind == ValueKind::kInteger8;
  };
  const ValueMeta wanted{ValueMeta::Form::kSingle, property.kind, property.enumeration};
  const ValueMeta& given = operand.meta();
  if (operand.isEmpty() || given == wanted) return;
  if (isInteger(wanted.kind()) && isInteger(given.kind()) && !operand.isList()) return;
  reportException(mf0::messages::CannotCastIncompatibleTypes(wanted.typeName()));
}

// An element of another model is held by nobody in this one. In a collection an empty handle
// stands for nothing, though the holes of the list look like it.
ElementId targetOf(const ModelImpl& model, const ModelElement& element, Comparison comparison) {
  if (!element) return comparison == Comparison::kContains ? kNobody : kNoElement;
  return &element->model() == &model ? element->id() : kNobody;
}

/// The model's own texts are mostly equal because they are the same.
Text sharedText(ModelImpl& model, const std::u16string& text) {
  return model.isShared() ? Text(text) : Text(model.texts(), text);
}

Operand operandOf(ModelImpl& model, const PropertyInfo& property, Comparison comparison,
                  const Value& value) {
  Operand operand;
  operand.enumeration = property.enumeration;
  if (property.kind == ValueKind::kString) {
    operand.text = sharedText(model, value.getValue<std::u16string>());
  } else if (property.kind == ValueKind::kElement) {
    operand.element = value.getValue<ModelElement>();
    operand.target = targetOf(model, operand.element, comparison);
  } else if (property.kind == ValueKind::kReal) {
    operand.number = value.getValue<double>();
  } else {
    operand.number = static_cast<double>(static_cast<std::int64_t>(value.bits()));
  }
  return operand;
}

}  // namespace

Condition::Condition(ModelImpl& model, const PropertyInfo& property, Comparison comparison,
                     const Value& operand)
    : test_(testFor(property, comparison)),
      offset_(property.offset),
      wanted_(comparison != Comparison::kSet && comparison != Comparison::kNotEqual),
      property_(&property) {
  if (!test_) reportException(mf0::messages::InvalidValue());
  const Value& compared = isPresence(comparison) ? Value() : operand;
  checkType(property, compared);
  operand_ = operandOf(model, property, comparison, compared);
}

bool Condition::holdsDerived(const ElementImpl& element) const {
  const Value value = property_->derive(element);
  switch (property_->kind) {
    case ValueKind::kBoolean: return holdsFor(value.getValue<bool>());
    case ValueKind::kInteger8: return holdsFor(value.getValue<std::int8_t>());
    case ValueKind::kInteger: return holdsFor(value.getValue<std::int32_t>());
    case ValueKind::kReal: return holdsFor(value.getValue<double>());
    case ValueKind::kString: return holdsFor(Text(value.getValue<std::u16string>()));
    case ValueKind::kEnumeration: return holdsFor(static_cast<std::int32_t>(value.bits()));
    case ValueKind::kElement: {
      const auto target = value.getValue<ModelElement>();
      return holdsFor(ReferenceSlot{target ? target->id() : kNoElement});
    }
    case ValueKind::kArray: return holdsFor(value.getValue<const vxArray*>());
  }
  return false;
}

}  // namespace mf::zero::query
