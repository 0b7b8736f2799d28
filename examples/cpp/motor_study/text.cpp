#include "text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace motor_study {

namespace {

/// Characters, not bytes: those that continue one in UTF-8 take no room.
std::size_t widthOf(std::string_view text) {
  return static_cast<std::size_t>(
      std::ranges::count_if(text, [](char c) { return (c & 0xC0) != 0x80; }));
}

}  // namespace

std::string fixed(double value, int decimals) {
  if (std::isnan(value)) return "-";
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%.*f", decimals, value);
  return text.data();
}

void Table::print() const {
  std::vector<std::size_t> widths;
  for (const auto& row : rows_) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t k = 0; k < row.size(); ++k) {
      widths[k] = std::max(widths[k], widthOf(row[k]));
    }
  }
  for (const auto& row : rows_) {
    std::string line;
    for (std::size_t k = 0; k < row.size(); ++k) {
      line.append(2 + widths[k] - widthOf(row[k]), ' ').append(row[k]);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    std::printf("%s\n", line.c_str());
  }
}

}  // namespace motor_study
