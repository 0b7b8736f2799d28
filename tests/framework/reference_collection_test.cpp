// Collections of elements: their errors, their positions, and going through them while
// they change.
#include <random>

#include "framework/change_set.h"
#include "framework/garden_test.h"
#include "support/picture.h"

namespace mf::zero::testing {
namespace {

class ReferenceCollectionTest : public GardenTest {
 protected:
  using Elements = std::vector<ModelElement>;
};

TEST_F(ReferenceCollectionTest, WhatCannotBeHeldIsRefusedAndNothingChanges) {
  const Bed sunny = bed();
  const Plant lily = plant();
  const Plant rose = plant();
  auto shadows = sunny->getShadowsMutable();
  shadows.add(lily);
  const Model otherModel = Model::create();
  const Plant foreign = Plant::create(otherModel);
  const Plant gone = plant();
  gone->destroy();
  const Tool tool = Tool::create(model);
  const std::string text = expectRaises<messages::CannotAddIncompatibleTypes>(
      [&] { shadows.ReferenceCollection::add(tool); });
  EXPECT_NE(text.find("garden.Spot"), std::string::npos) << text;
  EXPECT_NE(text.find("garden.tools.Tool"), std::string::npos) << text;

  const auto refuseAll = [&]<class M>(M*, const ModelElement& bad) {
    expectRefused<M>([&] { shadows.add(bad); });
    expectRefused<M>([&] { shadows.insert(0, bad); });
    expectRefused<M>([&] { shadows.append(Elements{rose, bad}); });
    expectRefused<M>([&] { shadows.assign(Elements{rose, bad, bad}); });
    // Longer than what is checked all at once.
    Elements many(40, bad);
    for (std::size_t i = 0; i < 39; ++i) many[i] = plant();
    expectRefused<M>([&] { shadows.append(many); });
  };
  refuseAll(static_cast<messages::CannotAddNonExistentObject*>(nullptr), ModelElement());
  refuseAll(static_cast<messages::CannotAddNonExistentObject*>(nullptr), gone);
  refuseAll(static_cast<messages::CannotAddIncompatibleTypes*>(nullptr), tool);
  refuseAll(static_cast<messages::CannotCreateCrossModelAssociation*>(nullptr), foreign);
  refuseAll(static_cast<messages::CannotAddSecondObject*>(nullptr), lily);
}

TEST_F(ReferenceCollectionTest, AnElementIsHeldOnceHoweverLongTheLists) {
  // Each plant in many beds' lists, each list with many plants: neither side is quick to search.
  const auto all = plants(200);
  std::vector<Bed> beds;
  for (int i = 0; i < 100; ++i) {
    beds.push_back(bed());
    beds.back()->getShadowsMutable().append(Elements(all.begin(), all.end()));
  }
  for (const std::size_t i : {0U, 57U, 199U}) {
    expectRefused<messages::CannotAddSecondObject>(
        [&] { beds[50]->getShadowsMutable().add(all[i]); });
    EXPECT_EQ(beds[50].shadows().indexOf(all[i]), i);
  }
  // What the long search remembers must follow each kind of change.
  auto shadows = beds[50]->getShadowsMutable();
  shadows.remove(all[57]);
  EXPECT_FALSE(shadows.contains(all[57]));
  shadows.add(all[57]);
  EXPECT_EQ(shadows.indexOf(all[57]), 199U);
  shadows.move(199, 3);
  EXPECT_EQ(shadows.indexOf(all[57]), 3U);
  all[4]->destroy();
  EXPECT_EQ(shadows.indexOf(all[5]), 5U);
  {
    const Transaction undone = model->beginTransaction();
    shadows.insert(0, plant());
    EXPECT_EQ(shadows.indexOf(all[57]), 4U);
  }
  EXPECT_EQ(shadows.indexOf(all[57]), 3U);
  const Bed sunny = bed();
  expectRefused<messages::CannotAddSecondObject>(
      [&] { sunny->getShadowsMutable().append(Elements{all[0], all[0]}); });
}

TEST_F(ReferenceCollectionTest, ANewElementRefersToAllFromTheStartOrIsNotMade) {
  const PropertyInfo& shadows = *Bed::classInfo().findByName(u"Shadows");
  const auto all = plants(40);
  std::vector<ElementImpl*> good;
  for (const Plant& each : all) good.push_back(each.impl());
  const auto refuseAll = [&] {
    const auto refused = [&]<class M>(M*, ElementImpl* bad) {
      auto targets = good;
      targets.insert(targets.begin() + 30, bad);
      const Picture before = pictureOf(model);
      expectRaises<M>([&] { Bed::Series(model, shadows).create(targets); });
      EXPECT_EQ(differences(before, pictureOf(model)), "");
      EXPECT_EQ(inconsistencies(model), "");
    };
    const Model another = Model::create();
    refused(static_cast<messages::CannotAddNonExistentObject*>(nullptr), nullptr);
    refused(static_cast<messages::CannotAddIncompatibleTypes*>(nullptr), record().impl());
    refused(static_cast<messages::CannotCreateCrossModelAssociation*>(nullptr),
            Plant::create(another).impl());
    refused(static_cast<messages::CannotAddSecondObject*>(nullptr), good[0]);
  };
  std::vector<std::size_t> told;
  const auto subscription =
      model->observe([&](const ChangeSet& changes) { told.push_back(changes.size()); });
  const Bed first = Bed::Series(model, shadows).create(good);
  EXPECT_EQ(told, std::vector<std::size_t>{1});
  EXPECT_EQ(first.shadows().toContainer(), std::vector<Spot>(all.begin(), all.end()));
  refuseAll();
  const Picture before = pictureOf(model);
  {
    const Transaction undone = model->beginTransaction();
    const Bed second = Bed::Series(model, shadows).create(good);
    refuseAll();
    const Bed third = Bed::Series(model, shadows).create({});
    third->getShadowsMutable().append(good);
    EXPECT_EQ(inconsistencies(model), "");
  }
  EXPECT_EQ(differences(before, pictureOf(model)), "");
  expectRefused<messages::NoSuchProperty>([&] { Plant::Series(model, shadows).create(good); });
  expectRefused<messages::CannotCastIncompatibleTypes>(
      [&] { Bed::Series(model, *Bed::classInfo().findByName(u"Label")).create(good); });
}

TEST_F(ReferenceCollectionTest, PlacesPastTheEndAndAbsentElementsAreRefused) {
  const Bed sunny = bed();
  const auto all = plants(3);
  auto shadows = sunny->getShadowsMutable();
  shadows.append(Elements{all[0], all[1]});
  expectRefused<messages::IndexOutOfRange>([&] { static_cast<void>(shadows.at(2)); });
  expectRefused<messages::IndexOutOfRange>([&] { shadows.insert(3, all[2]); });
  expectRefused<messages::IndexOutOfRange>([&] { shadows.removeAt(2); });
  expectRefused<messages::IndexOutOfRange>([&] { shadows.move(2, 0); });
  expectRefused<messages::IndexOutOfRange>([&] { shadows.move(0, 2); });
  expectRefused<messages::NoSuchElement>([&] { shadows.remove(all[2]); });
  expectRefused<messages::NoSuchElement>([&] { shadows.remove(ModelElement()); });
  EXPECT_FALSE(shadows.contains(all[2]) || shadows.contains(ModelElement()));
  EXPECT_EQ(shadows.indexOf(all[2]), std::nullopt);
  expectRaises<messages::IndexOutOfRange>([&] { static_cast<void>(bed().shadows().front()); });
}

TEST_F(ReferenceCollectionTest, BehavesAsAVectorDoesWhateverHolesThereAre) {
  const Bed sunny = bed();
  auto list = sunny->getShadowsMutable();
  std::vector<Spot> expected;
  std::mt19937 random(7);
  const auto place = [&](std::size_t bound) {
    return static_cast<std::ptrdiff_t>(random() % bound);
  };
  const auto subscription = model->observe([](const ChangeSet&) {});
  for (int step = 0; step < 3000; ++step) {
    const std::size_t size = expected.size();
    const auto at = place(size + 1);
    switch (size < 3 ? 0 : random() % 12) {
      case 0:
      case 1:
      case 2:
      case 3:
      case 4: {
        expected.push_back(plant());
        list.add(expected.back());
        break;
      }
      case 5: {
        expected.insert(expected.begin() + at, bed());
        list.insert(static_cast<std::size_t>(at), expected[static_cast<std::size_t>(at)]);
        break;
      }
      case 6: {
        const auto from = place(size);
        const auto to = place(size);
        const Spot moved = expected[static_cast<std::size_t>(from)];
        expected.erase(expected.begin() + from);
        expected.insert(expected.begin() + to, moved);
        list.move(static_cast<std::size_t>(from), static_cast<std::size_t>(to));
        break;
      }
      case 7: {
        const Spot spot = expected[static_cast<std::size_t>(place(size))];
        std::erase(expected, spot);
        spot->destroy();
        break;
      }
      default: {
        const auto where = place(size);
        expected.erase(expected.begin() + where);
        list.removeAt(static_cast<std::size_t>(where));
      }
    }
    ASSERT_EQ(list.size(), expected.size());
    if (!expected.empty()) {
      const auto asked = static_cast<std::size_t>(place(expected.size()));
      ASSERT_EQ(list.at(asked), expected[asked]) << "in step " << step;
      ASSERT_EQ(list.indexOf(expected[asked]), asked) << "in step " << step;
    }
    if (step % 100 != 0) continue;
    std::reverse(expected.begin(), expected.end());
    list.assign(Elements(expected.begin(), expected.end()));
    ASSERT_EQ(held(list), expected);
  }
  EXPECT_GT(expected.size(), 64U);
  EXPECT_EQ(held(list), expected);
}

TEST_F(ReferenceCollectionTest, MayBeEmptiedFromTheFrontAndFilledAtTheBackWhileGoingThrough) {
  const Bed sunny = bed();
  const auto all = plants(300);
  auto list = sunny->getShadowsMutable();
  list.append(Elements(all.begin(), all.end()));
  std::size_t seen = 0;
  for (const Spot& spot : list) {
    EXPECT_EQ(spot, all[seen]);
    list.remove(spot);
    if (seen % 3 == 0) all[seen]->destroy();
    if (++seen < 300) continue;
    break;
  }
  EXPECT_TRUE(list.empty());
  list.add(all[1]);
  seen = 0;
  for (const Spot& spot : list) {
    EXPECT_TRUE(spot);
    if (++seen < 50) list.add(plant());
  }
  EXPECT_EQ(seen, 50U);
  while (!list.empty()) list.remove(*list.begin());
}

TEST_F(ReferenceCollectionTest, AnIteratorMeetsNoElementThatIsGone) {
  const Bed sunny = bed();
  const auto all = plants(2);
  auto list = sunny->getShadowsMutable();
  for (const Plant& one : all) list.add(one);
  auto at = list.begin();
  list.remove(all[0]);
  EXPECT_FALSE(*at);
  ++at;
  EXPECT_EQ(*at, all[1]);
  sunny->destroy();
  EXPECT_TRUE(at == list.end());
  expectRaises<messages::CannotUseDestroyedElement>([&] { static_cast<void>(list.size()); });
  expectRaises<messages::CannotUseDestroyedElement>([&] { list.add(all[1]); });
}

TEST_F(ReferenceCollectionTest, IsALiveViewWhichAHandleOfItsOwnerKeeps) {
  auto view = bed()->getShadowsMutable();
  EXPECT_TRUE(view.empty());
  view.add(plant(u"lily"));
  const auto copy = view;
  view.add(plant(u"rose"));
  EXPECT_EQ(copy.size(), 2U);
  EXPECT_EQ(copy.back().label(), u"rose");
  EXPECT_EQ(copy.toContainer().size(), 2U);
  EXPECT_TRUE(copy.owner()->has(copy.property()));
  view.removeAt(0);
  std::vector<ElementImpl*> elements;
  copy.copyTo(elements);
  EXPECT_EQ(elements, std::vector<ElementImpl*>{copy[0].impl()});
}

TEST_F(ReferenceCollectionTest, UnorderedOnesHoldAsSetsDo) {
  const Bed sunny = bed();
  const auto all = plants(3);
  auto set = sunny->getPlantsMutable();
  for (const Plant& one : all) set.add(one);
  EXPECT_FALSE(set.isOrdered());
  expectRefused<messages::CannotAddSecondObject>([&] { set.add(all[0]); });
  const std::unordered_set<Plant> expected(all.begin(), all.end());
  EXPECT_EQ(set.toContainer(), expected);
  EXPECT_EQ(sunny->plantsBelow().size(), 3U);
}

TEST_F(ReferenceCollectionTest, DestroyedElementsLeaveEveryListThatHoldsThem) {
  const Plant lily = plant();
  std::vector<Bed> beds;
  for (int i = 0; i < 100; ++i) {
    beds.push_back(bed());
    beds.back()->getShadowsMutable().append(Elements{beds.front(), lily});
  }
  lily->setBed(beds[3]);
  beds[3]->destroy();
  EXPECT_FALSE(lily->hasBed());
  lily->destroy();
  beds.front()->disassociateIncoming();
  for (const Bed& one : beds) EXPECT_TRUE(!one.isValid() || one.shadows().empty());
}

TEST_F(ReferenceCollectionTest, AListWhoseElementsAreDestroyedOneByOneStaysSmall) {
  const Bed sunny = bed();
  std::vector<Plant> window = plants(4);
  const auto slide = [&](int times) {
    for (int i = 0; i < times; ++i) {
      Transaction transaction = model->beginTransaction();
      window.push_back(plant());
      sunny->getShadowsMutable().add(window.back());
      window.front()->destroy();
      window.erase(window.begin());
      transaction.commit();
    }
  };
  slide(1000);
  const std::size_t bytes = model->bytesReserved();
  slide(20'000);
  EXPECT_EQ(model->bytesReserved(), bytes);
}

}  // namespace
}  // namespace mf::zero::testing
