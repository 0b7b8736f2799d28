#include "design/host.h"

#include <array>

#include "host/catalog.h"

namespace kxsim::design::host {

namespace {

constexpr std::array<vexal::MessageText, 6> kTexts{{
    {"ValuesMustBeCellArray",
     "The values of a parameter must be a cell array with one cell for each run."},
    {"RandomMethodNotFound",
     "A distribution must be an object whose class has a method named 'random'."},
    {"InvalidSimState",
     "A simulation state must be an object of class 'Kinetra.SimState.ModelSimState'."},
    {"SpaceContainsItself",
     "A parameter space is among its own descendants, so its iterations never end. Take it out of "
     "the 'ParameterSpaces' that lead back to it."},
    {"InvalidDesignMatrix",
     "The function 'kxsim.design.fullfact' returned a design matrix that does not fit the level "
     "counts it was given: one row for each factor, one column for each run, levels from 1 on."},
    {"TooManyIterations",
     "The study has more iterations than this machine's memory can hold. Reduce the number of "
     "samples or of levels."},
}};

}  // namespace

void registerMessages() { vexal::registerCatalog(kCatalog, kTexts); }

void raiseDesignError(std::string_view key) {
  registerMessages();
  vexal::throwDiagnostic(*vexal::createDiagnostic({kCatalog, key}, ""));
}

ArrayPtr call(std::string_view function, const vxArray* input) {
  vxArray* output = nullptr;
  const auto diagnostic = vexal::callFunction(1, &output, 1, &input, function);
  ArrayPtr owned(output);
  if (diagnostic) vexal::throwDiagnostic(*diagnostic);
  return owned;
}

}  // namespace kxsim::design::host
