// Thousands of random changes with fixed seeds; see random_changes.h for what must hold.
#include "framework/random_changes.h"

#include <random>

namespace mf::zero::testing {
namespace {

class RandomChangesTest : public vexal::testing::HostLeakTest,
                          public ::testing::WithParamInterface<std::uint32_t> {};

TEST_P(RandomChangesTest, KeepEveryPromiseOfTransactionsAndObservers) {
  constexpr int kSteps = 1000;
  std::mt19937 random(GetParam());
  RandomChanges changes([&](std::uint32_t bound) {
    return static_cast<std::uint32_t>((std::uint64_t{random()} * bound) >> 32);
  });
  for (int i = 0; i < kSteps; ++i) {
    changes.step();
    ASSERT_EQ(changes.wrong(), "") << "in step " << i;
  }
  changes.finish();
  EXPECT_LT(changes.refused(), kSteps / 2) << "too little is done at all";
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomChangesTest, ::testing::Range(1U, 9U));

}  // namespace
}  // namespace mf::zero::testing
