#include "study.h"

#include <malloc.h>

#include <algorithm>
#include <limits>

#include "design/random_parameter.h"
#include "design/variable.h"
#include "framework/collection.h"
#include "host/array.h"
#include "host/cell.h"
#include "host/distribution.h"

namespace kxsim::bench {

std::array<std::size_t, floor::kFactors> levelsFor(std::size_t n) {
  std::array<std::size_t, floor::kFactors> levels;
  for (std::size_t& level : levels) {
    level = std::min<std::size_t>(n, 10);
    n /= level;
  }
  return levels;
}

design::ValueSetParameter valueSet(const mf::zero::Model& model, std::size_t count) {
  const vexal::ArrayPtr cell = vexal::createCell(1, count);
  for (std::size_t i = 0; i < count; ++i) {
    vexal::setCell(cell.get(), i, vexal::createDouble(static_cast<double>(i + 1)).get());
  }
  const design::ValueSetParameter parameter = design::ValueSetParameter::create(model);
  parameter->setValues(cell.get());
  parameter->setParameterType(design::Variable::create(model));
  return parameter;
}

design::Exhaustive fullFactorial(const mf::zero::Model& model,
                                 std::span<const std::size_t> levels) {
  const design::Exhaustive study = design::Exhaustive::create(model);
  for (const std::size_t count : levels) {
    study->getParameterSpacesMutable().add(valueSet(model, count));
  }
  return study;
}

design::Sequential sequential(const mf::zero::Model& model, std::size_t n) {
  std::size_t first = 1;
  while (first * first < n) first *= 10;
  const design::Sequential study = design::Sequential::create(model);
  for (std::size_t j = 0; j < floor::kFactors; ++j) {
    study->getParameterSpacesMutable().add(fullFactorial(model, std::array{first, n / first}));
  }
  return study;
}

design::RandomParameterSpace randomSpace(const mf::zero::Model& model, std::size_t n) {
  const design::RandomParameterSpace space = design::RandomParameterSpace::create(model);
  vexal::ArrayPtr distributions[] = {vexal::makeUniform(0, 1), vexal::makeNormal(0, 1),
                                     vexal::makeLognormal(0, 1), vexal::makeExponential(1)};
  for (const vexal::ArrayPtr& distribution : distributions) {
    const design::RandomParameter parameter = design::RandomParameter::create(model);
    parameter->setDistribution(distribution.get());
    parameter->setParameterType(design::Variable::create(model));
    space->getParametersMutable().add(parameter);
  }
  space->setNumSamples(static_cast<double>(n));
  return space;
}

std::vector<design::ParameterSample> makeSamples(const mf::zero::Model& model, std::size_t count) {
  std::vector<design::ParameterSample> samples;
  for (std::size_t i = 0; i < count; ++i) {
    samples.push_back(design::ParameterSample::create(model));
  }
  return samples;
}

void makeRuns(const mf::zero::Model& model, std::size_t n,
              const std::vector<design::ParameterSample>& samples) {
  std::vector<mf::zero::ElementImpl*> held;
  for (const design::ParameterSample& sample : samples) held.push_back(sample.impl());
  for (std::size_t i = 0; i < n; ++i) {
    design::Iteration::create(model)->getParameterSamplesMutable().append(held);
  }
}

void keepFreedMemory() {
  mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
  mallopt(M_MMAP_MAX, 0);
}

namespace floor {

std::unique_ptr<double[]> designMatrix(std::size_t n) {
  const auto levels = levelsFor(n);
  auto matrix = std::make_unique_for_overwrite<double[]>(n * kFactors);
  std::array<std::size_t, kFactors> next{};
  double* column = matrix.get();
  for (std::size_t i = 0; i < n; ++i, column += kFactors) {
    for (std::size_t j = 0; j < kFactors; ++j) column[j] = static_cast<double>(next[j] + 1);
    for (std::size_t j = 0; j < kFactors && ++next[j] == levels[j]; ++j) next[j] = 0;
  }
  return matrix;
}

std::vector<Run> fullFactorial(std::size_t n, Factors& factors) {
  const auto matrix = designMatrix(n);
  Generator generator;
  std::vector<Run> runs;
  runs.reserve(n);
  for (std::size_t i = 0; i < n; ++i) {
    Run& run = runs.emplace_back(Run{generator.identity(), {}});
    for (std::size_t j = 0; j < kFactors; ++j) {
      run.samples[j] = &factors[j][static_cast<std::size_t>(matrix[i * kFactors + j]) - 1];
    }
  }
  return runs;
}

}  // namespace floor

}  // namespace kxsim::bench
