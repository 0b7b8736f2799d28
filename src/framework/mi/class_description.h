// Descriptions of the host classes of a package: what the generated tables name and everything
// else follows from.
#pragma once

#include <span>
#include <string_view>

#include "framework/element.h"
#include "framework/export.h"
#include "framework/mi/element_property.h"
#include "framework/mi/enum_class.h"
#include "framework/mi/host_objects.h"
#include "host/vcos/class_info.h"

namespace mf::zero::mi {

// Tables, as generated code writes them.

constexpr vcos::factory::ClassTable describeClass(
    std::string_view name, std::string_view superclass, std::string_view doc,
    std::span<const vcos::factory::PropertyRow> properties,
    std::span<const vcos::factory::VcosMethod> methods) {
  return {.name = name,
          .superclass = superclass,
          .doc = doc,
          .properties = properties,
          .methods = methods};
}

constexpr vcos::factory::ClassTable describeAbstract(
    std::string_view name, std::string_view superclass, std::string_view doc,
    std::span<const vcos::factory::PropertyRow> properties,
    std::span<const vcos::factory::VcosMethod> methods) {
  vcos::factory::ClassTable table = describeClass(name, superclass, doc, properties, methods);
  table.isAbstract = true;
  return table;
}

constexpr vcos::factory::ClassTable describeEnum(std::string_view name, std::string_view doc,
                                                 std::span<const vcos::factory::VcosMethod> methods,
                                                 std::span<const vcos::COSEnumInfo> members) {
  return {.name = name,
          .doc = doc,
          .kind = vcos::ClassKind::Value,
          .methods = methods,
          .members = members};
}

/// What the description of handle class C knows of the model's side.
template <class C>
class MF0WrapperInfo {
 protected:
  /// Makes elements of C known to scripts.
  MF0WrapperInfo() { registerElementClass(C::Impl::kClass); }

  /// Completes what a table says of the class by the class's own description.
  static void complete(vcos::ClassDefinition& definition) {
    vcos::factory::detail::initStringDataTypes();
    completeProperties(C::Impl::kClass, definition);
  }
};

/// The base of the generated wrapper of handle class C, made of its table.
template <class C>
class HandleWrapper : public vcos::factory::HandleClassInfo<C, false>, protected MF0WrapperInfo<C> {
 public:
  using Base = vcos::factory::HandleClassInfo<C, false>;
  using Base::Base;
  void initialize(vcos::ClassDefinition& definition) override {
    Base::initialize(definition);
    this->complete(definition);
  }
};

/// The same of enumeration E.
template <ModelEnum E>
class EnumWrapper : public vcos::factory::NonHandleClassInfo<E, E>, protected MF0EnumInfo<E> {
 public:
  using Base = vcos::factory::NonHandleClassInfo<E, E>;
  using Base::Base;
  void initialize(vcos::ClassDefinition& definition) override {
    Base::initialize(definition);
    this->complete(definition);
  }
};

}  // namespace mf::zero::mi
