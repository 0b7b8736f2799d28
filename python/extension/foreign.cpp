#include "extension/foreign.h"

#include <memory>
#include <string>
#include <vector>

#include "extension/errors.h"
#include "extension/values.h"
#include "host/object.h"
#include "host/vcos/script.h"

namespace kxsim::python {
namespace {

class PythonPayload final : public vexal::NativePayload {
 public:
  static constexpr char kTypeTag = 0;

  explicit PythonPayload(nb::object object)
      : NativePayload(&kTypeTag), object_(std::move(object)) {}

  // What the host still holds when the interpreter has ended stays as it is.
  ~PythonPayload() override {
    if (!Py_IsInitialized()) object_.release();
  }

  std::string describe() const override {
    return "Python " + std::string(Py_TYPE(object_.ptr())->tp_name);
  }

  bool hasMethod(std::string_view name) const override {
    try {
      return !find(name).is_none();
    } catch (nb::python_error&) {
      return false;
    }
  }

  void callMethod(vexal::Call& call) override {
    try {
      const nb::object method = find(call.name());
      const nb::object result = method(*argumentsOf(call));
      if (call.outputCount() > 0) call.setOutput(0, toHost(result));
    } catch (nb::python_error& raised) {
      throwIntoHost(raised);
    }
  }

  const nb::object& object() const noexcept { return object_; }

 private:
  nb::object find(std::string_view name) const {
    return hooks().findMethod(object_, nb::str(name.data(), name.size()));
  }

  // All inputs but the object itself.
  nb::list argumentsOf(const vexal::Call& call) const {
    nb::list arguments;
    bool isPast = false;
    for (std::size_t k = 0; k < call.inputCount(); ++k) {
      const bool isSelf = !isPast && vexal::payload(call.input(k)) == this;
      isPast |= isSelf;
      if (!isSelf) arguments.append(toPython(vexal::deepCopy(call.input(k))));
    }
    return arguments;
  }

  nb::object object_;
};

}  // namespace

// A Python class may say as what its objects pass in the host.
vexal::ArrayPtr makeForeign(nb::object object) {
  const nb::object named = nb::getattr(object.type(), "__host_class__", nb::none());
  const nb::str name(named);
  const std::string_view className =
      named.is_none() ? vexal::script::kForeignClass : std::string_view(name.c_str());
  return take(
      vexal::script::foreign(std::make_shared<PythonPayload>(std::move(object)), className));
}

nb::object foreignObject(const vxArray* array) {
  const auto* const found = vexal::payloadAs<PythonPayload>(array);
  return found != nullptr ? found->object() : nb::object();
}

}  // namespace kxsim::python
