// The descriptions of the meta classes, written in the form that generated classes have.
#include "framework/meta/detail/tables.h"

#include <cstddef>

#include "framework/meta/identity.h"
#include "framework/meta/meta.h"
#include "framework/meta/registry.h"
#include "framework/native.h"

// Every storage has its values at fixed places, whatever the standard promises for it.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

namespace mf::zero {
namespace {

void ensureRegistered() { meta::MetaRegistry::getInstance(); }

// The identity of an item of a class or enumeration; its short name is ASCII.
constexpr uuid itemIdentity(std::string_view owner, std::u16string_view name) {
  char whole[64] = {};
  std::size_t length = 0;
  for (const char c : owner) whole[length++] = c;
  whole[length++] = '.';
  for (const char16_t c : name) whole[length++] = static_cast<char>(c);
  return meta::identityOf({whole, length});
}

// Writes the rows of one class's property table.
struct Rows {
  const ClassInfo& owner;
  std::string_view qualifiedName;

  constexpr PropertyInfo value(std::u16string_view name, std::uint16_t index, std::size_t offset,
                               ValueKind kind, std::string_view type,
                               const char* defaultValue = nullptr) const {
    return row(name, type, kind, kOrdered | kUnique, index, offset, nullptr, defaultValue);
  }
  constexpr PropertyInfo text(std::u16string_view name, std::uint16_t index, std::size_t offset,
                              std::string_view type = "String") const {
    return value(name, index, offset, ValueKind::kString, type);
  }
  constexpr PropertyInfo flag(std::u16string_view name, std::uint16_t index,
                              std::size_t offset) const {
    return value(name, index, offset, ValueKind::kBoolean, "Boolean");
  }
  constexpr PropertyInfo integer(std::u16string_view name, std::uint16_t index, std::size_t offset,
                                 const char* defaultValue = nullptr) const {
    return value(name, index, offset, ValueKind::kInteger, "Integer", defaultValue);
  }
  constexpr PropertyInfo reference(std::u16string_view name, std::uint16_t index,
                                   std::size_t offset, const ClassInfo& target,
                                   std::string_view type) const {
    return row(name, type, ValueKind::kElement, kOrdered | kUnique, index, offset, &target);
  }
  constexpr PropertyInfo contents(std::u16string_view name, std::uint16_t index, std::size_t offset,
                                  const ClassInfo& target, std::string_view type) const {
    return row(name, type, ValueKind::kElement, kMany | kContainment | kOrdered, index, offset,
               &target);
  }
  constexpr PropertyInfo derived(std::u16string_view name, const ClassInfo& target,
                                 std::string_view type, Value (*derive)(const ElementImpl&)) const {
    return row(name, type, ValueKind::kElement,
               kOrdered | kUnique | kReadOnly | kDerived | kTransient, 0, 0, &target, nullptr,
               derive);
  }

 private:
  constexpr PropertyInfo row(std::u16string_view name, std::string_view type, ValueKind kind,
                             int flags, std::uint16_t index, std::size_t offset,
                             const ClassInfo* target, const char* defaultValue = nullptr,
                             Value (*derive)(const ElementImpl&) = nullptr) const {
    return {.name = name,
            .type = type,
            .kind = kind,
            .flags = static_cast<std::uint16_t>(flags),
            .index = index,
            .offset = static_cast<std::uint32_t>(offset),
            .identity = itemIdentity(qualifiedName, name),
            .owner = &owner,
            .target = target,
            .defaultValue = defaultValue,
            .derive = derive};
  }
};

// The owner's position in the containment tree, as a value.
Value ownerOf(const ElementImpl& element) { return element.getOwner(); }

constexpr ClassInfo describe(std::u16string_view name, std::string_view qualifiedName,
                             std::string_view scopedName, const ClassInfo* super,
                             std::span<const PropertyInfo> properties, std::uint16_t firstIndex,
                             std::uint16_t indexCount, NativeInfo native = {}) {
  return {.name = name,
          .qualifiedName = qualifiedName,
          .scopedName = scopedName,
          .identity = meta::identityOf(qualifiedName),
          .isAbstract = native.construct == nullptr,
          .super = super,
          .properties = properties,
          .operations = {},
          .firstIndex = firstIndex,
          .indexCount = indexCount,
          .native = native,
          .ensureRegistered = ensureRegistered};
}

}  // namespace

constinit const ClassInfo kModelElementClass =
    describe(u"ModelElement", "mf.zero.ModelElement", "mf::zero::ModelElement", nullptr, {}, 1, 0);

namespace meta {
namespace {

constexpr std::string_view kPackageName = "mf.zero.meta.Package";
constexpr std::string_view kTypeName = "mf.zero.meta.Type";
constexpr std::string_view kStructuredTypeName = "mf.zero.meta.StructuredType";
constexpr std::string_view kPrimitiveTypeName = "mf.zero.meta.PrimitiveType";
constexpr std::string_view kEnumName = "mf.zero.meta.Enum";
constexpr std::string_view kEnumLiteralName = "mf.zero.meta.EnumLiteral";
constexpr std::string_view kTypedElementName = "mf.zero.meta.TypedElement";
constexpr std::string_view kPropertyName = "mf.zero.meta.Property";
constexpr std::string_view kOperationName = "mf.zero.meta.Operation";
constexpr std::string_view kClassName = "mf.zero.meta.Class";
constexpr std::string_view kValueFlagsName = "mf.zero.meta.ValueFlags";

constexpr LiteralInfo kValueFlagsLiterals[] = {
    {u"Single", 1, itemIdentity(kValueFlagsName, u"Single")},
    {u"Many", 2, itemIdentity(kValueFlagsName, u"Many")},
};
constinit const EnumInfo kValueFlags = {u"ValueFlags", kValueFlagsName, identityOf(kValueFlagsName),
                                        kValueFlagsLiterals};

constexpr Rows kPackageRows{Package::Impl::kClass, kPackageName};
constexpr Rows kTypeRows{Type::Impl::kClass, kTypeName};
constexpr Rows kStructuredTypeRows{StructuredType::Impl::kClass, kStructuredTypeName};
constexpr Rows kEnumRows{Enum::Impl::kClass, kEnumName};
constexpr Rows kEnumLiteralRows{EnumLiteral::Impl::kClass, kEnumLiteralName};
constexpr Rows kTypedElementRows{TypedElement::Impl::kClass, kTypedElementName};
constexpr Rows kPropertyRows{Property::Impl::kClass, kPropertyName};
constexpr Rows kOperationRows{Operation::Impl::kClass, kOperationName};
constexpr Rows kClassRows{Class::Impl::kClass, kClassName};

using PackageStorage = Package::Impl::Storage;
using TypeStorage = Type::Impl::Storage;
using StructuredTypeStorage = StructuredType::Impl::Storage;
using EnumStorage = Enum::Impl::Storage;
using EnumLiteralStorage = EnumLiteral::Impl::Storage;
using TypedElementStorage = TypedElement::Impl::Storage;
using PropertyStorage = Property::Impl::Storage;
using OperationStorage = Operation::Impl::Storage;
using ClassStorage = Class::Impl::Storage;

}  // namespace

constinit const PropertyInfo Package::Impl::kProperties[5] = {
    kPackageRows.text(u"Name", 1, offsetof(PackageStorage, name)),
    kPackageRows.text(u"Uri", 2, offsetof(PackageStorage, uri), "StdString"),
    kPackageRows.contents(u"Packages", 3, offsetof(PackageStorage, packages), kClass, kPackageName),
    kPackageRows.contents(u"Types", 4, offsetof(PackageStorage, types), Type::Impl::kClass,
                          kTypeName),
    kPackageRows.derived(u"Parent", kClass, kPackageName, ownerOf),
};
constinit const ClassInfo Package::Impl::kClass =
    describe(u"Package", kPackageName, "mf::zero::meta::Package", &kModelElementClass, kProperties,
             1, 4, nativeOf<Package>());

constinit const PropertyInfo Type::Impl::kProperties[3] = {
    kTypeRows.text(u"Name", 1, offsetof(TypeStorage, name)),
    kTypeRows.text(u"QualifiedName", 2, offsetof(TypeStorage, qualifiedName), "StdString"),
    kTypeRows.derived(u"Package", Package::Impl::kClass, kPackageName, ownerOf),
};
constinit const ClassInfo Type::Impl::kClass =
    describe(u"Type", kTypeName, "mf::zero::meta::Type", &kModelElementClass, kProperties, 1, 2);

constinit const PropertyInfo StructuredType::Impl::kProperties[1] = {
    kStructuredTypeRows.contents(u"Properties", 3, offsetof(StructuredTypeStorage, properties),
                                 Property::Impl::kClass, kPropertyName),
};
constinit const ClassInfo StructuredType::Impl::kClass =
    describe(u"StructuredType", kStructuredTypeName, "mf::zero::meta::StructuredType",
             &Type::Impl::kClass, kProperties, 3, 3);

constinit const ClassInfo PrimitiveType::Impl::kClass =
    describe(u"PrimitiveType", kPrimitiveTypeName, "mf::zero::meta::PrimitiveType",
             &Type::Impl::kClass, {}, 3, 2, nativeOf<PrimitiveType>());

constinit const PropertyInfo Enum::Impl::kProperties[2] = {
    kEnumRows.reference(u"UnderlyingType", 3, offsetof(EnumStorage, underlyingType),
                        PrimitiveType::Impl::kClass, kPrimitiveTypeName),
    kEnumRows.contents(u"Literals", 4, offsetof(EnumStorage, literals), EnumLiteral::Impl::kClass,
                       kEnumLiteralName),
};
constinit const ClassInfo Enum::Impl::kClass =
    describe(u"Enum", kEnumName, "mf::zero::meta::Enum", &Type::Impl::kClass, kProperties, 3, 4,
             nativeOf<Enum>());

constinit const PropertyInfo EnumLiteral::Impl::kProperties[3] = {
    kEnumLiteralRows.text(u"Name", 1, offsetof(EnumLiteralStorage, name)),
    kEnumLiteralRows.integer(u"Value", 2, offsetof(EnumLiteralStorage, value)),
    kEnumLiteralRows.derived(u"Enum", Enum::Impl::kClass, kEnumName, ownerOf),
};
constinit const ClassInfo EnumLiteral::Impl::kClass =
    describe(u"EnumLiteral", kEnumLiteralName, "mf::zero::meta::EnumLiteral", &kModelElementClass,
             kProperties, 1, 2, nativeOf<EnumLiteral>());

constinit const PropertyInfo TypedElement::Impl::kProperties[4] = {
    kTypedElementRows.text(u"Name", 1, offsetof(TypedElementStorage, name)),
    kTypedElementRows.reference(u"Type", 2, offsetof(TypedElementStorage, type), Type::Impl::kClass,
                                kTypeName),
    kTypedElementRows.integer(u"Lower", 3, offsetof(TypedElementStorage, lower), "1"),
    kTypedElementRows.integer(u"Upper", 4, offsetof(TypedElementStorage, upper), "1"),
};
constinit const ClassInfo TypedElement::Impl::kClass =
    describe(u"TypedElement", kTypedElementName, "mf::zero::meta::TypedElement",
             &kModelElementClass, kProperties, 1, 4);

constinit const PropertyInfo Property::Impl::kProperties[12] = {
    kPropertyRows.integer(u"Index", 5, offsetof(PropertyStorage, index)),
    {.name = u"ValueFlags",
     .type = kValueFlagsName,
     .kind = ValueKind::kEnumeration,
     .flags = kOrdered | kUnique,
     .index = 6,
     .offset = offsetof(PropertyStorage, valueFlags),
     .identity = itemIdentity(kPropertyName, u"ValueFlags"),
     .owner = &kClass,
     .enumeration = &kValueFlags,
     .defaultValue = "Single"},
    kPropertyRows.text(u"DefaultValue", 7, offsetof(PropertyStorage, defaultValue)),
    kPropertyRows.flag(u"HasDefault", 8, offsetof(PropertyStorage, hasDefault)),
    kPropertyRows.flag(u"IsContainment", 9, offsetof(PropertyStorage, isContainment)),
    kPropertyRows.flag(u"IsOrdered", 10, offsetof(PropertyStorage, isOrdered)),
    kPropertyRows.flag(u"IsUnique", 11, offsetof(PropertyStorage, isUnique)),
    kPropertyRows.flag(u"IsReadOnly", 12, offsetof(PropertyStorage, isReadOnly)),
    kPropertyRows.flag(u"IsDerived", 13, offsetof(PropertyStorage, isDerived)),
    kPropertyRows.flag(u"IsTransient", 14, offsetof(PropertyStorage, isTransient)),
    kPropertyRows.flag(u"IsQualificationUnique", 15,
                       offsetof(PropertyStorage, isQualificationUnique)),
    kPropertyRows.derived(u"Class", Class::Impl::kClass, kClassName, ownerOf),
};
constinit const ClassInfo Property::Impl::kClass =
    describe(u"Property", kPropertyName, "mf::zero::meta::Property", &TypedElement::Impl::kClass,
             kProperties, 5, 15, nativeOf<Property>());

constinit const PropertyInfo Operation::Impl::kProperties[5] = {
    kOperationRows.flag(u"IsPublic", 5, offsetof(OperationStorage, isPublic)),
    kOperationRows.flag(u"IsStatic", 6, offsetof(OperationStorage, isStatic)),
    kOperationRows.flag(u"IsAbstract", 7, offsetof(OperationStorage, isAbstract)),
    kOperationRows.flag(u"IsEvent", 8, offsetof(OperationStorage, isEvent)),
    kOperationRows.derived(u"Class", Class::Impl::kClass, kClassName, ownerOf),
};
constinit const ClassInfo Operation::Impl::kClass =
    describe(u"Operation", kOperationName, "mf::zero::meta::Operation", &TypedElement::Impl::kClass,
             kProperties, 5, 8, nativeOf<Operation>());

constinit const PropertyInfo Class::Impl::kProperties[4] = {
    kClassRows.text(u"ScopedName", 4, offsetof(ClassStorage, scopedName), "StdString"),
    kClassRows.flag(u"IsAbstract", 5, offsetof(ClassStorage, isAbstract)),
    kClassRows.reference(u"Superclass", 6, offsetof(ClassStorage, superclass), kClass, kClassName),
    kClassRows.contents(u"Operations", 7, offsetof(ClassStorage, operations),
                        Operation::Impl::kClass, kOperationName),
};
constinit const ClassInfo Class::Impl::kClass =
    describe(u"Class", kClassName, "mf::zero::meta::Class", &StructuredType::Impl::kClass,
             kProperties, 4, 7, nativeOf<Class>());

namespace {

constexpr const ClassInfo* kRootClasses[] = {&kModelElementClass};
constexpr const ClassInfo* kMetaClasses[] = {
    &Class::Impl::kClass,        &Enum::Impl::kClass,           &EnumLiteral::Impl::kClass,
    &Operation::Impl::kClass,    &Package::Impl::kClass,        &PrimitiveType::Impl::kClass,
    &Property::Impl::kClass,     &StructuredType::Impl::kClass, &Type::Impl::kClass,
    &TypedElement::Impl::kClass,
};
constexpr const EnumInfo* kMetaEnums[] = {&kValueFlags};
constexpr PackageInfo kPackages[] = {
    {u"mf", "mf", -1, {}, {}},
    {u"zero", "mf.zero", 0, kRootClasses, {}},
    {u"meta", "mf.zero.meta", 1, kMetaClasses, kMetaEnums},
};

}  // namespace

constinit const ModuleInfo kFrameworkModule = {
    .root = identityOf("/mf0/zero/K2018b"), .uriPath = "/mf0/zero/K2018b", .packages = kPackages};

}  // namespace meta

const EnumInfo& EnumTraits<meta::ValueFlags>::info() { return meta::kValueFlags; }

}  // namespace mf::zero
