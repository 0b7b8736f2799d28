#include "motor.h"

#include <algorithm>
#include <array>
#include <boost/numeric/odeint/stepper/controlled_runge_kutta.hpp>
#include <boost/numeric/odeint/stepper/dense_output_runge_kutta.hpp>
#include <boost/numeric/odeint/stepper/generation.hpp>
#include <boost/numeric/odeint/stepper/runge_kutta_dopri5.hpp>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace motor_study {

namespace {

namespace odeint = boost::numeric::odeint;

/// The two integrals ride along as states: the error control then covers them too.
enum { kCurrent, kSpeed, kIntegrator, kIse, kHeat, kStates };
using State = std::array<double, kStates>;

double commandedVoltage(const Setup& setup, const State& x) {
  return setup.kp * (kSetSpeed - x[kSpeed]) + x[kIntegrator];
}

double appliedVoltage(const Setup& setup, const State& x) {
  return std::clamp(commandedVoltage(setup, x), -Motor::kSupply, Motor::kSupply);
}

/// The closed loop under one load.
///
/// Motor: L di/dt = u - R i - K w and J dw/dt = K i - b w - T (Franklin, Powell, Emami-Naeini,
/// "Feedback Control of Dynamic Systems", chapter 2).
/// Controller: u = sat(v), v = Kp e + z, dz/dt = Ki e + (u - v) / Tt. The last term keeps the
/// integrator from winding up in saturation (back-calculation; Astrom, Hagglund, "Advanced PID
/// Control", chapter 3) with the tracking time Tt = Kp / Ki. It leaves the right-hand side
/// continuous where the saturation begins and ends, so the step control gets over these points.
struct Loop {
  const Setup& setup;
  double loadTorque = 0.0;

  void operator()(const State& x, State& rate, double /*time*/) const {
    const double error = kSetSpeed - x[kSpeed];
    const double commanded = commandedVoltage(setup, x);
    const double applied = appliedVoltage(setup, x);
    rate[kCurrent] = (applied - setup.resistance * x[kCurrent] - Motor::kConstant * x[kSpeed]) /
                     Motor::kInductance;
    rate[kSpeed] =
        (Motor::kConstant * x[kCurrent] - setup.friction * x[kSpeed] - loadTorque) / setup.inertia;
    rate[kIntegrator] = setup.ki * error + (applied - commanded) * setup.ki / setup.kp;
    rate[kIse] = error * error;
    rate[kHeat] = setup.resistance * x[kCurrent] * x[kCurrent];
  }
};

/// Works the metrics out of the sampled response as it comes.
class Meter {
 public:
  explicit Meter(const Setup& setup) : setup_(setup) {}

  void take(double time, const State& x) {
    const double error = kSetSpeed - x[kSpeed];
    metrics_.peakCurrent = std::max(metrics_.peakCurrent, std::abs(x[kCurrent]));
    if (time <= setup_.loadTime) {
      const double excess = 100.0 * -error / kSetSpeed;
      metrics_.overshoot = std::max(metrics_.overshoot, excess);
      noteSettling(time, std::abs(error) <= kSettlingBand * kSetSpeed);
    } else {
      metrics_.loadDip = std::max(metrics_.loadDip, error);
    }
  }

  Metrics finish(const State& x) {
    metrics_.steadyStateError = kSetSpeed - x[kSpeed];
    metrics_.ise = x[kIse];
    metrics_.heat = x[kHeat];
    return metrics_;
  }

 private:
  void noteSettling(double time, bool inside) {
    if (!inside) {
      metrics_.settlingTime.reset();
    } else if (!metrics_.settlingTime) {
      metrics_.settlingTime = time;
    }
  }

  const Setup& setup_;
  Metrics metrics_;
};

/// Integrates the loop from rest. The stepper (Dormand, Prince, "A family of embedded Runge-Kutta
/// formulae", J. Comput. Appl. Math. 6, 1980) chooses its own steps and interpolates between them.
class Integrator {
 public:
  explicit Integrator(const Setup& setup) : loop_{setup} {
    stepper_.initialize(State{}, 0.0, kFirstStep);
  }

  /// The state at `time`, which must not lie before an earlier one.
  State at(double time) {
    while (stepper_.current_time() < time) step();
    State x;
    stepper_.calc_state(time, x);
    return x;
  }

  /// Changes the load at `time` sharp: no step goes across the jump.
  void load(double time, double torque) {
    const State x = at(time);
    loop_.loadTorque = torque;
    stepper_.initialize(x, time, kFirstStep);
  }

 private:
  using Dopri5 = odeint::runge_kutta_dopri5<State>;
  using DenseDopri5 = odeint::result_of::make_dense_output<Dopri5>::type;
  static constexpr double kTolerance = 1e-7;
  static constexpr double kFirstStep = 1e-5;
  static constexpr int kMostSteps = 100'000;

  void step() {
    try {
      stepper_.do_step(loop_);
    } catch (const odeint::odeint_error&) {
      throw std::runtime_error("no step is small enough for the integration");
    }
    if (++steps_ > kMostSteps) throw std::runtime_error("too fast a loop to integrate");
    if (!std::isfinite(stepper_.current_state()[kSpeed])) {
      throw std::runtime_error("the speed grows without bounds");
    }
  }

  Loop loop_;
  DenseDopri5 stepper_ = odeint::make_dense_output(kTolerance, kTolerance, Dopri5());
  int steps_ = 0;
};

}  // namespace

Metrics simulate(const Setup& setup, const std::function<void(double)>& progress,
                 std::vector<Sample>* trace) {
  const int samples = static_cast<int>(std::lround(kEndTime / kSampleTime));
  Meter meter(setup);
  Integrator loop(setup);
  bool loaded = false;
  State x{};
  for (int k = 0; k <= samples; ++k) {
    const double time = kEndTime * k / samples;
    if (!loaded && time > setup.loadTime) {
      loop.load(setup.loadTime, setup.loadTorque);
      loaded = true;
    }
    x = loop.at(time);
    meter.take(time, x);
    if (trace) trace->push_back({time, x[kSpeed], x[kCurrent], appliedVoltage(setup, x)});
    if (progress && k > 0 && k % (samples / 4) == 0) progress(static_cast<double>(k) / samples);
  }
  return meter.finish(x);
}

}  // namespace motor_study
