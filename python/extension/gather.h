// Tables out of elements, without a Python object for each.
#pragma once

#include <nanobind/nanobind.h>

#include <string_view>

#include "extension/values.h"

namespace kxsim::python {

/// Of each object its collection, of each item in that a key object and a value: a list of
/// (key, values), one value per object. Values are a NumPy array when each is one number, else a
/// list, with None where an object has no item with that key. An object with several items of one
/// key fills as many columns of that key. A key that is an empty reference is None.
nb::list gather(const ObjectArray& objects, std::string_view collection, std::string_view key,
                std::string_view value);

}  // namespace kxsim::python
