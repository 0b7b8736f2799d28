// Modules: shared libraries that bring packages, loaded while the host runs.
#pragma once

#include <string>
#include <string_view>

#include "host/export.h"

namespace vexal {

/// Loads a shared library and calls its entry point VXInitialize_<name>, name being the
/// file's name without "lib" and without what follows the first dot. A module that is
/// loaded already is initialised again only when omGetVcosUsingUSM() says so. Returns the
/// name. Raises "Vexal:host:" ModuleNotLoaded when the library cannot be loaded, with the
/// system's reason, ModuleEntryMissing when it has no such entry point, and what the entry
/// point throws; the module counts as not loaded then.
VEXAL_API std::string loadModule(std::string_view path);

/// Calls VXTerminate_<name> of a module that is loaded. What it registered stays, so the
/// library remains in memory; loadModule() initialises it again. Raises
/// "Vexal:host:ModuleNotLoaded" for a name that is not loaded and
/// "Vexal:host:ModuleEntryMissing" when it has no such entry point.
VEXAL_API void terminateModule(std::string_view name);

VEXAL_API bool isModuleLoaded(std::string_view name);

}  // namespace vexal
