// The base of every fixture that works with design studies: studies made and read in a
// line, host functions replaced for a time.
#pragma once

#include <functional>
#include <initializer_list>
#include <limits>
#include <span>
#include <string>
#include <vector>

#include "design/exhaustive.h"
#include "design/iteration.h"
#include "design/parameter_sample.h"
#include "design/random_parameter.h"
#include "design/random_parameter_space.h"
#include "design/sequential.h"
#include "design/value_set_parameter.h"
#include "design/variable.h"
#include "host/cell.h"
#include "host/function.h"
#include "host/text.h"
#include "package/package_test.h"

namespace kxsim::testing {

/// A host function of one output that a test puts in the place of another.
inline vexal::HostFunction function(std::function<vexal::ArrayPtr(const vexal::Call&)> body) {
  return {{}, [body = std::move(body)](vexal::Call& call) { call.setOutput(0, body(call)); }};
}

class StudyTest : public PackageTest {
 protected:
  using Numbers = std::vector<double>;
  using Spaces = std::initializer_list<design::ParameterSpace>;

  static constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  static constexpr double kInfinity = std::numeric_limits<double>::infinity();

  static vexal::ArrayPtr cellRow(const Numbers& numbers) {
    vexal::ArrayPtr cell = vexal::createCell(1, numbers.size());
    for (std::size_t k = 0; k < numbers.size(); ++k) {
      vexal::setCell(cell.get(), k, vexal::createDouble(numbers[k]).get());
    }
    return cell;
  }

  design::Variable variable(std::u16string_view name) {
    return design::Variable::Builder(model()).setName(name).create();
  }
  /// A parameter of a variable of that name with one value for each number.
  design::ValueSetParameter values(std::u16string_view name, const Numbers& numbers) {
    return design::ValueSetParameter::Builder(model())
        .setValues(cellRow(numbers).get())
        .setParameterType(variable(name))
        .create();
  }
  /// A parameter of a variable of that name. Its distribution is not checked.
  design::RandomParameter drawn(std::u16string_view name, const vexal::ArrayPtr& distribution) {
    return design::RandomParameter::Builder(model())
        .setDistribution(distribution.get())
        .setParameterType(variable(name))
        .create();
  }
  design::RandomParameterSpace samples(double count,
                                       std::initializer_list<design::RandomParameter> of = {}) {
    design::RandomParameterSpace::Builder builder(model());
    builder.setNumSamples(count);
    for (const design::RandomParameter& parameter : of) builder.addParameters(parameter);
    return builder.create();
  }
  design::Exhaustive exhaustive(Spaces spaces) { return combined<design::Exhaustive>(spaces); }
  design::Sequential sequential(Spaces spaces) { return combined<design::Sequential>(spaces); }

  /// The samples of each run by name and value, "a=1 b=2".
  static Lines runs(const std::vector<design::Iteration>& iterations) {
    Lines lines;
    for (const design::Iteration& iteration : iterations) lines.push_back(text(iteration));
    return lines;
  }
  static Lines runsOf(const design::ParameterSpace& space) {
    return runs(space->createIterations());
  }

 private:
  template <class Space>
  Space combined(Spaces spaces) {
    typename Space::Builder builder(model());
    for (const design::ParameterSpace& space : spaces) builder.addParameterSpaces(space);
    return builder.create();
  }
  static std::string text(const design::Iteration& iteration) {
    std::string line;
    for (const design::ParameterSample& sample : iteration.parameterSamples()) {
      if (!line.empty()) line += ' ';
      const auto target = sample.parameterType().as<design::Variable>();
      line += target ? mf::zero::toUtf8(target.name()) : "?";
      line += '=' + vexal::formatNumber(vexal::doubleData(sample.value())[0]);
    }
    return line;
  }
};

}  // namespace kxsim::testing
