// A study from start to end, as a script makes it: by name alone.
#include "binding/binding_test.h"

namespace kxsim::testing {
namespace {

class TypicalRequestTest : public BindingTest {};

TEST_F(TypicalRequestTest, AFullFactorialIsBuiltRunAndRecorded) {
  const ArrayPtr in = model();
  const ArrayPtr space = make("kxsim.design.Exhaustive", {in});
  const ArrayPtr spaces = get(space, "ParameterSpaces");
  call(spaces, "add", {factor(in, "gain", cell({1, 2, 3}))});
  call(spaces, "add", {factor(in, "mode", cell({"slow", "fast"}))});
  EXPECT_EQ(number(get(space, "NumIterations")), 6);

  const ArrayPtr runs = call(space, "createIterations");
  EXPECT_EQ(vexal::className(runs.get()), "kxsim.design.Iteration");
  ASSERT_EQ(vexal::elementCount(runs.get()), 6U);
  const ArrayPtr samples = get(element(runs, 4), "ParameterSamples");
  ASSERT_EQ(number(call(samples, "size")), 2);
  const ArrayPtr gain = call(samples, "at", {0});
  EXPECT_EQ(number(get(gain, "Value")), 2);
  EXPECT_EQ(text(get(get(gain, "ParameterType"), "Name")), "gain");
  EXPECT_EQ(text(get(call(samples, "at", {1}), "Value")), "fast");

  const ArrayPtr job = make("kinetra.simmanager.mm.Job", {in});
  const ArrayPtr records = get(job, "SimulationRuns");
  for (std::size_t k = 0; k < vexal::elementCount(runs.get()); ++k) {
    const ArrayPtr run =
        call(job, "createIntoSimulationRuns", {record({{"RunId", static_cast<double>(k + 1)}})});
    EXPECT_EQ(set(run, "State", "finished"), "");
  }
  EXPECT_EQ(number(call(records, "size")), 6);
  const ArrayPtr done =
      call(in, "elements",
           {"kinetra.simmanager.mm.SimulationRun", record({{"State", "finished"}, {"RunId", 4}})});
  ASSERT_EQ(vexal::elementCount(done.get()), 1U);
  EXPECT_EQ(identityOf(done), identityOf(call(records, "at", {3})));
}

}  // namespace
}  // namespace kxsim::testing
