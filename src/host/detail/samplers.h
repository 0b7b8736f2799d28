// The mathematics of the distributions: plain values that draw from a generator.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "host/random.h"

namespace vexal::detail {

struct UniformSampler {
  double lower, upper;
  // Weighted, since upper - lower may overflow.
  double operator()(Generator& from) const {
    const double u = from.uniform();
    return lower * (1 - u) + upper * u;
  }
};

struct NormalSampler {
  double mean, deviation;
  double operator()(Generator& from) const { return mean + deviation * from.normal(); }
};

struct LognormalSampler {
  NormalSampler logarithm;
  double operator()(Generator& from) const;
};

struct ExponentialSampler {
  double mean;
  double operator()(Generator& from) const { return mean * from.exponential(); }
};

/// By inversion.
struct TriangularSampler {
  double lower, mode, upper;
  double operator()(Generator& from) const;
};

/// By rejection, from whichever proposal suits the interval (Robert, "Simulation of
/// truncated normal variables", Statistics and Computing 5, 1995).
class TruncatedNormalSampler {
 public:
  TruncatedNormalSampler(double mean, double deviation, double lower, double upper);
  /// Whether any of the interval is within reach of double arithmetic.
  bool isReachable() const;
  double operator()(Generator& from) const;

 private:
  double standard(Generator& from) const;
  double fromNormal(Generator& from) const;
  double fromUniform(Generator& from) const;
  double fromExponential(Generator& from) const;

  double mean_, deviation_, lower_, upper_;
  double a_, b_;  // the bounds in standard deviations, mirrored so that a_ >= -b_
  bool mirrored_;
};

/// An index with the probabilities of weights that are >= 0 and not all 0, in constant time
/// (Walker 1977; tables as in Vose, "A linear algorithm for generating random numbers with
/// a given distribution", IEEE Trans. Softw. Eng. 17, 1991).
class AliasSampler {
 public:
  explicit AliasSampler(std::span<const double> weights);
  std::size_t operator()(Generator& from) const;

 private:
  std::vector<double> keep_;  // the probability of staying with the index first drawn
  std::vector<std::size_t> alias_;
};

}  // namespace vexal::detail
