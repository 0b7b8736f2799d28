// "mf.zero.meta": the meta classes as scripts see them, read-only.
#include <memory>

#include "framework/meta/meta.h"
#include "framework/mi/element_property.h"
#include "framework/mi/enum_class.h"
#include "framework/mi/enum_value_marshaler.h"
#include "framework/mi/host_classes.h"
#include "framework/mi/host_objects.h"
#include "host/text.h"
#include "host/vcos/name.h"

namespace mf::zero::mi {
namespace {

using vcos::ClassDefinition;
using vcos::COSPackage;
using vcos::Native;
using vcos::factory::PropertyRow;

// The sentence that the host class of a described class has.
vexal::ArrayPtr readClassDoc(const PropertyRow&, const Native& native) {
  const auto& metaClass = *static_cast<const meta::Class::Impl*>(native.object);
  const vcos::COSClass* const hostClass = vcos::COSClass::getClass(metaClass.getQualifiedName());
  return vexal::createChar(hostClass ? hostClass->doc() : std::string_view());
}

constexpr PropertyRow kClassDoc{.name = "Documentation",
                                .dataType = vcos::factory::detail::kStringScalar,
                                .read = &readClassDoc,
                                .doc = "What the class stands for, in a sentence."};

struct PropertyDoc {
  const ClassInfo& owner;
  std::string_view name;
  std::string_view doc;
};

constexpr PropertyDoc kDocs[] = {
    {meta::Package::Impl::kClass, "Name", "The name within the package around it."},
    {meta::Package::Impl::kClass, "Uri", "What stored data know the package by."},
    {meta::Package::Impl::kClass, "Packages", "The packages in it."},
    {meta::Package::Impl::kClass, "Types", "The classes and enumerations in it."},
    {meta::Package::Impl::kClass, "Parent", "The package around it; an empty array for a root."},
    {meta::Type::Impl::kClass, "Name", "The name within its package."},
    {meta::Type::Impl::kClass, "QualifiedName", "The dotted name, packages included."},
    {meta::Type::Impl::kClass, "Package", "The package that it is in."},
    {meta::StructuredType::Impl::kClass, "Properties", "Its own properties, in index order."},
    {meta::Enum::Impl::kClass, "UnderlyingType", "The type of its literals' values."},
    {meta::Enum::Impl::kClass, "Literals", "Its literals, in order of declaration."},
    {meta::EnumLiteral::Impl::kClass, "Name", "The literal."},
    {meta::EnumLiteral::Impl::kClass, "Value", "Its integer."},
    {meta::EnumLiteral::Impl::kClass, "Enum", "The enumeration that it is of."},
    {meta::TypedElement::Impl::kClass, "Name", "The name within its class."},
    {meta::TypedElement::Impl::kClass, "Type", "What its values are."},
    {meta::TypedElement::Impl::kClass, "Lower", "How many values it has at least."},
    {meta::TypedElement::Impl::kClass, "Upper", "How many values it has at most; -1 for any."},
    {meta::Property::Impl::kClass, "Index", "Its number, counted on from the superclass; from 1."},
    {meta::Property::Impl::kClass, "ValueFlags", "Whether it holds a single value or many."},
    {meta::Property::Impl::kClass, "DefaultValue", "The value of new elements, as text."},
    {meta::Property::Impl::kClass, "HasDefault", "Whether a default was declared."},
    {meta::Property::Impl::kClass, "IsContainment", "Whether it owns the elements that it holds."},
    {meta::Property::Impl::kClass, "IsOrdered", "Whether positions mean something."},
    {meta::Property::Impl::kClass, "IsUnique", "Whether it holds each value once."},
    {meta::Property::Impl::kClass, "IsReadOnly", "Whether it refuses to be set."},
    {meta::Property::Impl::kClass, "IsDerived", "Whether it is computed instead of stored."},
    {meta::Property::Impl::kClass, "IsTransient", "Whether it is left out when a model is saved."},
    {meta::Property::Impl::kClass, "IsQualificationUnique",
     "Whether qualifying keys find one value each."},
    {meta::Property::Impl::kClass, "Class", "The class that declares it."},
    {meta::Operation::Impl::kClass, "IsPublic", "Whether scripts see it."},
    {meta::Operation::Impl::kClass, "IsStatic", "Whether it is called without an element."},
    {meta::Operation::Impl::kClass, "IsAbstract", "Whether only subclasses define it."},
    {meta::Operation::Impl::kClass, "IsEvent", "Whether it is an event."},
    {meta::Operation::Impl::kClass, "Class", "The class that declares it."},
    {meta::Class::Impl::kClass, "ScopedName", "The name as C++ has it."},
    {meta::Class::Impl::kClass, "IsAbstract", "Whether only its subclasses have elements."},
    {meta::Class::Impl::kClass, "Superclass", "The class above it; an empty array for none."},
    {meta::Class::Impl::kClass, "Operations", "Its own operations."},
};

std::string_view docOf(const ClassInfo& owner, std::string_view name) {
  for (const PropertyDoc& each : kDocs) {
    if (&each.owner == &owner && each.name == name) return each.doc;
  }
  return {};
}

struct MetaClass {
  const ClassInfo& info;
  std::string_view doc;
  const PropertyRow* extra = nullptr;
};

const MetaClass kMetaClasses[] = {
    {meta::Class::Impl::kClass, "A class of elements.", &kClassDoc},
    {meta::Enum::Impl::kClass, "An enumeration."},
    {meta::EnumLiteral::Impl::kClass, "A named value of an enumeration."},
    {meta::Operation::Impl::kClass, "An operation of a class."},
    {meta::Package::Impl::kClass, "A namespace of types and packages."},
    {meta::PrimitiveType::Impl::kClass, "A type whose values are no elements."},
    {meta::Property::Impl::kClass, "A property of a class."},
    {meta::StructuredType::Impl::kClass, "A type with properties."},
    {meta::Type::Impl::kClass, "What a property's value can be."},
    {meta::TypedElement::Impl::kClass, "Something with a name, a type and a multiplicity."},
};

// Everything that is said of a meta class follows from its own description; all of it is read-only.
class MetaClassInfo final : public vcos::COSClassInfo {
 public:
  explicit MetaClassInfo(const MetaClass& described)
      : COSClassInfo(described.info.qualifiedName), described_(described) {
    registerElementClass(described.info);
  }
  void initialize(ClassDefinition& definition) override {
    definition.superclass = described_.info.super->qualifiedName;
    definition.doc = described_.doc;
    definition.isAbstract = true;
    completeProperties(described_.info, definition);
    for (PropertyRow& row : definition.properties) {
      row.write = nullptr;
      row.doc = docOf(described_.info, row.name);
    }
    if (described_.extra) definition.properties.push_back(*described_.extra);
  }

 private:
  const MetaClass& described_;
};

// An enumeration without a table of its own.
class MetaEnumInfo final : public vcos::COSClassInfo {
 public:
  explicit MetaEnumInfo(const EnumInfo& info) : COSClassInfo(info.qualifiedName), info_(info) {}
  void initialize(ClassDefinition& definition) override {
    definition.kind = vcos::ClassKind::Value;
    for (const LiteralInfo& literal : info_.literals) {
      definition.members.push_back(
          {vcos::internal::keptForEver(toUtf8(literal.name)), literal.value});
    }
    detail::addMemberMethods(definition);
  }

 private:
  const EnumInfo& info_;
};

class MetaPackage final : public EmptyParentPackage {
 public:
  MetaPackage() : EmptyParentPackage("mf.zero.meta") {}
  void initializePackage(COSPackage* package) override {
    for (const MetaClass& each : kMetaClasses) {
      package->addClass(std::make_unique<MetaClassInfo>(each));
    }
    addEnum<meta::ValueFlags>(package,
                              std::make_unique<MetaEnumInfo>(EnumTraits<meta::ValueFlags>::info()));
  }
};

}  // namespace

std::unique_ptr<EmptyParentPackage> detail::makeMetaPackage() {
  return std::make_unique<MetaPackage>();
}

}  // namespace mf::zero::mi
