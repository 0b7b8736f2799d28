// The host's random numbers: one generator behind every distribution.
//
// The same seed gives the same study on every machine: the bits come from xoshiro256++
// and no distribution of the standard library is used. (The last bit of a draw that
// needs exp or log is the math library's.)
#pragma once

#include <array>
#include <bit>
#include <cstdint>

#include "host/export.h"

namespace vexal {

/// xoshiro256++, period 2^256 - 1 (Blackman and Vigna, "Scrambled linear pseudorandom
/// number generators", ACM Trans. Math. Softw. 47, 2021).
class VEXAL_API Generator {
 public:
  /// Any seed is good: the state is filled from it by SplitMix64.
  explicit Generator(std::uint64_t seed) noexcept;

  std::uint64_t next() noexcept {
    const std::uint64_t result = std::rotl(state_[0] + state_[3], 23) + state_[0];
    const std::uint64_t shifted = state_[1] << 17;
    state_[2] ^= state_[0];
    state_[3] ^= state_[1];
    state_[1] ^= state_[2];
    state_[0] ^= state_[3];
    state_[2] ^= shifted;
    state_[3] = std::rotl(state_[3], 45);
    return result;
  }

  /// Uniform on [0, 1), a multiple of 2^-53.
  double uniform() noexcept { return static_cast<double>(next() >> 11) * 0x1p-53; }

  /// Standard normal, by the ziggurat method.
  double normal() noexcept;

  /// Exponential with mean 1, by inversion.
  double exponential() noexcept;

 private:
  std::array<std::uint64_t, 4> state_;
};

/// The generator that all distribution objects draw from. It starts every process with
/// seed 0.
VEXAL_API Generator& generator();

/// Starts the generator anew.
VEXAL_API void seed(std::uint64_t value);

}  // namespace vexal
