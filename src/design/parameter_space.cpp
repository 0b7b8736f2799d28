// The hand-written parts of ParameterSpace and StatisticalParameterSpace.
#include "design/parameter_space.h"

#include "design/statistical_parameter_space.h"

namespace kxsim::design {

double ParameterSpace::Impl::getNumIterations() const { return getActualNumIterations(); }

// As it stands: a study may be sized before its number of samples makes sense.
double StatisticalParameterSpace::Impl::getActualNumIterations() const { return getNumSamples(); }

}  // namespace kxsim::design
