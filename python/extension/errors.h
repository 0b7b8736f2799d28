// Failures on their way between the host and Python.
//
// A diagnostic becomes one exception, kxsim.HostError. An exception that Python code raises
// inside a host call travels through the host as a diagnostic with its own text, under the
// catalog "Python" and its type's name, and arrives as the cause of the HostError that comes
// out; one that is no Exception (KeyboardInterrupt, SystemExit) arrives as itself.
#pragma once

#include <nanobind/nanobind.h>

#include <utility>

#include "host/diagnostic.h"
#include "host/vcos/script.h"

namespace kxsim::python {

namespace nb = nanobind;

/// The class of exceptions, called with catalog, key, text and the texts of further messages.
void setErrorClass(nb::object errorClass);

/// Raises the Python exception of a diagnostic.
[[noreturn]] void raiseDiagnostic(const vexal::Diagnostic& diagnostic);

/// Raises a TypeError.
[[noreturn]] void raiseTypeError(const char* format, ...);

/// Throws the HostError that carries a Python exception through the host.
[[noreturn]] void throwIntoHost(nb::python_error& raised);

/// The value of a result; raises its diagnostic.
template <class T>
T take(vexal::script::Result<T> result) {
  if (!result) [[unlikely]]
    raiseDiagnostic(*result.error);
  return std::move(*result);
}

}  // namespace kxsim::python
