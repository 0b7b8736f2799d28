#include "figures.h"

#include <string>

#include "framework/model_impl.h"
#include "results.h"

namespace motor_study {

using namespace kxsim::design;
using mf::zero::Model;
using mf::zero::toUtf16;
using mf::zero::toUtf8;

namespace {

std::u16string labelOf(const Quantity& quantity) {
  std::string label(quantity.name);
  if (!quantity.unit.empty()) label += " (" + std::string(quantity.unit) + ")";
  return toUtf16(label);
}

FigureDataSource::Builder sourceOf(const Quantity& quantity) {
  return FigureDataSource::Builder()
      .setType(quantity.source)
      .setValue(toUtf16(quantity.name))
      .setLabel(labelOf(quantity));
}

FigureDataSpec::Builder axis(std::string_view name,
                             DataProcessingType processing = DataProcessingType::End) {
  return FigureDataSpec::Builder().setId(toUtf16(name)).setProcessingType(processing);
}

ScatterPlotProperties createScatter(const Model& model) {
  const Quantity& x = quantity("settling");
  const Quantity& y = quantity("overshoot");
  const Quantity& color = quantity("cost");
  return ScatterPlotProperties::Builder(model)
      .setTitle(u"Overshoot against settling time")
      .setXData(axis(x.name))
      .addXDataSources(sourceOf(x))
      .setXLabel(labelOf(x))
      .setXGrid(true)
      .setYData(axis(y.name))
      .addYDataSources(sourceOf(y))
      .setYLabel(labelOf(y))
      .setYGrid(true)
      .setCData(axis(color.name))
      .addCDataSources(sourceOf(color))
      .setCLabel(labelOf(color))
      .setColorbar(true)
      .setDataSourcesFinalized(true)
      .create();
}

SurfPlotProperties createSurface(const Model& model) {
  const Quantity& x = quantity("Ki");
  const Quantity& y = quantity("Kp");
  const Quantity& z = quantity("cost");
  return SurfPlotProperties::Builder(model)
      .setTitle(u"Worst cost over the gains")
      .setXData(axis(x.name))
      .addXDataSources(sourceOf(x))
      .setXLabel(labelOf(x))
      .setYData(axis(y.name))
      .addYDataSources(sourceOf(y))
      .setYLabel(labelOf(y))
      .setZData(axis(z.name, DataProcessingType::Max))
      .addZDataSources(sourceOf(z))
      .setZLabel(u"worst cost")
      .setDataSourcesFinalized(true)
      .create();
}

Figure::Builder figure(std::u16string_view id, FigureType type,
                       const FigureProperties& properties) {
  return Figure::Builder()
      .setId(id)
      .setType(type)
      .setDocumentId(u"motor study")
      .setMetadata(toUtf16(properties.Uuid().toString()));
}

}  // namespace

DesignView createView(const Model& model) {
  DesignView::Builder view(model);
  for (const Quantity& quantity : quantities()) view.addDataSources(sourceOf(quantity));
  view.addFigures(figure(u"overshoot", FigureType::ScatterPlot, createScatter(model)));
  view.addFigures(figure(u"cost", FigureType::SurfPlot, createSurface(model)));
  return view.create();
}

FigureProperties propertiesOf(const Figure& figure) {
  const auto identity = mf::zero::uuid::parse(toUtf8(figure.metadata()));
  if (!identity) return {};
  return figure->getModel()->findElement(*identity).as<FigureProperties>();
}

}  // namespace motor_study
