// What the framework tells the host, and the host packages it adds.
#include "framework/mi/host_boundary.h"

#include <gtest/gtest.h>

#include <memory>
#include <string_view>
#include <thread>

#include "framework/meta/registry.h"
#include "framework/mi/empty_parent_package.h"
#include "host/catalog.h"
#include "support/host_errors.h"

namespace mf::zero::mi {
namespace {

using vcos::COSPackage;
using vexal::testing::expectHostError;

TEST(HostBoundaryTest, TheHostArrayTypeIsThereOnceTheHostIsAttached) {
  meta::MetaRegistry& registry = meta::MetaRegistry::getInstance();
  registry.unregisterPrimitiveType(kHostArrayType);
  EXPECT_FALSE(registry.findType(kHostArrayType));
  std::thread(attachToHost).join();  // not tied to the host's thread
  const meta::Type type = registry.findType(kHostArrayType);
  EXPECT_EQ(type.qualifiedName(), "VxArray");
  attachToHost();
  EXPECT_EQ(registry.findType(kHostArrayType), type);
}

TEST(HostBoundaryTest, TheHostSpeaksTheFrameworksMessages) {
  attachToHost();
  const std::string_view arguments[] = {"Figure"};
  const std::string text = vexal::messageText({"mf0:messages", "NoSuchType"}, arguments);
  EXPECT_EQ(text, mf0::messages::NoSuchType("Figure").text());
}

TEST(EmptyParentPackageTest, MissingParentsAreAddedFirst) {
  COSPackage* const leaf = EmptyParentPackage::registerPackage("one.two.three");
  ASSERT_NE(leaf, nullptr);
  EXPECT_EQ(leaf->name(), "one.two.three");
  EXPECT_EQ(leaf->parent(), COSPackage::getPackage("one.two"));
  EXPECT_EQ(leaf->parent()->parent(), COSPackage::getPackage("one"));
  EXPECT_EQ(EmptyParentPackage::registerPackage("one.four")->parent(),
            COSPackage::getPackage("one"));
}

class CountingPackage final : public EmptyParentPackage {
 public:
  CountingPackage(const char* name, int& count) : EmptyParentPackage(name), count_(count) {}
  void initializePackage(COSPackage*) override { ++count_; }

 private:
  int& count_;
};

TEST(EmptyParentPackageTest, AKnownPackageStaysAsItIs) {
  int count = 0;
  COSPackage* const first =
      EmptyParentPackage::registerPackage(std::make_unique<CountingPackage>("known", count));
  EXPECT_EQ(EmptyParentPackage::registerPackage(std::make_unique<CountingPackage>("known", count)),
            first);
  EXPECT_EQ(EmptyParentPackage::registerPackage("known"), first);
  EXPECT_EQ(count, 1);
}

constinit const vcos::factory::ClassTable kTried{.name = "tried.Thing"};

class TriedPackage final : public EmptyParentPackage {
 public:
  TriedPackage() : EmptyParentPackage("tried") {}
  void initializePackage(COSPackage* package) override {
    package->addClass(kTried);
    if (fails) vxErrMsgId("Garden", "Rain");
  }
  static inline bool fails = true;
};

TEST(EmptyParentPackageTest, APlainParentThatCouldNotBeFilledIsFilledLater) {
  COSPackage* const package = EmptyParentPackage::registerPackage("tried");
  const auto fill = [] {
    return EmptyParentPackage::registerPackage(std::make_unique<TriedPackage>());
  };
  expectHostError("Garden:Rain", fill);
  EXPECT_TRUE(package->classNames().empty());
  TriedPackage::fails = false;
  EXPECT_EQ(fill(), package);
  EXPECT_EQ(package->classNames(), std::vector<std::string>{"tried.Thing"});
}

TEST(EmptyParentPackageTest, ANameThatIsNoneIsRefused) {
  expectHostError("Vexal:class:InvalidName", [] { EmptyParentPackage::registerPackage("bad..x"); });
  expectHostError("Vexal:class:InvalidName", [] { EmptyParentPackage::registerPackage(""); });
}

}  // namespace
}  // namespace mf::zero::mi
