// The figures of the study, as a user interface would find them in the model.
#pragma once

#include "design/figures/figures.h"
#include "framework/zero.h"

namespace motor_study {

/// Makes the view in `model`: overshoot against settling time as a scatter plot colored by cost,
/// and the worst cost over the gains as a surface; the data sources are the quantities of a run,
/// by name. A figure's metadata is the identity of the properties object that holds its look.
kxsim::design::DesignView createView(const mf::zero::Model& model);

/// The properties object of a figure; empty when the model has none.
kxsim::design::FigureProperties propertiesOf(const kxsim::design::Figure& figure);

}  // namespace motor_study
