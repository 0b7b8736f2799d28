// How many runs a space promises, without building them.
#include <cmath>

#include "design/study_test.h"

namespace kxsim::design {
namespace {

using vexal::ArrayPtr;

class CountingTest : public testing::StudyTest {
 protected:
  ValueSetParameter holding(const ArrayPtr& array) {
    return ValueSetParameter::Builder(model()).setValues(array.get()).create();
  }
  double countOf(const std::vector<double>& children) {
    const auto space = Sequential::create(model());
    for (const double count : children) space->getParameterSpacesMutable().add(samples(count));
    return space.numIterations();
  }
  ~CountingTest() override { EXPECT_EQ(count<Iteration>() + count<ParameterSample>(), 0U); }
};

TEST_F(CountingTest, AParameterCountsTheElementsOfItsValuesWhateverTheirShape) {
  EXPECT_EQ(ValueSetParameter::create(model()).numIterations(), 0.0);
  EXPECT_EQ(holding(vexal::createCell(2, 3)).numIterations(), 6.0);
  EXPECT_EQ(holding(vexal::createCell(0, 0)).numIterations(), 0.0);
  EXPECT_EQ(holding(vexal::createCell(3, 0)).numIterations(), 0.0);
  const std::size_t dims[] = {2, 1, 3, 2};
  EXPECT_EQ(holding(vexal::createArray(vexal::ClassId::Cell, dims)).numIterations(), 12.0);
  EXPECT_EQ(holding(vexal::createDoubleMatrix(1, 4)).numIterations(), 4.0);  // never checked
}

TEST_F(CountingTest, ARandomSpaceCountsItsSamplesAsTheyStand) {
  for (const double count : {0.0, -3.0, 2.5, 1e300, kInfinity}) {
    EXPECT_EQ(samples(count).numIterations(), count);
  }
  EXPECT_TRUE(std::isnan(samples(kNaN).numIterations()));
}

TEST_F(CountingTest, AnExhaustiveSpaceMultiplies) {
  EXPECT_EQ(exhaustive({}).numIterations(), 1.0);
  EXPECT_EQ(exhaustive({values(u"a", {1, 2, 3})}).numIterations(), 3.0);
  EXPECT_EQ(exhaustive({samples(3), samples(2), samples(5)}).numIterations(), 30.0);
  EXPECT_EQ(exhaustive({samples(2.5), samples(2)}).numIterations(), 5.0);
  EXPECT_EQ(exhaustive({samples(3), samples(0)}).numIterations(), 0.0);
  EXPECT_TRUE(std::isnan(exhaustive({samples(kInfinity), samples(0)}).numIterations()));
}

TEST_F(CountingTest, ASequentialSpaceTakesTheSmallest) {
  EXPECT_EQ(countOf({}), 0.0);
  EXPECT_EQ(countOf({4}), 4.0);
  EXPECT_EQ(countOf({3, 5}), 3.0);
  EXPECT_EQ(countOf({5, 3}), 3.0);
  EXPECT_EQ(countOf({5, 4, 2.5, 7}), 2.5);
  EXPECT_EQ(countOf({2, -1}), -1.0);
}

// The smallest is sought from the second child on, with comparisons that NaN always loses.
TEST_F(CountingTest, OnlyASecondChildThatIsNotANumberMakesASequentialCountNotANumber) {
  EXPECT_EQ(countOf({kNaN, 3}), 3.0);
  EXPECT_EQ(countOf({4, 3, kNaN}), 3.0);
  EXPECT_TRUE(std::isnan(countOf({3, kNaN})));
  EXPECT_TRUE(std::isnan(countOf({kNaN})));
}

TEST_F(CountingTest, NestedSpacesCountThroughAndFollowLaterChanges) {
  const auto parameter = values(u"a", {1, 2, 3});
  const auto inner = exhaustive({parameter, samples(2)});
  const auto outer = exhaustive({sequential({inner, samples(4)}), parameter, samples(10)});
  EXPECT_EQ(outer.numIterations(), 4.0 * 3.0 * 10.0);
  parameter->setValues(cellRow({1}).get());
  EXPECT_EQ(outer.numIterations(), 2.0 * 1.0 * 10.0);
  outer->getParameterSpacesMutable().removeAt(2);
  EXPECT_EQ(outer.numIterations(), 2.0);
  parameter->destroy();
  EXPECT_EQ(ParameterSpace::numIterations(outer), 2.0);
}

TEST_F(CountingTest, ManyPathsToOneSpaceAreCountedOnce) {
  ParameterSpace space = values(u"a", {1, 2});
  for (int level = 0; level < 64; ++level) {  // 2^64 paths to the parameter
    space = sequential({sequential({space}), sequential({space})});
  }
  EXPECT_EQ(space.numIterations(), 2.0);
}

}  // namespace
}  // namespace kxsim::design
