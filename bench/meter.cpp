#include "meter.h"

#include <sys/resource.h>
#include <time.h>
#include <unistd.h>

#include <fstream>
#include <string>

#if __has_include(<valgrind/callgrind.h>)
#include <valgrind/callgrind.h>
#else
#define CALLGRIND_START_INSTRUMENTATION
#define CALLGRIND_STOP_INSTRUMENTATION
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

void Meter::begin() {
  residentBefore_ = residentBytes();
  allocationsBefore_ = allocationCount();
  startedAt_ = processorSeconds();
  CALLGRIND_START_INSTRUMENTATION;
}

void Meter::end(double sign) {
  CALLGRIND_STOP_INSTRUMENTATION;
  result_.seconds += sign * (processorSeconds() - startedAt_);
  result_.allocations += sign * static_cast<double>(allocationCount() - allocationsBefore_);
  result_.residentBytes += sign * (residentBytes() - residentBefore_);
  result_.peakBytes += sign * (peakResidentBytes() - residentBefore_);
}

}  // namespace kxsim::bench
