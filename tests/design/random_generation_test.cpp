// The runs that are drawn: how often the host is asked, in which order, with what.
#include "design/study_test.h"
#include "host/distribution.h"
#include "host/object.h"
#include "host/random.h"
#include "support/host_errors.h"

namespace kxsim::design {
namespace {

using testing::function;
using testing::Lines;
using vexal::ArrayPtr;
using vexal::Call;
using vexal::ScopedFunction;
using vexal::testing::expectHostError;

/// Stands in the place of the host's "random": answers 1, 2, 3, ... and notes what it was given.
/// A number is a distribution here; builders do not ask.
class RandomGenerationTest : public testing::StudyTest {
 protected:
  RandomParameter numbered(std::u16string_view name, double distribution) {
    return drawn(name, vexal::createDouble(distribution));
  }

  Numbers drawnFrom_;
  std::size_t failingCall_ = 0;

 private:
  ScopedFunction random_{"random", function([this](const Call& call) {
                           EXPECT_EQ(call.inputCount(), 1U);
                           EXPECT_EQ(call.outputCount(), 1U);
                           drawnFrom_.push_back(vexal::doubleData(call.input(0))[0]);
                           if (drawnFrom_.size() == failingCall_) {
                             vexal::raise({"Test:draws", "Exhausted"}, {"empty"});
                           }
                           return vexal::createDouble(static_cast<double>(drawnFrom_.size()));
                         })};
};

TEST_F(RandomGenerationTest, DrawsRunByRunAndParameterByParameter) {
  const auto space = samples(3, {numbered(u"a", 10), numbered(u"b", 20)});
  EXPECT_EQ(runsOf(space), (Lines{"a=1 b=2", "a=3 b=4", "a=5 b=6"}));
  EXPECT_EQ(drawnFrom_, (Numbers{10, 20, 10, 20, 10, 20}));
}

TEST_F(RandomGenerationTest, TheNumberOfRunsIsRoundedUp) {
  const auto a = numbered(u"a", 10);
  EXPECT_EQ(runsOf(samples(2.5, {a})).size(), 3U);
  EXPECT_EQ(runsOf(samples(2.0, {a})).size(), 2U);
  EXPECT_EQ(runsOf(samples(1e-300, {a})).size(), 1U);
}

TEST_F(RandomGenerationTest, WithoutAPositiveNumberOfSamplesNothingIsDrawn) {
  for (const double count : {0.0, -0.0, -1.0, -kInfinity, kNaN}) {
    EXPECT_EQ(runsOf(samples(count, {numbered(u"a", 10)})), Lines{});
  }
  EXPECT_EQ(drawnFrom_, Numbers{});
  EXPECT_EQ(count<Iteration>() + count<ParameterSample>(), 0U);
}

TEST_F(RandomGenerationTest, WithoutParametersTheRunsAreEmptyAndNothingIsDrawn) {
  EXPECT_EQ(runsOf(samples(4)), (Lines{"", "", "", ""}));
  EXPECT_EQ(drawnFrom_, Numbers{});
}

TEST_F(RandomGenerationTest, AFailureOnTheWayComesThroughAndLeavesWhatWasMade) {
  const auto space = samples(5, {numbered(u"a", 1), numbered(u"b", 2), numbered(u"c", 3)});
  failingCall_ = 6;  // the third parameter of the second run
  expectHostError("Test:draws:Exhausted", [&] { space->createIterations(); });
  EXPECT_EQ(drawnFrom_, (Numbers{1, 2, 3, 1, 2, 3}));
  EXPECT_EQ(count<Iteration>(), 2U);
  EXPECT_EQ(count<ParameterSample>(), 6U);
  failingCall_ = 0;
  EXPECT_EQ(runsOf(space).size(), 5U);
}

TEST_F(RandomGenerationTest, AnUnsetDistributionIsDrawnAsAnEmptyMatrix) {
  Lines given;
  const ScopedFunction random("random", function([&](const Call& call) {
                                given.push_back(vexal::describe(call.input(0)));
                                return vexal::createDouble(1);
                              }));
  EXPECT_EQ(runsOf(samples(2, {drawn(u"a", nullptr)})), (Lines{"a=1", "a=1"}));
  EXPECT_EQ(given, (Lines{"empty 0-by-0 double array", "empty 0-by-0 double array"}));
}

TEST_F(RandomGenerationTest, ADistributionThatIsSetMeanwhileCountsFromTheNextDraw) {
  const auto a = drawn(u"a", vexal::makeUniform(7, 8));
  const auto space = samples(3, {a});
  std::size_t samplesSeen = 0;
  const auto subscription = model()->observe([&](const mf::zero::ChangeSet&) {
    if (std::exchange(samplesSeen, count<ParameterSample>()) == samplesSeen) return;
    const Numbers only{static_cast<double>(samplesSeen)};
    a->setDistribution(vexal::makeChoice(vexal::createDoubleRow(only).get()).get());
  });
  EXPECT_EQ(runsOf(space), (Lines{"a=1", "a=2", "a=3"}));
}

TEST_F(RandomGenerationTest, RunsOfDifferentLengthsAreCombinedInAnyOrder) {
  const auto space = samples(3, {numbered(u"a", 1)});
  const auto late = numbered(u"late", 2);
  std::size_t draws = 0;
  const ScopedFunction random("random", function([&](const Call&) {
                                if (++draws == 2) space->getParametersMutable().add(late);
                                return vexal::createDouble(static_cast<double>(draws));
                              }));
  const ScopedFunction scrambled("kxsim.design.fullfact", function([](const Call&) {
                                   ArrayPtr matrix = vexal::createDoubleMatrix(2, 6);
                                   std::ranges::copy(
                                       Numbers{1, 1, 3, 1, 1, 1, 3, 2, 3, 2, 2, 2},
                                       vexal::mutableDoubleData(matrix.get()).begin());
                                   return matrix;
                                 }));
  EXPECT_EQ(runsOf(exhaustive({space, values(u"b", {10, 20})})),
            (Lines{"a=1 b=10", "a=3 late=4 b=10", "a=1 b=10", "a=3 late=4 b=20", "a=3 late=4 b=20",
                   "a=2 b=20"}));
}

TEST_F(RandomGenerationTest, WhateverIsDrawnIsTheValue) {
  std::vector<ArrayPtr> draws;
  draws.push_back(vexal::createChar("text"));
  draws.push_back(vexal::createCell(2, 2));
  draws.push_back(vexal::createObject(vexal::kModelSimStateClass));
  std::size_t next = 0;
  const ScopedFunction random(
      "random", function([&](const Call&) { return vexal::deepCopy(draws[next++].get()); }));
  const auto runs = samples(3, {drawn(u"a", nullptr)})->createIterations();
  for (std::size_t i = 0; i < runs.size(); ++i) {
    EXPECT_TRUE(vexal::equalContent(runs[i].parameterSamples()[0].value(), draws[i].get()));
  }
}

TEST_F(RandomGenerationTest, TargetsAreSharedByAllSamplesOfAParameter) {
  const auto a = numbered(u"a", 10);
  for (const Iteration& run : samples(3, {a})->createIterations()) {
    EXPECT_EQ(run.parameterSamples()[0].parameterType(), a.parameterType());
  }
}

TEST_F(RandomGenerationTest, AFunctionThatIsNotThereOrAnswersNothingIsReported) {
  const auto space = samples(1, {numbered(u"a", 10)});
  {
    const ScopedFunction silent("random", {{}, [](Call&) {}});
    expectHostError("Vexal:host:OutputNotSet", [&] { space->createIterations(); });
  }
  auto random = vexal::removeFunction("random");
  expectHostError("Vexal:host:UnknownFunction", [&] { space->createIterations(); });
  vexal::defineFunction("random", *std::move(random));
}

TEST_F(RandomGenerationTest, TheSameSeedDrawsTheSameStudyFromTheHostsDistributions) {
  const auto a = RandomParameter::create(model());
  a->setDistribution(vexal::makeUniform(2, 3).get());
  const auto b = RandomParameter::create(model());
  b->setDistribution(vexal::makeChoice(vexal::createDoubleRow(Numbers{5, 7}).get()).get());
  const auto space = exhaustive({samples(20, {a, b}), values(u"c", {1, 2})});
  const auto draw = [&](std::uint64_t seed) {
    vexal::seed(seed);
    return runsOf(space);
  };
  const Lines first = draw(1);
  EXPECT_EQ(first.size(), 40U);
  EXPECT_EQ(draw(1), first);
  EXPECT_NE(draw(2), first);
  for (const Iteration& run : samples(50, {a, b})->createIterations()) {
    const double uniform = vexal::doubleData(run.parameterSamples()[0].value())[0];
    const double choice = vexal::doubleData(run.parameterSamples()[1].value())[0];
    EXPECT_TRUE(uniform >= 2 && uniform <= 3) << uniform;
    EXPECT_TRUE(choice == 5 || choice == 7) << choice;
  }
}

}  // namespace
}  // namespace kxsim::design
