#include "package/module.h"

#include <string_view>

#include "framework/mi/empty_parent_package.h"
#include "framework/mi/host_boundary.h"
#include "host/runtime.h"

namespace {

constexpr std::string_view kHostPackages[] = {
    "kinetra.simmanager.mm",
    "kxsim.design",
    "kxsim.design.internal",
    "kxsim.design.internal.command",
};

void registerHostPackages() {
  mf::zero::mi::attachToHost();
  for (const std::string_view name : kHostPackages) {
    mf::zero::mi::EmptyParentPackage::registerPackage(name);
  }
}

}  // namespace

void VXInitialize_kxsim_design() {
  if (omGetVcosUsingUSM()) {
    registerHostPackages();
  } else {
    // Not std::call_once, which hangs on some systems after its function has thrown.
    [[maybe_unused]] static const bool once = (registerHostPackages(), true);
  }
}

void VXTerminate_kxsim_design() {}
