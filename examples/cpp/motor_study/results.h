// What came out: the results of the runs, their quantities by name, and the ranking of the gains.
#pragma once

#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "design/figures/figure_data_source_type.h"
#include "motor.h"

namespace motor_study {

/// What a good drive keeps to.
struct Requirements {
  static constexpr double kOvershoot = 10.0;    ///< %
  static constexpr double kSettlingTime = 0.3;  ///< s
  static constexpr double kLoadDip = 15.0;      ///< rad/s
  static constexpr double kHeat = 45.0;         ///< J
};

/// One run; its place in the list is its identifier less one.
struct Result {
  Setup setup;
  std::optional<Metrics> metrics;  ///< none when the simulation failed
};

/// The largest of the required quantities, each as a share of what is allowed: 1 or less meets all
/// requirements (goal attainment: Gembicki, Haimes, IEEE Trans. Automat. Control 20, 1975). A run
/// that never settles is taken to settle when the load comes; a failed one costs infinity.
double costOf(const Result& result);

/// A quantity of a run, for tables, files and figures alike.
struct Quantity {
  std::string_view name;    ///< "Kp"
  std::string_view unit;    ///< "V s/rad"
  std::string_view column;  ///< "kp_V_s_per_rad", in files
  kxsim::design::FigureDataSourceType source;
  double (*of)(const Result&);  ///< in SI units or per cent; NaN when the run has none
};

/// All quantities, in the order of a row.
std::span<const Quantity> quantities();

/// The quantity of that name; it must exist.
const Quantity& quantity(std::string_view name);

/// What one choice of gains achieves over all plants and conditions.
struct GainsSummary {
  double kp;
  double ki;
  std::vector<std::size_t> runs;  ///< positions of its results
  std::size_t met = 0;            ///< runs that meet all requirements
  Metrics worst;                  ///< the largest of each; settlingTime none if a run never settles
  double worstCost = 0.0;
};

/// All choices of gains, the least worst cost first.
std::vector<GainsSummary> rankGains(std::span<const Result> results);

}  // namespace motor_study
