// Generating the runs of a study, and giving all of it back.
#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>
#include <utility>
#include <vector>

#include "framework/change_set.h"
#include "framework/model_impl.h"
#include "host/random.h"
#include "row.h"
#include "study.h"

namespace kxsim::bench {

namespace {

using design::Iteration;
using mf::zero::Model;

constexpr std::size_t kPairedSamples = 2 * floor::kFactors;

void generate(std::size_t n, Meter& meter) {
  const Model model = Model::create();
  const design::Exhaustive study = fullFactorial(model, levelsFor(n));
  std::vector<Iteration> runs;
  meter.measure([&] { runs = study->createIterations(); });
  meter.keep(model->bytesReserved() + runs.capacity() * sizeof(Iteration));
}

void generateFloor(std::size_t n, Meter& meter) {
  floor::Factors factors;
  std::vector<floor::Run> runs;
  meter.measure([&] { runs = floor::fullFactorial(n, factors); });
  meter.keep(runs.capacity() * sizeof(floor::Run));
}

template <Body body>
void warm(std::size_t n, Meter& meter) {
  keepFreedMemory();
  Meter before(n);
  body(n, before);
  body(n, meter);
}

void destroyAll(std::size_t n, Meter& meter) {
  Model model = Model::create();
  design::Exhaustive study = fullFactorial(model, levelsFor(n));
  std::vector<Iteration> runs = study->createIterations();
  meter.measure([&] {
    const auto lastRuns = std::move(runs);
    const auto lastStudy = std::move(study);
    const auto lastModel = std::move(model);
  });
}

void destroyAllFloor(std::size_t n, Meter& meter) {
  floor::Factors factors;
  std::vector<floor::Run> runs = floor::fullFactorial(n, factors);
  meter.measure([&] { const auto last = std::move(runs); });
}

/// Begins to measure when it is told of the first paired run, and then hears no more.
class PairingStart : public mf::zero::Observer {
 public:
  PairingStart(const Model& model, std::size_t runsBefore, Meter& meter)
      : model_(model),
        runsBefore_(runsBefore),
        meter_(meter),
        hearing_(model->addObserver(*this)) {}
  /// What the model held then.
  std::size_t bytesBefore() const {
    if (bytesBefore_ == 0) throw std::logic_error("nothing was paired");
    return bytesBefore_;
  }

  void changed(const mf::zero::ChangeSet& changes) override {
    if (++heard_ <= runsBefore_ || !hasPairedRun(changes)) return;
    hearing_.end();
    bytesBefore_ = model_->bytesReserved();
    meter_.start();
  }

 private:
  static bool hasPairedRun(const mf::zero::ChangeSet& changes) {
    return std::ranges::any_of(changes, [](const mf::zero::Change& change) {
      const Iteration run = change.element().as<Iteration>();
      return run && run.parameterSamples().size() == kPairedSamples;
    });
  }

  Model model_;
  std::size_t runsBefore_;
  Meter& meter_;
  mf::zero::Subscription hearing_;
  std::size_t heard_ = 0;
  std::size_t bytesBefore_ = 0;
};

// What pairing alone costs, without making the runs that are paired.
void pair(std::size_t n, Meter& meter) {
  const Model model = Model::create();
  const design::Sequential study = sequential(model, n);
  PairingStart pairing(model, n * floor::kFactors, meter);
  const std::vector<Iteration> runs = study->createIterations();
  meter.stop();
  meter.setItems(n * kPairedSamples);
  meter.keep(model->bytesReserved() - pairing.bytesBefore() + runs.capacity() * sizeof(Iteration));
}

void pairFloor(std::size_t n, Meter& meter) {
  using Samples = std::array<floor::Sample*, 2>;
  struct Paired {
    floor::Identity identity;
    std::array<floor::Sample*, kPairedSamples> samples;
  };
  floor::Sample sample;
  const std::vector<Samples> child(n, {&sample, &sample});
  const std::array<std::vector<Samples>, floor::kFactors> children{child, child, child,
                                                                   child, child, child};
  floor::Generator generator;
  std::vector<Paired> runs;
  meter.measure([&] {
    runs.reserve(n);
    for (std::size_t i = 0; i < n; ++i) {
      Paired& run = runs.emplace_back(Paired{generator.identity(), {}});
      for (std::size_t j = 0; j < floor::kFactors; ++j) {
        run.samples[2 * j] = children[j][i][0];
        run.samples[2 * j + 1] = children[j][i][1];
      }
    }
  });
  meter.setItems(n * kPairedSamples);
  meter.keep(n * sizeof(Paired));
}

void drawRuns(std::size_t n, Meter& meter) {
  const Model model = Model::create();
  const design::RandomParameterSpace space = randomSpace(model, n);
  std::vector<Iteration> runs;
  meter.measure([&] { runs = space->createIterations(); });
  meter.setItems(n * 4);
  meter.keep(model->bytesReserved() + runs.capacity() * sizeof(Iteration));
}

void drawRunsFloor(std::size_t n, Meter& meter) {
  struct Drawn {
    floor::Identity identity;
    double value;
  };
  vexal::Generator random(1);
  floor::Generator generator;
  std::vector<std::array<Drawn, 4>> runs;
  meter.measure([&] {
    runs.reserve(n);
    for (std::size_t i = 0; i < n; ++i) {
      runs.push_back({Drawn{generator.identity(), random.uniform()},
                      Drawn{generator.identity(), random.normal()},
                      Drawn{generator.identity(), std::exp(random.normal())},
                      Drawn{generator.identity(), random.exponential()}});
    }
  });
  meter.setItems(n * 4);
  meter.keep(n * sizeof(runs[0]));
}

constexpr Row kRows[] = {
    {"factorial", "run", "full factorial over six shared sets of samples, design matrix included",
     Process::kFresh, generate, generateFloor},
    {"factorial-warm", "run", "the same with memory that the process has used before",
     Process::kFresh, warm<generate>, warm<generateFloor>, 1'000, 1'000'000, 0},
    {"pairing", "reference", "sequential pairing of six spaces' runs, which are there",
     Process::kFresh, pair, pairFloor},
    {"random", "sample", "random runs of four parameters, each drawn through the host's \"random\"",
     Process::kFresh, drawRuns, drawRunsFloor},
    {"destroy-factorial", "run", "the runs, their study and its model given back", Process::kFresh,
     destroyAll, destroyAllFloor},
};

}  // namespace

std::span<const Row> studyRows() { return kRows; }

}  // namespace kxsim::bench
