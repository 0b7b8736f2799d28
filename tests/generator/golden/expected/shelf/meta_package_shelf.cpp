// Generated from shelf/shelf_module.toml.
#include "shelf/meta_package_shelf.h"

#include "framework/mi/host_boundary.h"
#include "shelf/shelf.h"

namespace shelf {

using namespace mf::zero;
using namespace mf::zero::literals;

static constexpr const ClassInfo* kShelfClasses[] = {
    &shelf::Board::Impl::kClass,
    &shelf::Book::Impl::kClass,
    &shelf::OakBoard::Impl::kClass,
};

static constexpr const EnumInfo* kShelfEnums[] = {
    &EnumTraits<shelf::Cover>::kInfo,
};

constinit const PackageInfo MetaPackageShelf::kPackages[] = {
    {u"shelf", "shelf", -1, kShelfClasses, kShelfEnums},
    {u"attic", "shelf.attic", 0, {}, {}},
};
constinit const meta::ModuleInfo MetaPackageShelf::kModule = {
    "7c9e6679-7425-3de1-944b-e07fc1f90ae7"_uuid, "/test/shelf", kPackages};

MetaPackageShelf& MetaPackageShelf::getInstance() {
  static MetaPackageShelf instance;
  return instance;
}

void MetaPackageShelf::ensureRegistered() {
  mi::attachToHost();
  getInstance();
}

MetaPackageShelf::MetaPackageShelf() : AbstractMetaPackage(kModule) { initialize(); }

void MetaPackageShelf::instantiate(MetaRegistry* registry) {
  instantiate_shelf(registry);
  instantiate_shelf_attic(registry);
}

void MetaPackageShelf::weave(MetaRegistry* registry, Serializers* serializers) {
  weave_shelf(registry, serializers);
  weave_shelf_attic(registry, serializers);
}

}  // namespace shelf
