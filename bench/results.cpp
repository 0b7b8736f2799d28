// Medians, and what the goals make of them.
#include <algorithm>
#include <cmath>
#include <iomanip>
#include <sstream>

#include "table.h"

namespace kxsim::bench {

void Results::add(const Row& row, Side side, std::size_t n, const Measurement& measurement) {
  measured_[{&row, side, n}].push_back(measurement);
}

template <class Figure>
std::optional<double> Results::median(const Key& key, Figure figure) const {
  const auto found = measured_.find(key);
  if (found == measured_.end()) return std::nullopt;
  std::vector<double> values;
  for (const Measurement& measurement : found->second) values.push_back(figure(measurement));
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::ranges::nth_element(values, middle);
  return *middle;
}

std::optional<double> Results::nanoseconds(const Row& row, Side side, std::size_t n) const {
  return median({&row, side, n}, [](const Measurement& m) { return m.seconds * 1e9 / m.items; });
}

std::optional<double> Results::keptBytes(const Row& row, Side side, std::size_t n) const {
  const auto bytes =
      median({&row, side, n}, [](const Measurement& m) { return m.keptBytes / m.items; });
  return bytes > 0.0 ? bytes : std::nullopt;
}

std::optional<double> Results::residentBytes(const Row& row, Side side, std::size_t n) const {
  if (!keptBytes(row, side, n)) return std::nullopt;
  return median({&row, side, n}, [](const Measurement& m) { return m.residentBytes / m.items; });
}

std::optional<double> Results::peakBytes(const Row& row, Side side, std::size_t n) const {
  if (!keptBytes(row, side, n)) return std::nullopt;
  return median({&row, side, n}, [](const Measurement& m) { return m.peakBytes / m.items; });
}

std::optional<double> Results::allocations(const Row& row, Side side, std::size_t n) const {
  return median({&row, side, n}, [](const Measurement& m) { return m.allocations; });
}

std::size_t Results::largest(const Row& row) const {
  std::size_t largest = 0;
  for (const auto& [key, measurements] : measured_) {
    if (key.row == &row) largest = std::max(largest, key.n);
  }
  return largest;
}

std::optional<double> quotient(std::optional<double> a, std::optional<double> b) {
  return a && b && *b > 0 ? std::optional(*a / *b) : std::nullopt;
}

std::optional<double> Results::growth(const Row& row, Side side) const {
  constexpr std::size_t kFrom = 10'000;
  const std::size_t n = largest(row);
  const auto from = nanoseconds(row, side, kFrom);
  // Growth from next to nothing says nothing.
  if (n <= kFrom || !from || *from < 0.5) return std::nullopt;
  return quotient(nanoseconds(row, side, n), from);
}

namespace {

std::string rounded(double value) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(value < 9.95 ? 1 : 0) << value;
  return text.str();
}

std::optional<double> figureOf(const Results& results, const Row& row, const Goal& goal) {
  const std::size_t n = results.largest(row);
  const auto ours = results.nanoseconds(row, Side::kOurs, n);
  const Row* other = findRow(goal.other);
  const auto others = other ? results.nanoseconds(*other, Side::kOurs, n) : std::nullopt;
  switch (goal.measure) {
    case Measure::kMilliseconds: return quotient(ours, 1e6);
    case Measure::kNanoseconds: return ours;
    case Measure::kTimesFloor: return quotient(ours, results.nanoseconds(row, Side::kFloor, n));
    case Measure::kTimesRow: return quotient(ours, others);
    case Measure::kTimesRowFloor:
      return quotient(ours, other ? results.nanoseconds(*other, Side::kFloor, n) : std::nullopt);
    case Measure::kAboveRow: return ours && others ? std::optional(*ours - *others) : std::nullopt;
    case Measure::kKeptBytes: return results.keptBytes(row, Side::kOurs, n);
    case Measure::kResidentBytes: return results.residentBytes(row, Side::kOurs, n);
    case Measure::kAllocations: return results.allocations(row, Side::kOurs, n);
  }
  return std::nullopt;
}

std::string_view unitOf(Measure measure) {
  constexpr std::string_view kUnits[] = {
      " ns", " ms", " times the floor", " times ", " times the floor of ", " ns above ",
      " B",  " B",  " allocations",
  };
  return kUnits[static_cast<std::size_t>(measure)];
}

/// The goal as it is for a machine whose floor is slower than that on which it was set: higher by
/// as much, but no more than twice as high. A faster floor does not lower it.
Goal scaled(Goal goal, std::optional<double> floor) {
  if (goal.floorWas > 0 && floor > goal.floorWas) {
    const double slower = std::min(*floor / goal.floorWas, 2.0);
    goal.value *= slower;
    goal.beyond *= slower;
  }
  return goal;
}

std::string textOf(const Goal& goal, double figure) {
  return rounded(figure) + std::string(unitOf(goal.measure)) + std::string(goal.other) + ", goal " +
         rounded(goal.value) + ", beyond " + rounded(goal.beyond);
}

}  // namespace

std::vector<Verdict> judge(const Results& results, const Row& row) {
  std::vector<Verdict> verdicts;
  const auto floor = results.nanoseconds(row, Side::kFloor, results.largest(row));
  for (const Goal& asSet : goals()) {
    if (asSet.row != row.name) continue;
    const Goal goal = scaled(asSet, floor);
    if (const auto figure = figureOf(results, row, goal)) {
      verdicts.push_back({*figure <= goal.value, *figure <= goal.beyond, textOf(goal, *figure)});
    }
  }
  if (const auto growth = results.growth(row, Side::kOurs)) {
    const double allowed =
        kGrowthGoal * std::max(1.0, results.growth(row, Side::kFloor).value_or(1.0));
    const bool met = *growth <= allowed;
    verdicts.push_back({met, met && !verdicts.empty(),
                        "grows " + rounded(*growth) + " times, goal " + rounded(allowed)});
  }
  return verdicts;
}

}  // namespace kxsim::bench
