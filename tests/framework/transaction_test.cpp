// Transactions: nesting, and rolling back every kind of change.
#include <optional>

#include "framework/garden_test.h"
#include "host/array.h"
#include "support/picture.h"

namespace mf::zero::testing {
namespace {

class TransactionTest : public GardenTest {
 protected:
  /// Runs changes in a transaction that is rolled back, once by itself and once after being
  /// committed into an outer one; nothing may remain of them.
  template <class Changes>
  void expectNothingRemainsOf(Changes&& changes) {
    const Picture before = pictureOf(model);
    {
      const Transaction transaction = model->beginTransaction();
      changes();
      EXPECT_NE(differences(before, pictureOf(model)), "");
    }
    EXPECT_EQ(differences(before, pictureOf(model)), "");
    Transaction outer = model->beginTransaction();
    Transaction inner = model->beginTransaction();
    changes();
    inner.commit();
    EXPECT_EQ(inconsistencies(model), "");
    outer.rollback();
    EXPECT_EQ(differences(before, pictureOf(model)), "");
    EXPECT_EQ(inconsistencies(model), "");
  }

  static void fill(const Record& record, int n) {
    record->setFlag(n % 2 != 0);
    record->setSmall(static_cast<std::int8_t>(n));
    record->setWhole(n);
    record->setNumber(n);
    record->setText(std::u16string(static_cast<std::size_t>(n) * 50, u'x'));
    record->setPlain(u"plain");
    record->setChoice(Kind::Fruit);
    record->setData(vexal::createDouble(n).get());
    record->getNumbersMutable().add(n);
    record->getTextsMutable().insert(0, std::u16string(static_cast<std::size_t>(n), u'y'));
    record->getTextSetMutable().add(std::u16string(1, static_cast<char16_t>(u'a' + n)));
    record->getFlagsMutable().add(true);
    record->getChoicesMutable().add(Kind::Herb);
    record->getWholeSetMutable().add(-n);
  }
};

TEST_F(TransactionTest, RollingBackRestoresValuesOfEveryKind) {
  const Record values = record();
  expectNothingRemainsOf([&] { fill(values, 1); });
  fill(values, 2);
  expectNothingRemainsOf([&] {
    fill(values, 3);
    fill(values, 4);
    values->getNumbersMutable().clear();
    values->getTextsMutable().removeAt(1);
    values->getTextsMutable().set(0, u"replaced");
    values->getTextSetMutable().assign({});
    values->setData(nullptr);
    values->setText(u"");
  });
}

TEST_F(TransactionTest, RollingBackRestoresTheOrderOfLists) {
  const Bed sunny = bed(u"sunny");
  const auto all = plants(6);
  auto shadows = sunny->getShadowsMutable();
  for (const Plant& one : all) shadows.add(one);
  shadows.remove(all[1]);  // a hole from before
  expectNothingRemainsOf([&] {
    shadows.insert(0, sunny);
    shadows.insert(3, all[1]);
    shadows.move(0, 4);
    shadows.move(5, 1);
    shadows.removeAt(2);
    shadows.insert(2, bed());
    shadows.clear();
    shadows.add(all[5]);
    shadows.append(std::vector<ModelElement>{all[4], all[3]});
    shadows.assign(std::vector<ModelElement>{all[3], all[0], all[5]});
  });
}

TEST_F(TransactionTest, RollingBackPutsContentsBackWhereTheyWere) {
  const Bed left = bed(u"left");
  const Bed right = bed(u"right");
  const Bed inner = Bed(left->createIntoBeds(Bed::Builder()));
  const auto all = plants(4);
  for (const Plant& one : all) left->getPlantsMutable().add(one);
  right->setCenterpiece(plant());
  expectNothingRemainsOf([&] {
    right->setCenterpiece(all[0]);
    right->getPlantsMutable().add(all[2]);
    inner->getPlantsMutable().add(all[2]);
    right->getBedsMutable().add(inner);
    right->getBedsMutable().add(left);
    left->setCenterpiece(right->getCenterpiece());
    right->getBedsMutable().clear();
  });
}

TEST_F(TransactionTest, RollingBackCreationEndsWhatWasCreated) {
  const Bed parent = bed();
  const Gardener gardener = Gardener::create(model);
  Bed created;
  uuid identity;
  expectNothingRemainsOf([&] {
    created = Bed::create(model);
    identity = created.Uuid();
    created->setGardener(gardener);
    created->setLabel(u"a text that needs room of its own, more than a short one does");
    created->getShadowsMutable().add(parent);
    created->getShadowsMutable().add(created);
    parent->getShadowsMutable().add(created);
    parent->getBedsMutable().add(created);
    created->createIntoPlants(Plant::Builder().setPhoto(vexal::createDouble(1).get()));
  });
  EXPECT_FALSE(created.isValid());
  EXPECT_EQ(created.Uuid(), identity);
  EXPECT_FALSE(model->findElement(identity));
  expectRaises<messages::CannotUseDestroyedElement>([&] { created->getLabel(); });
}

TEST_F(TransactionTest, RollingBackDestructionBringsBackTheWholeSubtreeAndItsReferences) {
  const Bed root = bed(u"root");
  const Bed child = root->createIntoBeds(Bed::Builder().setLabel(u"child"));
  const Plant grandchild = child->createIntoPlants(Plant::Builder().setLabel(u"grandchild"));
  const Plant outside = plant(u"outside");
  const Gardener gardener = Gardener::create(model);
  child->setGardener(gardener);
  grandchild->getNeighboursMutable().add(outside);
  grandchild->setTwin(grandchild);
  outside->setBed(child);
  for (const Bed& holder : {root, child}) {
    for (const Spot& spot : std::vector<Spot>{root, grandchild, child, outside}) {
      holder->getShadowsMutable().add(spot);
    }
  }
  const auto destroyAll = [&] {
    grandchild->destroy();
    outside->setBed(root);
    root->destroy();
    outside->getNeighboursMutable().add(outside);
  };
  expectNothingRemainsOf(destroyAll);
  EXPECT_TRUE(child.isValid());
  EXPECT_EQ(child.as<ModelElement>(), model->findElement(child.Uuid()));
  {
    // The same without any handle on what is destroyed.
    const Picture before = pictureOf(model);
    Transaction transaction = model->beginTransaction();
    model->findElement(root.Uuid())->doDestroy(false, true);
    transaction.rollback();
    EXPECT_EQ(differences(before, pictureOf(model)), "");
  }
  destroyAll();
  EXPECT_EQ(model->size(), 2U);
}

TEST_F(TransactionTest, RollingBackRestoresTwoSidedReferences) {
  const auto all = plants(4);
  const Gardener first = Gardener::create(model);
  const Gardener second = Gardener::create(model);
  const Tool tool = Tool::create(model);
  const Bed sunny = bed();
  all[0]->setTwin(all[1]);
  sunny->setGardener(first);
  first->setShears(tool);
  first->getToolsMutable().add(tool);
  expectNothingRemainsOf([&] {
    all[2]->setTwin(all[3]);
    all[1]->setTwin(all[2]);
    all[0]->setTwin(all[0]);
    all[0]->getNeighboursMutable().add(all[0]);
    all[0]->getNeighboursMutable().add(all[1]);
    second->getBedsMutable().add(sunny);
    tool->setKeptBy(second);
    tool->getUsersMutable().clear();
    second->getToolsMutable().add(tool);
    tool->destroy();
  });
}

TEST_F(TransactionTest, TransactionsEndInTheReverseOrderOfTheirBeginning) {
  const Bed sunny = bed();
  Transaction outer = model->beginTransaction();
  Transaction inner = model->beginTransaction();
  expectRaises<messages::CannotNestTransaction>(
      [&] { static_cast<void>(model->beginTransaction(true)); });
  expectRaises<messages::CannotEndTransaction>([&] { outer.commit(); });
  expectRaises<messages::CannotEndTransaction>([&] { outer.rollback(); });
  EXPECT_TRUE(outer.isOpen() && inner.isOpen());
  sunny->setWidth(2);
  inner.commit();
  expectRaises<messages::CannotEndTransaction>([&] { inner.rollback(); });
  Transaction moved = std::move(outer);
  expectRaises<messages::CannotEndTransaction>([&] { outer.commit(); });
  moved.commit();
  EXPECT_FALSE(moved.isOpen());
  EXPECT_FALSE(model->isInTransaction());
  EXPECT_EQ(sunny.width(), 2);
  Transaction alone = model->beginTransaction(true);
  alone.rollback();
}

TEST_F(TransactionTest, AnOuterTransactionTakesInnerOnesAlongForGood) {
  const Bed sunny = bed();
  std::optional<Transaction> outer = model->beginTransaction();
  std::optional<Transaction> inner = model->beginTransaction();
  sunny->setWidth(2);
  outer.reset();
  EXPECT_EQ(sunny.width(), 1.5);
  EXPECT_FALSE(inner->isOpen());
  // Later ones at the same depth are none of its business.
  Transaction later = model->beginTransaction();
  Transaction laterInner = model->beginTransaction();
  sunny->setWidth(3);
  expectRaises<messages::CannotEndTransaction>([&] { inner->commit(); });
  inner.reset();
  EXPECT_TRUE(laterInner.isOpen());
  laterInner.commit();
  later.commit();
  EXPECT_EQ(sunny.width(), 3);
}

TEST_F(TransactionTest, OldValuesAreThoseBeforeTheOutermostTransaction) {
  const Bed sunny = bed(u"sunny");
  const Plant lily = sunny->createIntoPlants(Plant::Builder());
  const auto width = propertyOf(sunny, u"Width");
  EXPECT_EQ(sunny->getOldValue(width), Value(1.5));
  Transaction outer = model->beginTransaction();
  sunny->setWidth(2);
  Transaction inner = model->beginTransaction();
  sunny->setWidth(3);
  sunny->setLabel(u"shady");
  lily->destroy();
  EXPECT_EQ(sunny->getOldValue(width), Value(1.5));
  EXPECT_EQ(sunny->getOldValue(propertyOf(sunny, u"Label")), Value(u"sunny"));
  EXPECT_EQ(sunny->getOldValue(propertyOf(sunny, u"Plants")), Value::ofList({Value(lily)}));
  EXPECT_EQ(sunny->getOldValue(propertyOf(sunny, u"Area")),
            Value(9.0));  // derived: the present one
  inner.rollback();
  sunny->createIntoPlants(Plant::Builder());
  EXPECT_EQ(sunny->getOldValue(width), Value(1.5));
  EXPECT_EQ(sunny->getOldValue(propertyOf(sunny, u"Label")), Value(u"sunny"));
  const Value before = sunny->getOldValue(propertyOf(sunny, u"Plants"));
  EXPECT_EQ(before.items().size(), 1U);
  outer.commit();
  lily->destroy();
  expectRaises<messages::CannotUseDestroyedElement>(
      [&] { lily->getOldValue(propertyOf(sunny, u"Label")); });
}

TEST_F(TransactionTest, UnchangedValuesAreForgottenInTheInnermostTransactionOnly) {
  const Record values = record();
  EXPECT_EQ(values->revertUnchanged(), 0);
  values->setText(u"a text that is too long to be shared by way of the cache of short texts");
  const std::u16string text = values->getText();
  const auto thereAndBack = [&] {
    values->setText(u"other");
    values->setNumber(5);
    values->setWhole(1);
    values->setText(text);
    values->setNumber(0);
  };
  expectNothingRemainsOf([&] {
    thereAndBack();
    EXPECT_EQ(values->revertUnchanged(), 2);
    EXPECT_EQ(values->revertUnchanged(), 0);
    Transaction inner = model->beginTransaction();
    values->setWhole(0);  // began before this one
    EXPECT_EQ(values->revertUnchanged(), 0);
    thereAndBack();
    EXPECT_EQ(values->revertUnchanged(), 2);
    inner.commit();
    values->setWhole(7);
  });
}

TEST_F(TransactionTest, ForgettingReferencesThatCameBackLeavesTheRollbackSound) {
  const Plant lily = plant();
  const Plant rose = plant();
  const Bed sunny = bed();
  const Bed shady = bed();
  lily->setBed(sunny);
  sunny->setCenterpiece(rose);
  expectNothingRemainsOf([&] {
    lily->setBed(shady);
    shady->destroy();
    lily->setBed(sunny);
    lily->revertUnchanged();
    const Bed third = bed();
    third->getPlantsMutable().add(rose);
    sunny->setCenterpiece(rose);
    sunny->revertUnchanged();
  });
}

TEST_F(TransactionTest, AForgottenReferenceLeavesRoomForThoseThatCameAndWentMeanwhile) {
  const Plant lily = plant();
  const std::vector<Plant> others{plant(), plant(), plant(), plant(), plant()};
  for (std::size_t count = 1; count <= others.size(); ++count) {
    const Bed sunny = bed();
    lily->setBed(sunny);
    expectNothingRemainsOf([&] {
      sunny->setWidth(7);
      lily->setBed({});
      for (std::size_t i = 0; i < count; ++i) others[i]->setBed(sunny);
      for (std::size_t i = 0; i < count; ++i) others[i]->setBed({});
      lily->setBed(sunny);
      EXPECT_EQ(lily->revertUnchanged(), 1);
      EXPECT_EQ(lily->revertUnchanged(), 0);
    });
  }
}

TEST_F(TransactionTest, ALongTransactionThatIsRolledBackLeavesLookUpWorking) {
  std::vector<uuid> identities;
  for (int i = 0; i < 1000; ++i) identities.push_back(bed().Uuid());
  EXPECT_FALSE(model->findElement(generateNewUuid()));  // builds the index
  Transaction transaction = model->beginTransaction();
  for (std::size_t i = 10; i < identities.size(); ++i) model->findElement(identities[i])->destroy();
  for (int i = 0; i < 3000; ++i) bed()->destroy();
  transaction.rollback();
  for (const uuid& identity : identities) EXPECT_TRUE(model->findElement(identity));
  EXPECT_FALSE(model->findElement(generateNewUuid()));
  EXPECT_EQ(model->size(), 1000U);
}

}  // namespace
}  // namespace mf::zero::testing
