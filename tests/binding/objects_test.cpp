// Host objects and the elements they stand for: identity, read-only properties, destroyed elements,
// enumerations.
#include "binding/binding_test.h"
#include "framework/element.h"
#include "framework/mi/host_objects.h"
#include "host/runtime.h"
#include "host/vcos/type_repository.h"

namespace kxsim::testing {
namespace {

constexpr const char* kInvalidHandle = "Vexal:class:InvalidHandle";

class HostObjectTest : public BindingTest {};

TEST_F(HostObjectTest, AnElementAndACollectionHaveOneObjectEach) {
  const ArrayPtr in = model();
  const ArrayPtr view = make("kxsim.design.DesignView", {in});
  const ArrayPtr figures = get(view, "Figures");
  EXPECT_EQ(vexal::className(figures.get()), "mf.zero.Sequence");
  const ArrayPtr figure = call(view, "createIntoFigures", {record({{"Id", "1"}})});
  EXPECT_EQ(number(call(figures, "size")), 1) << "an object from before sees what is added";
  EXPECT_EQ(identityOf(get(view, "Figures")), identityOf(figures));
  EXPECT_NE(identityOf(get(view, "DataSources")), identityOf(figures));
  EXPECT_EQ(identityOf(call(figures, "at", {0})), identityOf(figure));
  EXPECT_EQ(identityOf(call(figure, "owner")), identityOf(view));
  EXPECT_EQ(identityOf(call(figure, "model")), identityOf(in));
  EXPECT_EQ(identityOf(call(in, "roots")), identityOf(view));
}

TEST_F(HostObjectTest, ObjectsKeepElementsAndModelsAndLetThemGo) {
  ArrayPtr figures;
  {
    const ArrayPtr view = make("kxsim.design.DesignView", {model()});
    figures = get(view, "Figures");
  }
  EXPECT_EQ(number(call(figures, "size")), 0) << "the collection's object is all that is left";
  const auto owner = vcos::factory::impl::nativeOf(figures.get(), mf::zero::mi::kCollections);
  const mf::zero::ModelElement held(static_cast<mf::zero::ElementImpl*>(owner.object));
  figures.reset();
  EXPECT_TRUE(held.isValid());
}

TEST_F(HostObjectTest, EveryUseOfADestroyedElementIsRefused) {
  const ArrayPtr in = model();
  const ArrayPtr view = make("kxsim.design.DesignView", {in});
  const ArrayPtr figure = call(view, "createIntoFigures");
  const ArrayPtr figures = get(view, "Figures");
  const ArrayPtr sample = make("kxsim.design.ParameterSample", {in});
  const ArrayPtr variable = make("kxsim.design.Variable", {in});
  const auto isValid = [](const ArrayPtr& object) {
    const vxArray* const inputs[] = {object.get()};
    return truth(valueOf(vexal::script::invokeStatic("mf.zero.ModelElement", "isValid", inputs)));
  };
  EXPECT_TRUE(isValid(figure));
  call(view, "destroy");
  call(variable, "destroy");
  EXPECT_FALSE(isValid(figure));
  EXPECT_EQ(number(call(in, "size")), 1);
  EXPECT_EQ(errorOf(tryCall(view, "destroy")), kInvalidHandle);
  EXPECT_EQ(errorOf(tryCall(view, "createIntoFigures")), kInvalidHandle);
  EXPECT_EQ(errorOf(tryCall(figure, "identity")), kInvalidHandle);
  EXPECT_EQ(errorOf(vexal::script::get(figure.get(), "Id")), kInvalidHandle);
  EXPECT_EQ(set(figure, "Id", "1"), kInvalidHandle);
  EXPECT_EQ(errorOf(tryCall(figures, "size")), kInvalidHandle);
  EXPECT_EQ(set(sample, "ParameterType", variable), kInvalidHandle);
  EXPECT_EQ(errorOf(vexal::script::get(view.get(), "Figures")), kInvalidHandle);
}

TEST_F(HostObjectTest, ReferencesAreSetAndClearedAndKeptToTheirClass) {
  const ArrayPtr in = model();
  const ArrayPtr sample = make("kxsim.design.ParameterSample", {in});
  const ArrayPtr variable = make("kxsim.design.Variable", {in});
  EXPECT_EQ(vexal::className(get(sample, "ParameterType").get()), "kxsim.design.ParameterType");
  EXPECT_EQ(set(sample, "ParameterType", variable), "");
  EXPECT_EQ(identityOf(get(sample, "ParameterType")), identityOf(variable));
  EXPECT_EQ(set(sample, "ParameterType", sample), "Vexal:class:CannotConvert");
  const ArrayPtr elsewhere = make("kxsim.design.Variable", {model()});
  EXPECT_EQ(set(sample, "ParameterType", elsewhere),
            "mf0:messages:CannotCreateCrossModelAssociation");
  EXPECT_EQ(identityOf(get(sample, "ParameterType")), identityOf(variable));
  EXPECT_EQ(set(sample, "ParameterType", vexal::createDoubleMatrix(0, 0)), "");
  EXPECT_TRUE(vexal::isEmpty(get(sample, "ParameterType").get()));
}

TEST_F(HostObjectTest, WhatAHookRefusesReachesTheScriptAsItIs) {
  const ArrayPtr in = model();
  const ArrayPtr parameter = factor(in, "gain", cell({1}));
  const auto refused = vexal::script::set(parameter.get(), "Values", Argument(5).get());
  EXPECT_EQ(errorOf(refused), "Kxsim:Design:ValuesMustBeCellArray");
  EXPECT_EQ(vexal::elementCount(get(parameter, "Values").get()), 1U);
  const auto empty = tryCall(make("kxsim.design.Exhaustive", {in}), "createIterations");
  ASSERT_TRUE(empty) << errorOf(empty);
  EXPECT_EQ(vexal::className(empty.value.get()), "kxsim.design.Iteration");
}

TEST_F(HostObjectTest, ASpaceWithoutRunsGivesAnEmptyArrayOfIterations) {
  const ArrayPtr in = model();
  const ArrayPtr runs = call(factor(in, "gain", vexal::createCell(0, 0)), "createIterations");
  EXPECT_EQ(vexal::className(runs.get()), "kxsim.design.Iteration");
  EXPECT_EQ(vexal::elementCount(runs.get()), 0U);
}

// Enumerations ------------------------------------------------------------------------------------

class HostEnumTest : public BindingTest {
 protected:
  static constexpr const char* kType = "kxsim.design.FigureType";
  ArrayPtr in = model();
  ArrayPtr figure = make("kxsim.design.Figure", {in});

  int stored() { return static_cast<int>(number(call(get(figure, "Type"), "getValue"))); }
};

TEST_F(HostEnumTest, MembersHaveTheirIntegersAndLiterals) {
  const std::pair<const char*, std::vector<std::string>> enums[] = {
      {kType, {"ScatterPlot", "SurfPlot", "Histogram", "CustomPlot"}},
      {"kxsim.design.FigureDataSourceType", {"Default", "Parameter", "Output"}},
      {"kxsim.design.DataProcessingType", {"End", "Min", "Max", "Mean", "Trace"}},
  };
  for (const auto& [name, literals] : enums) {
    const auto found = vexal::script::describeClass(name);
    ASSERT_TRUE(found) << errorOf(found);
    ASSERT_EQ(found.value.enumMembers.size(), literals.size());
    for (std::size_t k = 0; k < literals.size(); ++k) {
      const int value = static_cast<int>(k) + 1;
      EXPECT_EQ(found.value.enumMembers[k].name, literals[k]);
      EXPECT_EQ(found.value.enumMembers[k].value, value);
      EXPECT_FALSE(found.value.enumMembers[k].doc.empty());
      for (const ArrayPtr& member : {make(name, {value}), make(name, {literals[k]}),
                                     valueOf(vexal::script::enumMember(name, literals[k]))}) {
        EXPECT_EQ(vexal::className(member.get()), name);
        EXPECT_EQ(number(call(member, "getValue")), value);
        EXPECT_TRUE(vexal::isClass(call(member, "getValue").get(), vexal::ClassId::Int32));
        EXPECT_EQ(text(call(member, "getLiteral")), literals[k]);
        EXPECT_EQ(text(call(member, "getPublicIdentifier")), literals[k]);
      }
    }
    EXPECT_EQ(number(call(make(name, {0}), "getValue")), 0) << "what holds none answers";
    EXPECT_EQ(errorOf(tryNew(name, {99})), "mf0:messages:NoSuchLiteral");
    EXPECT_EQ(errorOf(tryNew(name, {""})), "mf0:messages:NoSuchLiteral");
    EXPECT_EQ(errorOf(tryNew(name, {"Pie"})), "mf0:messages:NoSuchLiteral");
  }
}

TEST_F(HostEnumTest, MembersAndLiteralsAreStoredAndWhatIsEmptyBecomesNoLiteral) {
  EXPECT_EQ(set(figure, "Type", "Histogram"), "");
  EXPECT_EQ(stored(), 3);
  EXPECT_EQ(set(figure, "Type", make(kType, {"SurfPlot"})), "");
  EXPECT_EQ(stored(), 2);
  EXPECT_EQ(set(figure, "Type", get(figure, "Type")), "");
  EXPECT_EQ(set(figure, "Type", "Pie"), "mf0:messages:NoSuchLiteral");
  EXPECT_EQ(set(figure, "Type", 3), "mf0:messages:NoSuchLiteral");
  EXPECT_EQ(set(figure, "Type", make("kxsim.design.DataProcessingType", {"End"})),
            "mf0:messages:NoSuchLiteral");
  EXPECT_EQ(stored(), 2);
  for (const ArrayPtr& nothing : {vexal::createDoubleMatrix(0, 0), vexal::createChar("")}) {
    EXPECT_EQ(set(figure, "Type", "Histogram"), "");
    EXPECT_EQ(set(figure, "Type", nothing), "");
    EXPECT_EQ(stored(), 0);
    EXPECT_EQ(text(call(get(figure, "Type"), "getLiteral")), "");
  }
}

TEST_F(HostEnumTest, RegisteringAgainReplacesTheConversions) {
  for (const char* shape : {"", " property", " scalar"}) {
    EXPECT_NE(vcos::COSTypeRepository::getConversion("any", std::string(kType) + shape), nullptr);
  }
  vcos::COSTypeRepository::removeConversion("any", std::string(kType) + " scalar");
  EXPECT_EQ(set(figure, "Type", "Histogram"), "Vexal:class:CannotConvert");
  omSetVcosUsingUSM(true);
  VXInitialize_kxsim_design();
  omSetVcosUsingUSM(false);
  EXPECT_EQ(set(figure, "Type", "Histogram"), "");
  EXPECT_EQ(stored(), 3);
}

}  // namespace
}  // namespace kxsim::testing
