// Finding runs by what they hold, and what such a record costs.
#include <string>
#include <vector>

#include "floor.h"
#include "framework/model_impl.h"
#include "framework/query/query.h"
#include "row.h"
#include "simmanager/mm/simulation_run.h"

namespace kxsim::bench {

namespace {

using kinetra::simmanager::mm::SimulationRun;
using mf::zero::Model;

const std::u16string kStates[] = {u"queued", u"running", u"finished", u"failed"};
const std::u16string kMachines[] = {u"node-01", u"node-02", u"node-03"};
const std::u16string kNothing;

double progressOf(std::size_t i) { return static_cast<double>(i % 101) / 100.0; }

void recordRuns(const Model& model, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) {
    const SimulationRun run = SimulationRun::create(model);
    run->setRunId(static_cast<double>(i + 1));
    run->setState(kStates[i % 4]);
    run->setStatusString(kStates[i % 4]);
    run->setProgress(progressOf(i));
    run->setSimElapsedWallTime(12.5);
    run->setMachine(kMachines[i % 3]);
  }
}

void record(std::size_t n, Meter& meter) {
  const Model model = Model::create();
  meter.measure([&] { recordRuns(model, n); });
  meter.keep(model->bytesReserved());
}

void select(std::size_t n, Meter& meter) {
  const Model model = Model::create();
  recordRuns(model, n);
  std::vector<SimulationRun> found;
  meter.measure([&] {
    mf::zero::query::Query query(model);
    auto run = query.constrain<SimulationRun>();
    run.state.isEqualTo(u"running");
    run.progress.isAtLeast(0.5);
    found = query.select<SimulationRun>();
  });
}

// The floor: structs in a row, texts shared and compared by content.

void recordRuns(std::vector<floor::Simulation>& runs, std::size_t n) {
  floor::Generator generator;
  for (std::size_t i = 0; i < n; ++i) {
    const std::u16string* state = &kStates[i % 4];
    runs.push_back({.identity = generator.identity(),
                    .runId = static_cast<double>(i + 1),
                    .state = state,
                    .statusString = state,
                    .simStatus = &kNothing,
                    .progress = progressOf(i),
                    .simElapsedWallTime = 12.5,
                    .machine = &kMachines[i % 3]});
  }
}

void recordFloor(std::size_t n, Meter& meter) {
  std::vector<floor::Simulation> runs;
  meter.measure([&] {
    runs.reserve(n);
    recordRuns(runs, n);
  });
  meter.keep(n * sizeof(floor::Simulation));
}

void selectFloor(std::size_t n, Meter& meter) {
  std::vector<floor::Simulation> runs;
  recordRuns(runs, n);
  std::vector<const floor::Simulation*> found;
  meter.measure([&] {
    for (const floor::Simulation& run : runs) {
      if (run.progress >= 0.5 && *run.state == u"running") found.push_back(&run);
    }
  });
}

constexpr Row kRows[] = {
    {"run-record", "record", "a simulation run with its numbers and short texts", Process::kFresh,
     record, recordFloor},
    {"select", "element", "runs selected by a number and a text", Process::kFresh, select,
     selectFloor},
};

}  // namespace

std::span<const Row> queryRows() { return kRows; }

}  // namespace kxsim::bench
