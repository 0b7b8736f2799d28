#include "report.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

#include "job.h"
#include "study.h"
#include "text.h"

namespace motor_study {

using kinetra::simmanager::mm::Job;
using kinetra::simmanager::mm::SimulationRun;
using mf::zero::Model;
using mf::zero::query::Query;

namespace {

/// How a quantity is shown in a table.
struct Column {
  const char* head;
  const char* unit;
  const char* quantity;
  double scale;
  int decimals;
};

constexpr Column kRunColumns[] = {
    {"Kp", "V s/rad", "Kp", 1.0, 3},       {"Ki", "V/rad", "Ki", 1.0, 2},
    {"J", "kg cm²", "J", 1e4, 1},          {"R", "ohm", "R", 1.0, 2},
    {"load", "N m", "load", 1.0, 2},       {"overshoot", "%", "overshoot", 1.0, 1},
    {"settles", "ms", "settling", 1e3, 0}, {"dip", "rad/s", "load dip", 1.0, 1},
    {"ISE", "rad²/s", "ISE", 1.0, 0},      {"heat", "J", "heat", 1.0, 1},
    {"cost", "", "cost", 1.0, 2},
};

std::size_t countRuns(const Model& model, std::u16string_view state,
                      std::u16string_view simStatus = {}) {
  Query query(model);
  auto run = query.constrain<SimulationRun>();
  run.state.isEqualTo(state);
  if (!simStatus.empty()) run.simStatus.isEqualTo(simStatus);
  return query.count();
}

/// Positions of the cheapest results among the runs that the model records as settled.
std::vector<std::size_t> bestRuns(const Model& model, std::span<const Result> results,
                                  std::size_t top) {
  Query query(model);
  auto run = query.constrain<SimulationRun>();
  run.state.isEqualTo(kFinished);
  run.simStatus.isEqualTo(kSettled);
  std::vector<std::size_t> best;
  for (const SimulationRun& settled : query.select<SimulationRun>()) {
    best.push_back(static_cast<std::size_t>(settled.runId()) - 1);
  }
  std::ranges::stable_sort(best, {}, [&](std::size_t k) { return costOf(results[k]); });
  best.resize(std::min(best.size(), top));
  return best;
}

}  // namespace

void printTask(const Options& options, double runs) {
  std::printf(
      "DC motor under a PI speed controller: which gains suit it whatever it drives?\n\n"
      "  motor    %g V limit, L %g mH, Ke = Kt = %g V s/rad; R from cold to hot; anti-windup\n"
      "  task     step to %g rad/s, later a load torque; %g s simulated\n"
      "  wanted   overshoot <= %g %%, settling (2 %%) <= %g ms, load dip <= %g rad/s, "
      "heat <= %g J\n"
      "  cost     the largest of these four as a share of what is allowed; 1 or less meets all\n"
      "  study    %zu Kp x %zu Ki x %zu plants (J, b) x %d conditions (R, load)\n"
      "           = %.0f runs, seed %llu\n\n",
      Motor::kSupply, 1e3 * Motor::kInductance, Motor::kConstant, kSetSpeed, kEndTime,
      Requirements::kOvershoot, 1e3 * Requirements::kSettlingTime, Requirements::kLoadDip,
      Requirements::kHeat, options.kp.size(), options.ki.size(), kPlants.size(), options.samples,
      runs, static_cast<unsigned long long>(options.seed));
  std::fflush(stdout);
}

void printJob(const Job& job) {
  const Model model = job->getModel();
  std::printf("%zu runs in %.2f s on %g thread%s: %zu finished, %zu of them settled; %zu failed\n",
              job.simulationRuns().size(), job.finishTime() - job.startTime(), job.numWorkers(),
              job.numWorkers() == 1.0 ? "" : "s", countRuns(model, kFinished),
              countRuns(model, kFinished, kSettled), countRuns(model, kFailed));
  Query query(model);
  query.constrain<SimulationRun>().state.isEqualTo(kFailed);
  if (const auto failed = query.first<SimulationRun>()) {
    std::printf("The first to fail was run %g: %s\n", failed.runId(),
                mf::zero::toUtf8(failed.statusString()).c_str());
  }
}

void printAnswer(const GainsSummary& best) {
  std::printf("Best: Kp = %g V s/rad, Ki = %g V/rad", best.kp, best.ki);
  if (best.met == best.runs.size()) {
    std::printf(", which meet all requirements in every run\n");
  } else {
    std::printf(", though only %zu of %zu runs meet all requirements\n", best.met,
                best.runs.size());
  }
}

void printGains(std::span<const GainsSummary> ranking, int top) {
  std::printf("\nBest gains; the worst of their runs in each respect\n");
  Table table;
  table.add({"Kp", "Ki", "meet all", "overshoot", "settles", "dip", "ISE", "peak", "heat", "cost"});
  table.add({"V s/rad", "V/rad", "runs", "%", "ms", "rad/s", "rad²/s", "A", "J", ""});
  for (const GainsSummary& gains :
       ranking.first(std::min(ranking.size(), static_cast<std::size_t>(top)))) {
    const Metrics& worst = gains.worst;
    const double none = std::numeric_limits<double>::quiet_NaN();
    table.add({fixed(gains.kp, 3), fixed(gains.ki, 2),
               std::to_string(gains.met) + " of " + std::to_string(gains.runs.size()),
               fixed(worst.overshoot, 1), fixed(1e3 * worst.settlingTime.value_or(none), 0),
               fixed(worst.loadDip, 1), fixed(worst.ise, 0), fixed(worst.peakCurrent, 1),
               fixed(worst.heat, 1), fixed(gains.worstCost, 2)});
  }
  table.print();
}

void printRuns(const Model& model, std::span<const Result> results, int top) {
  std::printf("\nBest runs\n");
  Table table;
  std::vector<std::string> heads{"run"};
  std::vector<std::string> units{""};
  for (const Column& column : kRunColumns) {
    heads.emplace_back(column.head);
    units.emplace_back(column.unit);
  }
  table.add(std::move(heads));
  table.add(std::move(units));
  for (const std::size_t k : bestRuns(model, results, static_cast<std::size_t>(top))) {
    std::vector<std::string> row{std::to_string(k + 1)};
    for (const Column& column : kRunColumns) {
      const double value = quantity(column.quantity).of(results[k]);
      row.push_back(fixed(column.scale * value, column.decimals));
    }
    table.add(std::move(row));
  }
  table.print();
}

void printFiles(const Options& options, std::size_t runs) {
  std::printf("\nWrote %s, a row for each of the %zu runs\n", options.output.c_str(), runs);
  if (!options.responses.empty()) {
    std::printf("Wrote %s, the responses of the best gains\n", options.responses.c_str());
  }
}

}  // namespace motor_study
