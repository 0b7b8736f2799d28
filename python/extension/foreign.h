// Python objects in host arrays.
#pragma once

#include <nanobind/nanobind.h>

#include "host/array.h"

namespace kxsim::python {

/// A 1-by-1 foreign object that keeps the Python object, which answers the host's calls by name
/// as Hooks::findMethod says.
vexal::ArrayPtr makeForeign(nanobind::object object);

/// Lets go of the Python objects in foreign objects, except those of one class; the others answer
/// no call from then on.
void releaseForeign(nanobind::handle kept);

/// The Python object in a foreign object; invalid for everything else.
nanobind::object foreignObject(const vxArray* array);

}  // namespace kxsim::python
