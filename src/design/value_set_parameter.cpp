// The hand-written part of ValueSetParameter.
#include "design/value_set_parameter.h"

#include <cstdint>

#include "design/demand.h"
#include "design/host.h"
#include "design/iteration.h"
#include "design/parameter_sample.h"

namespace kxsim::design {

// A study enumerates cells, so only a cell array can be a value set. Null is
// refused too: once the element exists, its values cannot be cleared.
void ValueSetParameter::Impl::aboutToSetValues(const vxArray* proposed) const {
  if (!host::isCell(proposed)) {
    host::raiseDesignError("ValuesMustBeCellArray");
  }
}

double ValueSetParameter::Impl::getActualNumIterations() const {
  const vxArray* values = getValues();
  if (!values) return 0.0;
  std::uint64_t count = 1;
  for (const std::size_t dimension : host::dimensions(values)) count *= dimension;
  return static_cast<double>(count);
}

std::vector<Iteration> ValueSetParameter::Impl::createIterations() const {
  checkFits(demandOfDrawing(getActualNumIterations(), 1.0));
  std::vector<Iteration> iterations;
  const mf::zero::Model model = getModel();
  const ParameterType target = getParameterType();
  // Asked anew each time round: an observer of what is created here may change the values.
  for (std::uint64_t k = 0; static_cast<double>(k) < getActualNumIterations(); ++k) {
    const Iteration iteration = Iteration::create(model);
    const ParameterSample sample = ParameterSample::create(model);
    sample->setParameterType(target);
    sample->setValue(host::cellElement(getValues(), k));
    iteration->getParameterSamplesMutable().add(sample);
    iterations.push_back(iteration);
  }
  return iterations;
}

}  // namespace kxsim::design
