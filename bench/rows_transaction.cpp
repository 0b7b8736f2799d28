// Destroying what others refer to, and taking changes back.
#include <utility>
#include <vector>

#include "framework/model_impl.h"
#include "row.h"
#include "study.h"

namespace kxsim::bench {

namespace {

using design::ParameterSample;
using mf::zero::Model;

/// A model in which n runs refer to one sample.
struct Shared {
  explicit Shared(std::size_t n) { makeRuns(model, n, {sample}); }
  Model model = Model::create();
  ParameterSample sample = ParameterSample::create(model);
};

void destroySample(std::size_t n, Meter& meter) {
  const Shared shared(n);
  auto transaction = shared.model->beginTransaction();
  meter.measure([&] { shared.sample->destroy(); });
  transaction.commit();
}

void rollBackSample(std::size_t n, Meter& meter) {
  const Shared shared(n);
  auto transaction = shared.model->beginTransaction();
  shared.sample->destroy();
  meter.measure([&] { transaction.rollback(); });
}

void makeRunsRow(std::size_t n, Meter& meter) {
  const Model model = Model::create();
  const auto samples = makeSamples(model, floor::kFactors);
  auto transaction = model->beginTransaction();
  meter.measure([&] { makeRuns(model, n, samples); });
  meter.keep(model->bytesReserved());
  transaction.commit();
}

void rollBackRuns(std::size_t n, Meter& meter) {
  const Model model = Model::create();
  const auto samples = makeSamples(model, floor::kFactors);
  auto transaction = model->beginTransaction();
  makeRuns(model, n, samples);
  meter.measure([&] { transaction.rollback(); });
}

// The floor. A sample's referrers are taken out run by run; a rollback unlinks and forgets.

std::vector<floor::Run> runsOf(std::size_t n, floor::Sample& sample) {
  floor::Generator generator;
  std::vector<floor::Run> runs(n);
  for (floor::Run& run : runs) {
    run.identity = generator.identity();
    run.samples = {&sample};
    sample.referrers.push_back({&run, 0});
  }
  return runs;
}

void destroySampleFloor(std::size_t n, Meter& meter) {
  floor::Sample sample;
  std::vector<floor::Run> runs = runsOf(n, sample);
  meter.measure([&] {
    for (const auto& [run, slot] : sample.referrers) run->samples[slot] = nullptr;
    const auto last = std::move(sample.referrers);
  });
}

std::vector<floor::Run> linkedRuns(std::size_t n, std::array<floor::Sample, 6>& samples) {
  floor::Generator generator;
  std::vector<floor::Run> runs(n);
  for (floor::Run& run : runs) {
    run.identity = generator.identity();
    for (std::size_t j = 0; j < floor::kFactors; ++j) {
      run.samples[j] = &samples[j];
      samples[j].referrers.push_back({&run, j});
    }
  }
  return runs;
}

void makeRunsFloor(std::size_t n, Meter& meter) {
  std::array<floor::Sample, floor::kFactors> samples;
  std::vector<floor::Run> runs;
  meter.measure([&] { runs = linkedRuns(n, samples); });
  meter.keep(n * (sizeof(floor::Run) + floor::kFactors * sizeof(floor::Sample::Referrer)));
}

void rollBackRunsFloor(std::size_t n, Meter& meter) {
  std::array<floor::Sample, floor::kFactors> samples;
  std::vector<floor::Run> runs = linkedRuns(n, samples);
  meter.measure([&] {
    for (auto run = runs.rbegin(); run != runs.rend(); ++run) {
      for (floor::Sample* sample : run->samples) sample->referrers.pop_back();
    }
    const auto last = std::move(runs);
  });
}

constexpr Row kRows[] = {
    {"destroy-sample", "referrer", "a sample that n runs refer to, destroyed in a transaction",
     Process::kFresh, destroySample, destroySampleFloor, 1'000, 100'000},
    {"roll-back-sample", "referrer", "that transaction rolled back", Process::kFresh,
     rollBackSample, nullptr, 1'000, 100'000},
    {"make-runs", "run", "runs that refer to six samples, made in a transaction", Process::kFresh,
     makeRunsRow, makeRunsFloor},
    {"roll-back-runs", "run", "that transaction rolled back", Process::kFresh, rollBackRuns,
     rollBackRunsFloor},
};

}  // namespace

std::span<const Row> transactionRows() { return kRows; }

}  // namespace kxsim::bench
