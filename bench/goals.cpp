// Which rows there are, and what they shall reach. Nanoseconds were set on an AMD server core with
// 4 KiB pages, GCC 12 at -O2; where a floor is slower than it was there, its goal is higher by as
// much.
#include <algorithm>
#include <array>

#include "row.h"

namespace kxsim::bench {

namespace {

using enum Measure;

constexpr std::array kGoals{
    Goal{"create", kNanoseconds, 60, 35, {}, 15},
    Goal{"create", kKeptBytes, 72, 60},
    Goal{"first-look-up", kNanoseconds, 20, 20},
    Goal{"factorial", kTimesFloor, 4, 2.8},
    Goal{"factorial", kKeptBytes, 180, 155},
    Goal{"factorial-warm", kNanoseconds, 40, 20, {}, 6.6},
    // A sixth of what a run of the factorial, which has six references, may cost.
    Goal{"pairing", kTimesRowFloor, 4.0 / 6, 2.8 / 6, "factorial"},
    Goal{"random", kNanoseconds, 150, 100},
    Goal{"set-observed", kNanoseconds, 12, 6, {}, 3.3},
    Goal{"set-observed", kAllocations, 0, 0},
    Goal{"set-in-transaction", kNanoseconds, 8, 5},
    Goal{"set-in-transaction", kAllocations, 0, 0},
    Goal{"set-equal", kNanoseconds, 3, 2},
    Goal{"set-equal", kAllocations, 0, 0},
    Goal{"get-by-property", kNanoseconds, 3, 2, {}, 1.4},
    Goal{"get-by-property", kAllocations, 0, 0},
    Goal{"set-by-property", kAboveRow, 2, 1, "set-alone"},
    Goal{"set-by-property", kAllocations, 0, 0},
    Goal{"append", kNanoseconds, 60, 40, {}, 29},
    Goal{"destroy-owner", kNanoseconds, 15, 6},
    Goal{"destroy-sample", kNanoseconds, 30, 18, {}, 13.6},
    Goal{"roll-back-runs", kTimesRow, 1, 0.5, "make-runs"},
    Goal{"select", kNanoseconds, 10, 8, {}, 5.4},
    Goal{"run-record", kResidentBytes, 200, 150},
    Goal{"script-read", kNanoseconds, 40, 25},
    Goal{"script-read", kAllocations, 0, 0},
    Goal{"script-write", kNanoseconds, 60, 30},
    Goal{"script-write", kAllocations, 0, 0},
    Goal{"hand-over", kNanoseconds, 20, 5},
    Goal{"read-by-name", kNanoseconds, 40, 25},
    Goal{"read-by-name", kAllocations, 0, 0},
    Goal{"write-by-name", kNanoseconds, 60, 30},
    Goal{"write-by-name", kAllocations, 0, 0},
    Goal{"construct-by-name", kNanoseconds, 1'000, 500},
    Goal{"hand-over-runs", kNanoseconds, 20, 10},
    Goal{"register", kMilliseconds, 3, 1},
    Goal{"load", kMilliseconds, 3, 1},
};

}  // namespace

std::span<const Goal> goals() { return kGoals; }

const std::vector<Row>& allRows() {
  static const std::vector<Row> rows = [] {
    std::vector<Row> all;
    for (const auto& theme :
         {creationRows(), studyRows(), propertyRows(), collectionRows(), transactionRows(),
          queryRows(), scriptRows(), bindingRows(), loadRows()}) {
      all.insert(all.end(), theme.begin(), theme.end());
    }
    return all;
  }();
  return rows;
}

const Row* findRow(std::string_view name) {
  const auto found = std::ranges::find(allRows(), name, &Row::name);
  return found == allRows().end() ? nullptr : &*found;
}

}  // namespace kxsim::bench
