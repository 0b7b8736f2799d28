// Natives and their host objects: identity, parts, arrays of natives, and what goes when.
#include "host/vcos/native.h"

#include <vector>

#include "host/cell.h"
#include "host/object.h"
#include "host/vcos/class.h"
#include "host/vcos/om.h"
#include "support/host_errors.h"
#include "support/plant_test.h"

namespace vcos {
namespace {

using factory::basic::BindingRegistry;
using plant::kDevices;
using plant::Tank;
using plant::Valve;
using vexal::ArrayPtr;
using vexal::script::element;
using vexal::script::identity;
using vexal::script::same;
using vexal::script::valueOf;
using vexal::testing::expectHostError;

class NativeTest : public vexal::script::PlantTest {
 protected:
  static std::vector<void*> tanks(std::size_t count) {
    std::vector<void*> natives;
    for (std::size_t k = 0; k < count; ++k) natives.push_back(new Tank);
    return natives;
  }
};

TEST_F(NativeTest, ANativeHasOneObjectForAsLongAsSomebodyHoldsIt) {
  auto* const tank = new Tank;
  ArrayPtr first = BindingRegistry::announce(kDevices, {tank});
  const ArrayPtr second = BindingRegistry::announce(kDevices, {tank});
  EXPECT_EQ(tank->references, 1);
  EXPECT_TRUE(*same(first.get(), second.get()));
  EXPECT_EQ(*identity(first.get()), *identity(second.get()));
  const ArrayPtr other = BindingRegistry::announce(kDevices, {new Tank});
  EXPECT_FALSE(*same(first.get(), other.get()));
  EXPECT_NE(*identity(first.get()), *identity(other.get()));
  expectHostError("Vexal:class:AlreadyBound", [&] {
    BindingRegistry::announceForConstructor(kDevices, {tank}, "plant.Tank", first.get(), true);
  });
  expectHostError("Vexal:class:InvalidHandle", [] { BindingRegistry::announce(kDevices, {}); });
}

TEST_F(NativeTest, PartsOfANativeHaveObjectsOfTheirOwnAndKeepTheWhole) {
  ArrayPtr object = tank();
  const ArrayPtr left = valueOf(vexal::script::get(object.get(), "Left"));
  EXPECT_TRUE(*same(left.get(), valueOf(vexal::script::get(object.get(), "Left")).get()));
  EXPECT_FALSE(*same(left.get(), valueOf(vexal::script::get(object.get(), "Right")).get()));
  valueOf(vexal::script::set(object.get(), "Level", vexal::createDouble(4).get()));
  object.reset();
  EXPECT_EQ(number(left.get(), "Reading"), 4);
}

TEST_F(NativeTest, RemovingPartsANativeFromItsObject) {
  static constinit const NativeFamily kOwned{.name = "owned"};
  int native = 0;
  COSClass* const gauge = COSClass::getClass("plant.Gauge");
  const ArrayPtr before = BindingRegistry::announce(kOwned, {&native}, gauge);
  EXPECT_EQ(factory::impl::validateSelfPointer(before.get()), Native{&native});
  BindingRegistry::remove(kOwned, {&native});
  expectHostError("Vexal:class:InvalidHandle",
                  [&] { factory::impl::validateSelfPointer(before.get()); });
  const ArrayPtr after = BindingRegistry::announce(kOwned, {&native}, gauge);
  EXPECT_FALSE(*same(before.get(), after.get()));
  EXPECT_EQ(factory::impl::nativeOf(after.get(), kDevices), Native{});
  expectHostError("Vexal:class:InvalidHandle", [&] {
    BindingRegistry::announceAll(kOwned, std::vector<void*>{&native}, gauge);
  });
}

TEST_F(NativeTest, ThePairingsSurviveManyNativesComingAndGoing) {
  std::vector<ArrayPtr> held;
  std::vector<void*> natives = tanks(1000);
  for (void* native : natives) held.push_back(BindingRegistry::announce(kDevices, {native}));
  for (std::size_t k = 0; k < held.size(); k += 3) held[k].reset();
  for (std::size_t k = 0; k < held.size(); ++k) {
    if (!held[k]) continue;
    const ArrayPtr again = BindingRegistry::announce(kDevices, {natives[k]});
    ASSERT_EQ(*identity(again.get()), *identity(held[k].get())) << k;
  }
}

TEST_F(NativeTest, AnArrayOfNativesMakesObjectsOnlyOfElementsThatAreLookedAt) {
  std::vector<void*> natives = tanks(1000);
  const ArrayPtr array = BindingRegistry::announceAll(kDevices, natives);
  EXPECT_EQ(vexal::className(array.get()), "plant.Tank");
  EXPECT_EQ(liveArrays(), 1U);
  EXPECT_FALSE(BindingRegistry::isAnnounced(kDevices, {natives[7]}));
  {
    const ArrayPtr object = valueOf(element(array.get(), 7));
    EXPECT_TRUE(*same(object.get(), omGetArrayElement(array.get(), 7).get()));
    EXPECT_EQ(static_cast<Tank*>(natives[7])->references, 2);
    EXPECT_EQ(vexal::script::keyOf(element(array.get(), 1000)), "Vexal:host:IndexOutOfRange");
  }
  EXPECT_FALSE(BindingRegistry::isAnnounced(kDevices, {natives[7]}));
  const ArrayPtr copy = vexal::deepCopy(array.get());
  omSetArrayElement(copy.get(), 1, valueOf(element(array.get(), 0)).get());
  EXPECT_TRUE(
      *same(omGetArrayElement(copy.get(), 1).get(), omGetArrayElement(array.get(), 0).get()));
  EXPECT_FALSE(*same(copy.get(), array.get()));
  omSetArrayElement(copy.get(), 1, omGetArrayElement(array.get(), 1).get());
  EXPECT_TRUE(*same(copy.get(), array.get()));
}

TEST_F(NativeTest, AnArrayTakesTheClassThatItsNativesShare) {
  std::vector<void*> mixed = tanks(2);
  mixed.push_back(new Valve);
  const ArrayPtr devices = BindingRegistry::announceAll(kDevices, mixed);
  EXPECT_EQ(vexal::className(devices.get()), "plant.Device");
  EXPECT_EQ(vexal::className(omGetArrayElement(devices.get(), 2).get()), "plant.Valve");
  const ArrayPtr one = BindingRegistry::announceAll(kDevices, std::span(mixed).last(1));
  EXPECT_EQ(vexal::className(one.get()), "plant.Valve");
  EXPECT_NE(*identity(one.get()), 0U);
  COSClass* const tank = COSClass::getClass("plant.Tank");
  const ArrayPtr none = BindingRegistry::announceAll(kDevices, {}, tank);
  EXPECT_EQ(vexal::describe(none.get()), "empty 0-by-0 plant.Tank object array");
}

TEST_F(NativeTest, AnArrayMayTakeOverTheReferencesOfItsMaker) {
  const ArrayPtr whole = tank();
  const ArrayPtr count = vexal::createDouble(3);
  std::vector<void*> natives = tanks(3);
  for (void* native : natives) static_cast<Tank*>(native)->references = 1;
  const ArrayPtr adopted =
      BindingRegistry::announceAll(kDevices, natives, nullptr, Reference::Adopt);
  EXPECT_EQ(static_cast<Tank*>(natives[0])->references, 1);
  auto* const single = new Tank;
  single->references = 1;
  const ArrayPtr one =
      BindingRegistry::announceAll(kDevices, std::vector<void*>{single}, nullptr, Reference::Adopt);
  EXPECT_EQ(single->references, 1);
}

TEST_F(NativeTest, ArraysOfObjectsAreBuiltElementByElement) {
  const ArrayPtr left = tank("left");
  const ArrayPtr right = tank("right");
  const ArrayPtr pair = valueOf(vexal::script::objectArray(all({left.get(), right.get()}), ""));
  EXPECT_EQ(vexal::className(pair.get()), "plant.Tank");
  EXPECT_TRUE(*same(omGetArrayElement(pair.get(), 1).get(), right.get()));
  const ArrayPtr unset = omCreateVCOSMatrix(1, 2, "plant.Tank");
  EXPECT_EQ(
      vexal::script::keyOf(vexal::script::get(omGetArrayElement(unset.get(), 0).get(), "Level")),
      "InvalidHandle");
  EXPECT_TRUE(omIsVCOS(unset.get()));
  EXPECT_FALSE(omIsVCOS(vexal::createCell(1, 1).get()));
}

TEST_F(NativeTest, ArraysOfValuesAreIntegersUnderneath) {
  const ArrayPtr integers =
      vexal::createArray(vexal::ClassId::Int32, std::array<std::size_t, 2>{1, 2});
  vexal::mutableElements<std::int32_t>(integers.get())[1] = 2;
  const ArrayPtr kinds = omCreateBuiltinBasedArrayFromUnderlyingArray("plant.Kind", integers.get());
  EXPECT_EQ(omGetNumberOfElementsInUnderlyingArray(kinds.get()), 2U);
  EXPECT_EQ(vexal::describe(omGetArrayElement(kinds.get(), 1).get()),
            "1-by-1 plant.Kind object (Water)");
  const ArrayPtr oil = valueOf(vexal::script::enumMember("plant.Kind", "Oil"));
  omSetArrayElement(kinds.get(), 0, oil.get());
  EXPECT_TRUE(*same(omGetArrayElement(kinds.get(), 0).get(), oil.get()));
  EXPECT_TRUE(
      vexal::equalContent(omGetUnderlyingArray(oil.get()).get(), vexal::createInt32(1).get()));
  EXPECT_EQ(vexal::elements<std::int32_t>(omGetUnderlyingArray(kinds.get()).get())[0], 1);
  EXPECT_EQ(vexal::elements<std::int32_t>(omGetUnderlyingArray(kinds.get()).get())[1], 2);
  expectHostError("Vexal:class:NotAValueClass", [&] { omGetUnderlyingArray(integers.get()); });
  expectHostError("Vexal:class:NotAValueClass", [&] {
    omCreateBuiltinBasedArrayFromUnderlyingArray("plant.Tank", integers.get());
  });
}

}  // namespace
}  // namespace vcos
