// Generation as a change of its model: transactions, observers, proxies, and the trees that
// are refused before anything is made.
#include <algorithm>
#include <memory>
#include <unordered_map>

#include "design/study_test.h"
#include "framework/messages.h"
#include "support/framework_errors.h"
#include "support/host_errors.h"

namespace kxsim::design {
namespace {

namespace messages = mf0::messages;
using mf::zero::BuilderValues;
using mf::zero::ChangeSet;
using mf::zero::Transaction;
using mf::zero::testing::expectRaises;
using testing::ChangeLog;
using testing::function;
using testing::Lines;
using vexal::Call;
using vexal::ScopedFunction;
using vexal::testing::expectHostError;

class GenerationInAModelTest : public testing::StudyTest {
 protected:
  template <class Action>
  void expectRefused(const char* key, Action&& action) {
    const std::size_t before = model()->size();
    const ScopedFunction design("kxsim.design.fullfact", function([](const Call&) {
                                  ADD_FAILURE() << "the design was asked for";
                                  return vexal::createDoubleMatrix(0, 0);
                                }));
    expectHostError(std::string("Kxsim:Design:") + key, action);
    EXPECT_EQ(model()->size(), before);
  }
};

// Transactions and observers ---------------------------------------------------------------

TEST_F(GenerationInAModelTest, ARollbackLeavesNothingOfTheRuns) {
  const auto space = exhaustive({values(u"a", {1, 2}), sequential({values(u"b", {3, 4})})});
  const std::size_t before = model()->size();
  Transaction transaction = model()->beginTransaction();
  const auto runs = space->createIterations();
  EXPECT_EQ(runs.size(), 4U);
  EXPECT_GT(model()->size(), before);
  transaction.rollback();
  EXPECT_EQ(model()->size(), before);
  for (const Iteration& run : runs) EXPECT_FALSE(run.isValid());
  EXPECT_EQ(runsOf(space), (Lines{"a=1 b=3", "a=2 b=3", "a=1 b=4", "a=2 b=4"}));
}

TEST_F(GenerationInAModelTest, AFailureInATransactionLeavesItsFateToTheCaller) {
  const auto space = exhaustive({values(u"a", {1, 2})});
  const std::size_t before = model()->size();
  const ScopedFunction wrong("kxsim.design.fullfact", function([](const Call&) {
                               return vexal::createDoubleRow(Numbers{1, 9});
                             }));
  Transaction transaction = model()->beginTransaction();
  expectHostError("Kxsim:Design:InvalidDesignMatrix", [&] { space->createIterations(); });
  EXPECT_TRUE(transaction.isOpen());
  transaction.rollback();
  EXPECT_EQ(model()->size(), before);
}

TEST_F(GenerationInAModelTest, InATransactionTheRunsAreToldOnceAsCreations) {
  const auto parameter = values(u"a", {1, 2});
  ChangeLog log(model());
  Transaction transaction = model()->beginTransaction();
  parameter->createIterations();
  EXPECT_EQ(log.commits(), 0);
  transaction.commit();
  EXPECT_EQ(log.take(),
            (Lines{"+ Iteration", "+ ParameterSample", "+ Iteration", "+ ParameterSample"}));
  EXPECT_EQ(log.commits(), 1);
}

TEST_F(GenerationInAModelTest, OutsideOfOneObserversSeeEachElementAsItIsMade) {
  const auto space = exhaustive({values(u"a", {1}), values(u"b", {2})});
  ChangeLog log(model());
  space->createIterations();
  const Lines lines = log.take();
  EXPECT_EQ(std::ranges::count(lines, "+ Iteration"), 3);
  EXPECT_EQ(std::ranges::count(lines, "+ ParameterSample"), 2);
  EXPECT_EQ(std::ranges::count(lines, "ParameterSample.Value: no array -> an array"), 2);
}

TEST_F(GenerationInAModelTest, AnObserverMayChangeTheValuesThatAreBeingEnumerated) {
  const auto parameter = values(u"a", {1, 2, 3, 4});
  const auto subscription = model()->observe([&](const ChangeSet&) {
    const bool isFirst = vexal::elementCount(parameter.values()) == 4;
    if (isFirst && count<Iteration>() == 2) parameter->setValues(cellRow({10, 20}).get());
  });
  EXPECT_EQ(runsOf(parameter), (Lines{"a=1", "a=20"}));
}

TEST_F(GenerationInAModelTest, SamplesThatAnObserverDestroysAreReportedMissing) {
  const auto destroyAtRun = [&](std::size_t number) {
    return model()->observe([&, number, done = false](const ChangeSet&) mutable {
      if (done || count<Iteration>() < number) return;
      done = true;
      for (const auto& sample : model()->elements(ParameterSample::classInfo())) sample->destroy();
    });
  };
  const auto factorial = exhaustive({values(u"a", {1, 2}), values(u"b", {1, 2})});
  {
    const auto subscription = destroyAtRun(5);  // the first combined run
    expectRaises<messages::CannotAddNonExistentObject>([&] { factorial->createIterations(); });
  }
  // Samples of runs that were not paired by then are missing silently, as their runs let go of
  // them.
  const auto pairs = sequential({values(u"a", {1, 2, 3}), values(u"b", {1, 2, 3})});
  const auto subscription = destroyAtRun(count<Iteration>() + 6 + 2);
  EXPECT_EQ(runsOf(pairs), (Lines{"", "", ""}));
}

TEST_F(GenerationInAModelTest, AFrozenModelRefuses) {
  const auto space = exhaustive({values(u"a", {1, 2})});
  mf::zero::Model::Freezer(model()).freeze();
  expectRaises<messages::CannotModifyFrozenModel>([&] { space->createIterations(); });
  EXPECT_EQ(space.numIterations(), 2.0);
  const mf::zero::Model::Thawer thaw(model());
  EXPECT_EQ(runsOf(space).size(), 2U);
}

// Proxies ------------------------------------------------------------------------------------

/// Fills elements by what a test has put down for them.
class Store : public mf::zero::ElementLoader {
 public:
  using Fill = std::function<void(BuilderValues&)>;

  explicit Store(const mf::zero::Model& model) : model_(model.impl()) {}

  template <class X>
  X add(std::function<void(typename X::Impl::BuilderImpl&)> fill) {
    const auto identity = mf::zero::generateNewUuid();
    fills_[identity] = [fill](BuilderValues& values) {
      fill(static_cast<typename X::Impl::BuilderImpl&>(values));
    };
    return model_->createProxy(X::classInfo(), identity).template as<X>();
  }
  bool load(const mf::zero::uuid& identity, BuilderValues& values) override {
    const auto known = fills_.find(identity);
    if (known == fills_.end()) return false;
    known->second(values);
    return true;
  }

 private:
  mf::zero::Model::Impl* model_;
  std::unordered_map<mf::zero::uuid, Fill> fills_;
};

TEST_F(GenerationInAModelTest, ProxiesAmongTheChildrenAreLoaded) {
  const auto store = std::make_shared<Store>(model());
  model()->setLoader(store);
  const auto target = variable(u"a");
  const auto parameter = store->add<ValueSetParameter>([&](auto& values) {
    values.doSetValues(cellRow({1, 2}).get());
    values.doSetParameterType(target);
  });
  const auto inner =
      store->add<Sequential>([&](auto& values) { values.doAddParameterSpaces(parameter); });
  const auto space = exhaustive({values(u"b", {5}), inner});
  EXPECT_TRUE(space.parameterSpaces().isProxyAt(1));
  EXPECT_EQ(space.numIterations(), 2.0);
  EXPECT_FALSE(inner->isProxy() || parameter->isProxy());
  EXPECT_EQ(runsOf(space), (Lines{"b=5 a=1", "b=5 a=2"}));
}

TEST_F(GenerationInAModelTest, ProxiesAmongTheDrawnParametersAndTargetsAreLoaded) {
  const auto store = std::make_shared<Store>(model());
  model()->setLoader(store);
  const auto target = store->add<Variable>([](auto& values) { values.doSetName(u"a"); });
  const auto parameter = store->add<RandomParameter>([&](auto& values) {
    values.doSetParameterType(target);
    values.doSetDistribution(vexal::createDouble(7).get());
  });
  const ScopedFunction random(
      "random", function([](const Call& call) { return vexal::deepCopy(call.input(0)); }));
  const auto space = samples(2, {parameter});
  EXPECT_TRUE(parameter->isProxy());
  EXPECT_EQ(runsOf(space), (Lines{"a=7", "a=7"}));
}

TEST_F(GenerationInAModelTest, AChildThatCannotBeLoadedIsReportedAndNothingIsMade) {
  const auto lost = model()
                        ->createProxy(ValueSetParameter::classInfo(), mf::zero::generateNewUuid())
                        .as<ValueSetParameter>();
  const auto space = exhaustive({values(u"a", {1, 2}), lost});
  const std::size_t before = model()->size();
  expectRaises<messages::CannotResolveProxy>([&] { space.numIterations(); });
  expectRaises<messages::CannotResolveProxy>([&] { space->createIterations(); });
  EXPECT_EQ(model()->size(), before);
}

// Refused trees ------------------------------------------------------------------------------

TEST_F(GenerationInAModelTest, ASpaceAmongItsOwnDescendantsIsRefused) {
  const auto inner = exhaustive({values(u"a", {1, 2})});
  ParameterSpace space = inner;
  for (int level = 0; level < 50; ++level) space = sequential({values(u"b", {1}), space});
  const auto outer = exhaustive({values(u"c", {1, 2}), space});
  inner->getParameterSpacesMutable().add(outer);
  for (const ParameterSpace& start : {ParameterSpace(outer), ParameterSpace(inner), space}) {
    expectRefused("SpaceContainsItself", [&] { start.numIterations(); });
    expectRefused("SpaceContainsItself", [&] { start->createIterations(); });
  }
  const auto self = sequential({});
  self->getParameterSpacesMutable().add(self);
  expectRefused("SpaceContainsItself", [&] { self.numIterations(); });
  const auto around = exhaustive({self});
  expectRefused("SpaceContainsItself", [&] { around->createIterations(); });
  inner->getParameterSpacesMutable().remove(outer);
  EXPECT_EQ(outer.numIterations(), 2.0);
}

TEST_F(GenerationInAModelTest, ACountThatNoMachineHoldsIsRefused) {
  for (const double count : {1e12, 1e300, kInfinity}) {
    const auto space = samples(count);
    expectRefused("TooManyIterations", [&] { space->createIterations(); });
    const auto pair = sequential({values(u"a", {1, 2}), space});
    expectRefused("TooManyIterations", [&] { pair->createIterations(); });
  }
}

TEST_F(GenerationInAModelTest, AProductThatNoMachineHoldsIsRefusedBeforeItsFactorsAreBuilt) {
  const auto space = Exhaustive::create(model());
  for (int k = 0; k < 5; ++k) {
    space->getParameterSpacesMutable().add(values(u"p", Numbers(1000, 1.0)));
  }
  EXPECT_EQ(space.numIterations(), 1e15);
  expectRefused("TooManyIterations", [&] { space->createIterations(); });
}

TEST_F(GenerationInAModelTest, OneRunThatTakesExponentiallyManyToBuildIsRefused) {
  ParameterSpace left = values(u"a", {1});
  ParameterSpace right = values(u"b", {2});
  for (int level = 0; level < 60; ++level) {
    const auto next = sequential({left, right});
    right = sequential({left, right});
    left = next;
  }
  EXPECT_EQ(left.numIterations(), 1.0);
  expectRefused("TooManyIterations", [&] { left->createIterations(); });
}

}  // namespace
}  // namespace kxsim::design
