#include "host/detail/samplers.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace vexal::detail {
namespace {

// The rate of the best exponential proposal for a normal beyond a (Robert 1995).
double bestRate(double a) { return a / 2 + std::hypot(a, 2.0) / 2; }

// Whether [a, b], a >= 0, is so short that a uniform proposal beats the exponential one.
bool isShort(double a, double b) {
  const double rate = bestRate(a);
  // a^2 - a sqrt(a^2 + 4), in a form that survives a large a.
  const double exponent = -2 * (a / rate);
  return b - a < std::exp(exponent / 4 + 0.5) / rate;
}

}  // namespace

double LognormalSampler::operator()(Generator& from) const { return std::exp(logarithm(from)); }

double TriangularSampler::operator()(Generator& from) const {
  const double u = from.uniform();
  const double width = upper - lower;
  const double atMode = (mode - lower) / width;
  const double drawn = u < atMode ? lower + width * std::sqrt(u * atMode)
                                  : upper - width * std::sqrt((1 - u) * (1 - atMode));
  return std::clamp(drawn, lower, upper);
}

TruncatedNormalSampler::TruncatedNormalSampler(double mean, double deviation, double lower,
                                               double upper)
    : mean_(mean),
      deviation_(deviation),
      lower_(lower),
      upper_(upper),
      a_((lower - mean) / deviation),
      b_((upper - mean) / deviation),
      mirrored_(a_ < -b_) {
  if (mirrored_) a_ = -std::exchange(b_, -a_);
}

bool TruncatedNormalSampler::isReachable() const { return std::isfinite(a_) || a_ < 0; }

double TruncatedNormalSampler::operator()(Generator& from) const {
  const double z = standard(from);
  return std::clamp(mean_ + deviation_ * (mirrored_ ? -z : z), lower_, upper_);
}

double TruncatedNormalSampler::standard(Generator& from) const {
  if (a_ > 0) return isShort(a_, b_) ? fromUniform(from) : fromExponential(from);
  constexpr double kRoomy = 2.5;  // about sqrt(2 pi), where both proposals do equally well
  return b_ - a_ > kRoomy ? fromNormal(from) : fromUniform(from);
}

double TruncatedNormalSampler::fromNormal(Generator& from) const {
  for (;;) {
    const double z = from.normal();
    if (z >= a_ && z <= b_) return z;
  }
}

double TruncatedNormalSampler::fromUniform(Generator& from) const {
  const double densest = std::max(a_, 0.0);
  for (;;) {
    const double z = a_ + (b_ - a_) * from.uniform();
    if (from.uniform() <= std::exp((densest - z) * (densest / 2 + z / 2))) return z;
  }
}

double TruncatedNormalSampler::fromExponential(Generator& from) const {
  const double rate = bestRate(a_);
  for (;;) {
    const double step = from.exponential();
    const double z = a_ + step / rate;
    const double off = (step - 1) / rate;  // z - rate, since rate = a + 1 / rate
    if (z <= b_ && from.uniform() <= std::exp(-off * off / 2)) return z;
  }
}

AliasSampler::AliasSampler(std::span<const double> weights)
    : keep_(weights.begin(), weights.end()), alias_(weights.size()) {
  // Scaled to a mean of 1, by way of the largest so that the sum cannot overflow.
  const double largest = *std::ranges::max_element(keep_);
  for (double& weight : keep_) weight /= largest;
  const double mean =
      std::accumulate(keep_.begin(), keep_.end(), 0.0) / static_cast<double>(keep_.size());
  std::vector<std::size_t> small;
  std::vector<std::size_t> large;
  for (std::size_t k = 0; k < keep_.size(); ++k) {
    keep_[k] /= mean;
    alias_[k] = k;
    (keep_[k] < 1 ? small : large).push_back(k);
  }
  while (!small.empty() && !large.empty()) {
    const std::size_t poor = small.back();
    const std::size_t rich = large.back();
    small.pop_back();
    alias_[poor] = rich;
    keep_[rich] -= 1 - keep_[poor];
    if (keep_[rich] < 1) {
      large.pop_back();
      small.push_back(rich);
    }
  }
  // What is left differs from 1 by rounding only.
  for (const std::size_t k : small) keep_[k] = 1;
}

std::size_t AliasSampler::operator()(Generator& from) const {
  const double place = from.uniform() * static_cast<double>(keep_.size());
  const auto k = static_cast<std::size_t>(place);
  return from.uniform() < keep_[k] ? k : alias_[k];
}

}  // namespace vexal::detail
