#include <nanobind/ndarray.h>
#include <nanobind/stl/string.h>

#include <map>
#include <string>

#include "extension/errors.h"
#include "extension/foreign.h"
#include "extension/values.h"
#include "host/cell.h"
#include "host/record.h"
#include "host/text.h"
#include "host/vcos/script.h"

namespace kxsim::python {
namespace {

using vexal::ArrayPtr;
using vexal::ClassId;
namespace script = vexal::script;

// Classes -----------------------------------------------------------------------------------------

struct PythonClass {
  nb::object type;
  /// Of an enumeration: the host's members and Python's.
  std::vector<std::pair<ArrayPtr, nb::object>> members;
};

// By the name's address, which is the same for ever. Never given up: code that runs at the
// interpreter's end may need them.
using Classes = std::map<const char*, PythonClass>;
Classes& classes() {
  static auto& table = *new Classes();
  return table;
}

PythonClass makeClass(std::string_view name) {
  PythonClass made{hooks().classFor(nb::str(name.data(), name.size())), {}};
  if (PyObject_IsSubclass(made.type.ptr(), nb::type<Object>().ptr()) == 1) return made;
  for (nb::handle member : nb::list(made.type)) {
    const auto literal = nb::cast<std::string>(member.attr("name"));
    made.members.emplace_back(take(script::enumMember(name, literal)), nb::borrow(member));
  }
  return made;
}

const PythonClass& classOf(const vxArray* array) {
  const std::string_view name = vexal::className(array);
  const auto known = classes().find(name.data());
  if (known != classes().end()) return known->second;
  PythonClass made = makeClass(name);
  return classes().insert_or_assign(name.data(), std::move(made)).first->second;
}

// None for a value that is no member, which the host may hold.
nb::object memberToPython(const PythonClass& enumeration, const vxArray* array) {
  for (const auto& [hostMember, member] : enumeration.members) {
    if (vexal::equalContent(hostMember.get(), array)) return member;
  }
  return nb::none();
}

template <class T>
nb::object wrap(nb::handle type, ArrayPtr array) {
  nb::object wrapped = nb::inst_alloc(type);
  new (nb::inst_ptr<T>(wrapped)) T(std::move(array));
  nb::inst_mark_ready(wrapped);
  return wrapped;
}

// Arrays of numbers -------------------------------------------------------------------------------

// Rows are Python's vectors.
std::vector<std::size_t> shapeOf(const vxArray* array) {
  const vexal::Dims dims = vexal::dimensions(array);
  if (dims.size() == 2 && dims[0] == 1) return {dims[1]};
  return {dims.begin(), dims.end()};
}

template <class T>
nb::object view(ArrayPtr array) {
  const std::vector<std::size_t> shape = shapeOf(array.get());
  const T* const data = vexal::elements<T>(array.get()).data();
  const nb::capsule owner(array.release(),
                          [](void* held) noexcept { vexal::destroy(static_cast<vxArray*>(held)); });
  return nb::cast(
      nb::ndarray<nb::numpy, const T, nb::f_contig>(data, shape.size(), shape.data(), owner));
}

nb::object doublesToPython(ArrayPtr array) {
  const std::span<const double> data = vexal::doubleData(array.get());
  const vexal::Dims dims = vexal::dimensions(array.get());
  if (dims.size() == 2 && dims[0] == 0 && dims[1] == 0) return nb::none();
  return data.size() == 1 ? nb::object(nb::float_(data[0])) : view<double>(std::move(array));
}

nb::object logicalsToPython(ArrayPtr array) {
  const std::span<const bool> data = vexal::elements<bool>(array.get());
  return data.size() == 1 ? nb::object(nb::bool_(data[0])) : view<bool>(std::move(array));
}

nb::object int32sToPython(ArrayPtr array) {
  const std::span<const std::int32_t> data = vexal::elements<std::int32_t>(array.get());
  return data.size() == 1 ? nb::object(nb::int_(data[0])) : view<std::int32_t>(std::move(array));
}

// Text, cells and structs -------------------------------------------------------------------------

nb::object textToPython(std::u16string_view text) {
  const auto* const bytes = reinterpret_cast<const char*>(text.data());
  int order = -1;  // little-endian
  PyObject* const made = PyUnicode_DecodeUTF16(
      bytes, static_cast<Py_ssize_t>(text.size() * sizeof(char16_t)), "surrogatepass", &order);
  if (made == nullptr) throw nb::python_error();
  return nb::steal(made);
}

// A matrix of characters comes as a list of its rows.
nb::object charsToPython(const vxArray* array) {
  const std::span<const char16_t> text = vexal::elements<char16_t>(array);
  const std::size_t rows = vexal::dimensions(array)[0];
  if (rows == 1 || text.empty()) return textToPython({text.data(), text.size()});
  nb::list lines;
  for (std::size_t row = 0; row < rows; ++row) {
    std::u16string line;
    for (std::size_t k = row; k < text.size(); k += rows) line += text[k];
    lines.append(textToPython(line));
  }
  return lines;
}

nb::tuple subscripts(std::size_t k, std::span<const std::size_t> shape) {
  nb::list at;
  for (std::size_t extent : shape) {
    at.append(k % extent);
    k /= extent;
  }
  return nb::tuple(at);
}

// Rows and empty ones come as lists, all others as NumPy arrays of objects.
nb::object cellsToPython(const vxArray* array) {
  nb::list items;
  for (std::size_t k = 0; k < vexal::elementCount(array); ++k) {
    items.append(toPython(vexal::deepCopy(vexal::cellElement(array, k))));
  }
  const std::vector<std::size_t> shape = shapeOf(array);
  if (shape.size() == 1 || vexal::isEmpty(array)) return items;
  nb::list dims;
  for (std::size_t extent : shape) dims.append(extent);
  nb::object grid = nb::module_::import_("numpy").attr("empty")(nb::tuple(dims), "O");
  for (std::size_t k = 0; k < items.size(); ++k) grid[subscripts(k, shape)] = items[k];
  return grid;
}

nb::object recordToPython(const vxArray* array, std::size_t k) {
  nb::dict record;
  for (const std::string& name : vexal::fieldNames(array)) {
    record[nb::str(name.c_str(), name.size())] =
        toPython(vexal::deepCopy(vexal::field(array, name, k)));
  }
  return record;
}

nb::object structsToPython(const vxArray* array) {
  const std::size_t count = vexal::elementCount(array);
  if (count == 1) return recordToPython(array, 0);
  nb::list records;
  for (std::size_t k = 0; k < count; ++k) records.append(recordToPython(array, k));
  return records;
}

nb::object objectsToPython(ArrayPtr array, Reading reading) {
  const std::size_t count = vexal::elementCount(array.get());
  if (count == 0 && reading == Reading::Optional) return nb::none();
  if (count == 1 && reading != Reading::Many) return detail::objectToPython(std::move(array));
  return wrap<ObjectArray>(nb::type<ObjectArray>(), std::move(array));
}

nb::object plainToPython(ArrayPtr array, Reading reading) {
  switch (vexal::classId(array.get())) {
    case ClassId::Double: return doublesToPython(std::move(array));
    case ClassId::Logical: return logicalsToPython(std::move(array));
    case ClassId::Int32: return int32sToPython(std::move(array));
    case ClassId::Char: return charsToPython(array.get());
    case ClassId::Cell: return cellsToPython(array.get());
    case ClassId::Struct: return structsToPython(array.get());
    case ClassId::Object: return objectsToPython(std::move(array), reading);
  }
  return nb::none();
}

}  // namespace

nb::object detail::objectToPython(ArrayPtr array) {
  if (nb::object held = foreignObject(array.get()); held.is_valid()) return held;
  const PythonClass& python = classOf(array.get());
  if (!python.members.empty()) return memberToPython(python, array.get());
  return wrap<Object>(python.type, std::move(array));
}

nb::object numbersToPython(ArrayPtr array) { return view<double>(std::move(array)); }

nb::object toPython(ArrayPtr array, Reading reading) {
  if (array == nullptr) return nb::none();
  const ClassId classId = vexal::classId(array.get());
  const bool isOne = vexal::elementCount(array.get()) == 1;
  nb::object value = plainToPython(std::move(array), reading);
  const bool isSequence = classId == ClassId::Object || classId == ClassId::Cell || !isOne;
  if (reading != Reading::Many || isSequence) return value;
  nb::list one;
  one.append(value);
  return one;
}

Hooks& hooks() {
  static auto& held = *new Hooks();
  return held;
}

}  // namespace kxsim::python
