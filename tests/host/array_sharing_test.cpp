// Copies that share content, property copies, and the counting of both.
#include "host/array.h"
#include "host/cell.h"
#include "host/record.h"
#include "support/host_errors.h"
#include "support/host_leak_test.h"

namespace vexal {
namespace {

class ArraySharingTest : public testing::HostLeakTest {};

double valueOf(const vxArray* array) { return doubleData(array)[0]; }
void setValue(vxArray* array, double value) { mutableDoubleData(array)[0] = value; }

TEST_F(ArraySharingTest, ACopyTakesNoContentOfItsOwnUntilOneOfTheTwoChanges) {
  const ArrayPtr array = createDoubleMatrix(1000, 1000);
  const std::size_t contents = arrayCounts().contents;
  const ArrayPtr copy = deepCopy(array.get());
  EXPECT_EQ(arrayCounts().contents, contents);
  EXPECT_EQ(doubleData(copy.get()).data(), doubleData(array.get()).data());
  EXPECT_TRUE(sharesContent(copy.get(), array.get()));
  EXPECT_FALSE(sharesContent(copy.get(), nullptr));
  setValue(copy.get(), 3);
  EXPECT_EQ(arrayCounts().contents, contents + 1);
  EXPECT_FALSE(sharesContent(copy.get(), array.get()));
  EXPECT_EQ(valueOf(array.get()), 0);
  const double* const own = doubleData(copy.get()).data();
  setValue(copy.get(), 4);
  EXPECT_EQ(doubleData(copy.get()).data(), own);
}

TEST_F(ArraySharingTest, APropertyCopySurvivesItsSourceAndSeesNoneOfItsChanges) {
  ArrayPtr source = createDouble(1);
  const PropertyArrayPtr kept = copyForProperty(source.get());
  EXPECT_NE(kept.get(), source.get());
  setValue(source.get(), 2);
  EXPECT_EQ(valueOf(kept.get()), 1);
  source.reset();
  EXPECT_EQ(valueOf(kept.get()), 1);
  setValue(kept.get(), 3);
  EXPECT_EQ(valueOf(kept.get()), 3);
}

TEST_F(ArraySharingTest, ChangingANestedValueLeavesEveryOtherHolderAlone) {
  const ArrayPtr inner = createCell(1, 1);
  const ArrayPtr outer = createCell(1, 1);
  setCell(outer.get(), 0, inner.get());
  const ArrayPtr copy = deepCopy(outer.get());
  setCell(inner.get(), 0, createDouble(1).get());
  setCell(copy.get(), 0, createDouble(2).get());
  EXPECT_TRUE(isEmpty(cellElement(cellElement(outer.get(), 0), 0)));
  EXPECT_EQ(valueOf(cellElement(copy.get(), 0)), 2);
}

TEST_F(ArraySharingTest, ACellMayHoldACopyOfItself) {
  const ArrayPtr cell = createCell(1, 2);
  setCell(cell.get(), 0, cell.get());
  setCell(cell.get(), 1, cellElement(cell.get(), 0));
  EXPECT_TRUE(isEmpty(cellElement(cellElement(cell.get(), 1), 0)));
}

TEST_F(ArraySharingTest, NestingOfAnyDepthIsComparedAndReleasedWithoutStack) {
  constexpr int kDepth = 300'000;
  ArrayPtr cells[2];
  for (ArrayPtr& nested : cells) {
    nested = createDouble(1);
    for (int k = 0; k < kDepth; ++k) {
      ArrayPtr outer = k % 2 == 0 ? createCell(1, 2) : createStruct();
      k % 2 == 0 ? setCell(outer.get(), 1, nested.get())
                 : setField(outer.get(), "inner", nested.get());
      nested = std::move(outer);
    }
  }
  EXPECT_TRUE(equalContent(cells[0].get(), cells[1].get()));
}

TEST_F(ArraySharingTest, CountsTellWhatIsAliveAndWhatWasReleased) {
  const ArrayCounts before = arrayCounts();
  {
    const ArrayPtr array = createDouble(1);
    const PropertyArrayPtr first = copyForProperty(array.get());
    const PropertyArrayPtr second = copyForProperty(first.get());
    const ArrayCounts now = arrayCounts();
    EXPECT_EQ(now.live, before.live + 1);
    EXPECT_EQ(now.livePropertyCopies, before.livePropertyCopies + 2);
    EXPECT_EQ(now.propertyCopiesMade, before.propertyCopiesMade + 2);
    EXPECT_EQ(now.contents, before.contents + 1);
    EXPECT_EQ(liveArrays(), 3U);
  }
  EXPECT_EQ(arrayCounts().propertyCopiesReleased, before.propertyCopiesReleased + 2);
  EXPECT_EQ(liveArrays(), 0U);
}

TEST_F(ArraySharingTest, ReleasingTheWrongWayIsRefusedAndCounted) {
  const ArrayPtr array = createCell(1, 1);
  const PropertyArrayPtr kept = copyForProperty(array.get());
  destroy(kept.get());
  deletePropertyArray(array.get());
  destroy(const_cast<vxArray*>(cellElement(array.get(), 0)));
  EXPECT_EQ(misusedReleases(), 3U);
  expectMisusedReleases(3);
  EXPECT_TRUE(isCell(array.get()));
  EXPECT_TRUE(isCell(kept.get()));
}

#if !defined(__SANITIZE_ADDRESS__)  // which reports the second release itself
TEST_F(ArraySharingTest, ReleasingTwiceIsRefusedAndCounted) {
  vxArray* const array = createDouble(1).release();
  destroy(array);
  destroy(array);
  vxArray* const kept = copyForProperty(createDouble(1).get()).release();
  deletePropertyArray(kept);
  deletePropertyArray(kept);
  EXPECT_EQ(misusedReleases(), 2U);
  expectMisusedReleases(2);
}
#endif

}  // namespace
}  // namespace vexal
