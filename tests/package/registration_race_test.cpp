// First use from many threads at once: one registration, which all of them see complete.
#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <thread>
#include <vector>

#include "framework/meta/registry.h"
#include "framework/mi/host_boundary.h"
#include "framework/model_impl.h"
#include "package/meta_package_kxsim_design.h"
#include "simmanager/mm/job.h"

namespace mf::zero::meta {
namespace {

using kinetra::simmanager::mm::Job;

constexpr int kThreads = 16;

// The thread sanitizers are wrong about statics whose constructor throws: gcc's forgets those who
// wait for it, clang's reports a race.
#if defined(__has_feature)
constexpr bool kIsThreadSanitized = __has_feature(thread_sanitizer);
#elif defined(__SANITIZE_THREAD__)
constexpr bool kIsThreadSanitized = true;
#else
constexpr bool kIsThreadSanitized = false;
#endif

// Runs the action on all threads, which start together.
template <class Action>
void together(Action action) {
  std::latch start(kThreads);
  std::vector<std::thread> threads;
  for (int k = 0; k < kThreads; ++k) {
    threads.emplace_back([&, k] {
      start.arrive_and_wait();
      action(k);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST(RegistrationRaceTest, ManyFirstUsesRegisterOnce) {
  std::vector<const void*> seen(kThreads);
  std::atomic<int> complete = 0;
  together([&](int k) {
    const Class cls = k % 2 ? Job::metaClass() : Job::Builder().getMetaClass();
    seen[static_cast<std::size_t>(k)] = cls.impl();
    complete += cls->getAllProperties().size() == 4 &&
                cls->getPackage()->getPath() == "kinetra.simmanager.mm" &&
                cls->findProperty(u"ETA") == Property();
  });
  for (const void* impl : seen) EXPECT_EQ(impl, seen.front());
  EXPECT_EQ(complete, kThreads);
  EXPECT_EQ(MetaRegistry::getInstance().findClass("kinetra.simmanager.mm.Job").impl(),
            seen.front());
}

TEST(RegistrationRaceTest, LookUpsWhileOthersRegisterSeeAllOrNothing) {
  mi::attachToHost();
  MetaRegistry& registry = MetaRegistry::getInstance();
  std::atomic<int> torn = 0;
  together([&](int k) {
    if (k == 0) {
      kxsim::MetaPackageKxsim_design::getInstance();
      return;
    }
    for (int round = 0; round < 1000; ++round) {
      // Looked up in this order, so that the second is there whenever the first is.
      const Type first = registry.findType("kinetra.simmanager.mm.Job");
      const Type last = registry.findType("kxsim.design.internal.command.SelectRuns");
      if (first && !last) ++torn;
    }
  });
  EXPECT_EQ(torn, 0);
}

TEST(RegistrationRaceTest, AFailedFirstUseIsTriedAgainByTheNext) {
  if (kIsThreadSanitized) GTEST_SKIP() << "the sanitizer cannot do it";
  MetaRegistry& registry = MetaRegistry::getInstance();
  if (registry.findType("kinetra.simmanager.mm.Job")) GTEST_SKIP() << "needs a process of its own";
  registry.unregisterPrimitiveType(mi::kHostArrayType);
  std::atomic<int> failed = 0;
  together([&](int) {
    try {
      kxsim::MetaPackageKxsim_design::getInstance();
    } catch (const foundation::core::except::Exception<mf0::messages::NoSuchType>&) {
      ++failed;
    }
  });
  EXPECT_EQ(failed, kThreads);
  mi::attachToHost();
  EXPECT_EQ(Job::metaClass()->getName(), u"Job");
}

}  // namespace
}  // namespace mf::zero::meta
