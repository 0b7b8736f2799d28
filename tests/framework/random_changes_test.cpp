// Thousands of random changes with fixed seeds; see random_changes.h for what must hold.
#include "framework/random_changes.h"

#include <gtest/gtest.h>

#include <random>

#include "support/host_leak_test.h"

namespace mf::zero::testing {
namespace {

class RandomChangesTest : public vexal::testing::HostLeakTest,
                          public ::testing::WithParamInterface<std::uint32_t> {
 protected:
  static void run(RandomChanges::Proxies proxies) {
    constexpr int kSteps = 1000;
    std::mt19937 random(GetParam());
    RandomChanges changes(proxies, [&](std::uint32_t bound) {
      return static_cast<std::uint32_t>((std::uint64_t{random()} * bound) >> 32);
    });
    for (int i = 0; i < kSteps; ++i) {
      changes.step();
      ASSERT_EQ(changes.wrong(), "") << "in step " << i;
    }
    changes.finish();
    EXPECT_LT(changes.refused(), kSteps / 2) << "too little is done at all";
  }
};

TEST_P(RandomChangesTest, KeepEveryPromiseOfTransactionsAndObservers) {
  run(RandomChanges::Proxies::kNone);
}

TEST_P(RandomChangesTest, KeepTheBookkeepingInOrderWhileProxiesComeAndGo) {
  run(RandomChanges::Proxies::kSome);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomChangesTest, ::testing::Range(1U, 7U));

}  // namespace
}  // namespace mf::zero::testing
