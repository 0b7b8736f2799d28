// Structs, objects, object arrays and the classes of both.
#include "host/object.h"

#include <array>

#include "host/record.h"
#include "host/text.h"
#include "support/host_errors.h"
#include "support/host_leak_test.h"

namespace vexal {
namespace {

using testing::expectHostError;

constexpr std::array<std::size_t, 2> kPair{1, 2};

class ObjectTest : public testing::HostLeakTest {
 protected:
  // Classes stay for the life of the process, whichever test comes first.
  static void SetUpTestSuite() {
    if (isClassDefined("test.Shape")) return;
    defineClass("test.Shape");
    defineClass("test.Circle", "test.Shape");
    defineClass("test.Square", "test.Shape");
    defineClass("test.UnitCircle", "test.Circle");
    defineMethod("test.Shape", "area",
                 {{1, 1, 1}, [](Call& call) { call.setOutput(0, createDouble(0)); }});
  }
};

TEST_F(ObjectTest, AStructKeepsItsFieldsInEveryElement) {
  const ArrayPtr pair = createStruct(kPair, std::array<std::string_view, 2>{"a", "b"});
  setField(pair.get(), "b", createDouble(2).get(), 1);
  const ArrayPtr narrow = deepCopy(pair.get());
  setField(pair.get(), "c", createDouble(3).get());
  EXPECT_EQ(fieldNames(pair.get()).size(), 3U);
  EXPECT_EQ(doubleData(field(pair.get(), "b", 1))[0], 2);
  EXPECT_EQ(doubleData(field(pair.get(), "c", 0))[0], 3);
  EXPECT_TRUE(isEmpty(field(pair.get(), "c", 1)));
  EXPECT_FALSE(hasField(narrow.get(), "c"));
  const ArrayPtr again = createStruct(std::array<std::string_view, 2>{"a", "b"});
  EXPECT_EQ(fieldNames(again.get()).size(), 2U);  // names are shared, but not the wider ones
  EXPECT_EQ(doubleData(fieldAt(pair.get(), 2, 0))[0], 3);
}

TEST_F(ObjectTest, BadFieldsAreRefusedAndLeaveTheStructAsItWas) {
  const std::array<std::string_view, 2> repeated{"a", "a"};
  expectHostError("Vexal:host:InvalidFieldName", [&] { createStruct(repeated); });
  const ArrayPtr record = createStruct(std::array<std::string_view, 1>{"a"});
  const ArrayPtr before = deepCopy(record.get());
  const ArrayPtr value = createDouble(1);
  expectHostError("Vexal:host:InvalidFieldName", [&] { setField(record.get(), "", value.get()); });
  expectHostError("Vexal:host:NoSuchField", [&] { field(record.get(), "z"); });
  expectHostError("Vexal:host:NullArray", [&] { setField(record.get(), "z", nullptr); });
  expectHostError("Vexal:host:IndexOutOfRange",
                  [&] { setField(record.get(), "z", value.get(), 1); });
  expectHostError("Vexal:host:IndexOutOfRange", [&] { fieldAt(record.get(), 1); });
  expectHostError("Vexal:host:WrongClass", [&] { fieldNames(value.get()); });
  EXPECT_TRUE(equalContent(record.get(), before.get()));
}

TEST_F(ObjectTest, AnObjectIsOfItsClassAndEveryClassAboveIt) {
  const ArrayPtr circle = createObject("test.UnitCircle");
  EXPECT_TRUE(isA(circle.get(), "test.UnitCircle"));
  EXPECT_TRUE(isA(circle.get(), "test.Shape"));
  EXPECT_FALSE(isA(circle.get(), "test.Square"));
  EXPECT_FALSE(isA(circle.get(), "test.NoSuchClass"));
  EXPECT_TRUE(isSubclass("test.UnitCircle", "test.Circle"));
  EXPECT_FALSE(isSubclass("test.Circle", "test.UnitCircle"));
  EXPECT_EQ(superclassOf("test.UnitCircle"), "test.Circle");
  EXPECT_EQ(superclassOf("test.Shape"), "");
}

TEST_F(ObjectTest, AClassIsDefinedOnceUnderAKnownSuperclass) {
  expectHostError("Vexal:class:ClassExists", [] { defineClass("test.Shape"); });
  expectHostError("Vexal:class:ClassExists", [] { defineClass("cell"); });
  expectHostError("Vexal:class:InvalidName", [] { defineClass(""); });
  expectHostError("Vexal:class:UnknownClass", [] { defineClass("test.New", "test.New"); });
  expectHostError("Vexal:class:UnknownClass", [] { createObject("test.New"); });
  expectHostError("Vexal:class:MethodExists",
                  [] { defineMethod("test.Shape", "area", {{}, [](Call&) {}}); });
  EXPECT_FALSE(isClassDefined("test.New"));
}

TEST_F(ObjectTest, IsmethodLooksThroughTheClassChain) {
  const ArrayPtr circle = createObject("test.UnitCircle");
  const auto hasArea = [](const vxArray* array) {
    return isLogicalScalarTrue(evaluate("ismethod", {array, createChar("area").get()}).get());
  };
  EXPECT_TRUE(hasArea(circle.get()));
  EXPECT_FALSE(hasArea(createObject(kModelSimStateClass).get()));
  EXPECT_FALSE(hasArea(createDouble(1).get()));
  expectHostError("Vexal:host:NotText",
                  [&] { evaluate("ismethod", {circle.get(), circle.get()}); });
}

TEST_F(ObjectTest, AnObjectArrayTakesItsClassAndSubclassesOnly) {
  const ArrayPtr circles = createObjectArray("test.Circle", kPair);
  const ArrayPtr unit = createObject("test.UnitCircle");
  setObjectElement(circles.get(), 1, unit.get());
  EXPECT_EQ(className(objectElement(circles.get(), 0).get()), "test.Circle");
  EXPECT_EQ(className(objectElement(circles.get(), 1).get()), "test.UnitCircle");
  expectHostError("Vexal:class:ElementClass",
                  [&] { setObjectElement(circles.get(), 0, createObject("test.Square").get()); });
  expectHostError("Vexal:class:NotAnObject",
                  [&] { setObjectElement(circles.get(), 0, circles.get()); });
  expectHostError("Vexal:host:IndexOutOfRange", [&] { objectElement(circles.get(), 2); });
  EXPECT_EQ(describe(circles.get()), "1-by-2 test.Circle object array");
  EXPECT_TRUE(isEmpty(createObjectArray("test.Circle", std::array<std::size_t, 2>{0, 0}).get()));
}

TEST_F(ObjectTest, AHeterogeneousArrayNarrowsToTheClassItsElementsShare) {
  const ArrayPtr mixed = createObjectArray(kHeterogeneousClass, kPair);
  narrowClass(mixed.get());
  EXPECT_EQ(className(mixed.get()), kHeterogeneousClass);
  setObjectElement(mixed.get(), 0, createObject("test.Square").get());
  setObjectElement(mixed.get(), 1, createObject("test.UnitCircle").get());
  const ArrayPtr copy = deepCopy(mixed.get());
  narrowClass(mixed.get());
  EXPECT_EQ(className(mixed.get()), "test.Shape");
  EXPECT_EQ(className(copy.get()), kHeterogeneousClass);

  const ArrayPtr unrelated = createObjectArray(kHeterogeneousClass, kPair);
  setObjectElement(unrelated.get(), 0, createObject("test.Square").get());
  setObjectElement(unrelated.get(), 1, createObject(kModelSimStateClass).get());
  narrowClass(unrelated.get());
  EXPECT_EQ(className(unrelated.get()), kHeterogeneousClass);

  const ArrayPtr one = createObjectArray(kHeterogeneousClass, std::array<std::size_t, 2>{1, 1});
  setObjectElement(one.get(), 0, createObject("test.Square").get());
  EXPECT_EQ(className(one.get()), "test.Square");
}

class Handle final : public NativePayload {
 public:
  static constexpr char kTypeTag = 0;
  explicit Handle(int& released) : NativePayload(&kTypeTag), released_(released) {}
  ~Handle() override { ++released_; }
  std::string describe() const override { return "number 7"; }

 private:
  int& released_;
};

TEST_F(ObjectTest, CopiesShareANativeValueWhichGoesWithTheLast) {
  int released = 0;
  ArrayPtr object = createObject("test.Shape");
  setField(object.get(), "Size", createDouble(1).get());
  attachPayload(object.get(), std::make_shared<Handle>(released));
  PropertyArrayPtr kept = copyForProperty(object.get());
  EXPECT_NE(payloadAs<Handle>(kept.get()), nullptr);
  EXPECT_EQ(payload(kept.get()), payload(object.get()));
  EXPECT_EQ(payload(createDouble(1).get()), nullptr);
  EXPECT_EQ(describe(kept.get()), "1-by-1 test.Shape object (number 7)");
  expectHostError("Vexal:host:FixedObject",
                  [&] { setField(object.get(), "Size", createDouble(2).get()); });
  object.reset();
  EXPECT_EQ(released, 0);
  kept.reset();
  EXPECT_EQ(released, 1);
}

}  // namespace
}  // namespace vexal
