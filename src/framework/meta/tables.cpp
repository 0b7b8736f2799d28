// The descriptions of the meta classes, written in the form that generated classes have.
#include "framework/meta/detail/tables.h"

#include <cstddef>

#include "framework/class_table.h"
#include "framework/meta/identity.h"
#include "framework/meta/meta.h"
#include "framework/meta/registry.h"

// A storage begins with that of the superclass; both compilers lay it out as one would expect.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

namespace mf::zero {
namespace {

void ensureRegistered() { meta::MetaRegistry::getInstance(); }

}  // namespace

constinit const ClassInfo kModelElementClass = {u"ModelElement",
                                                "mf.zero.ModelElement",
                                                "mf::zero::ModelElement",
                                                meta::identityOf("mf.zero.ModelElement"),
                                                true,
                                                nullptr,
                                                {},
                                                {},
                                                1,
                                                0,
                                                {},
                                                ensureRegistered};

namespace meta {
namespace {

using namespace table;

// The identity of an item of a class or enumeration; its short name is ASCII.
constexpr uuid itemIdentity(std::string_view owner, std::u16string_view name) {
  char whole[64] = {};
  std::size_t length = 0;
  for (const char c : owner) whole[length++] = c;
  whole[length++] = '.';
  for (const char16_t c : name) whole[length++] = static_cast<char>(c);
  return identityOf({whole, length});
}

// One class: writes the rows of its property table and its description.
struct Described {
  const ClassInfo& info;
  std::string_view qualifiedName;
  std::string_view scopedName;
  std::u16string_view name;

  constexpr PropertyInfo property(const PropertyType& type, std::u16string_view propertyName,
                                  std::uint16_t index, std::size_t offset,
                                  const PropertyFacts& facts = {}) const {
    return table::property(type, propertyName, index, offset, info,
                           itemIdentity(qualifiedName, propertyName), facts);
  }
  // Answers what contains the element.
  constexpr PropertyInfo owner(const PropertyType& type, std::u16string_view propertyName) const {
    return property(type, propertyName, 0, 0,
                    {.flags = kOrdered | kUnique | kReadOnly | kDerived | kTransient,
                     .derive = [](const ElementImpl& e) { return Value(e.getOwner()); }});
  }
  constexpr ClassInfo describe(const ClassInfo& super, std::span<const PropertyInfo> properties,
                               std::uint16_t firstIndex, std::uint16_t indexCount,
                               const NativeInfo& native = kAbstract) const {
    return table::describe(name, qualifiedName, scopedName, identityOf(qualifiedName), super,
                           native, properties, {}, firstIndex, indexCount, ensureRegistered);
  }
};

constexpr Described kOfPackage = {Package::Impl::kClass, "mf.zero.meta.Package",
                                  "mf::zero::meta::Package", u"Package"};
constexpr Described kOfType = {Type::Impl::kClass, "mf.zero.meta.Type", "mf::zero::meta::Type",
                               u"Type"};
constexpr Described kOfStructuredType = {StructuredType::Impl::kClass,
                                         "mf.zero.meta.StructuredType",
                                         "mf::zero::meta::StructuredType", u"StructuredType"};
constexpr Described kOfPrimitiveType = {PrimitiveType::Impl::kClass, "mf.zero.meta.PrimitiveType",
                                        "mf::zero::meta::PrimitiveType", u"PrimitiveType"};
constexpr Described kOfEnum = {Enum::Impl::kClass, "mf.zero.meta.Enum", "mf::zero::meta::Enum",
                               u"Enum"};
constexpr Described kOfEnumLiteral = {EnumLiteral::Impl::kClass, "mf.zero.meta.EnumLiteral",
                                      "mf::zero::meta::EnumLiteral", u"EnumLiteral"};
constexpr Described kOfTypedElement = {TypedElement::Impl::kClass, "mf.zero.meta.TypedElement",
                                       "mf::zero::meta::TypedElement", u"TypedElement"};
constexpr Described kOfProperty = {Property::Impl::kClass, "mf.zero.meta.Property",
                                   "mf::zero::meta::Property", u"Property"};
constexpr Described kOfOperation = {Operation::Impl::kClass, "mf.zero.meta.Operation",
                                    "mf::zero::meta::Operation", u"Operation"};
constexpr Described kOfClass = {Class::Impl::kClass, "mf.zero.meta.Class", "mf::zero::meta::Class",
                                u"Class"};

template <class X>
constexpr PropertyType to(const Described& target) {
  return element<X>(target.qualifiedName);
}

constexpr PropertyFacts kContents = {.flags = kMany | kContainment | kOrdered};
constexpr PropertyFacts kOneUnlessSet = {.defaultValue = "1"};

constexpr std::string_view kValueFlagsName = "mf.zero.meta.ValueFlags";
constexpr LiteralInfo kValueFlagsLiterals[] = {
    {u"Single", 1, itemIdentity(kValueFlagsName, u"Single")},
    {u"Many", 2, itemIdentity(kValueFlagsName, u"Many")},
};

}  // namespace
}  // namespace meta

constinit const EnumInfo EnumTraits<meta::ValueFlags>::kInfo = {
    u"ValueFlags", meta::kValueFlagsName, meta::identityOf(meta::kValueFlagsName),
    meta::kValueFlagsLiterals};

namespace meta {

constinit const PropertyInfo Package::Impl::kProperties[] = {
    kOfPackage.property(kString, u"Name", 1, offsetof(Storage, name)),
    kOfPackage.property(kStdString, u"Uri", 2, offsetof(Storage, uri)),
    kOfPackage.property(to<Package>(kOfPackage), u"Packages", 3, offsetof(Storage, packages),
                        kContents),
    kOfPackage.property(to<Type>(kOfType), u"Types", 4, offsetof(Storage, types), kContents),
    kOfPackage.owner(to<Package>(kOfPackage), u"Parent"),
};
constinit const ClassInfo Package::Impl::kClass =
    kOfPackage.describe(kModelElementClass, kProperties, 1, 4, nativeOf<Package>());

constinit const PropertyInfo Type::Impl::kProperties[] = {
    kOfType.property(kString, u"Name", 1, offsetof(Storage, name)),
    kOfType.property(kStdString, u"QualifiedName", 2, offsetof(Storage, qualifiedName)),
    kOfType.owner(to<Package>(kOfPackage), u"Package"),
};
constinit const ClassInfo Type::Impl::kClass =
    kOfType.describe(kModelElementClass, kProperties, 1, 2);

constinit const PropertyInfo StructuredType::Impl::kProperties[] = {
    kOfStructuredType.property(to<Property>(kOfProperty), u"Properties", 3,
                               offsetof(Storage, properties), kContents),
};
constinit const ClassInfo StructuredType::Impl::kClass =
    kOfStructuredType.describe(Type::Impl::kClass, kProperties, 3, 3);

constinit const ClassInfo PrimitiveType::Impl::kClass =
    kOfPrimitiveType.describe(Type::Impl::kClass, {}, 3, 2, nativeOf<PrimitiveType>());

constinit const PropertyInfo Enum::Impl::kProperties[] = {
    kOfEnum.property(to<PrimitiveType>(kOfPrimitiveType), u"UnderlyingType", 3,
                     offsetof(Storage, underlyingType)),
    kOfEnum.property(to<EnumLiteral>(kOfEnumLiteral), u"Literals", 4, offsetof(Storage, literals),
                     kContents),
};
constinit const ClassInfo Enum::Impl::kClass =
    kOfEnum.describe(Type::Impl::kClass, kProperties, 3, 4, nativeOf<Enum>());

constinit const PropertyInfo EnumLiteral::Impl::kProperties[] = {
    kOfEnumLiteral.property(kString, u"Name", 1, offsetof(Storage, name)),
    kOfEnumLiteral.property(kInteger, u"Value", 2, offsetof(Storage, value)),
    kOfEnumLiteral.owner(to<Enum>(kOfEnum), u"Enum"),
};
constinit const ClassInfo EnumLiteral::Impl::kClass =
    kOfEnumLiteral.describe(kModelElementClass, kProperties, 1, 2, nativeOf<EnumLiteral>());

constinit const PropertyInfo TypedElement::Impl::kProperties[] = {
    kOfTypedElement.property(kString, u"Name", 1, offsetof(Storage, name)),
    kOfTypedElement.property(to<Type>(kOfType), u"Type", 2, offsetof(Storage, type)),
    kOfTypedElement.property(kInteger, u"Lower", 3, offsetof(Storage, lower), kOneUnlessSet),
    kOfTypedElement.property(kInteger, u"Upper", 4, offsetof(Storage, upper), kOneUnlessSet),
};
constinit const ClassInfo TypedElement::Impl::kClass =
    kOfTypedElement.describe(kModelElementClass, kProperties, 1, 4);

constinit const PropertyInfo Property::Impl::kProperties[] = {
    kOfProperty.property(kInteger, u"Index", 5, offsetof(Storage, index)),
    kOfProperty.property(enumeration<ValueFlags>(kValueFlagsName), u"ValueFlags", 6,
                         offsetof(Storage, valueFlags), {.defaultValue = "Single"}),
    kOfProperty.property(kString, u"DefaultValue", 7, offsetof(Storage, defaultValue)),
    kOfProperty.property(kBoolean, u"HasDefault", 8, offsetof(Storage, hasDefault)),
    kOfProperty.property(kBoolean, u"IsContainment", 9, offsetof(Storage, isContainment)),
    kOfProperty.property(kBoolean, u"IsOrdered", 10, offsetof(Storage, isOrdered)),
    kOfProperty.property(kBoolean, u"IsUnique", 11, offsetof(Storage, isUnique)),
    kOfProperty.property(kBoolean, u"IsReadOnly", 12, offsetof(Storage, isReadOnly)),
    kOfProperty.property(kBoolean, u"IsDerived", 13, offsetof(Storage, isDerived)),
    kOfProperty.property(kBoolean, u"IsTransient", 14, offsetof(Storage, isTransient)),
    kOfProperty.property(kBoolean, u"IsQualificationUnique", 15,
                         offsetof(Storage, isQualificationUnique)),
    kOfProperty.owner(to<Class>(kOfClass), u"Class"),
};
constinit const ClassInfo Property::Impl::kClass =
    kOfProperty.describe(TypedElement::Impl::kClass, kProperties, 5, 15, nativeOf<Property>());

constinit const PropertyInfo Operation::Impl::kProperties[] = {
    kOfOperation.property(kBoolean, u"IsPublic", 5, offsetof(Storage, isPublic)),
    kOfOperation.property(kBoolean, u"IsStatic", 6, offsetof(Storage, isStatic)),
    kOfOperation.property(kBoolean, u"IsAbstract", 7, offsetof(Storage, isAbstract)),
    kOfOperation.property(kBoolean, u"IsEvent", 8, offsetof(Storage, isEvent)),
    kOfOperation.owner(to<Class>(kOfClass), u"Class"),
};
constinit const ClassInfo Operation::Impl::kClass =
    kOfOperation.describe(TypedElement::Impl::kClass, kProperties, 5, 8, nativeOf<Operation>());

constinit const PropertyInfo Class::Impl::kProperties[] = {
    kOfClass.property(kStdString, u"ScopedName", 4, offsetof(Storage, scopedName)),
    kOfClass.property(kBoolean, u"IsAbstract", 5, offsetof(Storage, isAbstract)),
    kOfClass.property(to<Class>(kOfClass), u"Superclass", 6, offsetof(Storage, superclass)),
    kOfClass.property(to<Operation>(kOfOperation), u"Operations", 7, offsetof(Storage, operations),
                      kContents),
};
constinit const ClassInfo Class::Impl::kClass =
    kOfClass.describe(StructuredType::Impl::kClass, kProperties, 4, 7, nativeOf<Class>());

namespace {

constexpr const ClassInfo* kRootClasses[] = {&kModelElementClass};
constexpr const ClassInfo* kMetaClasses[] = {
    &Class::Impl::kClass,        &Enum::Impl::kClass,           &EnumLiteral::Impl::kClass,
    &Operation::Impl::kClass,    &Package::Impl::kClass,        &PrimitiveType::Impl::kClass,
    &Property::Impl::kClass,     &StructuredType::Impl::kClass, &Type::Impl::kClass,
    &TypedElement::Impl::kClass,
};
constexpr const EnumInfo* kMetaEnums[] = {&EnumTraits<ValueFlags>::kInfo};
constexpr PackageInfo kPackages[] = {
    {u"mf", "mf", -1, {}, {}},
    {u"zero", "mf.zero", 0, kRootClasses, {}},
    {u"meta", "mf.zero.meta", 1, kMetaClasses, kMetaEnums},
};

}  // namespace

constinit const ModuleInfo kFrameworkModule = {
    .root = identityOf("/mf0/zero/K2018b"), .uriPath = "/mf0/zero/K2018b", .packages = kPackages};

}  // namespace meta
}  // namespace mf::zero
