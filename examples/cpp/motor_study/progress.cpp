#include "progress.h"

#include <unistd.h>

#include <cstdio>
#include <string>

#include "framework/model_impl.h"
#include "job.h"

namespace motor_study {

using kinetra::simmanager::mm::SimulationRun;
using mf::zero::Change;
using mf::zero::ChangeKind;

namespace {

bool isEnd(const Change& change) {
  if (change.kind() != ChangeKind::kModified || change.property()->name != u"State") return false;
  const auto run = change.element().as<SimulationRun>();
  return run && (run.state() == kFinished || run.state() == kFailed);
}

}  // namespace

ProgressDisplay::ProgressDisplay(const mf::zero::Model& model, std::size_t runs)
    : runs_(runs),
      isTerminal_(isatty(STDERR_FILENO) != 0),
      subscription_(model->addObserver(*this)) {}

ProgressDisplay::~ProgressDisplay() {
  if (isTerminal_) std::fputs("\r\033[K", stderr);
}

void ProgressDisplay::changed(const mf::zero::ChangeSet& changes) {
  for (const Change& change : changes) ended_ += isEnd(change);
  isTerminal_ ? drawBar() : printQuarter();
}

void ProgressDisplay::drawBar() {
  using namespace std::chrono_literals;
  constexpr std::size_t kWidth = 40;
  const Clock::time_point time = Clock::now();
  if (time - drawn_ < 50ms || runs_ == 0) return;
  drawn_ = time;
  const std::size_t filled = kWidth * ended_ / runs_;
  const std::string bar = std::string(filled, '#') + std::string(kWidth - filled, '.');
  std::fprintf(stderr, "\r\033[K[%s] %zu of %zu runs", bar.c_str(), ended_, runs_);
  if (ended_ > 0) {
    const double elapsed = std::chrono::duration<double>(time - began_).count();
    const double share = static_cast<double>(ended_) / static_cast<double>(runs_);
    std::fprintf(stderr, ", %.1f s to go", elapsed * (1.0 / share - 1.0));
  }
  std::fflush(stderr);
}

void ProgressDisplay::printQuarter() {
  const std::size_t quarter = runs_ == 0 ? 0 : 4 * ended_ / runs_;
  if (quarter == quarter_) return;
  quarter_ = quarter;
  std::fprintf(stderr, "%3zu %%  %zu of %zu runs\n", 25 * quarter, ended_, runs_);
}

}  // namespace motor_study
