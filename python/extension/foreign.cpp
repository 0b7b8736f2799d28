#include "extension/foreign.h"

#include <memory>
#include <string>
#include <unordered_set>
#include <utility>
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

  explicit PythonPayload(nb::object object) : NativePayload(&kTypeTag), object_(std::move(object)) {
    all().insert(this);
  }

  // What the host still holds when the interpreter has ended stays as it is.
  ~PythonPayload() override {
    all().erase(this);
    if (!Py_IsInitialized()) object_.release();
  }

  /// All that exist; kept for ever, for the host may hold some until the process ends.
  static std::unordered_set<PythonPayload*>& all() {
    static auto& payloads = *new std::unordered_set<PythonPayload*>();
    return payloads;
  }

  nb::object letGo() noexcept { return std::move(object_); }

  std::string describe() const override {
    if (!object_.is_valid()) return "Python object that is gone";
    return "Python " + std::string(Py_TYPE(object_.ptr())->tp_name);
  }

  bool hasMethod(std::string_view name) const override {
    try {
      return object_.is_valid() && !find(name).is_none();
    } catch (nb::python_error&) {
      return false;
    }
  }

  void callMethod(vexal::Call& call) override {
    if (!object_.is_valid()) return;
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

void releaseForeign(nb::handle kept) {
  std::vector<nb::object> released;  // let go at the end: that may run code which calls the host
  for (PythonPayload* payload : PythonPayload::all()) {
    const nb::object& object = payload->object();
    if (object.is_valid() && !object.type().is(kept)) released.push_back(payload->letGo());
  }
}

nb::object foreignObject(const vxArray* array) {
  const auto* const found = vexal::payloadAs<PythonPayload>(array);
  return found != nullptr ? found->object() : nb::object();
}

}  // namespace kxsim::python
