#include "host/detail/fullfact.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include "host/detail/content.h"
#include "host/detail/messages.h"
#include "host/text.h"

namespace vexal::detail {
namespace {

std::span<const double> levelCountsOf(const vxArray* array) {
  const bool isRow =
      isClass(array, ClassId::Double) && dimensions(array).size() == 2 && dimensions(array)[0] == 1;
  if (!isRow) fail("NotARowVector", {"kxsim.design.fullfact", describe(array)});
  return doubleData(array);
}

void requireWholeCounts(std::span<const double> counts) {
  for (std::size_t k = 0; k < counts.size(); ++k) {
    const bool isWhole = std::isfinite(counts[k]) && std::floor(counts[k]) == counts[k];
    if (!isWhole || counts[k] < 0) {
      fail("InvalidLevelCount", {std::to_string(k + 1), formatNumber(counts[k])});
    }
  }
}

// The number of combinations, refused when the design would not fit.
std::size_t combinationsOf(std::span<const double> counts) {
  if (std::ranges::count(counts, 0.0) > 0) return 0;
  const std::size_t factors = std::max<std::size_t>(counts.size(), 1);
  double left = static_cast<double>(std::numeric_limits<std::ptrdiff_t>::max() / 16 / factors);
  std::size_t product = 1;
  for (const double count : counts) {
    left = std::floor(left / count);
    if (left < 1) fail("TooManyCombinations", {std::to_string(counts.size())});
    product *= static_cast<std::size_t>(count);
  }
  return product;
}

// Writes the columns of one run of the first factor, the levels of the others being given;
// returns the end.
double* writeRun(double* out, double firstCount, std::span<const double> others) {
  for (double level = 1; level <= firstCount; ++level) {
    *out++ = level;
    for (const double other : others) *out++ = other;
  }
  return out;
}

// The next combination of levels, as an odometer counts.
void nextLevels(std::span<double> levels, std::span<const double> counts) {
  for (std::size_t k = 0; k < levels.size(); ++k) {
    if (++levels[k] <= counts[k]) return;
    levels[k] = 1;
  }
}

}  // namespace

ArrayPtr fullFactorial(const vxArray* levelCounts) {
  const auto counts = levelCountsOf(levelCounts);
  requireWholeCounts(counts);
  const std::array dims{counts.size(), combinationsOf(counts)};
  auto content = newPlainContent(ClassId::Double, dims, Fill::None);
  auto* out = static_cast<double*>(elementsOf(content.get()));
  double* const end = out + countOf(*content.get());
  std::vector<double> others(counts.empty() ? 0 : counts.size() - 1, 1.0);
  while (out != end) {
    out = writeRun(out, counts.front(), others);
    nextLevels(others, counts.subspan(1));
  }
  return newArray(std::move(content));
}

}  // namespace vexal::detail
