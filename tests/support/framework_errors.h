// Expecting a framework error by its message class.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "framework/messages.h"

namespace mf::zero::testing {

/// Runs the action, which must raise message M and no other; returns its text.
template <class M, class Action>
std::string expectRaises(Action&& action, const char* file = __builtin_FILE(),
                         int line = __builtin_LINE()) {
  namespace except = foundation::core::except;
  const ::testing::ScopedTrace trace(file, line, "called here");
  try {
    action();
  } catch (const except::Exception<M, std::exception>& error) {
    return error.what();
  } catch (const except::AbstractException& error) {
    ADD_FAILURE() << "another error: " << error.GetID();
    return {};
  }
  ADD_FAILURE() << "no error";
  return {};
}

}  // namespace mf::zero::testing
