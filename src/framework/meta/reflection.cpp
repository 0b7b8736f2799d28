// From elements to their meta elements and back.
#include "framework/builder.h"
#include "framework/change_set.h"
#include "framework/element.h"
#include "framework/meta/meta.h"
#include "framework/model_impl.h"

namespace mf::zero {
namespace {

// Registers what the link is waiting for; the element is published when that returns.
ElementImpl* registered(const MetaLink& link, void (*ensure)(), std::string_view typeName) {
  if (ElementImpl* element = link.get()) return element;
  if (ensure) ensure();
  if (ElementImpl* element = link.get()) return element;
  reportException(mf0::messages::NoSuchType(typeName));
}

}  // namespace

namespace meta {

Class classOf(const ClassInfo& info) {
  return Class(
      static_cast<Class::Impl*>(registered(info.meta, info.ensureRegistered, info.qualifiedName)));
}

Property propertyOf(const PropertyInfo& info) {
  return Property(static_cast<Property::Impl*>(
      registered(info.meta, info.owner->ensureRegistered, info.owner->qualifiedName)));
}

Enum enumOf(const EnumInfo& info) {
  return Enum(
      static_cast<Enum::Impl*>(registered(info.meta, info.ensureRegistered, info.qualifiedName)));
}

const PropertyInfo& infoOf(const Property& property) {
  const PropertyInfo* info = property->info();
  if (!info) {
    const Class owner = property->getOwningClass();
    reportException(mf0::messages::NoSuchProperty(owner ? owner->getQualifiedName() : std::string(),
                                                  toUtf8(property->getName())));
  }
  return *info;
}

}  // namespace meta

const ClassInfo& ModelElement::classInfo() { return kModelElementClass; }
meta::Class ModelElement::metaClass() { return meta::classOf(kModelElementClass); }

meta::Class ElementImpl::getMetaClass() const { return meta::classOf(classInfo()); }

meta::Property ElementImpl::getPropertyByIndex(int index) const {
  const PropertyInfo* info = classInfo().findByIndex(index);
  return info ? meta::propertyOf(*info) : meta::Property();
}

meta::Property ElementImpl::getOwningProperty() const {
  const ModelElement owner = getOwner();
  const PropertyInfo* info = owner ? owner->classInfo().findByIndex(ownerProperty_) : nullptr;
  return info ? meta::propertyOf(*info) : meta::Property();
}

ModelElement ModelImpl::createProxy(const meta::Class& metaClass, const uuid& identity) {
  const ClassInfo* info = metaClass->info();
  if (!info) reportException(mf0::messages::NoSuchType(metaClass->getQualifiedName()));
  return createProxy(*info, identity);
}

meta::Class BuilderValues::getMetaClass() const { return meta::classOf(*info_); }

meta::Property Change::metaProperty() const {
  return property_ ? meta::propertyOf(*property_) : meta::Property();
}

}  // namespace mf::zero
