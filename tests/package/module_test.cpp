// The entry points that the host calls.
#include "package/module.h"

#include <gtest/gtest.h>

#include <thread>

#include "framework/meta/registry.h"
#include "host/module.h"
#include "host/runtime.h"
#include "host/vcos/package.h"
#include "support/host_errors.h"

namespace {

using vcos::COSPackage;

void expectHostPackages() {
  for (const char* name :
       {"kinetra", "kinetra.simmanager", "kinetra.simmanager.mm", "kxsim", "kxsim.design",
        "kxsim.design.internal", "kxsim.design.internal.command"}) {
    EXPECT_NE(COSPackage::getPackage(name), nullptr) << name;
  }
}

TEST(ModuleTest, LoadingAddsTheHostPackagesWithoutRegisteringTheClasses) {
  const auto& registry = mf::zero::meta::MetaRegistry::getInstance();
  const auto before = registry.findClass("kxsim.design.Figure");
  VXInitialize_kxsim_design();
  expectHostPackages();
  EXPECT_TRUE(registry.findType("VxArray"));
  EXPECT_EQ(registry.findClass("kxsim.design.Figure"), before);
  VXTerminate_kxsim_design();
  expectHostPackages();
}

TEST(ModuleTest, TheHostLoadsTheLibraryByItsPathAndTellsWhatItMisses) {
  EXPECT_EQ(vexal::loadModule(KXSIM_DESIGN_LIBRARY), "kxsim_design");
  expectHostPackages();
  EXPECT_EQ(vexal::loadModule(KXSIM_DESIGN_LIBRARY), "kxsim_design");
  vexal::terminateModule("kxsim_design");
  EXPECT_FALSE(vexal::isModuleLoaded("kxsim_design"));
  using vexal::testing::expectHostError;
  expectHostError("Vexal:host:ModuleNotLoaded", [] { vexal::terminateModule("kxsim_design"); });
  expectHostError("Vexal:host:ModuleNotLoaded", [] { vexal::loadModule("/nowhere/libnone.so"); });
  const std::string text =
      expectHostError("Vexal:host:ModuleEntryMissing", [] { vexal::loadModule("libm.so.6"); });
  EXPECT_NE(text.find("VXInitialize_m"), std::string::npos);
  EXPECT_FALSE(vexal::isModuleLoaded("m"));
}

TEST(ModuleTest, LoadingTwiceChangesNothing) {
  for (const bool everyTime : {false, true}) {
    omSetVcosUsingUSM(everyTime);
    VXInitialize_kxsim_design();
    const COSPackage* const design = COSPackage::getPackage("kxsim.design");
    VXInitialize_kxsim_design();
    EXPECT_EQ(COSPackage::getPackage("kxsim.design"), design);
  }
  omSetVcosUsingUSM(false);
  expectHostPackages();
}

TEST(ModuleTest, AFailedLoadMayBeRepeated) {
  vexal::start();
  if (COSPackage::getPackage("kxsim")) GTEST_SKIP() << "needs a process of its own";
  std::thread([] {
    vexal::testing::expectHostError("Vexal:host:WrongThread", VXInitialize_kxsim_design);
  }).join();
  EXPECT_EQ(COSPackage::getPackage("kxsim"), nullptr);
  VXInitialize_kxsim_design();
  expectHostPackages();
}

}  // namespace
