// Collections of plain values: sequences and sets of every kind.
#include <limits>
#include <optional>

#include "framework/change_set.h"
#include "framework/garden_test.h"
#include "support/picture.h"

namespace mf::zero::testing {
namespace {

class PrimitiveCollectionTest : public GardenTest {
 protected:
  /// Three values in rising order; a sequence keeps them as they come, a set sorted and once.
  template <class T>
  static void checkSequence(PrimitiveSequence<T> sequence, const T& a, const T& b, const T& c) {
    sequence.add(c);
    sequence.insert(0, a);
    sequence.insert(1, c);
    sequence.add(b);
    EXPECT_EQ(sequence.toContainer(), (std::vector<T>{a, c, c, b}));
    sequence.set(1, b);
    sequence.removeAt(2);
    EXPECT_EQ(sequence.toContainer(), (std::vector<T>{a, b, b}));
    EXPECT_TRUE(sequence.contains(b) && !sequence.contains(c));
    const T values[] = {c, a};
    sequence.assign(values);
    EXPECT_EQ(sequence[0], c);
    EXPECT_EQ(sequence.size(), 2U);
    sequence.clear();
    EXPECT_TRUE(sequence.empty());
  }
  template <class T>
  static void checkSet(PrimitiveSet<T> set, const T& a, const T& b, const T& c) {
    const T values[] = {c, a, c};
    set.assign(values);
    set.add(b);
    set.add(a);
    set.insert(0, c);
    EXPECT_EQ(set.toContainer(), (std::set<T>{a, b, c}));
    EXPECT_EQ(set.size(), 3U);
    EXPECT_EQ(set.at(0), a);
    set.set(0, c);  // is there already
    EXPECT_EQ(set.toContainer(), (std::set<T>{b, c}));
    set.removeAt(0);
    EXPECT_TRUE(set.contains(c) && !set.contains(b));
  }
};

TEST_F(PrimitiveCollectionTest, SequencesOfEveryKindKeepOrderAndDuplicates) {
  const Record r = record();
  checkSequence<std::int8_t>(r->getSmallsMutable(), -128, 0, 127);
  checkSequence<std::int32_t>(r->getWholesMutable(), std::numeric_limits<std::int32_t>::min(), 0,
                              std::numeric_limits<std::int32_t>::max());
  checkSequence<double>(r->getNumbersMutable(), -1e308, 0.5, 1e308);
  checkSequence<std::u16string>(r->getTextsMutable(), u"", u"b", std::u16string(100, u'c'));
  checkSequence<std::u16string>(r->getPlainsMutable(), u"a", u"b", u"c");
  checkSequence<Kind>(r->getChoicesMutable(), Kind::Herb, Kind::Fruit, Kind::Flower);
  const bool flags[] = {true, false, true};
  r->getFlagsMutable().assign(flags);
  EXPECT_EQ(r.flags().toContainer(), (std::vector<bool>{true, false, true}));
}

TEST_F(PrimitiveCollectionTest, SetsOfEveryKindAreSortedAndHoldEachValueOnce) {
  const Record r = record();
  checkSet<std::int8_t>(r->getSmallSetMutable(), -128, 0, 127);
  checkSet<std::int32_t>(r->getWholeSetMutable(), -5, 0, 5);
  checkSet<double>(r->getNumberSetMutable(), -std::numeric_limits<double>::infinity(), 0, 1e-300);
  checkSet<std::u16string>(r->getTextSetMutable(), u"", u"b", std::u16string(100, u'c'));
  checkSet<std::u16string>(r->getPlainSetMutable(), u"a", u"b", u"c");
  checkSet<Kind>(r->getChoiceSetMutable(), Kind::Herb, Kind::Fruit, Kind::Flower);
  r->getFlagSetMutable().add(true);
  r->getFlagSetMutable().add(false);
  r->getFlagSetMutable().add(true);
  EXPECT_EQ(r.flagSet().toContainer(), (std::set<bool>{false, true}));
}

TEST_F(PrimitiveCollectionTest, ASetHoldsNaNOnceBehindAllNumbers) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const Record r = record();
  auto set = r->getNumberSetMutable();
  for (const double value : {nan, 1.0, nan, std::numeric_limits<double>::infinity(), -0.0, 0.0}) {
    set.add(value);
  }
  EXPECT_EQ(set.size(), 4U);
  EXPECT_TRUE(set.contains(nan));
  EXPECT_EQ(set.at(0), 0);
  EXPECT_NE(set.at(3), set.at(3));
  EXPECT_FALSE(r.numbers().contains(nan));
}

TEST_F(PrimitiveCollectionTest, WrongKindsAndPlacesPastTheEndAreRefused) {
  const Record r = record();
  r->getNumbersMutable().add(1);
  r->getTextSetMutable().add(u"a");
  auto numbers = r->getNumbersMutable();
  const std::vector<Value> mixed{Value(2.0), Value(u"two")};
  expectRefused<messages::CannotCastIncompatibleTypes>([&] { numbers.addValue(Value(1)); });
  expectRefused<messages::CannotCastIncompatibleTypes>(
      [&] { numbers.insertValue(0, Value(true)); });
  expectRefused<messages::CannotCastIncompatibleTypes>([&] { numbers.setValueAt(0, Value(u"")); });
  expectRefused<messages::CannotCastIncompatibleTypes>([&] { numbers.assignValues(mixed); });
  expectRefused<messages::CannotCastIncompatibleTypes>([&] { numbers.containsValue(Value(u"")); });
  expectRefused<messages::CannotCastIncompatibleTypes>(
      [&] { r->getChoicesMutable().addValue(Value(1)); });
  expectRefused<messages::IndexOutOfRange>([&] { numbers.insert(2, 1); });
  expectRefused<messages::IndexOutOfRange>([&] { numbers.set(1, 1); });
  expectRefused<messages::IndexOutOfRange>([&] { numbers.removeAt(1); });
  expectRefused<messages::IndexOutOfRange>([&] { static_cast<void>(numbers.at(1)); });
  expectRefused<messages::IndexOutOfRange>([&] { r->getTextSetMutable().insert(2, u"b"); });
  numbers.addValue(Value());  // the empty value stands for zero
  EXPECT_EQ(numbers.at(1), 0);
}

TEST_F(PrimitiveCollectionTest, ShowTheirNumbersAsTheyLieInMemory) {
  const Record r = record();
  EXPECT_TRUE(r.numbers().values().empty());
  for (int i = 0; i < 1000; ++i) r->getNumbersMutable().add(i);
  const auto values = r.numbers().values();
  ASSERT_EQ(values.size(), 1000U);
  EXPECT_EQ(values[999], 999);
}

TEST_F(PrimitiveCollectionTest, ReportOneChangeWithAllValuesBeforeAndAfter) {
  const Record r = record();
  r->getTextsMutable().add(u"a");
  r->getTextsMutable().add(u"b");
  std::vector<std::string> told;
  const auto subscription = model->observe([&](const ChangeSet& changes) {
    for (const Change& change : changes) {
      told.push_back(pictureOf(change.oldValue()) + pictureOf(change.newValue()));
    }
  });
  Transaction transaction = model->beginTransaction();
  r->getTextsMutable().insert(1, u"x");
  r->getTextsMutable().set(0, u"y");
  r->getTextsMutable().removeAt(2);
  r->getTextsMutable().add(u"z");
  transaction.commit();
  EXPECT_EQ(told, std::vector<std::string>{R"(("a", "b", )("y", "x", "z", ))"});
  told.clear();
  r->getTextSetMutable().add(u"a");
  r->getTextSetMutable().add(u"a");
  r->getTextsMutable().set(0, u"y");
  EXPECT_EQ(told, std::vector<std::string>{R"(()("a", ))"});
}

}  // namespace
}  // namespace mf::zero::testing
