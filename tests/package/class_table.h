// All packages, classes and properties as they are to be registered. Kept by hand, so that
// a slip in a schema shows.
#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace kxsim::testing {

enum Sort { kOne, kOneOwned, kList, kOwnedList, kComputed };

struct PropertyRow {
  std::string name;
  int index;
  std::string type;  ///< simple name
  Sort sort = kOne;
  std::optional<std::string> defaultValue = std::nullopt;
  bool operator==(const PropertyRow&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const PropertyRow& row) {
  return out << row.name << ' ' << row.index << ' ' << row.type << ' ' << row.sort << ' '
             << row.defaultValue.value_or("(none)");
}

struct ClassRow {
  std::string name;
  bool isAbstract;
  std::string superclass;
  std::vector<PropertyRow> properties;
};

struct PackageRow {
  std::string path;
  std::string name;
  std::string parent;
  std::vector<ClassRow> classes;  ///< in the order of creation
};

inline constexpr bool kConcrete = false;
inline constexpr bool kAbstractClass = true;

// The seven properties of one axis of a plot, or six where there is no grid.
inline void addAxis(std::vector<PropertyRow>& rows, char letter, bool hasGrid) {
  const std::string axis(1, letter);
  const int first = static_cast<int>(rows.size()) + 3;
  rows.push_back({axis + "Data", first, "FigureDataSpec", kOneOwned});
  rows.push_back({axis + "DataSources", first + 1, "FigureDataSource", kOwnedList});
  rows.push_back({axis + "Label", first + 2, "String"});
  rows.push_back({axis + "Min", first + 3, "Real"});
  rows.push_back({axis + "Max", first + 4, "Real"});
  rows.push_back({axis + "LimMode", first + 5, "Boolean", kOne, "true"});
  if (hasGrid) rows.push_back({axis + "Grid", first + 6, "Boolean"});
}

inline std::vector<PropertyRow> plotProperties(char thirdAxis, bool thirdHasGrid) {
  std::vector<PropertyRow> rows;
  addAxis(rows, 'X', true);
  addAxis(rows, 'Y', true);
  addAxis(rows, thirdAxis, thirdHasGrid);
  const int next = static_cast<int>(rows.size()) + 3;
  rows.push_back({"ColorMap", next, "String", kOne, "parula"});
  rows.push_back({"Colorbar", next + 1, "Boolean", kOne, "false"});
  return rows;
}

inline std::vector<ClassRow> jobClasses() {
  return {
      {"Job",
       kConcrete,
       "ModelElement",
       {{"StartTime", 1, "Real"},
        {"FinishTime", 2, "Real"},
        {"NumWorkers", 3, "Real"},
        {"SimulationRuns", 4, "SimulationRun", kOwnedList}}},
      {"SimulationRun",
       kConcrete,
       "ModelElement",
       {{"RunId", 1, "Real"},
        {"State", 2, "String"},
        {"StatusString", 3, "String"},
        {"SimStatus", 4, "String"},
        {"Progress", 5, "Real"},
        {"SimElapsedWallTime", 6, "Real"},
        {"ETA", 7, "Real"},
        {"Machine", 8, "String"}}},
  };
}

inline std::vector<ClassRow> designClasses() {
  return {
      {"BlockParameter",
       kConcrete,
       "ParameterType",
       {{"Name", 1, "String"},
        {"BlockPath", 2, "String"},
        {"ConvertValueToString", 3, "Boolean", kOne, "true"}}},
      {"CombinatorialParameterSpace",
       kAbstractClass,
       "ParameterSpace",
       {{"ParameterSpaces", 1, "ParameterSpace", kList}}},
      {"CustomPlotProperties",
       kConcrete,
       "FigureProperties",
       {{"PlotConfigId", 3, "String"}, {"PlotInput", 4, "String"}}},
      {"DesignView",
       kConcrete,
       "ModelElement",
       {{"Figures", 1, "Figure", kOwnedList}, {"DataSources", 2, "FigureDataSource", kOwnedList}}},
      {"Exhaustive", kConcrete, "CombinatorialParameterSpace", {}},
      {"ExternalInput", kConcrete, "ParameterType", {}},
      {"Figure",
       kConcrete,
       "ModelElement",
       {{"Id", 1, "String"},
        {"DocumentId", 2, "String"},
        {"Metadata", 3, "String"},
        {"Type", 4, "FigureType", kOne, "ScatterPlot"}}},
      {"FigureDataSource",
       kConcrete,
       "ModelElement",
       {{"type", 1, "FigureDataSourceType", kOne, "Default"},
        {"value", 2, "String"},
        {"label", 3, "String"}}},
      {"FigureDataSpec",
       kConcrete,
       "ModelElement",
       {{"Id", 1, "String"}, {"ProcessingType", 2, "DataProcessingType", kOne, "End"}}},
      {"FigureProperties",
       kAbstractClass,
       "ModelElement",
       {{"Title", 1, "String"}, {"DataSourcesFinalized", 2, "Boolean", kOne, "false"}}},
      {"InitialState", kConcrete, "ParameterType", {{"SimState", 1, "VxArray"}}},
      {"Iteration", kConcrete, "ModelElement", {{"ParameterSamples", 1, "ParameterSample", kList}}},
      {"ModelParameter", kConcrete, "ParameterType", {{"Name", 1, "String"}}},
      {"ParameterSample",
       kConcrete,
       "ModelElement",
       {{"ParameterType", 1, "ParameterType"}, {"Value", 2, "VxArray"}}},
      {"ParameterSpace", kAbstractClass, "ModelElement", {{"NumIterations", 0, "Real", kComputed}}},
      {"ParameterType", kAbstractClass, "ModelElement", {}},
      {"RandomParameter",
       kConcrete,
       "ModelElement",
       {{"ParameterType", 1, "ParameterType"}, {"Distribution", 2, "VxArray"}}},
      {"RandomParameterSpace", kConcrete, "StatisticalParameterSpace", {}},
      {"ScatterPlotProperties", kConcrete, "FigureProperties", plotProperties('C', false)},
      {"Sequential", kConcrete, "CombinatorialParameterSpace", {}},
      {"StatisticalParameterSpace",
       kAbstractClass,
       "ParameterSpace",
       {{"Parameters", 1, "RandomParameter", kList}, {"NumSamples", 2, "Real"}}},
      {"SurfPlotProperties", kConcrete, "FigureProperties", plotProperties('Z', true)},
      {"ValueSetParameter",
       kConcrete,
       "ParameterSpace",
       {{"Values", 1, "VxArray"}, {"ParameterType", 2, "ParameterType"}}},
      {"Variable", kConcrete, "ParameterType", {{"Name", 1, "String"}, {"Workspace", 2, "String"}}},
  };
}

inline std::vector<ClassRow> internalClasses() {
  return {
      {"PlotConfig",
       kConcrete,
       "ModelElement",
       {{"PlotClass", 1, "String"}, {"GalleryIcon", 2, "String"}, {"GalleryLabel", 3, "String"}}},
      {"PlotConfigRegistry",
       kConcrete,
       "ModelElement",
       {{"PlotConfigs", 1, "PlotConfig", kOwnedList}}},
  };
}

inline std::vector<ClassRow> commandClasses() {
  const auto change = [](const char* name, const char* type) -> ClassRow {
    return {name, kConcrete, "ModelElement", {{"name", 1, "String"}, {"value", 2, type}}};
  };
  return {
      change("ChangeBooleanFigureProperty", "Boolean"),
      change("ChangeDoubleFigureProperty", "Real"),
      change("ChangeStringFigureProperty", "String"),
      {"CreateCustomPlot", kConcrete, "ModelElement", {{"PlotConfigId", 1, "String"}}},
      {"CreateFigure",
       kConcrete,
       "ModelElement",
       {{"FigureType", 1, "FigureType", kOne, "ScatterPlot"}}},
      {"DeleteFigure", kConcrete, "ModelElement", {{"FigureId", 1, "String"}}},
      {"DeselectRuns", kConcrete, "ModelElement", {{"RunIds", 1, "Real", kList}}},
      {"SelectRuns",
       kConcrete,
       "ModelElement",
       {{"RunIds", 1, "Real", kList}, {"AppendToExistingSelection", 2, "Boolean"}}},
  };
}

inline std::vector<PackageRow> packages() {
  return {
      {"kinetra", "kinetra", "", {}},
      {"kinetra.simmanager", "simmanager", "kinetra", {}},
      {"kinetra.simmanager.mm", "mm", "kinetra.simmanager", jobClasses()},
      {"kxsim", "kxsim", "", {}},
      {"kxsim.design", "design", "kxsim", designClasses()},
      {"kxsim.design.internal", "internal", "kxsim.design", internalClasses()},
      {"kxsim.design.internal.command", "command", "kxsim.design.internal", commandClasses()},
  };
}

}  // namespace kxsim::testing
