#include "framework/mi/host_classes.h"

#include <memory>
#include <string>

#include "framework/element.h"
#include "framework/meta/meta.h"
#include "framework/mi/element_property.h"
#include "framework/mi/empty_parent_package.h"
#include "framework/mi/enum_class.h"
#include "framework/mi/enum_value_marshaler.h"
#include "framework/mi/host_boundary.h"
#include "framework/mi/host_objects.h"
#include "host/text.h"
#include "host/vcos/name.h"
#include "host/vcos/om.h"

namespace mf::zero::mi {
namespace {

using vcos::ClassDefinition;
using vcos::COSPackage;
using vcos::Native;
using vcos::factory::ClassTable;
using vcos::factory::PropertyRow;

// Maps have their names; no property is one.
constinit const ClassTable kMap{
    .name = "mf.zero.Map", .superclass = "mf.zero.Set", .doc = "Elements by key."};
constinit const ClassTable kMultimap{.name = "mf.zero.Multimap",
                                     .superclass = "mf.zero.Set",
                                     .doc = "Elements by key, several for one key."};
constinit const ClassTable kAssociative{.name = "mf.zero.PrimitiveAssociativeCollection",
                                        .superclass = "mf.zero.PrimitiveSet",
                                        .doc = "Values by key."};

constexpr const ClassTable* kTables[] = {
    &detail::kModelTable,
    &detail::kTransactionTable,
    &detail::kSubscriptionTable,
    &detail::kElementTable,
    &detail::kSetTable,
    &detail::kSequenceTable,
    &detail::kPrimitiveSetTable,
    &detail::kPrimitiveSequenceTable,
    &kMap,
    &kMultimap,
    &kAssociative,
};

std::string_view interned(const std::string& text) {
  return vcos::internal::makeInterned(text).text();
}

// What scripts passed where a model belongs, but is none, becomes no model: the constructors say
// what they lack.
class NoModel final : public vcos::COSTypeConversion {
 public:
  vexal::ArrayPtr convert(const vxArray*) override { return omCreateVCOSEmpty(kModelName); }
};

// The meta model ------------------------------------------------------------------------------

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
    for (PropertyRow& row : definition.properties) row.write = nullptr;
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
      definition.members.push_back({interned(toUtf8(literal.name)), literal.value});
    }
    detail::addMemberMethods(definition);
  }

 private:
  const EnumInfo& info_;
};

class ZeroPackage final : public EmptyParentPackage {
 public:
  ZeroPackage() : EmptyParentPackage("mf.zero") {}
  void initializePackage(COSPackage* package) override {
    for (const ClassTable* table : kTables) package->addClass(*table);
    registerElementClass(ModelElement::classInfo());
  }
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

void registerHostClasses() {
  attachToHost();
  EmptyParentPackage::registerPackage(std::make_unique<ZeroPackage>());
  EmptyParentPackage::registerPackage(std::make_unique<MetaPackage>());
  if (!vcos::COSTypeRepository::getConversion("any", kModelName)) {
    vcos::COSTypeRepository::addConversion("any", kModelName, std::make_unique<NoModel>());
  }
}

}  // namespace mf::zero::mi
