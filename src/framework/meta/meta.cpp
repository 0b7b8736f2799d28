// What the meta elements answer beyond their stored values.
#include "framework/meta/meta.h"

#include "framework/meta/registry.h"
#include "framework/model_impl.h"

namespace mf::zero::meta {
namespace {

// The first element that matches; empty if there is none.
template <class X, class Matches>
X firstOf(const ElementSequence<X>& elements, Matches matches) {
  for (const X& element : elements) {
    if (matches(element)) return element;
  }
  return {};
}

template <class X>
X named(const ElementSequence<X>& elements, std::u16string_view name) {
  return firstOf(elements, [&](const X& element) { return element->getName() == name; });
}

}  // namespace

// Package.

Package Package::Impl::getParent() const { return getOwner().as<Package>(); }
void Package::Impl::setParent(const Package& parent) {
  parent->getPackagesMutable().add(Package(this));
}

std::string Package::Impl::getPath() const {
  const Package parent = getParent();
  if (!parent) return toUtf8(getName());
  const std::string path = parent->getPath();
  return path.empty() ? toUtf8(getName()) : path + '.' + toUtf8(getName());
}

Type Package::Impl::findType(std::u16string_view name) const { return named(getTypes(), name); }
Package Package::Impl::findPackage(std::u16string_view name) const {
  return named(getPackages(), name);
}

// Types.

Package Type::Impl::getPackage() const { return getOwner().as<Package>(); }
void Type::Impl::setPackage(const Package& package) { package->getTypesMutable().add(Type(this)); }

PrimitiveType Enum::Impl::getUnderlyingType() const {
  return element<PrimitiveType>(read<Storage>().underlyingType);
}
void Enum::Impl::setUnderlyingType(const PrimitiveType& type) {
  assign(kProperties[0], own<Storage>().underlyingType, type);
}

EnumLiteral Enum::Impl::findLiteral(std::u16string_view name) const {
  return named(getLiterals(), name);
}
EnumLiteral Enum::Impl::findLiteral(std::int32_t value) const {
  return firstOf(getLiterals(),
                 [&](const EnumLiteral& literal) { return literal->getValue() == value; });
}

Enum EnumLiteral::Impl::getEnum() const { return getOwner().as<Enum>(); }
void EnumLiteral::Impl::setEnum(const Enum& parent) {
  parent->getLiteralsMutable().add(EnumLiteral(this));
}

// Properties and operations.

Type TypedElement::Impl::getType() const { return element<Type>(read<Storage>().type); }
void TypedElement::Impl::setType(const Type& type) {
  assign(kProperties[1], own<Storage>().type, type);
}

Class TypedElement::Impl::getOwningClass() const { return getOwner().as<Class>(); }

std::string TypedElement::Impl::getQualifiedName() const {
  const Class owner = getOwningClass();
  return owner ? owner->getQualifiedName() + '.' + toUtf8(getName()) : toUtf8(getName());
}

std::optional<std::u16string> Property::Impl::getDefaultValue() const {
  const Storage& values = read<Storage>();
  return values.hasDefault ? std::optional(values.defaultValue.str()) : std::nullopt;
}

void Property::Impl::setDefaultValue(std::optional<std::u16string_view> text) {
  Transaction transaction = getModel()->beginTransaction(false);
  assign(kProperties[2], own<Storage>().defaultValue, text.value_or(u""));
  assign(kProperties[3], own<Storage>().hasDefault, text.has_value());
  transaction.commit();
}

void Property::Impl::setOwningClass(const Class& owner) {
  owner->getPropertiesMutable().add(Property(this));
}

void Operation::Impl::setOwningClass(const Class& owner) {
  owner->getOperationsMutable().add(Operation(this));
}

Value Operation::Impl::invoke(const ModelElement& element) const {
  const Class owner = getOwningClass();
  if (owner && !element->getMetaClass()->isSubclassOf(owner)) {
    reportException(mf0::messages::CannotCastIncompatibleTypes(owner->getQualifiedName()));
  }
  if (!element.isValid()) {
    reportException(mf0::messages::CannotUseDestroyedElement(element->classInfo().qualifiedName));
  }
  if (!hasInvoker()) reportException(mf0::messages::NoSuchElement());
  return read<Storage>().invoker->invoke(element);
}

// Class.

Class Class::Impl::getSuperclass() const { return element<Class>(read<Storage>().superclass); }
void Class::Impl::setSuperclass(const Class& superclass) {
  assign(kProperties[2], own<Storage>().superclass, superclass);
}

std::vector<Property> Class::Impl::getAllProperties() const {
  const Class superclass = getSuperclass();
  std::vector<Property> all = superclass ? superclass->getAllProperties() : std::vector<Property>();
  const ElementSequence<Property> own = getProperties();
  for (std::size_t k = 0; k < own.size(); ++k) all.push_back(own.at(k));
  return all;
}

Property Class::Impl::findProperty(std::u16string_view name) const {
  if (const Property own = named(getProperties(), name)) return own;
  const Class superclass = getSuperclass();
  return superclass ? superclass->findProperty(name) : Property();
}

Property Class::Impl::findPropertyByIndex(int index) const {
  const PropertyInfo* found = info() ? info()->findByIndex(index) : nullptr;
  return found ? propertyOf(*found) : Property();
}

Operation Class::Impl::findOperation(std::u16string_view name) const {
  if (const Operation own = named(getOperations(), name)) return own;
  const Class superclass = getSuperclass();
  return superclass ? superclass->findOperation(name) : Operation();
}

bool Class::Impl::isSubclassOf(const Class& other) const {
  for (const Impl* each = this; each; each = each->getSuperclass().impl()) {
    if (each == other.impl()) return true;
  }
  return false;
}

std::unique_ptr<Builder> Class::Impl::instantiateBuilder(const Model& model) const {
  const BuilderFactory factory =
      MetaRegistry::getInstance().findBuilderFactory(Class(const_cast<Impl*>(this)));
  if (!factory) reportException(mf0::messages::CannotCreateAbstractClass(getQualifiedName()));
  return factory(model);
}

}  // namespace mf::zero::meta
