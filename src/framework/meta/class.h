// The meta element of a class.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "framework/meta/type.h"
#include "framework/meta/typed_element.h"

namespace mf::zero::meta {

/// A class of elements; owns its properties and operations.
class MF0_API Class : public ConcreteHandle<Class, StructuredType> {
 public:
  class Impl;
  using ConcreteHandle::ConcreteHandle;
};

class MF0_API Class::Impl : public StructuredType::Impl {
 public:
  using BuilderImpl = BuilderBase<Builder, StructuredType::Impl::BuilderImpl>;
  struct Storage : StructuredType::Impl::Storage {
    Text scopedName;
    ReferenceSlot superclass;
    ReferenceList operations;
    bool isAbstract = false;
    const ClassInfo* info = nullptr;
  };
  static const PropertyInfo kProperties[4];
  static const ClassInfo kClass;
  using StructuredType::Impl::Impl;

  /// The name in C++, "kxsim::design::Figure".
  std::string getScopedName() const { return toUtf8(read<Storage>().scopedName.str()); }
  void setScopedName(std::string_view name) {
    assign(kProperties[0], own<Storage>().scopedName, toUtf16(name));
  }
  bool isAbstract() const { return read<Storage>().isAbstract; }
  void setIsAbstract(bool on) { assign(kProperties[1], own<Storage>().isAbstract, on); }
  /// Empty for ModelElement alone.
  Class getSuperclass() const;
  void setSuperclass(const Class& superclass);
  bool hasSuperclass() const { return has(kProperties[2]); }
  /// The class's own operations.
  const ElementSequence<Operation> getOperations() const { return {this, kProperties[3]}; }
  ElementSequence<Operation> getOperationsMutable() { return {this, kProperties[3]}; }
  bool hasOperations() const { return has(kProperties[3]); }

  /// All properties, those of the superclasses first.
  std::vector<Property> getAllProperties() const;
  /// The property of that name, inherited ones included; empty if there is none.
  Property findProperty(std::u16string_view name) const;
  /// The property of that index, inherited ones included; empty if there is none.
  Property findPropertyByIndex(int index) const;
  /// The operation of that name, inherited ones included; empty if there is none.
  Operation findOperation(std::u16string_view name) const;
  /// Whether this is `other` or inherits from it; false for an empty handle.
  bool isSubclassOf(const Class& other) const;
  /// A fresh builder of the class for `model`. Raises CannotCreateAbstractClass.
  std::unique_ptr<Builder> instantiateBuilder(const Model& model) const;

  /// The description that the class was registered from; null if it was made by hand.
  const ClassInfo* info() const { return read<Storage>().info; }
  /// Not undone by a rollback; for registration.
  void setInfo(const ClassInfo* info) { own<Storage>().info = info; }
};

}  // namespace mf::zero::meta
