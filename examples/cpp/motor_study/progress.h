// Shows how far a job has come, by listening to the model that records it.
#pragma once

#include <chrono>
#include <cstddef>

#include "framework/zero.h"

namespace motor_study {

/// Observes a model and counts the runs that end: a bar on standard error when that is a terminal,
/// otherwise a line at each quarter.
class ProgressDisplay : public mf::zero::Observer {
 public:
  /// Observes as long as it lives; the bar is wiped at the end.
  ProgressDisplay(const mf::zero::Model& model, std::size_t runs);
  ~ProgressDisplay() override;
  ProgressDisplay(const ProgressDisplay&) = delete;
  ProgressDisplay& operator=(const ProgressDisplay&) = delete;

  void changed(const mf::zero::ChangeSet& changes) override;

 private:
  using Clock = std::chrono::steady_clock;
  void drawBar();
  void printQuarter();

  std::size_t runs_;
  std::size_t ended_ = 0;
  std::size_t quarter_ = 0;
  bool isTerminal_;
  Clock::time_point began_ = Clock::now();
  Clock::time_point drawn_{};
  mf::zero::Subscription subscription_;
};

}  // namespace motor_study
