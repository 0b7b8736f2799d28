// The base of tests that drive the devices of a plant as a script does.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

#include "host/text.h"
#include "host/vcos/script.h"
#include "support/host_leak_test.h"
#include "support/plant.h"

namespace vexal::script {

/// What the result holds; a failure of the test when it holds none.
template <class T>
T valueOf(Result<T> result, const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
  const ::testing::ScopedTrace trace(file, line, "called here");
  if (!result) ADD_FAILURE() << result.error->item(0).text;
  return std::move(result.value);
}

/// The key of the failure, with its catalog unless that is "Vexal:class"; empty without one.
template <class T>
std::string keyOf(const Result<T>& result) {
  if (result) return {};
  const Diagnostic::Item& item = result.error->item(0);
  EXPECT_FALSE(item.text.empty());
  return item.catalog == "Vexal:class" ? item.key : item.catalog + ':' + item.key;
}

class PlantTest : public vexal::testing::HostLeakTest {
 protected:
  PlantTest() { vcos::plant::registerPlant(); }
  ~PlantTest() override { EXPECT_EQ(vcos::plant::Device::live, 0) << "devices were not released"; }

  using List = std::initializer_list<const vxArray*>;
  static Arguments all(List list) { return {list.begin(), list.size()}; }

  static ArrayPtr tank(std::string_view name = "main") {
    return valueOf(construct("plant.Tank", all({createChar(name).get()})));
  }
  static double number(const vxArray* object, std::string_view property) {
    const ArrayPtr value = valueOf(get(object, property));
    return value ? doubleData(value.get())[0] : -1;
  }
  static std::string text(const ArrayPtr& array) { return toUtf8(charText(array.get())); }
};

}  // namespace vexal::script
