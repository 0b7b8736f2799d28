// The marshalers of the types that the framework knows. What they have in common is written here
// once; a policy says what is special about a type.
#pragma once

#include <cstdint>
#include <limits>
#include <string>

#include "framework/messages.h"
#include "framework/mi/value_marshaler.h"
#include "host/cell.h"
#include "host/vcos/property.h"
#include "host/vcos/type_repository.h"

namespace mf::zero::mi {

/// How one value of type T lies in an array: kDataType, `toArray(T)` and `fromArray(array)`, the
/// array being of that data type; and the type of the items of an array that holds many.
template <class T>
struct MarshalPolicy : vcos::factory::Marshal<T> {};

/// As the host's integers, which are wider. Raises InvalidValue for one that does not fit.
template <>
struct MarshalPolicy<std::int8_t> {
  static constexpr std::string_view kDataType = "int32 scalar";
  static vexal::ArrayPtr toArray(std::int8_t value) { return vexal::createInt32(value); }
  static std::int8_t fromArray(const vxArray* array) {
    using Limits = std::numeric_limits<std::int8_t>;
    const std::int32_t value = vexal::elements<std::int32_t>(array)[0];
    if (value < Limits::min() || value > Limits::max()) {
      reportException(mf0::messages::InvalidValue());
    }
    return static_cast<std::int8_t>(value);
  }
};

/// Any array as it is. Values own copies; no array reads as the empty one.
template <>
struct MarshalPolicy<const vxArray*> {
  static constexpr std::string_view kDataType = "any";
  static vexal::ArrayPtr toArray(const vxArray* array) {
    return array ? vexal::deepCopy(array) : vexal::createDoubleMatrix(0, 0);
  }
  static Value fromArray(const vxArray* array) { return Value::ofArray(array); }
};

/// What needs no look at the type.
template <class T>
class AbstractTypedValueMarshaler : public ValueMarshaler {
 public:
  Value toUnmanagedSetValue(const vxArray* array) const override { return fromVxArray(array); }
  void initializeDependencies() override { vcos::factory::detail::initStringDataTypes(); }
};

namespace detail {

/// A 1-by-n array of 1-by-1 arrays of one class; texts and whatever cannot stand beside its like
/// go into cells.
MF0_API vexal::ArrayPtr rowOf(const ValueMarshaler& marshaler, std::size_t count,
                              const Value* values);
/// The values of an array, item by item.
MF0_API std::vector<Value> itemsOf(const ValueMarshaler& marshaler, const vxArray* array);

}  // namespace detail

/// The operations by the type's policy. The second argument is for types whose policy does not
/// suffice.
template <class T, class = void>
class TypedValueMarshaler : public AbstractTypedValueMarshaler<T> {
 public:
  vexal::ArrayPtr toVxArray(const Value& value) const override {
    return MarshalPolicy<T>::toArray(value.getValue<T>());
  }
  Value fromVxArray(const vxArray* array) const override {
    return Value(MarshalPolicy<T>::fromArray(array));
  }
  std::vector<Value> toValueVector(const vxArray* array) const override {
    return detail::itemsOf(*this, array);
  }
  vexal::ArrayPtr fromValueVector(const std::vector<Value>& values) const override {
    return detail::rowOf(*this, values.size(), values.data());
  }
  vexal::ArrayPtr fromCollection(const AbstractPrimitiveCollection& collection) const override {
    std::vector<Value> values;
    values.reserve(collection.size());
    for (std::size_t k = 0; k < collection.size(); ++k) values.push_back(collection.valueAt(k));
    return fromValueVector(values);
  }
};

/// The same with the policy's data type.
template <class T>
class PolicyBasedValueMarshaler : public TypedValueMarshaler<T, void> {
 public:
  bool isCorrectType(const vxArray* array) const override {
    return array != nullptr && vexal::elementCount(array) == 1 &&
           this->dataType().starts_with(vexal::className(array));
  }
  std::string_view dataType() const override { return MarshalPolicy<T>::kDataType; }
};

template <>
inline bool PolicyBasedValueMarshaler<std::u16string>::isCorrectType(const vxArray* array) const {
  return vexal::isClass(array, vexal::ClassId::Char) && vexal::dimensions(array).size() == 2 &&
         (vexal::dimensions(array)[0] == 1 || vexal::isEmpty(array));
}

template <>
inline bool PolicyBasedValueMarshaler<const vxArray*>::isCorrectType(const vxArray* array) const {
  return array != nullptr;
}

}  // namespace mf::zero::mi
