// The figures of a study, their look, the gallery of plot kinds, and the records that ask
// for changes of them.
#include "design/figures/figures.h"

#include <array>
#include <limits>

#include "design/internal/command/command.h"
#include "design/internal/internal.h"
#include "framework/messages.h"
#include "package/package_test.h"
#include "support/framework_errors.h"

namespace kxsim::design {
namespace {

namespace messages = mf0::messages;
using internal::PlotConfig;
using internal::PlotConfigRegistry;
using internal::command::CreateFigure;
using internal::command::DeselectRuns;
using internal::command::SelectRuns;
using mf::zero::testing::expectRaises;
using testing::ChangeLog;
using testing::Lines;

// Of the C++ values; the registration's tests hold all numbers.
static_assert(int(FigureType::ScatterPlot) == 1 && int(FigureDataSourceType::Default) == 1);
static_assert(int(DataProcessingType::Trace) == 5);

class FiguresTest : public testing::PackageTest {
 protected:
  template <class Sequence>
  static std::u16string ids(const Sequence& elements) {
    std::u16string text;
    for (const auto& element : elements) text += element.id();
    return text;
  }
  template <class Sequence>
  static std::u16string labels(const Sequence& sources) {
    std::u16string text;
    for (const auto& source : sources) text += source.label();
    return text;
  }
  static std::vector<double> numbers(const mf::zero::PrimitiveSequence<double>& sequence) {
    return sequence.toContainer();
  }
};

// Views ----------------------------------------------------------------------------------

TEST_F(FiguresTest, AViewIsBuiltWithItsFiguresAndSourcesInOrder) {
  DesignView::Builder builder(model());
  builder.addFigures(Figure::Builder().setId(u"a").setType(FigureType::SurfPlot))
      .addDataSources(FigureDataSource::Builder().setLabel(u"x"))
      .addFigures(Figure::Builder().setId(u"b"))
      .addDataSources(FigureDataSource::Builder().setLabel(u"y"));
  const DesignView view = builder.create();
  EXPECT_EQ(ids(view.figures()), u"ab");
  EXPECT_EQ(labels(DesignView::dataSources(view)), u"xy");
  EXPECT_EQ(view.figures()[0].type(), FigureType::SurfPlot);
  EXPECT_EQ(view.figures()[1].type(), FigureType::ScatterPlot);
  EXPECT_EQ(view.figures()[1]->getOwner(), view);
  builder.values().doClearFigures();
  const DesignView second = builder.create();
  EXPECT_FALSE(second->hasFigures());
  EXPECT_EQ(labels(second.dataSources()), u"xy");
}

TEST_F(FiguresTest, FiguresAreCreatedIntoAViewAndTakenOutOfIt) {
  const DesignView view = DesignView::create(model());
  const auto identity = mf::zero::generateNewUuid();
  view->createIntoFigures(Figure::Builder().setId(u"a"), identity);
  const Figure second = view->createIntoFigures(Figure::Builder().setId(u"b"));
  view->createIntoDataSources(FigureDataSource::Builder().setLabel(u"x"));
  EXPECT_EQ(view.figures()[0].Uuid(), identity);
  EXPECT_EQ(ids(view.figures()), u"ab");
  view->getFiguresMutable().remove(second);
  EXPECT_EQ(ids(view.figures()), u"a");
  EXPECT_TRUE(second.isValid());  // on its own now
  EXPECT_FALSE(second->getOwner());
}

// Plots ----------------------------------------------------------------------------------

TEST_F(FiguresTest, APlotHasAsManyPropertiesAsItsAxesGiveIt) {
  const auto last = [](const mf::zero::ModelElement& element, int index) {
    EXPECT_FALSE(element->getPropertyByIndex(index + 1));
    return element->getPropertyByIndex(index).name();
  };
  EXPECT_EQ(last(ScatterPlotProperties::create(model()), 24), u"Colorbar");
  EXPECT_EQ(last(SurfPlotProperties::create(model()), 25), u"Colorbar");
  EXPECT_EQ(last(CustomPlotProperties::create(model()), 4), u"PlotInput");
}

TEST_F(FiguresTest, TheAxesOfAPlotDoNotShareTheirValues) {
  const auto plot = ScatterPlotProperties::create(model());
  plot->setXLabel(u"x");
  plot->setYLabel(u"y");
  plot->setCLabel(u"c");
  plot->setXMin(1);
  plot->setXMax(2);
  plot->setYMin(3);
  plot->setYMax(4);
  plot->setCMin(5);
  plot->setCMax(6);
  EXPECT_EQ(plot.xLabel() + plot.yLabel() + plot.cLabel(), u"xyc");
  const std::array limits{plot.xMin(), plot.xMax(), plot.yMin(),
                          plot.yMax(), plot.cMin(), plot.cMax()};
  EXPECT_EQ(limits, (std::array{1.0, 2.0, 3.0, 4.0, 5.0, 6.0}));
  plot->setYLimMode(false);
  EXPECT_TRUE(plot.xLimMode() && !plot.yLimMode() && plot.cLimMode());
  plot->setXGrid(true);
  EXPECT_TRUE(plot.xGrid() && !plot.yGrid());
  plot->setColorMap(u"gray");
  plot->setColorbar(true);
  plot->setTitle(u"t");
  plot->setDataSourcesFinalized(true);
  EXPECT_EQ(plot.colorMap() + plot.title(), u"grayt");
  EXPECT_TRUE(plot.colorbar() && plot.dataSourcesFinalized());
}

TEST_F(FiguresTest, ABuilderAnswersDefaultsUntilItIsToldOtherwise) {
  ScatterPlotProperties::Builder builder(model());
  const auto& values = builder.values();
  EXPECT_EQ(values.getXMin(), 0.0);
  EXPECT_TRUE(values.getXLimMode() && values.getYLimMode() && values.getCLimMode());
  EXPECT_FALSE(values.getXGrid() || values.getColorbar() || values.getDataSourcesFinalized());
  EXPECT_EQ(values.getColorMap(), u"parula");
  EXPECT_EQ(values.getTitle(), u"");
  builder.setXLimMode(false).setColorMap(u"").setTitle(u"t");
  EXPECT_EQ(values.getColorMap(), u"");
  const auto plot = builder.create();
  EXPECT_FALSE(plot.xLimMode());
  EXPECT_TRUE(plot.yLimMode());
  EXPECT_EQ(plot.colorMap(), u"");
  EXPECT_EQ(plot.title(), u"t");
  EXPECT_EQ(FigureDataSpec::Builder().values().getProcessingType(), DataProcessingType::End);
}

TEST_F(FiguresTest, TheDataOfAnAxisIsOneAndASecondTakesItsPlace) {
  const auto plot = ScatterPlotProperties::create(model());
  EXPECT_FALSE(plot.xData());
  const FigureDataSpec first = plot->createIntoXData(FigureDataSpec::Builder().setId(u"1"));
  EXPECT_EQ(plot.xData(), first);
  const FigureDataSpec second = plot->createIntoXData(FigureDataSpec::Builder().setId(u"2"));
  EXPECT_EQ(plot.xData(), second);
  EXPECT_EQ(second->getOwner(), plot);
  EXPECT_FALSE(first->getOwner());  // alive, and on its own
  plot->setXData(first);
  EXPECT_EQ(plot.xData(), first);
  EXPECT_FALSE(second->getOwner());
  plot->setXData({});
  EXPECT_FALSE(plot->hasXData());
  EXPECT_TRUE(first.isValid());
}

TEST_F(FiguresTest, DataThatMovesToAnotherAxisLeavesTheFirst) {
  const auto plot = SurfPlotProperties::create(model());
  const auto spec = plot->createIntoXData(FigureDataSpec::Builder());
  plot->setZData(spec);
  EXPECT_FALSE(plot.xData());
  EXPECT_EQ(plot.zData(), spec);
  const auto other = ScatterPlotProperties::create(model());
  other->setCData(spec);
  EXPECT_FALSE(plot.zData());
  other->destroy();
  EXPECT_FALSE(spec.isValid());
}

TEST_F(FiguresTest, APlotIsBuiltWithItsDataAndSources) {
  SurfPlotProperties::Builder builder(model());
  builder.setXData(FigureDataSpec::Builder().setId(u"old"))
      .setXData(FigureDataSpec::Builder().setId(u"new"))
      .addZDataSources(FigureDataSource::Builder().setLabel(u"a"))
      .addZDataSources(FigureDataSource::Builder().setLabel(u"b"))
      .addYDataSources(FigureDataSource::Builder().setLabel(u"c"));
  const auto plot = builder.create();
  EXPECT_EQ(plot.xData().id(), u"new");
  EXPECT_EQ(labels(plot.zDataSources()), u"ab");
  EXPECT_EQ(labels(plot.yDataSources()), u"c");
  EXPECT_FALSE(plot->hasXDataSources() || plot->hasYData() || plot->hasZData());
  builder.values().doClearZDataSources();
  EXPECT_FALSE(builder.create()->hasZDataSources());
}

// The gallery ----------------------------------------------------------------------------

TEST_F(FiguresTest, ARegistryKeepsItsEntriesInOrderAndTwiceTheSame) {
  PlotConfigRegistry::Builder builder(model());
  for (const char16_t* plotClass : {u"b", u"a", u"b"}) {
    builder.addPlotConfigs(PlotConfig::Builder().setPlotClass(plotClass));
  }
  const PlotConfigRegistry registry = builder.create();
  const auto entry = registry->createIntoPlotConfigs(
      PlotConfig::Builder().setPlotClass(u"c").setGalleryIcon(u"i").setGalleryLabel(u"l"));
  std::u16string classes;
  for (const PlotConfig& config : registry.plotConfigs()) classes += config.plotClass();
  EXPECT_EQ(classes, u"babc");
  EXPECT_EQ(entry.galleryIcon() + entry.galleryLabel(), u"il");
  registry->destroy();
  EXPECT_EQ(model()->size(), 0U);
}

// Records --------------------------------------------------------------------------------

TEST_F(FiguresTest, ASelectionKeepsTheOrderOfItsRunsAndTheirRepetitions) {
  SelectRuns::Builder builder(model());
  EXPECT_FALSE(builder.create()->hasRunIds());
  builder.addRunIds(3).addRunIds(std::array{1.0, 3.0}).setAppendToExistingSelection(true);
  const SelectRuns selection = builder.create();
  EXPECT_EQ(numbers(selection.runIds()), (std::vector<double>{3, 1, 3}));
  EXPECT_TRUE(selection.appendToExistingSelection());
  builder.values().doClearRunIds();
  EXPECT_FALSE(builder.create()->hasRunIds());
}

TEST_F(FiguresTest, RequestsCarryWhatTheyAreGivenUnchecked) {
  using namespace internal::command;
  EXPECT_EQ(CreateFigure::Builder(model()).create().figureType(), FigureType::ScatterPlot);
  const auto create = CreateFigure::Builder(model()).setFigureType(FigureType::Histogram).create();
  EXPECT_EQ(create.figureType(), FigureType::Histogram);
  EXPECT_EQ(CreateCustomPlot::Builder(model()).setPlotConfigId(u"p").create().plotConfigId(), u"p");
  EXPECT_EQ(DeleteFigure::Builder(model()).setFigureId(u"f").create().figureId(), u"f");
  const auto flag = ChangeBooleanFigureProperty::Builder(model()).setName(u"n").setValue(true);
  EXPECT_TRUE(flag.create().value());
  const auto number = ChangeDoubleFigureProperty::Builder(model()).setName(u"XMin").setValue(2);
  EXPECT_EQ(number.create().value(), 2.0);
  const auto text = ChangeStringFigureProperty::create(model());
  text->setName(u"no such property");
  text->setValue(u"v");
  EXPECT_EQ(text.name() + text.value(), u"no such propertyv");
}

}  // namespace
}  // namespace kxsim::design
