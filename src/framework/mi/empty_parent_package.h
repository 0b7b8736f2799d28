// Packages of the host's class-object system, made known together with the packages
// above them.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>
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

  /// Adds the package to the host, its missing parents first as empty packages. Of a package that
  /// the host knows already, the conversions and marshalers of its enumerations are made anew; one
  /// that was an empty parent so far gets the classes. Answers the host's package, which lives as
  /// long as the process. Raises what the host raises; parents added before that stay.
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
    addEnum<E>(package, std::make_unique<Wrapper>());
  }
  /// The same by its description.
  template <ModelEnum E>
  void addEnum(vcos::COSPackage* package, std::unique_ptr<vcos::COSClassInfo> description) {
    package->addClass(std::move(description));
    enums_.push_back({&EnumTraits<E>::info(), []() -> std::unique_ptr<ValueMarshaler> {
                        return std::make_unique<PolicyBasedEnumValueMarshaler<E>>();
                      }});
    install(enums_.back());
  }

 private:
  struct Enum {
    const EnumInfo* info;
    std::unique_ptr<ValueMarshaler> (*makeMarshaler)();
  };
  void install(const Enum& added);
  void renew(vcos::COSPackage* package, std::unique_ptr<EmptyParentPackage> again);

  std::vector<Enum> enums_;
  Registrar registrar_;
  std::unique_ptr<EmptyParentPackage> filled_;  ///< by it, what was an empty parent first
};

}  // namespace mf::zero::mi
