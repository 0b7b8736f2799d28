#include "package/module.h"

#include "host/runtime.h"
#include "package/host_packages.h"

void VXInitialize_kxsim_design() {
  if (omGetVcosUsingUSM()) {
    kxsim::registerHostPackages();
  } else {
    // Not std::call_once, which hangs on some systems after its function has thrown.
    [[maybe_unused]] static const bool once = (kxsim::registerHostPackages(), true);
  }
}

void VXTerminate_kxsim_design() {}
