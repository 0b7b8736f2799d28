// What the rows are held against: the same data as plain structs in bump-allocated memory, with
// identities from an inline generator, and nothing that could undo, check or tell.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace kxsim::bench::floor {

struct Identity {
  std::uint64_t high = 0;
  std::uint64_t low = 0;
};

/// xoshiro256++ (Blackman and Vigna 2021), inline.
class Generator {
 public:
  std::uint64_t next() {
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
  /// A version 4 UUID.
  Identity identity() {
    return {(next() & ~0xf000ULL) | 0x4000, (next() & ~(3ULL << 62)) | (2ULL << 62)};
  }

 private:
  std::array<std::uint64_t, 4> state_{0x9e3779b97f4a7c15, 0xbf58476d1ce4e5b9, 0x94d049bb133111eb,
                                      0x2545f4914f6cdd1d};
};

/// Memory by moving a pointer on; given back as a whole.
class Arena {
 public:
  template <class T, class... Arguments>
  T* make(Arguments&&... arguments) {
    if (left_ < sizeof(T)) [[unlikely]]
      grow();
    left_ -= sizeof(T);
    return new (std::exchange(next_, next_ + sizeof(T))) T{std::forward<Arguments>(arguments)...};
  }

 private:
  static constexpr std::size_t kBlock = std::size_t{4} << 20;
  struct Free {
    void operator()(std::byte* block) const { std::free(block); }
  };
  void grow() {
    blocks_.emplace_back(static_cast<std::byte*>(std::malloc(kBlock)));
    next_ = blocks_.back().get();
    left_ = kBlock;
  }

  std::vector<std::unique_ptr<std::byte, Free>> blocks_;
  std::byte* next_ = nullptr;
  std::size_t left_ = 0;
};

struct Run;

/// A value that runs refer to, which knows who does.
struct Sample {
  struct Referrer {
    Run* run;
    std::size_t slot;
  };
  Identity identity;
  std::vector<Referrer> referrers;
};

inline constexpr std::size_t kFactors = 6;

/// A run that refers to six samples: 64 bytes.
struct Run {
  Identity identity;
  std::array<Sample*, kFactors> samples;
};

/// An element that holds a list which is still empty.
struct EmptyRun {
  Identity identity;
  Sample** samples = nullptr;
  std::uint32_t size = 0;
  std::uint32_t capacity = 0;
};

/// What one simulation of a job keeps; texts are shared.
struct Simulation {
  Identity identity;
  struct Job* owner = nullptr;
  std::size_t position = 0;
  double runId = 0;
  const std::u16string* state = nullptr;
  const std::u16string* statusString = nullptr;
  const std::u16string* simStatus = nullptr;
  double progress = 0;
  double simElapsedWallTime = 0;
  double eta = 0;
  const std::u16string* machine = nullptr;
};

struct Job {
  std::vector<Simulation*> simulations;
  void add(Simulation& simulation) {
    simulation.owner = this;
    simulation.position = simulations.size();
    simulations.push_back(&simulation);
  }
};

}  // namespace kxsim::bench::floor
