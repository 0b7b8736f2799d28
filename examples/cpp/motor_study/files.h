// The results as CSV files. Every operation raises std::runtime_error, naming the file and the
// reason, when the file cannot be written.
#pragma once

#include <span>
#include <string>

#include "results.h"

namespace motor_study {

/// Raises unless the file can be written; leaves it as it is, or not there.
void checkWritable(const std::string& path);

/// A row per run: its state and all quantities in SI units or per cent, empty where there is none.
void writeResults(const std::string& path, std::span<const Result> results);

/// The responses of the runs with these gains, a row per millisecond.
void writeResponses(const std::string& path, const GainsSummary& gains,
                    std::span<const Result> results);

}  // namespace motor_study
