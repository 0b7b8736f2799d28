// Numbers and tables as text for the terminal.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace motor_study {

/// The number with so many decimals; "-" for NaN, which stands for "none".
std::string fixed(double value, int decimals);

/// Rows of right-aligned cells, each column as wide as its widest cell.
class Table {
 public:
  void add(std::vector<std::string> row) { rows_.push_back(std::move(row)); }
  void print() const;

 private:
  std::vector<std::vector<std::string>> rows_;
};

}  // namespace motor_study
