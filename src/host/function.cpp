// Calls by name: dispatch, checks, and the turning of every exception into a diagnostic.
#include "host/function.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "host/detail/class_table.h"
#include "host/detail/content.h"
#include "host/detail/messages.h"
#include "host/object.h"
#include "host/vcos/detail/loading.h"

namespace vexal {
namespace {

using FunctionRef = std::shared_ptr<const HostFunction>;

constexpr int kMaxCallDepth = 500;
constinit int callDepth = 0;

// Functions that were replaced or removed during a call, which may be one of theirs. Never
// destroyed, as the table of functions.
std::vector<FunctionRef>& retired() {
  static auto& functions = *new std::vector<FunctionRef>;
  return functions;
}

class DepthGuard {
 public:
  explicit DepthGuard(std::string_view name) {
    if (callDepth >= kMaxCallDepth) {
      detail::fail("CallDepthExceeded", {name, std::to_string(kMaxCallDepth)});
    }
    ++callDepth;
  }
  ~DepthGuard() {
    if (--callDepth == 0 && !retired().empty()) {
      // They end outside the list: what ends with them may call again.
      const auto ended = std::exchange(retired(), {});
    }
  }
  DepthGuard(const DepthGuard&) = delete;
  DepthGuard& operator=(const DepthGuard&) = delete;
};

const vxArray* firstObject(std::span<const vxArray* const> inputs) noexcept {
  for (const vxArray* input : inputs) {
    if (input->content->classId == ClassId::Object) return input;
  }
  return nullptr;
}

// What the payload of the first object answers with.
void callPayload(Call& call) {
  for (std::size_t k = 0; k < call.inputCount(); ++k) {
    if (!isClass(call.input(k), ClassId::Object)) continue;
    return payload(call.input(k))->callMethod(call);
  }
}

const HostFunction* methodOf(const vxArray* object, std::string_view name,
                             const detail::Symbol* symbol) {
  if (symbol != nullptr) {
    const auto* const method = detail::findMethod(&detail::classOf(*object->content), symbol);
    if (method != nullptr) return method->get();
  }
  static const auto& ofPayload = *new HostFunction{{}, callPayload};
  const NativePayload* const native = payload(object);
  return native != nullptr && native->hasMethod(name) ? &ofPayload : nullptr;
}

const HostFunction* functionOf(const detail::Symbol* symbol) {
  return symbol != nullptr ? symbol->function.get() : nullptr;
}

// Good until the call has ended, whoever replaces the function meanwhile.
const HostFunction& resolve(std::string_view name, std::span<const vxArray* const> inputs) {
  const detail::Symbol* const symbol = detail::findSymbol(name);
  const vxArray* const object = firstObject(inputs);
  const HostFunction* found = object != nullptr ? methodOf(object, name, symbol) : nullptr;
  if (found == nullptr) found = functionOf(symbol);
  if (found == nullptr && vcos::detail::loadFunction(name)) {
    found = functionOf(detail::findSymbol(name));
  }
  if (found == nullptr) detail::fail("UnknownFunction", {name});
  return *found;
}

void checkArity(const Call& call, const Arity& arity) {
  const auto refuse = [&](detail::Key key, std::size_t limit, std::size_t given) {
    detail::fail(key, {call.name(), std::to_string(limit), std::to_string(given)});
  };
  if (call.inputCount() < arity.minInputs) {
    refuse("TooFewInputs", arity.minInputs, call.inputCount());
  }
  if (call.inputCount() > arity.maxInputs) {
    refuse("TooManyInputs", arity.maxInputs, call.inputCount());
  }
  if (call.outputCount() > arity.maxOutputs) {
    refuse("TooManyOutputs", arity.maxOutputs, call.outputCount());
  }
}

void run(const HostFunction& function, Call& call) {
  const DepthGuard depth(call.name());
  checkArity(call, function.arity);
  function.body(call);
}

const HostFunction& resolveChecked(std::string_view name, std::span<const vxArray* const> inputs) {
  detail::requireHostThread();
  if (std::ranges::count(inputs, nullptr) > 0) detail::fail("NullArray");
  return resolve(name, inputs);
}

void runForAll(std::string_view name, std::span<vxArray*> outputs,
               std::span<const vxArray* const> inputs) {
  Call call(name, outputs, inputs);
  run(resolveChecked(name, inputs), call);
  const auto missing = std::ranges::find(outputs, nullptr);
  if (missing != outputs.end()) {
    detail::fail("OutputNotSet", {name, std::to_string(missing - outputs.begin() + 1)});
  }
}

std::optional<HostFunction> exchangeFunction(detail::Symbol& symbol, FunctionRef function) {
  if (callDepth > 0 && symbol.function) retired().push_back(symbol.function);
  const FunctionRef previous = std::exchange(symbol.function, std::move(function));
  return previous ? std::optional(*previous) : std::nullopt;
}

}  // namespace

const vxArray* Call::input(std::size_t k) const {
  detail::requireIndex(k, inputs_.size());
  return inputs_[k];
}

void Call::setOutput(std::size_t k, ArrayPtr value) noexcept {
  if (k >= outputs_.size()) return;
  destroy(outputs_[k]);
  outputs_[k] = value.release();
}

std::optional<HostFunction> defineFunction(std::string_view name, HostFunction function) {
  detail::requireHostThread();
  if (name.empty() || !function.body) detail::fail("InvalidFunction", {name});
  auto defined = std::make_shared<const HostFunction>(std::move(function));
  return exchangeFunction(detail::symbolFor(name), std::move(defined));
}

std::optional<HostFunction> removeFunction(std::string_view name) {
  detail::requireHostThread();
  if (detail::findSymbol(name) == nullptr) return std::nullopt;
  return exchangeFunction(detail::symbolFor(name), nullptr);
}

bool isFunction(std::string_view name) {
  detail::requireHostThread();
  const detail::Symbol* symbol = detail::findSymbol(name);
  return symbol != nullptr && symbol->function != nullptr;
}

std::unique_ptr<Diagnostic> callFunction(std::size_t outputCount, vxArray** outputs,
                                         std::size_t inputCount, const vxArray* const* inputs,
                                         std::string_view name) noexcept {
  const std::span<vxArray*> slots(outputs, outputCount);
  std::ranges::fill(slots, nullptr);
  try {
    runForAll(name, slots, {inputs, inputCount});
    return nullptr;
  } catch (...) {
    for (vxArray*& slot : slots) destroy(std::exchange(slot, nullptr));
    return diagnosticOfCurrentException(name);
  }
}

ArrayPtr detail::callForOptionalOutput(std::string_view name,
                                       std::span<const vxArray* const> inputs) {
  const HostFunction& function = resolveChecked(name, inputs);
  vxArray* output = nullptr;
  Call call(name, {&output, std::min<std::size_t>(1, function.arity.maxOutputs)}, inputs);
  try {
    run(function, call);
  } catch (...) {
    destroy(output);
    throw;
  }
  return ArrayPtr(output);
}

ArrayPtr evaluate(std::string_view name, std::initializer_list<const vxArray*> inputs) {
  vxArray* output = nullptr;
  const auto diagnostic = callFunction(1, &output, inputs.size(), inputs.begin(), name);
  if (diagnostic) throwDiagnostic(*diagnostic);
  return ArrayPtr(output);
}

}  // namespace vexal
