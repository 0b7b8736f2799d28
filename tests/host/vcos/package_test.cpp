// Packages of the class-object system.
#include "host/vcos/package.h"

#include <stdexcept>

#include "host/runtime.h"
#include "host/vcos/class.h"
#include "support/host_errors.h"

namespace vcos {
namespace {

using vexal::testing::expectHostError;

COSPackage* add(std::string name) {
  return COSPackage::addPackage(std::make_unique<COSPackageInfo>(std::move(name)));
}

TEST(PackageTest, APackageIsKnownByItsFullNameBelowItsParent) {
  EXPECT_EQ(COSPackage::getPackage("tree"), nullptr);
  COSPackage* const root = add("tree");
  COSPackage* const leaf = add("tree.leaf");
  EXPECT_EQ(COSPackage::getPackage("tree.leaf"), leaf);
  EXPECT_EQ(leaf->parent(), root);
  EXPECT_EQ(root->parent(), nullptr);
  EXPECT_EQ(COSPackage::getPackage("leaf"), nullptr);
  EXPECT_EQ(COSPackage::getPackage("tree.other"), nullptr);
}

TEST(PackageTest, BadNamesUnknownParentsAndSecondDefinitionsAreRefused) {
  for (const char* const name : {"", ".", "a.", ".a", "a..b"}) {
    expectHostError("Vexal:class:InvalidName", [&] { add(name); });
  }
  expectHostError("Vexal:class:UnknownParentPackage", [] { add("nowhere.below"); });
  COSPackage* const first = add("twice");
  expectHostError("Vexal:class:NameExists", [] { add("twice"); });
  EXPECT_EQ(COSPackage::getPackage("twice"), first);
}

class Failing : public COSPackageInfo {
 public:
  using COSPackageInfo::COSPackageInfo;
  void initializePackage(COSPackage* package) override {
    EXPECT_EQ(COSPackage::getPackage(name()), package);
    add(name() + ".inner");
    throw std::runtime_error("half way");
  }
};

TEST(PackageTest, AFailedInitialisationLeavesNothingBehind) {
  EXPECT_THROW(COSPackage::addPackage(std::make_unique<Failing>("failing")), std::runtime_error);
  EXPECT_EQ(COSPackage::getPackage("failing"), nullptr);
  EXPECT_EQ(COSPackage::getPackage("failing.inner"), nullptr);
  EXPECT_NE(add("failing"), nullptr);
}

constinit const factory::ClassTable kUsed{.name = "trial.Used", .kind = ClassKind::Value};
constinit const factory::ClassTable kUnused{.name = "trial.Unused"};

// Fails after it has added two classes and somebody has used one of them.
class Trial : public COSPackageInfo {
 public:
  explicit Trial(bool fails) : COSPackageInfo("trial"), fails_(fails) {}
  void initializePackage(COSPackage* package) override {
    package->addClass(kUsed);
    package->addClass(kUnused);
    EXPECT_NE(COSClass::getClass("trial.Used"), nullptr);
    if (fails_) throw std::runtime_error("half way");
  }

 private:
  bool fails_;
};

TEST(PackageTest, AFailedInitialisationCanBeMadeAgain) {
  EXPECT_THROW(COSPackage::addPackage(std::make_unique<Trial>(true)), std::runtime_error);
  const COSClass* const used = COSClass::getClass("trial.Used");  // its name is still known
  EXPECT_EQ(COSClass::getClass("trial.Unused"), nullptr);
  COSPackage* const package = add("trial");
  Trial fails(true), succeeds(false);
  EXPECT_THROW(package->initializeWith(fails), std::runtime_error);
  EXPECT_EQ(COSClass::getClass("trial.Unused"), nullptr);
  package->initializeWith(succeeds);
  EXPECT_EQ(COSClass::getClass("trial.Used"), used);
  EXPECT_EQ(package->classNames(), (std::vector<std::string>{"trial.Unused", "trial.Used"}));
  expectHostError("Vexal:class:NameExists", [&] { package->initializeWith(succeeds); });
  EXPECT_EQ(package->classNames().size(), 2U);
  expectHostError("Vexal:class:NameExists", [&] { package->addClass(kUsed); });
}

class Lazy : public COSPackageInfo {
 public:
  using COSPackageInfo::COSPackageInfo;
  bool attemptToLoadSubPackage(COSPackage* package, std::string_view wanted) override {
    ++asked;
    const std::string full = package->name() + '.' + std::string(wanted);
    EXPECT_EQ(COSPackage::getPackage(full), nullptr);  // does not ask again
    if (wanted != "late") return false;
    COSPackage::addPackage(std::make_unique<Lazy>(full));
    return true;
  }
  int asked = 0;
};

TEST(PackageTest, AParentMayLoadAPackageWhenItIsFirstAskedFor) {
  auto info = std::make_unique<Lazy>("lazy");
  const Lazy& lazy = *info;
  COSPackage::addPackage(std::move(info));
  COSPackage* const late = COSPackage::getPackage("lazy.late.late");
  ASSERT_NE(late, nullptr);
  EXPECT_EQ(late->parent(), COSPackage::getPackage("lazy.late"));
  EXPECT_EQ(COSPackage::getPackage("lazy.never"), nullptr);
  EXPECT_EQ(lazy.asked, 2);
}

TEST(PackageTest, ModulesRegisterOnceUnlessTheEmbedderSaysOtherwise) {
  EXPECT_FALSE(omGetVcosUsingUSM());
  omSetVcosUsingUSM(true);
  EXPECT_TRUE(omGetVcosUsingUSM());
  omSetVcosUsingUSM(false);
}

}  // namespace
}  // namespace vcos
