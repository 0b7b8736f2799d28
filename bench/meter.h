// What one run of a row measures: the time of a region and what the region left in memory. Time is
// processor time, so that a busy machine disturbs it little; the regions never wait.
// Under callgrind the same region is where instructions are counted.
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <utility>

namespace kxsim::bench {

/// How often this process has asked malloc for memory, by whatever way.
std::uint64_t allocationCount();

struct Measurement {
  double seconds = 0;
  double items = 0;          ///< what the time is divided by
  double allocations = 0;    ///< calls of malloc and its like
  double keptBytes = 0;      ///< reserved by the model, and the vectors of results
  double residentBytes = 0;  ///< growth of the resident set
  double peakBytes = 0;      ///< the same at its highest
};

/// Handed to a row, which says where the measured region lies.
class Meter {
 public:
  /// Forgets the instructions that were counted before.
  explicit Meter(std::size_t items);

  /// Runs `region` and adds what it cost.
  template <class Region>
  void measure(Region&& region) {
    start();
    std::forward<Region>(region)();
    stop();
  }
  /// The same for a region that begins within a call.
  void start() {
    begin();
    startCounting();
  }
  void stop() {
    stopCounting();
    end(1.0);
  }
  /// Runs `region` and takes its cost off again: a part of the row that is not its point. Not its
  /// instructions, which are never negative.
  template <class Region>
  void deduct(Region&& region) {
    begin();
    std::forward<Region>(region)();
    end(-1.0);
  }

  /// What the row keeps, in bytes.
  void keep(std::size_t bytes) { result_.keptBytes += static_cast<double>(bytes); }
  /// When the row's item is not its size's.
  void setItems(std::size_t items) { result_.items = static_cast<double>(items); }

  const Measurement& result() const { return result_; }

 private:
  void begin();
  void end(double sign);
  static void startCounting();
  static void stopCounting();

  Measurement result_;
  double residentBefore_ = 0;
  std::uint64_t allocationsBefore_ = 0;
  double startedAt_ = 0;
};

/// The compiler must take `value` as used and as changed.
template <class T>
void use(T& value) {
  benchmark::DoNotOptimize(value);
}

}  // namespace kxsim::bench
