// The meta model: packages, classes, properties, operations, enumerations and
// primitive types as elements, and the way from a static description to them.
#pragma once

#include "framework/meta/class.h"
#include "framework/meta/package.h"
#include "framework/meta/type.h"
#include "framework/meta/typed_element.h"

namespace mf::zero {

/// The root of all classes: "mf.zero.ModelElement", abstract, without properties.
extern MF0_API const ClassInfo kModelElementClass;

namespace meta {

/// The registered meta element of a description; the first use registers its package. Raises
/// NoSuchType for a description that no package registers, and what the registration raises.
MF0_API Class classOf(const ClassInfo& info);
MF0_API Property propertyOf(const PropertyInfo& info);
MF0_API Enum enumOf(const EnumInfo& info);

/// The description of a registered property. Raises CannotUseEmptyHandle,
/// CannotUseDestroyedElement, and NoSuchProperty for a property that was made by hand.
MF0_API const PropertyInfo& infoOf(const Property& property);

}  // namespace meta

template <class X, class Super>
meta::Class Handle<X, Super>::metaClass() {
  return meta::classOf(X::Impl::kClass);
}

}  // namespace mf::zero
