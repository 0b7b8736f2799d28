// Containment: who owns what, moves, refusals, and depth without recursion.
#include "framework/garden_test.h"
#include "support/picture.h"

namespace mf::zero::testing {
namespace {

class ContainmentTest : public GardenTest {
 protected:
  static constexpr std::size_t kDeep = 1'000'000;

  /// A tower of beds, each in the one before; returns the outermost.
  Bed tower(std::size_t height) {
    const Bed outermost = bed();
    Bed innermost = outermost;
    for (std::size_t i = 1; i < height; ++i) {
      const Bed next = Bed::create(model);
      innermost->getBedsMutable().add(next);
      innermost = next;
    }
    return outermost;
  }
};

TEST_F(ContainmentTest, AnElementHasOneOwnerAndMovesFromTheOneToTheOther) {
  const Bed left = bed(u"left");
  const Bed right = bed(u"right");
  const Plant lily = plant();
  EXPECT_FALSE(lily->getOwner());
  EXPECT_FALSE(lily->getOwningProperty());
  left->getPlantsMutable().add(lily);
  EXPECT_EQ(lily->getOwner(), left);
  EXPECT_EQ(lily->getOwningProperty(), propertyOf(left, u"Plants"));
  right->getPlantsMutable().add(lily);
  EXPECT_TRUE(left.plants().empty());
  right->setCenterpiece(lily);
  EXPECT_TRUE(right.plants().empty());
  EXPECT_EQ(lily->getOwningProperty(), propertyOf(left, u"Centerpiece"));
  left->setCenterpiece(lily);
  EXPECT_FALSE(right->hasCenterpiece());
  left->getPlantsMutable().add(lily);
  EXPECT_FALSE(left->hasCenterpiece());
  EXPECT_EQ(lily->getOwner(), left);
  EXPECT_EQ(model->roots(), (std::vector<ModelElement>{left, right}));
}

TEST_F(ContainmentTest, WhatIsTakenOutOrReplacedBecomesARoot) {
  const Bed sunny = bed();
  const Plant lily = plant();
  const Plant rose = plant();
  sunny->setCenterpiece(lily);
  sunny->setCenterpiece(rose);
  EXPECT_TRUE(lily.isValid());
  EXPECT_FALSE(lily->getOwner());
  sunny->setCenterpiece({});
  EXPECT_FALSE(rose->getOwner());
  sunny->getPlantsMutable().append(std::vector<ModelElement>{lily, rose});
  sunny->getPlantsMutable().remove(lily);
  sunny->getPlantsMutable().clear();
  EXPECT_EQ(model->roots().size(), 3U);
  const Plant created = sunny->createIntoCenterpiece(Plant::Builder().setLabel(u"first"));
  EXPECT_EQ(sunny->createIntoCenterpiece(Plant::Builder()).label(), u"");
  EXPECT_FALSE(created->getOwner());
}

TEST_F(ContainmentTest, CyclesAreRefusedAtAnyDepth) {
  const Bed outermost = tower(100);
  Bed innermost = outermost;
  while (!innermost.beds().empty()) innermost = innermost.beds().front();
  const Picture before = pictureOf(model);
  for (const Bed& owner : {innermost, Bed(outermost.beds().front()), outermost}) {
    expectRaises<messages::CannotCreateContainmentCycle>(
        [&] { owner->getBedsMutable().add(outermost); });
    expectRaises<messages::CannotCreateContainmentCycle>(
        [&] { owner->getBedsMutable().assign(std::vector<ModelElement>{bed(), owner}); });
  }
  Picture after = pictureOf(model);
  std::erase_if(after, [&](const auto& entry) { return !before.contains(entry.first); });
  EXPECT_EQ(differences(before, after), "");
  // A reference may go in circles.
  outermost->getShadowsMutable().add(outermost);
  innermost->getShadowsMutable().add(outermost);
}

TEST_F(ContainmentTest, DestroyingTakesTheContentsAlongOrLeavesThemAsRoots) {
  const Bed sunny = bed();
  const Bed child = sunny->createIntoBeds(Bed::Builder());
  const Plant lily = child->createIntoPlants(Plant::Builder());
  const Plant rose = sunny->createIntoCenterpiece(Plant::Builder());
  sunny->doDestroy(false, true);
  EXPECT_FALSE(sunny.isValid());
  EXPECT_FALSE(child->getOwner() || rose->getOwner());
  EXPECT_EQ(model->roots().size(), 2U);
  EXPECT_EQ(lily->getOwner(), child);
  child->destroy();
  EXPECT_FALSE(lily.isValid());
  EXPECT_FALSE(lily->getOwner());
  EXPECT_EQ(model->size(), 1U);
  expectRaises<messages::CannotUseDestroyedElement>([&] { child->destroy(); });
}

TEST_F(ContainmentTest, WhatOthersReferToIsKeptIfAsked) {
  const Bed sunny = bed();
  const Bed child = sunny->createIntoBeds(Bed::Builder());
  const Plant lily = plant();
  sunny->getShadowsMutable().add(sunny);
  child->getShadowsMutable().add(sunny);
  lily->setBed(sunny);
  expectRaises<messages::CannotDestroyReferencedElement>([&] { sunny->doDestroy(true, false); });
  EXPECT_TRUE(sunny.isValid() && child.isValid() && lily->hasBed());
  lily->setBed({});
  sunny->doDestroy(true, false);  // references of its own and of its contents go with it
  EXPECT_EQ(model->size(), 1U);
}

TEST_F(ContainmentTest, DisassociatingLeavesContainmentAlone) {
  const Bed sunny = bed();
  const Bed child = sunny->createIntoBeds(Bed::Builder());
  const Gardener gardener = Gardener::create(model);
  child->setGardener(gardener);
  child->getShadowsMutable().add(sunny);
  sunny->getShadowsMutable().add(child);
  child->disassociateIncoming();
  EXPECT_TRUE(sunny.shadows().empty());
  EXPECT_FALSE(child->hasGardener());  // the other end is a reference to it
  child->setGardener(gardener);
  child->basicDisassociateAll();
  EXPECT_TRUE(child.shadows().empty());
  EXPECT_TRUE(gardener.beds().empty());
  EXPECT_EQ(child->getOwner(), sunny);
}

TEST_F(ContainmentTest, DepthIsNoMatter) {
  Bed outermost = tower(kDeep);
  EXPECT_EQ(model->size(), kDeep);
  {
    const Transaction transaction = model->beginTransaction();
    outermost->destroy();
    EXPECT_EQ(model->size(), 0U);
  }
  EXPECT_EQ(model->size(), kDeep);
  {
    const Transaction transaction = model->beginTransaction();
    tower(kDeep / 4);
  }
  EXPECT_EQ(model->size(), kDeep);
  outermost->destroy();
  EXPECT_EQ(model->size(), 0U);
}

TEST_F(ContainmentTest, DepthIsNoMatterForBuilders) {
  auto innermost = std::make_unique<Builder>(Bed::classInfo(), Model());
  for (std::size_t i = 1; i < kDeep / 4; ++i) {
    auto outer = std::make_unique<Builder>(Bed::classInfo(), Model());
    outer->values().addChild(*Bed::classInfo().findByName(u"Beds"), std::move(innermost));
    innermost = std::move(outer);
  }
  Builder copy = *innermost;
  copy.setModel(model);
  const ModelElement outermost = copy.create();
  EXPECT_EQ(model->size(), kDeep / 4);
  outermost->destroy();
}

}  // namespace
}  // namespace mf::zero::testing
