#include "design/generation.h"

#include <algorithm>
#include <limits>
#include <unordered_map>
#include <utility>

#include "design/exhaustive.h"
#include "design/host.h"
#include "design/random_parameter_space.h"
#include "framework/model_impl.h"

namespace kxsim::design::generation {

namespace {

using mf::zero::ElementImpl;

/// The samples of all runs of one child, run after run, so that combining reads them in a row.
class SampleTable {
 public:
  explicit SampleTable(const std::vector<Iteration>& runs) {
    starts_.reserve(runs.size() + 1);
    if (!runs.empty()) samples_.reserve(runs.size() * runs.front().parameterSamples().size());
    std::vector<ElementImpl*> samples;
    for (const Iteration& run : runs) {
      starts_.push_back(samples_.size());
      samples.clear();
      run.parameterSamples().copyTo(samples);
      for (ElementImpl* sample : samples) samples_.emplace_back(sample);
    }
    starts_.push_back(samples_.size());
    limit_ = static_cast<double>(runs.size());
  }
  std::size_t runs() const { return starts_.size() - 1; }
  /// Makes room at the samples for `uses` combined runs, spread evenly over this child's.
  void expectUses(double uses) const {
    if (!(uses >= 4.0 * limit_)) return;  // the room that a sample has anyway
    const auto each = static_cast<std::size_t>(uses / std::max(limit_, 1.0));
    for (const auto& sample : samples_) {
      if (sample.isValid()) sample->reserveReferrers(each);
    }
  }
  /// Samples of the longest run.
  std::size_t width() const {
    std::size_t widest = 0;
    for (std::size_t i = 0; i < runs(); ++i) {
      widest = std::max(widest, starts_[i + 1] - starts_[i]);
    }
    return widest;
  }
  /// Writes the samples of the run that a 1-based level of a design matrix stands for to `to`;
  /// answers where they end. Most levels are those of the combination before, whose samples stand
  /// there already.
  ElementImpl** writeLevel(double level, ElementImpl** to) {
    if (level == written_.level && to == written_.from) return written_.end;
    const double index = level - 1.0;
    if (!(index >= 0.0 && index < limit_)) host::raiseDesignError("InvalidDesignMatrix");
    const auto run = static_cast<std::size_t>(static_cast<std::ptrdiff_t>(index));
    written_ = {level, to, to};
    for (std::size_t i = starts_[run]; i != starts_[run + 1]; ++i) {
      *written_.end++ = samples_[i].impl();
    }
    return written_.end;
  }

 private:
  struct Written {
    double level = std::numeric_limits<double>::quiet_NaN();  ///< none: equals no other
    ElementImpl** from = nullptr;
    ElementImpl** end = nullptr;
  };

  std::vector<mf::zero::ModelElement> samples_;  ///< held: an observer may destroy them meanwhile
  std::vector<std::size_t> starts_;
  double limit_ = 0.0;  ///< the number of runs
  Written written_;
};

std::vector<SampleTable> tablesOf(const std::vector<std::vector<Iteration>>& lists) {
  return {lists.begin(), lists.end()};
}

/// The most samples that a combined run can have.
std::size_t widthOf(const std::vector<SampleTable>& tables) {
  std::size_t width = 0;
  for (const SampleTable& table : tables) width += table.width();
  return width;
}

/// The samples of the next few runs that are paired. Memory answers many questions in the time of
/// one, so they are looked up, and their lists asked for, before the first of the runs is made.
class SamplesAhead {
 public:
  static constexpr std::size_t kRuns = 16;

  /// Takes the samples of the children's runs from `begin` to `end`, and lets go of those runs.
  void lookUp(std::vector<std::vector<Iteration>>& lists, std::size_t begin, std::size_t end) {
    samples_.clear();
    starts_.assign(1, 0);
    for (std::size_t i = begin; i < end; ++i) {
      for (auto& list : lists) std::exchange(list[i], {}).parameterSamples().copyTo(samples_);
      starts_.push_back(samples_.size());
    }
    for (const ElementImpl* sample : samples_) sample->prefetchReferrers();
  }
  std::size_t runs() const { return starts_.size() - 1; }
  std::span<ElementImpl* const> of(std::size_t run) const {
    return std::span(samples_).subspan(starts_[run], starts_[run + 1] - starts_[run]);
  }

 private:
  std::vector<ElementImpl*> samples_;
  std::vector<std::size_t> starts_;
};

/// For new runs that refer to samples, by the only property that a run has.
Iteration::Series seriesOfRuns(const mf::zero::Model& model) {
  static_assert(std::size(Iteration::Impl::kProperties) == 1);
  return {model, Iteration::Impl::kProperties[0]};
}

/// The design matrix for the children's level counts: a row per child, a column per run.
host::ArrayPtr designMatrix(std::span<const double> levels) {
  const host::ArrayPtr vector = host::createDoubleMatrix(1, levels.size());
  std::ranges::copy(levels, host::mutableDoubleData(vector.get()).begin());
  return host::call("kxsim.design.fullfact", vector.get());
}

}  // namespace

// Walking the tree: depth first with an explicit path, children before parents.

Plan::Visit Plan::visitOf(const ParameterSpace& space) {
  space->resolve();
  Visit visit{{.space = space, .isExhaustive = space.as<Exhaustive>().isValid()}, {}};
  if (const auto combined = space.as<CombinatorialParameterSpace>()) {
    visit.node.isLeaf = false;
    visit.open = combined.parameterSpaces().toContainer();
    std::ranges::reverse(visit.open);
  }
  return visit;
}

Plan::Plan(const CombinatorialParameterSpace::Impl& root) {
  constexpr std::size_t kOnPath = static_cast<std::size_t>(-1);
  std::unordered_map<const ElementImpl*, std::size_t> positions{{&root, kOnPath}};
  std::vector<Visit> path;
  path.push_back(visitOf(ParameterSpace(const_cast<CombinatorialParameterSpace::Impl*>(&root))));
  while (!path.empty()) {
    Visit& top = path.back();
    if (top.open.empty()) {
      positions[top.node.space.impl()] = nodes_.size();
      add(std::move(top.node));
      path.pop_back();
      continue;
    }
    const ParameterSpace child = top.open.back();
    const auto [known, isNew] = positions.try_emplace(child.impl(), kOnPath);
    if (isNew) {
      path.push_back(visitOf(child));
      continue;
    }
    if (known->second == kOnPath) host::raiseDesignError("SpaceContainsItself");
    top.node.children.push_back(known->second);
    top.open.pop_back();
  }
}

void Plan::add(Node node) {
  node.count = countOf(node);
  measure(node);
  nodes_.push_back(std::move(node));
}

void Plan::measure(Node& node) const {
  if (node.isLeaf) {
    const auto drawn = node.space.as<RandomParameterSpace>();
    node.width = drawn ? static_cast<double>(drawn.parameters().size()) : 1.0;
    node.demand = demandOfDrawing(node.count, node.width);
    return;
  }
  for (const std::size_t child : node.children) {
    node.width += nodes_[child].width;
    node.demand += nodes_[child].demand;
  }
  const std::size_t matrixRows = node.isExhaustive ? node.children.size() : 0;
  node.demand += demandOfCombining(node.count, node.width, matrixRows);
}

double Plan::countOf(const Node& node) const {
  if (node.isLeaf) return node.space->getNumIterations();
  const auto count = [&](std::size_t child) { return nodes_[node.children[child]].count; };
  const std::size_t children = node.children.size();
  if (node.isExhaustive) {
    double product = 1.0;
    for (std::size_t j = 0; j < children; ++j) product *= count(j);
    return product;
  }
  if (children == 0) return 0.0;
  // The running minimum starts from the second child, and from the only one where there is one;
  // a count that is not a number thus wins only there.
  double smallest = count(children > 1 ? 1 : 0);
  for (std::size_t j = 0; j < children; ++j) smallest = count(j) < smallest ? count(j) : smallest;
  return smallest;
}

// Building: every listing of a child builds its runs anew.

double Plan::usesOf(const Node& child, const Node& parent) {
  const bool areRuns = child.count > 0.0 && parent.count > 0.0;  // not so for NaN
  return areRuns ? parent.count / std::max(child.count, 1.0) : 0.0;
}

std::vector<Iteration> Plan::createIterations() const {
  // As far as the counts tell, too much is refused before anything is made.
  checkFits(nodes_.back().demand);
  struct Frame {
    const Node* node;
    double uses;  ///< in how many runs further up each of its runs will be combined
    std::vector<Runs> lists;
  };
  std::vector<Frame> frames;
  frames.push_back({&nodes_.back(), 0.0, {}});
  for (;;) {
    Frame& top = frames.back();
    if (top.lists.size() < top.node->children.size()) {
      const Node& child = nodes_[top.node->children[top.lists.size()]];
      if (child.isLeaf) {
        top.lists.push_back(child.space->createIterations());
      } else {
        frames.push_back({&child, usesOf(child, *top.node) * (1.0 + top.uses), {}});
      }
      continue;
    }
    Runs runs = combine(*top.node, top.lists, top.uses);
    frames.pop_back();
    if (frames.empty()) return runs;
    frames.back().lists.push_back(std::move(runs));
  }
}

Plan::Runs Plan::combine(const Node& node, std::vector<Runs>& lists, double uses) const {
  return node.isExhaustive ? fullFactorial(node, lists, uses) : pairUp(node, lists);
}

Plan::Runs Plan::fullFactorial(const Node& node, const std::vector<Runs>& lists,
                               double uses) const {
  std::vector<double> levels;
  for (const std::size_t child : node.children) levels.push_back(nodes_[child].count);
  std::vector<SampleTable> tables = tablesOf(lists);
  std::vector<ElementImpl*> samples(widthOf(tables));
  const std::size_t count = runsOf(node.count);
  const host::ArrayPtr matrix = designMatrix(levels);
  Runs runs;
  if (count == 0) return runs;
  for (const SampleTable& table : tables) table.expectUses(node.count * (1.0 + uses));
  // Without factors there is one run, whatever the matrix is.
  const auto design = levels.empty() ? std::span<const double>() : host::doubleData(matrix.get());
  const mf::zero::Model model = node.space->getModel();
  Iteration::Series series = seriesOfRuns(model);
  runs.reserve(count);
  auto next = design.begin();
  for (std::size_t i = 0; i < count; ++i) {
    if (design.end() - next < std::ssize(tables)) host::raiseDesignError("InvalidDesignMatrix");
    ElementImpl** end = samples.data();
    for (SampleTable& table : tables) end = table.writeLevel(*next++, end);
    runs.push_back(series.create({samples.data(), end}));
  }
  return runs;
}

Plan::Runs Plan::pairUp(const Node& node, std::vector<Runs>& lists) const {
  std::size_t count = runsOf(node.count);
  // A count may promise more than a child gives; the shortest list ends it.
  for (const Runs& list : lists) count = std::min(count, list.size());
  const mf::zero::Model model = node.space->getModel();
  Iteration::Series series = seriesOfRuns(model);
  SamplesAhead samples;
  Runs runs;
  runs.reserve(count);
  while (runs.size() < count) {
    // With an observer, run by run: it may destroy samples that were looked up ahead.
    const std::size_t ahead = model->isObserved() ? 1 : SamplesAhead::kRuns;
    samples.lookUp(lists, runs.size(), std::min(runs.size() + ahead, count));
    for (std::size_t i = 0; i < samples.runs(); ++i) runs.push_back(series.create(samples.of(i)));
  }
  return runs;
}

}  // namespace kxsim::design::generation
