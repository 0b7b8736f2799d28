#include "options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <functional>
#include <string_view>
#include <thread>

#include "study.h"

namespace motor_study {

namespace {

constexpr std::uint64_t kMostRuns = 1'000'000;
constexpr std::uint64_t kMostGains = 1'000;

template <class Number>
std::optional<Number> parse(std::string_view text) {
  Number value{};
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  return error == std::errc() && stop == end ? std::optional(value) : std::nullopt;
}

/// An option whose text `take` reads; what it answers, if anything, says why the text is refused.
CLI::Option* addOption(CLI::App& app, const std::string& name, const std::string& type,
                       const std::string& help,
                       std::function<std::string(const std::string&)> take) {
  const auto read = [name, take = std::move(take)](const std::string& text) {
    const std::string refusal = take(text);
    if (!refusal.empty()) throw CLI::ValidationError(name, refusal + ", not '" + text + "'");
  };
  return app.add_option_function<std::string>(name, read, help)->type_name(type)->take_last();
}

template <class Number>
void addWhole(CLI::App& app, const std::string& name, Number& value, std::uint64_t least,
              std::uint64_t most, const std::string& help) {
  const auto take = [&value, least, most](const std::string& text) -> std::string {
    const auto number = parse<std::uint64_t>(text);
    if (!number || *number < least || *number > most) {
      return "must be a whole number from " + std::to_string(least) + " to " + std::to_string(most);
    }
    value = static_cast<Number>(*number);
    return {};
  };
  addOption(app, name, "N", help, take)->default_str(std::to_string(value));
}

/// "0.1" or "0.1:0.4:4": one gain, or so many evenly spaced ones, ends included.
std::vector<double> parseGains(std::string_view text) {
  const auto first = text.find(':');
  const auto last = text.rfind(':');
  const auto from = parse<double>(text.substr(0, first));
  const bool isRange = first != last;
  const auto to = isRange ? parse<double>(text.substr(first + 1, last - first - 1)) : from;
  const auto count = isRange ? parse<std::uint64_t>(text.substr(last + 1)) : std::uint64_t{1};
  const bool isValid = (isRange || first == text.npos) && from && to && count && *from > 0 &&
                       std::isfinite(*to) && *count >= 1 && *count <= kMostGains &&
                       (*count == 1 ? *to == *from : *to > *from);
  std::vector<double> gains;
  for (std::uint64_t k = 0; isValid && k < *count; ++k) {
    const double share =
        *count == 1 ? 0.0 : static_cast<double>(k) / static_cast<double>(*count - 1);
    gains.push_back(std::lerp(*from, *to, share));
  }
  return gains;
}

void addGains(CLI::App& app, const std::string& name, std::vector<double>& gains,
              const std::string& standard, const std::string& help) {
  const auto take = [&gains](const std::string& text) -> std::string {
    gains = parseGains(text);
    if (!gains.empty()) return {};
    return "must be a positive number or FROM:TO:COUNT with 0 < FROM < TO and 2 to " +
           std::to_string(kMostGains) + " values";
  };
  gains = parseGains(standard);
  addOption(app, name, "GAINS", help, take)->default_str(standard);
}

void checkTogether(const Options& options) {
  const std::uint64_t runs = options.kp.size() * options.ki.size() * kPlants.size() *
                             static_cast<std::uint64_t>(options.samples);
  if (runs > kMostRuns) {
    throw CLI::ValidationError("the study would have " + std::to_string(runs) +
                               " runs; make it at most " + std::to_string(kMostRuns) +
                               " by fewer --samples, --kp or --ki");
  }
  if (options.output == options.responses) {
    throw CLI::ValidationError("--output and --responses must name two files");
  }
}

void addOptions(CLI::App& app, Options& options) {
  addGains(app, "--kp", options.kp, "0.04:0.24:6",
           "proportional gains in V s/rad: one, or FROM:TO:COUNT");
  addGains(app, "--ki", options.ki, "0.5:3:6", "integral gains in V/rad: one, or FROM:TO:COUNT");
  addWhole(app, "--samples", options.samples, 1, 100'000, "random conditions per plant and gains");
  addWhole(app, "--seed", options.seed, 0, UINT64_MAX, "same seed, same results");
  addWhole(app, "--top", options.top, 1, 1'000, "lines of each ranking");
  options.workers = static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1U, 256U));
  addWhole(app, "--workers", options.workers, 1, 256, "threads that simulate");
  app.add_option("-o,--output", options.output, "CSV file to write, a row per run")
      ->type_name("FILE")
      ->take_last()
      ->capture_default_str();
  app.add_option("--responses", options.responses,
                 "CSV file for the responses of the best gains, sampled each ms")
      ->type_name("FILE")
      ->take_last();
  app.add_flag("-q,--quiet", options.quiet, "write the files and print nothing but errors");
}

}  // namespace

std::optional<int> readOptions(int argc, char** argv, Options& options) {
  CLI::App app(
      "Which gains of a PI speed controller suit a DC motor whatever it drives? Runs every\n"
      "combination of gains, plants and random loads, and ranks them.",
      "motor_study");
  addOptions(app, options);
  try {
    app.parse(argc, argv);
    checkTogether(options);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);
    std::fprintf(stderr, "motor_study: %s\nTry motor_study --help.\n", error.what());
    return 2;
  }
  return std::nullopt;
}

}  // namespace motor_study
