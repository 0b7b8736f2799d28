// The life of a model: how long it lasts, closing, freezing and thawing.
#include <memory>
#include <optional>

#include "framework/change_set.h"
#include "framework/garden_test.h"

namespace mf::zero::testing {
namespace {

using ModelTest = GardenTest;

TEST_F(ModelTest, AModelLivesAsLongAsAnyHandleOnIt) {
  Bed last;
  {
    const Model other = Model::create();
    last = Bed::create(other);
    last->createIntoBeds(Bed::Builder().setLabel(u"a label that is not kept in its element"));
  }
  EXPECT_EQ(last.beds().front().label().size(), 39U);
  EXPECT_EQ(last->getModel()->size(), 2U);
  Bed child = last.beds().front();
  last = {};
  child->getOwner()->destroy();
  EXPECT_FALSE(child.isValid());
  std::optional<Transaction> open = Model::create()->beginTransaction();
  EXPECT_TRUE(open->isOpen());
}

TEST_F(ModelTest, ClosingEndsEverythingAndHandlesStaySafe) {
  const Model other = Model::create();
  const Bed sunny = Bed::create(other);
  const Plant lily = sunny->createIntoPlants(Plant::Builder().setLabel(u"lily"));
  sunny->getShadowsMutable().add(lily);
  const auto view = sunny->getShadows();
  int told = 0;
  const auto subscription = other->observe([&](const ChangeSet&) {
    ++told;
    expectRaises<messages::CannotCloseModelInTransaction>([&] { other->close(); });
  });
  sunny->setWidth(3);
  {
    const Transaction transaction = other->beginTransaction();
    expectRaises<messages::CannotCloseModelInTransaction>([&] { other->close(); });
  }
  other->close();
  other->close();
  EXPECT_EQ(told, 1);
  EXPECT_FALSE(other->isOpen() || sunny.isValid() || lily.isValid());
  EXPECT_EQ(other->size(), 0U);
  EXPECT_TRUE(other->roots().empty());
  EXPECT_FALSE(other->findElement(lily.Uuid()));
  expectRaises<messages::CannotUseDestroyedElement>([&] { static_cast<void>(view.size()); });
  expectRaises<messages::CannotUseDestroyedElement>([&] { lily->setLabel(u""); });
  expectRaises<messages::CannotUseClosedModel>(
      [&] { static_cast<void>(other->beginTransaction()); });
  expectRaises<messages::CannotUseClosedModel>(
      [&] { other->createProxy(Bed::classInfo(), generateNewUuid()); });
}

TEST_F(ModelTest, AFrozenModelRefusesEveryChangeUntilItIsThawed) {
  const Bed sunny = bed();
  const Plant lily = plant();
  sunny->getPlantsMutable().add(lily);
  const Record values = record();
  const Model::Freezer freezer(model);
  freezer.freeze();
  const auto refused = [&](auto&& action) {
    expectRaises<messages::CannotModifyFrozenModel>(action);
  };
  refused([&] { sunny->setWidth(2); });
  refused([&] { sunny->setCenterpiece(lily); });
  refused([&] { sunny->getShadowsMutable().add(lily); });
  refused([&] { sunny->getPlantsMutable().remove(lily); });
  refused([&] { sunny->getPlantsMutable().clear(); });
  refused([&] { sunny->getPlantsMutable().assign({}); });
  refused([&] { values->getNumbersMutable().add(1); });
  refused([&] { values->setText(u"text"); });
  refused([&] { sunny->destroy(); });
  refused([&] { sunny->disassociateIncoming(); });
  refused([&] { bed(); });
  refused([&] { Bed::Builder(model).create(); });
  refused([&] { sunny->createIntoBeds(Bed::Builder()); });
  sunny->setWidth(1.5);  // is so already
  EXPECT_EQ(sunny.plants().size(), 1U);
  {
    auto first = std::make_unique<Model::Thawer>(freezer.thaw());
    sunny->setWidth(2);
    const Model::Thawer again = freezer.thaw();
    first.reset();
    EXPECT_FALSE(model->isFrozen()) << "another one thaws it still";
  }
  EXPECT_TRUE(model->isFrozen());
  EXPECT_EQ(sunny.width(), 2);
  const Model::Thawer thawed = freezer.thaw();
}

}  // namespace
}  // namespace mf::zero::testing
