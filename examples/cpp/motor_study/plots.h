// Draws the figures of a view on a terminal.
#pragma once

#include <span>

#include "design/figures/figures.h"
#include "results.h"

namespace motor_study {

/// Draws every figure of the view, from what its properties object says and from the results.
void drawFigures(const kxsim::design::DesignView& view, std::span<const Result> results);

}  // namespace motor_study
