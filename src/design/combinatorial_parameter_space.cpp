// The hand-written parts of Exhaustive and Sequential: both leave the walk through
// the tree below them to a plan.
#include "design/exhaustive.h"
#include "design/generation.h"
#include "design/iteration.h"
#include "design/sequential.h"

namespace kxsim::design {

double Exhaustive::Impl::getActualNumIterations() const {
  return generation::Plan(*this).numIterations();
}

std::vector<Iteration> Exhaustive::Impl::createIterations() const {
  return generation::Plan(*this).createIterations();
}

double Sequential::Impl::getActualNumIterations() const {
  return generation::Plan(*this).numIterations();
}

std::vector<Iteration> Sequential::Impl::createIterations() const {
  return generation::Plan(*this).createIterations();
}

}  // namespace kxsim::design
