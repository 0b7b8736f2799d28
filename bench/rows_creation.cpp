// Making elements, and finding them by identity.
#include <bit>
#include <cstdint>
#include <vector>

#include "design/iteration.h"
#include "floor.h"
#include "framework/model_impl.h"
#include "row.h"

namespace kxsim::bench {

namespace {

using design::Iteration;
using mf::zero::Model;

void createIterations(const Model& model, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) Iteration::create(model);
}

void create(std::size_t n, Meter& meter) {
  const Model model = Model::create();
  meter.measure([&] { createIterations(model, n); });
  meter.keep(model->bytesReserved());
}

void createFloor(std::size_t n, Meter& meter) {
  floor::Generator generator;
  floor::Arena arena;
  meter.measure([&] {
    for (std::size_t i = 0; i < n; ++i) use(*arena.make<floor::EmptyRun>(generator.identity()));
  });
  meter.keep(n * sizeof(floor::EmptyRun));
}

void createIndexed(std::size_t n, Meter& meter) {
  const Model model = Model::create();
  model->findElement(Iteration::create(model).Uuid());
  meter.measure([&] { createIterations(model, n); });
  meter.keep(model->bytesReserved());
}

/// Four-byte slots, the keys where they are; at most half full.
class Index {
 public:
  explicit Index(const std::vector<floor::EmptyRun>& runs) : runs_(runs) { rebuild(runs.size()); }

  void add(std::uint32_t position) {
    if (2 * position >= slots_.size()) rebuild(position);
    put(position);
  }

  std::size_t bytes() const { return slots_.capacity() * sizeof(std::uint32_t); }

 private:
  void rebuild(std::size_t count) {
    slots_.assign(std::bit_ceil(2 * count + 2), 0);
    for (std::uint32_t i = 0; i < count; ++i) put(i);
  }
  void put(std::uint32_t position) {
    std::size_t slot = runs_[position].identity.low & (slots_.size() - 1);
    while (slots_[slot] != 0) slot = (slot + 1) & (slots_.size() - 1);
    slots_[slot] = position + 1;
  }

  const std::vector<floor::EmptyRun>& runs_;
  std::vector<std::uint32_t> slots_;
};

void createIndexedFloor(std::size_t n, Meter& meter) {
  floor::Generator generator;
  std::vector<floor::EmptyRun> runs;
  runs.reserve(n);
  Index index(runs);
  meter.measure([&] {
    for (std::uint32_t i = 0; i < n; ++i) {
      runs.push_back({generator.identity()});
      index.add(i);
    }
    use(index);
  });
  meter.keep(n * sizeof(floor::EmptyRun) + index.bytes());
}

void firstLookUp(std::size_t n, Meter& meter) {
  const Model model = Model::create();
  const Iteration wanted = Iteration::create(model);
  createIterations(model, n);
  meter.measure([&] { model->findElement(wanted.Uuid()); });
}

void firstLookUpFloor(std::size_t n, Meter& meter) {
  floor::Generator generator;
  std::vector<floor::EmptyRun> runs(n);
  for (floor::EmptyRun& run : runs) run.identity = generator.identity();
  meter.measure([&] {
    Index index(runs);
    use(index);
  });
}

constexpr Row kRows[] = {
    {"create", "iteration", "create an iteration with a fresh identity", Process::kFresh, create,
     createFloor},
    {"create-indexed", "iteration", "the same after somebody looked up by identity",
     Process::kFresh, createIndexed, createIndexedFloor},
    {"first-look-up", "element", "the first look-up builds the index of identities",
     Process::kFresh, firstLookUp, firstLookUpFloor},
};

}  // namespace

std::span<const Row> creationRows() { return kRows; }

}  // namespace kxsim::bench
