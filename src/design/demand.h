// What a study will take to build, estimated before anything is made.
#pragma once

#include <cstddef>

namespace kxsim::design {

/// Elements and bytes, of which there may be more than fit any integer.
struct Demand {
  double elements = 0.0;
  double bytes = 0.0;

  Demand& operator+=(const Demand& other);
};

/// Runs with samples of their own, so many each. Less than none and NaN are none.
Demand demandOfDrawing(double runs, double samplesPerRun);
/// Runs that share the samples of other runs, and the design matrix of so many rows that says how.
Demand demandOfCombining(double runs, double samplesPerRun, std::size_t matrixRows);

/// Raises "Kxsim:Design:TooManyIterations" when a model or this machine cannot hold so much.
void checkFits(const Demand& demand);

/// How many runs a count promises: one for every i from 0 that is below it.
std::size_t runsOf(double count);

}  // namespace kxsim::design
