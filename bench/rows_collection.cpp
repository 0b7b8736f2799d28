// Children appended one by one to one owner, and the owner's end.
#include <utility>
#include <vector>

#include "floor.h"
#include "framework/model_impl.h"
#include "row.h"
#include "simmanager/mm/job.h"
#include "simmanager/mm/simulation_run.h"

namespace kxsim::bench {

namespace {

using kinetra::simmanager::mm::Job;
using kinetra::simmanager::mm::SimulationRun;
using mf::zero::Model;

void append(std::size_t n, Meter& meter) {
  const Model model = Model::create();
  const Job job = Job::create(model);
  std::vector<SimulationRun> runs;
  for (std::size_t i = 0; i < n; ++i) runs.push_back(SimulationRun::create(model));
  meter.measure([&] {
    auto transaction = model->beginTransaction();
    auto held = job->getSimulationRunsMutable();
    for (const SimulationRun& run : runs) held.add(run);
    transaction.commit();
  });
}

void createAndAppend(std::size_t n, Meter& meter) {
  const Model model = Model::create();
  const Job job = Job::create(model);
  meter.measure([&] {
    auto held = job->getSimulationRunsMutable();
    for (std::size_t i = 0; i < n; ++i) held.add(SimulationRun::create(model));
  });
  meter.keep(model->bytesReserved());
}

void createInto(std::size_t n, Meter& meter) {
  const Model model = Model::create();
  const Job job = Job::create(model);
  meter.measure([&] {
    for (std::size_t i = 0; i < n; ++i) {
      job->createIntoSimulationRuns(
          SimulationRun::Builder().setRunId(static_cast<double>(i)).setProgress(0.5));
    }
  });
  meter.keep(model->bytesReserved());
}

void destroyOwner(std::size_t n, Meter& meter) {
  const Model model = Model::create();
  const Job job = Job::create(model);
  auto held = job->getSimulationRunsMutable();
  for (std::size_t i = 0; i < n; ++i) held.add(SimulationRun::create(model));
  meter.measure([&] { job->destroy(); });
}

// The floor: a vector of pointers, and the way back from each child.

void appendFloor(std::size_t n, Meter& meter) {
  floor::Generator generator;
  std::vector<floor::Simulation> children;
  children.reserve(n);
  for (std::size_t i = 0; i < n; ++i) children.push_back({generator.identity()});
  floor::Job owner;
  meter.measure([&] {
    for (floor::Simulation& child : children) owner.add(child);
  });
}

void createAndAppend(std::size_t n, floor::Job& owner, floor::Arena& arena) {
  floor::Generator generator;
  for (std::size_t i = 0; i < n; ++i)
    owner.add(*arena.make<floor::Simulation>(generator.identity()));
}

void createAndAppendFloor(std::size_t n, Meter& meter) {
  floor::Arena arena;
  floor::Job owner;
  meter.measure([&] { createAndAppend(n, owner, arena); });
  meter.keep(n * sizeof(floor::Simulation) + owner.simulations.capacity() * sizeof(void*));
}

void destroyOwnerFloor(std::size_t n, Meter& meter) {
  floor::Arena arena;
  floor::Job owner;
  createAndAppend(n, owner, arena);
  meter.measure([&] {
    const auto lastOwner = std::move(owner);
    const auto lastChildren = std::move(arena);
  });
}

constexpr Row kRows[] = {
    {"append", "child", "runs that exist appended to one job, in a transaction that may roll back",
     Process::kFresh, append, appendFloor},
    {"create-append", "child", "a run created and appended to one job", Process::kFresh,
     createAndAppend, createAndAppendFloor},
    {"create-into", "child", "a run created in its job by a builder", Process::kFresh, createInto,
     createAndAppendFloor},
    {"destroy-owner", "child", "a job destroyed with its runs", Process::kFresh, destroyOwner,
     destroyOwnerFloor},
};

}  // namespace

std::span<const Row> collectionRows() { return kRows; }

}  // namespace kxsim::bench
