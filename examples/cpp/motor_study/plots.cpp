#include "plots.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <map>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include "figures.h"
#include "text.h"

namespace motor_study {

using namespace kxsim::design;
using mf::zero::toUtf8;

namespace {

using Values = std::vector<double>;

/// The values of an axis, one per result.
Values valuesOf(const FigureDataSpec& axis, std::span<const Result> results) {
  const Quantity& plotted = quantity(toUtf8(axis.id()));
  Values values;
  for (const Result& result : results) values.push_back(plotted.of(result));
  return values;
}

std::string shortest(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3g", value);
  return text;
}

// A surface: a table of its heights.

using Grid = std::map<double, std::map<double, Values>>;  ///< z by y, then by x

double reduce(const Values& values, DataProcessingType processing) {
  switch (processing) {
    case DataProcessingType::Min: return std::ranges::min(values);
    case DataProcessingType::Max: return std::ranges::max(values);
    case DataProcessingType::Mean:
      return std::reduce(values.begin(), values.end()) / static_cast<double>(values.size());
    case DataProcessingType::End:
    case DataProcessingType::Trace: break;
  }
  return values.back();
}

void drawSurface(const SurfPlotProperties& plot, std::span<const Result> results) {
  constexpr std::size_t kMostColumns = 10;
  const Values x = valuesOf(plot.xData(), results);
  const Values y = valuesOf(plot.yData(), results);
  const Values z = valuesOf(plot.zData(), results);
  const DataProcessingType processing = plot.zData().processingType();
  Grid grid;
  for (std::size_t k = 0; k < z.size(); ++k) grid[y[k]][x[k]].push_back(z[k]);
  if (grid.empty() || grid.begin()->second.size() > kMostColumns) {
    std::printf("  (too wide to be shown here)\n");
    return;
  }

  double least = std::numeric_limits<double>::infinity();
  for (const auto& [at, row] : grid) {
    for (const auto& [_, values] : row) least = std::min(least, reduce(values, processing));
  }
  Table table;
  std::vector<std::string> head{toUtf8(plot.yLabel()) + " \\ " + toUtf8(plot.xLabel())};
  for (const auto& [at, _] : grid.begin()->second) head.push_back(shortest(at) + ' ');
  table.add(std::move(head));
  for (const auto& [at, row] : grid) {
    std::vector<std::string> cells{shortest(at)};
    for (const auto& [_, values] : row) {
      const double height = reduce(values, processing);
      cells.push_back(fixed(height, 2) + (height == least ? '*' : ' '));
    }
    table.add(std::move(cells));
  }
  table.print();
}

// A scatter plot: a raster of characters.

/// Where values lie along one side of a raster.
class Scale {
 public:
  Scale(const Values& values, std::size_t cells) : cells_(cells) {
    for (const double value : values) {
      if (!std::isfinite(value)) continue;
      low_ = std::min(low_, value);
      high_ = std::max(high_, value);
    }
  }
  std::size_t cellOf(double value) const {
    const double share = high_ > low_ ? (value - low_) / (high_ - low_) : 0.0;
    return static_cast<std::size_t>(std::lround(share * static_cast<double>(cells_ - 1)));
  }
  double low() const { return low_; }
  double high() const { return high_; }

 private:
  std::size_t cells_;
  double low_ = std::numeric_limits<double>::infinity();
  double high_ = -std::numeric_limits<double>::infinity();
};

void drawScatter(const ScatterPlotProperties& plot, std::span<const Result> results) {
  constexpr std::size_t kWidth = 64;
  constexpr std::size_t kHeight = 14;
  const Values x = valuesOf(plot.xData(), results);
  const Values y = valuesOf(plot.yData(), results);
  const Values color = valuesOf(plot.cData(), results);
  const Scale across(x, kWidth);
  const Scale up(y, kHeight);
  if (!std::isfinite(across.low()) || !std::isfinite(up.low())) {
    std::printf("  (no run has both)\n");
    return;
  }
  std::vector<std::string> raster(kHeight, std::string(kWidth, ' '));
  for (std::size_t k = 0; k < x.size(); ++k) {
    if (!std::isfinite(x[k]) || !std::isfinite(y[k])) continue;
    char& mark = raster[kHeight - 1 - up.cellOf(y[k])][across.cellOf(x[k])];
    if (mark != 'o') mark = color[k] <= 1.0 ? 'o' : '.';
  }
  std::printf("  %s; o: %s up to 1\n", toUtf8(plot.yLabel()).c_str(),
              toUtf8(plot.cLabel()).c_str());
  for (std::size_t line = 0; line < kHeight; ++line) {
    const bool isEnd = line == 0 || line + 1 == kHeight;
    const std::string tick = isEnd ? shortest(line == 0 ? up.high() : up.low()) : "";
    std::string& marks = raster[line];
    marks.erase(marks.find_last_not_of(' ') + 1);
    std::printf("%7s |%s\n", tick.c_str(), marks.c_str());
  }
  std::printf("%7s +%s\n", "", std::string(kWidth, '-').c_str());
  std::printf("%9s%-*s%s\n", "", static_cast<int>(kWidth) - 4, shortest(across.low()).c_str(),
              shortest(across.high()).c_str());
  std::printf("%9s%s\n", "", toUtf8(plot.xLabel()).c_str());
}

}  // namespace

void drawFigures(const DesignView& view, std::span<const Result> results) {
  for (const Figure& figure : view.figures()) {
    const FigureProperties look = propertiesOf(figure);
    std::printf("\n%s\n", toUtf8(look.title()).c_str());
    if (const auto surface = look.as<SurfPlotProperties>()) {
      drawSurface(surface, results);
    } else if (const auto scatter = look.as<ScatterPlotProperties>()) {
      drawScatter(scatter, results);
    }
  }
}

}  // namespace motor_study
