// The classes that the host knows. Every object's class is one of them, those defined by
// name alone (object.h) included; only described ones have properties and signatures.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "host/array.h"
#include "host/vcos/class_info.h"
#include "host/vcos/name.h"

namespace vcos {

/// A class. Lives as long as the process.
class VEXAL_API COSClass {
 public:
  /// The class of that name, which its package loads when it is not known yet, filled in;
  /// null when there is none. Raises what its description throws, and
  /// "Vexal:class:UnknownClass" or "Vexal:class:SuperclassCycle" for a bad superclass.
  static COSClass* getClass(InternedName name);
  static COSClass* getClass(std::string_view name);

  COSClass(const COSClass&) = delete;
  COSClass& operator=(const COSClass&) = delete;

  /// The full name, and its last component. Valid for ever.
  std::string_view name() const noexcept;
  std::string_view shortName() const noexcept;
  /// A sentence; empty without documentation.
  std::string_view doc() const noexcept;
  /// Null for a class at the root.
  const COSClass* superclass() const noexcept;
  bool isOrDerivesFrom(const COSClass& ancestor) const noexcept;
  /// Nothing for a class that has no description.
  std::optional<ClassKind> kind() const noexcept;
  bool isAbstract() const noexcept;

  /// The members of an enumeration, in order of declaration; none for other classes.
  std::span<const COSEnumInfo> members() const noexcept;
  /// The member of that name or value; null when there is none.
  const COSEnumInfo* member(std::string_view name) const noexcept;
  const COSEnumInfo* member(std::int32_t value) const noexcept;

 protected:
  COSClass() = default;
  ~COSClass() = default;
};

/// A 1-by-1 object of a value class, of any integer, whether a member has it or not. Raises
/// "Vexal:class:NotAValueClass".
VEXAL_API vexal::ArrayPtr createValueObject(const COSClass& valueClass, std::int32_t value);

}  // namespace vcos
