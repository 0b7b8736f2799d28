#include "process.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

#include "package/module.h"

namespace kxsim::bench {

namespace {

struct Close {
  void operator()(std::FILE* pipe) const { pclose(pipe); }
};

constexpr const char* kFormat = "%lf %lf %lf %lf %lf %lf";

}  // namespace

Measurement measureHere(const Row& row, Side side, std::size_t n) {
  VXInitialize_kxsim_design();
  const Body body = side == Side::kOurs ? row.ours : row.floor;
  Meter small(std::min<std::size_t>(n, 100));
  body(std::min<std::size_t>(n, 100), small);
  Meter meter(n);
  body(n, meter);
  return meter.result();
}

Measurement measureInFreshProcess(const Row& row, Side side, std::size_t n) {
  const std::string program = std::filesystem::read_symlink("/proc/self/exe").string();
  const std::string command = "'" + program + "' --measure " + std::string(row.name) +
                              (side == Side::kFloor ? " --floor" : "") + " --size " +
                              std::to_string(n);
  const std::unique_ptr<std::FILE, Close> pipe(popen(command.c_str(), "r"));
  Measurement m;
  if (!pipe || std::fscanf(pipe.get(), kFormat, &m.seconds, &m.items, &m.allocations, &m.keptBytes,
                           &m.residentBytes, &m.peakBytes) != 6) {
    throw std::runtime_error("no answer from: " + command);
  }
  return m;
}

void answerParent(const Row& row, Side side, std::size_t n) {
  const Measurement m = measureHere(row, side, n);
  std::printf("%.17g %.17g %.17g %.17g %.17g %.17g\n", m.seconds, m.items, m.allocations,
              m.keptBytes, m.residentBytes, m.peakBytes);
}

}  // namespace kxsim::bench
