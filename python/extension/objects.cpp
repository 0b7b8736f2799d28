#include "extension/objects.h"

#include <nanobind/stl/string.h>
#include <nanobind/stl/string_view.h>

#include <string>

#include "extension/errors.h"
#include "extension/values.h"
#include "host/text.h"
#include "host/vcos/script.h"

namespace kxsim::python {
namespace {

namespace script = vexal::script;

const vxArray* arrayOf(const Array& object) {
  if (object.array == nullptr) raiseTypeError("the object has not been initialised");
  return object.array.get();
}

// Objects -----------------------------------------------------------------------------------------

nb::object equals(const Object& self, nb::handle other) {
  if (!nb::isinstance<Object>(other)) return nb::borrow(Py_NotImplemented);
  const Object& that = *nb::inst_ptr<Object>(other);
  return nb::bool_(take(script::same(arrayOf(self), arrayOf(that))));
}

std::size_t hash(const Object& self) {
  if (self.identity == 0) self.identity = take(script::identity(arrayOf(self)));
  if (self.identity == 0) raiseTypeError("a value of the host is not hashable; its elements are");
  return static_cast<std::size_t>(self.identity >> 4);  // addresses end in zeros
}

void construct(Object* self, std::string_view className, nb::tuple arguments, nb::dict values) {
  const Inputs inputs(arguments, values);
  new (self) Object(take(script::construct(className, inputs.arrays())));
}

// A property as a callable: cheaper than a lookup by name on each access, for `property` calls it.
nb::object makeGetter(std::string name, bool isOptional) {
  const Reading reading = isOptional ? Reading::Optional : Reading::Plain;
  return nb::cpp_function([name = std::move(name), reading](const Object& self) {
    return toPython(take(script::get(arrayOf(self), name)), reading);
  });
}

nb::object makeSetter(std::string name) {
  return nb::cpp_function(
      [name = std::move(name)](Object& self, nb::handle value) {
        arrayOf(self);
        const vexal::ArrayPtr array = toHost(value);
        take(script::set(self.array.get(), name, array.get()));
      },
      nb::arg(), nb::arg().none());
}

nb::object invoke(const Object& self, std::string_view method, nb::tuple arguments, Reading reading,
                  nb::dict values) {
  const Inputs inputs(arguments, values);
  return toPython(take(script::invoke(arrayOf(self), method, inputs.arrays())), reading);
}

// Object arrays -----------------------------------------------------------------------------------

std::size_t lengthOf(const ObjectArray& self) { return vexal::elementCount(arrayOf(self)); }

nb::object itemAt(const ObjectArray& self, std::size_t k) {
  return detail::objectToPython(take(script::element(arrayOf(self), k)));
}

nb::object sliceOf(const ObjectArray& self, const nb::slice& slice) {
  const auto [start, stop, step, count] = slice.compute(lengthOf(self));
  nb::list items;
  for (std::size_t k = 0; k < count; ++k) {
    items.append(itemAt(self, static_cast<std::size_t>(start + static_cast<Py_ssize_t>(k) * step)));
  }
  return items;
}

nb::object getItem(const ObjectArray& self, nb::handle key) {
  if (PySlice_Check(key.ptr())) return sliceOf(self, nb::borrow<nb::slice>(key));
  const auto size = static_cast<Py_ssize_t>(lengthOf(self));
  Py_ssize_t k = PyNumber_AsSsize_t(key.ptr(), PyExc_IndexError);
  if (k == -1 && PyErr_Occurred()) throw nb::python_error();
  if (k < 0) k += size;
  if (k < 0 || k >= size) throw nb::index_error("index out of range");
  return itemAt(self, static_cast<std::size_t>(k));
}

}  // namespace

void defineObjects(nb::module_& m) {
  nb::class_<Array>(m, "Array", "A host array, as it is.")
      .def_prop_ro("host_class", [](const Array& self) { return vexal::className(arrayOf(self)); })
      .def(
          "describe", [](const Array& self) { return vexal::describe(arrayOf(self)); },
          "Size, class and content in a few words.");

  nb::class_<Object, Array>(m, "Object", "A host object.", nb::is_weak_referenceable())
      .def(nb::init<const Array&>())
      .def("__init__", &construct, nb::arg(), nb::arg(), nb::arg() = nb::dict(),
           "A new object of a class by name, from a tuple of arguments and keyword values.")
      .def("__eq__", &equals, nb::arg().none())
      .def("__hash__", &hash)
      .def_prop_ro(
          "is_valid",
          [](const Object& self) { return take(script::inspect(arrayOf(self))).isValid; },
          "Whether the object still refers to something.");

  nb::class_<ObjectArray, Array>(m, "ObjectArray",
                                 "A sequence of host objects, made as they are "
                                 "looked at.")
      .def("__len__", &lengthOf)
      .def("__getitem__", &getItem);

  nb::enum_<Reading>(m, "Reading")
      .value("PLAIN", Reading::Plain)
      .value("OPTIONAL", Reading::Optional)
      .value("MANY", Reading::Many);

  m.def(
      "is_ready", [](nb::handle object) { return nb::inst_ready(object); },
      "Whether the object's constructor has come to its end.");
  m.def("getter", &makeGetter, "A function of an object that reads a property.");
  m.def("setter", &makeSetter, "A function of an object and a value that sets a property.");
  m.def("get", [](const Object& self, std::string_view name) {
    return toPython(take(script::get(arrayOf(self), name)));
  });
  m.def(
      "set",
      [](Object& self, std::string_view name, nb::handle value) {
        arrayOf(self);
        take(script::set(self.array.get(), name, toHost(value).get()));
      },
      nb::arg(), nb::arg(), nb::arg().none());
  m.def("has_member", [](const Object& self, std::string_view name) {
    return take(script::hasMember(arrayOf(self), name));
  });
  m.def("invoke", &invoke, nb::arg(), nb::arg(), nb::arg(), nb::arg() = Reading::Plain,
        nb::arg() = nb::dict(), "Calls a method with a tuple of arguments and keyword values.");
}

}  // namespace kxsim::python
