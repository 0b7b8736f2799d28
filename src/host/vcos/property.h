// Typed properties: rows of the property table from pairs of getter and setter functions.
//
//   constinit const PropertyRow kRows[] = {
//       property<&SimulationRunWrapper::progress, &SimulationRunWrapper::setProgress>(
//           "Progress", "How far the run has come."),
//   };
//
// A getter is a T(C*), a setter a void(C*, T). The data type of the row follows from T, for
// which a Marshal must be defined: those of numbers, logicals and text are here. How a
// native is a C, NativeCast says.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/text.h"
#include "host/vcos/native.h"
#include "host/vcos/table.h"
#include "host/vcos/type_repository.h"

namespace vcos::factory {

/// Between host arrays and values of type T: kDataType, or a function dataType() where the name is
/// known no sooner than when it is needed, toArray(T) and fromArray(array), the array being of that
/// data type. To be specialised for further types.
template <class T>
struct Marshal;

template <>
struct Marshal<double> {
  static constexpr std::string_view kDataType = "double scalar";
  static vexal::ArrayPtr toArray(double value) { return vexal::createDouble(value); }
  static double fromArray(const vxArray* array) { return vexal::doubleData(array)[0]; }
};

template <>
struct Marshal<bool> {
  static constexpr std::string_view kDataType = "logical scalar";
  static vexal::ArrayPtr toArray(bool value) { return vexal::createLogical(value); }
  static bool fromArray(const vxArray* array) { return vexal::elements<bool>(array)[0]; }
};

template <>
struct Marshal<std::int32_t> {
  static constexpr std::string_view kDataType = "int32 scalar";
  static vexal::ArrayPtr toArray(std::int32_t value) { return vexal::createInt32(value); }
  static std::int32_t fromArray(const vxArray* array) {
    return vexal::elements<std::int32_t>(array)[0];
  }
};

template <>
struct Marshal<std::u16string> {
  static constexpr std::string_view kDataType = "VcosFactoryString scalar";
  static vexal::ArrayPtr toArray(const std::u16string& text) { return vexal::createChar(text); }
  static std::u16string fromArray(const vxArray* array) { return extractString(array); }
};

/// The C of a native; by default the native's object itself. To be specialised where C is
/// something around it, such as a counted handle; `get()` then answers its address.
template <class C>
class NativeCast {
 public:
  explicit NativeCast(const Native& native) : native_(static_cast<C*>(native.object)) {}
  C* get() noexcept { return native_; }

 private:
  C* native_;
};

namespace impl {

/// What the adapters of a value type have in common: its constant data type.
template <class T>
struct PropertyImplBase {
  static constexpr void setType(PropertyRow& row) {
    if constexpr (requires { Marshal<T>::kDataType; }) {
      row.dataType = Marshal<T>::kDataType;
    } else {
      row.tellType = &Marshal<T>::dataType;
    }
  }
};
template <class T>
struct Getter : PropertyImplBase<T> {};
template <class T>
struct Setter : PropertyImplBase<T> {};

template <class T, class C, class Function, class Result>
struct AdaptedClassGetter;

template <class T, class C>
struct AdaptedClassGetter<T, C, T (*)(C*), T> : Getter<T> {
  template <T (*kGet)(C*)>
  static vexal::ArrayPtr call(const PropertyRow&, const Native& native) {
    return Marshal<T>::toArray(kGet(NativeCast<C>(native).get()));
  }
};

template <class T, class C, class Function, class Argument>
struct AdaptedClassSetter;

template <class T, class C>
struct AdaptedClassSetter<T, C, void (*)(C*, T), T> : Setter<T> {
  template <void (*kSet)(C*, T)>
  static void call(const PropertyRow&, const Native& native, const vxArray* value) {
    kSet(NativeCast<C>(native).get(), Marshal<T>::fromArray(value));
  }
};

template <class T, class C, T (*kGet)(C*)>
constexpr PropertyRow rowOf(std::string_view name, std::string_view doc) {
  using Adapter = AdaptedClassGetter<T, C, T (*)(C*), T>;
  PropertyRow row{.name = name, .dataType = {}, .read = &Adapter::template call<kGet>, .doc = doc};
  Adapter::setType(row);
  return row;
}

template <auto kGet>
struct TypedProperty;

template <class T, class C, T (*kGet)(C*)>
struct TypedProperty<kGet> {
  static constexpr PropertyRow readOnly(std::string_view name, std::string_view doc) {
    return rowOf<T, C, kGet>(name, doc);
  }
  template <void (*kSet)(C*, T)>
  static constexpr PropertyRow writable(std::string_view name, std::string_view doc) {
    PropertyRow row = rowOf<T, C, kGet>(name, doc);
    row.write = &AdaptedClassSetter<T, C, void (*)(C*, T), T>::template call<kSet>;
    return row;
  }
};

}  // namespace impl

/// The row of a read-only property.
template <auto kGet>
constexpr PropertyRow property(std::string_view name, std::string_view doc = {}) {
  return impl::TypedProperty<kGet>::readOnly(name, doc);
}

/// The row of a property with a setter.
template <auto kGet, auto kSet>
constexpr PropertyRow property(std::string_view name, std::string_view doc = {}) {
  return impl::TypedProperty<kGet>::template writable<kSet>(name, doc);
}

}  // namespace vcos::factory
