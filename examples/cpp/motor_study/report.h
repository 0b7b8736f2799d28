// What the user gets to read.
#pragma once

#include <span>

#include "options.h"
#include "results.h"
#include "simmanager/mm/mm.h"

namespace motor_study {

/// What is simulated, what is varied, and what is asked for.
void printTask(const Options& options, double runs);

/// How the job went.
void printJob(const kinetra::simmanager::mm::Job& job);

/// The gains to take, in a sentence.
void printAnswer(const GainsSummary& best);

/// The best choices of gains with their worst values over all plants and conditions.
void printGains(std::span<const GainsSummary> ranking, int top);

/// Where the results are.
void printFiles(const Options& options, std::size_t runs);

/// The best runs among those that the model records as finished and settled.
void printRuns(const mf::zero::Model& model, std::span<const Result> results, int top);

}  // namespace motor_study
