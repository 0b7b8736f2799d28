// The studies that the rows generate: made of the public handles, as a user would.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <span>
#include <vector>

#include "design/exhaustive.h"
#include "design/iteration.h"
#include "design/parameter_sample.h"
#include "design/random_parameter_space.h"
#include "design/sequential.h"
#include "design/value_set_parameter.h"
#include "floor.h"
#include "framework/model.h"

namespace kxsim::bench {

/// Six level counts, none above ten, whose product is n (a power of ten).
std::array<std::size_t, floor::kFactors> levelsFor(std::size_t n);

/// A varied quantity with the values 1 to `count`.
design::ValueSetParameter valueSet(const mf::zero::Model& model, std::size_t count);

/// A full factorial over value sets of these sizes.
design::Exhaustive fullFactorial(const mf::zero::Model& model, std::span<const std::size_t> levels);

/// Six full factorials of n runs and two value sets each, to be paired run by run.
design::Sequential sequential(const mf::zero::Model& model, std::size_t n);

/// n random runs of four parameters: uniform, normal, lognormal and exponential.
design::RandomParameterSpace randomSpace(const mf::zero::Model& model, std::size_t n);

/// Samples to refer to.
std::vector<design::ParameterSample> makeSamples(const mf::zero::Model& model, std::size_t count);

/// Appends n runs to the model, each of which refers to all the samples.
void makeRuns(const mf::zero::Model& model, std::size_t n,
              const std::vector<design::ParameterSample>& samples);

/// Memory that is freed stays with the process from now on.
void keepFreedMemory();

namespace floor {

/// The samples of six factors, ten each.
using Factors = std::array<std::array<Sample, 10>, kFactors>;

/// The design matrix of a full factorial of n runs, a column of six levels each.
std::unique_ptr<double[]> designMatrix(std::size_t n);

/// n runs over the factors, by their design matrix.
std::vector<Run> fullFactorial(std::size_t n, Factors& factors);

}  // namespace floor

}  // namespace kxsim::bench
