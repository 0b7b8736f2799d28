// The entry points through which the host loads and unloads this library.
#pragma once

#include "package/export.h"

extern "C" {

/// Called by the host when it has loaded the library: attaches the framework to the host and adds
/// the host packages. Once per process, or on every call while `omGetVcosUsingUSM()` says so;
/// packages that the host knows already stay as they are. Raises what the host raises, after which
/// it may be called again. On the host's thread.
KXSIM_DESIGN_API void VXInitialize_kxsim_design();

/// Called by the host before it unloads the library. Does nothing: what was registered stays until
/// the process ends.
KXSIM_DESIGN_API void VXTerminate_kxsim_design();
}
