// Change sets: what observers are told, when, and what they may do meanwhile.
#include <limits>
#include <optional>

#include "framework/change_set.h"
#include "framework/garden_test.h"
#include "host/array.h"
#include "support/picture.h"

namespace mf::zero::testing {
namespace {

class ObserverTest : public GardenTest {
 protected:
  /// One line a change: kind, property, old and new value.
  static std::string textOf(const ChangeSet& changes) {
    std::string text;
    for (const Change& change : changes) {
      if (change.kind() == ChangeKind::kCreated) text += "created";
      if (change.kind() == ChangeKind::kDestroyed) text += "destroyed";
      if (change.kind() == ChangeKind::kModified) {
        text += toUtf8(change.property()->name) + ' ' + pictureOf(change.oldValue()) + " -> " +
                pictureOf(change.newValue());
      }
      text += "; ";
    }
    return text;
  }
  Subscription listen() {
    return model->observe([this](const ChangeSet& changes) { told.push_back(textOf(changes)); });
  }
  std::vector<std::string> heard() { return std::exchange(told, {}); }

  using Lines = std::vector<std::string>;
  Lines told;
};

TEST_F(ObserverTest, AreToldOnceAfterTheOutermostCommit) {
  const Bed sunny = bed(u"sunny");
  const auto subscription = listen();
  sunny->setWidth(2);
  EXPECT_EQ(heard(), Lines{"Width 1.500000 -> 2.000000; "});
  Transaction outer = model->beginTransaction();
  sunny->setWidth(3);
  Transaction inner = model->beginTransaction();
  sunny->setLabel(u"shady");
  sunny->setWidth(4);
  inner.commit();
  EXPECT_TRUE(told.empty());
  outer.commit();
  EXPECT_EQ(heard(), Lines{"Width 2.000000 -> 4.000000; Label \"sunny\" -> \"shady\"; "});
  model->beginTransaction().rollback();
  model->beginTransaction().commit();
  EXPECT_TRUE(told.empty());
}

TEST_F(ObserverTest, HearNothingOfWhatEndedWhereItBegan) {
  const Record values = record();
  const Bed sunny = bed();
  const Plant lily = plant();
  sunny->getPlantsMutable().add(lily);
  const auto subscription = listen();
  values->setNumber(0);
  values->setText(u"");
  values->setData(nullptr);
  values->getNumbersMutable().clear();
  sunny->getPlantsMutable().assign(std::vector<ModelElement>{lily});
  {
    Transaction transaction = model->beginTransaction();
    values->setNumber(1);
    values->setNumber(0);
    transaction.commit();  // a single change, and none in the end
  }
  {
    Transaction transaction = model->beginTransaction();
    values->setText(u"there");
    values->getTextsMutable().add(u"there");
    sunny->setCenterpiece(lily);
    bed()->destroy();
    sunny->getPlantsMutable().add(lily);
    values->setText(u"");
    values->getTextsMutable().removeAt(0);
    transaction.commit();
  }
  EXPECT_EQ(heard(), Lines{});
}

TEST_F(ObserverTest, HearOfNaNWheneverItIsSet) {
  const Record values = record();
  const auto subscription = listen();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  values->setNumber(nan);
  values->setNumber(nan);
  EXPECT_EQ(heard(), (Lines{"Number 0 -> nan; ", "Number nan -> nan; "}));
}

TEST_F(ObserverTest, HearOfLivesNotOfWhatHappenedInThem) {
  const Bed sunny = bed();
  const auto subscription = listen();
  const Bed child = sunny->createIntoBeds(Bed::Builder().setWidth(3));
  const std::string childList = '(' + child.Uuid().toString() + ", )";
  EXPECT_EQ(heard(), Lines{"created; Beds () -> " + childList + "; "});
  {
    Transaction transaction = model->beginTransaction();
    child->setWidth(4);
    sunny->destroy();
    transaction.commit();
  }
  EXPECT_EQ(heard(), Lines{"destroyed; destroyed; "});
}

TEST_F(ObserverTest, SeeDestroyedElementsAndTheirHoldersBefore) {
  const Bed sunny = bed();
  const uuid identity = sunny->createIntoPlants(Plant::Builder()).Uuid();
  const Gardener gardener = Gardener::create(model);
  sunny->setGardener(gardener);
  const auto subscription = model->observe([&](const ChangeSet& changes) {
    told.push_back(textOf(changes));
    const ModelElement gone = (changes.end() - 1)->element();
    EXPECT_FALSE(gone.isValid());
    EXPECT_EQ(gone->classInfo().name, u"Plant");
    EXPECT_EQ(gone.Uuid(), identity);
    EXPECT_EQ(&changes.model(), model.impl());
  });
  model->findElement(identity)->destroy();
  ASSERT_EQ(told.size(), 1U);
  EXPECT_EQ(heard().front(), "Plants (" + identity.toString() + ", ) -> (); destroyed; ");
}

TEST_F(ObserverTest, AreGivenTheResultOfTheCommit) {
  const Bed sunny = bed();
  std::optional<Value> result;
  const auto subscription =
      model->observe([&](const ChangeSet& changes) { result = changes.result(); });
  Transaction transaction = model->beginTransaction();
  sunny->setWidth(2);
  transaction.commit(Value(u"widened"));
  EXPECT_EQ(result, Value(u"widened"));
  sunny->setWidth(3);
  EXPECT_EQ(result, std::nullopt);
}

TEST_F(ObserverTest, WhatTheyWriteIsToldAfterwardsAndEarlierSetsKeepTheirNewValues) {
  const Record values = record();
  const Bed sunny = bed();
  const auto writer = model->observe([&](const ChangeSet& changes) {
    if (values.whole() >= 3 || changes.begin()->property()->name == u"Label") return;
    Transaction transaction = model->beginTransaction();
    values->setWhole(values.whole() + 1);
    values->getNumbersMutable().insert(0, values.whole());
    sunny->getShadowsMutable().add(bed());
    transaction.commit();
  });
  const auto subscription = listen();
  sunny->getShadowsMutable().add(sunny);
  const auto lines = heard();
  ASSERT_EQ(lines.size(), 4U);
  EXPECT_EQ(lines[0], "Shadows () -> (" + sunny.Uuid().toString() + ", ); ");
  EXPECT_NE(lines[1].find("Whole 0 -> 1; Numbers () -> (1.000000, ); "), std::string::npos);
  EXPECT_NE(lines[2].find("Whole 1 -> 2; Numbers (1.000000, ) -> (2.000000, 1.000000, ); "),
            std::string::npos);
  EXPECT_NE(lines[3].find("Whole 2 -> 3; "), std::string::npos);
}

TEST_F(ObserverTest, MayLeaveATransactionOpenWhichIsToldOfWhenItIsCommitted) {
  const Bed sunny = bed(u"sunny");
  std::optional<Transaction> open;
  const auto beginner = model->observe([&](const ChangeSet&) {
    if (open) return;
    open.emplace(model->beginTransaction());
    sunny->setWidth(3);
  });
  const auto subscription = listen();
  sunny->setWidth(2);
  EXPECT_EQ(heard(), Lines{"Width 1.500000 -> 2.000000; "});
  sunny->setLabel(u"shady");
  EXPECT_TRUE(told.empty());
  open->commit();
  EXPECT_EQ(heard(), Lines{"Width 2.000000 -> 3.000000; Label \"sunny\" -> \"shady\"; "});
}

TEST_F(ObserverTest, MayUndoWhatTheyBeganWithoutATrace) {
  const Bed sunny = bed();
  const auto undecided = model->observe([&](const ChangeSet&) {
    Transaction transaction = model->beginTransaction();
    sunny->setWidth(7);
    sunny->setLabel(u"seven");
    transaction.rollback();
    model->beginTransaction().commit();
  });
  const auto subscription = listen();
  for (const double width : {2.0, 3.0}) {
    sunny->setWidth(width);
    EXPECT_EQ(heard().size(), 1U);
    EXPECT_EQ(sunny.width(), width);
  }
}

TEST_F(ObserverTest, MayDestroyWhatAnotherIsStillToHearOf) {
  const Bed sunny = bed();
  const Plant lily = plant();
  bool done = false;
  const auto destroyer = model->observe([&](const ChangeSet&) {
    if (!std::exchange(done, true)) sunny->destroy();
  });
  const auto subscription = listen();
  sunny->getShadowsMutable().add(lily);
  EXPECT_EQ(heard(), (Lines{"Shadows () -> (" + lily.Uuid().toString() + ", ); ", "destroyed; "}));
}

TEST_F(ObserverTest, MayLeaveAndLetOthersLeaveOrJoinMeanwhile) {
  const Bed sunny = bed();
  int first = 0;
  int second = 0;
  int third = 0;
  Subscription selfEnding;
  Subscription ended;
  Subscription joined;
  selfEnding = model->observe([&](const ChangeSet&) {
    ++first;
    selfEnding.end();
    ended.end();
    joined = model->observe([&](const ChangeSet&) { ++third; });
  });
  ended = model->observe([&](const ChangeSet&) { ++second; });
  sunny->setWidth(2);
  EXPECT_EQ(std::tuple(first, second, third), std::tuple(1, 0, 0));
  sunny->setWidth(3);
  EXPECT_EQ(std::tuple(first, second, third), std::tuple(1, 0, 1));
}

TEST_F(ObserverTest, WhatTheyThrowReachesTheCallerAfterTheOthersWereTold) {
  const Bed sunny = bed();
  const auto first = model->observe([](const ChangeSet&) { throw std::runtime_error("first"); });
  const auto second = model->observe([](const ChangeSet&) { throw std::logic_error("second"); });
  const auto subscription = listen();
  EXPECT_THROW(sunny->setWidth(2), std::runtime_error);
  Transaction transaction = model->beginTransaction();
  sunny->setWidth(3);
  EXPECT_THROW(transaction.commit(), std::runtime_error);
  EXPECT_FALSE(transaction.isOpen());
  EXPECT_THROW(Bed::create(model), std::runtime_error);
  EXPECT_EQ(sunny.width(), 3);
  EXPECT_EQ(model->size(), 2U);
  EXPECT_EQ(heard().size(), 3U);
}

TEST_F(ObserverTest, ThatNeverSettleAreStopped) {
  const Record values = record();
  const auto restless =
      model->observe([&](const ChangeSet&) { values->setNumber(values.number() + 1); });
  expectRaises<messages::ObserversDoNotSettle>([&] { values->setNumber(1); });
  EXPECT_GT(values.number(), 1);
}

TEST_F(ObserverTest, MayOutliveTheModel) {
  Subscription outliving;
  {
    const Model other = Model::create();
    outliving = other->observe([](const ChangeSet&) {});
    Bed::create(other);
  }
  outliving.end();
  Subscription moved = std::move(outliving);
  moved.end();
}

TEST_F(ObserverTest, MayHoldTheLastHandlesOfTheModel) {
  Model other = Model::create();
  Bed sunny = Bed::create(other);
  auto subscription = other->observe([&](const ChangeSet&) {
    sunny = {};
    other = {};
  });
  sunny.impl()->setWidth(2);
  EXPECT_FALSE(other);
}

TEST_F(ObserverTest, HearOfAListOnceHoweverManyStepsItTook) {
  const Bed sunny = bed();
  const auto all = plants(40);
  const auto subscription = listen();
  Transaction transaction = model->beginTransaction();
  for (const Plant& one : all) sunny->getShadowsMutable().insert(0, one);
  for (std::size_t i = 0; i < 40; i += 2) all[i]->destroy();
  sunny->getShadowsMutable().move(0, 19);
  transaction.commit();
  std::string expected;
  for (const Spot& spot : sunny.shadows()) expected += spot.Uuid().toString() + ", ";
  ASSERT_EQ(told.size(), 1U);
  EXPECT_EQ(told.front().substr(0, told.front().find(';')), "Shadows () -> (" + expected + ')');
}

}  // namespace
}  // namespace mf::zero::testing
