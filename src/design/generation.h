// The generation of iterations from a tree of combinatorial spaces: counted and
// checked as a whole first, then built child by child. Nothing recurses, so a tree
// may be as deep as memory allows.
#pragma once

#include <cstddef>
#include <vector>

#include "design/combinatorial_parameter_space.h"
#include "design/demand.h"
#include "design/iteration.h"
#include "design/parameter_space.h"

namespace kxsim::design::generation {

/// A tree of spaces below one combinatorial space, as it stands at construction.
class Plan {
 public:
  /// Walks the tree and counts every space once. Raises "Kxsim:Design:SpaceContainsItself" when a
  /// space is among its own descendants, and what loading a proxy raises. Changes nothing.
  explicit Plan(const CombinatorialParameterSpace::Impl& root);

  /// The number of runs: for an exhaustive space the product of its children's, 1 without any; for
  /// a sequential one the smallest of its children's, 0 without any.
  double numIterations() const { return nodes_.back().count; }

  /// Builds the runs in order. Raises "Kxsim:Design:TooManyIterations",
  /// "Kxsim:Design:InvalidDesignMatrix" and what a host function reports; the elements that were
  /// made by then stay in the model.
  std::vector<Iteration> createIterations() const;

 private:
  using Runs = std::vector<Iteration>;

  struct Node {
    ParameterSpace space;
    bool isExhaustive = false;
    bool isLeaf = true;
    std::vector<std::size_t> children = {};  ///< positions in nodes_, before this one's
    double count = 0.0;                      ///< of runs
    double width = 0.0;                      ///< samples of a run, at most
    Demand demand = {};  ///< of building it, its children with every listing of them
  };
  /// A node whose children are still being visited.
  struct Visit {
    Node node;
    std::vector<ParameterSpace> open;  ///< last first
  };

  static Visit visitOf(const ParameterSpace& space);
  void add(Node node);
  double countOf(const Node& node) const;
  void measure(Node& node) const;
  /// In how many of its parent's runs each of a child's is, on average.
  static double usesOf(const Node& child, const Node& parent);
  /// Runs of the children's runs. `uses` is in how many further ones each of them will be.
  Runs combine(const Node& node, std::vector<Runs>& lists, double uses) const;
  Runs fullFactorial(const Node& node, const std::vector<Runs>& lists, double uses) const;
  /// Lets go of each child's run once it is paired.
  Runs pairUp(const Node& node, std::vector<Runs>& lists) const;

  std::vector<Node> nodes_;  ///< children before parents, the root last
};

}  // namespace kxsim::design::generation
