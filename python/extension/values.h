// Values both ways.
//
//   Python                              host
//   float, int                          1-by-1 double        (int32 comes back as int)
//   bool                                1-by-1 logical
//   str                                 character row
//   None                                empty 0-by-0 double  (the host's "nothing")
//   list, tuple                         1-by-n cell array    (comes back as list)
//   dict with str keys                  1-by-1 struct        (1-by-n comes back as list of dicts)
//   numbers behind the buffer protocol  double or logical array; a vector is a row and back
//   objects of host classes             themselves
//   everything else                     what the adapter of values.cpp makes of it: one of the
//                                       above, or the thing itself as a foreign object
//
// Arrays come back as read-only NumPy views, which share the host's content and keep it.
#pragma once

#include <nanobind/nanobind.h>

#include <memory>
#include <span>
#include <vector>

#include "host/array.h"

namespace kxsim::python {

namespace nb = nanobind;

/// A host array as Python holds it; what carries an array as it is.
struct Array {
  Array() = default;
  explicit Array(vexal::ArrayPtr given) noexcept : array(std::move(given)) {}
  Array(const Array& other) : array(vexal::deepCopy(other.array.get())) {}
  vexal::ArrayPtr array;
};

/// A 1-by-1 object; the classes made from descriptions derive from it.
struct Object : Array {
  using Array::Array;
  explicit Object(const Array& other) : Array(other) {}
  /// Once asked for; so that other threads may look up what is a key already.
  mutable std::uint64_t identity = 0;
};

/// Objects as a sequence whose items come into being as they are looked at.
struct ObjectArray : Array {
  using Array::Array;
};

/// How a result is to be read.
enum class Reading : std::uint8_t {
  Plain,     ///< one object as itself, more or none as a sequence
  Optional,  ///< an empty array as None
  Many,      ///< always as a sequence, also when there is one
};

/// The array of a Python value. Raises TypeError for what has no counterpart, OverflowError for
/// an integer that a double cannot hold, and RecursionError for what contains itself.
vexal::ArrayPtr toHost(nb::handle value);

/// The Python value of an array, which is taken over; None for null.
nb::object toPython(vexal::ArrayPtr array, Reading reading = Reading::Plain);

/// A view on a double array as it is, also when it holds one number or none.
nb::object numbersToPython(vexal::ArrayPtr array);

/// The arrays of a call's arguments. Keyword values, by name, join the first dict among the
/// arguments, or follow them as one.
class Inputs {
 public:
  explicit Inputs(const nb::tuple& arguments, const nb::dict& values = {});
  std::span<const vxArray* const> arrays() const noexcept { return arrays_; }

 private:
  void add(nb::handle value);
  std::vector<vexal::ArrayPtr> owned_;
  std::vector<const vxArray*> arrays_;
};

/// What is decided in Python.
struct Hooks {
  /// The Python class of a host class, by name: a subclass of Object or an enumeration.
  nb::object classFor;
  /// What stands for a value that is none of the built-in kinds; the value itself to make it a
  /// foreign object. Raises TypeError for what has no counterpart.
  nb::object adapt;
  /// The callable behind a method name of a foreign object, or None.
  nb::object findMethod;
};
Hooks& hooks();

/// An N-dimensional cell array of the items, column-major.
vexal::ArrayPtr makeCell(std::span<const std::size_t> dims, const nb::tuple& items);

namespace detail {

/// The value that a 1-by-1 object array stands for.
nb::object objectToPython(vexal::ArrayPtr array);

}  // namespace detail

}  // namespace kxsim::python
