// The hand-written part of RandomParameterSpace.
#include "design/random_parameter_space.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "design/demand.h"
#include "design/host.h"
#include "design/iteration.h"
#include "design/parameter_sample.h"
#include "design/random_parameter.h"

namespace kxsim::design {

namespace {

/// What a parameter draws from, kept from draw to draw for as long as it stays the same: what
/// draws is foreign code and may set the parameter's distribution anew.
class Source {
 public:
  /// The distribution that the parameter has now, or an empty array.
  const vxArray* of(const RandomParameter& parameter) {
    const vxArray* const distribution = parameter->getDistribution();
    if (!kept_ || !vexal::sharesContent(kept_.get(), distribution)) {
      kept_ = distribution ? host::deepCopy(distribution) : host::createDoubleMatrix(0, 0);
    }
    return kept_.get();
  }

 private:
  host::ArrayPtr kept_;
};

/// One draw of the parameter's distribution as a sample of its target.
ParameterSample draw(const mf::zero::Model& model, const RandomParameter& parameter,
                     Source& source) {
  ParameterSample sample = ParameterSample::create(model);
  sample->setParameterType(parameter->getParameterType());
  const host::ArrayPtr value = host::call("random", source.of(parameter));
  sample->setValue(value.get());
  return sample;
}

/// Makes room at what the samples of the first run are for, for those of as many further runs.
void expectSamples(const std::vector<ParameterSample>& samples, std::size_t runs) {
  for (const ParameterSample& sample : samples) {
    if (!sample.isValid()) continue;  // what draws may have destroyed it
    if (const auto target = sample->getParameterType()) target->reserveReferrers(runs);
  }
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
  std::vector<mf::zero::ElementImpl*> present;
  std::vector<Source> sources;
  std::vector<ParameterSample> samples;
  std::vector<mf::zero::ElementImpl*> drawn;
  for (std::size_t i = 0; i < runs; ++i) {
    Iteration iteration = Iteration::create(model);
    // Asked anew for every run: what draws is foreign code and may change them.
    present.clear();
    getParameters().copyTo(present);
    if (!std::ranges::equal(parameters, present, {}, &RandomParameter::impl)) {
      parameters = getParameters().toContainer();
      sources.resize(parameters.size());
    }
    samples.clear();
    drawn.clear();
    for (std::size_t k = 0; k < parameters.size(); ++k) {
      samples.push_back(draw(model, parameters[k], sources[k]));
      drawn.push_back(samples.back().impl());
    }
    iteration->getParameterSamplesMutable().append(drawn);
    iterations.push_back(std::move(iteration));
    if (i == 0) expectSamples(samples, runs - 1);
  }
  return iterations;
}

}  // namespace kxsim::design
