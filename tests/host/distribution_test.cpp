// Distributions: draws that follow their law, streams that a seed repeats, parameters checked.
#include "host/distribution.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <numbers>
#include <vector>

#include "host/cell.h"
#include "host/function.h"
#include "host/object.h"
#include "host/random.h"
#include "host/record.h"
#include "host/text.h"
#include "support/host_errors.h"
#include "support/host_leak_test.h"

namespace vexal {
namespace {

using testing::expectHostError;

constexpr double kInf = std::numeric_limits<double>::infinity();

class DistributionTest : public testing::HostLeakTest {
 protected:
  DistributionTest() { seed(20240501); }

  static std::vector<double> draws(const vxArray* distribution, double count) {
    const ArrayPtr matrix =
        evaluate("random", {distribution, createDouble(count).get(), createDouble(1).get()});
    const auto data = doubleData(matrix.get());
    return {data.begin(), data.end()};
  }
};

// The normal distribution function's complement, exact far into the tail.
double beyond(double z) { return std::erfc(z / std::sqrt(2.0)) / 2; }

struct Law {
  const char* name;
  ArrayPtr (*make)();
  double (*cdf)(double x);
};

// Truncated normals in every way in which they are drawn.
constexpr Law kLaws[] = {
    {"uniform", [] { return makeUniform(-1, 3); }, [](double x) { return (x + 1) / 4; }},
    {"normal", [] { return makeNormal(2, 3); }, [](double x) { return beyond((2 - x) / 3); }},
    {"lognormal", [] { return makeLognormal(0.5, 0.7); },
     [](double x) { return beyond((0.5 - std::log(x)) / 0.7); }},
    {"triangular", [] { return makeTriangular(0, 1, 4); },
     [](double x) { return x < 1 ? x * x / 4 : 1 - (4 - x) * (4 - x) / 12; }},
    {"triangular, mode at the end", [] { return makeTriangular(0, 2, 2); },
     [](double x) { return x * x / 4; }},
    {"exponential", [] { return makeExponential(0.25); },
     [](double x) { return 1 - std::exp(-4 * x); }},
    {"truncated, wide", [] { return makeTruncatedNormal(0, 1, -1, 3); },
     [](double x) { return (beyond(-1) - beyond(x)) / (beyond(-1) - beyond(3)); }},
    {"truncated, narrow", [] { return makeTruncatedNormal(0, 1, -0.5, 1); },
     [](double x) { return (beyond(-0.5) - beyond(x)) / (beyond(-0.5) - beyond(1)); }},
    {"truncated, tail", [] { return makeTruncatedNormal(0, 1, 10, kInf); },
     [](double x) { return 1 - beyond(x) / beyond(10); }},
    {"truncated, piece of the tail", [] { return makeTruncatedNormal(0, 1, 2, 2.3); },
     [](double x) { return (beyond(2) - beyond(x)) / (beyond(2) - beyond(2.3)); }},
    {"truncated, lower side", [] { return makeTruncatedNormal(5, 2, -kInf, 1); },
     [](double x) { return beyond((5 - x) / 2) / beyond(2); }},
};

// Kolmogorov's statistic; 1.95 is passed by one true sample in a thousand, and the seed is fixed.
TEST_F(DistributionTest, DrawsFollowTheirLaw) {
  constexpr double kCount = 40'000;
  for (const Law& law : kLaws) {
    std::vector<double> sample = draws(law.make().get(), kCount);
    std::ranges::sort(sample);
    double distance = 0;
    for (std::size_t k = 0; k < sample.size(); ++k) {
      const double at = law.cdf(sample[k]);
      const double below = static_cast<double>(k) / kCount;
      distance = std::max({distance, at - below, below + 1 / kCount - at});
    }
    EXPECT_LT(distance * std::sqrt(kCount), 1.95) << law.name;
  }
}

TEST_F(DistributionTest, TheNormalHasItsTailsAndMoments) {
  constexpr int kCount = 8'000'000;
  double square = 0;
  double fourth = 0;
  double far = 0;
  double excess = 0;
  for (int k = 0; k < kCount; ++k) {
    const double z = generator().normal();
    square += z * z;
    fourth += z * z * z * z;
    if (std::abs(z) > 3.7) {
      ++far;
      excess += std::abs(z) - 3.7;
    }
  }
  EXPECT_NEAR(square / kCount, 1, 4 * std::sqrt(2.0 / kCount));
  EXPECT_NEAR(fourth / kCount, 3, 4 * std::sqrt(96.0 / kCount));
  const double expectedFar = 2 * beyond(3.7) * kCount;
  EXPECT_NEAR(far, expectedFar, 3 * std::sqrt(expectedFar));
  const double density = std::exp(-3.7 * 3.7 / 2) / std::sqrt(2 * std::numbers::pi);
  EXPECT_NEAR(excess / far, density / beyond(3.7) - 3.7, 2.5 * 0.24 / std::sqrt(expectedFar));
}

TEST_F(DistributionTest, BoundsFarOutInTheTailAreKeptAndDrawnFrom) {
  const std::pair<double, double> kBounds[] = {{40, kInf},     {1e17, 2e17},     {1e300, kInf},
                                               {-kInf, -1e17}, {1e307, 1.5e308}, {1e9, 1e9 + 1e-6},
                                               {0, 1e-300},    {-1e300, -1e299}};
  for (const auto& [lower, upper] : kBounds) {
    const ArrayPtr distribution = makeTruncatedNormal(0, 1, lower, upper);
    for (const double x : draws(distribution.get(), 100)) {
      EXPECT_TRUE(x >= lower && x <= upper) << lower << ' ' << upper << ' ' << x;
    }
  }
}

TEST_F(DistributionTest, TheSameSeedGivesTheSameStreamForEver) {
  Generator fresh(0);
  EXPECT_EQ(fresh.next(), 5987356902031041503U);
  EXPECT_EQ(fresh.next(), 7051070477665621255U);
  EXPECT_EQ(fresh.next(), 6633766593972829180U);

  const ArrayPtr normal = makeNormal(0, 1);
  const std::vector<double> first = draws(normal.get(), 50);
  EXPECT_NE(draws(normal.get(), 50), first);
  seed(20240501);
  std::vector<double> singly;
  for (int k = 0; k < 50; ++k) {
    singly.push_back(doubleData(evaluate("random", {normal.get()}).get())[0]);
  }
  EXPECT_EQ(singly, first);
}

TEST_F(DistributionTest, AChoiceComesWithTheFrequencyOfItsWeight) {
  const std::array weights{1.0, 0.0, 5.0, 2.0, 1e-300};
  const ArrayPtr choice =
      makeChoice(createDoubleRow(std::array{10.0, 20.0, 30.0, 40.0, 50.0}).get(),
                 createDoubleRow(weights).get());
  const std::vector<double> sample = draws(choice.get(), 80'000);
  const auto times = [&](double value) { return double(std::ranges::count(sample, value)); };
  EXPECT_NEAR(times(10), 10'000, 400);
  EXPECT_EQ(times(20), 0);
  EXPECT_NEAR(times(30), 50'000, 600);
  EXPECT_NEAR(times(40), 20'000, 500);
  EXPECT_EQ(times(50), 0);
}

TEST_F(DistributionTest, AChoiceMayBeAmongAnyArrays) {
  const ArrayPtr values = createCell(1, 2);
  setCell(values.get(), 0, createChar("on").get());
  setCell(values.get(), 1, createLogical(false).get());
  const ArrayPtr choice = evaluate("kxsim.dist.Choice", {values.get()});
  std::array<int, 2> times{};
  for (int k = 0; k < 100; ++k) {
    const ArrayPtr drawn = evaluate("random", {choice.get()});
    const bool isText = isClass(drawn.get(), ClassId::Char);
    EXPECT_TRUE(equalContent(drawn.get(), cellElement(values.get(), isText ? 0 : 1)));
    ++times[isText];
  }
  EXPECT_GT(times[0], 20);
  EXPECT_GT(times[1], 20);
  const ArrayPtr three = createDouble(3);
  EXPECT_EQ(describe(evaluate("random", {choice.get(), three.get(), three.get()}).get()),
            "3-by-3 cell array");
}

TEST_F(DistributionTest, AMakerByNameGivesTheSameObjectWithReadableParameters) {
  const ArrayPtr mean = createInt32(2);
  const ArrayPtr deviation = createDouble(0.5);
  const ArrayPtr normal = evaluate("kxsim.dist.Normal", {mean.get(), deviation.get()});
  EXPECT_TRUE(isA(normal.get(), kDistributionClass));
  EXPECT_EQ(doubleData(field(normal.get(), "Mean"))[0], 2);
  EXPECT_EQ(describe(normal.get()),
            "1-by-1 kxsim.dist.Normal object (Mean 2, StandardDeviation 0.5)");
  const ArrayPtr yes = evaluate("ismethod", {normal.get(), createChar("random").get()});
  EXPECT_TRUE(isLogicalScalarTrue(yes.get()));
  expectHostError("Vexal:host:TooFewInputs", [&] { evaluate("kxsim.dist.Normal", {mean.get()}); });
  expectHostError("Vexal:host:NotAScalar", [&] {
    evaluate("kxsim.dist.Normal", {mean.get(), createDoubleMatrix(1, 2).get()});
  });
}

TEST_F(DistributionTest, ParametersOutOfRangeAreRefusedInWords) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const std::function<void()> bad[] = {
      [] { makeUniform(2, 2); },
      [] { makeUniform(-kInf, 0); },
      [=] { makeNormal(nan, 1); },
      [=] { makeNormal(0, nan); },
      [] { makeLognormal(0, 0); },
      [] { makeTriangular(0, 3, 2); },
      [] { makeTriangular(-1e308, 0, 1e308); },
      [] { makeExponential(kInf); },
      [] { makeTruncatedNormal(0, 1, 2, 1); },
      [=] { makeTruncatedNormal(0, 1, nan, 1); },
      [] { makeTruncatedNormal(0, 1e-300, 1e10, kInf); },
      [] { makeTruncatedNormal(0, 1, -kInf, -kInf); },
      [] { makeChoice(nullptr); },
      [] { makeChoice(createCell(0, 0).get()); },
      [] { makeChoice(createDouble(1).get(), createDouble(0).get()); },
      [] { makeChoice(createDouble(1).get(), createDouble(-1).get()); },
      [] { makeChoice(createDouble(1).get(), createDoubleMatrix(1, 2).get()); },
  };
  for (const auto& make : bad) expectHostError("Vexal:host:InvalidDistribution", make);
  EXPECT_EQ(expectHostError("Vexal:host:InvalidDistribution", [] { makeNormal(0, -1); }),
            "kxsim.dist.Normal: StandardDeviation must be positive, not -1.");
}

TEST_F(DistributionTest, RandomOfAnythingElseIsRefused) {
  const auto refused = [](const ArrayPtr& input) {
    return expectHostError("Vexal:host:NotADistribution",
                           [&] { evaluate("random", {input.get()}); });
  };
  EXPECT_NE(refused(createDoubleMatrix(0, 0)).find("empty 0-by-0 double array"), std::string::npos);
  refused(createObject(kModelSimStateClass));
  refused(createObject("kxsim.dist.Normal"));
  const ArrayPtr normal = makeNormal(0, 1);
  const ArrayPtr half = createDouble(0.5);
  expectHostError("Vexal:host:InvalidSize",
                  [&] { evaluate("random", {normal.get(), half.get(), half.get()}); });
}

}  // namespace
}  // namespace vexal
