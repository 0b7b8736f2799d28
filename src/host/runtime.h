// The running host: its thread, its version and its process-wide settings.
//
// Host arrays and host calls belong to one thread, the first that uses the host
// or that calls start(). Any operation from another thread raises
// "Vexal:host:WrongThread"; only releasing an array is allowed there (array.h).
#pragma once

#include <string_view>

#include "host/export.h"

namespace vexal {

/// Makes the calling thread the host's thread. Does nothing when it already is;
/// raises "Vexal:host:WrongThread" when the host belongs to another thread.
VEXAL_API void start();

/// True when host operations may be used on the calling thread. Does not start
/// the host: before the first use it is false on every thread.
VEXAL_API bool isHostThread() noexcept;

/// The host's version, "major.minor.patch".
VEXAL_API std::string_view version() noexcept;

}  // namespace vexal

/// True when the host asks modules to register their packages on every
/// initialisation instead of once per process. False unless set.
VEXAL_API bool omGetVcosUsingUSM() noexcept;

/// Sets the above; for embedders, before any module is loaded.
VEXAL_API void omSetVcosUsingUSM(bool everyTime) noexcept;
