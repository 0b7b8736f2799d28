// Enumerations as host value classes: an int32 underneath, members by name, and the conversions
// through which scripts may write a literal's name where a member is wanted.
#pragma once

#include <string_view>

#include "framework/class_info.h"
#include "framework/export.h"
#include "framework/value.h"
#include "host/vcos/class.h"
#include "host/vcos/class_info.h"
#include "host/vcos/type_repository.h"

namespace mf::zero::mi {

/// A member of the host class of E.
template <ModelEnum E>
struct MF0EnumValueInfo : vcos::COSEnumInfo {
  constexpr MF0EnumValueInfo(std::string_view literal, E literalValue, std::string_view literalDoc)
      : COSEnumInfo{literal, static_cast<std::int32_t>(literalValue), literalDoc} {}
};

namespace detail {

/// Makes a member from its integer or its name. Raises NoSuchLiteral.
MF0_API vexal::ArrayPtr constructMember(const vcos::factory::MethodCall& call);

/// The methods of every member: its integer, its literal and the name by which scripts know it.
/// The texts are empty for an integer that is no literal's.
MF0_API void addMemberMethods(vcos::ClassDefinition& definition);

}  // namespace detail

/// The constructor of the host class of E.
template <ModelEnum E>
struct Ctor : vcos::factory::VcosMethod {
  constexpr Ctor(std::string_view shortName, std::string_view hostName)
      : VcosMethod{.name = shortName,
                   .attributes = vcos::factory::MethodAttributes::Constructor,
                   .inputNames = "value",
                   .outputType = hostName,
                   .inputTypes = "any",
                   .body = &detail::constructMember,
                   .doc = "The member with that integer or name."} {}
};

/// What the description of an enumeration adds to its table.
template <ModelEnum E>
class MF0EnumInfo {
 protected:
  static void complete(vcos::ClassDefinition& definition) { detail::addMemberMethods(definition); }
};

/// From whatever is read as text to the member with that name. A member stays what it is, of
/// several the first counts, and what is empty becomes the empty array of the class. Raises
/// NoSuchLiteral for everything else.
class MF0_API FromAnyAsStringTypeConverter final : public vcos::COSTypeConversion {
 public:
  /// Both live for ever.
  FromAnyAsStringTypeConverter(const vcos::COSClass* hostClass, const EnumInfo* metaEnum)
      : hostClass_(hostClass), enum_(metaEnum) {}
  vexal::ArrayPtr convert(const vxArray* value) override;

 private:
  const vcos::COSClass* hostClass_;
  const EnumInfo* enum_;
};

/// Installs the conversions from "any" to the enumeration's class, alone and as " property" and
/// " scalar", in place of earlier ones. Its host class must be known by then; raises NoSuchType
/// when it is not.
MF0_API void installConversions(const EnumInfo& info);

}  // namespace mf::zero::mi
