// Generated from shelf/shelf_module.toml.
#include "binding/shelf.h"
#include "framework/mi/host_classes.h"
#include "shelf/host_packages.h"

namespace shelf {

void registerHostPackages() {
  using mf::zero::mi::EmptyParentPackage;
  mf::zero::mi::registerHostClasses();
  EmptyParentPackage::registerPackage<::mi::shelfPackage>("shelf");
}

}  // namespace shelf
