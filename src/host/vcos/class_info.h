// Descriptions of classes: each is added to its package under the class's name and asked
// to fill in the class when somebody first needs it.
#pragma once

#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "host/export.h"
#include "host/vcos/table.h"

namespace vcos {

/// What a description fills in. The rows are copied, their texts are not (table.h).
struct ClassDefinition {
  std::string_view superclass = {};
  std::string_view doc = {};
  ClassKind kind = ClassKind::Handle;
  bool isAbstract = false;
  std::vector<factory::PropertyRow> properties = {};
  std::vector<factory::VcosMethod> methods = {};
  std::vector<COSEnumInfo> members = {};
};

/// Describes one class. Owned by the host once it is added to a package.
class VEXAL_API COSClassInfo {
 public:
  /// The full dotted name, "kxsim.design.Exhaustive".
  explicit COSClassInfo(std::string_view name) : name_(name) {}
  COSClassInfo(const COSClassInfo&) = delete;
  COSClassInfo& operator=(const COSClassInfo&) = delete;
  virtual ~COSClassInfo();

  const std::string& name() const noexcept { return name_; }

  /// Fills in the class; called once, at its first use. Whatever it throws reaches whoever
  /// used the class, and the next use asks again.
  virtual void initialize(ClassDefinition& definition) = 0;

 private:
  std::string name_;
};

namespace factory {

/// A description that is a table.
class VEXAL_API VcosFactoryClassInfo : public COSClassInfo {
 public:
  /// The table must live for ever.
  explicit VcosFactoryClassInfo(const ClassTable& table)
      : COSClassInfo(table.name), table_(&table) {}

  /// Adds the table's rows to the definition.
  void initialize(ClassDefinition& definition) override;

 private:
  const ClassTable* table_;
};

/// The description of the handle class whose natives are C. Arrays of natives hold handles,
/// never values of C, hence the second argument.
template <class C, bool kHoldsValues>
class HandleClassInfo : public VcosFactoryClassInfo {
 public:
  static_assert(!kHoldsValues, "a handle class holds no values");
  using Client = C;
  using VcosFactoryClassInfo::VcosFactoryClassInfo;
};

/// The description of the value class for C, an enumeration with values of Underlying.
template <class C, class Underlying>
class NonHandleClassInfo : public VcosFactoryClassInfo {
 public:
  static_assert(std::is_enum_v<C>, "value classes are enumerations");
  using Client = C;
  using VcosFactoryClassInfo::VcosFactoryClassInfo;
};

}  // namespace factory
}  // namespace vcos
