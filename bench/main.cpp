// The driver: Google Benchmark repeats the rows, our table shows them.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <regex>
#include <string>
#include <vector>

#include "process.h"
#include "table.h"

namespace kxsim::bench {

namespace {

struct Options {
  bool quick = false;
  bool list = false;
  bool compiler = false;
  std::string filter;
  std::string json;
  std::string measured;  ///< the row to measure once, for a parent or under callgrind
  bool floor = false;
  std::size_t size = 0;
};

/// Shows what is being measured, on a terminal only.
class Progress : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    if (isatty(STDERR_FILENO)) std::cerr << "\r\033[K" << runs.front().benchmark_name();
  }
  void Finalize() override {
    if (isatty(STDERR_FILENO)) std::cerr << "\r\033[K";
  }
};

int repetitions(std::size_t n) { return n < 100'000 ? 9 : n < 1'000'000 ? 7 : 5; }

void registerSide(const Row& row, Side side, std::size_t n, Results& results) {
  const std::string name =
      std::string(row.name) + (side == Side::kFloor ? "/floor/" : "/") + std::to_string(n);
  benchmark::RegisterBenchmark(name.c_str(),
                               [&row, side, n, &results](benchmark::State& state) {
                                 for ([[maybe_unused]] auto _ : state) {
                                   const Measurement m = row.process == Process::kFresh
                                                             ? measureInFreshProcess(row, side, n)
                                                             : measureHere(row, side, n);
                                   results.add(row, side, n, m);
                                   state.SetIterationTime(m.seconds);
                                   state.SetItemsProcessed(static_cast<std::int64_t>(m.items));
                                   state.counters["kept_bytes"] = m.keptBytes;
                                   state.counters["resident_bytes"] = m.residentBytes;
                                   state.counters["allocations"] = m.allocations;
                                 }
                               })
      ->UseManualTime()
      ->Iterations(1)
      ->Repetitions(repetitions(n));
}

/// False when the filter leaves none.
bool registerRows(const Options& options, Results& results) {
  const std::size_t limit = options.quick ? 100'000 : 1'000'000;
  const std::regex wanted(options.filter);
  bool any = false;
  for (const Row& row : allRows()) {
    if (!std::regex_search(row.name.begin(), row.name.end(), wanted)) continue;
    any = true;
    for (std::size_t n = row.smallest; n <= std::min(row.largest, limit); n *= 10) {
      registerSide(row, Side::kOurs, n, results);
      if (row.floor) registerSide(row, Side::kFloor, n, results);
    }
  }
  return any;
}

/// Google Benchmark keeps the program's name, so that must stay.
void initialise(char* program, const Options& options) {
  std::vector<std::string> words;
  if (!options.json.empty()) {
    words.push_back("--benchmark_out=" + options.json);
    words.push_back("--benchmark_out_format=json");
  }
  std::vector<char*> arguments{program};
  for (std::string& word : words) arguments.push_back(word.data());
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
}

int runAll(char* program, const Options& options) {
  Results results;
  if (!registerRows(options, results)) {
    std::cerr << "no row matches: " << options.filter << "\n";
    return 2;
  }
  initialise(program, options);
  Progress progress;
  benchmark::RunSpecifiedBenchmarks(&progress);
  printReport(std::cout, results);
  return 0;
}

int runOne(const Options& options) {
  const Row* row = findRow(options.measured);
  if (!row) {
    std::cerr << "no such row: " << options.measured << "\n";
    return 2;
  }
  answerParent(*row, options.floor ? Side::kFloor : Side::kOurs, options.size);
  return 0;
}

int listRows() {
  for (const Row& row : allRows()) {
    std::cout << row.name << " " << row.counted << "\n";
  }
  return 0;
}

int run(int argc, char** argv) {
  Options options;
  CLI::App app("Measures the library against hand-written code.");
  app.add_flag("--quick", options.quick, "sizes up to 10^5 only");
  app.add_option("--filter", options.filter, "rows whose name matches this regular expression");
  app.add_option("--json", options.json, "write every single measurement to this file");
  app.add_flag("--list", options.list,
               "list the rows, each with its size for counting instructions");
  app.add_flag("--compiler", options.compiler, "say what built this program");
  app.add_option("--measure", options.measured, "measure one row once and print the bare figures");
  app.add_option("--size", options.size, "how many items, with --measure");
  app.add_flag("--floor", options.floor, "the floor instead, with --measure");
  CLI11_PARSE(app, argc, argv);
  if (options.list) return listRows();
  if (options.compiler) {
    std::cout << KXSIM_BENCH_COMPILER << "\n";
    return 0;
  }
  return options.measured.empty() ? runAll(argv[0], options) : runOne(options);
}

}  // namespace

}  // namespace kxsim::bench

int main(int argc, char** argv) {
  try {
    return kxsim::bench::run(argc, argv);
  } catch (const std::exception& problem) {
    std::cerr << "kxsim_bench: " << problem.what() << "\n";
    return 1;
  }
}
