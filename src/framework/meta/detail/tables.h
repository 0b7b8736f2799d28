// The framework's own module: the meta classes and the root of all classes.
#pragma once

#include "framework/meta/meta_package.h"

namespace mf::zero::meta {

/// The packages "mf", "mf.zero" and "mf.zero.meta".
extern const ModuleInfo kFrameworkModule;

}  // namespace mf::zero::meta
