// The runs that come out of a study: of value sets, of pairs and of full factorials.
#include <algorithm>
#include <map>
#include <numeric>
#include <set>

#include "design/study_test.h"
#include "framework/change_set.h"
#include "framework/model_impl.h"
#include "support/host_errors.h"

namespace kxsim::design {
namespace {

using testing::function;
using testing::Lines;
using vexal::ArrayPtr;
using vexal::Call;
using vexal::ScopedFunction;
using vexal::testing::expectHostError;

class IterationGenerationTest : public testing::StudyTest {
 protected:
  /// How many of the runs refer to each sample, in the order in which the samples occur.
  static std::vector<int> uses(const std::vector<Iteration>& runs) {
    std::map<const ParameterSample::Impl*, std::size_t> places;
    std::vector<int> counts;
    for (const Iteration& run : runs) {
      for (const ParameterSample& sample : run.parameterSamples()) {
        const auto place = places.emplace(sample.impl(), counts.size());
        if (place.second) counts.push_back(0);
        ++counts[place.first->second];
      }
    }
    return counts;
  }
};

// Value sets -------------------------------------------------------------------------

TEST_F(IterationGenerationTest, AParameterYieldsARunForEachCellInColumnOrder) {
  const auto parameter = values(u"a", {});
  const ArrayPtr cell = vexal::createCell(2, 3);
  for (std::size_t k = 0; k < 6; ++k) {
    vexal::setCell(cell.get(), k, vexal::createDouble(static_cast<double>(k) + 1).get());
  }
  parameter->setValues(cell.get());
  EXPECT_EQ(runsOf(parameter), (Lines{"a=1", "a=2", "a=3", "a=4", "a=5", "a=6"}));
}

TEST_F(IterationGenerationTest, AParameterWithoutValuesYieldsNothing) {
  EXPECT_EQ(runsOf(ValueSetParameter::create(model())), Lines{});
  EXPECT_EQ(runsOf(values(u"a", {})), Lines{});
  EXPECT_EQ(count<Iteration>() + count<ParameterSample>(), 0U);
}

TEST_F(IterationGenerationTest, ASampleHoldsACopyOfItsCellWhateverTheClass) {
  const ArrayPtr cell = vexal::createCell(1, 3);
  vexal::setCell(cell.get(), 0, vexal::createChar("fast").get());
  vexal::setCell(cell.get(), 1, vexal::createDoubleMatrix(2, 2).get());
  const auto parameter = ValueSetParameter::Builder(model()).setValues(cell.get()).create();
  const auto runs = parameter->createIterations();
  parameter->setValues(vexal::createCell(0, 0).get());
  ASSERT_EQ(runs.size(), 3U);
  const auto valueOf = [&](std::size_t k) { return runs[k].parameterSamples()[0].value(); };
  EXPECT_EQ(vexal::charText(valueOf(0)), u"fast");
  EXPECT_EQ(vexal::describe(valueOf(1)), "2-by-2 double array");
  EXPECT_EQ(vexal::describe(valueOf(2)), "empty 0-by-0 double array");
}

TEST_F(IterationGenerationTest, SamplesReferToTheTargetItselfOrToNone) {
  const auto parameter = values(u"a", {1, 2});
  for (const Iteration& run : parameter->createIterations()) {
    EXPECT_EQ(run.parameterSamples()[0].parameterType(), parameter.parameterType());
  }
  parameter->setParameterType({});
  EXPECT_EQ(runsOf(parameter), (Lines{"?=1", "?=2"}));
}

TEST_F(IterationGenerationTest, ValuesThatABuilderTookUncheckedFailWhenTheyAreRead) {
  const auto parameter =
      ValueSetParameter::Builder(model()).setValues(vexal::createDouble(1).get()).create();
  expectHostError("Vexal:host:WrongClass", [&] { parameter->createIterations(); });
}

TEST_F(IterationGenerationTest, EveryCallMakesNewElementsWithFreshIdentitiesInTheSpacesModel) {
  const auto space = exhaustive({values(u"a", {1, 2}), values(u"b", {1, 2})});
  std::set<mf::zero::uuid> identities;
  for (int call = 0; call < 2; ++call) {
    for (const Iteration& run : space->createIterations()) {
      EXPECT_EQ(run->getModel(), model());
      EXPECT_FALSE(run->getOwner());
      EXPECT_FALSE(run.Uuid().isNil());
      identities.insert(run.Uuid());
      for (const ParameterSample& sample : run.parameterSamples()) {
        identities.insert(sample.Uuid());
      }
    }
  }
  EXPECT_EQ(identities.size(), 2U * (4 + 4));
}

// Pairs --------------------------------------------------------------------------------

TEST_F(IterationGenerationTest, SequentialSpacesPairUpToTheShortest) {
  const auto space = sequential({values(u"a", {1, 2, 3}), values(u"b", {10, 20, 30, 40, 50})});
  EXPECT_EQ(runsOf(space), (Lines{"a=1 b=10", "a=2 b=20", "a=3 b=30"}));
  EXPECT_EQ(count<ParameterSample>(), 8U);  // two of them for nobody
}

TEST_F(IterationGenerationTest, SequentialSpacesOfNothingYieldNothing) {
  EXPECT_EQ(runsOf(sequential({})), Lines{});
  EXPECT_EQ(runsOf(sequential({values(u"a", {1, 2}), values(u"b", {})})), Lines{});
  EXPECT_EQ(runsOf(sequential({values(u"a", {1, 2})})), (Lines{"a=1", "a=2"}));
}

TEST_F(IterationGenerationTest, SequentialRunsReferToTheSamplesOfTheirChildren) {
  const auto runs = sequential({values(u"a", {1, 2})})->createIterations();
  EXPECT_EQ(StudyTest::runs(runs), (Lines{"a=1", "a=2"}));
  EXPECT_EQ(count<Iteration>(), 4U);  // those of the child stay behind
  EXPECT_EQ(count<ParameterSample>(), 2U);
}

TEST_F(IterationGenerationTest, LongPairsAreTheSameWhetherSomebodyListensOrNot) {
  Numbers numbers(50);
  std::iota(numbers.begin(), numbers.end(), 1.0);
  const auto space = sequential(
      {values(u"a", numbers),
       exhaustive({values(u"b", {1, 2, 3, 4, 5, 6, 7}), values(u"c", {1, 2, 3, 4, 5})})});
  Lines expected;
  for (int i = 0; i < 35; ++i) {
    expected.push_back("a=" + std::to_string(i + 1) + " b=" + std::to_string(i % 7 + 1) +
                       " c=" + std::to_string(i / 7 + 1));
  }
  EXPECT_EQ(runsOf(space), expected);
  const auto subscription = model()->observe([](const mf::zero::ChangeSet&) {});
  EXPECT_EQ(runsOf(space), expected);
}

// An observer may come and go while runs are paired.
TEST_F(IterationGenerationTest, PairsStayTheSameWhenTheObserverLeavesMidway) {
  Numbers numbers(50);
  std::iota(numbers.begin(), numbers.end(), 1.0);
  const auto space = sequential({values(u"a", numbers), values(u"b", numbers)});
  mf::zero::Subscription subscription = model()->observe([&](const mf::zero::ChangeSet&) {
    if (count<Iteration>() == 2 * 50 + 5) subscription.end();
  });
  const Lines lines = runsOf(space);
  ASSERT_EQ(lines.size(), 50U);
  for (int i = 1; i <= 50; ++i) {
    const std::string number = std::to_string(i);
    EXPECT_EQ(lines[static_cast<std::size_t>(i) - 1], "a=" + number + " b=" + number);
  }
}

// Room is made for the combinations that there will be, not for those of runs nobody pairs.
TEST_F(IterationGenerationTest, AFactorialOfWhichPairsTakeLittleTakesLittleMemory) {
  Numbers hundred(100);
  std::iota(hundred.begin(), hundred.end(), 1.0);
  Numbers thousand(1000);
  std::iota(thousand.begin(), thousand.end(), 1.0);
  const auto factorial = exhaustive({values(u"a", hundred), values(u"b", hundred)});
  const auto space = exhaustive({sequential({factorial, values(u"c", {1, 2, 3})}),  //
                                 values(u"d", thousand)});
  const std::size_t before = model()->bytesReserved();
  EXPECT_EQ(space->createIterations().size(), 3000U);
  EXPECT_LT(model()->bytesReserved() - before, 5'000'000U);
}

TEST_F(IterationGenerationTest, AFractionOfARunIsARunInAPairToo) {
  const auto space = sequential({samples(2.5), values(u"a", {1, 2, 3, 4})});
  EXPECT_EQ(runsOf(space), (Lines{"a=1", "a=2", "a=3"}));
}

// A count that is not a number loses every comparison, so the other child's count holds.
TEST_F(IterationGenerationTest, AChildThatGivesLessThanWasCountedEndsTheRuns) {
  const auto space = sequential({samples(kNaN), values(u"a", {1, 2})});
  EXPECT_EQ(space.numIterations(), 2.0);
  EXPECT_EQ(runsOf(space), Lines{});
}

// Full factorials ------------------------------------------------------------------------

TEST_F(IterationGenerationTest, AFullFactorialHasEveryCombinationTheFirstVaryingFastest) {
  const auto space = exhaustive({values(u"a", {1, 2, 3}), values(u"b", {10, 20})});
  const auto runs = space->createIterations();
  EXPECT_EQ(StudyTest::runs(runs), (Lines{"a=1 b=10", "a=2 b=10", "a=3 b=10",  //
                                          "a=1 b=20", "a=2 b=20", "a=3 b=20"}));
  EXPECT_EQ(uses(runs), (std::vector<int>{2, 3, 2, 2, 3}));  // a=1 b=10 a=2 a=3 b=20
  EXPECT_EQ(count<ParameterSample>(), 5U);
  EXPECT_EQ(count<Iteration>(), 6U + 5U);
}

TEST_F(IterationGenerationTest, SharedSamplesChangeForAllTheirRuns) {
  const auto runs = exhaustive({values(u"a", {1, 2}), values(u"b", {10, 20})})->createIterations();
  runs[0].parameterSamples()[0]->setValue(vexal::createDouble(7).get());
  EXPECT_EQ(StudyTest::runs(runs), (Lines{"a=7 b=10", "a=2 b=10", "a=7 b=20", "a=2 b=20"}));
}

TEST_F(IterationGenerationTest, TheOrderOfRunsIsThatOfTheDesignMatrix) {
  const ScopedFunction lastFastest(
      "kxsim.design.fullfact", function([](const Call& call) {
        EXPECT_EQ(vexal::describe(call.input(0)), "1-by-2 double array");
        EXPECT_TRUE(std::ranges::equal(vexal::doubleData(call.input(0)), Numbers{2, 3}));
        EXPECT_EQ(call.inputCount(), 1U);
        ArrayPtr matrix = vexal::createDoubleMatrix(2, 6);
        std::ranges::copy(Numbers{1, 1, 1, 2, 1, 3, 2, 1, 2, 2, 2, 3},
                          vexal::mutableDoubleData(matrix.get()).begin());
        return matrix;
      }));
  EXPECT_EQ(runsOf(exhaustive({values(u"a", {1, 2}), values(u"b", {1, 2, 3})})),
            (Lines{"a=1 b=1", "a=1 b=2", "a=1 b=3", "a=2 b=1", "a=2 b=2", "a=2 b=3"}));
}

TEST_F(IterationGenerationTest, WithoutChildrenTheDesignIsAskedForOnceAndThereIsOneEmptyRun) {
  int calls = 0;
  const ScopedFunction counted("kxsim.design.fullfact", function([&](const Call& call) {
                                 ++calls;
                                 EXPECT_EQ(vexal::describe(call.input(0)),
                                           "empty 1-by-0 double array");
                                 return vexal::createChar("never read");
                               }));
  EXPECT_EQ(runsOf(exhaustive({})), Lines{""});
  EXPECT_EQ(calls, 1);
}

TEST_F(IterationGenerationTest, AChildWithoutRunsLeavesNoCombinationButTheDesignIsAskedFor) {
  Numbers levels;
  const ScopedFunction counted("kxsim.design.fullfact", function([&](const Call& call) {
                                 const auto asked = vexal::doubleData(call.input(0));
                                 levels.assign(asked.begin(), asked.end());
                                 return vexal::createDoubleMatrix(0, 0);
                               }));
  EXPECT_EQ(runsOf(exhaustive({values(u"a", {1, 2}), values(u"b", {})})), Lines{});
  EXPECT_EQ(levels, (Numbers{2, 0}));
}

TEST_F(IterationGenerationTest, ACountThatIsNoneReachesTheDesignWhichRefusesIt) {
  const auto inner = exhaustive({values(u"b", {1, 2}), values(u"c", {1, 2})});
  for (const double count : {2.5, -5.0, kNaN}) {
    const auto space = exhaustive({inner, samples(count)});
    const std::string text =
        expectHostError("Vexal:host:InvalidLevelCount", [&] { space->createIterations(); });
    EXPECT_NE(text.find("2 is " + vexal::formatNumber(count)), std::string::npos) << text;
  }
}

TEST_F(IterationGenerationTest, ADesignThatTakesAFractionIsFollowedUpToTheUnroundedProduct) {
  const ScopedFunction generous("kxsim.design.fullfact", function([](const Call&) {
                                  ArrayPtr matrix = vexal::createDoubleMatrix(2, 6);
                                  std::ranges::copy(Numbers{1, 1, 2, 1, 3, 1, 1, 2, 2, 2, 3, 2},
                                                    vexal::mutableDoubleData(matrix.get()).begin());
                                  return matrix;
                                }));
  // 2.5 runs are three, times two are five.
  EXPECT_EQ(runsOf(exhaustive({samples(2.5), values(u"a", {1, 2})})),
            (Lines{"a=1", "a=1", "a=1", "a=2", "a=2"}));
}

TEST_F(IterationGenerationTest, WhatTheDesignReportsComesThroughAsItCame) {
  const auto space = exhaustive({values(u"a", {1, 2})});
  {
    const ScopedFunction failing("kxsim.design.fullfact", function([](const Call&) -> ArrayPtr {
                                   vexal::Diagnostic two;
                                   two.add({"Test:design", "First"});
                                   two.add({"Test:design", "Second"});
                                   vexal::throwDiagnostic(two);
                                 }));
    try {
      space->createIterations();
      ADD_FAILURE() << "no error";
    } catch (const vexal::HostError& error) {
      EXPECT_EQ(error.identifier(), "Test:design:First");
      ASSERT_EQ(error.diagnostic().itemCount(), 2U);
      EXPECT_EQ(error.diagnostic().item(1).key, "Second");
    }
    expectHostError("Test:design:First", [&] { exhaustive({})->createIterations(); });
  }
  auto fullfact = vexal::removeFunction("kxsim.design.fullfact");
  expectHostError("Vexal:host:UnknownFunction", [&] { space->createIterations(); });
  vexal::defineFunction("kxsim.design.fullfact", *std::move(fullfact));
}

TEST_F(IterationGenerationTest, ADesignMatrixThatDoesNotFitIsRefused) {
  auto space = exhaustive({values(u"a", {1, 2}), values(u"b", {1})});
  const auto refused = [&](const char* identifier, const Numbers& data) {
    const ScopedFunction wrong("kxsim.design.fullfact",
                               function([&](const Call&) { return vexal::createDoubleRow(data); }));
    expectHostError(identifier, [&] { space->createIterations(); });
  };
  const char* key = "Kxsim:Design:InvalidDesignMatrix";
  refused(key, {1, 1, 2});     // too short
  refused(key, {1, 1, 3, 1});  // past the last level
  refused(key, {1, 1, 2, 0});  // below the first
  refused(key, {1, 1, -1, 1});
  refused(key, {1, 1, kNaN, 1});
  refused(key, {1, 1, 1e300, 1});
  refused(key, {});
  space = exhaustive({exhaustive({})});  // one run without samples
  refused(key, {0});
  const ScopedFunction text("kxsim.design.fullfact",
                            function([](const Call&) { return vexal::createChar("abcd"); }));
  expectHostError("Vexal:host:WrongClass", [&] { space->createIterations(); });
}

// Trees ----------------------------------------------------------------------------------

TEST_F(IterationGenerationTest, SpacesNestInAnyOrder) {
  const auto pairs = sequential({values(u"a", {1, 2}), values(u"b", {10, 20})});
  const auto space = exhaustive({pairs, values(u"c", {5, 6})});
  EXPECT_EQ(runsOf(space), (Lines{"a=1 b=10 c=5", "a=2 b=20 c=5", "a=1 b=10 c=6",  //
                                  "a=2 b=20 c=6"}));
  const auto outer = sequential({values(u"d", {7, 8, 9}), space});
  EXPECT_EQ(runsOf(outer), (Lines{"d=7 a=1 b=10 c=5", "d=8 a=2 b=20 c=5", "d=9 a=1 b=10 c=6"}));
}

TEST_F(IterationGenerationTest, ASpaceInSeveralPlacesIsBuiltAnewInEach) {
  const auto shared = values(u"a", {1, 2});
  const auto space = exhaustive({shared, sequential({shared})});
  const auto runs = space->createIterations();
  EXPECT_EQ(StudyTest::runs(runs), (Lines{"a=1 a=1", "a=2 a=1", "a=1 a=2", "a=2 a=2"}));
  EXPECT_EQ(uses(runs), (std::vector<int>{2, 2, 2, 2}));
}

TEST_F(IterationGenerationTest, ManyFactorsOfOneLevelAreOneRunInTheirOrder) {
  const auto space = Exhaustive::create(model());
  std::string expected;
  for (int k = 0; k < 200; ++k) {
    space->getParameterSpacesMutable().add(values(u"p", {static_cast<double>(k)}));
    expected += (k > 0 ? " p=" : "p=") + std::to_string(k);
  }
  EXPECT_EQ(runsOf(space), Lines{expected});
}

TEST_F(IterationGenerationTest, DeepTreesNeedNoDeepStack) {
  ParameterSpace space = values(u"a", {1, 2});
  constexpr int kLevels = 20'000;
  for (int level = 0; level < kLevels; ++level) {
    space = level % 2 == 0 ? ParameterSpace(exhaustive({space})) : sequential({space});
  }
  EXPECT_EQ(space.numIterations(), 2.0);
  EXPECT_EQ(runsOf(space), (Lines{"a=1", "a=2"}));
  EXPECT_EQ(count<ParameterSample>(), 2U);
  EXPECT_EQ(count<Iteration>(), 2U * (kLevels + 1));
}

}  // namespace
}  // namespace kxsim::design
