#include "meter.h"

#include <sys/resource.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <string>

#ifdef KXSIM_BENCH_CALLGRIND
#include <valgrind/callgrind.h>
#else
#define CALLGRIND_START_INSTRUMENTATION
#define CALLGRIND_STOP_INSTRUMENTATION
#define CALLGRIND_ZERO_STATS
#endif

namespace kxsim::bench {

namespace {

/// Of this process and of the children that it waited for.
double processorSeconds() {
  timespec own{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &own);
  rusage children{};
  getrusage(RUSAGE_CHILDREN, &children);
  const auto seconds = [](const timeval& t) {
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) * 1e-6;
  };
  return static_cast<double>(own.tv_sec) + static_cast<double>(own.tv_nsec) * 1e-9 +
         seconds(children.ru_utime) + seconds(children.ru_stime);
}

double residentBytes() {
  std::ifstream statm("/proc/self/statm");
  double total = 0;
  double resident = 0;
  statm >> total >> resident;
  return resident * static_cast<double>(sysconf(_SC_PAGESIZE));
}

double peakResidentBytes() {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    double kibibytes = 0;
    if (word == "VmHWM:" && status >> kibibytes) return kibibytes * 1024;
  }
  return 0;
}

}  // namespace

Meter::Meter(std::size_t items) {
  result_.items = static_cast<double>(items);
  CALLGRIND_ZERO_STATS;
}

void Meter::begin() {
  residentBefore_ = residentBytes();
  allocationsBefore_ = allocationCount();
  startedAt_ = processorSeconds();
}

void Meter::end(double sign) {
  result_.seconds += sign * (processorSeconds() - startedAt_);
  result_.allocations += sign * static_cast<double>(allocationCount() - allocationsBefore_);
  result_.residentBytes += sign * (residentBytes() - residentBefore_);
  result_.peakBytes = std::max(result_.peakBytes, peakResidentBytes() - residentBefore_);
}

void Meter::startCounting() { CALLGRIND_START_INSTRUMENTATION; }
void Meter::stopCounting() { CALLGRIND_STOP_INSTRUMENTATION; }

}  // namespace kxsim::bench
