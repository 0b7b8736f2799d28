// Measurements in a process of their own.
#pragma once

#include <cstddef>

#include "row.h"

namespace kxsim::bench {

enum class Side { kOurs, kFloor };

/// The side's body once with n items; a small one before it loads the code, so that a fresh
/// process tells about memory and not about the dynamic linker.
Measurement measureHere(const Row& row, Side side, std::size_t n);

/// The same in a new process of this program. Throws std::runtime_error when that fails.
Measurement measureInFreshProcess(const Row& row, Side side, std::size_t n);

/// What that process does: measures and prints the figures for its parent.
void answerParent(const Row& row, Side side, std::size_t n);

}  // namespace kxsim::bench
