// Proxies: elements whose values a loader brings when somebody looks.
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>

#include "framework/builder.h"
#include "framework/change_set.h"
#include "framework/garden_test.h"
#include "host/array.h"
#include "support/picture.h"

namespace mf::zero::testing {
namespace {

/// Knows what each identity shall be filled with.
class Shelf final : public ElementLoader {
 public:
  using Fill = std::function<void(BuilderValues&)>;
  bool load(const uuid& identity, BuilderValues& values) override {
    ++loads;
    const auto known = fills.find(identity);
    if (known == fills.end()) return false;
    known->second(values);
    return true;
  }
  std::map<uuid, Fill> fills;
  int loads = 0;
};

class ProxyTest : public GardenTest {
 protected:
  ProxyTest() { model->setLoader(shelf); }

  template <class X>
  X proxy(Shelf::Fill fill) {
    const uuid identity = generateNewUuid();
    shelf->fills[identity] = std::move(fill);
    return model->createProxy(X::classInfo(), identity).template as<X>();
  }
  Bed wideBed(double width) {
    return proxy<Bed>([=](BuilderValues& values) { set(values, u"Width", width); });
  }
  static const PropertyInfo& info(const BuilderValues& values, std::u16string_view name) {
    return *values.classInfo().findByName(name);
  }
  static void set(BuilderValues& values, std::u16string_view name, Value value) {
    values.set(info(values, name), std::move(value));
  }
  static void add(BuilderValues& values, std::u16string_view name, const Value& value) {
    values.add(info(values, name), value);
  }

  std::shared_ptr<Shelf> shelf = std::make_shared<Shelf>();
};

TEST_F(ProxyTest, ValuesComeWhenSomebodyLooksByWhateverWay) {
  const std::vector<std::function<bool(const Bed&)>> looks = {
      [](const Bed& b) { return b.width() == 7; },
      [](const Bed& b) { return b->get(Bed::Impl::kProperties[0]) == Value(7.0); },
      [](const Bed& b) { return b->getPropertyValue(propertyOf(b, u"Width")) == Value(7.0); },
      [](const Bed& b) { return b->hasWidth(); },
      [](const Bed& b) { return b.beds().empty(); },
      [](const Bed& b) { return !b->getShadowsMutable().contains(b); },
      [](const Bed& b) { return b.shadows().begin() == b.shadows().end(); },
      [](const Bed& b) { return !b.gardener(); },
      [](const Bed& b) { return b->area() == 49; },
      [](const Bed& b) { return b->createChanges().value(2) == Value(7.0); },
      [](const Bed& b) {
        return b->getModel()->findElement(b.Uuid(), FindElementBehavior::kLoaded) == b;
      },
      [](const Bed& b) {
        Transaction transaction = b->getModel()->beginTransaction();
        const bool isOld = b->getOldValue(propertyOf(b, u"Width")) == Value(7.0);
        transaction.commit();
        return isOld;
      },
  };
  for (const auto& look : looks) {
    const Bed distant = wideBed(7);
    EXPECT_TRUE(distant->isProxy());
    EXPECT_EQ(model->findElement(distant.Uuid()), distant);
    EXPECT_TRUE(distant->isProxy());
    EXPECT_TRUE(look(distant)) << "look " << &look - looks.data();
    EXPECT_FALSE(distant->isProxy());
    EXPECT_EQ(distant.label(), u"");
  }
  EXPECT_EQ(shelf->loads, static_cast<int>(looks.size()));
}

TEST_F(ProxyTest, ObserversMayLookAtThemWhileTheyAreTold) {
  const Bed sunny = bed();
  const Bed distant = wideBed(7);
  int told = 0;
  const auto subscription = model->observe([&](const ChangeSet& changes) {
    ++told;
    EXPECT_EQ(distant.width(), 7);
    ASSERT_EQ(changes.size(), 1U);
    EXPECT_EQ(changes.begin()->oldValue(), Value(1.5));
    EXPECT_EQ(changes.begin()->newValue(), Value(2.0));
  });
  sunny->setWidth(2);
  EXPECT_EQ(told, 1);
  EXPECT_EQ(shelf->loads, 1);
}

TEST_F(ProxyTest, ValuesOfEveryKindAndDefaultsAreFilledIn) {
  const auto array = vexal::createDouble(3);
  const Record distant = proxy<Record>([&](BuilderValues& values) {
    set(values, u"Flag", true);
    set(values, u"Text", u"text");
    set(values, u"Choice", Kind::Flower);
    set(values, u"Data", Value::ofArray(array.get()));
    for (const double number : {3.0, 1.0, 2.0, 3.0}) {
      add(values, u"Numbers", number);
      add(values, u"NumberSet", number);
    }
    add(values, u"TextSet", u"b");
    add(values, u"TextSet", u"a");
  });
  EXPECT_EQ(distant.numbers().size(), 4U);
  EXPECT_EQ(distant.numberSet().toContainer(), (std::set<double>{1, 2, 3}));
  EXPECT_TRUE(distant.numberSet().contains(2) && !distant.numberSet().contains(4));
  EXPECT_EQ(distant.textSet().at(0), u"a");
  EXPECT_TRUE(distant.flag());
  EXPECT_EQ(distant.choice(), Kind::Flower);
  EXPECT_TRUE(vexal::equalContent(distant.data(), array.get()));
  EXPECT_EQ(distant.defaultText(), u"grün \"and\" \\ red");
}

TEST_F(ProxyTest, WritesAreRefusedBeforeAnythingIsLoaded) {
  const Bed distant = wideBed(7);
  const Record numbers = proxy<Record>([](BuilderValues&) {});
  const Plant lily = plant();
  const auto refused = [&](auto&& action) { expectRaises<messages::CannotModifyProxy>(action); };
  refused([&] { distant->setWidth(7); });
  refused([&] { distant->setLabel(u"sign"); });
  refused([&] { distant->setGardener({}); });
  refused([&] { distant->setPropertyValue(propertyOf(lily, u"Label"), Value(u"sign")); });
  refused([&] { distant->getShadowsMutable().add(lily); });
  refused([&] { distant->getShadowsMutable().assign({}); });
  refused([&] { distant->getPlantsMutable().clear(); });
  refused([&] { numbers->getNumbersMutable().add(1); });
  refused([&] { distant->createIntoBeds(Bed::Builder()); });
  refused([&] { distant->destroy(); });
  refused([&] { distant->basicDisassociateAll(); });
  refused([&] { distant->copyStateFromStorage(distant->createStorage()); });
  EXPECT_TRUE(distant->isProxy() && numbers->isProxy());
  EXPECT_EQ(shelf->loads, 0);
  distant->resolve();
  distant->setWidth(8);
  EXPECT_EQ(distant.width(), 8);
}

TEST_F(ProxyTest, ReferencesMayLeadToFurtherProxiesAndBack) {
  const uuid second = generateNewUuid();
  const Bed first = proxy<Bed>([&](BuilderValues& values) {
    add(values, u"Shadows", model->createProxy(Bed::classInfo(), second));
    add(values, u"Beds", model->createProxy(Bed::classInfo(), {1, 1}));
    set(values, u"Gardener", model->createProxy(Gardener::classInfo(), {1, 2}));
  });
  shelf->fills[second] = [&](BuilderValues& values) { add(values, u"Shadows", first); };
  shelf->fills[{1, 1}] = [](BuilderValues&) {};
  shelf->fills[{1, 2}] = [&](BuilderValues& values) { add(values, u"Beds", first); };
  EXPECT_EQ(first.shadows().size(), 1U);
  EXPECT_EQ(shelf->loads, 1);
  EXPECT_TRUE(first.shadows().isProxyAt(0));
  EXPECT_TRUE(first.gardener()->isProxy());
  EXPECT_EQ(first.beds().front()->getOwner(), first);
  const Bed other = first.shadows().front().as<Bed>();
  EXPECT_EQ(other.shadows().front(), first);
  EXPECT_EQ(held(first.gardener().beds()), std::vector<Bed>{first});
  EXPECT_EQ(shelf->loads, 3);
}

TEST_F(ProxyTest, AnElementConvertedToAProxyComesBackWithWhatTheLoaderKnows) {
  const Bed sunny = bed(u"sunny");
  const Plant lily = sunny->createIntoPlants(Plant::Builder());
  const Gardener gardener = Gardener::create(model);
  const Bed holder = bed();
  for (int i = 0; i < 100; ++i) sunny->getShadowsMutable().add(plant());
  sunny->getShadowsMutable().removeAt(3);
  EXPECT_TRUE(sunny.shadows().at(70));  // an index of the holes is made
  sunny->setGardener(gardener);
  holder->getShadowsMutable().add(sunny);
  lily->setBed(sunny);
  shelf->fills[sunny.Uuid()] = [&](BuilderValues& values) {
    set(values, u"Label", u"from the shelf");
    for (const Plant& one : plants(80)) add(values, u"Shadows", one);
  };
  sunny->convertToProxy();
  sunny->convertToProxy();
  EXPECT_TRUE(sunny->isProxy());
  EXPECT_EQ(inconsistencies(model), "");
  EXPECT_EQ(lily->getOwner(), sunny);
  EXPECT_EQ(lily.bed(), sunny);
  EXPECT_TRUE(holder->inverseContainsProxyTo(sunny, propertyOf(holder, u"Shadows")));
  EXPECT_EQ(held(gardener.beds()), std::vector<Bed>{sunny});
  EXPECT_EQ(sunny.label(), u"from the shelf");
  EXPECT_FALSE(holder->inverseContainsProxyTo(sunny, propertyOf(holder, u"Shadows")));
  EXPECT_EQ(sunny.gardener(), gardener);  // that end never left
  EXPECT_EQ(held(sunny.plants()), std::vector<Plant>{lily});
  sunny->getShadowsMutable().removeAt(0);
  EXPECT_EQ(sunny.shadows().indexOf(sunny.shadows().at(78)), 78U);
}

TEST_F(ProxyTest, WhatHappenedToTheOtherEndMeanwhileIsKept) {
  const Gardener first = Gardener::create(model);
  const Gardener second = Gardener::create(model);
  const Bed sunny = bed();
  const Bed shady = bed();
  sunny->setGardener(first);
  shady->setGardener(first);
  shelf->fills[sunny.Uuid()] =
      shelf->fills[shady.Uuid()] = [&](BuilderValues& values) { set(values, u"Gardener", first); };
  first->getBedsMutable().remove(shady);
  sunny->convertToProxy();
  shady->convertToProxy();
  second->getBedsMutable().add(sunny);  // loads it: its own end changes
  EXPECT_FALSE(sunny->isProxy());
  EXPECT_EQ(sunny.gardener(), second);
  EXPECT_FALSE(first->hasBeds());
  EXPECT_FALSE(shady->hasGardener());  // the shelf is behind
}

TEST_F(ProxyTest, ConvertingReferencesConvertsAllThatIsReferredTo) {
  const Bed sunny = bed();
  const Plant lily = plant();
  const Plant rose = sunny->createIntoCenterpiece(Plant::Builder());
  sunny->getShadowsMutable().append(std::vector<ModelElement>{lily, sunny});
  sunny->setGardener(Gardener::create(model));
  sunny->convertReferencesToProxies();
  EXPECT_TRUE(lily->isProxy() && sunny.gardener()->isProxy());
  EXPECT_FALSE(sunny->isProxy() || rose->isProxy());
  {
    const Transaction transaction = model->beginTransaction();
    expectRaises<messages::CannotConvertToProxy>([&] { rose->convertToProxy(); });
  }
  model->setLoader(nullptr);
  expectRaises<messages::CannotConvertToProxy>([&] { rose->convertToProxy(); });
  EXPECT_FALSE(sunny->inverseContainsProxyTo({}, propertyOf(sunny, u"Shadows")));
  EXPECT_FALSE(sunny->inverseContainsProxyTo(lily, propertyOf(sunny, u"Width")));
}

TEST_F(ProxyTest, AFailingLoaderLeavesAProxy) {
  const Model other = Model::create();
  const Plant foreign = Plant::create(other);
  const Bed throwing = proxy<Bed>([](BuilderValues&) { throw std::runtime_error("no disk"); });
  const Bed wrong = proxy<Bed>([&](BuilderValues& values) {
    set(values, u"Label", u"a label that is too long to be shared with any other one in the model");
    add(values, u"Shadows", plant());
    add(values, u"Shadows", foreign);
  });
  const Bed nested = proxy<Bed>([](BuilderValues& values) {
    values.addChild(info(values, u"Beds"), std::make_unique<Bed::Builder>());
  });
  const Bed unknown = model->createProxy(Bed::classInfo(), generateNewUuid()).as<Bed>();
  EXPECT_THROW(throwing.width(), std::runtime_error);
  expectRaises<messages::CannotCreateCrossModelAssociation>([&] { wrong.width(); });
  expectRaises<messages::CannotResolveProxy>([&] { nested.width(); });
  expectRaises<messages::CannotResolveProxy>([&] { unknown->resolve(); });
  for (const Bed& bad : {throwing, wrong, nested, unknown}) EXPECT_TRUE(bad->isProxy());
  model->setLoader(nullptr);
  expectRaises<messages::CannotResolveProxy>([&] { static_cast<void>(unknown.beds().size()); });
}

TEST_F(ProxyTest, AreMadeOncePerIdentityAndOfOneClass) {
  const uuid identity = generateNewUuid();
  const ModelElement first = model->createProxy(Bed::metaClass(), identity);
  EXPECT_EQ(model->createProxy(Bed::classInfo(), identity), first);
  expectRaises<messages::CannotCreateDuplicateIdentity>(
      [&] { model->createProxy(Plant::classInfo(), identity); });
  expectRaises<messages::CannotCreateDuplicateIdentity>([&] { Bed::create(model, identity); });
  expectRaises<messages::CannotCreateAbstractClass>(
      [&] { model->createProxy(Spot::classInfo(), generateNewUuid()); });
  expectRaises<messages::InvalidValue>([&] { model->createProxy(Bed::classInfo(), {}); });
  EXPECT_EQ(model->size(), 1U);
}

TEST_F(ProxyTest, CollectionsWithoutProxiesLoadWhatTheyAreGiven) {
  const Bed distant = wideBed(7);
  const Bed sunny = bed();
  sunny->getBedsMutable().add(distant);
  EXPECT_FALSE(distant->isProxy());
  const Bed unknown = model->createProxy(Bed::classInfo(), generateNewUuid()).as<Bed>();
  expectRaises<messages::CannotResolveProxy>([&] { sunny->getShadowsMutable().add(unknown); });
  EXPECT_TRUE(sunny.shadows().empty());
  const Plant lily = plant();
  lily->setBed(unknown);
  EXPECT_TRUE(lily.bed()->isProxy());
}

TEST_F(ProxyTest, ARollbackUnloadsWhatWasLoadedAndForgetsTheProxiesThatWereMade) {
  const Plant lily = plant();
  const Plant rose = plant();
  const Bed sunny = bed();
  rose->setBed(sunny);
  sunny->getPlantsMutable().add(lily);
  std::vector<Plant> distant;
  for (int i = 0; i < 8; ++i) {
    distant.push_back(proxy<Plant>([&](BuilderValues& values) { set(values, u"Bed", sunny); }));
  }
  const Bed taker = proxy<Bed>([&](BuilderValues& values) { add(values, u"Plants", lily); });
  Transaction transaction = model->beginTransaction();
  rose->setBed({});
  sunny->getPlantsMutable().remove(lily);
  for (const Plant& one : distant) EXPECT_EQ(one.bed(), sunny);
  EXPECT_EQ(taker.plants().size(), 1U);
  const Plant stray = proxy<Plant>([&](BuilderValues& values) { set(values, u"Bed", sunny); });
  EXPECT_EQ(stray.bed(), sunny);
  transaction.rollback();
  EXPECT_EQ(inconsistencies(model), "");
  EXPECT_EQ(rose.bed(), sunny);
  EXPECT_EQ(lily->getOwner(), sunny);
  EXPECT_FALSE(stray.isValid());
  EXPECT_TRUE(taker->isProxy());
  EXPECT_TRUE(taker.plants().empty()) << "lily has an owner that is in memory";
  for (const Plant& one : distant) {
    EXPECT_TRUE(one->isProxy());
    EXPECT_EQ(one.bed(), sunny);
  }
  EXPECT_EQ(inconsistencies(model), "");
}

TEST_F(ProxyTest, ALongTwoSidedListComesBackAsItWas) {
  std::vector<ModelElement> tools;
  for (int i = 0; i < 150; ++i) tools.emplace_back(Tool::create(model));
  Gardener last;
  for (int i = 0; i < 90; ++i) {
    last = Gardener::create(model);
    last->getToolsMutable().append(tools);
  }
  shelf->fills[last.Uuid()] = [&](BuilderValues& values) {
    for (const ModelElement& tool : tools) add(values, u"Tools", tool);
    add(values, u"Tools", tools[5]);  // once is enough
  };
  last->convertToProxy();
  EXPECT_EQ(last.tools().size(), tools.size());
  EXPECT_EQ(inconsistencies(model), "");
}

}  // namespace
}  // namespace mf::zero::testing
