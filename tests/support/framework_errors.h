// Expecting a framework error by its message class.
#pragma once

#include <gtest/gtest.h>

#include <source_location>
#include <string>

#include "framework/messages.h"

namespace mf::zero::testing {

/// Runs the action, which must raise message M and no other; returns its text.
template <class M, class Action>
std::string expectRaises(Action&& action,
                         std::source_location at = std::source_location::current()) {
  namespace except = foundation::core::except;
  const ::testing::ScopedTrace trace(at.file_name(), static_cast<int>(at.line()), "called here");
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
