// Which gains of a PI speed controller suit a DC motor whatever it drives? A study over gains,
// plants and random conditions: built in a model, simulated on several threads, ranked and
// reported.
#include <cstdio>
#include <exception>
#include <optional>
#include <vector>

#include "design/design.h"
#include "figures.h"
#include "files.h"
#include "framework/zero.h"
#include "host/vexal.h"
#include "job.h"
#include "options.h"
#include "package/module.h"
#include "plots.h"
#include "progress.h"
#include "report.h"
#include "study.h"

namespace motor_study {

namespace {

void run(const Options& options) {
  VXInitialize_kxsim_design();
  const auto model = mf::zero::Model::create();
  vexal::seed(options.seed);
  const auto study = buildStudy(model, options);
  std::vector<Setup> setups;
  for (const auto& iteration : study->createIterations()) setups.push_back(setupOf(iteration));

  if (!options.quiet) printTask(options, study.numIterations());
  const auto job = createJob(model, setups.size(), options.workers);
  std::optional<ProgressDisplay> display;
  if (!options.quiet) display.emplace(model, setups.size());
  const std::vector<Result> results = carryOut(job, setups);
  display.reset();

  const auto ranking = rankGains(results);
  if (!options.quiet) {
    printJob(job);
    printAnswer(ranking.front());
    drawFigures(createView(model), results);
    printGains(ranking, options.top);
    printRuns(model, results, options.top);
  }
  writeResults(options.output, results);
  if (!options.responses.empty()) writeResponses(options.responses, ranking.front(), results);
  if (!options.quiet) printFiles(options, results.size());
}

}  // namespace

}  // namespace motor_study

int main(int argc, char** argv) {
  try {
    motor_study::Options options;
    if (const auto exitCode = motor_study::readOptions(argc, argv, options)) return *exitCode;
    motor_study::checkWritable(options.output);
    if (!options.responses.empty()) motor_study::checkWritable(options.responses);
    motor_study::run(options);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "motor_study: %s\n", error.what());
    return 1;
  }
}
