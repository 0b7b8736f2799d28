// Tables out of collections of elements, as scripts ask for them.
#include <cmath>
#include <vector>

#include "framework/mi/script_test.h"

namespace mf::zero::testing {
namespace {

using vexal::script::Column;

class ColumnsTest : public ScriptTest {
 protected:
  // A bed that shades others; their labels are the keys, their widths the values.
  ArrayPtr bed(const ArrayPtr& shadows) {
    return make("garden.Bed", {model(), record({{"Shadows", shadows}})});
  }
  ArrayPtr spot(const char* label, double width) {
    return make("garden.Bed", {model(), record({{"Label", label}, {"Width", width}})});
  }
  static ArrayPtr all(Arguments objects) {
    return valueOf(vexal::script::objectArray(pointers(objects), "garden.Bed"));
  }
  static auto tryColumns(const ArrayPtr& objects, std::string_view value = "Width",
                         std::string_view collection = "Shadows", std::string_view key = "Label") {
    return vexal::script::columns(objects.get(), collection, key, value);
  }
  static std::vector<Column> columns(const ArrayPtr& objects, std::string_view value = "Width",
                                     std::string_view key = "Label") {
    auto result = tryColumns(objects, value, "Shadows", key);
    EXPECT_TRUE(result) << errorOf(result);
    return std::move(*result);
  }
  static std::vector<double> numbers(const ArrayPtr& array) {
    const auto data = vexal::doubleData(array.get());
    return {data.begin(), data.end()};
  }
  static std::vector<bool> marks(const ArrayPtr& array) {
    const auto data = vexal::elements<bool>(array.get());
    return {data.begin(), data.end()};
  }
};

TEST_F(ColumnsTest, NumbersOfSharedItemsAreArraysAndAbsenceIsTold) {
  const ArrayPtr low = spot("a", 1), high = spot("a", 2), other = spot("b", 7);
  const auto table = columns(
      all({bed(cell({low, other})), bed(cell({other, high})), bed(cell({})), bed(cell({low}))}));
  ASSERT_EQ(table.size(), 2U);
  EXPECT_EQ(text(table[0].key), "a");
  const std::vector<double> widths = numbers(table[0].values);
  EXPECT_EQ(std::vector(widths.begin(), widths.begin() + 2), (std::vector<double>{1, 2}));
  EXPECT_TRUE(std::isnan(widths[2]));
  EXPECT_EQ(widths[3], 1);
  EXPECT_EQ(marks(table[0].present), (std::vector{true, true, false, true}));
  EXPECT_EQ(marks(table[1].present), (std::vector{true, true, false, false}));

  const auto whole = columns(all({bed(cell({low})), bed(cell({high}))}));
  EXPECT_EQ(whole[0].present, nullptr);
  EXPECT_EQ(numbers(whole[0].values), (std::vector<double>{1, 2}));
  EXPECT_EQ(columns(bed(cell({other})))[0].values != nullptr, true);
  EXPECT_TRUE(columns(all({})).empty());
}

TEST_F(ColumnsTest, WhatIsNoNumberTurnsAColumnIntoCellsFromItsBeginning) {
  const auto photo = [&](const ArrayPtr& array) {
    return make("garden.Plant", {model(), record({{"Label", "p"}, {"Photo", array}})});
  };
  const ArrayPtr first = photo(vexal::createDouble(3)), last = photo(vexal::createDouble(4));
  const ArrayPtr picture = photo(vexal::createDoubleMatrix(2, 2));
  const auto table = columns(
      all({bed(cell({first})), bed(cell({})), bed(cell({picture})), bed(cell({last}))}), "Photo");
  ASSERT_EQ(table.size(), 1U);
  const ArrayPtr& values = table[0].values;
  ASSERT_TRUE(vexal::isCell(values.get()));
  EXPECT_EQ(number(element(values, 0)), 3);
  EXPECT_TRUE(vexal::isEmpty(element(values, 1).get()));
  EXPECT_EQ(vexal::elementCount(element(values, 2).get()), 4U);
  EXPECT_EQ(number(element(values, 3)), 4);
  EXPECT_EQ(marks(table[0].present), (std::vector{true, false, true, true}));
}

TEST_F(ColumnsTest, ItemsOfOneKeyInOneObjectFillColumnsOfTheirOwn) {
  const ArrayPtr one = spot("a", 1), two = spot("a", 2), three = spot("a", 3), b = spot("b", 9);
  const auto table =
      columns(all({bed(cell({one, b, two})), bed(cell({b, three})), bed(cell({two, one, three}))}));
  ASSERT_EQ(table.size(), 4U);  // a, b, a again, a a third time
  EXPECT_EQ(numbers(table[0].values), (std::vector<double>{1, 3, 2}));
  EXPECT_EQ(marks(table[1].present), (std::vector{true, true, false}));
  EXPECT_EQ(marks(table[2].present), (std::vector{true, false, true}));
  EXPECT_EQ(marks(table[3].present), (std::vector{false, false, true}));
  EXPECT_EQ(numbers(table[3].values)[2], 3);
}

TEST_F(ColumnsTest, ElementsAreKeysByIdentityAndNoElementIsOneToo) {
  const ArrayPtr owner = make("garden.Gardener", {model()});
  const auto tended = [&](double width) {
    return make("garden.Bed", {model(), record({{"Gardener", owner}, {"Width", width}})});
  };
  const auto table = columns(all({bed(cell({tended(1), spot("", 5)})), bed(cell({tended(2)}))}),
                             "Width", "Gardener");
  ASSERT_EQ(table.size(), 2U);
  EXPECT_EQ(identityOf(table[0].key), identityOf(owner));
  EXPECT_EQ(numbers(table[0].values), (std::vector<double>{1, 2}));
  EXPECT_TRUE(vexal::isEmpty(table[1].key.get()));
}

TEST_F(ColumnsTest, MoreItemsThanAreRememberedGiveTheSame) {
  const std::size_t count = 20'000;
  const ArrayPtr shared = spot("a", -1);
  std::vector<ArrayPtr> beds;
  std::vector<const vxArray*> objects;
  for (std::size_t k = 0; k < count; ++k) {
    beds.push_back(bed(cell({shared, spot("b", static_cast<double>(k))})));
    objects.push_back(beds.back().get());
  }
  const auto table = columns(valueOf(vexal::script::objectArray(objects, "garden.Bed")));
  ASSERT_EQ(table.size(), 2U);
  for (std::size_t k = 0; k < count; ++k) {
    ASSERT_EQ(vexal::doubleData(table[0].values.get())[k], -1);
    ASSERT_EQ(vexal::doubleData(table[1].values.get())[k], static_cast<double>(k));
  }
}

TEST_F(ColumnsTest, EachRefusalSaysWhatWasWrong) {
  const ArrayPtr item = spot("a", 1);
  const ArrayPtr objects = all({bed(cell({item})), bed(cell({}))});
  EXPECT_EQ(errorOf(tryColumns(objects, "Width", "Label")), "Vexal:class:NotACollection");
  EXPECT_EQ(errorOf(tryColumns(objects, "Width", "Sun")), "Vexal:class:NoSuchMember");
  EXPECT_EQ(errorOf(tryColumns(objects, "Sun")), "Vexal:class:NoSuchMember");
  EXPECT_EQ(errorOf(tryColumns(objects, "area")), "Vexal:class:NotAProperty");
  EXPECT_EQ(errorOf(tryColumns(vexal::createDouble(1))), "Vexal:class:NotAnObject");
  EXPECT_EQ(errorOf(tryColumns(nullptr)), "Vexal:host:NullArray");
  call(element(objects, 1), "destroy");
  EXPECT_EQ(errorOf(tryColumns(objects)), "Vexal:class:InvalidHandle");
}

}  // namespace
}  // namespace mf::zero::testing
