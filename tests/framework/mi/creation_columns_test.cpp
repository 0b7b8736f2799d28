// Elements out of columns of values, as scripts ask for them.
#include <gtest/gtest.h>

#include <string>

#include "framework/mi/script_test.h"
#include "host/function.h"

namespace mf::zero::testing {
namespace {

using Created = vexal::script::Result<ArrayPtr>;

class CreationColumnsTest : public ScriptTest {
 protected:
  Created tryCreate(const char* className, const ArrayPtr& columns) {
    return tryCall(model(), "createElements", {className, columns});
  }
  ArrayPtr create(const char* className, const ArrayPtr& columns) {
    return valueOf(tryCreate(className, columns), className);
  }
  double size() { return number(call(model(), "size")); }
  static ArrayPtr numbers(std::initializer_list<double> items) {
    ArrayPtr row = vexal::createDoubleMatrix(1, items.size());
    std::ranges::copy(items, vexal::mutableDoubleData(row.get()).begin());
    return row;
  }
  /// Whether the last message says that it was for the element at that place.
  static bool saysPlace(const Created& refused, const std::string& place) {
    const auto& last = refused.error->item(refused.error->itemCount() - 1);
    return last.key == "ForElement" && last.text.find(' ' + place + ',') != std::string::npos;
  }
};

TEST_F(CreationColumnsTest, EveryElementHasItsValuesAndTheyComeInOrder) {
  const ArrayPtr beds = create("garden.Bed", record({{"Width", numbers({1, 2, 3})}}));
  EXPECT_EQ(vexal::className(beds.get()), "garden.Bed");
  EXPECT_EQ(number(get(element(beds, 2), "Width")), 3);
  const ArrayPtr none = vexal::createDoubleMatrix(0, 0);
  const ArrayPtr a = plant("a"), b = plant("b");
  const ArrayPtr plants = create(
      "garden.Plant", record({{"Label", cell({"x", "y", "z"})},
                              {"Bed", beds},
                              {"Twin", cell({none, a, none})},
                              {"Neighbours", cell({cell({a, b}), none, b})},
                              {"Kind", cell({"Fruit", "Herb", "Flower"})},
                              {"Photo", cell({5, "picture", vexal::createDoubleMatrix(2, 2)})}}));
  EXPECT_EQ(labels(plants), "x y z");
  for (std::size_t k = 0; k < 3; ++k) {
    EXPECT_EQ(identityOf(get(element(plants, k), "Bed")), identityOf(element(beds, k)));
  }
  EXPECT_EQ(identityOf(get(a, "Twin")), identityOf(element(plants, 1)));
  EXPECT_TRUE(vexal::isEmpty(get(element(plants, 2), "Twin").get()));
  EXPECT_EQ(labels(call(get(element(plants, 0), "Neighbours"), "toArray")), "a b");
  EXPECT_EQ(labels(call(get(element(plants, 2), "Neighbours"), "toArray")), "b");
  EXPECT_EQ(text(call(get(element(plants, 2), "Kind"), "getLiteral")), "Flower");
  EXPECT_EQ(text(get(element(plants, 1), "Photo")), "picture");
  EXPECT_EQ(size(), 8);
}

TEST_F(CreationColumnsTest, ValuesOfEveryKindAreTakenOneByOne) {
  const std::size_t dims[] = {1, 2};
  const ArrayPtr flags = vexal::createArray(vexal::ClassId::Logical, dims);
  vexal::mutableElements<bool>(flags.get())[1] = true;
  const ArrayPtr wholes = vexal::createArray(vexal::ClassId::Int32, dims);
  vexal::mutableElements<std::int32_t>(wholes.get())[1] = -7;
  const ArrayPtr records =
      create("garden.Record", record({{"Flag", flags},
                                      {"Small", cell({3, 4})},
                                      {"Whole", wholes},
                                      {"Number", numbers({0.5, -2})},
                                      {"Text", cell({"", "text"})},
                                      {"Plain", cell({"plain", ""})},
                                      {"Choice", cell({"Fruit", "Flower"})},
                                      {"Data", numbers({8, 9})},
                                      {"Numbers", cell({numbers({1, 2}), 3})},
                                      {"TextSet", cell({cell({"b", "a"}), cell({})})}}));
  const ArrayPtr last = element(records, 1);
  EXPECT_FALSE(truth(get(element(records, 0), "Flag")));
  EXPECT_TRUE(truth(get(last, "Flag")));
  EXPECT_EQ(number(get(last, "Small")), 4);
  EXPECT_EQ(number(get(last, "Whole")), -7);
  EXPECT_EQ(number(get(last, "Number")), -2);
  EXPECT_EQ(text(get(last, "Text")), "text");
  EXPECT_EQ(text(get(element(records, 0), "Plain")), "plain");
  EXPECT_EQ(text(call(get(last, "Choice"), "getLiteral")), "Flower");
  EXPECT_EQ(number(get(last, "Data")), 9);
  EXPECT_EQ(number(call(get(element(records, 0), "Numbers"), "size")), 2);
  EXPECT_EQ(number(call(get(last, "Numbers"), "at", {0})), 3);
  EXPECT_EQ(number(call(get(element(records, 0), "TextSet"), "size")), 2);
}

TEST_F(CreationColumnsTest, ContentsAreMadeOfStructs) {
  const ArrayPtr small = record({{"Label", "small"}});
  const ArrayPtr beds =
      create("garden.Bed", record({{"Beds", cell({cell({small, small}), small, cell({})})}}));
  EXPECT_EQ(number(call(get(element(beds, 0), "Beds"), "size")), 2);
  EXPECT_EQ(labels(call(get(element(beds, 1), "Beds"), "toArray")), "small");
  EXPECT_EQ(size(), 6);
}

TEST_F(CreationColumnsTest, OneOrNoElementIsAnArrayOfTheClassToo) {
  EXPECT_EQ(labels(create("garden.Plant", record({{"Label", cell({"only"})}}))), "only");
  for (const ArrayPtr& columns : {record({}), record({{"Label", cell({})}})}) {
    const ArrayPtr none = create("garden.Plant", columns);
    EXPECT_TRUE(vexal::isEmpty(none.get()));
    EXPECT_EQ(vexal::className(none.get()), "garden.Plant");
  }
  EXPECT_EQ(size(), 1);
}

TEST_F(CreationColumnsTest, ObserversAreToldOnceAndAfterTheOutermostTransaction) {
  std::size_t told = 0, created = 0;
  const vexal::ScopedFunction listener(
      "listen", {{1, 1, 0}, [&](vexal::Call& call) {
                   ++told;
                   created += vexal::elementCount(vexal::field(call.input(0), "Created"));
                 }});
  const ArrayPtr subscription = call(model(), "observe", {"listen"});
  create("garden.Bed", record({{"Width", numbers({1, 2, 3})}}));
  EXPECT_EQ(told, 1U);
  EXPECT_EQ(created, 3U);
  const ArrayPtr transaction = call(model(), "beginTransaction");
  create("garden.Bed", record({{"Width", numbers({1, 2, 3})}}));
  EXPECT_EQ(told, 1U);
  call(transaction, "rollback");
  EXPECT_EQ(told, 1U);
  EXPECT_EQ(size(), 3);
}

TEST_F(CreationColumnsTest, AWrongValueLeavesNothingAndItsPlaceIsTold) {
  const ArrayPtr bed = make("garden.Bed", {model()});
  const ArrayPtr twin = plant("twin");
  const ArrayPtr other = make("mf.zero.Model");
  const ArrayPtr stranger = make("garden.Bed", {other});
  const ArrayPtr two = create("garden.Bed", record({{"Width", numbers({1, 2})}}));
  const ArrayPtr halfGone = create("garden.Bed", record({{"Width", numbers({1, 2})}}));
  call(element(halfGone, 1), "destroy");
  const double before = size();
  const struct {
    const char* className;
    ArrayPtr columns;
    std::string error;
    std::string place;
  } cases[] = {
      {"garden.Bed", record({{"Width", cell({1, 2, "wide"})}}), "Vexal:class:CannotConvert", "2"},
      {"garden.Plant", record({{"Kind", cell({"Herb", "Tree"})}}), "mf0:messages:NoSuchLiteral",
       "1"},
      {"garden.Plant", record({{"Bed", cell({bed, bed, 5})}}), "Vexal:class:NotAnObject", "2"},
      {"garden.Plant", record({{"Bed", numbers({5, 6})}}), "Vexal:class:NotAnObject", "0"},
      {"garden.Plant", record({{"Bed", cell({bed, twin})}}),
       "mf0:messages:CannotAddIncompatibleTypes", "1"},
      {"garden.Plant", record({{"Bed", halfGone}}), "Vexal:class:InvalidHandle", "1"},
      {"garden.Plant", record({{"Bed", cell({bed, stranger})}}),
       "mf0:messages:CannotCreateCrossModelAssociation", "1"},
      {"garden.Bed", record({{"Shadows", cell({two, cell({twin, twin})})}}),
       "mf0:messages:CannotAddSecondObject", "1"},
      {"garden.Bed", record({{"Beds", cell({record({}), 3})}}), "mf0:messages:InvalidValue", "1"},
      {"garden.Spot", record({{"Label", cell({"a"})}}), "mf0:messages:CannotCreateAbstractClass",
       "0"},
  };
  for (const auto& each : cases) {
    const Created refused = tryCreate(each.className, each.columns);
    EXPECT_EQ(errorOf(refused), each.error);
    EXPECT_TRUE(!refused && saysPlace(refused, each.place)) << each.error;
    EXPECT_EQ(size(), before) << each.error;
    EXPECT_FALSE(truth(call(model(), "isInTransaction")));
  }
  const ArrayPtr transaction = call(model(), "beginTransaction");
  plant("kept");
  EXPECT_FALSE(tryCreate("garden.Bed", record({{"Width", cell({1, "wide"})}})));
  call(transaction, "commit");
  EXPECT_EQ(size(), before + 1);
}

TEST_F(CreationColumnsTest, WrongColumnsAreRefusedBeforeAnythingIsMade) {
  plant("a");
  const ArrayPtr labels = cell({"a", "b"});
  const auto error = [&](const char* className, const ArrayPtr& columns) {
    return errorOf(tryCreate(className, columns));
  };
  EXPECT_EQ(error("garden.Plant", record({{"Label", labels}, {"Age", labels}})),
            "mf0:messages:NoSuchProperty");
  EXPECT_EQ(error("garden.Plant", record({{"Area", labels}})),
            "mf0:messages:CannotSetReadOnlyProperty");
  EXPECT_EQ(error("garden.Tree", record({{"Label", labels}})), "mf0:messages:NoSuchType");
  EXPECT_EQ(error("garden.Kind", record({{"Label", labels}})), "mf0:messages:NotAnElementClass");
  EXPECT_EQ(error("garden.Plant", labels), "Vexal:class:CannotConvert");
  const Created uneven =
      tryCreate("garden.Plant", record({{"Label", labels}, {"Kind", cell({"Herb"})}}));
  EXPECT_EQ(errorOf(uneven), "mf0:messages:UnequalColumns");
  EXPECT_NE(uneven.error->item(0).text.find("'Kind' has 1 instead of 2"), std::string::npos);
  EXPECT_EQ(size(), 1);
  call(model(), "freeze");
  EXPECT_EQ(error("garden.Plant", record({{"Label", labels}})),
            "mf0:messages:CannotModifyFrozenModel");
  EXPECT_EQ(size(), 1);
}

}  // namespace
}  // namespace mf::zero::testing
