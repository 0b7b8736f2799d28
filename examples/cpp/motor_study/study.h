// The design study: which quantities of the drive are varied, over which values, and how an
// iteration's samples reach the simulation.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "design/design.h"
#include "framework/zero.h"
#include "motor.h"
#include "options.h"

namespace motor_study {

/// What the motor may drive.
struct Plant {
  double inertia;   ///< of rotor and load, kg m^2
  double friction;  ///< viscous, N m s/rad
};

/// A bare rotor, a fan and a drum: heavier ones have more bearing to drag along.
inline constexpr std::array kPlants{Plant{1e-4, 2e-5}, Plant{2e-4, 3e-5}, Plant{4e-4, 5e-5}};

/// Builds the study in `model`: every combination of the proportional gains, the integral gains,
/// the plants (inertia and friction in pairs) and the random conditions (the winding's resistance,
/// a load torque and when it comes). All gains meet the same conditions, so that they compare.
kxsim::design::Exhaustive buildStudy(const mf::zero::Model& model, const Options& options);

/// What an iteration's samples make of the standard setup. Throws std::invalid_argument for a
/// target that the drive does not have.
Setup setupOf(const kxsim::design::Iteration& iteration);

}  // namespace motor_study
