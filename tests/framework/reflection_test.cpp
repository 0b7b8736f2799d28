// Elements by reflection: values by property, whole states.
#include "framework/change_set.h"
#include "framework/garden_test.h"
#include "host/array.h"
#include "support/picture.h"

namespace mf::zero::testing {
namespace {

class ReflectionTest : public GardenTest {
 protected:
  static Value array(double number) { return Value::ofArray(vexal::createDouble(number).get()); }

  /// A value for every single property of a record, and the property's name.
  static std::vector<std::pair<std::u16string_view, Value>> singles() {
    return {{u"Flag", true},           {u"Small", std::int8_t{-7}}, {u"Whole", std::int32_t{70000}},
            {u"Number", 0.5},          {u"Text", u"text"},          {u"Plain", u"plain"},
            {u"Choice", Kind::Flower}, {u"Data", array(3)}};
  }
  static std::vector<std::pair<std::u16string_view, Value>> lists() {
    return {{u"Flags", Value::ofList({true, false})},
            {u"SmallSet", Value::ofList({std::int8_t{-7}, std::int8_t{7}})},
            {u"Wholes", Value::ofList({std::int32_t{1}, std::int32_t{1}})},
            {u"Numbers", Value::ofList({0.5, -0.5})},
            {u"Texts", Value::ofList({u"b", u"a"})},
            {u"PlainSet", Value::ofList({u"a", u"b"})},
            {u"ChoiceSet", Value::ofList({Kind::Herb, Kind::Flower})}};
  }
};

TEST_F(ReflectionTest, EveryKindOfValueIsSetGotAndEmptied) {
  const Record r = record();
  auto all = singles();
  for (const auto& one : lists()) all.push_back(one);
  for (const auto& [name, value] : all) {
    const auto property = propertyOf(r, name);
    EXPECT_FALSE(r->hasPropertyValue(property)) << toUtf8(name);
    const Value empty = r->getPropertyValue(property);
    r->setPropertyValue(property, value);
    EXPECT_EQ(r->getPropertyValue(property), value) << toUtf8(name);
    EXPECT_TRUE(r->hasPropertyValue(property)) << toUtf8(name);
    r->setPropertyValue(property, Value());
    EXPECT_FALSE(r->hasPropertyValue(property)) << toUtf8(name);
    EXPECT_EQ(pictureOf(r->getPropertyValue(property)), pictureOf(empty)) << toUtf8(name);
  }
}

TEST_F(ReflectionTest, ReferencesAreSetAsTheTypedSettersDo) {
  const Bed sunny = bed();
  const Plant lily = plant();
  const Gardener gardener = Gardener::create(model);
  sunny->setPropertyValue(propertyOf(sunny, u"Gardener"), Value(gardener));
  EXPECT_EQ(held(gardener.beds()), std::vector<Bed>{sunny});
  sunny->setPropertyValue(propertyOf(sunny, u"Plants"), Value::ofList({lily}));
  EXPECT_EQ(lily->getOwner(), sunny);
  sunny->setPropertyValue(propertyOf(sunny, u"Centerpiece"), Value(lily));
  EXPECT_EQ(sunny->getPropertyValue(propertyOf(sunny, u"Centerpiece")), Value(lily));
  EXPECT_TRUE(sunny.plants().empty());
  sunny->setPropertyValue(propertyOf(sunny, u"Centerpiece"), Value());
  EXPECT_FALSE(sunny->hasPropertyValue(propertyOf(sunny, u"Centerpiece")));
  expectRaises<messages::CannotAddIncompatibleTypes>(
      [&] { sunny->setPropertyValue(propertyOf(sunny, u"Gardener"), Value(lily)); });
  EXPECT_EQ(sunny.gardener(), gardener);
}

TEST_F(ReflectionTest, ValuesOfAnotherTypeAreRefusedAndNothingChanges) {
  const Record r = record();
  const Bed sunny = bed();
  for (const auto& [name, value] : singles()) r->setPropertyValue(propertyOf(r, name), value);
  const Picture before = pictureOf(model);
  const Value wrong[] = {Value(true), Value(std::int8_t{1}), Value(std::int32_t{1}),
                         Value(1.0),  Value(u"1"),           Value(meta::ValueFlags::kMany),
                         array(1),    Value(sunny),          Value::ofList({})};
  for (const auto& [name, own] : singles()) {
    for (const Value& value : wrong) {
      if (value.meta() == own.meta()) continue;
      const auto property = propertyOf(r, name);
      const std::string text = expectRaises<messages::CannotCastIncompatibleTypes>(
          [&] { r->setPropertyValue(property, value); });
      EXPECT_NE(text.find(property->info()->type), std::string::npos) << text;
    }
  }
  for (const auto& [name, own] : lists()) {
    const auto property = propertyOf(r, name);
    for (const Value& value : {Value::ofList({own.items()[0], Value(sunny)}), own.items()[0]}) {
      expectRaises<messages::CannotCastIncompatibleTypes>(
          [&] { r->setPropertyValue(property, value); });
    }
  }
  expectRaises<messages::CannotCastIncompatibleTypes>([&] {
    sunny->setPropertyValue(propertyOf(sunny, u"Shadows"), Value::ofList({sunny, Value(1.0)}));
  });
  EXPECT_EQ(differences(before, pictureOf(model)), "");
}

TEST_F(ReflectionTest, NumbersThatAreNoLiteralsAreRefusedHoweverTheyAreSet) {
  const Plant lily = plant();
  const Record held = record();
  const auto kind = propertyOf(lily, u"Kind");
  for (const auto number : {99, -1}) {
    const auto wrong = static_cast<Kind>(number);
    expectRefused<messages::InvalidValue>([&] { lily->setKind(wrong); });
    expectRefused<messages::InvalidValue>([&] { lily->setPropertyValue(kind, wrong); });
    expectRefused<messages::InvalidValue>([&] { Plant::Builder(model).setKind(wrong).create(); });
    expectRefused<messages::InvalidValue>([&] { held->getChoicesMutable().add(wrong); });
  }
  lily->setKind(Kind{});  // none
  EXPECT_FALSE(lily->hasPropertyValue(kind));
}

TEST_F(ReflectionTest, PropertiesAreThoseOfTheClassAndItsSuperclasses) {
  const RaisedBed high = RaisedBed::create(model);
  EXPECT_EQ(high->getPropertyByIndex(1), propertyOf(high, u"Label"));
  EXPECT_EQ(high->getPropertyByIndex(2), propertyOf(bed(), u"Width"));
  EXPECT_EQ(high->getPropertyByIndex(8), propertyOf(high, u"Height"));
  for (const int index : {-1, 0, 9, 1'000'000}) EXPECT_FALSE(high->getPropertyByIndex(index));
  EXPECT_FALSE(bed()->getPropertyByIndex(8));
  const auto height = propertyOf(high, u"Height");
  const Bed low = bed();
  expectRaises<messages::NoSuchProperty>([&] { low->getPropertyValue(height); });
  expectRaises<messages::NoSuchProperty>([&] { low->setPropertyValue(height, Value(1.0)); });
  expectRaises<messages::NoSuchProperty>([&] { low->hasPropertyValue(height); });
  expectRaises<messages::NoSuchProperty>([&] { low->getOldValue(height); });
  expectRaises<messages::CannotUseEmptyHandle>([&] { low->getPropertyValue({}); });
}

TEST_F(ReflectionTest, DerivedPropertiesAreComputedAndReadOnly) {
  const Bed sunny = bed();
  const auto area = propertyOf(sunny, u"Area");
  EXPECT_EQ(sunny->getPropertyValue(area), Value(2.25));
  EXPECT_TRUE(sunny->hasPropertyValue(area));
  const std::string text = expectRaises<messages::CannotSetReadOnlyProperty>(
      [&] { sunny->setPropertyValue(area, Value(2.25)); });
  EXPECT_NE(text.find("garden.Spot.Area"), std::string::npos) << text;
}

TEST_F(ReflectionTest, ChecksOfHostArraysAreAskedBeforeAnythingHappens) {
  const Plant lily = plant();
  const auto photo = propertyOf(lily, u"Photo");
  lily->setPropertyValue(photo, array(1));
  const vxArray* const held = lily.photo();
  lily->setPhoto(held);
  EXPECT_EQ(lily.photo(), held);
  expectRaises<messages::InvalidValue>([&] { lily->setPropertyValue(photo, Value()); });
  EXPECT_EQ(lily.photo(), held);
}

TEST_F(ReflectionTest, AStateIsTakenAndReturnedTo) {
  const Record r = record();
  for (const auto& [name, value] : singles()) r->setPropertyValue(propertyOf(r, name), value);
  for (const auto& [name, value] : lists()) r->setPropertyValue(propertyOf(r, name), value);
  const ElementState state = r->createChanges();
  EXPECT_EQ(state, r->createChanges());
  EXPECT_EQ(state.value(4), Value(0.5));
  const ElementState fresh = r->createStorage();
  EXPECT_EQ(fresh.value(10), Value(std::int8_t{-128}));
  std::size_t changes = 0;
  int sets = 0;
  const auto subscription = model->observe([&](const ChangeSet& set) {
    changes = set.size();
    ++sets;
  });
  r->copyStateFromStorage(state);
  EXPECT_EQ(sets, 0);
  r->copyStateFromStorage(fresh);
  EXPECT_EQ(sets, 1);
  EXPECT_EQ(changes, singles().size() + lists().size());
  EXPECT_EQ(r.number(), 0);
  EXPECT_TRUE(r.texts().empty());
  r->copyStateFromStorage(state);
  EXPECT_EQ(r->createChanges(), state);
  ElementState partial = fresh;
  r->copyValue(partial, 5);
  EXPECT_EQ(partial.value(5), Value(u"text"));
  expectRaises<messages::NoSuchProperty>([&] { r->copyValue(partial, 31); });
  expectRaises<messages::NoSuchProperty>([&] { static_cast<void>(state.value(0)); });
  expectRaises<messages::CannotCastIncompatibleTypes>(
      [&] { r->copyStateFromStorage(bed()->createStorage()); });
}

TEST_F(ReflectionTest, AStateBringsBackCheckedArraysAndNoDestroyedElements) {
  const Plant lily = plant();
  const ElementState before = lily->createChanges();
  lily->setPhoto(vexal::createDouble(1).get());
  lily->copyStateFromStorage(before);  // the check would refuse the null array
  EXPECT_EQ(lily.photo(), nullptr);
  const Bed sunny = bed();
  lily->setBed(sunny);
  const ElementState withBed = lily->createChanges();
  sunny->destroy();
  lily->setLabel(u"alone");
  expectRaises<messages::CannotAddNonExistentObject>([&] { lily->copyStateFromStorage(withBed); });
  EXPECT_EQ(lily.label(), u"alone");
}

}  // namespace
}  // namespace mf::zero::testing
