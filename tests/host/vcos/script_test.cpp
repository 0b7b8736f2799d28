// Objects driven by name alone: construction, properties, methods and their refusals.
#include "host/vcos/script.h"

#include <limits>

#include "host/cell.h"
#include "host/function.h"
#include "host/record.h"
#include "host/vcos/native.h"
#include "support/plant_test.h"

namespace vexal::script {
namespace {

using vcos::plant::kDevices;

class ScriptTest : public PlantTest {
 protected:
  static vcos::plant::Tank& native(const ArrayPtr& object) {
    const vcos::Native found = vcos::factory::impl::nativeOf(object.get(), kDevices);
    return *static_cast<vcos::plant::Tank*>(found.object);
  }
};

TEST_F(ScriptTest, PropertiesAreReadAndWrittenInTheirDataType) {
  const ArrayPtr object = tank("north");
  EXPECT_EQ(text(valueOf(get(object.get(), "Name"))), "north");
  valueOf(set(object.get(), "Level", createDouble(2.5).get()));
  EXPECT_EQ(number(object.get(), "Level"), 2.5);
  valueOf(set(object.get(), "Level", createInt32(7).get()));
  EXPECT_EQ(native(object).level, 7);
  valueOf(set(object.get(), "Open", createDouble(2).get()));
  EXPECT_TRUE(isLogicalScalarTrue(valueOf(get(object.get(), "Open")).get()));
}

TEST_F(ScriptTest, EachRefusedUseTellsWhyAndChangesNothing) {
  const ArrayPtr object = tank();
  const ArrayPtr one = createDouble(1);
  const ArrayPtr words = createChar("full");
  const ArrayPtr plain = createCell(1, 1);
  const auto refusedSet = [&](std::string_view name, const vxArray* value) {
    return keyOf(set(object.get(), name, value));
  };
  EXPECT_EQ(refusedSet("Capacity", one.get()), "ReadOnlyProperty");
  EXPECT_EQ(refusedSet("Depth", one.get()), "NoSuchMember");
  EXPECT_EQ(refusedSet("drain", one.get()), "NotAProperty");
  EXPECT_EQ(refusedSet("Level", words.get()), "CannotConvert");
  EXPECT_EQ(refusedSet("Level", createDoubleMatrix(1, 2).get()), "WrongShape");
  EXPECT_EQ(refusedSet("Level", createDoubleMatrix(0, 0).get()), "WrongShape");
  EXPECT_EQ(refusedSet("Level", nullptr), "Vexal:host:NullArray");
  EXPECT_EQ(refusedSet("Open", createDouble(std::numeric_limits<double>::quiet_NaN()).get()),
            "CannotConvert");
  EXPECT_EQ(refusedSet("Name", one.get()), "CannotConvert");
  EXPECT_EQ(refusedSet("Name", createChar("").get()), "plant:messages:Jammed");
  EXPECT_EQ(keyOf(set(plain.get(), "Level", one.get())), "NotAnObject");
  EXPECT_EQ(keyOf(get(nullptr, "Level")), "Vexal:host:NullArray");
  EXPECT_EQ(keyOf(get(object.get(), "StaticName")), "NotAProperty");
  EXPECT_EQ(number(object.get(), "Level"), 0);
  EXPECT_EQ(text(valueOf(get(object.get(), "Name"))), "main");

  const auto wrong = set(object.get(), "Level", words.get());
  ASSERT_EQ(wrong.error->itemCount(), 2U);
  EXPECT_EQ(wrong.error->item(1).text, "This was for the property 'Level' of a plant.Tank.");
}

TEST_F(ScriptTest, ConstructorsCheckTheirArguments) {
  const ArrayPtr name = createChar("a");
  const ArrayPtr level = createLogical(true);
  const ArrayPtr filled = valueOf(construct("plant.Tank", all({name.get(), level.get()})));
  EXPECT_EQ(number(filled.get(), "Level"), 1);
  EXPECT_EQ(native(filled).references, 1);

  const ArrayPtr nothing = createChar("nothing");
  EXPECT_EQ(keyOf(construct("plant.Tank", {})), "TooFewArguments");
  EXPECT_EQ(keyOf(construct("plant.Tank", all({name.get(), level.get(), level.get()}))),
            "TooManyArguments");
  EXPECT_EQ(keyOf(construct("plant.Tank", all({level.get()}))), "CannotConvert");
  EXPECT_EQ(keyOf(construct("plant.Tank", all({nullptr}))), "Vexal:host:NullArray");
  EXPECT_EQ(keyOf(construct("plant.Tank", all({nothing.get()}))), "NotConstructed");
  EXPECT_EQ(keyOf(construct("plant.Device", {})), "AbstractClass");
  EXPECT_EQ(keyOf(construct("plant.Valve", {})), "NotConstructible");
  EXPECT_EQ(keyOf(construct(kForeignClass, {})), "NotConstructible");
  EXPECT_EQ(keyOf(construct("plant.Pump", {})), "UnknownClass");
}

TEST_F(ScriptTest, MethodsAreCalledOnObjectsAndClassesAndAsFunctionsByName) {
  const ArrayPtr object = tank();
  native(object).level = 5;
  const ArrayPtr two = createDouble(2);
  EXPECT_EQ(doubleData(valueOf(invoke(object.get(), "drain", all({two.get()}))).get())[0], 3);
  EXPECT_EQ(doubleData(evaluate("drain", {object.get(), two.get()}).get())[0], 1);
  EXPECT_TRUE(
      isLogicalScalarTrue(evaluate("ismethod", {object.get(), createChar("drain").get()}).get()));
  EXPECT_EQ(text(valueOf(invokeStatic("plant.Tank", "StaticName", {}))), "plant.Tank");
  EXPECT_EQ(text(valueOf(invoke(object.get(), "StaticName", {}))), "plant.Tank");

  EXPECT_EQ(keyOf(invoke(object.get(), "drain", all({two.get()}))), "plant:messages:Jammed");
  EXPECT_EQ(keyOf(call("drain", all({object.get(), two.get()}))), "plant:messages:Jammed");
  EXPECT_EQ(keyOf(invoke(object.get(), "drain", {})), "TooFewArguments");
  EXPECT_EQ(keyOf(invoke(object.get(), "fill", {})), "NoSuchMember");
  EXPECT_EQ(keyOf(invoke(object.get(), "Level", {})), "NotAMethod");
  EXPECT_EQ(keyOf(invokeStatic("plant.Tank", "drain", all({two.get()}))), "NotAMethod");
  EXPECT_EQ(keyOf(invokeStatic("plant.Tank", "fill", {})), "NoSuchMember");
  const auto wrong = invoke(object.get(), "drain", all({object.get()}));
  EXPECT_EQ(keyOf(wrong), "CannotConvert");
  EXPECT_EQ(wrong.error->item(1).text, "This was for the argument 'input1' of 'drain'.");
  EXPECT_EQ(number(object.get(), "Level"), 1);
}

TEST_F(ScriptTest, ADestroyedNativeLeavesAnObjectThatRefusesEveryUse) {
  const ArrayPtr object = tank();
  const ArrayPtr copy = deepCopy(object.get());
  const std::uint64_t identityBefore = *identity(object.get());
  EXPECT_TRUE(inspect(object.get())->isValid);
  EXPECT_EQ(valueOf(invoke(object.get(), "destroy", {})), nullptr);
  const ArrayPtr one = createDouble(1);
  EXPECT_EQ(keyOf(get(copy.get(), "Level")), "InvalidHandle");
  EXPECT_EQ(keyOf(set(copy.get(), "Level", one.get())), "InvalidHandle");
  EXPECT_EQ(keyOf(invoke(copy.get(), "drain", all({one.get()}))), "InvalidHandle");
  EXPECT_EQ(keyOf(call("drain", all({copy.get(), one.get()}))), "InvalidHandle");
  EXPECT_FALSE(inspect(copy.get())->isValid);
  EXPECT_EQ(*identity(copy.get()), identityBefore);
  EXPECT_EQ(describe(copy.get()), "1-by-1 plant.Tank object (no longer there)");
}

TEST_F(ScriptTest, EnumerationMembersAreValues) {
  const ArrayPtr water = valueOf(enumMember("plant.Kind", "Water"));
  const ArrayPtr two = createDouble(2);
  const ArrayPtr name = createChar("Water");
  EXPECT_TRUE(*same(water.get(), valueOf(construct("plant.Kind", all({two.get()}))).get()));
  EXPECT_TRUE(*same(water.get(), valueOf(construct("plant.Kind", all({name.get()}))).get()));
  EXPECT_FALSE(*same(water.get(), valueOf(enumMember("plant.Kind", "Oil")).get()));
  EXPECT_EQ(text(valueOf(invoke(water.get(), "getLiteral", {}))), "Water");
  EXPECT_EQ(describe(water.get()), "1-by-1 plant.Kind object (Water)");
  EXPECT_EQ(*identity(water.get()), 0U);

  const ArrayPtr object = tank();
  valueOf(set(object.get(), "Kind", water.get()));
  EXPECT_TRUE(*same(water.get(), valueOf(get(object.get(), "Kind")).get()));
  native(object).kind = 9;
  EXPECT_EQ(describe(valueOf(get(object.get(), "Kind")).get()), "1-by-1 plant.Kind object (9)");

  EXPECT_EQ(keyOf(enumMember("plant.Kind", "Beer")), "NoSuchMember");
  EXPECT_EQ(keyOf(construct("plant.Kind", all({createDouble(3).get()}))), "NoSuchMember");
  EXPECT_EQ(keyOf(construct("plant.Kind", all({createDouble(1.5).get()}))), "CannotConvert");
  EXPECT_EQ(keyOf(set(object.get(), "Kind", two.get())), "CannotConvert");
}

class Spinner final : public NativePayload {
 public:
  static constexpr char kTypeTag = 0;
  Spinner() : NativePayload(&kTypeTag) {}
  bool hasMethod(std::string_view name) const override { return name == "spin" || name == "halt"; }
  void callMethod(Call& call) override {
    if (call.name() == "halt") throw vcos::plant::Trouble();
    call.setOutput(0, createDouble(static_cast<double>(call.inputCount())));
  }
};

TEST_F(ScriptTest, AForeignObjectAnswersTheMethodsOfItsPayload) {
  const ArrayPtr object = valueOf(foreign(std::make_shared<Spinner>()));
  const ArrayPtr kept = createCell(1, 1);
  setCell(kept.get(), 0, object.get());
  const vxArray* const held = cellElement(kept.get(), 0);
  EXPECT_NE(payloadAs<Spinner>(held), nullptr);
  EXPECT_EQ(doubleData(evaluate("spin", {held, held}).get())[0], 2);
  EXPECT_TRUE(*hasMember(held, "spin"));
  EXPECT_FALSE(*hasMember(held, "random"));
  EXPECT_EQ(doubleData(valueOf(invoke(held, "spin", {})).get())[0], 1);
  EXPECT_EQ(keyOf(invoke(held, "halt", {})), "plant:messages:Jammed");
  EXPECT_EQ(keyOf(invoke(held, "stop", {})), "NoSuchMember");
}

TEST_F(ScriptTest, AForeignObjectMayPassAsOneOfAClassThatTheHostAsksFor) {
  const ArrayPtr object = valueOf(foreign(std::make_shared<Spinner>(), kModelSimStateClass));
  EXPECT_TRUE(isA(object.get(), kModelSimStateClass));
  EXPECT_NE(payloadAs<Spinner>(object.get()), nullptr);
  EXPECT_EQ(keyOf(foreign(std::make_shared<Spinner>(), "no.Such")), "UnknownClass");
}

TEST_F(ScriptTest, ObjectsWithFieldsShowThemAsProperties) {
  const ArrayPtr one = createDouble(1);
  const ArrayPtr normal = valueOf(call("kxsim.dist.Normal", all({one.get(), one.get()})));
  const std::string field = fieldNames(normal.get())[0];
  EXPECT_TRUE(*hasMember(normal.get(), field));
  EXPECT_EQ(number(normal.get(), field), 1);
  EXPECT_EQ(keyOf(set(normal.get(), field, one.get())), "Vexal:host:FixedObject");
  EXPECT_EQ(keyOf(get(normal.get(), "Level")), "NoSuchMember");
  EXPECT_NE(valueOf(invoke(normal.get(), "random", {})), nullptr);
}

}  // namespace
}  // namespace vexal::script
