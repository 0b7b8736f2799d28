// "mf.zero.Transaction": a transaction that a script holds.
#pragma once

#include <string_view>

#include "framework/model.h"
#include "host/array.h"

namespace mf::zero::mi {

inline constexpr std::string_view kTransactionName = "mf.zero.Transaction";

/// Begins a transaction and answers its host object. It is rolled back with the last copy of the
/// object unless it was ended before. Raises what beginning one raises.
vexal::ArrayPtr announceTransaction(const Model& model);

}  // namespace mf::zero::mi
