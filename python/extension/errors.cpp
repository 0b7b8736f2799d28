#include "extension/errors.h"

#include <nanobind/stl/string.h>

#include <cstdarg>
#include <string>

namespace kxsim::python {
namespace {

constexpr const char* kPythonCatalog = "Python";

// The exception that is inside the host, and what the host knows it by.
struct Travelling {
  nb::object exception;
  std::string catalog;
  std::string key;
};

// Both are kept for ever: code that runs at the interpreter's end may need them.
nb::object& errorClass() {
  static auto& held = *new nb::object();
  return held;
}
Travelling& travelling() {
  static auto& held = *new Travelling();
  return held;
}

// The travelling exception when the message is its own. Whatever it was, it has arrived.
nb::object arrive(const vexal::Diagnostic::Item& item) {
  Travelling arrived = std::exchange(travelling(), {});
  const bool isOwn = arrived.catalog == item.catalog && arrived.key == item.key;
  return isOwn ? std::move(arrived.exception) : nb::object();
}

// Raises what is no error but a request to stop, as it was.
void raiseIfRequest(const nb::object& exception) {
  if (!exception.is_valid() || PyErr_GivenExceptionMatches(exception.ptr(), PyExc_Exception)) {
    return;
  }
  PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(exception.ptr())), exception.ptr());
  throw nb::python_error();
}

nb::list furtherTexts(const vexal::Diagnostic& diagnostic) {
  nb::list texts;
  for (std::size_t k = 1; k < diagnostic.itemCount(); ++k) {
    texts.append(nb::str(diagnostic.item(k).text.c_str()));
  }
  return texts;
}

}  // namespace

void setErrorClass(nb::object given) { errorClass() = std::move(given); }

void raiseDiagnostic(const vexal::Diagnostic& diagnostic) {
  const vexal::Diagnostic::Item& item = diagnostic.item(0);
  const nb::object cause = arrive(item);
  raiseIfRequest(cause);
  const nb::object error = errorClass()(nb::str(item.catalog.c_str()), nb::str(item.key.c_str()),
                                        nb::str(item.text.c_str()), furtherTexts(diagnostic));
  if (cause.is_valid()) PyException_SetCause(error.ptr(), cause.inc_ref().ptr());
  PyErr_SetObject(errorClass().ptr(), error.ptr());
  throw nb::python_error();
}

void raiseTypeError(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  PyErr_FormatV(PyExc_TypeError, format, arguments);
  va_end(arguments);
  throw nb::python_error();
}

void throwIntoHost(nb::python_error& raised) {
  Travelling carried{nb::borrow(raised.value()), kPythonCatalog,
                     nb::cast<std::string>(raised.type().attr("__name__"))};
  const nb::str text(raised.value());
  if (errorClass().is_valid() &&
      PyObject_IsInstance(raised.value().ptr(), errorClass().ptr()) == 1) {
    carried.catalog = nb::cast<std::string>(raised.value().attr("catalog"));
    carried.key = nb::cast<std::string>(raised.value().attr("key"));
  }
  vexal::Diagnostic diagnostic;
  diagnostic.add({carried.catalog, carried.key}, std::string(text.c_str()));
  travelling() = std::move(carried);
  throw vexal::HostError(std::move(diagnostic));
}

}  // namespace kxsim::python
