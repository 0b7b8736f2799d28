// The hand-written part of RandomParameter.
#include "design/random_parameter.h"

#include "design/host.h"

namespace kxsim::design {

namespace {

/// Asks the host whether the object has a method "random". The host gets a copy, so that asking
/// cannot change what the caller holds; whatever goes wrong counts as no.
bool hasRandomMethod(const vxArray* object) {
  const host::ArrayPtr copy = host::deepCopy(object);
  const host::ArrayPtr method = host::createChar("random");
  const vxArray* inputs[] = {copy.get(), method.get()};
  vxArray* output = nullptr;
  const auto diagnostic = vexal::callFunction(1, &output, 2, inputs, "ismethod");
  const host::ArrayPtr answer(output);
  return !diagnostic && host::isLogicalScalarTrue(answer.get());
}

}  // namespace

void RandomParameter::Impl::aboutToSetDistribution(const vxArray* proposed) const {
  if (!proposed || !hasRandomMethod(proposed)) {
    host::raiseDesignError("RandomMethodNotFound");
  }
}

}  // namespace kxsim::design
