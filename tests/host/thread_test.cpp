// One thread owns the host; others are told so, and may release what they hold.
#include <cstdlib>
#include <thread>
#include <vector>

#include "host/cell.h"
#include "host/function.h"
#include "host/runtime.h"
#include "support/host_errors.h"
#include "support/host_leak_test.h"

namespace vexal {
namespace {

class ThreadTest : public testing::HostLeakTest {
 protected:
  template <class Action>
  static void elsewhere(Action action) {
    std::thread(action).join();
  }
};

TEST_F(ThreadTest, EveryUseFromAnotherThreadIsRefused) {
  start();
  EXPECT_TRUE(isHostThread());
  const ArrayPtr array = createCell(1, 1);
  elsewhere([&] {
    EXPECT_FALSE(isHostThread());
    const auto refused = [](auto action) {
      testing::expectHostError("Vexal:host:WrongThread", action);
    };
    refused([] { start(); });
    refused([] { createDouble(1); });
    refused([] { arrayCounts(); });
    refused([&] { deepCopy(array.get()); });
    refused([&] { copyForProperty(array.get()); });
    refused([&] { isCell(array.get()); });
    refused([&] { cellElement(array.get(), 0); });
    refused([] { defineFunction("test.thread", {{}, [](Call&) {}}); });
    vxArray* output = nullptr;
    const auto diagnostic = callFunction(1, &output, 0, nullptr, "ismethod");
    ASSERT_NE(diagnostic, nullptr);
    EXPECT_EQ(diagnostic->item(0).key, "WrongThread");
  });
}

TEST_F(ThreadTest, WhatOtherThreadsReleaseIsReleasedOnceAndCompletely) {
  constexpr std::size_t kThreads = 4;
  constexpr std::size_t kArrays = 2000;
  const ArrayPtr shared = createCell(3, 3);
  std::vector<std::vector<ArrayPtr>> plain(kThreads);
  std::vector<std::vector<PropertyArrayPtr>> kept(kThreads);
  for (std::size_t t = 0; t < kThreads; ++t) {
    for (std::size_t k = 0; k < kArrays; ++k) {
      plain[t].push_back(k % 2 == 0 ? createDouble(1) : deepCopy(shared.get()));
      kept[t].push_back(copyForProperty(plain[t].back().get()));
    }
  }
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      plain[t].clear();
      kept[t].clear();
    });
  }
  for (std::size_t k = 0; k < kArrays; ++k) createDouble(2);  // releases them meanwhile
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(liveArrays(), 1U);
}

// In a process of its own, where nothing has used the host yet.
TEST(HostStartTest, TheFirstThreadThatUsesTheHostOwnsIt) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto run = [] {
    bool owned = false;
    std::thread([&] {
      createDouble(1);
      owned = isHostThread();
    }).join();
    bool refused = false;
    try {
      start();
    } catch (const HostError& error) {
      refused = error.key() == "WrongThread";
    }
    std::_Exit(owned && refused ? 0 : 1);
  };
  EXPECT_EXIT(run(), ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace vexal
