// What a user writes after installing: only installed headers, only imported targets. Runs a
// study of two parameters, keeps its runs in a job and looks at what comes back, errors included.
#include <cstdio>
#include <initializer_list>
#include <string>

#include "design/design.h"
#include "design/figures/figures.h"
#include "design/internal/command/command.h"
#include "design/internal/internal.h"
#include "framework/zero.h"
#include "host/vexal.h"
#include "package/module.h"
#include "simmanager/mm/mm.h"

namespace design = kxsim::design;
namespace mm = kinetra::simmanager::mm;
using mf::zero::Model;

namespace {

bool allGood = true;

void expect(bool condition, const char* what) {
  if (condition) return;
  std::printf("wrong: %s\n", what);
  allGood = false;
}

design::ValueSetParameter vary(const Model& model, const char16_t* name,
                               std::initializer_list<double> values) {
  const vexal::ArrayPtr cells = vexal::createCell(1, values.size());
  for (std::size_t k = 0; k < values.size(); ++k) {
    vexal::setCell(cells.get(), k, vexal::createDouble(values.begin()[k]).get());
  }
  const auto target = design::Variable::Builder(model).setName(name).create();
  const auto parameter = design::ValueSetParameter::create(model);
  parameter->setParameterType(target);
  parameter->setValues(cells.get());
  return parameter;
}

std::string describe(const design::Iteration& run) {
  std::string text;
  for (const design::ParameterSample& sample : run.parameterSamples()) {
    const auto target = sample.parameterType().as<design::Variable>();
    const double value = vexal::doubleData(sample.value())[0];
    text += (text.empty() ? "" : ", ") + mf::zero::toUtf8(target.name()) + " = " +
            vexal::formatNumber(value);
  }
  return text;
}

void runStudy(const Model& model) {
  const auto study = design::Exhaustive::Builder(model)
                         .addParameterSpaces(vary(model, u"gain", {0.5, 1, 2}))
                         .addParameterSpaces(vary(model, u"delay", {10, 20}))
                         .create();
  expect(study.numIterations() == 6, "three values times two");
  const auto job = mm::Job::create(model);
  std::string last;
  for (const design::Iteration& run : study->createIterations()) {
    last = describe(run);
    const double id = static_cast<double>(job.simulationRuns().size()) + 1;
    job->createIntoSimulationRuns(mm::SimulationRun::Builder().setRunId(id).setState(u"queued"));
    std::printf("run %g: %s\n", id, last.c_str());
  }
  expect(job.simulationRuns().size() == 6, "one run of the job for each iteration");
  expect(last == "gain = 2, delay = 20", "the last combination comes last");

  const auto view = design::DesignView::create(model);
  view->createIntoFigures(design::Figure::Builder().setType(design::FigureType::SurfPlot));
  expect(view->getMetaClass().qualifiedName() == "kxsim.design.DesignView", "the registered name");
  expect(view.figures()[0].type() == design::FigureType::SurfPlot, "the type of the figure");
}

// An error is caught by its type although another library throws it.
void provokeErrors(const Model& model) {
  using mf0::messages::CannotAddNonExistentObject;
  const auto parameter = design::ValueSetParameter::create(model);
  try {
    parameter->setValues(vexal::createDouble(1).get());
    expect(false, "a number is no set of values");
  } catch (const vexal::HostError& error) {
    std::printf("%s: %s\n", error.identifier().c_str(), error.what());
    expect(error.key() == "ValuesMustBeCellArray", "the key of the host's error");
  }
  try {
    design::Iteration::create(model)->getParameterSamplesMutable().add({});
    expect(false, "there is nothing to add");
  } catch (const foundation::core::except::Exception<CannotAddNonExistentObject, std::exception>&
               error) {
    std::printf("%s: %s\n", error.GetID().c_str(), error.what());
  }
}

}  // namespace

int main() {
  std::printf("host %s\n", std::string(vexal::version()).c_str());
  VXInitialize_kxsim_design();
  {
    const Model model = Model::create();
    runStudy(model);
    provokeErrors(model);
  }
  const vexal::ArrayCounts counts = vexal::arrayCounts();
  expect(counts.live == 0 && counts.livePropertyCopies == 0, "every array is released");
  return allGood ? 0 : 1;
}
