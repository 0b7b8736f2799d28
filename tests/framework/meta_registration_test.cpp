// Registration of a small module from tables: what is found afterwards, what a second
// registration replaces, and that a failing one leaves everything as it was.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>

#include "framework/change_set.h"
#include "framework/meta/identity.h"
#include "framework/meta/meta_package.h"
#include "framework/model_impl.h"
#include "support/framework_errors.h"

namespace mf::zero::meta {
namespace {

namespace messages = mf0::messages;
using testing::expectRaises;

constexpr std::string_view kUri = "http://schema.kxsim.org/mf0/shop/T1";
constexpr uuid kRoot = identityOf("test root");

// A package "shop" with "shop.parts": an abstract class with one property of each sort, an
// enumeration and an operation. "Host" stands for a type that need not be there.
extern const ClassInfo kPart;

constexpr LiteralInfo kColourLiterals[] = {{u"Red", 1, identityOf("shop.parts.Colour.Red")},
                                           {u"Blue", 2, identityOf("shop.parts.Colour.Blue")}};
constinit const EnumInfo kColour = {u"Colour", "shop.parts.Colour", identityOf("shop.parts.Colour"),
                                    kColourLiterals};

constinit const PropertyInfo kPartProperties[] = {
    {.name = u"Label",
     .type = "String",
     .kind = ValueKind::kString,
     .flags = kOrdered | kUnique,
     .index = 1,
     .offset = 0,
     .identity = identityOf("shop.parts.Part.Label"),
     .owner = &kPart,
     .defaultValue = "part"},
    {.name = u"Payload",
     .type = "Host",
     .kind = ValueKind::kArray,
     .flags = kOrdered | kUnique,
     .index = 2,
     .offset = 8,
     .identity = identityOf("shop.parts.Part.Payload"),
     .owner = &kPart},
    {.name = u"Parts",
     .type = "shop.parts.Part",
     .kind = ValueKind::kElement,
     .flags = kMany | kContainment | kOrdered,
     .index = 3,
     .offset = 16,
     .identity = identityOf("shop.parts.Part.Parts"),
     .owner = &kPart,
     .target = &kPart},
    {.name = u"Colour",
     .type = "shop.parts.Colour",
     .kind = ValueKind::kEnumeration,
     .flags = kOrdered | kUnique | kReadOnly | kDerived | kTransient,
     .index = 0,
     .offset = 0,
     .identity = identityOf("shop.parts.Part.Colour"),
     .owner = &kPart,
     .enumeration = &kColour},
};
constinit const OperationInfo kPartOperations[] = {{u"list", identityOf("shop.parts.Part.list"),
                                                    true, "shop.parts.Part", true,
                                                    [](const ElementImpl&) { return Value(); }}};
constinit const ClassInfo kPart = {.name = u"Part",
                                   .qualifiedName = "shop.parts.Part",
                                   .scopedName = "shop::parts::Part",
                                   .identity = identityOf("shop.parts.Part"),
                                   .isAbstract = true,
                                   .super = nullptr,
                                   .properties = kPartProperties,
                                   .operations = kPartOperations,
                                   .firstIndex = 1,
                                   .indexCount = 3,
                                   .native = {}};

constexpr const ClassInfo* kClasses[] = {&kPart};
constexpr const EnumInfo* kEnums[] = {&kColour};
constexpr PackageInfo kPackages[] = {{u"shop", "shop", -1, {}, {}},
                                     {u"parts", "shop.parts", 0, kClasses, kEnums}};

class ShopPackage : public AbstractMetaPackage {
 public:
  explicit ShopPackage(uuid root = kRoot, std::string_view path = "/mf0/shop/T1")
      : AbstractMetaPackage({root, path, kPackages}) {}
};

class MetaRegistrationTest : public ::testing::Test {
 protected:
  MetaRegistrationTest() { registry_.registerPrimitiveType("Host"); }
  ~MetaRegistrationTest() override {
    EXPECT_TRUE(registry_.model()->isFrozen());
    EXPECT_FALSE(registry_.model()->isInTransaction());
    forgetTheModule();
  }

  // As if the module had never been registered, for the next test.
  void forgetTheModule() {
    Registration registration(registry_);
    registry_.unregisterRootPackage(kUri);
    if (const Package root = rootElement()) root->destroy();
    registration.commit();
    for (const PropertyInfo& property : kPartProperties) property.meta.set(nullptr);
    for (const OperationInfo& operation : kPartOperations) operation.meta.set(nullptr);
    kPart.meta.set(nullptr);
    kColour.meta.set(nullptr);
  }
  Class part() const { return registry_.findClass("shop.parts.Part"); }
  Package rootElement() { return registry_.model()->findElement(kRoot).as<Package>(); }
  void expectNothingRegistered() {
    EXPECT_FALSE(rootElement());
    EXPECT_FALSE(registry_.findRootPackage(kUri));
    EXPECT_FALSE(part());
    EXPECT_FALSE(registry_.findEnum("shop.parts.Colour"));
    EXPECT_EQ(kPart.meta.get(), nullptr);
    EXPECT_EQ(kColour.meta.get(), nullptr);
  }

  MetaRegistry& registry_ = MetaRegistry::getInstance();
  ShopPackage shop_;
};

TEST_F(MetaRegistrationTest, PackagesAndTypesAreFoundByTheirNames) {
  shop_.initialize();
  const Package root = registry_.findRootPackage(kUri);
  EXPECT_EQ(root.Uuid(), kRoot);
  EXPECT_EQ(root.name(), u"");
  const Package parts = registry_.findPackage(std::string(kUri) + "/shop.parts");
  EXPECT_EQ(parts.name(), u"parts");
  EXPECT_EQ(parts->getParent(), registry_.findPackage(std::string(kUri) + "/shop"));
  EXPECT_EQ(parts->getParent()->getParent(), root);
  EXPECT_FALSE(registry_.findRootPackage(parts.uri()));

  EXPECT_EQ(part()->getPackage(), parts);
  EXPECT_EQ(part(), classOf(kPart));
  EXPECT_EQ(part(), registry_.findClass("shop::parts::Part"));
  EXPECT_EQ(part(), registry_.findClass(std::string(kUri) + "/shop.parts#Part"));
  EXPECT_EQ(part(), registry_.findType("shop.parts.Part"));
  EXPECT_EQ(registry_.findEnum("shop.parts.Colour"), enumOf(kColour));
  EXPECT_EQ(part()->getSuperclass(), ModelElement::metaClass());
  expectRaises<messages::CannotCreateAbstractClass>(
      [&] { registry_.createElement(part(), Model::create()); });
}

TEST_F(MetaRegistrationTest, EveryFactOfTheTablesArrives) {
  shop_.initialize();
  const Property label = part()->findProperty(u"Label");
  EXPECT_EQ(label->getDefaultValue(), u"part");
  EXPECT_TRUE(label->isOrdered() && label->isUnique() && label->isQualificationUnique());
  EXPECT_FALSE(label->isReadOnly() || label->isDerived() || label->isTransient());
  EXPECT_EQ(label->getLower(), 1);
  EXPECT_EQ(label.type(), registry_.primitiveType("String"));
  const Property payload = part()->findProperty(u"Payload");
  EXPECT_EQ(payload.type(), registry_.primitiveType("Host"));
  EXPECT_FALSE(payload->getDefaultValue());
  EXPECT_EQ(payload->getLower(), 0);
  const Property parts = part()->findProperty(u"Parts");
  EXPECT_EQ(parts.index(), 3);
  EXPECT_TRUE(parts->isMany() && parts->isContainment() && parts->isOrdered());
  EXPECT_FALSE(parts->isUnique());
  EXPECT_EQ(parts->getLower(), 0);
  EXPECT_EQ(parts->getUpper(), kUnbounded);
  EXPECT_EQ(parts.type(), part());
  const Property colour = part()->findProperty(u"Colour");
  EXPECT_TRUE(colour->isReadOnly() && colour->isDerived() && colour->isTransient());
  EXPECT_EQ(colour.type(), enumOf(kColour));
  EXPECT_EQ(infoOf(colour).name, u"Colour");

  const Operation list = part()->findOperation(u"list");
  EXPECT_TRUE(list->isPublic() && list->isAbstract() && list->hasInvoker());
  EXPECT_FALSE(list->isStatic() || list->isEvent());
  EXPECT_EQ(list.type(), part());
  EXPECT_EQ(list->getUpper(), kUnbounded);
  EXPECT_EQ(list.Uuid(), identityOf("shop.parts.Part.list"));
  EXPECT_EQ(enumOf(kColour)->findLiteral(2).Uuid(), identityOf("shop.parts.Colour.Blue"));
  EXPECT_EQ(
      PropertySerializerRegistry::getInstance().findSerializer(colour.type())->fromText("Blue"),
      Value(&kColour, 2));
}

TEST_F(MetaRegistrationTest, AMissingTypeFailsByNameAndLeavesNothing) {
  registry_.unregisterPrimitiveType("Host");
  const std::size_t before = registry_.model()->size();
  for (int attempt = 0; attempt < 2; ++attempt) {
    const std::string text = expectRaises<messages::NoSuchType>([&] { shop_.initialize(); });
    EXPECT_NE(text.find("'Host'"), std::string::npos) << text;
    expectNothingRegistered();
    EXPECT_EQ(registry_.model()->size(), before);
    EXPECT_TRUE(registry_.model()->isFrozen());
  }
  registry_.registerPrimitiveType("Host");
  shop_.initialize();
  EXPECT_TRUE(part());
}

TEST_F(MetaRegistrationTest, ASecondRegistrationReplacesTheFirst) {
  shop_.initialize();
  const std::size_t size = registry_.model()->size();
  const Class former = part();
  const Property formerLabel = former->findProperty(u"Label");
  ShopPackage again;  // from the same tables, as after loading the module anew
  again.initialize();
  EXPECT_FALSE(former.isValid());
  EXPECT_TRUE(part().isValid());
  EXPECT_EQ(classOf(kPart), part());
  EXPECT_EQ(registry_.findRootPackage(kUri), rootElement());
  EXPECT_TRUE(rootElement().isValid());
  EXPECT_EQ(registry_.model()->size(), size);
  expectRaises<messages::CannotUseDestroyedElement>([&] { infoOf(formerLabel); });
  shop_.initialize();
  EXPECT_EQ(registry_.model()->size(), size);
}

TEST_F(MetaRegistrationTest, AFailingSecondRegistrationKeepsTheFirst) {
  shop_.initialize();
  const std::size_t size = registry_.model()->size();
  const Class former = part();
  const Enum colour = enumOf(kColour);
  registry_.unregisterPrimitiveType("Host");
  expectRaises<messages::NoSuchType>([&] { shop_.initialize(); });

  EXPECT_EQ(part(), former);
  ASSERT_TRUE(former.isValid());
  EXPECT_EQ(classOf(kPart), former);
  EXPECT_EQ(registry_.findClass("shop::parts::Part"), former);
  EXPECT_EQ(registry_.findRootPackage(kUri), rootElement());
  EXPECT_EQ(former->getPackage()->getParent()->getParent(), rootElement());
  EXPECT_EQ(former->getProperties().size(), 4U);
  EXPECT_EQ(former->findProperty(u"Payload").type().name(), u"Host");
  EXPECT_EQ(colour->getLiterals().size(), 2U);
  EXPECT_TRUE(PropertySerializerRegistry::getInstance().findSerializer(colour));
  EXPECT_EQ(registry_.model()->size(), size);

  registry_.registerPrimitiveType("Host");
  shop_.initialize();
  EXPECT_FALSE(former.isValid());
  EXPECT_EQ(registry_.model()->size(), size);
}

TEST_F(MetaRegistrationTest, ElementsOutliveThePackageThatMadeThem) {
  {
    ShopPackage passing;
    passing.initialize();
  }
  EXPECT_EQ(classOf(kPart)->findProperty(u"Parts")->getQualifiedName(), "shop.parts.Part.Parts");
}

TEST_F(MetaRegistrationTest, AnotherModuleCannotTakeNamesOrIdentitiesThatAreInUse) {
  shop_.initialize();
  const Class former = part();
  ShopPackage rival(identityOf("rival"), "/mf0/rival/T1");
  expectRaises<messages::CannotCreateDuplicateIdentity>([&] { rival.initialize(); });
  EXPECT_EQ(part(), former);
  EXPECT_EQ(classOf(kPart), former);
  EXPECT_FALSE(registry_.findRootPackage("http://schema.kxsim.org/mf0/rival/T1"));
  expectRaises<messages::CannotCreateDuplicateIdentity>([&] {
    registry_.registerTypeNames(Class::metaClass(), "shop::parts::Part", "x.Y", "urn:x#Y");
  });
  EXPECT_FALSE(registry_.findClass("x.Y"));
}

TEST_F(MetaRegistrationTest, UnregisteringForgetsEveryNameButKeepsTheElements) {
  shop_.initialize();
  const Class former = part();
  registry_.unregisterRootPackage("urn:unknown");
  registry_.unregisterRootPackage(kUri);
  EXPECT_FALSE(part());
  EXPECT_FALSE(registry_.findClass("shop::parts::Part"));
  EXPECT_FALSE(registry_.findClass(std::string(kUri) + "/shop.parts#Part"));
  EXPECT_FALSE(registry_.findEnum("shop.parts.Colour"));
  EXPECT_FALSE(registry_.findPackage(std::string(kUri) + "/shop"));
  EXPECT_TRUE(former.isValid());
  registry_.registerRootPackage(rootElement());
  EXPECT_EQ(part(), former);
}

TEST_F(MetaRegistrationTest, ALockThatThisThreadHoldsIsASystemErrorNotAHang) {
  {
    const Registration open(registry_);
    try {
      shop_.initialize();
      ADD_FAILURE() << "no error";
    } catch (const std::system_error& error) {
      EXPECT_EQ(error.code(), std::errc::resource_deadlock_would_occur);
    }
  }
  expectNothingRegistered();
  shop_.initialize();
  EXPECT_TRUE(part());
}

TEST_F(MetaRegistrationTest, SomebodyElsesTransactionIsRefusedForItsEndWouldTakeThingsBack) {
  {
    const Transaction foreign = registry_.model()->beginTransaction();
    expectRaises<messages::CannotNestTransaction>([&] { shop_.initialize(); });
    expectRaises<messages::CannotNestTransaction>([&] { registry_.registerPrimitiveType("Own"); });
  }
  expectNothingRegistered();
  EXPECT_FALSE(registry_.findType("Own"));
  EXPECT_TRUE(registry_.model()->isFrozen());
  shop_.initialize();
  EXPECT_TRUE(part());
}

TEST_F(MetaRegistrationTest, OtherThreadsSeeCompleteRegistrationsOnly) {
  const auto seenElsewhere = [&](std::string_view name) {
    bool seen = false;
    std::thread([&] { seen = bool(registry_.findType(name)); }).join();
    return seen;
  };
  {
    Registration registration(registry_);
    registry_.registerPrimitiveType("Kept");
    EXPECT_TRUE(registry_.findType("Kept"));
    EXPECT_FALSE(seenElsewhere("Kept"));
    EXPECT_TRUE(seenElsewhere("Real"));
    registration.commit();
  }
  EXPECT_TRUE(seenElsewhere("Kept"));
  {
    const Registration abandoned(registry_);
    registry_.registerPrimitiveType("Dropped");
    registry_.unregisterPrimitiveType("Kept");
  }
  EXPECT_FALSE(registry_.findType("Dropped"));
  EXPECT_TRUE(registry_.findType("Kept"));
}

TEST_F(MetaRegistrationTest, AnObserverThatThrowsIsHeardAndTheRegistrationStays) {
  {
    const Subscription subscription =
        registry_.model()->observe([](const ChangeSet&) { throw std::runtime_error("observer"); });
    EXPECT_THROW(shop_.initialize(), std::runtime_error);
  }
  ASSERT_TRUE(part().isValid());
  EXPECT_EQ(classOf(kPart), part());
  shop_.initialize();
  EXPECT_TRUE(part().isValid());
}

}  // namespace
}  // namespace mf::zero::meta
