#include "package/module.h"

#include <mutex>
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

constinit std::once_flag hostPackagesRegistered;

}  // namespace

void VXInitialize_kxsim_design() {
  if (omGetVcosUsingUSM()) {
    registerHostPackages();
  } else {
    std::call_once(hostPackagesRegistered, registerHostPackages);
  }
}

void VXTerminate_kxsim_design() {}
