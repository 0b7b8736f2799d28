// Whether a model's inner bookkeeping holds together: what every reference, list of
// referrers, containment and index must say of each other.
#pragma once

#include <string>

#include "framework/model.h"

namespace mf::zero::testing {

/// What is wrong, a line each; empty for a sound model. Looks at memory only: loads nothing.
std::string inconsistencies(const Model& model);

}  // namespace mf::zero::testing
