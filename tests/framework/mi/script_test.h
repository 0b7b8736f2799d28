// The base of tests that act as scripts on a garden, by name alone.
#pragma once

#include "fixture/host_packages.h"
#include "support/host_leak_test.h"
#include "support/script.h"

namespace mf::zero::testing {

using namespace vexal::testing;
using vexal::ArrayPtr;

class ScriptTest : public HostLeakTest {
 protected:
  ScriptTest() { garden::registerHostPackages(); }

  ArrayPtr plant(const char* label) {
    return make("garden.Plant", {model(), record({{"Label", label}})});
  }
  const ArrayPtr& model() {
    if (!model_) model_ = make("mf.zero.Model");
    return model_;
  }
  /// The labels of the elements in an array, with blanks between.
  static std::string labels(const ArrayPtr& elements) {
    std::string all;
    for (std::size_t k = 0; k < vexal::elementCount(elements.get()); ++k) {
      all += (k > 0 ? " " : "") + text(get(element(elements, k), "Label"));
    }
    return all;
  }

 private:
  ArrayPtr model_;
};

}  // namespace mf::zero::testing
