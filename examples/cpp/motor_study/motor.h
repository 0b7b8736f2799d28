// The simulated system: a permanent-magnet DC motor under a PI speed controller that acts on the
// armature voltage, with a step of the set speed and, later, a step of the load torque.
//
// Plain numbers in, plain numbers out: nothing here knows of models or hosts, so that runs may be
// simulated on any thread. SI units throughout.
#pragma once

#include <functional>
#include <optional>
#include <vector>

namespace motor_study {

/// What is the same in every run: a 24 V motor of some 70 W.
struct Motor {
  static constexpr double kSupply = 24.0;         ///< the drive's voltage limit, both ways, V
  static constexpr double kInductance = 0.35e-3;  ///< of the armature, H
  static constexpr double kConstant = 0.042;      ///< torque and back-EMF, N m/A and V s/rad
};

inline constexpr double kSetSpeed = 200.0;      ///< from 0 s on, rad/s
inline constexpr double kEndTime = 1.5;         ///< of the simulation, s
inline constexpr double kSettlingBand = 0.02;   ///< share of the set speed
inline constexpr double kSampleTime = 0.25e-3;  ///< at which the response is looked at, s

/// What a run may set.
struct Setup {
  double kp = 0.1;             ///< proportional gain, V s/rad
  double ki = 1.0;             ///< integral gain, V/rad
  double inertia = 1e-4;       ///< of rotor and load, kg m^2
  double friction = 2e-5;      ///< viscous, N m s/rad
  double resistance = 0.6;     ///< of the armature, ohm
  double loadTorque = 0.0;     ///< N m
  double loadTime = kEndTime;  ///< when the load comes, s; within (0, kEndTime]
};

/// The response at one time.
struct Sample {
  double time;     ///< s
  double speed;    ///< rad/s
  double current;  ///< A
  double voltage;  ///< V
};

/// What a run is judged by.
struct Metrics {
  double overshoot = 0.0;  ///< of the set speed before the load comes, %
  /// When the speed stays within the settling band until the load comes, s; none if it never does.
  std::optional<double> settlingTime;
  double loadDip = 0.0;           ///< largest speed error after the load came, rad/s
  double steadyStateError = 0.0;  ///< speed error at the end, under load, rad/s
  double ise = 0.0;               ///< integral of the squared speed error, rad^2/s
  double peakCurrent = 0.0;       ///< A
  double heat = 0.0;              ///< lost in the armature, J
};

/// Simulates one run. `progress` hears of each quarter done, as a share of the whole; `trace`
/// receives the sampled response. Throws std::runtime_error, which says why, when the equations
/// cannot be integrated with reasonable effort.
Metrics simulate(const Setup& setup, const std::function<void(double)>& progress = {},
                 std::vector<Sample>* trace = nullptr);

}  // namespace motor_study
