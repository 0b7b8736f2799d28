// What the framework and the host must know of each other before anything crosses
// their boundary.
#pragma once

#include "framework/export.h"

namespace mf::zero::mi {

/// The registry's name of the host's array type.
inline constexpr char kHostArrayType[] = "VxArray";

/// Registers the host's array type with the meta registry, the framework's message texts with the
/// host, and how the host tells the framework's exceptions to scripts. May be called from any
/// thread and any number of times; what is known already stays. Raises std::system_error when the
/// meta registry cannot be locked.
MF0_API void attachToHost();

}  // namespace mf::zero::mi
