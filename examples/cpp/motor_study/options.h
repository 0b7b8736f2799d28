// What the command line says.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace motor_study {

struct Options {
  std::vector<double> kp;  ///< proportional gains to try, V s/rad
  std::vector<double> ki;  ///< integral gains to try, V/rad
  int samples = 8;         ///< random conditions per plant and gains
  std::uint64_t seed = 1;
  int top = 5;                             ///< lines of each ranking
  int workers = 1;                         ///< threads that simulate
  std::string output = "motor_study.csv";  ///< a row per run
  std::string responses;                   ///< of the best gains; not written when empty
  bool quiet = false;                      ///< no progress, no tables
};

/// Reads the command line into `options`. Returns nothing when the study shall be run, otherwise
/// the exit code: 0 after printing the help, 2 after saying on standard error what was wrong.
std::optional<int> readOptions(int argc, char** argv, Options& options);

}  // namespace motor_study
