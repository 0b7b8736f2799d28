// A row of the table: what is measured, its hand-written floor, and what it shall reach.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

#include "meter.h"

namespace kxsim::bench {

using Body = void (*)(std::size_t n, Meter& meter);

enum class Process : bool {
  kThis,   ///< repeated in one process: code, allocator and caches are warm
  kFresh,  ///< each measurement in a process of its own: every page is touched for the first time
};

struct Row {
  std::string_view name;
  std::string_view unit;  ///< what an item is
  std::string_view what;
  Process process;
  Body ours;
  Body floor;                       ///< the same in plain C++, doing the minimum; null for none
  std::size_t smallest = 1'000;     ///< sizes go from here to `largest` by powers of ten
  std::size_t largest = 1'000'000;  ///< goals are judged here
  std::size_t counted = 10'000;     ///< size at which instructions are counted; 0 for never
};

/// What is compared with a goal.
enum class Measure {
  kNanoseconds,   ///< per item
  kMilliseconds,  ///< per item
  kTimesFloor,
  kTimesRow,       ///< time per item against another row's
  kTimesRowFloor,  ///< the same against that row's floor
  kAboveRow,       ///< nanoseconds per item more than another row's
  kKeptBytes,      ///< per item
  kResidentBytes,  ///< per item
  kAllocations,    ///< in all
};

/// A figure to reach, and the one that would be better still.
struct Goal {
  std::string_view row;
  Measure measure;
  double value;
  double beyond;
  std::string_view other = {};  ///< the row that is compared with
  double floorWas = 0;  ///< nanoseconds of the floor where the goal was set; a slower one raises it
};

/// Growth of the time per item from 10^4 to the largest size, the floor's own growth apart.
inline constexpr double kGrowthGoal = 1.5;

std::span<const Goal> goals();

// By theme; each in a file of its own name.
std::span<const Row> creationRows();
std::span<const Row> studyRows();
std::span<const Row> propertyRows();
std::span<const Row> collectionRows();
std::span<const Row> transactionRows();
std::span<const Row> queryRows();
std::span<const Row> scriptRows();
std::span<const Row> bindingRows();
std::span<const Row> loadRows();

/// All of them, in the table's order.
const std::vector<Row>& allRows();
/// Null for an unknown name.
const Row* findRow(std::string_view name);

}  // namespace kxsim::bench
