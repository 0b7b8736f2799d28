// Descriptions of the host classes of a package: what the generated tables name and everything
// else follows from.
#pragma once

#include <string_view>

#include "framework/element.h"
#include "framework/export.h"
#include "framework/mi/element_property.h"
#include "framework/mi/enum_class.h"
#include "framework/mi/host_objects.h"
#include "host/vcos/class_info.h"

namespace mf::zero::mi {

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
