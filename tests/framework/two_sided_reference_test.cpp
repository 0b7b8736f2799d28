// References with two ends: whichever end changes, the other follows.
#include "framework/change_set.h"
#include "framework/garden_test.h"

namespace mf::zero::testing {
namespace {

class TwoSidedReferenceTest : public GardenTest {
 protected:
  Gardener gardener() { return Gardener::create(model); }
  Tool tool() { return Tool::create(model); }
  using Elements = std::vector<ModelElement>;
};

TEST_F(TwoSidedReferenceTest, OneToMany) {
  const Gardener first = gardener();
  const Gardener second = gardener();
  const Bed sunny = bed();
  const Bed shady = bed();
  sunny->setGardener(first);
  first->getBedsMutable().insert(0, shady);
  EXPECT_EQ(held(first.beds()), (std::vector<Bed>{shady, sunny}));
  EXPECT_EQ(shady.gardener(), first);
  second->getBedsMutable().add(sunny);  // the one end can hold but one
  EXPECT_EQ(sunny.gardener(), second);
  EXPECT_EQ(held(first.beds()), std::vector<Bed>{shady});
  shady->setGardener(second);
  EXPECT_TRUE(first.beds().empty());
  second->getBedsMutable().remove(sunny);
  EXPECT_FALSE(sunny->hasGardener());
  shady->setGardener({});
  EXPECT_FALSE(second->hasBeds());
}

TEST_F(TwoSidedReferenceTest, OneToOneFreesBothFormerPartners) {
  const Gardener first = gardener();
  const Gardener second = gardener();
  const Tool left = tool();
  const Tool right = tool();
  first->setShears(left);
  right->setKeptBy(second);
  EXPECT_EQ(second.shears(), right);
  first->setShears(right);
  EXPECT_EQ(right.keptBy(), first);
  EXPECT_FALSE(left->hasKeptBy());
  EXPECT_FALSE(second->hasShears());
  right->setKeptBy({});
  EXPECT_FALSE(first->hasShears());
}

TEST_F(TwoSidedReferenceTest, ManyToMany) {
  const Gardener first = gardener();
  const Gardener second = gardener();
  const Tool spade = tool();
  const Tool rake = tool();
  first->getToolsMutable().append(Elements{spade, rake});
  spade->getUsersMutable().add(second);
  EXPECT_EQ(held(spade.users()), (std::vector<Gardener>{first, second}));
  EXPECT_EQ(held(second.tools()), std::vector<Tool>{spade});
  expectRaises<messages::CannotAddSecondObject>([&] { second->getToolsMutable().add(spade); });
  spade->getUsersMutable().clear();
  EXPECT_EQ(held(first.tools()), std::vector<Tool>{rake});
  rake->destroy();
  EXPECT_FALSE(first->hasTools());
}

TEST_F(TwoSidedReferenceTest, MovingAndReorderingOneEndLeavesTheOtherAsItIs) {
  const Gardener first = gardener();
  const Gardener second = gardener();
  const Tool spade = tool();
  const Tool rake = tool();
  const Tool hoe = tool();
  first->getToolsMutable().append(Elements{spade, rake});
  second->getToolsMutable().append(Elements{spade, rake});
  const std::vector<Gardener> users{first, second};
  std::size_t changes = 0;
  const auto subscription = model->observe([&](const ChangeSet& set) { changes = set.size(); });
  first->getToolsMutable().move(0, 1);
  EXPECT_EQ(changes, 1U);
  EXPECT_EQ(held(first.tools()), (std::vector<Tool>{rake, spade}));
  EXPECT_EQ(held(spade.users()), users);
  first->getToolsMutable().assign(Elements{spade, hoe, rake});
  EXPECT_EQ(held(first.tools()), (std::vector<Tool>{spade, hoe, rake}));
  EXPECT_EQ(held(rake.users()), users);
  first->getToolsMutable().assign(Elements{hoe});
  EXPECT_EQ(held(rake.users()), std::vector<Gardener>{second});
}

TEST_F(TwoSidedReferenceTest, APropertyMayBeItsOwnOtherEnd) {
  const auto all = plants(3);
  all[0]->getNeighboursMutable().append(Elements{all[0], all[1], all[2]});
  EXPECT_EQ(all[0].neighbours().size(), 3U);  // itself but once
  EXPECT_EQ(held(all[1].neighbours()), std::vector<Plant>{all[0]});
  expectRaises<messages::CannotAddSecondObject>(
      [&] { all[2]->getNeighboursMutable().add(all[0]); });
  all[0]->getNeighboursMutable().remove(all[0]);
  all[1]->getNeighboursMutable().clear();
  EXPECT_EQ(held(all[0].neighbours()), std::vector<Plant>{all[2]});

  all[0]->setTwin(all[0]);
  EXPECT_EQ(all[0].twin(), all[0]);
  all[1]->setTwin(all[0]);
  EXPECT_EQ(all[0].twin(), all[1]);
  all[2]->setTwin(all[1]);
  EXPECT_FALSE(all[0]->hasTwin());
  all[2]->setTwin(all[2]);
  EXPECT_FALSE(all[1]->hasTwin());
}

TEST_F(TwoSidedReferenceTest, InverseOperationsWorkOnBothEndsToo) {
  const Gardener first = gardener();
  const Tool spade = tool();
  const auto tools = propertyOf(first, u"Tools");
  const auto keptBy = propertyOf(spade, u"KeptBy");
  first->inverseAdd(spade, tools);
  EXPECT_EQ(held(spade.users()), std::vector<Gardener>{first});
  spade->inverseAdd(first, keptBy);
  EXPECT_EQ(first.shears(), spade);
  first->inverseRemove(spade, tools);
  EXPECT_FALSE(spade->hasUsers());
  expectRaises<messages::NoSuchElement>([&] { first->inverseRemove(spade, tools); });
  spade->inverseRemove(first, keptBy);
  EXPECT_FALSE(first->hasShears());
  expectRaises<messages::NoSuchProperty>([&] { first->inverseAdd(spade, keptBy); });
  expectRaises<messages::CannotCastIncompatibleTypes>(
      [&] { bed()->inverseAdd(spade, propertyOf(bed(), u"Width")); });
  expectRaises<messages::CannotCastIncompatibleTypes>(
      [&] { bed()->inverseRemove(spade, propertyOf(bed(), u"Width")); });
}

}  // namespace
}  // namespace mf::zero::testing
