// The base of the tests that work on a garden: a model, short ways to make what grows
// in it, and a look at the model's bookkeeping after every test.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "framework/garden.h"
#include "framework/meta/meta.h"
#include "framework/mi/host_boundary.h"
#include "framework/model_impl.h"
#include "support/consistency.h"
#include "support/framework_errors.h"
#include "support/host_leak_test.h"
#include "support/picture.h"

namespace mf::zero::testing {

namespace messages = mf0::messages;

class GardenTest : public vexal::testing::HostLeakTest {
 protected:
  GardenTest() { mi::attachToHost(); }
  void TearDown() override { EXPECT_EQ(inconsistencies(model), ""); }

  Bed bed(std::u16string_view label = {}) {
    const Bed made = Bed::create(model);
    made->setLabel(label);
    return made;
  }
  Plant plant(std::u16string_view label = {}) {
    const Plant made = Plant::create(model);
    made->setLabel(label);
    return made;
  }
  Record record() { return Record::create(model); }
  std::vector<Plant> plants(std::size_t count) {
    std::vector<Plant> made;
    for (std::size_t i = 0; i < count; ++i) made.push_back(Plant::create(model));
    return made;
  }

  /// The action must raise M and change nothing at all.
  template <class M, class Action>
  void expectRefused(Action&& action) {
    const Picture before = pictureOf(model);
    expectRaises<M>(action);
    EXPECT_EQ(differences(before, pictureOf(model)), "");
    EXPECT_EQ(inconsistencies(model), "");
    EXPECT_FALSE(model->isInTransaction());
  }

  static meta::Property propertyOf(const ModelElement& element, std::u16string_view name) {
    return meta::propertyOf(*element->classInfo().findByName(name));
  }

  Model model = Model::create();
};

/// The elements of a collection, as handles of its class.
template <class Collection>
auto held(const Collection& collection) {
  std::vector<typename Collection::value_type> found;
  for (const auto& element : collection) found.push_back(element);
  return found;
}

}  // namespace mf::zero::testing
