// Packages of the host's class-object system, made known together with the packages
// above them.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "framework/export.h"
#include "framework/meta/type.h"
#include "framework/mi/enum_value_marshaler.h"
#include "host/vcos/package.h"

namespace mf::zero::mi {

/// A host package that adds nothing by itself: a parent of others, or the base of one that adds
/// classes.
class MF0_API EmptyParentPackage : public vcos::COSPackageInfo {
 public:
  using COSPackageInfo::COSPackageInfo;

  /// Adds the package to the host, its missing parents first as empty packages. A package that the
  /// host knows already stays as it is. Answers the host's package, which lives as long as the
  /// process. Raises what the host raises; parents added before that stay.
  static vcos::COSPackage* registerPackage(std::unique_ptr<EmptyParentPackage> package);
  /// The same for one of class P by its name, and for a plain one.
  template <class P>
  static vcos::COSPackage* registerPackage(std::string_view name) {
    return registerPackage(std::make_unique<P>(std::string(name)));
  }
  static vcos::COSPackage* registerPackage(std::string_view name);

  /// The marshalers that a package brings; those that it has not taken back by then go with it.
  class MF0_API Registrar {
   public:
    Registrar() = default;
    Registrar(const Registrar&) = delete;
    Registrar& operator=(const Registrar&) = delete;
    ~Registrar();

    /// Makes the marshaler that of the type, in place of an earlier one.
    void registerTypeMarshaler(const EnumInfo& metaType, std::unique_ptr<ValueMarshaler> marshaler);
    void registerTypeMarshaler(const meta::Type& metaType,
                               std::unique_ptr<ValueMarshaler> marshaler);
    /// Takes the type's marshaler back; a type without one is ignored.
    void unregisterTypeMarshaler(const EnumInfo& metaType);
    void unregisterTypeMarshaler(const meta::Type& metaType);

   private:
    void add(std::string_view type, std::unique_ptr<ValueMarshaler> marshaler);
    void remove(std::string_view type);
    std::vector<std::string> types_;
  };

 protected:
  /// Adds the host class that the wrapper describes.
  template <class Wrapper>
  static void addClass(vcos::COSPackage* package) {
    package->addClass(std::make_unique<Wrapper>());
  }
  /// Adds the host class of enumeration E, its conversions and its marshaler.
  template <class Wrapper, ModelEnum E>
  void addEnum(vcos::COSPackage* package) {
    addEnum(package, std::make_unique<Wrapper>(), EnumTraits<E>::info(),
            std::make_unique<PolicyBasedEnumValueMarshaler<E>>());
  }
  void addEnum(vcos::COSPackage* package, std::unique_ptr<vcos::COSClassInfo> description,
               const EnumInfo& info, std::unique_ptr<ValueMarshaler> marshaler);

 private:
  Registrar registrar_;
};

}  // namespace mf::zero::mi
