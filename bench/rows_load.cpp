// What a process pays to have the library: two programs that differ in nothing else.
#include <spawn.h>
#include <sys/wait.h>

#include <filesystem>
#include <stdexcept>
#include <string>

#include "row.h"

extern char** environ;

namespace kxsim::bench {

namespace {

void runProgram(const char* name) {
  std::string path = std::filesystem::read_symlink("/proc/self/exe").replace_filename(name);
  char* arguments[] = {path.data(), nullptr};
  pid_t child = 0;
  int status = 0;
  if (posix_spawn(&child, path.c_str(), nullptr, nullptr, arguments, environ) != 0 ||
      waitpid(child, &status, 0) != child || status != 0) {
    throw std::runtime_error("cannot run " + path);
  }
}

void load(std::size_t n, Meter& meter) {
  for (std::size_t i = 0; i < n; ++i) {
    meter.measure([] { runProgram("kxsim_load"); });
    meter.deduct([] { runProgram("kxsim_load_nothing"); });
  }
}

constexpr Row kRows[] = {
    {"load", "process", "the libraries loaded, the module initialised, every class registered",
     Process::kThis, load, nullptr, 1, 1, 0},
};

}  // namespace

std::span<const Row> loadRows() { return kRows; }

}  // namespace kxsim::bench
