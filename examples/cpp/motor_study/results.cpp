#include "results.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <limits>
#include <map>
#include <utility>

namespace motor_study {

using kxsim::design::FigureDataSourceType;

namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

template <double Setup::*kField>
double parameter(const Result& result) {
  return result.setup.*kField;
}

template <double Metrics::*kField>
double output(const Result& result) {
  return result.metrics ? (*result.metrics).*kField : kNone;
}

double settlingTime(const Result& result) {
  return result.metrics ? result.metrics->settlingTime.value_or(kNone) : kNone;
}

constexpr auto kParameter = FigureDataSourceType::Parameter;
constexpr auto kOutput = FigureDataSourceType::Output;

constexpr Quantity kQuantities[] = {
    {"Kp", "V s/rad", "kp_V_s_per_rad", kParameter, parameter<&Setup::kp>},
    {"Ki", "V/rad", "ki_V_per_rad", kParameter, parameter<&Setup::ki>},
    {"J", "kg m²", "inertia_kg_m2", kParameter, parameter<&Setup::inertia>},
    {"b", "N m s/rad", "friction_N_m_s_per_rad", kParameter, parameter<&Setup::friction>},
    {"R", "ohm", "resistance_ohm", kParameter, parameter<&Setup::resistance>},
    {"load", "N m", "load_torque_N_m", kParameter, parameter<&Setup::loadTorque>},
    {"load at", "s", "load_time_s", kParameter, parameter<&Setup::loadTime>},
    {"overshoot", "%", "overshoot_percent", kOutput, output<&Metrics::overshoot>},
    {"settling", "s", "settling_time_s", kOutput, settlingTime},
    {"load dip", "rad/s", "load_dip_rad_per_s", kOutput, output<&Metrics::loadDip>},
    {"end error", "rad/s", "end_error_rad_per_s", kOutput, output<&Metrics::steadyStateError>},
    {"ISE", "rad²/s", "ise_rad2_per_s", kOutput, output<&Metrics::ise>},
    {"peak", "A", "peak_current_A", kOutput, output<&Metrics::peakCurrent>},
    {"heat", "J", "heat_J", kOutput, output<&Metrics::heat>},
    {"cost", "", "cost", kOutput, costOf},
};

/// Takes NaN, "none yet", for less than anything.
void raise(double& most, double value) { most = std::fmax(most, value); }

void take(GainsSummary& gains, const Result& result) {
  const double cost = costOf(result);
  gains.met += cost <= 1.0;
  raise(gains.worstCost, cost);
  if (!result.metrics) return;
  const Metrics& one = *result.metrics;
  Metrics& worst = gains.worst;
  raise(worst.overshoot, one.overshoot);
  raise(worst.loadDip, one.loadDip);
  raise(worst.peakCurrent, one.peakCurrent);
  raise(worst.ise, one.ise);
  raise(worst.heat, one.heat);
  if (!one.settlingTime) {
    worst.settlingTime.reset();
  } else if (worst.settlingTime) {
    raise(*worst.settlingTime, *one.settlingTime);
  }
}

}  // namespace

double costOf(const Result& result) {
  if (!result.metrics) return std::numeric_limits<double>::infinity();
  const Metrics& metrics = *result.metrics;
  return std::max(
      {metrics.overshoot / Requirements::kOvershoot,
       metrics.settlingTime.value_or(result.setup.loadTime) / Requirements::kSettlingTime,
       metrics.loadDip / Requirements::kLoadDip, metrics.heat / Requirements::kHeat});
}

std::span<const Quantity> quantities() { return kQuantities; }

const Quantity& quantity(std::string_view name) {
  const auto* found = std::ranges::find(kQuantities, name, &Quantity::name);
  assert(found != std::end(kQuantities));
  return *found;
}

std::vector<GainsSummary> rankGains(std::span<const Result> results) {
  std::map<std::pair<double, double>, GainsSummary> byGains;
  for (std::size_t k = 0; k < results.size(); ++k) {
    const Setup& setup = results[k].setup;
    GainsSummary& gains = byGains[{setup.kp, setup.ki}];
    if (gains.runs.empty()) {
      gains.kp = setup.kp;
      gains.ki = setup.ki;
      gains.worst = {kNone, kNone, kNone, kNone, kNone, kNone, kNone};
    }
    gains.runs.push_back(k);
    take(gains, results[k]);
  }
  std::vector<GainsSummary> ranking;
  for (auto& [key, gains] : byGains) ranking.push_back(std::move(gains));
  std::ranges::stable_sort(ranking, {}, &GainsSummary::worstCost);
  return ranking;
}

}  // namespace motor_study
