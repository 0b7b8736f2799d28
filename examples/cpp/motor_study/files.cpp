#include "files.h"

#include <array>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <vector>

namespace motor_study {

namespace {

/// A file that is written whole or reported.
class File {
 public:
  File(const std::string& path, const char* mode)
      : path_(path), file_(std::fopen(path.c_str(), mode), &std::fclose) {
    if (!file_) fail();
  }

  void write(const std::string& text) {
    if (std::fputs(text.c_str(), file_.get()) < 0) fail();
  }

  void close() {
    if (std::fclose(file_.release()) != 0) fail();
  }

 private:
  [[noreturn]] void fail() const {
    throw std::runtime_error("cannot write '" + path_ + "': " + std::strerror(errno));
  }

  std::string path_;
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_;
};

/// Nine digits: more than the integration is worth, and no noise of the last bit.
std::string number(double value) {
  if (!std::isfinite(value)) return {};
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.9g", value);
  return text.data();
}

}  // namespace

void checkWritable(const std::string& path) {
  const bool wasThere = std::filesystem::exists(path);
  File(path, "a").close();
  if (!wasThere) std::filesystem::remove(path);
}

void writeResults(const std::string& path, std::span<const Result> results) {
  File file(path, "w");
  std::string head = "run";
  for (const Quantity& quantity : quantities()) head.append(",").append(quantity.column);
  file.write(head + ",state\n");
  for (std::size_t k = 0; k < results.size(); ++k) {
    std::string row = std::to_string(k + 1);
    for (const Quantity& quantity : quantities()) row += "," + number(quantity.of(results[k]));
    const auto& metrics = results[k].metrics;
    file.write(row + (!metrics                ? ",failed\n"
                      : metrics->settlingTime ? ",settled\n"
                                              : ",not settled\n"));
  }
  file.close();
}

void writeResponses(const std::string& path, const GainsSummary& gains,
                    std::span<const Result> results) {
  constexpr std::size_t kEvery = 4;
  File file(path, "w");
  file.write("run,time_s,speed_rad_per_s,current_A,voltage_V\n");
  for (const std::size_t k : gains.runs) {
    if (!results[k].metrics) continue;
    std::vector<Sample> response;
    simulate(results[k].setup, {}, &response);
    for (std::size_t s = 0; s < response.size(); s += kEvery) {
      const Sample& sample = response[s];
      file.write(std::to_string(k + 1) + "," + number(sample.time) + "," + number(sample.speed) +
                 "," + number(sample.current) + "," + number(sample.voltage) + "\n");
    }
  }
  file.close();
}

}  // namespace motor_study
