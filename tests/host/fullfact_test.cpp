// The full-factorial design.
#include <array>
#include <limits>
#include <vector>

#include "host/function.h"
#include "host/text.h"
#include "support/host_errors.h"
#include "support/host_leak_test.h"

namespace vexal {
namespace {

using testing::expectHostError;

class FullfactTest : public testing::HostLeakTest {
 protected:
  static ArrayPtr design(std::vector<double> counts) {
    return evaluate("kxsim.design.fullfact", {createDoubleRow(counts).get()});
  }
  static std::string refusal(std::string_view key, std::vector<double> counts) {
    return expectHostError("Vexal:host:" + std::string(key), [&] { design(counts); });
  }
};

TEST_F(FullfactTest, EachColumnIsACombinationAndTheFirstFactorVariesFastest) {
  const ArrayPtr matrix = design({3, 1, 2});
  EXPECT_EQ(describe(matrix.get()), "3-by-6 double array");
  const std::vector<double> expected{1, 1, 1, 2, 1, 1, 3, 1, 1, 1, 1, 2, 2, 1, 2, 3, 1, 2};
  EXPECT_TRUE(std::ranges::equal(doubleData(matrix.get()), expected));
}

TEST_F(FullfactTest, EveryCombinationOfAManyFactorDesignOccursOnce) {
  const std::vector<double> counts{2, 3, 4, 5, 1, 7};
  const ArrayPtr matrix = design(counts);
  const auto data = doubleData(matrix.get());
  ASSERT_EQ(data.size(), 6U * 840U);
  for (std::size_t column = 0; column < 840; ++column) {
    double place = 0;  // of the combination, read as a number with mixed bases
    for (std::size_t row = 6; row-- > 0;) {
      place = place * counts[row] + data[column * 6 + row] - 1;
    }
    ASSERT_EQ(place, static_cast<double>(column));
  }
}

TEST_F(FullfactTest, NoFactorsGiveOneCombinationAndNoLevelsGiveNone) {
  EXPECT_EQ(describe(design({}).get()), "empty 0-by-1 double array");
  EXPECT_EQ(describe(design({3, 0, 2}).get()), "empty 3-by-0 double array");
  EXPECT_EQ(describe(design({1e15, 0, 1e15}).get()), "empty 3-by-0 double array");
}

TEST_F(FullfactTest, CountsThatAreNoCountsAreRefusedByPlaceAndValue) {
  EXPECT_EQ(refusal("InvalidLevelCount", {2, -1, 0}),
            "Level count 2 is -1: a full factorial needs whole numbers that are not negative.");
  refusal("InvalidLevelCount", {2.5});
  refusal("InvalidLevelCount", {std::numeric_limits<double>::quiet_NaN()});
  refusal("InvalidLevelCount", {std::numeric_limits<double>::infinity(), 0});
}

TEST_F(FullfactTest, ProductsThatDoNotFitAreRefused) {
  refusal("TooManyCombinations", std::vector<double>(64, 2));
  refusal("TooManyCombinations", {1e300});
  refusal("TooManyCombinations", {0x1p53, 0x1p11});
  refusal("OutOfMemory", {0x1p53, 0x1p5});
}

TEST_F(FullfactTest, OnlyARowOfDoublesIsTaken) {
  const auto refused = [](const ArrayPtr& input) {
    expectHostError("Vexal:host:NotARowVector",
                    [&] { evaluate("kxsim.design.fullfact", {input.get()}); });
  };
  refused(createDoubleMatrix(2, 1));
  refused(createDoubleMatrix(0, 0));
  refused(createInt32(2));
}

}  // namespace
}  // namespace vexal
