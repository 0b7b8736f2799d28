// The job: simulates the setups on several threads and keeps the record of it in the model.
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "framework/zero.h"
#include "motor.h"
#include "results.h"
#include "simmanager/mm/mm.h"

namespace motor_study {

/// The states of a run, and what a simulation says of its end.
inline constexpr std::u16string_view kQueued = u"queued";
inline constexpr std::u16string_view kRunning = u"running";
inline constexpr std::u16string_view kFinished = u"finished";
inline constexpr std::u16string_view kFailed = u"failed";
inline constexpr std::u16string_view kSettled = u"settled";
inline constexpr std::u16string_view kUnsettled = u"not settled";

/// A job in `model` with one queued run per setup.
kinetra::simmanager::mm::Job createJob(const mf::zero::Model& model, std::size_t runs, int workers);

/// Carries out the job: one result per setup, in order, whatever the threads do. A simulation that
/// fails makes a failed run; the others go on. The model is changed by the calling thread only.
std::vector<Result> carryOut(const kinetra::simmanager::mm::Job& job,
                             std::span<const Setup> setups);

}  // namespace motor_study
