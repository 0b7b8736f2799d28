// Expecting a host error by its identifier.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "host/diagnostic.h"

namespace vexal::testing {

/// Runs the action, which must fail with a host error of that identifier; returns its text.
template <class Action>
std::string expectHostError(std::string_view identifier, Action&& action,
                            const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
  const ::testing::ScopedTrace trace(file, line, "called here");
  try {
    action();
  } catch (const HostError& error) {
    EXPECT_EQ(error.identifier(), identifier) << error.what();
    return error.what();
  }
  ADD_FAILURE() << "no error; expected " << identifier;
  return {};
}

}  // namespace vexal::testing
