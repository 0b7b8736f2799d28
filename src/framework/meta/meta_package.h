// Registration of one module's packages from their tables, in two passes: instantiate
// makes every meta element, weave links them to each other.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "framework/class_info.h"
#include "framework/export.h"
#include "framework/meta/registry.h"

namespace mf::zero::meta {

/// What all schema URIs begin with. A name only, nothing is ever fetched from it.
inline constexpr std::string_view kSchemaBase = "http://schema.kxsim.org";

/// A module: its root package's identity and URI path ("/mf0/kxsim_design/K2018b"), and its
/// packages, parents first.
struct ModuleInfo {
  uuid root;
  std::string_view uriPath;
  std::span<const PackageInfo> packages;
};

/// The base of a module's package singleton. Holds a counted handle of every meta element that it
/// made, as long as it lives.
class MF0_API AbstractMetaPackage {
 public:
  AbstractMetaPackage(const AbstractMetaPackage&) = delete;
  AbstractMetaPackage& operator=(const AbstractMetaPackage&) = delete;
  virtual ~AbstractMetaPackage();

  /// Registers the module, in place of an earlier registration of it: the elements of that one are
  /// destroyed. Raises NoSuchType for a property type that nobody has registered (the host's
  /// array type, while the host is not attached), std::system_error when the registry's mutex
  /// cannot be locked; the registry is then as it was before. Must not run while other threads
  /// use the earlier registration's elements.
  void initialize();

 protected:
  explicit AbstractMetaPackage(const ModuleInfo& module) : module_(module) {}

  /// The two passes: by default all packages in the order of the table.
  virtual void instantiate(MetaRegistry* registry);
  virtual void weave(MetaRegistry* registry, PropertySerializerRegistry* serializers);

  /// Makes a package and, from its tables, its classes with their properties, its enumerations
  /// and its operations.
  void instantiatePackage(MetaRegistry* registry, const PackageInfo& package);
  /// Links them to parents, superclasses and types, and registers builders, names, invokers and
  /// serializers.
  void weavePackage(MetaRegistry* registry, PropertySerializerRegistry* serializers,
                    const PackageInfo& package);

  // The factory operations. Elements belong to the registry's model.

  /// Its identity follows from the URI without the schema base.
  Package createPackage(std::u16string_view name, std::string_view uri);
  Class createClass(std::u16string_view name, std::string_view qualifiedName, bool isAbstract,
                    const uuid& identity);
  /// Ordered and unique if single; a many-valued containment is ordered.
  Property createProperty(std::u16string_view name, ValueFlags flags, bool isContainment,
                          const uuid& identity);
  void setPropertyIndex(const Property& property, int index);
  Enum createEnum(std::u16string_view name, const uuid& identity);
  EnumLiteral createEnumLiteral(std::u16string_view name, std::int32_t value, const uuid& identity);
  Operation createOperation(std::u16string_view name, const uuid& identity);

 private:
  friend class MetaRegistry;
  /// What one registration made and looked up.
  struct Made {
    Package root;
    NameMap<Package> packages;  ///< by path
    NameMap<Type> types;        ///< by qualified name, primitive types included
    std::unordered_map<uuid, ModelElement> elements;
    std::vector<std::pair<const MetaLink*, ElementImpl*>> links;  ///< to be set at the end
  };

  void initialize(MetaRegistry& registry);
  void registerAll();
  void registerOtherModules() const;
  void dropFormer();
  void createRoot();

  void instantiateClass(const ClassInfo& info);
  void instantiateProperty(const PropertyInfo& info);
  void instantiateEnum(const EnumInfo& info);
  void instantiateOperation(const OperationInfo& info, const ClassInfo& owner);
  void weaveClass(const ClassInfo& info, const Package& package);
  void weaveProperty(const PropertyInfo& info, const Class& owner);
  void weaveOperation(const OperationInfo& info, const Class& owner);
  void weaveEnum(const EnumInfo& info, const Package& package);
  void registerClass(const ClassInfo& info, const Package& package);

  template <class X>
  X create(const uuid& identity);
  template <class X>
  X made(const uuid& identity) const;
  void link(const MetaLink& from, const ModelElement& to);
  Type typeNamed(std::string_view name);
  std::string uriOf(std::string_view packagePath) const;

  ModuleInfo module_;
  MetaRegistry* registry_ = nullptr;
  Made made_;
};

}  // namespace mf::zero::meta
