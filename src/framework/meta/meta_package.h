// Registration of one module's packages from their tables, in two passes: instantiate
// makes every meta element, weave links them to each other.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
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

  /// Its identity follows from the URI.
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
  void initialize(MetaRegistry& registry);
  void dropFormer(MetaRegistry& registry);
  Package createRoot();

  void instantiateClass(const ClassInfo& info);
  void instantiateProperty(const PropertyInfo& info);
  void instantiateEnum(const EnumInfo& info);
  void instantiateOperation(const OperationInfo& info, const ClassInfo& owner);
  void weaveClass(MetaRegistry& registry, const ClassInfo& info, const Package& package);
  void weaveProperty(MetaRegistry& registry, const PropertyInfo& info, const Class& owner);
  void weaveOperation(MetaRegistry& registry, const OperationInfo& info, const Class& owner);
  void weaveEnum(MetaRegistry& registry, PropertySerializerRegistry& serializers,
                 const EnumInfo& info, const Package& package);
  void registerClass(MetaRegistry& registry, const ClassInfo& info, const Package& package);

  Class classFor(const ClassInfo& info) const;
  Type typeFor(MetaRegistry& registry, const PropertyInfo& info) const;
  Type typeNamed(MetaRegistry& registry, std::string_view name) const;
  std::string uriOf(const PackageInfo& package) const;

  /// What one registration made, by the link that leads to it.
  struct Made {
    Package root;
    std::vector<Package> packages;  ///< as in the module's table
    std::unordered_map<const MetaLink*, ModelElement> elements;
    std::vector<PrimitiveType> primitives;
    void publish() const noexcept;
  };

  ModuleInfo module_;
  Made made_;
};

}  // namespace mf::zero::meta
