// Creation of arrays, their sizes, and what can be asked of them.
#include "host/array.h"

#include <array>
#include <cmath>
#include <limits>

#include "host/cell.h"
#include "host/text.h"
#include "support/host_errors.h"
#include "support/host_leak_test.h"

// An allocation that is refused is to come back as null, as it does without the sanitizer.
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options();
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }

namespace vexal {
namespace {

using testing::expectHostError;

class ArrayTest : public testing::HostLeakTest {};

constexpr ClassId kCreatable[] = {ClassId::Double, ClassId::Logical, ClassId::Char,
                                  ClassId::Cell,   ClassId::Struct,  ClassId::Int32};

TEST_F(ArrayTest, NewArraysHaveTheirClassAndSizeAndAreZero) {
  const std::array<std::size_t, 3> dims{2, 3, 4};
  for (const ClassId wanted : kCreatable) {
    const ArrayPtr array = createArray(wanted, dims);
    EXPECT_EQ(classId(array.get()), wanted);
    EXPECT_TRUE(std::ranges::equal(dimensions(array.get()), dims));
    EXPECT_EQ(elementCount(array.get()), 24U);
    for (const ClassId other : kCreatable) {
      EXPECT_EQ(isClass(array.get(), other), other == wanted);
    }
    EXPECT_TRUE(isA(array.get(), className(array.get())));
  }
  const ArrayPtr zeros = createDoubleMatrix(100, 3);
  for (const double value : doubleData(zeros.get())) EXPECT_EQ(value, 0);
}

TEST_F(ArrayTest, TrailingDimensionsOfOneAreNotKept) {
  const ArrayPtr array = createArray(ClassId::Double, std::array<std::size_t, 4>{3, 1, 1, 1});
  EXPECT_EQ(dimensions(array.get()).size(), 2U);
  EXPECT_EQ(describe(array.get()), "3-by-1 double array");
}

// With three dimensions an array without elements is as small as a number.
TEST_F(ArrayTest, EmptyArraysOfEveryRankAreEmpty) {
  for (const ClassId wanted : kCreatable) {
    for (const auto& dims : std::vector<std::vector<std::size_t>>{{0, 0}, {1, 0}, {5, 0, 3}}) {
      const ArrayPtr array = createArray(wanted, dims);
      EXPECT_TRUE(isEmpty(array.get()));
      EXPECT_TRUE(isEmpty(deepCopy(array.get()).get()));
    }
  }
}

TEST_F(ArrayTest, SizesThatCannotBeAreRefused) {
  constexpr std::size_t kMost = std::numeric_limits<std::size_t>::max();
  const auto create = [](std::initializer_list<std::size_t> dims) {
    return [=] { createArray(ClassId::Double, {dims.begin(), dims.size()}); };
  };
  expectHostError("Vexal:host:TooFewDimensions", create({}));
  expectHostError("Vexal:host:TooFewDimensions", create({4}));
  expectHostError("Vexal:host:TooManyElements", create({kMost, 2}));
  expectHostError("Vexal:host:TooManyElements", create({kMost / 8 + 1, 1}));
  expectHostError("Vexal:host:TooManyElements", create({std::size_t{1} << 32, 1U << 31, 2}));
  expectHostError("Vexal:host:TooManyElements", create({1U << 31, std::size_t{1} << 33, 5}));
  expectHostError("Vexal:host:OutOfMemory", create({std::size_t{1} << 59, 1}));
  expectHostError("Vexal:host:TooManyElements", [] { createCell(kMost / 16, 1); });
  EXPECT_TRUE(isEmpty(createDoubleMatrix(kMost, 0).get()));
}

TEST_F(ArrayTest, OnlyAOneByOneLogicalHoldingTrueIsTrue) {
  EXPECT_TRUE(isLogicalScalarTrue(createLogical(true).get()));
  EXPECT_FALSE(isLogicalScalarTrue(createLogical(false).get()));
  EXPECT_FALSE(isLogicalScalarTrue(createDouble(1).get()));
  EXPECT_FALSE(isLogicalScalarTrue(nullptr));
  const ArrayPtr two = createArray(ClassId::Logical, std::array<std::size_t, 2>{1, 2});
  mutableElements<bool>(two.get())[0] = true;
  EXPECT_FALSE(isLogicalScalarTrue(two.get()));
}

TEST_F(ArrayTest, NullIsNoArrayToTestsAndAnErrorToEverythingElse) {
  EXPECT_FALSE(isCell(nullptr));
  EXPECT_FALSE(isA(nullptr, "double"));
  EXPECT_TRUE(equalContent(nullptr, nullptr));
  EXPECT_EQ(copyForProperty(nullptr), nullptr);
  destroy(nullptr);
  deletePropertyArray(nullptr);
  expectHostError("Vexal:host:NullArray", [] { elementCount(nullptr); });
  expectHostError("Vexal:host:NullArray", [] { doubleData(nullptr); });
  expectHostError("Vexal:host:NullArray", [] { mutableDoubleData(nullptr); });
  expectHostError("Vexal:host:NullArray", [] { deepCopy(nullptr); });
  expectHostError("Vexal:host:NullArray", [] { cellElement(nullptr, 0); });
}

TEST_F(ArrayTest, ElementsOfAnotherClassAreRefusedInWords) {
  const ArrayPtr cell = createCell(1, 3);
  const std::string text =
      expectHostError("Vexal:host:WrongClass", [&] { doubleData(cell.get()); });
  EXPECT_EQ(text, "Expected a double array; given was: 1-by-3 cell array.");
  const ArrayPtr number = createInt32(-7);
  expectHostError("Vexal:host:WrongClass", [&] { mutableDoubleData(number.get()); });
  expectHostError("Vexal:host:WrongClass", [&] { setCell(number.get(), 0, cell.get()); });
  EXPECT_EQ(elements<std::int32_t>(number.get())[0], -7);
}

TEST_F(ArrayTest, CellsHoldCopiesAndEmptyDoublesUntilThen) {
  const ArrayPtr cell = createCell(2, 2);
  EXPECT_EQ(describe(cellElement(cell.get(), 3)), "empty 0-by-0 double array");
  {
    const ArrayPtr value = createDouble(4);
    setCell(cell.get(), 2, value.get());
    mutableDoubleData(value.get())[0] = 5;
  }
  EXPECT_EQ(doubleData(cellElement(cell.get(), 2))[0], 4);
  expectHostError("Vexal:host:IndexOutOfRange", [&] { cellElement(cell.get(), 4); });
  expectHostError("Vexal:host:IndexOutOfRange", [&] { setCell(cell.get(), 4, cell.get()); });
  expectHostError("Vexal:host:NullArray", [&] { setCell(cell.get(), 0, nullptr); });
}

TEST_F(ArrayTest, ContentIsEqualByValueClassAndSize) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const ArrayPtr row = createDoubleRow(std::array{1.0, nan, -0.0});
  EXPECT_TRUE(equalContent(row.get(), createDoubleRow(std::array{1.0, nan, 0.0}).get()));
  EXPECT_FALSE(equalContent(row.get(), createDoubleRow(std::array{1.0, 2.0, 0.0}).get()));
  EXPECT_FALSE(equalContent(createDouble(1).get(), createLogical(true).get()));
  EXPECT_FALSE(equalContent(createDoubleMatrix(0, 1).get(), createDoubleMatrix(1, 0).get()));
  EXPECT_FALSE(equalContent(row.get(), nullptr));

  const ArrayPtr cell = createCell(1, 2);
  const ArrayPtr other = createCell(1, 2);
  setCell(cell.get(), 1, createChar("abc").get());
  EXPECT_FALSE(equalContent(cell.get(), other.get()));
  setCell(other.get(), 1, createChar("abc").get());
  EXPECT_TRUE(equalContent(cell.get(), other.get()));
}

}  // namespace
}  // namespace vexal
