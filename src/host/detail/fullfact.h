// The full-factorial design.
#pragma once

#include "host/array.h"

namespace vexal::detail {

/// The design of K factors, given a 1-by-K double array of level counts: K rows, one column
/// per combination, the 1-based level of each factor, the first factor varying fastest.
/// Raises "Vexal:host:" NotARowVector, InvalidLevelCount or TooManyCombinations.
ArrayPtr fullFactorial(const vxArray* levelCounts);

}  // namespace vexal::detail
