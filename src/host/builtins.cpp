// The functions that the host brings along.
#include "host/detail/fullfact.h"
#include "host/detail/install.h"
#include "host/detail/messages.h"
#include "host/function.h"
#include "host/object.h"
#include "host/text.h"

namespace vexal::detail {
namespace {

void fullfact(Call& call) { call.setOutput(0, fullFactorial(call.input(0))); }

// Whether an object's class or its payload has a method of that name; nothing else has methods.
void isMethod(Call& call) {
  const std::string name = toUtf8(charText(call.input(1)));
  const vxArray* const value = call.input(0);
  const NativePayload* const native = payload(value);
  const bool isFound = (isClass(value, ClassId::Object) && hasMethod(className(value), name)) ||
                       (native != nullptr && native->hasMethod(name));
  call.setOutput(0, createLogical(isFound));
}

// Reached only by what has no method "random" of its own.
void randomOfOther(Call& call) { fail("NotADistribution", {describe(call.input(0))}); }

}  // namespace

void installBuiltins() {
  defineFunction("kxsim.design.fullfact", {{1, 1, 1}, fullfact});
  defineFunction("ismethod", {{2, 2, 1}, isMethod});
  defineFunction("random", {{1, Arity::kAny, 1}, randomOfOther});
}

}  // namespace vexal::detail
