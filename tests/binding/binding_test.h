// The base of tests that act as scripts on the package's classes; after each test every host
// object, array and element reference is gone.
#pragma once

#include "package/module.h"
#include "support/host_leak_test.h"
#include "support/script.h"

namespace kxsim::testing {

using namespace vexal::testing;
using vexal::ArrayPtr;

class BindingTest : public HostLeakTest {
 protected:
  BindingTest() { VXInitialize_kxsim_design(); }

  ArrayPtr model() { return make("mf.zero.Model"); }
  /// A variable of that name and a set of values for it.
  static ArrayPtr factor(const ArrayPtr& inModel, const char* name, const ArrayPtr& values) {
    const ArrayPtr variable = make("kxsim.design.Variable", {inModel, record({{"Name", name}})});
    return make("kxsim.design.ValueSetParameter",
                {inModel, record({{"Values", values}, {"ParameterType", variable}})});
  }
};

}  // namespace kxsim::testing
