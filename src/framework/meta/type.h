// The meta elements that can be the type of something, and what they have in common.
//
// Meta elements are elements like any other, of a model that the meta registry owns.
// Their typed getters, and their collections by position, may be read from any thread
// while no package is being registered. Iterating over a collection and reading by
// reflection are for one thread at a time.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "framework/builder.h"
#include "framework/collection.h"
#include "framework/element.h"
#include "framework/model.h"

namespace mf::zero::meta {

class EnumLiteral;
class Package;
class PrimitiveType;
class Property;

/// What a property's value or an operation's result can be. Abstract.
class MF0_API Type : public Handle<Type, ModelElement> {
 public:
  class Impl;
  using Handle::Handle;

  std::u16string name() const;
  std::string qualifiedName() const;
};

class MF0_API Type::Impl : public ElementImpl {
 public:
  using BuilderImpl = BuilderBase<Builder>;
  struct Storage : ElementImpl::Storage {
    Text name;
    Text qualifiedName;
  };
  static const PropertyInfo kProperties[3];
  static const ClassInfo kClass;
  using ElementImpl::ElementImpl;

  const std::u16string& getName() const { return read<Storage>().name.str(); }
  void setName(std::u16string_view name) { assign(kProperties[0], own<Storage>().name, name); }
  /// Dotted: package path, ".", name. A primitive type's is its name.
  std::string getQualifiedName() const { return toUtf8(read<Storage>().qualifiedName.str()); }
  void setQualifiedName(std::string_view name) {
    assign(kProperties[1], own<Storage>().qualifiedName, toUtf16(name));
  }
  /// The package that owns the type; empty for a primitive type.
  Package getPackage() const;
  /// Moves the type into `package`, behind its other types.
  void setPackage(const Package& package);
};

/// A type with properties. Abstract.
class MF0_API StructuredType : public Handle<StructuredType, Type> {
 public:
  class Impl;
  using Handle::Handle;
};

class MF0_API StructuredType::Impl : public Type::Impl {
 public:
  using BuilderImpl = BuilderBase<Builder, Type::Impl::BuilderImpl>;
  struct Storage : Type::Impl::Storage {
    ReferenceList properties;
  };
  static const PropertyInfo kProperties[1];
  static const ClassInfo kClass;
  using Type::Impl::Impl;

  /// The type's own properties: by index, derived ones where they were declared.
  const ElementSequence<Property> getProperties() const { return {this, kProperties[0]}; }
  ElementSequence<Property> getPropertiesMutable() { return {this, kProperties[0]}; }
  bool hasProperties() const { return has(kProperties[0]); }
};

/// A type whose values the framework knows by itself: "Real", "String", ...
class MF0_API PrimitiveType : public ConcreteHandle<PrimitiveType, Type> {
 public:
  class Impl;
  using ConcreteHandle::ConcreteHandle;
};

class MF0_API PrimitiveType::Impl : public Type::Impl {
 public:
  using BuilderImpl = BuilderBase<Builder, Type::Impl::BuilderImpl>;
  struct Storage : Type::Impl::Storage {};
  static const ClassInfo kClass;
  using Type::Impl::Impl;
};

/// An enumeration: named integer values.
class MF0_API Enum : public ConcreteHandle<Enum, Type> {
 public:
  class Impl;
  using ConcreteHandle::ConcreteHandle;
};

class MF0_API Enum::Impl : public Type::Impl {
 public:
  using BuilderImpl = BuilderBase<Builder, Type::Impl::BuilderImpl>;
  struct Storage : Type::Impl::Storage {
    ReferenceSlot underlyingType;
    ReferenceList literals;
    const EnumInfo* info = nullptr;
  };
  static const PropertyInfo kProperties[2];
  static const ClassInfo kClass;
  using Type::Impl::Impl;

  /// The primitive type of the literals' values.
  PrimitiveType getUnderlyingType() const;
  void setUnderlyingType(const PrimitiveType& type);
  bool hasUnderlyingType() const { return has(kProperties[0]); }
  /// In the order of declaration.
  const ElementSequence<EnumLiteral> getLiterals() const { return {this, kProperties[1]}; }
  ElementSequence<EnumLiteral> getLiteralsMutable() { return {this, kProperties[1]}; }
  bool hasLiterals() const { return has(kProperties[1]); }

  /// The literal of that name or value; empty if there is none.
  EnumLiteral findLiteral(std::u16string_view name) const;
  EnumLiteral findLiteral(std::int32_t value) const;
  /// The description that the enumeration was registered from; null if it was made by hand.
  const EnumInfo* info() const { return read<Storage>().info; }
  /// Not undone by a rollback; for registration.
  void setInfo(const EnumInfo* info) { own<Storage>().info = info; }
};

/// One named value of an enumeration.
class MF0_API EnumLiteral : public ConcreteHandle<EnumLiteral, ModelElement> {
 public:
  class Impl;
  using ConcreteHandle::ConcreteHandle;

  std::u16string name() const;
  std::int32_t value() const;
};

class MF0_API EnumLiteral::Impl : public ElementImpl {
 public:
  using BuilderImpl = BuilderBase<Builder>;
  struct Storage : ElementImpl::Storage {
    Text name;
    std::int32_t value = 0;
  };
  static const PropertyInfo kProperties[3];
  static const ClassInfo kClass;
  using ElementImpl::ElementImpl;

  const std::u16string& getName() const { return read<Storage>().name.str(); }
  void setName(std::u16string_view name) { assign(kProperties[0], own<Storage>().name, name); }
  std::int32_t getValue() const { return read<Storage>().value; }
  void setValue(std::int32_t value) { assign(kProperties[1], own<Storage>().value, value); }
  /// The enumeration that owns the literal.
  Enum getEnum() const;
  /// Moves the literal into `parent`, behind its other literals.
  void setEnum(const Enum& parent);
};

inline std::u16string Type::name() const { return (*this)->getName(); }
inline std::string Type::qualifiedName() const { return (*this)->getQualifiedName(); }
inline std::u16string EnumLiteral::name() const { return (*this)->getName(); }
inline std::int32_t EnumLiteral::value() const { return (*this)->getValue(); }

}  // namespace mf::zero::meta
