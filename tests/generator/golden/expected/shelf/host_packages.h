// Generated from shelf/shelf_module.toml.
#pragma once

#include "shelf/export.h"

namespace shelf {

/// Attaches the framework to the host and adds the module's packages, those above them first; what
/// the host knows already stays as it is. Raises what the host raises, after which it may be called
/// again. On the host's thread.
SHELF_API void registerHostPackages();

}  // namespace shelf
