// What the design study asks of the host: array services under their own names, and
// the one door for the study's errors.
#pragma once

#include <string_view>

#include "host/array.h"
#include "host/cell.h"
#include "host/diagnostic.h"
#include "host/function.h"
#include "host/object.h"
#include "host/text.h"
#include "package/export.h"

namespace kxsim::design::host {

using vexal::ArrayPtr;
using vexal::cellElement;
using vexal::createChar;
using vexal::createDoubleMatrix;
using vexal::deepCopy;
using vexal::dimensions;
using vexal::doubleData;
using vexal::isA;
using vexal::isCell;
using vexal::isLogicalScalarTrue;
using vexal::mutableDoubleData;

inline constexpr std::string_view kCatalog = "Kxsim:Design";

/// Hands the texts of the catalog "Kxsim:Design" to the host; again does no harm.
KXSIM_DESIGN_API void registerMessages();

/// Throws the host error "Kxsim:Design:<key>" with a single empty argument.
[[noreturn]] KXSIM_DESIGN_API void raiseDesignError(std::string_view key);

/// Calls a host function with one input and one output; what it reports is thrown as it came.
ArrayPtr call(std::string_view function, const vxArray* input);

}  // namespace kxsim::design::host
