// The extension's classes: host arrays as Python objects.
#pragma once

#include <nanobind/nanobind.h>

namespace kxsim::python {

/// Defines Array, Object, ObjectArray, and the makers of properties' accessors.
void defineObjects(nanobind::module_& m);

}  // namespace kxsim::python
