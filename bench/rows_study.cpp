// Generating the runs of a study, and giving all of it back.
#include <utility>
#include <vector>

#include "framework/model_impl.h"
#include "row.h"
#include "study.h"

namespace kxsim::bench {

namespace {

using design::Iteration;
using mf::zero::Model;

void generate(std::size_t n, Meter& meter) {
  const Model model = Model::create();
  const design::Exhaustive study = fullFactorial(model, n);
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
  design::Exhaustive study = fullFactorial(model, n);
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

constexpr Row kRows[] = {
    {"factorial", "run", "full factorial over six shared sets of samples, design matrix included",
     Process::kFresh, generate, generateFloor},
    {"factorial-warm", "run", "the same with memory that the process has used before",
     Process::kFresh, warm<generate>, warm<generateFloor>},
    {"destroy-factorial", "run", "the runs, their study and its model given back", Process::kFresh,
     destroyAll, destroyAllFloor},
};

}  // namespace

std::span<const Row> studyRows() { return kRows; }

}  // namespace kxsim::bench
