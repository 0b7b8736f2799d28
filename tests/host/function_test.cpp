// Calls by name: the table, dispatch to methods, and failures as diagnostics.
#include "host/function.h"

#include <array>
#include <stdexcept>

#include "host/object.h"
#include "support/host_errors.h"
#include "support/host_leak_test.h"

namespace vexal {
namespace {

using testing::expectHostError;

class FunctionTest : public testing::HostLeakTest {
 protected:
  // The identifier with which a call fails, empty when it succeeds; checks that a failing
  // call leaves no output behind.
  static std::string failureOf(std::string_view name, std::size_t outputs = 1,
                               std::initializer_list<const vxArray*> inputs = {}) {
    std::array<vxArray*, 4> slots;
    slots.fill(reinterpret_cast<vxArray*>(1));
    const auto diagnostic =
        callFunction(outputs, slots.data(), inputs.size(), inputs.begin(), name);
    for (std::size_t k = 0; k < outputs; ++k) {
      EXPECT_EQ(slots[k] == nullptr, diagnostic != nullptr);
      if (diagnostic == nullptr) destroy(slots[k]);
    }
    if (diagnostic == nullptr) return {};
    return diagnostic->item(0).catalog + ':' + diagnostic->item(0).key;
  }

  static HostFunction constant(double value) {
    return {{0, 0, 1}, [value](Call& call) { call.setOutput(0, createDouble(value)); }};
  }
};

TEST_F(FunctionTest, ACallHandsInputsInAndOutputsOut) {
  const ScopedFunction swap("test.swap", {{2, 2, 2}, [](Call& call) {
                                            call.setOutput(1, deepCopy(call.input(0)));
                                            call.setOutput(0, deepCopy(call.input(1)));
                                          }});
  const ArrayPtr a = createDouble(1);
  const ArrayPtr b = createDouble(2);
  const vxArray* const inputs[] = {a.get(), b.get()};
  vxArray* outputs[2];
  ASSERT_EQ(callFunction(2, outputs, 2, inputs, "test.swap"), nullptr);
  const ArrayPtr first(outputs[0]);
  const ArrayPtr second(outputs[1]);
  EXPECT_EQ(doubleData(first.get())[0], 2);
  EXPECT_EQ(doubleData(second.get())[0], 1);
  EXPECT_EQ(doubleData(evaluate("test.swap", {a.get(), b.get()}).get())[0], 2);
  EXPECT_EQ(callFunction(0, nullptr, 2, inputs, "test.swap"), nullptr);
}

TEST_F(FunctionTest, ACallThatDoesNotFitIsRefused) {
  const ArrayPtr a = createDouble(1);
  const ScopedFunction one(
      "test.one", {{1, 2, 1}, [](Call& call) { call.setOutput(0, deepCopy(call.input(0))); }});
  EXPECT_EQ(failureOf("test.one", 1, {a.get()}), "");
  EXPECT_EQ(failureOf("test.nothing"), "Vexal:host:UnknownFunction");
  EXPECT_EQ(failureOf("test.one"), "Vexal:host:TooFewInputs");
  EXPECT_EQ(failureOf("test.one", 1, {a.get(), a.get(), a.get()}), "Vexal:host:TooManyInputs");
  EXPECT_EQ(failureOf("test.one", 2, {a.get()}), "Vexal:host:TooManyOutputs");
  EXPECT_EQ(failureOf("test.one", 1, {nullptr}), "Vexal:host:NullArray");
}

TEST_F(FunctionTest, WhateverAFunctionThrowsComesBackAndItsOutputsAreGone) {
  const auto failing = [](auto raise) {
    return HostFunction{{0, 0, 2}, [raise](Call& call) {
                          call.setOutput(0, createDouble(1));
                          raise();
                        }};
  };
  const ScopedFunction own("test.own", failing([] { vxErrMsgId("Test:errors", "Own"); }));
  const ScopedFunction standard("test.standard",
                                failing([] { throw std::runtime_error("out of ink"); }));
  const ScopedFunction memory("test.memory", failing([] { throw std::bad_alloc(); }));
  const ScopedFunction strange("test.strange", failing([] { throw 7; }));
  const ScopedFunction silent("test.silent", failing([] {}));
  EXPECT_EQ(failureOf("test.own", 2), "Test:errors:Own");
  EXPECT_EQ(failureOf("test.memory"), "Vexal:host:OutOfMemory");
  EXPECT_EQ(failureOf("test.strange"), "Vexal:host:FunctionFailed");
  EXPECT_EQ(failureOf("test.silent", 2), "Vexal:host:OutputNotSet");
  const std::string text =
      expectHostError("Vexal:host:FunctionFailed", [] { evaluate("test.standard", {}); });
  EXPECT_EQ(text, "The function 'test.standard' failed: out of ink");
}

TEST_F(FunctionTest, EndlessRecursionEndsInADiagnostic) {
  const ScopedFunction loop(
      "test.loop", {{0, 0, 1}, [](Call& call) { call.setOutput(0, evaluate("test.loop", {})); }});
  EXPECT_EQ(failureOf("test.loop"), "Vexal:host:CallDepthExceeded");
  EXPECT_EQ(failureOf("test.loop"), "Vexal:host:CallDepthExceeded");
}

TEST_F(FunctionTest, AReplacedFunctionComesBackWithTheScope) {
  EXPECT_EQ(defineFunction("test.value", constant(1)), std::nullopt);
  const auto value = [] { return doubleData(evaluate("test.value", {}).get())[0]; };
  {
    const ScopedFunction replaced("test.value", constant(2));
    EXPECT_EQ(value(), 2);
  }
  EXPECT_EQ(value(), 1);
  EXPECT_TRUE(removeFunction("test.value").has_value());
  EXPECT_FALSE(removeFunction("test.value").has_value());
  EXPECT_FALSE(isFunction("test.value"));
  EXPECT_EQ(failureOf("test.value"), "Vexal:host:UnknownFunction");
  expectHostError("Vexal:host:InvalidFunction", [] { defineFunction("test.value", {}); });
}

TEST_F(FunctionTest, AFunctionMayRemoveItselfWhileItRuns) {
  auto words = std::make_shared<std::string>("still here");
  defineFunction("test.once", {{0, 0, 1}, [words](Call& call) {
                                 removeFunction("test.once");
                                 call.setOutput(0, createDouble(double(words->size())));
                               }});
  EXPECT_EQ(doubleData(evaluate("test.once", {}).get())[0], 10);
  EXPECT_EQ(words.use_count(), 1);
}

TEST_F(FunctionTest, AnObjectsOwnMethodAnswersBeforeTheTable) {
  defineClass("test.Dispatch");
  defineClass("test.DispatchChild", "test.Dispatch");
  defineClass("test.DispatchOverride", "test.Dispatch");
  const auto answer = [](double value) {
    return HostFunction{{}, [value](Call& call) { call.setOutput(0, createDouble(value)); }};
  };
  defineMethod("test.Dispatch", "test.answer", answer(1));
  defineMethod("test.DispatchOverride", "test.answer", answer(2));
  const ArrayPtr number = createDouble(0);
  const auto asked = [&](std::string_view className) {
    const ArrayPtr object = createObject(className);
    return doubleData(evaluate("test.answer", {number.get(), object.get()}).get())[0];
  };
  EXPECT_EQ(asked("test.Dispatch"), 1);
  EXPECT_EQ(asked("test.DispatchChild"), 1);
  EXPECT_EQ(asked("test.DispatchOverride"), 2);
  EXPECT_EQ(failureOf("test.answer", 1, {number.get()}), "Vexal:host:UnknownFunction");
  const ScopedFunction table("test.answer", answer(3));
  EXPECT_EQ(asked(kModelSimStateClass), 3);
  EXPECT_EQ(asked("test.DispatchChild"), 1);
}

}  // namespace
}  // namespace vexal
