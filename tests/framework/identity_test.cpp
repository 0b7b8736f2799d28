// Identities and handles.
#include <unordered_set>

#include "framework/garden_test.h"

namespace mf::zero::testing {
namespace {

class ElementIdentityTest : public GardenTest {
 protected:
  static uuid numbered(std::uint64_t n) { return {0x1234, n}; }
};

TEST_F(ElementIdentityTest, ElementsAreFoundByTheirIdentityHoweverLateSomebodyAsks) {
  std::vector<uuid> identities;
  for (int i = 0; i < 500; ++i) identities.push_back(bed().Uuid());
  for (std::uint64_t i = 0; i < 500; ++i) Bed::create(model, numbered(i));  // close together
  EXPECT_EQ(model->findElement(numbered(77)).Uuid(), numbered(77));  // the index is built here
  for (int i = 0; i < 500; ++i) identities.push_back(plant().Uuid());
  for (const uuid& identity : identities) EXPECT_EQ(model->findElement(identity).Uuid(), identity);
  EXPECT_FALSE(model->findElement(numbered(500)));
  EXPECT_FALSE(model->findElement({}));
  EXPECT_EQ(model->elements(Bed::classInfo()).size(), 1000U);
  EXPECT_EQ(model->elements(Spot::classInfo(), false).size(), 0U);
  EXPECT_EQ(model->elements(Spot::classInfo()).size(), 1500U);
}

TEST_F(ElementIdentityTest, AnIdentityIsTakenWhileItsElementLives) {
  const Bed first = Bed::create(model, numbered(1));
  expectRaises<messages::CannotCreateDuplicateIdentity>([&] { Plant::create(model, numbered(1)); });
  EXPECT_EQ(model->size(), 1U);
  {
    Transaction transaction = model->beginTransaction();
    first->destroy();
    EXPECT_FALSE(model->findElement(numbered(1)));
    const Plant second = Plant::create(model, numbered(1));
    EXPECT_EQ(model->findElement(numbered(1)), second);
    transaction.rollback();
    EXPECT_FALSE(second.isValid());
  }
  EXPECT_EQ(model->findElement(numbered(1)), first);
  first->destroy();
  Plant::create(model, numbered(1));
  const Model other = Model::create();
  Bed::create(other, numbered(1));  // another model, another matter
  EXPECT_EQ(first.Uuid(), numbered(1));
}

TEST_F(ElementIdentityTest, EmptyHandlesAreSafeAndRefuseUse) {
  const Bed empty;
  EXPECT_FALSE(empty || empty.isValid());
  EXPECT_EQ(empty.Uuid(), uuid{});
  EXPECT_EQ(empty, Bed());
  EXPECT_FALSE(empty.as<Plant>());
  expectRaises<messages::CannotUseEmptyHandle>([&] { empty->getWidth(); });
  expectRaises<messages::CannotUseEmptyHandle>([&] { empty.label(); });
  expectRaises<messages::CannotUseEmptyHandle>([&] { empty.addRef(); });
  expectRaises<messages::CannotUseEmptyHandle>([&] { Model()->size(); });
}

TEST_F(ElementIdentityTest, HandlesCompareHashAndConvert) {
  const RaisedBed high = RaisedBed::create(model, numbered(2));
  const Bed low = Bed::create(model, numbered(1));
  const Bed sameHigh = high;
  EXPECT_EQ(sameHigh, high);
  EXPECT_NE(low, high);
  EXPECT_LT(low, high);
  EXPECT_EQ(sameHigh.as<RaisedBed>(), high);
  EXPECT_FALSE(low.as<RaisedBed>());
  EXPECT_FALSE(low.as<Plant>());
  EXPECT_EQ(ModelElement(low).as<Spot>(), low);
  const std::unordered_set<ModelElement> mixed{low, high, sameHigh};
  EXPECT_EQ(mixed.size(), 2U);
  EXPECT_EQ(std::unordered_set<Bed>({low, low}).size(), 1U);
  EXPECT_EQ(high->classInfo().scopedName, "garden::RaisedBed");
  EXPECT_EQ(high->getMetaClass(), RaisedBed::metaClass());
}

TEST_F(ElementIdentityTest, HandlesOnDestroyedElementsTellWhatTheyWere) {
  const Bed sunny = Bed::create(model, numbered(1));
  const Bed alsoSunny = sunny;
  sunny->destroy();
  for (int i = 0; i < 200; ++i) bed();  // its place is not given away
  EXPECT_TRUE(alsoSunny && !alsoSunny.isValid());
  EXPECT_EQ(alsoSunny.Uuid(), numbered(1));
  EXPECT_EQ(&alsoSunny->classInfo(), &Bed::classInfo());
  EXPECT_EQ(alsoSunny->getModel(), model);
  EXPECT_FALSE(alsoSunny->getOwner());
  expectRaises<messages::CannotUseDestroyedElement>([&] { alsoSunny.width(); });
  expectRaises<messages::CannotUseDestroyedElement>([&] { alsoSunny->setWidth(2); });
  expectRaises<messages::CannotUseDestroyedElement>([&] { alsoSunny->resolve(); });
  expectRaises<messages::CannotUseDestroyedElement>([&] { alsoSunny->convertToProxy(); });
  expectRaises<messages::CannotUseDestroyedElement>([&] { alsoSunny->disassociateIncoming(); });
  expectRaises<messages::CannotUseDestroyedElement>([&] { alsoSunny->createChanges(); });
  expectRaises<messages::CannotUseDestroyedElement>(
      [&] { alsoSunny->createIntoBeds(Bed::Builder()); });
}

}  // namespace
}  // namespace mf::zero::testing
