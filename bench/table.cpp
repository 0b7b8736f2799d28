#include "table.h"

#include <sys/utsname.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iomanip>
#include <ostream>
#include <sstream>

namespace kxsim::bench {

namespace {

std::string processor() {
  std::ifstream cpuinfo("/proc/cpuinfo");
  for (std::string line; std::getline(cpuinfo, line);) {
    if (line.starts_with("model name")) return line.substr(line.find(':') + 2);
  }
  return "unknown processor";
}

/// "always", "madvise" or "never": what large pages do for fresh memory.
std::string hugePages() {
  std::ifstream setting("/sys/kernel/mm/transparent_hugepage/enabled");
  std::string line;
  std::getline(setting, line);
  const std::size_t from = line.find('[') + 1;
  return from == 0 ? "unknown" : line.substr(from, line.find(']') - from);
}

std::string today() {
  const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  std::ostringstream text;
  text << std::put_time(std::gmtime(&now), "%Y-%m-%d");
  return text.str();
}

/// A figure as it stands in the table; "-" for none.
std::string text(std::optional<double> value) {
  if (!value) return "-";
  std::ostringstream text;
  text << std::fixed << std::setprecision(*value < 99.95 ? 1 : 0) << *value;
  return text.str();
}

struct Column {
  std::string_view group;
  std::string_view title;
  int width;
};

constexpr Column kColumns[] = {
    {"", "row", -19},
    {"ns per item", "10^3", 12},
    {"", "10^4", 7},
    {"", "10^5", 7},
    {"", "10^6", 7},
    {"floor", "10^3", 9},
    {"", "10^4", 7},
    {"", "10^5", 7},
    {"", "10^6", 7},
    {"times", "floor", 8},
    {"growth", "ours", 8},
    {"", "floor", 6},
    {"bytes kept", "ours", 12},
    {"", "floor", 6},
    {"resident", "ours", 10},
    {"", "floor", 6},
    {"peak", "ours", 7},
    {"", "floor", 6},
    {"goals", "", 8},
};

template <class CellOf>
void printLine(std::ostream& out, CellOf&& cellOf) {
  for (std::size_t i = 0; i < std::size(kColumns); ++i) {
    const int width = kColumns[i].width;
    out << (width < 0 ? std::left : std::right) << std::setw(std::abs(width)) << cellOf(i);
  }
  out << "\n";
}

std::string verdictOf(const std::vector<Verdict>& verdicts) {
  if (verdicts.empty()) return "-";
  if (std::ranges::all_of(verdicts, &Verdict::beyond)) return "beyond";
  return std::ranges::all_of(verdicts, &Verdict::met) ? "met" : "MISSED";
}

std::vector<std::string> cellsOf(const Results& results, const Row& row) {
  constexpr std::size_t kSizes[] = {1'000, 10'000, 100'000, 1'000'000};
  const std::size_t n = results.largest(row);
  std::vector<std::string> cells{std::string(row.name)};
  for (const Side side : {Side::kOurs, Side::kFloor}) {
    for (const std::size_t size : kSizes) {
      cells.push_back(text(results.nanoseconds(row, side, size)));
    }
  }
  cells.push_back(text(quotient(results.nanoseconds(row, Side::kOurs, n),
                                results.nanoseconds(row, Side::kFloor, n))));
  for (const Side side : {Side::kOurs, Side::kFloor}) {
    cells.push_back(text(results.growth(row, side)));
  }
  for (const Side side : {Side::kOurs, Side::kFloor}) {
    cells.push_back(text(results.keptBytes(row, side, n)));
  }
  for (const Side side : {Side::kOurs, Side::kFloor}) {
    cells.push_back(text(results.residentBytes(row, side, n)));
  }
  for (const Side side : {Side::kOurs, Side::kFloor}) {
    cells.push_back(text(results.peakBytes(row, side, n)));
  }
  cells.push_back(verdictOf(judge(results, row)));
  return cells;
}

void printHead(std::ostream& out) {
  utsname system{};
  uname(&system);
  out << processor() << ", " << system.sysname << " " << system.release << ", "
      << KXSIM_BENCH_COMPILER << ", " << today() << ", commit " << KXSIM_BENCH_COMMIT << "\n"
      << "One thread, processor time, medians. Transparent huge pages: " << hugePages() << ".\n"
      << "Bytes are per item at the largest size, where goals are judged.\n\n";
  printLine(out, [](std::size_t i) { return kColumns[i].group; });
  printLine(out, [](std::size_t i) { return kColumns[i].title; });
}

using Rows = std::vector<const Row*>;

Rows measuredRows(const Results& results) {
  Rows rows;
  for (const Row& row : allRows()) {
    if (results.largest(row) > 0) rows.push_back(&row);
  }
  return rows;
}

void printTable(std::ostream& out, const Results& results, const Rows& rows) {
  for (const Row* row : rows) {
    if (row->largest == 1) continue;
    const auto cells = cellsOf(results, *row);
    printLine(out, [&](std::size_t i) { return cells[i]; });
  }
}

void printLegend(std::ostream& out, const Results& results, const Rows& rows) {
  for (const Row* row : rows) {
    out << std::left << std::setw(20) << row->name << row->what << " (per " << row->unit << ")";
    if (row->largest == 1) {
      out << ": " << text(quotient(results.nanoseconds(*row, Side::kOurs, 1), 1e6)) << " ms";
    }
    out << "\n";
  }
}

void printMissed(std::ostream& out, const Results& results, const Rows& rows) {
  out << "\nMissed goals:\n";
  bool any = false;
  for (const Row* row : rows) {
    for (const Verdict& verdict : judge(results, *row)) {
      if (verdict.met) continue;
      out << "  " << std::left << std::setw(20) << row->name << verdict.text << "\n";
      any = true;
    }
  }
  if (!any) out << "  none\n";
}

}  // namespace

void printReport(std::ostream& out, const Results& results) {
  const Rows rows = measuredRows(results);
  printHead(out);
  printTable(out, results, rows);
  out << "\n";
  printLegend(out, results, rows);
  printMissed(out, results, rows);
}

}  // namespace kxsim::bench
