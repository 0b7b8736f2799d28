#include "process.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
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

/// A virtual machine gives idle memory back to its host, and a page that comes from there costs
/// several times what one costs that the system has: has as much fetched as `n` items may need.
void fetchMemory(std::size_t n) {
  constexpr std::size_t kBytesPerItem = 1024;
  constexpr std::size_t kPage = 4096;
  const auto free = static_cast<std::size_t>(sysconf(_SC_AVPHYS_PAGES)) * kPage;
  const std::size_t bytes = std::min(n * kBytesPerItem, free / 2);
  void* const memory =
      mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) return;
  madvise(memory, bytes, MADV_HUGEPAGE);
  auto* const pages = static_cast<volatile std::byte*>(memory);
  for (std::size_t at = 0; at < bytes; at += kPage) pages[at] = std::byte{1};
  munmap(memory, bytes);
}

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
  fetchMemory(n);
  const std::string program = std::filesystem::read_symlink("/proc/self/exe").string();
  // The model asks for huge pages; so does the C library for a floor.
  const std::string pages = side == Side::kFloor ? "GLIBC_TUNABLES=glibc.malloc.hugetlb=1 " : "";
  const std::string command = pages + "'" + program + "' --measure " + std::string(row.name) +
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
