// What scripts say of an element that is to be created: its first values in a struct and its
// identity, in either order.
#pragma once

#include <memory>
#include <span>
#include <string_view>

#include "framework/builder.h"
#include "framework/export.h"
#include "framework/meta/meta.h"
#include "framework/model_impl.h"
#include "framework/uuid.h"
#include "host/array.h"

namespace mf::zero::mi {

namespace detail {

/// An identity as text (8-4-4-4-12 hexadecimal digits of either case, with or without braces) or
/// as 16 numbers from 0 to 255. Raises InvalidValue for anything else and for the nil identity.
MF0_API uuid extractUuid(const vxArray* identity);

/// The property of that name, of which an element may be given a first value. Raises
/// NoSuchProperty and CannotSetReadOnlyProperty.
const PropertyInfo& settableProperty(const ClassInfo& info, std::string_view name);

/// Takes a first value as fields of structs have it (below).
void setProperty(BuilderValues& values, const PropertyInfo& property, const vxArray* value);

/// A builder of the class that has the values of the index-th struct of an array: every field sets
/// the property of that name. A many-valued property takes an array or cell array, a containment
/// also structs, of which it makes children. Raises NoSuchProperty, CannotSetReadOnlyProperty,
/// CannotCreateAbstractClass, what converting a value raises, and "Vexal:host:IndexOutOfRange".
MF0_API std::unique_ptr<Builder> createBuilderFromStruct(const vxArray* records, std::size_t index,
                                                         const Model& model, const ClassInfo& info);
MF0_API std::unique_ptr<Builder> createBuilderFromStruct(const vxArray* records, std::size_t index,
                                                         const Model& model,
                                                         const meta::Class& metaClass);
/// The same of the first.
MF0_API std::unique_ptr<Builder> createBuilderFromStructFirst(const vxArray* records,
                                                              const Model& model,
                                                              const ClassInfo& info);

}  // namespace detail

struct CreationArguments {
  std::unique_ptr<Builder> builder;
  /// Nil asks for a fresh one.
  uuid identity;
  /// Whether a struct was given, whose arrays the class's checks have not seen.
  bool hasValues = false;
};

/// Reads the optional arguments of constructors and `createInto` methods: a 1-by-1 struct is the
/// values, anything else the identity. Raises InvalidValue for a second one of either, and what
/// reading them raises.
MF0_API CreationArguments readCreationArguments(std::span<const vxArray* const> inputs,
                                                const Model& model, const ClassInfo& info);

/// Whether elements of the class, or what they may contain, have checks of host arrays.
MF0_API bool hasChecks(const ClassInfo& info);

/// Asks the class's checks of host arrays, as setters do, about the present values of an element
/// and of its contents. Raises what they raise.
MF0_API void askChecks(const ElementImpl& element);

/// Runs `create`, which makes an element from the arguments, and undoes it when the class's checks
/// refuse one of the values.
template <class Create>
ModelElement createChecked(const CreationArguments& arguments, const Model& model,
                           Create&& create) {
  if (!arguments.hasValues || !hasChecks(arguments.builder->values().classInfo())) return create();
  Transaction transaction = model->beginTransaction();
  ModelElement created = create();
  askChecks(*created.impl());
  transaction.commit();
  return created;
}

}  // namespace mf::zero::mi
