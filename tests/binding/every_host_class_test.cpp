// Every host class of the package against a table kept by hand: what scripts see of it, whether
// they can make one, and that each property takes and gives what it declares.
#include <map>
#include <set>
#include <sstream>

#include "binding/binding_test.h"
#include "host/distribution.h"

namespace kxsim::testing {
namespace {

using vexal::script::Class;
using vexal::script::Member;
using vexal::script::MemberKind;

struct Row {
  std::string name;
  std::string superclass;
  bool isConstructible;
  /// Name and type of each, "!" before what is read-only. Types are those of kTypes, an
  /// enumeration or, with a "?", a class.
  std::string properties;
  std::string methods;
};

// The first values are what a property of that type is read as, the second what it is given.
const std::map<std::string, std::string> kTypes = {
    {"real", "double scalar"},
    {"bool", "logical scalar"},
    {"text", "VcosFactoryString scalar"},
    {"any", "any"},
    {"elements", "mf.zero.Set"},
    {"values", "mf.zero.PrimitiveSet"},
};

std::string axis(const std::string& letter) {
  std::string properties;
  for (const char* rest : {"Data FigureDataSpec?,", "DataSources !elements,", "Label text,",
                           "Min real,", "Max real,", "LimMode bool,"}) {
    properties += letter + rest;
  }
  return properties;
}

std::string fillers(const std::string& letters) {
  std::string methods;
  for (const char letter : letters) {
    const std::string create = std::string("createInto") + letter;
    methods += create + "Data," + create + "DataSources,";
  }
  return methods;
}

const std::string kRoot = "mf.zero.ModelElement";
const std::string kPlain = "PlotConfigId text";

std::vector<Row> rows() {
  const std::string mm = "kinetra.simmanager.mm.";
  const std::string d = "kxsim.design.";
  const std::string i = "kxsim.design.internal.";
  const std::string c = "kxsim.design.internal.command.";
  const std::string runs = "createIterations";
  const std::string colors = "ColorMap text,Colorbar bool";
  return {
      {mm + "Job", kRoot, true,
       "StartTime real,FinishTime real,NumWorkers real,SimulationRuns !elements",
       "createIntoSimulationRuns"},
      {mm + "SimulationRun", kRoot, true,
       "RunId real,State text,StatusString text,SimStatus text,Progress real,"
       "SimElapsedWallTime real,ETA real,Machine text",
       ""},
      {d + "ParameterType", kRoot, false, "", ""},
      {d + "BlockParameter", d + "ParameterType", true,
       "Name text,BlockPath text,ConvertValueToString bool", ""},
      {d + "ModelParameter", d + "ParameterType", true, "Name text", ""},
      {d + "Variable", d + "ParameterType", true, "Name text,Workspace text", ""},
      {d + "InitialState", d + "ParameterType", true, "SimState any", ""},
      {d + "ExternalInput", d + "ParameterType", true, "", ""},
      {d + "ParameterSpace", kRoot, false, "NumIterations !real", runs},
      {d + "CombinatorialParameterSpace", d + "ParameterSpace", false, "ParameterSpaces !elements",
       ""},
      {d + "Exhaustive", d + "CombinatorialParameterSpace", true, "", runs},
      {d + "Sequential", d + "CombinatorialParameterSpace", true, "", runs},
      {d + "StatisticalParameterSpace", d + "ParameterSpace", false,
       "Parameters !elements,NumSamples real", ""},
      {d + "RandomParameterSpace", d + "StatisticalParameterSpace", true, "", runs},
      {d + "ValueSetParameter", d + "ParameterSpace", true,
       "Values any,ParameterType ParameterType?", runs},
      {d + "RandomParameter", kRoot, true, "ParameterType ParameterType?,Distribution any", ""},
      {d + "Iteration", kRoot, true, "ParameterSamples !elements", ""},
      {d + "ParameterSample", kRoot, true, "ParameterType ParameterType?,Value any", ""},
      {d + "DesignView", kRoot, true, "Figures !elements,DataSources !elements",
       "createIntoFigures,createIntoDataSources"},
      {d + "Figure", kRoot, true, "Id text,DocumentId text,Metadata text,Type FigureType", ""},
      {d + "FigureProperties", kRoot, false, "Title text,DataSourcesFinalized bool", ""},
      {d + "ScatterPlotProperties", d + "FigureProperties", true,
       axis("X") + "XGrid bool," + axis("Y") + "YGrid bool," + axis("C") + colors, fillers("XYC")},
      {d + "SurfPlotProperties", d + "FigureProperties", true,
       axis("X") + "XGrid bool," + axis("Y") + "YGrid bool," + axis("Z") + "ZGrid bool," + colors,
       fillers("XYZ")},
      {d + "CustomPlotProperties", d + "FigureProperties", true, kPlain + ",PlotInput text", ""},
      {d + "FigureDataSource", kRoot, true, "type FigureDataSourceType,value text,label text", ""},
      {d + "FigureDataSpec", kRoot, true, "Id text,ProcessingType DataProcessingType", ""},
      {i + "PlotConfigRegistry", kRoot, true, "PlotConfigs !elements", "createIntoPlotConfigs"},
      {i + "PlotConfig", kRoot, true, "PlotClass text,GalleryIcon text,GalleryLabel text", ""},
      {c + "ChangeBooleanFigureProperty", kRoot, true, "name text,value bool", ""},
      {c + "ChangeDoubleFigureProperty", kRoot, true, "name text,value real", ""},
      {c + "ChangeStringFigureProperty", kRoot, true, "name text,value text", ""},
      {c + "CreateCustomPlot", kRoot, true, kPlain, ""},
      {c + "CreateFigure", kRoot, true, "FigureType FigureType", ""},
      {c + "DeleteFigure", kRoot, true, "FigureId text", ""},
      {c + "SelectRuns", kRoot, true, "RunIds !values,AppendToExistingSelection bool", ""},
      {c + "DeselectRuns", kRoot, true, "RunIds !values", ""},
  };
}

std::string dataType(const std::string& type) {
  if (const auto found = kTypes.find(type); found != kTypes.end()) return found->second;
  if (type.ends_with('?')) {
    return "kxsim.design." + type.substr(0, type.size() - 1) + " property";
  }
  return "kxsim.design." + type + " scalar";
}

struct Property {
  std::string name;
  std::string type;
  bool isWritable;
};

std::vector<std::string> parts(const std::string& list) {
  std::vector<std::string> found;
  std::istringstream stream(list);
  for (std::string part; std::getline(stream, part, ',');) found.push_back(part);
  return found;
}

std::vector<Property> propertiesOf(const Row& row) {
  std::vector<Property> properties;
  for (const std::string& part : parts(row.properties)) {
    const std::size_t blank = part.find(' ');
    const bool isReadOnly = part[blank + 1] == '!';
    properties.push_back(
        {part.substr(0, blank), part.substr(blank + 1 + (isReadOnly ? 1 : 0)), !isReadOnly});
  }
  return properties;
}

class EveryHostClassTest : public BindingTest {};

void expectMembers(const Row& row, const Class& found) {
  std::map<std::string, const Member*> own;
  for (const Member& member : found.members) {
    if (member.definedBy == row.name && member.kind != MemberKind::Constructor) {
      own[member.name] = &member;
    }
    EXPECT_FALSE(member.doc.empty()) << member.name;
  }
  for (const Property& property : propertiesOf(row)) {
    ASSERT_TRUE(own.contains(property.name)) << property.name;
    const Member& member = *own[property.name];
    EXPECT_EQ(member.kind, MemberKind::Property) << property.name;
    EXPECT_EQ(member.dataType, dataType(property.type)) << property.name;
    EXPECT_EQ(member.isWritable, property.isWritable) << property.name;
    own.erase(property.name);
  }
  for (const std::string& method : parts(row.methods)) {
    ASSERT_TRUE(own.contains(method)) << method;
    EXPECT_EQ(own[method]->arguments.size(), method == "createIterations" ? 0U : 2U) << method;
    own.erase(method);
  }
  for (const auto& [name, member] : own) ADD_FAILURE() << "not in the table: " << name;
}

TEST_F(EveryHostClassTest, TheyAreAllThereAndAsTheTableSays) {
  std::set<std::string> registered;
  for (const char* package : {"kinetra.simmanager.mm", "kxsim.design", "kxsim.design.internal",
                              "kxsim.design.internal.command"}) {
    for (const std::string& name : vexal::script::classes(package).value) registered.insert(name);
  }
  for (const Row& row : rows()) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(registered.erase(row.name), 1U);
    const auto found = vexal::script::describeClass(row.name);
    ASSERT_TRUE(found) << errorOf(found);
    EXPECT_EQ(found.value.superclasses.front(), row.superclass);
    EXPECT_EQ(found.value.superclasses.back(), kRoot);
    EXPECT_EQ(found.value.isConstructible, row.isConstructible);
    EXPECT_EQ(found.value.isAbstract, !row.isConstructible);
    EXPECT_FALSE(found.value.doc.empty());
    expectMembers(row, found.value);
    const auto meta = vexal::script::invokeStatic(row.name, "StaticMetaClass", {});
    ASSERT_TRUE(meta) << errorOf(meta);
    EXPECT_EQ(text(get(meta.value, "QualifiedName")), row.name);
    EXPECT_EQ(text(get(meta.value, "Documentation")), found.value.doc);
  }
  EXPECT_EQ(registered,
            (std::set<std::string>{"kxsim.design.FigureType", "kxsim.design.FigureDataSourceType",
                                   "kxsim.design.DataProcessingType"}));
}

// Something that a property of the type takes, and is read as.
ArrayPtr sampleOf(const std::string& type, const std::string& property, const ArrayPtr& in) {
  if (type == "real") return vexal::createDouble(2.5);
  if (type == "bool") return vexal::createLogical(true);
  if (type == "text") return vexal::createChar(u"gr\u00FCn");
  if (type == "ParameterType?") return make("kxsim.design.Variable", {in});
  if (type == "FigureDataSpec?") return make("kxsim.design.FigureDataSpec", {in});
  if (property == "SimState") return vexal::createObject(vexal::kModelSimStateClass);
  if (property == "Distribution") {
    return vexal::makeNormal(0, 1);
  }
  if (type == "any") return cell({1, "two"});
  return valueOf(
      vexal::script::enumMember("kxsim.design." + type, type == "FigureType"           ? "Histogram"
                                                        : type == "DataProcessingType" ? "Mean"
                                                                                       : "Output"));
}

TEST_F(EveryHostClassTest, EachIsMadeOrRefusedAndItsPropertiesKeepWhatTheyAreGiven) {
  const ArrayPtr in = model();
  for (const Row& row : rows()) {
    SCOPED_TRACE(row.name);
    const auto made = tryNew(row.name, {in});
    EXPECT_EQ(errorOf(made), row.isConstructible ? "" : "Vexal:class:AbstractClass");
    if (!made) continue;
    EXPECT_EQ(vexal::className(made.value.get()), row.name);
    for (const Property& property : propertiesOf(row)) {
      SCOPED_TRACE(property.name);
      if (!property.isWritable) {
        EXPECT_EQ(set(made.value, property.name, cell({})), "Vexal:class:ReadOnlyProperty");
        EXPECT_EQ(number(call(get(made.value, property.name), "size")), 0);
        continue;
      }
      const ArrayPtr sample = sampleOf(property.type, property.name, in);
      ASSERT_EQ(set(made.value, property.name, sample), "");
      EXPECT_TRUE(vexal::script::same(get(made.value, property.name).get(), sample.get()).value);
      if (property.type == "real" || property.type == "bool" || property.type == "text") {
        EXPECT_EQ(set(made.value, property.name, cell({1, 2})), "Vexal:class:CannotConvert");
        EXPECT_TRUE(vexal::script::same(get(made.value, property.name).get(), sample.get()).value);
      }
    }
  }
}

TEST_F(EveryHostClassTest, ContainmentsAreFilledByTheirOwners) {
  const ArrayPtr in = model();
  for (const Row& row : rows()) {
    if (!row.isConstructible) continue;
    const ArrayPtr owner = make(row.name, {in});
    for (const std::string& method : parts(row.methods)) {
      if (!method.starts_with("createInto")) continue;
      SCOPED_TRACE(row.name + '.' + method);
      const std::string property = method.substr(std::string("createInto").size());
      const bool isOne = property.ends_with("Data");
      const ArrayPtr before = isOne ? nullptr : get(owner, property);
      const ArrayPtr child = call(owner, method);
      EXPECT_EQ(identityOf(call(child, "owner")), identityOf(owner));
      const ArrayPtr held = isOne ? get(owner, property) : call(before, "at", {0});
      EXPECT_EQ(identityOf(held), identityOf(child));
      if (isOne) continue;
      EXPECT_EQ(identityOf(get(owner, property)), identityOf(before));
    }
  }
}

}  // namespace
}  // namespace kxsim::testing
