// The checks of the host arrays that a study takes: which are accepted, and that a refused
// one leaves everything as it was.
#include <algorithm>

#include "design/initial_state.h"
#include "design/study_test.h"
#include "host/distribution.h"
#include "host/object.h"
#include "host/record.h"
#include "support/framework_errors.h"

namespace kxsim::design {
namespace {

using testing::ChangeLog;
using testing::function;
using testing::Lines;
using vexal::ArrayPtr;
using vexal::Call;
using vexal::ScopedFunction;

class ValueChecksTest : public testing::StudyTest {
 protected:
  ValueSetParameter parameter_ = ValueSetParameter::create(model());
  RandomParameter random_ = RandomParameter::create(model());
  InitialState state_ = InitialState::create(model());

  template <class Action>
  static void expectRefused(const char* key, Action&& action) {
    try {
      action();
      ADD_FAILURE() << "accepted";
    } catch (const vexal::HostError& error) {
      EXPECT_EQ(error.identifier(), std::string("Kxsim:Design:") + key);
      EXPECT_EQ(error.catalog(), "Kxsim:Design");
      EXPECT_EQ(error.key(), key);
      EXPECT_EQ(error.diagnostic().itemCount(), 1U);
      EXPECT_NE(std::string(error.what()).find(' '), std::string::npos) << "not a sentence";
    }
  }
  void expectValuesRefused(const vxArray* proposed) {
    const vxArray* before = parameter_.values();
    expectRefused("ValuesMustBeCellArray", [&] { parameter_->setValues(proposed); });
    EXPECT_EQ(parameter_.values(), before);
  }
  void expectDistributionRefused(const vxArray* proposed) {
    const vxArray* before = random_.distribution();
    expectRefused("RandomMethodNotFound", [&] { random_->setDistribution(proposed); });
    EXPECT_EQ(random_.distribution(), before);
  }
  void expectStateRefused(const vxArray* proposed) {
    const vxArray* before = state_.simState();
    expectRefused("InvalidSimState", [&] { state_->setSimState(proposed); });
    EXPECT_EQ(state_.simState(), before);
  }
  static ArrayPtr objectOf(std::string_view name, std::string_view superclass) {
    if (!vexal::isClassDefined(name)) vexal::defineClass(name, superclass);
    return vexal::createObject(name);
  }
};

TEST_F(ValueChecksTest, ValuesAreACellArrayOfAnySize) {
  parameter_->setValues(cellRow({1, 2, 3}).get());
  EXPECT_EQ(vexal::elementCount(parameter_.values()), 3U);
  parameter_->setValues(vexal::createCell(0, 0).get());
  EXPECT_TRUE(vexal::isEmpty(parameter_.values()));
  const std::size_t dims[] = {2, 1, 2};
  parameter_->setValues(vexal::createArray(vexal::ClassId::Cell, dims).get());
  EXPECT_EQ(vexal::elementCount(parameter_.values()), 4U);
}

TEST_F(ValueChecksTest, ValuesThatAreNoCellArrayAreRefused) {
  parameter_->setValues(cellRow({1}).get());
  expectValuesRefused(nullptr);
  expectValuesRefused(vexal::createDoubleMatrix(1, 3).get());
  expectValuesRefused(vexal::createChar("cell").get());
  expectValuesRefused(vexal::createLogical(true).get());
  expectValuesRefused(vexal::createStruct().get());
  expectValuesRefused(vexal::makeUniform(0, 1).get());
}

TEST_F(ValueChecksTest, ADistributionIsAnObjectWithAMethodThatDraws) {
  const std::size_t before = liveArrays();
  for (const ArrayPtr& distribution : {vexal::makeUniform(0, 1), vexal::makeNormal(0, 1)}) {
    random_->setDistribution(distribution.get());
    EXPECT_TRUE(vexal::equalContent(random_.distribution(), distribution.get()));
  }
  EXPECT_EQ(liveArrays(), before + 1);
}

TEST_F(ValueChecksTest, ADistributionWithoutAMethodThatDrawsIsRefused) {
  random_->setDistribution(vexal::makeUniform(0, 1).get());
  expectDistributionRefused(nullptr);
  expectDistributionRefused(vexal::createDouble(1).get());
  expectDistributionRefused(vexal::createChar("random").get());
  expectDistributionRefused(objectOf("Test.Drawless", {}).get());
}

TEST_F(ValueChecksTest, ASimulationStateIsOfTheHostsClassOrASubclass) {
  state_->setSimState(vexal::createObject(vexal::kModelSimStateClass).get());
  EXPECT_TRUE(vexal::isA(state_.simState(), vexal::kModelSimStateClass));
  const ArrayPtr special = objectOf("Test.SpecialState", vexal::kModelSimStateClass);
  state_->setSimState(special.get());
  EXPECT_EQ(vexal::className(state_.simState()), "Test.SpecialState");
}

TEST_F(ValueChecksTest, AnythingElseIsNoSimulationState) {
  state_->setSimState(vexal::createObject(vexal::kModelSimStateClass).get());
  expectStateRefused(nullptr);
  expectStateRefused(vexal::createDouble(1).get());
  expectStateRefused(vexal::createStruct().get());
  expectStateRefused(vexal::createChar(vexal::kModelSimStateClass).get());
  expectStateRefused(objectOf("Test.OtherState", {}).get());
}

TEST_F(ValueChecksTest, ARefusedArrayIsNeitherToldNorPartOfATransaction) {
  const ArrayPtr wrong = vexal::createDouble(1);
  ChangeLog log(model());
  expectValuesRefused(wrong.get());
  mf::zero::Transaction transaction = model()->beginTransaction();
  expectValuesRefused(wrong.get());
  expectDistributionRefused(wrong.get());
  expectStateRefused(wrong.get());
  transaction.commit();
  EXPECT_EQ(log.take(), Lines{});
}

TEST_F(ValueChecksTest, ByReflectionTheSameIsRefused) {
  const auto property = parameter_->getPropertyByIndex(1);
  const auto wrong = mf::zero::Value::ofArray(vexal::createDouble(1).get());
  expectRefused("ValuesMustBeCellArray", [&] { parameter_->setPropertyValue(property, wrong); });
  parameter_->setValues(cellRow({1}).get());
  expectRefused("ValuesMustBeCellArray", [&] { parameter_->setPropertyValue(property, {}); });
  EXPECT_TRUE(parameter_->hasValues());
}

TEST_F(ValueChecksTest, TheStoredArrayItselfIsNotCheckedAgain) {
  // Only a builder can have stored arrays that the checks refuse.
  const ArrayPtr number = vexal::createDouble(1);
  parameter_ = ValueSetParameter::Builder(model()).setValues(number.get()).create();
  random_ = RandomParameter::Builder(model()).setDistribution(number.get()).create();
  state_ = InitialState::Builder(model()).setSimState(number.get()).create();
  ChangeLog log(model());
  parameter_->setValues(parameter_.values());
  random_->setDistribution(random_.distribution());
  state_->setSimState(state_.simState());
  InitialState::create(model())->setSimState(nullptr);  // null is what it holds
  EXPECT_EQ(log.take(), Lines{"+ InitialState"});
  expectValuesRefused(number.get());  // as much a number, but another array
}

TEST_F(ValueChecksTest, ABuilderTakesAnyArrayAndNull) {
  const auto built = [&](const vxArray* array) {
    return ValueSetParameter::Builder(model()).setValues(array).create();
  };
  EXPECT_EQ(vexal::className(built(vexal::createDouble(1).get()).values()), "double");
  EXPECT_FALSE(built(nullptr)->hasValues());
  ValueSetParameter::Builder builder(model());
  builder.setValues(cellRow({1, 2}).get());
  EXPECT_EQ(vexal::elementCount(builder.values().getValues().getValue<const vxArray*>()), 2U);
  EXPECT_FALSE(builder.setValues(nullptr).create()->hasValues());
}

TEST_F(ValueChecksTest, WhatTheCallerDoesToItsArrayLaterDoesNotShow) {
  const ArrayPtr cell = cellRow({1, 2});
  parameter_->setValues(cell.get());
  const auto sample = ParameterSample::create(model());
  const ArrayPtr number = vexal::createDouble(3);
  sample->setValue(number.get());
  vexal::setCell(cell.get(), 0, vexal::createDouble(9).get());
  vexal::mutableDoubleData(number.get())[0] = 9;
  EXPECT_EQ(vexal::doubleData(vexal::cellElement(parameter_.values(), 0))[0], 1.0);
  EXPECT_EQ(vexal::doubleData(sample.value())[0], 3.0);
}

TEST_F(ValueChecksTest, ASampleTakesEveryArrayAndNull) {
  const auto sample = ParameterSample::create(model());
  EXPECT_EQ(sample.value(), nullptr);
  ChangeLog log(model());
  sample->setValue(nullptr);
  EXPECT_EQ(log.commits(), 0);
  sample->setValue(cellRow({1}).get());
  sample->setValue(vexal::createChar(u"\u00FC").get());
  EXPECT_EQ(vexal::charText(sample.value()), u"\u00FC");
  sample->setValue(sample.value());
  sample->setValue(nullptr);
  EXPECT_FALSE(sample->hasValue());
  EXPECT_EQ(log.take(), (Lines{"ParameterSample.Value: no array -> an array",
                               "ParameterSample.Value: an array -> an array",
                               "ParameterSample.Value: an array -> no array"}));
}

TEST_F(ValueChecksTest, ARollbackBringsTheOldArrayBack) {
  parameter_->setValues(cellRow({1}).get());
  const vxArray* before = parameter_.values();
  mf::zero::Transaction transaction = model()->beginTransaction();
  parameter_->setValues(cellRow({2, 3}).get());
  parameter_->setValues(cellRow({4, 5, 6}).get());
  transaction.rollback();
  EXPECT_EQ(parameter_.values(), before);
  EXPECT_EQ(vexal::elementCount(before), 1U);
}

TEST_F(ValueChecksTest, AProxyIsRefusedBeforeItsArrayIsLookedAt) {
  const auto proxy = model()
                         ->createProxy(RandomParameter::classInfo(), mf::zero::generateNewUuid())
                         .as<RandomParameter>();
  const ScopedFunction asked("ismethod", function([](const Call&) -> ArrayPtr {
                               ADD_FAILURE() << "asked";
                               return vexal::createLogical(true);
                             }));
  mf::zero::testing::expectRaises<mf0::messages::CannotModifyProxy>(
      [&] { proxy->setDistribution(vexal::createDouble(1).get()); });
}

// What the host answers when it is asked for the method ----------------------------------

TEST_F(ValueChecksTest, TheHostIsAskedOnceWithACopyAndTheMethodsName) {
  const ArrayPtr distribution = vexal::makeUniform(0, 1);
  int calls = 0;
  const ScopedFunction asked("ismethod", function([&](const Call& call) {
                               ++calls;
                               EXPECT_EQ(call.outputCount(), 1U);
                               EXPECT_EQ(call.inputCount(), 2U);
                               EXPECT_NE(call.input(0), distribution.get());
                               EXPECT_TRUE(vexal::equalContent(call.input(0), distribution.get()));
                               EXPECT_EQ(vexal::charText(call.input(1)), u"random");
                               return vexal::createLogical(true);
                             }));
  random_->setDistribution(distribution.get());
  EXPECT_EQ(calls, 1);
  random_->setDistribution(random_.distribution());
  expectDistributionRefused(nullptr);
  EXPECT_EQ(calls, 1);
}

TEST_F(ValueChecksTest, OnlyALogicalScalarThatIsTrueCountsAsYes) {
  const std::size_t pair[] = {1, 2};
  const std::size_t none[] = {0, 0};
  std::vector<ArrayPtr> answers;
  answers.push_back(vexal::createLogical(false));
  answers.push_back(vexal::createDouble(1));
  answers.push_back(vexal::createInt32(1));
  answers.push_back(vexal::createChar("true"));
  answers.push_back(vexal::createArray(vexal::ClassId::Logical, none));
  answers.push_back(vexal::createArray(vexal::ClassId::Logical, pair));
  std::ranges::fill(vexal::mutableElements<bool>(answers.back().get()), true);
  const ArrayPtr distribution = vexal::makeUniform(0, 1);
  for (const ArrayPtr& answer : answers) {
    SCOPED_TRACE(vexal::describe(answer.get()));
    const ScopedFunction asked(
        "ismethod", function([&](const Call&) { return vexal::deepCopy(answer.get()); }));
    expectDistributionRefused(distribution.get());
  }
}

TEST_F(ValueChecksTest, AHostThatCannotAnswerCountsAsNoUnderTheSameError) {
  const ArrayPtr distribution = vexal::makeUniform(0, 1);
  {
    const ScopedFunction failing("ismethod", function([](const Call&) -> ArrayPtr {
                                   vexal::raise({"Test:host", "Broken"});
                                 }));
    expectDistributionRefused(distribution.get());
  }
  {
    const ScopedFunction silent("ismethod", {{}, [](Call&) {}});
    expectDistributionRefused(distribution.get());
  }
  auto ismethod = vexal::removeFunction("ismethod");
  expectDistributionRefused(distribution.get());
  vexal::defineFunction("ismethod", *std::move(ismethod));
  random_->setDistribution(distribution.get());
}

}  // namespace
}  // namespace kxsim::design
