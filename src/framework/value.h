// A value of any property type, for reflection, builders, queries and change sets.
// Sixteen bytes; numbers are held in place, texts and lists are shared.
#pragma once

#include <bit>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "framework/class_info.h"
#include "framework/export.h"
#include "framework/text.h"

namespace mf::zero {

class ModelElement;

/// Connects an enumeration type with its static description; the generated code specialises it.
template <class E>
struct EnumTraits;

template <class E>
concept ModelEnum = std::is_enum_v<E> && requires { EnumTraits<E>::info(); };

/// What a value holds: its kind, and which enumeration where that matters. One word, so that two
/// are the same type by one compare: the address of the enumeration, if any, with form and kind in
/// the bits that its alignment leaves free.
class ValueMeta {
 public:
  enum class Form : std::uint8_t { kEmpty, kSingle, kList };

  /// Of the empty value.
  ValueMeta() = default;
  ValueMeta(Form form, ValueKind kind, const EnumInfo* enumeration = nullptr)
      : word_(reinterpret_cast<std::uintptr_t>(enumeration) | codeOf(form, kind)) {}

  Form form() const { return static_cast<Form>(word_ & kFormMask); }
  ValueKind kind() const { return static_cast<ValueKind>(word_ >> kKindShift & kKindMask); }
  /// Null but for literals and lists of them.
  const EnumInfo* enumeration() const {
    return reinterpret_cast<const EnumInfo*>(word_ & ~kCodeMask);
  }
  /// Whether a value of the type shares what it holds with others: lists, texts, arrays, elements.
  bool isShared() const { return (word_ & kShared) != 0; }

  bool operator==(const ValueMeta&) const = default;
  /// The registry's name of the type: "Real", "String", "kxsim.design.FigureType", ...
  MF0_API std::string typeName() const;

 private:
  static constexpr std::uintptr_t kFormMask = 3;
  static constexpr std::uintptr_t kKindMask = 7;
  static constexpr int kKindShift = 2;
  static constexpr std::uintptr_t kShared = 32;
  static constexpr std::uintptr_t kCodeMask = 63;
  static_assert(alignof(EnumInfo) > kCodeMask);

  static constexpr std::uintptr_t codeOf(Form form, ValueKind kind) {
    const bool shared = form == Form::kList || kind == ValueKind::kString ||
                        kind == ValueKind::kArray || kind == ValueKind::kElement;
    return static_cast<std::uintptr_t>(form) | static_cast<std::uintptr_t>(kind) << kKindShift |
           (shared ? kShared : 0);
  }

  std::uintptr_t word_ = 0;
};

class MF0_API Value {
 public:
  /// The empty value: reads as 0, false, the empty text, no array, no element, no items.
  Value() = default;
  // NOLINTBEGIN: a value converts from what it can hold
  Value(bool value) : Value(ValueKind::kBoolean, integerBits(value)) {}
  Value(std::int8_t value) : Value(ValueKind::kInteger8, integerBits(value)) {}
  Value(std::int32_t value) : Value(ValueKind::kInteger, integerBits(value)) {}
  Value(double value) : Value(ValueKind::kReal, std::bit_cast<std::uint64_t>(value)) {}
  Value(std::u16string_view text);
  Value(const std::u16string& text);
  Value(const char16_t* text);
  Value(const Text& text);
  Value(const ModelElement& element);  ///< a counted reference, empty for an empty handle
  template <ModelEnum E>
  Value(E literal) : Value(&EnumTraits<E>::info(), static_cast<std::int32_t>(literal)) {}
  // NOLINTEND
  Value(const EnumInfo* enumeration, std::int32_t literal)
      : Value({ValueMeta::Form::kSingle, ValueKind::kEnumeration, enumeration},
              integerBits(literal)) {}
  /// A pointer would turn into a bool.
  template <class T>
  Value(T*) = delete;

  /// A value that owns a property copy of `array`; null gives an array value that holds null.
  static Value ofArray(const vxArray* array);
  /// A list of single values. Raises CannotCastIncompatibleTypes for an item that is a list itself.
  static Value ofList(std::vector<Value> items);

  Value(const Value& other);
  Value(Value&& other) noexcept
      : meta_(std::exchange(other.meta_, {})), bits_(std::exchange(other.bits_, 0)) {}
  Value& operator=(Value other) noexcept;
  ~Value() {
    if (meta_.isShared()) release();
  }

  bool isEmpty() const { return meta_ == ValueMeta(); }
  bool isList() const { return meta_.form() == ValueMeta::Form::kList; }
  const ValueMeta& meta() const { return meta_; }

  /// Raises CannotCastIncompatibleTypes unless the value is empty or holds a T. T is bool,
  /// std::int8_t, std::int32_t, double, std::u16string, an enumeration of a package,
  /// `const vxArray*`, or ModelElement.
  template <class T>
  void checkCompatible() const {
    if (meta_ != metaOf<T>() && !isEmpty()) raiseIncompatible(metaOf<T>());
  }

  /// The held T; 0, false, empty or null when the value is empty.
  /// Raises CannotCastIncompatibleTypes when it holds something else.
  template <class T>
  T getValue() const;

  /// The items of a list, valid as long as a value holds it; none for any other value.
  std::span<const Value> items() const&;
  std::span<const Value> items() const&& = delete;  ///< of a value that ends before they are used

  /// Equality of kind and content: doubles by ==, texts and host arrays by content, elements by
  /// identity, lists item by item.
  bool operator==(const Value& other) const;

  /// Short readable form for messages and logs.
  std::string describe() const;

  template <class T>
  static ValueMeta metaOf();

  /// The eight raw bytes: the number itself, or the address of what is shared. For the runtime.
  std::uint64_t bits() const { return bits_; }

 private:
  static constexpr std::uint64_t integerBits(std::int64_t value) {
    return static_cast<std::uint64_t>(value);
  }
  Value(ValueMeta meta, std::uint64_t bits) : meta_(meta), bits_(bits) {}
  Value(ValueKind kind, std::uint64_t bits) : Value({ValueMeta::Form::kSingle, kind}, bits) {}
  void release();
  ElementImpl* element() const { return reinterpret_cast<ElementImpl*>(bits_); }
  const vxArray* array() const;
  std::u16string text() const;
  [[noreturn]] static void raiseIncompatible(const ValueMeta& wanted);

  ValueMeta meta_;
  std::uint64_t bits_ = 0;
};

template <class T>
ValueMeta Value::metaOf() {
  using Form = ValueMeta::Form;
  if constexpr (std::is_same_v<T, bool>) {
    return {Form::kSingle, ValueKind::kBoolean};
  } else if constexpr (std::is_same_v<T, std::int8_t>) {
    return {Form::kSingle, ValueKind::kInteger8};
  } else if constexpr (std::is_same_v<T, std::int32_t>) {
    return {Form::kSingle, ValueKind::kInteger};
  } else if constexpr (std::is_same_v<T, double>) {
    return {Form::kSingle, ValueKind::kReal};
  } else if constexpr (std::is_same_v<T, std::u16string>) {
    return {Form::kSingle, ValueKind::kString};
  } else if constexpr (ModelEnum<T>) {
    return {Form::kSingle, ValueKind::kEnumeration, &EnumTraits<T>::info()};
  } else if constexpr (std::is_same_v<T, const vxArray*>) {
    return {Form::kSingle, ValueKind::kArray};
  } else {
    static_assert(std::is_same_v<T, ModelElement>, "not a type that a property can hold");
    return {Form::kSingle, ValueKind::kElement};
  }
}

template <class T>
T Value::getValue() const {
  checkCompatible<T>();
  if constexpr (std::is_same_v<T, double>) {
    return std::bit_cast<double>(bits_);
  } else if constexpr (std::is_same_v<T, std::u16string>) {
    return text();
  } else if constexpr (std::is_same_v<T, const vxArray*>) {
    return array();
  } else if constexpr (std::is_same_v<T, ModelElement>) {
    return T(element());
  } else {
    return static_cast<T>(static_cast<std::int64_t>(bits_));
  }
}

}  // namespace mf::zero
