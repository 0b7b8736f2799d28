// Typed properties of elements (host/vcos/property.h): enumerations, single elements and
// collections as values of getters and setters, and handles as what these are asked of.
//
//   constinit const PropertyRow kRows[] = {
//       property<&FigureWrapper::type, &FigureWrapper::setType>("Type", "What is drawn."),
//       property<&FigureWrapper::dataSources>("DataSources", "Where it comes from."),
//   };
//
// with `FigureType type(Figure*)`, `void setType(Figure*, FigureType)` and
// `const ReferenceCollection* dataSources(Figure*)`.
#pragma once

#include <concepts>
#include <string>
#include <string_view>

#include "framework/collection.h"
#include "framework/element.h"
#include "framework/mi/enum_value_marshaler.h"
#include "framework/mi/host_objects.h"
#include "framework/primitive_collection.h"
#include "host/vcos/name.h"
#include "host/vcos/om.h"
#include "host/vcos/property.h"

namespace vcos::factory {

/// A handle on the element.
template <std::derived_from<mf::zero::ModelElement> X>
class NativeCast<X> {
 public:
  explicit NativeCast(const Native& native)
      : handle_(
            static_cast<typename X::Impl*>(static_cast<mf::zero::ElementImpl*>(native.object))) {}
  X* get() noexcept { return &handle_; }

 private:
  X handle_;
};

/// A member of the enumeration's host class; what is empty or no member reads as 0.
template <mf::zero::ModelEnum E>
struct Marshal<E> : mf::zero::mi::MarshalPolicy<E> {
  static std::string_view dataType() {
    return mf::zero::mi::enumDataType(mf::zero::EnumTraits<E>::info());
  }
};

/// One element or none; none is the empty array of its class.
template <std::derived_from<mf::zero::ModelElement> X>
struct Marshal<X> {
  static std::string_view dataType() {
    return internal::keptForEver(std::string(X::classInfo().qualifiedName) + " property");
  }
  static vexal::ArrayPtr toArray(const X& element) {
    return mf::zero::mi::toHost(element, X::classInfo());
  }
  static X fromArray(const vxArray* array) {
    if (vexal::isEmpty(array)) return X();
    return mf::zero::mi::elementOf(array).template as<X>();
  }
};

/// A live view on the collection, which is read-only as a property; a missing one is an empty set.
template <>
struct Marshal<const mf::zero::ReferenceCollection*> {
  static constexpr std::string_view kDataType = "mf.zero.Set";
  static vexal::ArrayPtr toArray(const mf::zero::ReferenceCollection* collection) {
    if (!collection) return omCreateVCOSEmpty(kDataType);
    return mf::zero::mi::toHost(*collection->owner().impl(), collection->property());
  }
};

template <>
struct Marshal<const mf::zero::AbstractPrimitiveCollection*> {
  static constexpr std::string_view kDataType = "mf.zero.PrimitiveSet";
  static vexal::ArrayPtr toArray(const mf::zero::AbstractPrimitiveCollection* collection) {
    if (!collection) return omCreateVCOSEmpty(kDataType);
    return mf::zero::mi::toHost(*collection->owner().impl(), collection->property());
  }
};

}  // namespace vcos::factory
