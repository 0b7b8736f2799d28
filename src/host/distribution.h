// Distribution objects: objects of classes under "kxsim.dist.Distribution".
//
// "random" of one gives a 1-by-1 draw, "random" with rows and columns a matrix of draws,
// all from generator(). Each maker is also a host function under its class's name with
// the same arguments. A parameter that is out of range raises
// "Vexal:host:InvalidDistribution", which says what was wrong. The parameters are the
// object's fields, for reading.
#pragma once

#include "host/array.h"

namespace vexal {

inline constexpr std::string_view kDistributionClass = "kxsim.dist.Distribution";

/// "kxsim.dist.Uniform" on [lower, upper]; both finite, lower below upper.
VEXAL_API ArrayPtr makeUniform(double lower, double upper);

/// "kxsim.dist.Normal"; finite mean, positive finite standard deviation.
VEXAL_API ArrayPtr makeNormal(double mean, double standardDeviation);

/// "kxsim.dist.Lognormal": exp of a normal; mu and sigma are those of the logarithm.
VEXAL_API ArrayPtr makeLognormal(double mu, double sigma);

/// "kxsim.dist.Triangular"; lower <= mode <= upper, lower below upper, all finite.
VEXAL_API ArrayPtr makeTriangular(double lower, double mode, double upper);

/// "kxsim.dist.Exponential"; positive finite mean.
VEXAL_API ArrayPtr makeExponential(double mean);

/// "kxsim.dist.TruncatedNormal": the normal given that it lies in [lower, upper]. Either
/// bound may be infinite; lower below upper.
VEXAL_API ArrayPtr makeTruncatedNormal(double mean, double standardDeviation, double lower,
                                       double upper);

/// "kxsim.dist.Choice": one of the elements of a cell or double array, which is copied.
/// The weights are one finite number >= 0 per element, not all 0; without them (null) all
/// elements are equally likely.
VEXAL_API ArrayPtr makeChoice(const vxArray* values, const vxArray* weights = nullptr);

}  // namespace vexal
