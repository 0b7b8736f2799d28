// The meta element of a package.
#pragma once

#include <string>
#include <string_view>

#include "framework/meta/type.h"

namespace mf::zero::meta {

/// A package: a namespace of types and of packages, which it owns. A root package has no name.
class MF0_API Package : public ConcreteHandle<Package, ModelElement> {
 public:
  class Impl;
  using ConcreteHandle::ConcreteHandle;

  std::u16string name() const;
  std::string uri() const;
};

class MF0_API Package::Impl : public ElementImpl {
 public:
  using BuilderImpl = BuilderBase<Builder>;
  struct Storage : ElementImpl::Storage {
    Text name;
    Text uri;
    ReferenceList packages;
    ReferenceList types;
  };
  static const PropertyInfo kProperties[5];
  static const ClassInfo kClass;
  using ElementImpl::ElementImpl;

  const std::u16string& getName() const { return read<Storage>().name.str(); }
  void setName(std::u16string_view name) { assign(kProperties[0], own<Storage>().name, name); }
  std::string getUri() const { return toUtf8(read<Storage>().uri.str()); }
  void setUri(std::string_view uri) { assign(kProperties[1], own<Storage>().uri, toUtf16(uri)); }
  const ElementSequence<Package> getPackages() const { return {this, kProperties[2]}; }
  ElementSequence<Package> getPackagesMutable() { return {this, kProperties[2]}; }
  bool hasPackages() const { return has(kProperties[2]); }
  /// Classes and enumerations, in the order of registration.
  const ElementSequence<Type> getTypes() const { return {this, kProperties[3]}; }
  ElementSequence<Type> getTypesMutable() { return {this, kProperties[3]}; }
  bool hasTypes() const { return has(kProperties[3]); }
  /// The package that owns this one; empty for a root.
  Package getParent() const;
  /// Moves the package into `parent`, behind its other packages.
  void setParent(const Package& parent);

  /// The names from the root down, with dots between: "kxsim.design.internal".
  std::string getPath() const;
  /// The type, or the package, of that simple name directly inside; empty if there is none.
  Type findType(std::u16string_view name) const;
  Package findPackage(std::u16string_view name) const;
};

inline std::u16string Package::name() const { return (*this)->getName(); }
inline std::string Package::uri() const { return (*this)->getUri(); }

}  // namespace mf::zero::meta
