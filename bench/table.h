// The results of a run, and the one table that shows them.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "process.h"
#include "row.h"

namespace kxsim::bench {

/// All measurements so far; answers medians.
class Results {
 public:
  void add(const Row& row, Side side, std::size_t n, const Measurement& measurement);
  /// The median of one figure, per item where it is a time or a size; nothing without measurements.
  std::optional<double> nanoseconds(const Row& row, Side side, std::size_t n) const;
  /// Nothing for a row that keeps nothing, either.
  std::optional<double> keptBytes(const Row& row, Side side, std::size_t n) const;
  std::optional<double> peakBytes(const Row& row, Side side, std::size_t n) const;
  std::optional<double> residentBytes(const Row& row, Side side, std::size_t n) const;
  /// Of the time per item, from 10^4 to the largest size.
  std::optional<double> growth(const Row& row, Side side) const;
  std::optional<double> allocations(const Row& row, Side side, std::size_t n) const;
  /// The largest size that was measured; 0 for none.
  std::size_t largest(const Row& row) const;

 private:
  struct Key {
    const Row* row;
    Side side;
    std::size_t n;
    auto operator<=>(const Key&) const = default;
  };
  template <class Figure>
  std::optional<double> median(const Key& key, Figure figure) const;

  std::map<Key, std::vector<Measurement>> measured_;
};

std::optional<double> quotient(std::optional<double> a, std::optional<double> b);

/// One figure against its goal.
struct Verdict {
  bool met;
  bool beyond;       ///< better than the goal by as much as was hoped for
  std::string text;  ///< "88 ns, goal 60, beyond 35"
};

/// The goals of a row that were measured, growth included.
std::vector<Verdict> judge(const Results& results, const Row& row);

/// Machine, compiler, date and commit; the table; what the rows mean; the goals that are missed.
void printReport(std::ostream& out, const Results& results);

}  // namespace kxsim::bench
