#include "job.h"

#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <exception>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

#include "framework/model_impl.h"

namespace motor_study {

using kinetra::simmanager::mm::Job;
using kinetra::simmanager::mm::SimulationRun;
using mf::zero::Model;

namespace {

/// Seconds since the epoch.
double now() {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

std::u16string machineName() {
  std::array<char, 256> name{};
  return gethostname(name.data(), name.size() - 1) == 0 ? mf::zero::toUtf16(name.data()) : u"";
}

/// What a worker has to tell of a run.
struct News {
  std::size_t run = 0;
  double elapsed = 0.0;   ///< s
  double progress = 0.0;  ///< 0 as it starts, 1 when it has ended
  std::optional<Metrics> metrics;
  std::string failure;
};

/// Hands news from the workers to the thread that owns the model.
class Mailbox {
 public:
  void post(News news) {
    {
      const std::lock_guard lock(mutex_);
      waiting_.push_back(std::move(news));
    }
    arrived_.notify_one();
  }

  /// Waits for news and takes all there are.
  std::vector<News> collect() {
    std::unique_lock lock(mutex_);
    arrived_.wait(lock, [this] { return !waiting_.empty(); });
    return std::exchange(waiting_, {});
  }

 private:
  std::mutex mutex_;
  std::condition_variable arrived_;
  std::vector<News> waiting_;
};

/// Threads that take one setup after the other until none is left. Ending them early loses the
/// runs that were not begun.
class Workers {
 public:
  Workers(std::size_t count, std::span<const Setup> setups, Mailbox& mailbox)
      : setups_(setups), mailbox_(mailbox) {
    for (std::size_t k = 0; k < count; ++k) {
      threads_.emplace_back([this](const std::stop_token& stop) { work(stop); });
    }
  }

 private:
  void work(const std::stop_token& stop) {
    for (std::size_t run = next_++; run < setups_.size() && !stop.stop_requested(); run = next_++) {
      mailbox_.post(simulateOne(run));
    }
  }

  News simulateOne(std::size_t run) {
    const double began = now();
    const auto tell = [&](double progress) {
      if (progress < 1.0) mailbox_.post({run, now() - began, progress, {}, {}});
    };
    tell(0.0);
    News end;
    end.run = run;
    end.progress = 1.0;
    try {
      end.metrics = simulate(setups_[run], tell);
    } catch (const std::exception& error) {
      end.failure = error.what();
    }
    end.elapsed = now() - began;
    return end;
  }

  std::span<const Setup> setups_;
  Mailbox& mailbox_;
  std::atomic<std::size_t> next_{0};
  std::vector<std::jthread> threads_;
};

std::u16string statusOf(const News& news) {
  if (!news.metrics) return mf::zero::toUtf16(news.failure);
  if (!news.metrics->settlingTime) return u"Did not settle before the load";
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "Settled in %.3f s", *news.metrics->settlingTime);
  return mf::zero::toUtf16(text.data());
}

void recordProgress(const SimulationRun& run, const News& news) {
  run->setState(kRunning);
  run->setStatusString(u"Simulating");
  run->setProgress(news.progress);
  run->setSimElapsedWallTime(news.elapsed);
  if (news.progress > 0.0) run->setETA(now() + news.elapsed * (1.0 / news.progress - 1.0));
}

void recordEnd(const SimulationRun& run, const News& news) {
  const bool settled = news.metrics && news.metrics->settlingTime;
  run->setState(news.metrics ? kFinished : kFailed);
  run->setStatusString(statusOf(news));
  run->setSimStatus(!news.metrics ? kFailed : settled ? kSettled : kUnsettled);
  run->setProgress(1.0);
  run->setSimElapsedWallTime(news.elapsed);
  run->setETA(now());
}

}  // namespace

Job createJob(const Model& model, std::size_t runs, int workers) {
  const std::u16string machine = machineName();
  Job::Builder job(model);
  job.setNumWorkers(workers);
  for (std::size_t k = 0; k < runs; ++k) {
    job.addSimulationRuns(SimulationRun::Builder()
                              .setRunId(static_cast<double>(k + 1))
                              .setState(kQueued)
                              .setMachine(machine));
  }
  return job.create();
}

std::vector<Result> carryOut(const Job& job, std::span<const Setup> setups) {
  std::vector<Result> results;
  for (const Setup& setup : setups) results.push_back({setup, {}});
  const std::vector<SimulationRun> runs = job.simulationRuns().toContainer();
  const Model model = job->getModel();
  Mailbox mailbox;
  job->setStartTime(now());
  const Workers workers(static_cast<std::size_t>(job.numWorkers()), setups, mailbox);
  for (std::size_t open = setups.size(); open > 0;) {
    const std::vector<News> arrived = mailbox.collect();
    auto recording = model->beginTransaction();
    for (const News& news : arrived) {
      const bool ended = news.progress == 1.0;
      (ended ? recordEnd : recordProgress)(runs[news.run], news);
      if (!ended) continue;
      results[news.run].metrics = news.metrics;
      --open;
    }
    recording.commit();
  }
  job->setFinishTime(now());
  return results;
}

}  // namespace motor_study
