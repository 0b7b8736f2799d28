// The hand-written part of RandomParameterSpace.
#include "design/random_parameter_space.h"

#include <cstdint>

#include "design/generation.h"
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
  const double runs = getNumIterations();
  generation::checkFitsMemory(runs, getParameters().size());
  std::vector<Iteration> iterations;
  const mf::zero::Model model = getModel();
  for (std::uint64_t i = 0; runs > static_cast<double>(i); ++i) {
    const Iteration iteration = Iteration::create(model);
    auto samples = iteration->getParameterSamplesMutable();
    for (const RandomParameter& parameter : getParameters().toContainer()) {
      samples.add(draw(model, parameter));
    }
    iterations.push_back(iteration);
  }
  return iterations;
}

}  // namespace kxsim::design
