// What constructors and createInto methods take.
#include "binding/binding_test.h"

namespace kxsim::testing {
namespace {

constexpr const char* kRun = "kinetra.simmanager.mm.SimulationRun";
constexpr const char* kIdentity = "0f8fad5b-d9cb-469f-a165-70867728950e";

class ConstructionTest : public BindingTest {
 protected:
  static ArrayPtr values() { return record({{"State", "running"}, {"Progress", 0.5}}); }
  static ArrayPtr structs(std::size_t columns) {
    const std::size_t dims[] = {1, columns};
    return vexal::createStruct(vexal::Dims(dims));
  }
};

TEST_F(ConstructionTest, ValuesAndIdentityComeInEitherOrder) {
  const ArrayPtr bytes = vexal::createDoubleMatrix(1, 16);
  std::size_t place = 0;
  for (double& byte : vexal::mutableDoubleData(bytes.get())) {
    byte = static_cast<double>(++place);
  }
  const std::string ofBytes = "01020304-0506-0708-090a-0b0c0d0e0f10";
  const std::string braced = "{0F8FAD5B-D9CB-469F-A165-70867728950E}";
  for (const auto& [identity, expected] :
       {std::pair(Argument(kIdentity), std::string(kIdentity)),
        std::pair(Argument(braced), std::string(kIdentity)), std::pair(Argument(bytes), ofBytes)}) {
    for (const bool isIdentityFirst : {false, true}) {
      const ArrayPtr in = model();
      const ArrayPtr first = values();
      std::vector<const vxArray*> given{in.get(), first.get(), identity.get()};
      if (isIdentityFirst) std::swap(given[1], given[2]);
      const ArrayPtr run = valueOf(vexal::script::construct(kRun, given));
      EXPECT_EQ(text(call(run, "identity")), expected);
      EXPECT_EQ(text(get(run, "State")), "running");
      EXPECT_EQ(number(get(run, "Progress")), 0.5);
      EXPECT_EQ(identityOf(call(in, "findElement", {expected})), identityOf(run));
    }
  }
}

TEST_F(ConstructionTest, AModelAloneGivesAFreshElementWithDefaults) {
  const ArrayPtr in = model();
  const ArrayPtr figure = make("kxsim.design.Figure", {in});
  EXPECT_EQ(text(call(get(figure, "Type"), "getLiteral")), "ScatterPlot");
  EXPECT_NE(text(call(figure, "identity")),
            text(call(make("kxsim.design.Figure", {in}), "identity")));
  EXPECT_EQ(number(call(in, "size")), 2);
}

TEST_F(ConstructionTest, RefusedArgumentsLeaveTheModelAsItWas) {
  const ArrayPtr in = model();
  const ArrayPtr dead = model();
  call(dead, "close");
  const ArrayPtr none = vexal::createDoubleMatrix(0, 0);
  const ArrayPtr run = make(kRun, {in});
  const std::string invalid = "mf0:messages:InvalidValue";
  const std::string noModel = "mf0:messages:CannotCreateWithoutModel";
  struct {
    Arguments arguments;
    std::string error;
  } const cases[] = {
      {{}, noModel},
      {{none}, noModel},
      {{dead}, noModel},
      {{5}, noModel},
      {{run}, noModel},
      {{in, values(), values()}, invalid},
      {{in, kIdentity, kIdentity}, invalid},
      {{in, structs(2)}, invalid},
      {{in, structs(0)}, invalid},
      {{in, "no identity"}, invalid},
      {{in, "00000000-0000-0000-0000-000000000000"}, invalid},
      {{in, 16}, invalid},
      {{in, none}, invalid},
      {{in, values(), "0f8fad5b"}, invalid},
      {{in, text(call(run, "identity"))}, "mf0:messages:CannotCreateDuplicateIdentity"},
      {{in, record({{"Stat", "running"}})}, "mf0:messages:NoSuchProperty"},
      {{in, record({{"Progress", "much"}})}, "Vexal:class:CannotConvert"},
      {{in, values(), kIdentity, none}, "Vexal:class:TooManyArguments"},
  };
  for (const auto& [arguments, error] : cases) {
    EXPECT_EQ(errorOf(tryNew(kRun, arguments)), error);
  }
  EXPECT_EQ(number(call(in, "size")), 1);
  const ArrayPtr job = make("kinetra.simmanager.mm.Job", {in});
  EXPECT_EQ(errorOf(tryCall(job, "createIntoSimulationRuns", {structs(2)})), invalid);
  EXPECT_EQ(errorOf(tryCall(job, "createIntoSimulationRuns", {kIdentity, kIdentity})), invalid);
  EXPECT_EQ(number(call(in, "size")), 2);
}

TEST_F(ConstructionTest, AStructIsHeldToWhatSettersRefuse) {
  const ArrayPtr in = model();
  EXPECT_EQ(errorOf(tryNew("kxsim.design.ValueSetParameter", {in, record({{"Values", 5}})})),
            "Kxsim:Design:ValuesMustBeCellArray");
  EXPECT_EQ(errorOf(tryNew("kxsim.design.Exhaustive", {in, record({{"NumIterations", 5}})})),
            "mf0:messages:CannotSetReadOnlyProperty");
  EXPECT_EQ(number(call(in, "size")), 0);
}

TEST_F(ConstructionTest, ColumnsAreHeldToWhatSettersRefuse) {
  const ArrayPtr in = model();
  const auto parameters = [&](const ArrayPtr& values) {
    return tryCall(in, "createElements",
                   {"kxsim.design.ValueSetParameter", record({{"Values", values}})});
  };
  const auto refused = parameters(cell({cell({1, 2}), cell({}), 5}));
  EXPECT_EQ(errorOf(refused), "Kxsim:Design:ValuesMustBeCellArray");
  EXPECT_NE(refused.error->item(1).text.find("place 2"), std::string::npos);
  EXPECT_EQ(number(call(in, "size")), 0);
  EXPECT_EQ(vexal::elementCount(valueOf(parameters(cell({cell({1, 2}), cell({})}))).get()), 2U);
}

TEST_F(ConstructionTest, AStructFillsReferencesCollectionsAndContents) {
  const ArrayPtr in = model();
  const ArrayPtr a = factor(in, "a", cell({1}));
  const ArrayPtr b = factor(in, "b", cell({1, 2}));
  const ArrayPtr space =
      make("kxsim.design.Sequential", {in, record({{"ParameterSpaces", cell({a, b})}})});
  EXPECT_EQ(number(call(get(space, "ParameterSpaces"), "size")), 2);

  const ArrayPtr figure = record({{"Id", "first"}, {"Type", "SurfPlot"}});
  const ArrayPtr view = make("kxsim.design.DesignView",
                             {in, record({{"Figures", cell({figure, record({{"Id", "2nd"}})})}})});
  const ArrayPtr figures = get(view, "Figures");
  ASSERT_EQ(number(call(figures, "size")), 2);
  EXPECT_EQ(text(get(call(figures, "at", {1}), "Id")), "2nd");
  EXPECT_EQ(number(call(get(call(figures, "at", {0}), "Type"), "getValue")), 2);

  const ArrayPtr command =
      make("kxsim.design.internal.command.SelectRuns", {in, record({{"RunIds", cell({3, 1, 2})}})});
  const ArrayPtr ids = call(get(command, "RunIds"), "toArray");
  EXPECT_EQ(
      std::vector<double>(vexal::doubleData(ids.get()).begin(), vexal::doubleData(ids.get()).end()),
      (std::vector<double>{3, 1, 2}));
}

}  // namespace
}  // namespace kxsim::testing
