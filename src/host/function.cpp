// Calls by name: dispatch, checks, and the turning of every exception into a diagnostic.
#include "host/function.h"

#include <algorithm>
#include <new>
#include <utility>
#include <vector>

#include "host/detail/class_table.h"
#include "host/detail/content.h"
#include "host/detail/messages.h"

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

const detail::HostClass* classOfFirstObject(std::span<const vxArray* const> inputs) noexcept {
  for (const vxArray* input : inputs) {
    const detail::Content& content = *input->content;
    if (content.classId == ClassId::Object) return detail::recordOf(content).hostClass;
  }
  return nullptr;
}

// Good until the call has ended, whoever replaces the function meanwhile.
const HostFunction& resolve(std::string_view name, std::span<const vxArray* const> inputs) {
  const detail::Symbol* symbol = detail::findSymbol(name);
  if (symbol == nullptr) detail::fail("UnknownFunction", {name});
  const FunctionRef* method = detail::findMethod(classOfFirstObject(inputs), symbol);
  const FunctionRef& found = method != nullptr ? *method : symbol->function;
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

void run(std::string_view name, std::span<vxArray*> outputs,
         std::span<const vxArray* const> inputs) {
  detail::requireHostThread();
  if (std::ranges::count(inputs, nullptr) > 0) detail::fail("NullArray");
  const HostFunction& function = resolve(name, inputs);
  const DepthGuard depth(name);
  Call call(name, outputs, inputs);
  checkArity(call, function.arity);
  function.body(call);
  const auto missing = std::ranges::find(outputs, nullptr);
  if (missing != outputs.end()) {
    detail::fail("OutputNotSet", {name, std::to_string(missing - outputs.begin() + 1)});
  }
}

std::unique_ptr<Diagnostic> diagnosticOf(MessageId id,
                                         std::initializer_list<std::string_view> arguments) {
  auto diagnostic = std::make_unique<Diagnostic>();
  diagnostic->add(id, arguments);
  return diagnostic;
}

// Of the exception being handled.
std::unique_ptr<Diagnostic> diagnosticOfFailure(std::string_view name) {
  try {
    throw;
  } catch (const HostError& error) {
    return std::make_unique<Diagnostic>(error.diagnostic());
  } catch (const std::bad_alloc&) {
    return diagnosticOf(detail::Key("OutOfMemory").id(), {});
  } catch (const std::exception& error) {
    return diagnosticOf(detail::Key("FunctionFailed").id(), {name, error.what()});
  } catch (...) {
    return diagnosticOf(detail::Key("FunctionFailed").id(), {name, "unknown exception"});
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
    run(name, slots, {inputs, inputCount});
    return nullptr;
  } catch (...) {
    for (vxArray*& slot : slots) destroy(std::exchange(slot, nullptr));
    return diagnosticOfFailure(name);
  }
}

ArrayPtr evaluate(std::string_view name, std::initializer_list<const vxArray*> inputs) {
  vxArray* output = nullptr;
  const auto diagnostic = callFunction(1, &output, inputs.size(), inputs.begin(), name);
  if (diagnostic) throwDiagnostic(*diagnostic);
  return ArrayPtr(output);
}

}  // namespace vexal
