// The smallest study worth the name: two controller gains, every combination of their values.
#include <cstdio>
#include <initializer_list>

#include "design/design.h"
#include "framework/zero.h"
#include "host/vexal.h"

using namespace kxsim::design;

static ValueSetParameter vary(const mf::zero::Model& model, const char16_t* name,
                              std::initializer_list<double> values) {
  const vexal::ArrayPtr cells = vexal::createCell(1, values.size());
  for (std::size_t k = 0; k < values.size(); ++k) {
    vexal::setCell(cells.get(), k, vexal::createDouble(values.begin()[k]).get());
  }
  const auto target = Variable::Builder(model).setName(name).create();
  return ValueSetParameter::Builder(model).setParameterType(target).setValues(cells.get()).create();
}

int main() {
  const auto model = mf::zero::Model::create();
  const auto study = Exhaustive::Builder(model)
                         .addParameterSpaces(vary(model, u"Kp", {0.1, 0.2, 0.4}))
                         .addParameterSpaces(vary(model, u"Ki", {1, 2}))
                         .create();

  std::printf("%g runs\n", study.numIterations());
  for (const Iteration& run : study->createIterations()) {
    for (const ParameterSample& sample : run.parameterSamples()) {
      const auto name = sample.parameterType().as<Variable>().name();
      const double value = vexal::doubleData(sample.value()).front();
      std::printf("  %s = %g", mf::zero::toUtf8(name).c_str(), value);
    }
    std::printf("\n");
  }
}
