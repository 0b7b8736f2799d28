// The extension module kxsim._host: the host's surface by name (host/vcos/script.h), generic over
// whatever classes are registered. kxsim/_classes.py makes Python classes of it.
#include <nanobind/nanobind.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/string_view.h>

#include <string>
#include <utility>

#include "extension/errors.h"
#include "extension/foreign.h"
#include "extension/gather.h"
#include "extension/objects.h"
#include "extension/values.h"
#include "host/module.h"
#include "host/random.h"
#include "host/runtime.h"
#include "host/vcos/script.h"

namespace kxsim::python {
namespace {

namespace script = vexal::script;
using vexal::ArrayPtr;

// Descriptions ------------------------------------------------------------------------------------

constexpr const char* kNameKinds[] = {"", "package", "class", "function"};
constexpr const char* kMemberKinds[] = {"property", "method", "static", "constructor"};

nb::list argumentsOf(const script::Member& member) {
  nb::list arguments;
  for (const script::Argument& argument : member.arguments) {
    arguments.append(nb::make_tuple(argument.name, argument.dataType, argument.isOptional));
  }
  return arguments;
}

nb::dict describeMember(const script::Member& member) {
  nb::dict described;
  described["kind"] = kMemberKinds[static_cast<std::size_t>(member.kind)];
  described["name"] = member.name;
  described["doc"] = member.doc;
  described["type"] = member.dataType;
  described["writable"] = member.isWritable;
  described["defined_by"] = member.definedBy;
  described["arguments"] = member.hasSignature ? nb::object(argumentsOf(member)) : nb::none();
  return described;
}

nb::dict describeClass(std::string_view name) {
  const script::Class found = take(script::describeClass(name));
  nb::list superclasses;
  nb::list members;
  nb::dict literals;
  for (const std::string& each : found.superclasses) superclasses.append(each);
  for (const script::Member& each : found.members) members.append(describeMember(each));
  for (const script::EnumMember& each : found.enumMembers) literals[each.name.c_str()] = each.value;
  nb::dict described;
  described["name"] = found.name;
  described["doc"] = found.doc;
  described["superclasses"] = superclasses;
  described["by_name"] = !found.kind.has_value();
  described["constructible"] = found.isConstructible;
  described["members"] = members;
  described["literals"] = literals;
  return described;
}

nb::list namesOf(script::Result<std::vector<std::string>> result) {
  nb::list names;
  for (const std::string& name : take(std::move(result))) names.append(name);
  return names;
}

// Lifetime ----------------------------------------------------------------------------------------

void connect(nb::object errorClass, nb::object classFor, nb::object adapt, nb::object findMethod) {
  setErrorClass(std::move(errorClass));
  hooks() = {std::move(classFor), std::move(adapt), std::move(findMethod)};
}

nb::dict counts() {
  const vexal::ArrayCounts now = vexal::arrayCounts();
  nb::dict told;
  told["arrays"] = now.live;
  told["property_copies"] = now.livePropertyCopies;
  told["contents"] = now.contents;
  told["misused_releases"] = now.misusedReleases;
  return told;
}

void defineHost(nb::module_& m) {
  m.attr("PACKAGE_LIBRARY") = KXSIM_PACKAGE_LIBRARY;
  m.def("connect", &connect, "Tells what is decided in Python (values.h, errors.h).");
  m.def("start", &vexal::start, "Makes the calling thread the host's.");
  m.def("load_module", &vexal::loadModule, "Loads a shared library that brings packages.");
  m.def("version", &vexal::version);
  m.def("seed", &vexal::seed, "Starts the host's random numbers anew.");
  m.def("release_foreign", &releaseForeign,
        "Lets go of the Python objects that the host holds, except those of one class; the others "
        "answer no call any more.");
  m.def("counts", &counts, "Host arrays that exist now.");
}

void defineGenerator(nb::module_& m) {
  nb::class_<vexal::Generator>(m, "Generator", "A stream of the host's random numbers.")
      .def(nb::init<std::uint64_t>())
      .def(
          "swap", [](vexal::Generator& self) { std::swap(self, vexal::generator()); },
          "Takes the place of the stream that the host draws from, and keeps that one instead.");
}

void defineNames(nb::module_& m) {
  m.def(
      "look_up",
      [](std::string_view name) {
        return kNameKinds[static_cast<std::size_t>(take(script::lookUp(name)))];
      },
      "What a full name stands for: 'package', 'class', 'function' or ''.");
  m.def("packages", [](std::string_view below) { return namesOf(script::packages(below)); });
  m.def("classes", [](std::string_view package) { return namesOf(script::classes(package)); });
  m.def("describe_class", &describeClass);
}

void defineCalls(nb::module_& m) {
  m.def("call_raw", [](std::string_view name, nb::tuple arguments) {
    const Inputs inputs(arguments);
    return Array(take(script::call(name, inputs.arrays())));
  });
  m.def("call", [](std::string_view name, nb::tuple arguments) {
    const Inputs inputs(arguments);
    return toPython(take(script::call(name, inputs.arrays())));
  });
  m.def("invoke_static", [](std::string_view name, std::string_view method, nb::tuple arguments) {
    const Inputs inputs(arguments);
    return toPython(take(script::invokeStatic(name, method, inputs.arrays())));
  });
  m.def("enum_member", [](std::string_view name, std::string_view member) {
    return Array(take(script::enumMember(name, member)));
  });
  m.def(
      "convert",
      [](nb::handle value, std::string_view dataType) {
        return toPython(take(script::convert(toHost(value).get(), dataType)));
      },
      nb::arg().none(), nb::arg());
  m.def("make_cell", [](nb::tuple shape, nb::object items) {
    std::vector<std::size_t> dims;
    for (nb::handle extent : shape) dims.push_back(nb::cast<std::size_t>(extent));
    return Array(makeCell(dims, nb::tuple(items)));
  });
  m.def("gather", &gather,
        "What the items of a collection of each object hold, as columns (gather.h).");
  m.def(
      "round_trip", [](nb::handle value) { return toPython(toHost(value)); }, nb::arg().none(),
      "The value as the host gives it back.");
}

// Host errors of services that throw, in the thread that is not the host's for one.
void translateHostErrors() {
  nb::register_exception_translator([](const std::exception_ptr& thrown, void*) {
    try {
      std::rethrow_exception(thrown);
    } catch (const vexal::HostError& error) {
      try {
        raiseDiagnostic(error.diagnostic());
      } catch (nb::python_error& raised) {
        raised.restore();
      }
    }
  });
}

}  // namespace
}  // namespace kxsim::python

NB_MODULE(_host, m) {
  using namespace kxsim::python;
  // Classes and hooks are kept for ever, and the host may hold objects until the process ends.
  nanobind::set_leak_warnings(false);
  m.doc() = "The embedded host, by name.";
  translateHostErrors();
  defineObjects(m);
  defineHost(m);
  defineGenerator(m);
  defineNames(m);
  defineCalls(m);
}
