// Queries: which elements are selected, in which order, and what is refused.
#include "framework/query/query.h"

#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "framework/garden_test.h"
#include "host/array.h"

namespace mf::zero::testing {
namespace {

using query::Comparison;
using query::Query;
using query::SearchClassMatchMode;
using Numbers = std::vector<double>;
using Labels = std::vector<std::u16string>;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr auto kSmallest = std::numeric_limits<std::int32_t>::min();
constexpr auto kGreatest = std::numeric_limits<std::int32_t>::max();

class QueryTest : public GardenTest {
 protected:
  Record record(double number, std::u16string_view text = u"") {
    const Record made = Record::create(model);
    made->setNumber(number);
    made->setText(text);
    return made;
  }

  /// All X that meet the conditions which `restrict` puts on its argument.
  template <class X, class Restrict>
  std::vector<X> select(Restrict restrict) const {
    Query query(model);
    auto constrainables = query.constrain<X>();
    restrict(constrainables);
    const std::vector<X> selected = query.select<X>();
    EXPECT_EQ(query.count(), selected.size());
    return selected;
  }
  template <class Restrict>
  Numbers numbersWhere(Restrict restrict) const {
    Numbers numbers;
    for (const Record& selected : select<Record>(restrict)) numbers.push_back(selected.number());
    return numbers;
  }
  template <class X = Bed, class Restrict>
  Labels labelsWhere(Restrict restrict) const {
    Labels labels;
    for (const X& selected : select<X>(restrict)) labels.push_back(selected.label());
    return labels;
  }
};

TEST_F(QueryTest, NumbersAreComparedAsNumbersAreWithNanInNoOrder) {
  for (const double number : {-kInfinity, -0.0, 1.0, 2.0, kInfinity, std::nan("")}) record(number);
  EXPECT_EQ(numbersWhere([](auto& r) { r.number.isEqualTo(0.0); }), Numbers{0});
  EXPECT_EQ(numbersWhere([](auto& r) { r.number.isLessThan(1.0); }), (Numbers{-kInfinity, 0}));
  EXPECT_EQ(numbersWhere([](auto& r) { r.number.isAtMost(1.0); }), (Numbers{-kInfinity, 0, 1}));
  EXPECT_EQ(numbersWhere([](auto& r) { r.number.isGreaterThan(1.0); }), (Numbers{2, kInfinity}));
  EXPECT_EQ(numbersWhere([](auto& r) { r.number.isAtLeast(1.0); }), (Numbers{1, 2, kInfinity}));
  EXPECT_EQ(numbersWhere([](auto& r) { r.number.isBetween(0.0, 1.0); }), (Numbers{0, 1}));
  EXPECT_EQ(numbersWhere([](auto& r) { r.number.isBetween(1.0, 0.0); }), Numbers{});
  EXPECT_EQ(numbersWhere([](auto& r) { r.number.isUnset(); }), Numbers{0});
  EXPECT_EQ(numbersWhere([](auto& r) { r.number.isEqualTo(std::nan("")); }), Numbers{});
  EXPECT_EQ(numbersWhere([](auto& r) { r.number.isNotEqualTo(1.0); }).size(), 5U);
  EXPECT_EQ(numbersWhere([](auto& r) { r.number.isSet(); }).size(), 5U);
}

TEST_F(QueryTest, EveryPlainTypeIsComparedByValue) {
  const Record one = record(1);
  one->setSmall(-128);
  one->setWhole(kSmallest);
  one->setFlag(true);
  one->setChoice(Kind::Fruit);
  const Record two = record(2);
  two->setSmall(127);
  two->setWhole(kGreatest);
  two->setChoice(Kind{});
  EXPECT_EQ(numbersWhere([](auto& r) { r.small.isEqualTo(-128); }), Numbers{1});
  EXPECT_EQ(numbersWhere([](auto& r) { r.small.isAtLeast(0); }), Numbers{2});
  EXPECT_EQ(numbersWhere([](auto& r) { r.small.isLessThan(1000); }), (Numbers{1, 2}));
  EXPECT_EQ(numbersWhere([](auto& r) { r.whole.isLessThan(0); }), Numbers{1});
  EXPECT_EQ(numbersWhere([](auto& r) { r.whole.isEqualTo(kGreatest); }), Numbers{2});
  EXPECT_EQ(numbersWhere([](auto& r) { r.flag.isEqualTo(true); }), Numbers{1});
  EXPECT_EQ(numbersWhere([](auto& r) { r.flag.isUnset(); }), Numbers{2});
  EXPECT_EQ(numbersWhere([](auto& r) { r.choice.isEqualTo(Kind::Fruit); }), Numbers{1});
  EXPECT_EQ(numbersWhere([](auto& r) { r.choice.isNotEqualTo(Kind::Fruit); }), Numbers{2});
  EXPECT_EQ(numbersWhere([](auto& r) { r.choice.isSet(); }), Numbers{1}) << "77 is no literal";
}

TEST_F(QueryTest, TextsAreComparedByContent) {
  record(1, u"running");
  record(2, u"Running");
  record(3, u"run");
  record(4);
  EXPECT_EQ(numbersWhere([](auto& r) { r.text.isEqualTo(u"running"); }), Numbers{1});
  EXPECT_EQ(numbersWhere([](auto& r) { r.text.isNotEqualTo(u"running"); }), (Numbers{2, 3, 4}));
  EXPECT_EQ(numbersWhere([](auto& r) { r.text.startsWith(u"run"); }), (Numbers{1, 3}));
  EXPECT_EQ(numbersWhere([](auto& r) { r.text.startsWith(u""); }), (Numbers{1, 2, 3, 4}));
  EXPECT_EQ(numbersWhere([](auto& r) { r.text.isEqualTo(u""); }), Numbers{4});
  EXPECT_EQ(numbersWhere([](auto& r) { r.text.isSet(); }), (Numbers{1, 2, 3}));
}

TEST_F(QueryTest, PlainCollectionsAndArraysAreAskedForWhatTheyHold) {
  const Record first = record(1);
  first->getNumbersMutable().add(2.5);
  first->getTextSetMutable().add(u"a");
  first->getChoicesMutable().add(Kind::Herb);
  const Record second = record(2);
  second->getFlagsMutable().add(false);
  second->getSmallsMutable().add(-1);
  second->setData(vexal::createDouble(1.0).get());
  EXPECT_EQ(numbersWhere([](auto& r) { r.numbers.contains(2.5); }), Numbers{1});
  EXPECT_EQ(numbersWhere([](auto& r) { r.numbers.contains(0.0); }), Numbers{});
  EXPECT_EQ(numbersWhere([](auto& r) { r.textSet.contains(u"a"); }), Numbers{1});
  EXPECT_EQ(numbersWhere([](auto& r) { r.choices.contains(Kind::Herb); }), Numbers{1});
  EXPECT_EQ(numbersWhere([](auto& r) { r.flags.contains(false); }), Numbers{2});
  EXPECT_EQ(numbersWhere([](auto& r) { r.smalls.contains(-1); }), Numbers{2});
  EXPECT_EQ(numbersWhere([](auto& r) { r.textSet.isUnset(); }), Numbers{2});
  EXPECT_EQ(numbersWhere([](auto& r) { r.data.isSet(); }), Numbers{2});
  first->getNumbersMutable().clear();
  EXPECT_EQ(numbersWhere([](auto& r) { r.numbers.isSet(); }), Numbers{});
}

TEST_F(QueryTest, ReferencesAreComparedByElement) {
  const Plant first = plant(u"first");
  const Plant second = plant(u"second");
  plant(u"third");
  const Bed sunny = bed(u"sunny");
  first->setBed(sunny);
  second->setBed(bed(u"shady"));
  using Found = std::vector<Plant>;
  EXPECT_EQ(select<Plant>([&](auto& p) { p.bed.isEqualTo(sunny); }), Found{first});
  EXPECT_EQ(labelsWhere<Plant>([&](auto& p) { p.bed.isNotEqualTo(sunny); }),
            (Labels{u"second", u"third"}));
  EXPECT_EQ(labelsWhere<Plant>([](auto& p) { p.bed.isEqualTo({}); }), Labels{u"third"});
  EXPECT_EQ(select<Plant>([](auto& p) { p.bed.isSet(); }), (Found{first, second}));
  const Model elsewhere = Model::create();
  for (int i = 0; i < 3; ++i) Plant::create(elsewhere);
  const Bed foreign = Bed::create(elsewhere);  // it has the place there that `sunny` has here
  EXPECT_EQ(foreign->id(), sunny->id());
  EXPECT_EQ(select<Plant>([&](auto& p) { p.bed.isEqualTo(foreign); }), Found{});
  EXPECT_EQ(select<Plant>([&](auto& p) { p.bed.isNotEqualTo(foreign); }).size(), 3U);
}

TEST_F(QueryTest, AnElementThatTakesADestroyedOnesPlaceIsNotTakenForIt) {
  const Plant holder = plant();
  Query query(model);
  {
    const Bed target = bed();
    query.constrain<Plant>().bed.isEqualTo(target);
    target->destroy();
  }
  holder->setBed(bed());
  EXPECT_EQ(query.count(), 0U);
}

TEST_F(QueryTest, CollectionsOfElementsAreAskedForWhatTheyHold) {
  const Bed first = bed(u"first");
  const Bed second = bed(u"second");
  const Bed third = bed(u"third");
  first->getShadowsMutable().add(second);
  first->getShadowsMutable().add(third);
  second->getShadowsMutable().add(third);
  second->getBedsMutable().add(third);
  const auto shades = [&](const Bed& bed) {
    return labelsWhere([&](auto& b) { b.shadows.contains(bed); });
  };
  EXPECT_EQ(shades(third), (Labels{u"first", u"second"}));
  EXPECT_EQ(shades(second), Labels{u"first"});
  EXPECT_EQ(labelsWhere([&](auto& b) { b.beds.contains(third); }), Labels{u"second"});
  EXPECT_EQ(labelsWhere([](auto& b) { b.beds.isUnset(); }), (Labels{u"first", u"third"}));
  const auto transaction = model->beginTransaction();  // so that the hole stays
  first->getShadowsMutable().removeAt(0);
  EXPECT_EQ(shades(second), Labels{});
  EXPECT_EQ(shades({}), Labels{}) << "a hole is no element";
  second->getShadowsMutable().clear();
  EXPECT_EQ(labelsWhere([](auto& b) { b.shadows.isSet(); }), Labels{u"first"});
}

TEST_F(QueryTest, DerivedPropertiesAreComputed) {
  bed(u"wide")->setWidth(2.0);
  bed(u"narrow")->setWidth(1.0);
  plant(u"plant");
  EXPECT_EQ(labelsWhere<Spot>([](auto& s) { s.area.isEqualTo(4.0); }), Labels{u"wide"});
  EXPECT_EQ(labelsWhere<Spot>([](auto& s) { s.area.isLessThan(2.0); }).size(), 2U);
}

TEST_F(QueryTest, AllConditionsMustHold) {
  record(1, u"a");
  record(2, u"a");
  record(2, u"b");
  const auto both = [](auto& r) {
    r.number.isEqualTo(2.0);
    r.text.isEqualTo(u"a");
  };
  EXPECT_EQ(numbersWhere(both), Numbers{2});
  EXPECT_EQ(numbersWhere([](auto&) {}), (Numbers{1, 2, 2}));
}

TEST_F(QueryTest, TheClassAndTheHandleDecideWhoIsLookedAt) {
  const Bed low = bed();
  const RaisedBed high = RaisedBed::create(model);
  plant();
  Query all(model);
  EXPECT_EQ(all.select<Bed>().size(), 2U);
  EXPECT_EQ(all.select<RaisedBed>(), std::vector{high});
  EXPECT_EQ(all.count(), 3U);
  Query exact(model);
  exact.constrain<Bed>(SearchClassMatchMode::kExactClass);
  EXPECT_EQ(exact.first<Bed>(), low);
  EXPECT_EQ(exact.select<ModelElement>().size(), 1U);
  EXPECT_TRUE(exact.select<RaisedBed>().empty());
  Query both(model);
  both.constrain<Spot>().label.isUnset();
  both.constrain<RaisedBed>().height.isSet();
  EXPECT_EQ(both.select<Spot>(), std::vector<Spot>{high});
}

TEST_F(QueryTest, WhatCannotBeAskedIsRefusedAndAddsNothing) {
  const auto property = [](const ClassInfo& info, std::u16string_view name) -> const auto& {
    return *info.findByName(name);
  };
  const PropertyInfo& number = property(Record::classInfo(), u"Number");
  const PropertyInfo& choice = property(Record::classInfo(), u"Choice");
  record(0);
  Query query(model);
  expectRaises<messages::NoSuchProperty>([&] { query.where(number, Comparison::kSet); });
  query.constrain<Record>();
  using NoCast = messages::CannotCastIncompatibleTypes;
  expectRaises<NoCast>([&] { query.where(number, Comparison::kEqual, u"1"); });
  expectRaises<NoCast>([&] { query.where(number, Comparison::kLess, 1); });
  expectRaises<NoCast>([&] { query.where(choice, Comparison::kEqual, 1); });
  expectRaises<NoCast>([&] { query.where(number, Comparison::kEqual, Value::ofList({1.0})); });
  const std::pair<std::u16string_view, Comparison> refused[] = {
      {u"Number", Comparison::kContains}, {u"Small", Comparison::kStartsWith},
      {u"Flag", Comparison::kLess},       {u"Choice", Comparison::kGreater},
      {u"Text", Comparison::kAtLeast},    {u"Data", Comparison::kEqual},
      {u"Numbers", Comparison::kNotEqual}};
  for (const auto& pair : refused) {
    const PropertyInfo& asked = property(Record::classInfo(), pair.first);
    expectRaises<messages::InvalidValue>([&] { query.where(asked, pair.second); });
  }
  Bed::Constrainables wrong(query, Record::metaClass(), SearchClassMatchMode::kExactClass);
  expectRaises<messages::NoSuchProperty>([&] { wrong.width.isEqualTo(1.0); });
  expectRaises<NoCast>([&] { query.select<Bed>(); });
  EXPECT_EQ(query.count(), 1U);
}

TEST_F(QueryTest, AQueryNeedsAnOpenModelAndAClass) {
  expectRaises<messages::CannotUseEmptyHandle>([] { const Query none{Model()}; });
  Query query(model);
  expectRaises<messages::CannotUseEmptyHandle>([&] {
    const Record::Constrainables none(query, meta::Class(), SearchClassMatchMode::kExactClass);
  });
  const Model closed = Model::create();
  const Query late(closed);
  closed->close();
  expectRaises<messages::CannotUseClosedModel>([&] { late.first(); });
}

TEST_F(QueryTest, DestroyedElementsNeverMatchAndAVisitMayChangeTheModel) {
  const Record kept = record(1);
  record(2);
  const Record gone = record(3);
  gone->destroy();
  Query query(model);
  query.constrain<Record>().number.isSet();
  EXPECT_EQ(query.count(), 2U);
  Numbers visited;
  query.forEach<Record>([&](const Record& visit) {
    visited.push_back(visit.number());
    query.forEach<Record>([](const Record& each) { each->destroy(); });
    record(4);
  });
  EXPECT_EQ(visited, Numbers{1});
  EXPECT_EQ(query.first<Record>().number(), 4.0);
  query.first<Record>()->destroy();
  EXPECT_FALSE(query.first<Record>());
}

// Plants in a row, each the neighbour of the next: to load one makes proxies of those beside it.
class Row : public ElementLoader {
 public:
  bool load(const uuid& identity, BuilderValues& values) override {
    if (identity.low > kLength) return false;
    ++loaded;
    values.set(property(u"Label"), toUtf16("plant " + std::to_string(identity.low)));
    for (const std::uint64_t beside : {identity.low - 1, identity.low + 1}) {
      if (beside < 1 || beside > kLength) continue;
      values.add(property(u"Neighbours"),
                 values.model()->createProxy(Plant::classInfo(), {0, beside}));
    }
    return true;
  }
  int loaded = 0;

 private:
  static constexpr std::uint64_t kLength = 4;
  static const PropertyInfo& property(std::u16string_view name) {
    return *Plant::classInfo().findByName(name);
  }
};

TEST_F(QueryTest, AConditionLoadsProxiesAndWithoutOneTheyStayAsTheyAre) {
  const auto row = std::make_shared<Row>();
  model->setLoader(row);
  model->createProxy(Plant::classInfo(), {0, 1});
  plant(u"plant 0");
  EXPECT_EQ(Query(model).select<Plant>().size(), 2U);
  EXPECT_EQ(row->loaded, 0);
  EXPECT_EQ(labelsWhere<Plant>([](auto& p) { p.label.startsWith(u"plant "); }).size(), 5U);
  EXPECT_EQ(labelsWhere<Plant>([](auto& p) { p.label.isEqualTo(u"plant 4"); }).size(), 1U);
  EXPECT_EQ(row->loaded, 4);
  model->createProxy(Plant::classInfo(), {0, 5});
  Query query(model);
  query.constrain<Plant>().label.isSet();
  expectRaises<messages::CannotResolveProxy>([&] { (void)query.count(); });
  EXPECT_TRUE(query.first()) << "found before the one that cannot be loaded";
}

}  // namespace
}  // namespace mf::zero::testing
