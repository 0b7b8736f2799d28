// The methods that classes of elements have: constructors, `createInto` methods and operations, as
// rows of host class tables.
#pragma once

#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "framework/export.h"
#include "framework/mi/creation_arguments.h"
#include "framework/mi/enum_value_marshaler.h"
#include "framework/mi/host_objects.h"
#include "host/vcos/table.h"

namespace mf::zero::mi {

namespace detail {

/// Constructs an element of the ClassInfo that is the method's context.
MF0_API vexal::ArrayPtr construct(const vcos::factory::MethodCall& call);

template <class I>
I& implIn(const vcos::factory::MethodCall& call) {
  return static_cast<I&>(*static_cast<ElementImpl*>(call.native.object));
}

// What an operation answers.

inline vexal::ArrayPtr result(double value) { return vexal::createDouble(value); }
inline vexal::ArrayPtr result(bool value) { return vexal::createLogical(value); }
inline vexal::ArrayPtr result(std::int32_t value) { return vexal::createInt32(value); }
inline vexal::ArrayPtr result(const std::u16string& value) { return vexal::createChar(value); }
template <ModelEnum E>
vexal::ArrayPtr result(E value) {
  return MarshalPolicy<E>::toArray(value);
}
template <std::derived_from<ModelElement> X>
vexal::ArrayPtr result(const X& element) {
  return toHost(element, X::classInfo());
}
template <std::derived_from<ModelElement> X>
vexal::ArrayPtr result(std::vector<X> elements) {
  return toHost(std::move(elements));
}

}  // namespace detail

/// The constructor of handle class C: a model and, in either order, a 1-by-1 struct of first
/// values and an identity. Raises CannotCreateWithoutModel without a living model, and what
/// `readCreationArguments`, the class's checks and creating raise; no element is left then. What an
/// observer raises reaches the script too, but the element stays.
template <class C>
struct Construct : vcos::factory::VcosMethod {
  constexpr Construct(std::string_view shortName, std::string_view hostName)
      : VcosMethod{.name = shortName,
                   .attributes = vcos::factory::MethodAttributes::Constructor,
                   .inputNames = "model opt_init opt_uuid",
                   .outputType = hostName,
                   .inputTypes = "mf.zero.Model, any, any",
                   .body = &detail::construct,
                   .doc =
                       "A new element in a model; its first values in a struct and its "
                       "identity may follow, in either order.",
                   // So that a call without a model is told what it lacks.
                   .optionalInputs = 3,
                   .context = &C::Impl::kClass} {}
};

/// A method `createInto<Property>` of an implementation: the same optional arguments; creates an
/// element in the owner's containment and answers it. `inputTypes` is the owner's host name and
/// ", any, any".
template <auto kMethod>
struct CreateInto;

template <class X, class I, X (I::*kMethod)(BuilderWrapper<X>, uuid)>
struct CreateInto<kMethod> : vcos::factory::VcosMethod {
  constexpr CreateInto(std::string_view methodName, std::string_view elementType,
                       std::string_view types)
      : VcosMethod{.name = methodName,
                   .outputType = elementType,
                   .inputTypes = types,
                   .body = &call,
                   .doc =
                       "Creates an element and adds it; its first values in a struct and its "
                       "identity may be given, in either order.",
                   .optionalInputs = 2} {}

 private:
  static vexal::ArrayPtr call(const vcos::factory::MethodCall& call) {
    I& owner = detail::implIn<I>(call);
    const Model model = owner.getModel();
    CreationArguments arguments = readCreationArguments(call.inputs, model, X::classInfo());
    return toHost(createChecked(arguments, model, [&]() -> ModelElement {
      return (owner.*kMethod)(std::move(arguments.builder), arguments.identity);
    }));
  }
};

/// An operation without inputs; a list of elements comes as one array. `type` is the host name of
/// the class that declares it.
template <auto kMethod>
struct Operation;

template <class R, class I, R (I::*kMethod)() const>
struct Operation<kMethod> : vcos::factory::VcosMethod {
  constexpr Operation(std::string_view methodName, std::string_view resultType,
                      std::string_view type, std::string_view methodDoc)
      : VcosMethod{.name = methodName,
                   .outputType = resultType,
                   .inputTypes = type,
                   .body = &call,
                   .doc = methodDoc} {}

 private:
  static vexal::ArrayPtr call(const vcos::factory::MethodCall& call) {
    return detail::result((detail::implIn<I>(call).*kMethod)());
  }
};

}  // namespace mf::zero::mi
