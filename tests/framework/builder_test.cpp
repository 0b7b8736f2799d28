// Builders: what is collected, and what becomes of it.
#include "framework/change_set.h"
#include "framework/garden_test.h"
#include "host/array.h"
#include "support/picture.h"

namespace mf::zero::testing {
namespace {

class BuilderTest : public GardenTest {};

TEST_F(BuilderTest, DefaultsHoldUntilSomethingElseIsSet) {
  Record::Builder builder(model);
  EXPECT_EQ(builder.values().getDefaultSmall(), -128);
  EXPECT_EQ(builder.values().getDefaultText(), u"grün \"and\" \\ red");
  EXPECT_EQ(builder.values().getDefaultChoice(), Kind::Fruit);
  EXPECT_EQ(builder.values().getNumber(), 0);
  builder.setDefaultSmall(1).setDefaultText(u"").setNumber(1).setNumber(2);
  EXPECT_EQ(builder.values().getDefaultSmall(), 1);
  EXPECT_EQ(builder.values().getNumber(), 2);
  const Record built = builder.create();
  EXPECT_EQ(built.defaultSmall(), 1);
  EXPECT_EQ(built.defaultText(), u"");
  EXPECT_EQ(built.defaultWhole(), 2147483647);
  EXPECT_EQ(built.defaultNumber(), 1e-300);
  EXPECT_TRUE(built.defaultFlag());
  EXPECT_EQ(built.number(), 2);
  EXPECT_EQ(RaisedBed::Builder(model).create().height(), 0.8);
  EXPECT_EQ(RaisedBed::Builder(model).create().width(), 1.5);
}

TEST_F(BuilderTest, ValuesOfEveryKindArriveInTheElement) {
  const auto array = vexal::createDouble(7);
  Record::Builder builder(model);
  builder.setFlag(true).setSmall(-1).setWhole(5).setText(u"text").setPlain(u"plain");
  builder.setChoice(Kind::Flower).setData(array.get());
  builder.addFlags(true).addSmalls(3).addWholes(4).addTexts(u"a").addTexts(u"b");
  builder.addNumbers(1).addNumbers(std::vector<double>{2, 3}).addChoices(Kind::Herb);
  builder.addNumberSet(3).addNumberSet(1).addNumberSet(3).addTextSet(u"z").addTextSet(u"a");
  const Record built = builder.create();
  EXPECT_EQ(built.numbers().toContainer(), (std::vector<double>{1, 2, 3}));
  EXPECT_EQ(built.numberSet().toContainer(), (std::set<double>{1, 3}));
  EXPECT_EQ(built.textSet().at(0), u"a");
  EXPECT_EQ(built.texts().size(), 2U);
  EXPECT_NE(built.data(), array.get());
  EXPECT_TRUE(vexal::equalContent(built.data(), array.get()));
  EXPECT_EQ(built.choice(), Kind::Flower);
  builder.values().doClearNumbers();
  EXPECT_TRUE(builder.create().numbers().empty());
}

TEST_F(BuilderTest, ContentsAreCreatedWithItInOrder) {
  const Plant lily = plant(u"lily");
  const Gardener gardener = Gardener::create(model);
  std::size_t sets = 0;
  const auto subscription = model->observe([&](const ChangeSet&) { ++sets; });
  Bed::Builder builder(model);
  builder.setGardener(gardener).addShadows(lily);
  builder.addBeds(Bed::Builder().setLabel(u"1").addPlants(Plant::Builder().setLabel(u"deep")));
  builder.addBeds(RaisedBed::Builder().setLabel(u"2"));
  builder.setCenterpiece(Plant::Builder().setLabel(u"not this"));
  builder.setCenterpiece(Plant::Builder().setLabel(u"this"));
  const uuid identity = generateNewUuid();
  const Bed built = builder.create(identity);
  EXPECT_EQ(sets, 1U);
  EXPECT_EQ(built.Uuid(), identity);
  ASSERT_EQ(built.beds().size(), 2U);
  EXPECT_EQ(built.beds()[0].label(), u"1");
  EXPECT_EQ(built.beds()[1].as<RaisedBed>().label(), u"2");
  EXPECT_EQ(built.beds()[0].plants().front().label(), u"deep");
  EXPECT_EQ(built.centerpiece().label(), u"this");
  EXPECT_EQ(gardener.beds().front(), built);
  EXPECT_EQ(model->size(), 7U);
  builder.create();
  EXPECT_EQ(gardener.beds().size(), 2U);
  expectRefused<messages::CannotCreateDuplicateIdentity>([&] { builder.create(identity); });
}

TEST_F(BuilderTest, CopiesAreIndependentAndMovedFromOnesAreRefused) {
  Bed::Builder original(model);
  original.setLabel(u"a").addBeds(Bed::Builder().setLabel(u"child"));
  Bed::Builder copy = original;
  copy.setLabel(u"b").addBeds(Bed::Builder());
  EXPECT_EQ(original.create().beds().size(), 1U);
  EXPECT_EQ(copy.create().beds().size(), 2U);
  EXPECT_EQ(original.create().label(), u"a");
  copy = original;
  EXPECT_EQ(copy.create().label(), u"a");
  Bed::Builder moved = std::move(original);
  EXPECT_EQ(moved.create().label(), u"a");
  expectRefused<messages::CannotUseEmptyHandle>([&] { original.create(); });
  expectRefused<messages::CannotUseEmptyHandle>([&] { original.setLabel(u"c"); });
  expectRefused<messages::CannotUseEmptyHandle>([&] { copy.addBeds(original); });
}

TEST_F(BuilderTest, WithoutAnOpenModelNothingIsCreated) {
  expectRaises<messages::CannotCreateWithoutModel>([] { Bed::Builder().create(); });
  expectRaises<messages::CannotCreateWithoutModel>([] { Bed::create(Model()); });
  const Model closed = Model::create();
  Bed::Builder builder(closed);
  closed->close();
  expectRaises<messages::CannotCreateWithoutModel>([&] { builder.create(); });
  expectRaises<messages::CannotCreateWithoutModel>([&] { Bed::create(closed); });
  expectRaises<messages::CannotCreateAbstractClass>([&] { Builder(Spot::classInfo(), model); });
  expectRaises<messages::CannotCreateAbstractClass>(
      [&] { createElement(Spot::classInfo(), model, {}); });
}

TEST_F(BuilderTest, AFailingCreateLeavesTheModelUntouched) {
  const Gardener gardener = Gardener::create(model);
  const Model otherModel = Model::create();
  const Plant foreign = Plant::create(otherModel);
  const Bed gone = bed();
  gone->destroy();
  const auto failing = [&](const Spot& bad) {
    Bed::Builder builder(model);
    builder.setGardener(gardener).addPlants(Plant::Builder());
    builder.addBeds(Bed::Builder().addBeds(Bed::Builder().addShadows(bad)));
    return builder;
  };
  expectRefused<messages::CannotCreateCrossModelAssociation>([&] { failing(foreign).create(); });
  expectRefused<messages::CannotAddNonExistentObject>([&] { failing(gone).create(); });
  const Bed sunny = bed();
  expectRefused<messages::CannotCreateCrossModelAssociation>(
      [&] { sunny->createIntoBeds(failing(foreign)); });
  expectRefused<messages::CannotCreateDuplicateIdentity>(
      [&] { sunny->createIntoCenterpiece(Plant::Builder(), sunny.Uuid()); });
}

TEST_F(BuilderTest, BuildersOfAnotherClassAndNoneAtAllAreRefused) {
  Bed::Builder builder(model);
  const PropertyInfo& beds = *Bed::classInfo().findByName(u"Beds");
  const PropertyInfo& width = *Bed::classInfo().findByName(u"Width");
  const auto ofPlant = [&] { return std::make_unique<Plant::Builder>(); };
  expectRaises<messages::CannotAddIncompatibleTypes>(
      [&] { builder.values().addChild(beds, ofPlant()); });
  expectRaises<messages::CannotAddNonExistentObject>([&] { builder.values().doAddBeds(nullptr); });
  expectRaises<messages::CannotAddNonExistentObject>(
      [&] { bed()->createIntoBeds(std::unique_ptr<Builder>()); });
  expectRaises<messages::CannotCastIncompatibleTypes>(
      [&] { builder.values().addChild(width, ofPlant()); });
  EXPECT_TRUE(builder.create().beds().empty());
}

TEST_F(BuilderTest, SetOrAddAnswersTheIndexOrMinusOne) {
  RaisedBed::Builder builder(model);
  auto& values = builder.values();
  const RaisedBed any = RaisedBed::create(model);
  const Record other = record();
  EXPECT_EQ(values.doSetOrAdd(propertyOf(any, u"Label"), Value(u"sign")), 1);
  EXPECT_EQ(values.doSetOrAdd(propertyOf(any, u"Width"), Value(4.0)), 2);
  EXPECT_EQ(values.doSetOrAdd(propertyOf(any, u"Beds"), std::make_unique<Bed::Builder>()), 3);
  EXPECT_EQ(values.doSetOrAdd(propertyOf(any, u"Height"), Value(1.0)), 8);
  EXPECT_EQ(values.doSetOrAdd(propertyOf(any, u"Shadows"), Value::ofList({any, bed()})), 7);
  EXPECT_EQ(values.doSetOrAdd(propertyOf(other, u"Number"), Value(4.0)), -1);
  EXPECT_EQ(values.doSetOrAdd(propertyOf(other, u"Number"), std::make_unique<Bed::Builder>()), -1);
  EXPECT_EQ(Bed::Builder().values().doSetOrAdd(propertyOf(any, u"Height"), Value(1.0)), -1);
  expectRaises<messages::CannotCastIncompatibleTypes>(
      [&] { values.doSetOrAdd(propertyOf(any, u"Width"), Value(u"wide")); });
  expectRaises<messages::CannotCastIncompatibleTypes>(
      [&] { values.doSetOrAdd(propertyOf(any, u"Shadows"), Value::ofList({any, Value(1.0)})); });
  const std::string text = expectRaises<messages::CannotSetReadOnlyProperty>(
      [&] { values.doSetOrAdd(propertyOf(any, u"Area"), Value(1.0)); });
  EXPECT_NE(text.find("garden.Spot.Area"), std::string::npos) << text;
  const RaisedBed built = builder.create();
  EXPECT_EQ(built.label(), u"sign");
  EXPECT_EQ(built.width(), 4);
  EXPECT_EQ(built.height(), 1);
  EXPECT_EQ(built.beds().size(), 1U);
  EXPECT_EQ(built.shadows().size(), 2U);
}

TEST_F(BuilderTest, ChecksOfHostArraysAreForElementsThatExist) {
  const Plant lily = Plant::Builder(model).setPhoto(nullptr).create();
  lily->setPhoto(nullptr);  // is so already
  lily->setPhoto(vexal::createDouble(1).get());
  expectRefused<messages::InvalidValue>([&] { lily->setPhoto(nullptr); });
}

}  // namespace
}  // namespace mf::zero::testing
