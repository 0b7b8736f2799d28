// Generated from shelf/shelf_module.toml.
#pragma once

#include "framework/meta/meta_package.h"
#include "shelf/export.h"

namespace shelf {

/// Registers the shelf.
class SHELF_API MetaPackageShelf : public mf::zero::meta::AbstractMetaPackage {
 public:
  /// Registers the packages when it is first called, and raises what `initialize` raises; a later
  /// call tries again. Lives as long as the process; any thread may call it.
  static MetaPackageShelf& getInstance();
  /// The same on the first use of a class, with the host's types made known before.
  static void ensureRegistered();

 private:
  using MetaRegistry = mf::zero::meta::MetaRegistry;
  using Serializers = mf::zero::meta::PropertySerializerRegistry;

  MetaPackageShelf();
  void instantiate(MetaRegistry* registry) override;
  void weave(MetaRegistry* registry, Serializers* serializers) override;
  void instantiate_shelf(MetaRegistry* registry) { instantiatePackage(registry, kPackages[0]); }
  void instantiate_shelf_attic(MetaRegistry* registry) {
    instantiatePackage(registry, kPackages[1]);
  }
  void weave_shelf(MetaRegistry* registry, Serializers* serializers) {
    weavePackage(registry, serializers, kPackages[0]);
  }
  void weave_shelf_attic(MetaRegistry* registry, Serializers* serializers) {
    weavePackage(registry, serializers, kPackages[1]);
  }

  static const mf::zero::PackageInfo kPackages[2];
  static const mf::zero::meta::ModuleInfo kModule;
};

}  // namespace shelf
