#include "study.h"

#include <malloc.h>

#include <algorithm>
#include <limits>

#include "design/variable.h"
#include "framework/collection.h"
#include "host/array.h"
#include "host/cell.h"

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

design::Exhaustive fullFactorial(const mf::zero::Model& model, std::size_t n) {
  const design::Exhaustive study = design::Exhaustive::create(model);
  for (const std::size_t levels : levelsFor(n)) {
    study->getParameterSpacesMutable().add(valueSet(model, levels));
  }
  return study;
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

std::vector<double> designMatrix(std::size_t n) {
  const auto levels = levelsFor(n);
  std::vector<double> matrix(n * kFactors);
  for (std::size_t i = 0; i < n; ++i) {
    std::size_t rest = i;
    for (std::size_t j = 0; j < kFactors; ++j) {
      matrix[i * kFactors + j] = static_cast<double>(rest % levels[j] + 1);
      rest /= levels[j];
    }
  }
  return matrix;
}

std::vector<Run> fullFactorial(std::size_t n, Factors& factors) {
  const std::vector<double> matrix = designMatrix(n);
  Generator generator;
  std::vector<Run> runs(n);
  for (std::size_t i = 0; i < n; ++i) {
    runs[i].identity = generator.identity();
    for (std::size_t j = 0; j < kFactors; ++j) {
      const auto level = static_cast<std::size_t>(matrix[i * kFactors + j]) - 1;
      runs[i].samples[j] = &factors[j][level];
    }
  }
  return runs;
}

}  // namespace floor

}  // namespace kxsim::bench
