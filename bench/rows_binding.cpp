// What scripts pay for elements: by name, beside the same through native handles.
#include <array>
#include <cstddef>
#include <vector>

#include "framework/mi/host_objects.h"
#include "framework/model_impl.h"
#include "host/record.h"
#include "host/text.h"
#include "host/vcos/script.h"
#include "package/module.h"
#include "row.h"
#include "simmanager/mm/job.h"
#include "study.h"

namespace kxsim::bench {

namespace {

namespace script = vexal::script;
using design::Iteration;
using kinetra::simmanager::mm::SimulationRun;
using mf::zero::Model;
using vexal::ArrayPtr;

ArrayPtr objectOf(const mf::zero::ModelElement& element) {
  VXInitialize_kxsim_design();
  return mf::zero::mi::toHost(element);
}

void readByName(std::size_t n, Meter& meter) {
  const ArrayPtr run = objectOf(SimulationRun::create(Model::create()));
  meter.measure([&] {
    for (std::size_t i = 0; i < n; ++i) {
      benchmark::DoNotOptimize(script::get(run.get(), "Progress").value.get());
    }
  });
}

void readByHandle(std::size_t n, Meter& meter) {
  SimulationRun run = SimulationRun::create(Model::create());
  double sum = 0;
  meter.measure([&] {
    for (std::size_t i = 0; i < n; ++i) {
      use(run);
      sum += run.progress();
    }
    use(sum);
  });
}

void writeByName(std::size_t n, Meter& meter) {
  const ArrayPtr run = objectOf(SimulationRun::create(Model::create()));
  const ArrayPtr values[] = {vexal::createDouble(0.25), vexal::createDouble(0.5)};
  meter.measure([&] {
    for (std::size_t i = 0; i < n; ++i) {
      benchmark::DoNotOptimize(script::set(run.get(), "Progress", values[i % 2].get()).error.get());
    }
  });
}

void writeByHandle(std::size_t n, Meter& meter) {
  const SimulationRun run = SimulationRun::create(Model::create());
  meter.measure([&] {
    for (std::size_t i = 0; i < n; ++i) run->setProgress(i % 2 ? 0.5 : 0.25);
  });
}

void constructFromStruct(std::size_t n, Meter& meter) {
  VXInitialize_kxsim_design();
  const Model model = Model::create();
  const ArrayPtr inModel = mf::zero::mi::toHost(model);
  const ArrayPtr values = vexal::createStruct();
  vexal::setField(values.get(), "RunId", vexal::createDouble(1).get());
  vexal::setField(values.get(), "Progress", vexal::createDouble(0.5).get());
  vexal::setField(values.get(), "State", vexal::createChar("running").get());
  const vxArray* const inputs[] = {inModel.get(), values.get()};
  script::construct("kinetra.simmanager.mm.SimulationRun", inputs);
  std::vector<ArrayPtr> runs;
  runs.reserve(n);
  meter.measure([&] {
    for (std::size_t i = 0; i < n; ++i) {
      runs.push_back(script::construct("kinetra.simmanager.mm.SimulationRun", inputs).value);
    }
  });
}

void constructByBuilder(std::size_t n, Meter& meter) {
  const Model model = Model::create();
  SimulationRun::create(model);
  std::vector<SimulationRun> runs;
  runs.reserve(n);
  meter.measure([&] {
    for (std::size_t i = 0; i < n; ++i) {
      runs.push_back(
          SimulationRun::Builder(model).setRunId(1).setProgress(0.5).setState(u"running").create());
    }
  });
}

void handOverRuns(std::size_t n, Meter& meter) {
  VXInitialize_kxsim_design();
  const Model model = Model::create();
  std::vector<Iteration> runs = fullFactorial(model, levelsFor(n))->createIterations();
  ArrayPtr array;
  meter.measure([&] { array = mf::zero::mi::toHost(std::move(runs)); });
}

/// Plain objects of a run's size: their addresses in a new array, each found to be of one class.
void handOverFloor(std::size_t n, Meter& meter) {
  struct Plain {
    const void* kind;
    std::array<std::byte, 56> rest;
  };
  std::vector<Plain> objects(n);
  std::vector<Plain*> runs(n);
  for (std::size_t i = 0; i < n; ++i) runs[i] = &objects[i];
  std::vector<void*> array;
  bool isUniform = true;
  meter.measure([&] {
    array.reserve(n);
    for (Plain* const run : runs) {
      isUniform &= run->kind == runs.front()->kind;
      array.push_back(run);
    }
  });
  use(isUniform);
}

void registerAll(std::size_t, Meter& meter) {
  meter.measure([&] {
    VXInitialize_kxsim_design();
    for (const char* package : {"mf.zero", "mf.zero.meta", "kinetra.simmanager.mm", "kxsim.design",
                                "kxsim.design.internal", "kxsim.design.internal.command"}) {
      for (const std::string& name : script::classes(package).value) script::describeClass(name);
    }
    script::invokeStatic("kxsim.design.Figure", "StaticMetaClass", {});
  });
}

constexpr Row kRows[] = {
    {"read-by-name", "read", "a number of an element, as a script reads it; floor: by handle",
     Process::kThis, readByName, readByHandle, 1'000, 1'000'000, 0},
    {"write-by-name", "write", "a number of an element, as a script sets it; floor: by handle",
     Process::kThis, writeByName, writeByHandle, 1'000, 1'000'000, 0},
    {"construct-by-name", "run", "a run with three values from a struct; floor: by builder",
     Process::kFresh, constructFromStruct, constructByBuilder, 1'000, 1'000'000, 0},
    {"hand-over-runs", "run", "runs handed to a script as one array, their making apart",
     Process::kFresh, handOverRuns, handOverFloor, 1'000, 1'000'000, 0},
    {"register", "process", "every host class registered and filled in, every meta class as well",
     Process::kFresh, registerAll, nullptr, 1, 1, 0},
};

}  // namespace

std::span<const Row> bindingRows() { return kRows; }

}  // namespace kxsim::bench
