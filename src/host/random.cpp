#include "host/random.h"

#include <cmath>
#include <numbers>

#include "host/detail/thread.h"

namespace vexal {
namespace {

// SplitMix64 (Steele, Lea and Flood, OOPSLA 2014).
constexpr std::uint64_t splitMix(std::uint64_t& state) noexcept {
  state += 0x9e3779b97f4a7c15;
  std::uint64_t z = state;
  z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9;
  z = (z ^ (z >> 27)) * 0x94d049bb133111eb;
  return z ^ (z >> 31);
}

double bell(double x) { return std::exp(-0.5 * x * x); }

// The ziggurat of the normal density in 256 layers of equal area (Marsaglia and Tsang,
// "The ziggurat method for generating random variables", J. Stat. Softw. 5(8), 2000).
// Layer k >= 1 reaches from 0 to x[k] and in height from f[k] to f[k+1]; layer 0 is the
// base strip up to kTail and the tail beyond it.
struct Ziggurat {
  static constexpr std::size_t kLayers = 256;
  static constexpr double kTail = 3.6541528853610088;
  std::array<double, kLayers + 1> x{};
  std::array<double, kLayers + 1> f{};

  Ziggurat() {
    const double tailArea =
        std::sqrt(std::numbers::pi / 2) * std::erfc(kTail / std::numbers::sqrt2);
    const double area = kTail * bell(kTail) + tailArea;
    x[0] = area / bell(kTail);
    x[1] = kTail;
    for (std::size_t k = 1; k + 1 < kLayers; ++k) {
      x[k + 1] = std::sqrt(-2 * std::log(area / x[k] + bell(x[k])));
    }
    x[kLayers] = 0;
    for (std::size_t k = 0; k <= kLayers; ++k) f[k] = bell(x[k]);
  }
};

// Beyond kTail (Marsaglia, "Generating a variable from the tail of the normal
// distribution", Technometrics 6, 1964).
double normalTail(Generator& generator) noexcept {
  double beyond = 0;
  do {
    beyond = generator.exponential() / Ziggurat::kTail;
  } while (2 * generator.exponential() < beyond * beyond);
  return Ziggurat::kTail + beyond;
}

}  // namespace

Generator::Generator(std::uint64_t seed) noexcept {
  for (std::uint64_t& word : state_) word = splitMix(seed);
}

// Layer, sign and position come from separate bits of one draw (Doornik, "An improved
// ziggurat method to generate normal random samples", 2005).
double Generator::normal() noexcept {
  static const Ziggurat ziggurat;
  for (;;) {
    const std::uint64_t bits = next();
    const std::size_t k = bits & 255;
    const double sign = (bits & 256) != 0 ? -1.0 : 1.0;
    const double x = static_cast<double>(bits >> 11) * 0x1p-53 * ziggurat.x[k];
    if (x < ziggurat.x[k + 1]) return sign * x;
    if (k == 0) return sign * normalTail(*this);
    const double y = ziggurat.f[k] + uniform() * (ziggurat.f[k + 1] - ziggurat.f[k]);
    if (y < bell(x)) return sign * x;
  }
}

double Generator::exponential() noexcept { return -std::log1p(-uniform()); }

Generator& generator() {
  detail::requireHostThread();
  static Generator shared(0);
  return shared;
}

void seed(std::uint64_t value) { generator() = Generator(value); }

}  // namespace vexal
