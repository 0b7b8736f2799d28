// Classes and packages as scripts ask for them, and what a bad description leads to.
#include "host/vcos/class.h"

#include <algorithm>

#include "host/object.h"
#include "host/vcos/method.h"
#include "host/vcos/package.h"
#include "support/host_errors.h"
#include "support/plant_test.h"

namespace vcos {
namespace {

using vexal::script::describeClass;
using vexal::script::Member;
using vexal::script::MemberKind;
using vexal::script::NameKind;
using vexal::script::valueOf;
using vexal::testing::expectHostError;

class ClassTest : public vexal::script::PlantTest {};

TEST_F(ClassTest, ADescriptionTellsAllThatAFrontEndNeeds) {
  const vexal::script::Class tank = valueOf(describeClass("plant.Tank"));
  EXPECT_EQ(tank.doc, "Holds a liquid.");
  EXPECT_EQ(tank.superclasses, std::vector<std::string>{"plant.Device"});
  EXPECT_EQ(tank.kind, ClassKind::Handle);
  EXPECT_TRUE(tank.isConstructible);
  const auto member = [&](std::string_view name) {
    const auto found = std::ranges::find(tank.members, name, &Member::name);
    return found == tank.members.end() ? Member() : *found;
  };
  EXPECT_EQ(tank.members.front().name, "Name");
  EXPECT_EQ(member("Name").definedBy, "plant.Device");
  EXPECT_EQ(member("Level").doc, "How full it is.");
  EXPECT_EQ(member("Level").dataType, "double scalar");
  EXPECT_TRUE(member("Level").isWritable);
  EXPECT_FALSE(member("Capacity").isWritable);
  EXPECT_EQ(member("destroy").dataType, "void");
  EXPECT_EQ(member("StaticName").kind, MemberKind::StaticMethod);
  const Member constructor = member("Tank");
  EXPECT_EQ(constructor.kind, MemberKind::Constructor);
  ASSERT_EQ(constructor.arguments.size(), 2U);
  EXPECT_EQ(constructor.arguments[1].name, "opt_level");
  EXPECT_TRUE(constructor.arguments[1].isOptional);
  ASSERT_EQ(member("drain").arguments.size(), 1U);
  EXPECT_EQ(member("drain").arguments[0].dataType, "double scalar");

  const vexal::script::Class kind = valueOf(describeClass("plant.Kind"));
  EXPECT_EQ(kind.kind, ClassKind::Value);
  ASSERT_EQ(kind.enumMembers.size(), 2U);
  EXPECT_EQ(kind.enumMembers[1].name, "Water");
  const vexal::script::Class normal = valueOf(describeClass("kxsim.dist.Normal"));
  EXPECT_FALSE(normal.kind);
  EXPECT_EQ(std::ranges::count(normal.members, "random", &Member::name), 1);
}

TEST_F(ClassTest, NamesAreFoundByWhatTheyStandFor) {
  using vexal::script::lookUp;
  EXPECT_EQ(*lookUp("plant"), NameKind::Package);
  EXPECT_EQ(*lookUp("plant.Tank"), NameKind::Class);
  EXPECT_EQ(*lookUp("kxsim.design.fullfact"), NameKind::Function);
  EXPECT_EQ(*lookUp("plant.Pump"), NameKind::Unknown);
  EXPECT_EQ(*lookUp(""), NameKind::Unknown);
  const std::vector<std::string> all{"plant.Device", "plant.Gauge", "plant.Kind", "plant.Tank",
                                     "plant.Valve"};
  EXPECT_EQ(*vexal::script::classes("plant"), all);
  EXPECT_EQ(std::ranges::count(*vexal::script::packages(), "plant"), 1);
  EXPECT_TRUE(vexal::script::packages("plant")->empty());
  EXPECT_TRUE(vexal::isSubclass("plant.Tank", "plant.Device"));
  EXPECT_EQ(COSClass::getClass(internal::makeInterned("plant.Tank"))->shortName(), "Tank");
}

class Described final : public COSClassInfo {
 public:
  Described(std::string_view name, ClassDefinition definition)
      : COSClassInfo(name), definition_(std::move(definition)) {}
  void initialize(ClassDefinition& definition) override {
    if (++asked == 1) throw std::runtime_error("not yet");
    definition = definition_;
  }
  int asked = 0;

 private:
  ClassDefinition definition_;
};

class Loader final : public COSPackageInfo {
 public:
  using COSPackageInfo::COSPackageInfo;
  bool attemptToLoadClass(COSPackage* package, std::string_view name) override {
    if (name == "Never") return false;
    ClassDefinition definition;
    if (name == "Cycle") definition.superclass = "loader.Cycle";
    if (name == "Orphan") definition.superclass = "loader.Never";
    if (name == "Twice") definition.properties = {{"A", "any"}, {"A", "any"}};
    if (name == "BadType") definition.properties = {{"A", "double round"}};
    package->addClass(std::make_unique<Described>("loader." + std::string(name), definition));
    return true;
  }
  bool attemptToLoadFunction(COSPackage* package, std::string_view name) override {
    if (name != "one") return false;
    vexal::defineFunction(package->name() + ".one", {{0, 0, 1}, [](vexal::Call& call) {
                                                       call.setOutput(0, vexal::createDouble(1));
                                                     }});
    return true;
  }
};

TEST_F(ClassTest, PackagesLoadWhatIsFirstAskedForAndBadDescriptionsAreRefusedEachTime) {
  COSPackage* const package = COSPackage::addPackage(std::make_unique<Loader>("loader"));
  EXPECT_EQ(COSClass::getClass("loader.Never"), nullptr);
  EXPECT_THROW(COSClass::getClass("loader.Fine"), std::runtime_error);
  EXPECT_NE(COSClass::getClass("loader.Fine"), nullptr);  // asked again after a failure
  EXPECT_EQ(vexal::doubleData(vexal::evaluate("loader.one", {}).get())[0], 1);
  const auto keyOf = [](std::string_view name) {
    EXPECT_THROW(COSClass::getClass(name), std::runtime_error);
    describeClass(name);
    return vexal::script::keyOf(describeClass(name));
  };
  EXPECT_EQ(keyOf("loader.Cycle"), "SuperclassCycle");
  EXPECT_EQ(keyOf("loader.Orphan"), "UnknownClass");
  EXPECT_EQ(keyOf("loader.Twice"), "NameExists");
  EXPECT_EQ(keyOf("loader.BadType"), "UnknownType");
  const factory::ClassTable taken{.name = "loader.Fine"};
  const factory::ClassTable elsewhere{.name = "plant.deeper.Fine"};
  expectHostError("Vexal:class:NameExists", [&] { package->addClass(taken); });
  expectHostError("Vexal:class:InvalidName", [&] { package->addClass(elsewhere); });
}

TEST_F(ClassTest, SignaturesAreReadFromWords) {
  const auto signature = COSMethodSignature::createMethodSignature(
      "model opt_init  opt_uuid", "plant.Tank", "plant.Device, any,any");
  EXPECT_EQ(signature.requiredInputs(), 1U);
  EXPECT_EQ(signature.inputs()[2].name, internal::makeInterned("opt_uuid"));
  const auto unnamed = COSMethodSignature::createMethodSignature("", "void", "plant.Tank, any", 1);
  EXPECT_EQ(unnamed.inputs().size(), 1U);
  EXPECT_EQ(unnamed.requiredInputs(), 0U);
  EXPECT_FALSE(unnamed.hasOutput());
  expectHostError("Vexal:class:InvalidSignature",
                  [] { COSMethodSignature::createMethodSignature("a b", "void", "any"); });
  expectHostError("Vexal:class:InvalidSignature",
                  [] { COSMethodSignature::createMethodSignature("opt_a b", "void", "any, any"); });
}

}  // namespace
}  // namespace vcos
