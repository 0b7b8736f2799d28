// Enumerations between the model and the host: host members are int32 underneath.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "framework/mi/typed_value_marshaler.h"

namespace mf::zero::mi {

/// The integer of the first member of an array of the enumeration's class; 0, which is no literal,
/// of everything else.
MF0_API std::int32_t enumInteger(const EnumInfo& info, const vxArray* array);

/// The 1-by-1 member of the enumeration's class with that integer, whether it is a literal or not.
MF0_API vexal::ArrayPtr enumMember(const EnumInfo& info, std::int32_t integer);

/// "kxsim.design.FigureType scalar". Valid for ever.
MF0_API std::string_view enumDataType(const EnumInfo& info);

template <ModelEnum E>
struct MarshalPolicy<E> {
  static vexal::ArrayPtr toArray(E literal) {
    return enumMember(EnumTraits<E>::info(), static_cast<std::int32_t>(literal));
  }
  static E fromArray(const vxArray* array) {
    return static_cast<E>(enumInteger(EnumTraits<E>::info(), array));
  }
};

template <ModelEnum E>
class PolicyBasedValueMarshaler<E> : public TypedValueMarshaler<E, void> {
 public:
  bool isCorrectType(const vxArray* array) const override {
    return array != nullptr && vexal::elementCount(array) == 1 &&
           vexal::className(array) == EnumTraits<E>::info().qualifiedName;
  }
};

/// The marshaler of an enumeration. Holds nothing.
template <ModelEnum E>
class PolicyBasedEnumValueMarshaler : public PolicyBasedValueMarshaler<E> {
 public:
  std::string_view dataType() const override {
    static const std::string_view text = enumDataType(EnumTraits<E>::info());
    return text;
  }
};

}  // namespace mf::zero::mi
