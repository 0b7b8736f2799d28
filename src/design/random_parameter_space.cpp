// The hand-written part of RandomParameterSpace.
#include "design/random_parameter_space.h"

#include <cstddef>
#include <utility>

#include "design/demand.h"
#include "design/host.h"
#include "design/iteration.h"
#include "design/parameter_sample.h"
#include "design/random_parameter.h"

namespace kxsim::design {

namespace {

/// One draw of the parameter's distribution as a sample of its target.
ParameterSample draw(const mf::zero::Model& model, const RandomParameter& parameter) {
  const ParameterSample sample = ParameterSample::create(model);
  sample->setParameterType(parameter->getParameterType());
  // Held for the length of the call: what draws may set the parameter's distribution anew.
  const auto distribution = vexal::copyForProperty(parameter->getDistribution());
  const host::ArrayPtr nothing = distribution ? nullptr : host::createDoubleMatrix(0, 0);
  const host::ArrayPtr value =
      host::call("random", distribution ? distribution.get() : nothing.get());
  sample->setValue(value.get());
  return sample;
}

}  // namespace

std::vector<Iteration> RandomParameterSpace::Impl::createIterations() const {
  const double count = getNumIterations();
  checkFits(demandOfDrawing(count, static_cast<double>(getParameters().size())));
  const std::size_t runs = runsOf(count);
  std::vector<Iteration> iterations;
  iterations.reserve(runs);
  const mf::zero::Model model = getModel();
  std::vector<RandomParameter> parameters;
  std::vector<ParameterSample> samples;
  std::vector<mf::zero::ElementImpl*> drawn;
  for (std::size_t i = 0; i < runs; ++i) {
    Iteration iteration = Iteration::create(model);
    // Asked anew for every run: what draws is foreign code and may change them.
    parameters.clear();
    for (const RandomParameter& parameter : getParameters()) parameters.push_back(parameter);
    samples.clear();
    drawn.clear();
    for (const RandomParameter& parameter : parameters) {
      drawn.push_back(samples.emplace_back(draw(model, parameter)).impl());
    }
    iteration->getParameterSamplesMutable().append(drawn);
    iterations.push_back(std::move(iteration));
  }
  return iterations;
}

}  // namespace kxsim::design
