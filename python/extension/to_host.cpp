#include <cstring>
#include <string>

#include "extension/errors.h"
#include "extension/foreign.h"
#include "extension/values.h"
#include "host/cell.h"
#include "host/record.h"
#include "host/text.h"

namespace kxsim::python {
namespace {

using vexal::ArrayPtr;

// What contains itself ends in a RecursionError.
class Nesting {
 public:
  Nesting() {
    if (Py_EnterRecursiveCall(" while converting a value for the host")) throw nb::python_error();
  }
  Nesting(const Nesting&) = delete;
  Nesting& operator=(const Nesting&) = delete;
  ~Nesting() { Py_LeaveRecursiveCall(); }
};

ArrayPtr fromInteger(PyObject* value) {
  const double number = PyLong_AsDouble(value);
  if (number == -1.0 && PyErr_Occurred()) throw nb::python_error();
  const nb::object back = nb::steal(PyLong_FromDouble(number));
  if (PyObject_RichCompareBool(back.ptr(), value, Py_EQ) != 1) {
    PyErr_Format(PyExc_OverflowError,
                 "the host's numbers are doubles, which cannot hold %S exactly", value);
    throw nb::python_error();
  }
  return vexal::createDouble(number);
}

// Writes the code points as UTF-16, lone surrogates as they are, and returns where it ended.
template <class Unit>
char16_t* writeText(const Unit* text, std::size_t length, char16_t* to) {
  for (std::size_t k = 0; k < length; ++k) {
    if constexpr (sizeof(Unit) > sizeof(char16_t)) {
      if (text[k] > 0xFFFF) {
        *to++ = static_cast<char16_t>(0xD800 + ((text[k] - 0x10000) >> 10));
        *to++ = static_cast<char16_t>(0xDC00 + ((text[k] - 0x10000) & 0x3FF));
        continue;
      }
    }
    *to++ = static_cast<char16_t>(text[k]);
  }
  return to;
}

ArrayPtr fromText(PyObject* value) {
  const auto length = static_cast<std::size_t>(PyUnicode_GET_LENGTH(value));
  const bool isWide = PyUnicode_KIND(value) == PyUnicode_4BYTE_KIND;
  std::u16string text(isWide ? 2 * length : length, u'\0');
  char16_t* end = text.data();
  switch (PyUnicode_KIND(value)) {
    case PyUnicode_1BYTE_KIND: end = writeText(PyUnicode_1BYTE_DATA(value), length, end); break;
    case PyUnicode_2BYTE_KIND: end = writeText(PyUnicode_2BYTE_DATA(value), length, end); break;
    default: end = writeText(PyUnicode_4BYTE_DATA(value), length, end); break;
  }
  return vexal::createChar({text.data(), static_cast<std::size_t>(end - text.data())});
}

ArrayPtr fromSequence(PyObject* value) {
  const Nesting nesting;
  // A tuple of its own: converting an item may run code that changes the list.
  const auto items = nb::steal<nb::tuple>(PySequence_Tuple(value));
  if (!items.is_valid()) throw nb::python_error();
  const std::size_t dims[] = {1, items.size()};
  return makeCell(dims, items);
}

// Valid for as long as the key.
std::string_view fieldName(PyObject* key) {
  if (!PyUnicode_Check(key)) {
    raiseTypeError("the fields of a struct are named by str, not by %.200s", Py_TYPE(key)->tp_name);
  }
  Py_ssize_t size = 0;
  const char* const text = PyUnicode_AsUTF8AndSize(key, &size);
  if (text == nullptr) throw nb::python_error();
  return {text, static_cast<std::size_t>(size)};
}

ArrayPtr fromDict(PyObject* dict) {
  const Nesting nesting;
  // Copied first: converting a value may run code that changes the dict.
  std::vector<std::string_view> names;
  std::vector<nb::object> values;
  PyObject* key = nullptr;
  PyObject* value = nullptr;
  for (Py_ssize_t at = 0; PyDict_Next(dict, &at, &key, &value) != 0;) {
    names.push_back(fieldName(key));
    values.push_back(nb::borrow(value));
  }
  ArrayPtr record = vexal::createStruct(names);
  const std::span<const std::string> fields = vexal::fieldNames(record.get());
  for (std::size_t k = 0; k < values.size(); ++k) {
    vexal::setField(record.get(), fields[k], toHost(values[k]).get());
  }
  return record;
}

// Numbers behind the buffer protocol --------------------------------------------------------------

class Buffer {
 public:
  explicit Buffer(PyObject* value) {
    isOpen_ = PyObject_GetBuffer(value, &view_, PyBUF_STRIDES | PyBUF_FORMAT) == 0;
    if (!isOpen_) PyErr_Clear();
  }
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;
  ~Buffer() {
    if (isOpen_) PyBuffer_Release(&view_);
  }

  /// The format's one letter in native byte order; 0 for everything else, dates of NumPy among
  /// them, which show bytes without strides.
  char kind() const noexcept {
    if (!isOpen_ || view_.format == nullptr) return 0;
    if (view_.ndim > 0 && view_.strides == nullptr) return 0;
    const char* format = view_.format;
    if (std::strchr("@=<", *format) != nullptr && *format != 0) ++format;
    return format[0] != 0 && format[1] == 0 ? format[0] : '\0';
  }
  const Py_buffer& view() const noexcept { return view_; }

 private:
  Py_buffer view_{};
  bool isOpen_;
};

std::vector<std::size_t> dimensionsOf(const Py_buffer& view) {
  std::vector<std::size_t> dims(view.shape, view.shape + view.ndim);
  while (dims.size() < 2) dims.insert(dims.begin(), 1);
  return dims;
}

template <class To, class From>
To converted(From from) {
  if constexpr (std::is_integral_v<From> && sizeof(From) == sizeof(double)) {
    constexpr auto kLargest = From{1} << 53;
    if (from > kLargest || (std::is_signed_v<From> && from < -kLargest)) {
      PyErr_SetString(PyExc_OverflowError,
                      "the host's numbers are doubles, which cannot hold integers beyond 2**53");
      throw nb::python_error();
    }
  }
  return static_cast<To>(from);
}

// Walks an N-dimensional buffer in column-major order.
template <class From, class To>
void copyStrided(const Py_buffer& view, std::span<To> to) {
  const auto rank = static_cast<std::size_t>(view.ndim);
  std::vector<Py_ssize_t> index(rank, 0);
  const char* at = static_cast<const char*>(view.buf);
  for (To& element : to) {
    From from;
    std::memcpy(&from, at, sizeof from);
    element = converted<To>(from);
    for (std::size_t k = 0; k < rank; ++k) {
      at += view.strides[k];
      if (++index[k] < view.shape[k]) break;
      at -= view.strides[k] * view.shape[k];
      index[k] = 0;
    }
  }
}

template <class From, class To>
ArrayPtr copied(const Py_buffer& view, vexal::ClassId classId) {
  ArrayPtr array = vexal::createArray(classId, dimensionsOf(view));
  const std::span<To> to = vexal::mutableElements<To>(array.get());
  if (std::is_same_v<From, To> && PyBuffer_IsContiguous(&view, 'F')) {
    if (!to.empty()) std::memcpy(to.data(), view.buf, to.size_bytes());
  } else {
    copyStrided<From, To>(view, to);
  }
  return array;
}

template <class From>
ArrayPtr numbers(const Py_buffer& view) {
  return copied<From, double>(view, vexal::ClassId::Double);
}

// Null when the buffer holds no numbers.
ArrayPtr fromBuffer(PyObject* value) {
  const Buffer buffer(value);
  const Py_buffer& view = buffer.view();
  switch (buffer.kind()) {
    case 'd': return numbers<double>(view);
    case 'f': return numbers<float>(view);
    case '?': return copied<bool, bool>(view, vexal::ClassId::Logical);
    case 'b': return numbers<signed char>(view);
    case 'B': return numbers<unsigned char>(view);
    case 'h': return numbers<short>(view);
    case 'H': return numbers<unsigned short>(view);
    case 'i': return numbers<int>(view);
    case 'I': return numbers<unsigned>(view);
    case 'l': return numbers<long>(view);
    case 'L': return numbers<unsigned long>(view);
    case 'q': return numbers<long long>(view);
    case 'Q': return numbers<unsigned long long>(view);
    default: return nullptr;
  }
}

// Masked arrays show the numbers behind the mask too.
bool hasNumbers(PyObject* value) {
  return PyObject_CheckBuffer(value) && !PyBytes_Check(value) && !PyByteArray_Check(value) &&
         !PyObject_HasAttrString(value, "mask");
}

ArrayPtr adapted(nb::handle value) {
  const nb::object stand = hooks().adapt(value);
  if (stand.is(value)) return makeForeign(nb::borrow(value));
  const Nesting nesting;
  return toHost(stand);
}

}  // namespace

ArrayPtr toHost(nb::handle value) {
  PyObject* const object = value.ptr();
  if (PyFloat_Check(object)) return vexal::createDouble(PyFloat_AS_DOUBLE(object));
  if (PyBool_Check(object)) return vexal::createLogical(object == Py_True);
  if (PyLong_CheckExact(object)) return fromInteger(object);
  if (PyUnicode_Check(object)) return fromText(object);
  if (nb::inst_check(value) && nb::isinstance<Array>(value)) {
    const Array& held = *nb::inst_ptr<Array>(value);
    if (held.array == nullptr) raiseTypeError("the object has not been initialised");
    return vexal::deepCopy(held.array.get());
  }
  if (value.is_none()) return vexal::createDoubleMatrix(0, 0);
  if (PyList_Check(object) || PyTuple_Check(object)) return fromSequence(object);
  if (PyDict_Check(object)) return fromDict(object);
  if (hasNumbers(object)) {
    if (ArrayPtr array = fromBuffer(object)) return array;
  }
  return adapted(value);
}

ArrayPtr makeCell(std::span<const std::size_t> dims, const nb::tuple& items) {
  ArrayPtr cell = vexal::createArray(vexal::ClassId::Cell, dims);
  const std::size_t count = items.size();
  if (count != vexal::elementCount(cell.get())) {
    raiseTypeError("a cell array of this size needs as many items");
  }
  for (std::size_t k = 0; k < count; ++k) {
    PyObject* const item = PyTuple_GET_ITEM(items.ptr(), static_cast<Py_ssize_t>(k));
    vexal::setCell(cell.get(), k, toHost(item).get());
  }
  return cell;
}

Inputs::Inputs(const nb::tuple& arguments, const nb::dict& values) {
  const std::size_t count = arguments.size();
  owned_.reserve(count + 1);
  arrays_.reserve(count + 1);
  bool hasValues = values.size() > 0;
  for (std::size_t k = 0; k < count; ++k) {
    const nb::handle argument = PyTuple_GET_ITEM(arguments.ptr(), static_cast<Py_ssize_t>(k));
    const bool isJoined = hasValues && PyDict_Check(argument.ptr());
    hasValues &= !isJoined;
    isJoined ? add(argument | values) : add(argument);
  }
  if (hasValues) add(values);
}

void Inputs::add(nb::handle value) {
  owned_.push_back(toHost(value));
  arrays_.push_back(owned_.back().get());
}

}  // namespace kxsim::python
