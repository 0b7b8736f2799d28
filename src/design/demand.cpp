#include "design/demand.h"

#include <cmath>

#include "design/host.h"

#if __has_include(<unistd.h>)
#include <unistd.h>
#endif

namespace kxsim::design {

namespace {

// Measured with 10^6 runs, rounded up; see docs/performance.md.
constexpr double kRunBytes = 110;       // an iteration and its place in the result
constexpr double kSampleBytes = 120;    // a sample, its value and the references to both
constexpr double kReferenceBytes = 16;  // a reference to a shared sample, both ends
constexpr double kMostElements = 4e8;   // of a model's element identifiers

double physicalMemory() {
#ifdef _SC_PHYS_PAGES
  return static_cast<double>(sysconf(_SC_PHYS_PAGES)) * static_cast<double>(sysconf(_SC_PAGESIZE));
#else
  return 1e18;
#endif
}

Demand demandOf(double runs, double elementsPerRun, double bytesPerRun) {
  return runs > 0.0 ? Demand{runs * elementsPerRun, runs * bytesPerRun} : Demand{};
}

}  // namespace

Demand& Demand::operator+=(const Demand& other) {
  elements += other.elements;
  bytes += other.bytes;
  return *this;
}

Demand demandOfDrawing(double runs, double samplesPerRun) {
  return demandOf(runs, 1.0 + samplesPerRun, kRunBytes + kSampleBytes * samplesPerRun);
}

Demand demandOfCombining(double runs, double samplesPerRun, std::size_t matrixRows) {
  const double matrix = static_cast<double>(sizeof(double) * matrixRows);
  return demandOf(runs, 1.0, kRunBytes + kReferenceBytes * samplesPerRun + matrix);
}

void checkFits(const Demand& demand) {
  if (demand.elements > kMostElements || demand.bytes > physicalMemory()) {
    host::raiseDesignError("TooManyIterations");
  }
}

std::size_t runsOf(double count) {
  return count > 0.0 ? static_cast<std::size_t>(std::ceil(count)) : 0;
}

}  // namespace kxsim::design
