// The meta elements: what they tell of the classes, and how they behave as elements themselves.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "framework/change_set.h"
#include "framework/meta/identity.h"
#include "framework/meta/registry.h"
#include "framework/model_impl.h"
#include "support/framework_errors.h"

namespace mf::zero::meta {
namespace {

namespace messages = mf0::messages;
using testing::expectRaises;

class MetaTest : public ::testing::Test {
 protected:
  MetaRegistry& registry_ = MetaRegistry::getInstance();
  Model model_ = Model::create();
};

TEST(NameUuidTest, NamesGiveTheVersion3IdentitiesThatOtherToolsGive) {
  EXPECT_EQ(identityOf("kxsim.design.Figure").toString(), "8110d9ab-9367-3229-b117-750403f61986");
  EXPECT_EQ(identityOf("").toString(), "81edc54c-daa0-35a3-b25d-ea5a988ba1d6");
  // One and two blocks of the digest, and lengths at their border.
  EXPECT_EQ(identityOf(std::string(39, 'a')).toString(), "33905aec-00aa-31c7-b8f7-7ea8832272bd");
  EXPECT_EQ(identityOf(std::string(40, 'a')).toString(), "43b1f884-1a6c-3fff-b0dd-8e6779db7466");
  EXPECT_EQ(identityOf(std::string(200, 'a')).toString(), "ba2b8aab-d339-3a22-8c95-d0f92146f883");
}

TEST_F(MetaTest, ElementsHandlesAndTheRegistryAgreeOnTheMetaClass) {
  const Class found = registry_.findClass("mf.zero.meta.Property");
  EXPECT_EQ(found, Property::metaClass());
  EXPECT_EQ(registry_.findClass("mf::zero::meta::Property"), found);
  EXPECT_EQ(registry_.findClass("http://schema.kxsim.org/mf0/zero/K2018b/mf.zero.meta#Property"),
            found);
  EXPECT_EQ(found->getMetaClass(), Class::metaClass());
  EXPECT_EQ(Class::metaClass()->getMetaClass(), Class::metaClass());
  EXPECT_EQ(Property::create(model_)->getMetaClass(), found);
  EXPECT_EQ(Builder(Property::classInfo(), model_).getMetaClass(), found);
  EXPECT_EQ(found->info(), &Property::classInfo());
}

TEST_F(MetaTest, TheRootOfAllClassesIsAbstractAndHasNoSuperclass) {
  const Class root = ModelElement::metaClass();
  EXPECT_EQ(root->getQualifiedName(), "mf.zero.ModelElement");
  EXPECT_TRUE(root->isAbstract());
  EXPECT_FALSE(root->getSuperclass());
  EXPECT_TRUE(root->getAllProperties().empty());
  EXPECT_TRUE(Class::metaClass()->isSubclassOf(root));
  EXPECT_TRUE(root->isSubclassOf(root));
  EXPECT_FALSE(root->isSubclassOf(Class::metaClass()));
  EXPECT_FALSE(root->isSubclassOf(Class()));
}

TEST_F(MetaTest, PropertiesAreFoundByNameAndIndexThroughTheSuperclasses) {
  const Class cls = Class::metaClass();
  std::vector<std::u16string> names;
  for (const Property& property : cls->getAllProperties()) names.push_back(property.name());
  EXPECT_EQ(names, (std::vector<std::u16string>{u"Name", u"QualifiedName", u"Package",
                                                u"Properties", u"ScopedName", u"IsAbstract",
                                                u"Superclass", u"Operations"}));
  EXPECT_EQ(cls->findProperty(u"Name").qualifiedName(), "mf.zero.meta.Type.Name");
  EXPECT_EQ(cls->findPropertyByIndex(3), cls->findProperty(u"Properties"));
  EXPECT_EQ(cls->findPropertyByIndex(3)->getOwningClass(), StructuredType::metaClass());
  EXPECT_FALSE(cls->findPropertyByIndex(0));
  EXPECT_FALSE(cls->findPropertyByIndex(8));
  EXPECT_FALSE(cls->findProperty(u"name"));

  EXPECT_EQ(cls->getPropertyByIndex(7), cls->findProperty(u"Operations"));
  EXPECT_FALSE(cls->getPropertyByIndex(-1));
  EXPECT_EQ(cls->findProperty(u"ScopedName")->getOwningProperty(), cls->findPropertyByIndex(3));
  EXPECT_FALSE(
      registry_.findRootPackage("http://schema.kxsim.org/mf0/zero/K2018b")->getOwningProperty());
}

TEST_F(MetaTest, ReflectionReadsAndWritesByMetaProperty) {
  const Property name = Property::metaClass()->findProperty(u"Name");
  const Property upper = Property::metaClass()->findProperty(u"Upper");
  const Property element = Property::create(model_);
  element->setPropertyValue(name, u"Width");
  EXPECT_EQ(element->getName(), u"Width");
  EXPECT_EQ(element->getPropertyValue(upper), Value(1));
  EXPECT_EQ(&infoOf(name), &TypedElement::Impl::kProperties[0]);

  expectRaises<messages::CannotUseEmptyHandle>([&] { element->getPropertyValue(Property()); });
  const std::string text = expectRaises<messages::NoSuchProperty>(
      [&] { element->getPropertyValue(Class::metaClass()->findProperty(u"ScopedName")); });
  EXPECT_NE(text.find("mf.zero.meta.Property"), std::string::npos) << text;
  EXPECT_NE(text.find("ScopedName"), std::string::npos) << text;
  // A property that nobody registered stands for no values.
  expectRaises<messages::NoSuchProperty>([&] { element->setPropertyValue(element, 1); });
}

TEST_F(MetaTest, AbstractClassesAreNotCreated) {
  for (const Class& abstract : {ModelElement::metaClass(), Type::metaClass(),
                                TypedElement::metaClass(), StructuredType::metaClass()}) {
    EXPECT_FALSE(registry_.findBuilderFactory(abstract));
    EXPECT_FALSE(registry_.findCollectionAccessor(abstract));
    expectRaises<messages::CannotCreateAbstractClass>(
        [&] { registry_.createElement(abstract, model_); });
    expectRaises<messages::CannotCreateAbstractClass>(
        [&] { abstract->instantiateBuilder(model_); });
  }
  EXPECT_EQ(model_->size(), 0U);
}

TEST_F(MetaTest, ConcreteClassesAreCreatedByClassAndByBuilder) {
  const uuid identity = generateNewUuid();
  const ModelElement made = registry_.createElement(Package::metaClass(), model_, identity);
  EXPECT_EQ(made.Uuid(), identity);
  EXPECT_TRUE(made.as<Package>());
  expectRaises<messages::CannotCreateDuplicateIdentity>(
      [&] { registry_.createElement(Package::metaClass(), model_, identity); });
  expectRaises<messages::CannotCreateWithoutModel>(
      [&] { registry_.createElement(Package::metaClass(), Model()); });

  const auto builder = EnumLiteral::metaClass()->instantiateBuilder(model_);
  builder->values().doSetOrAdd(EnumLiteral::metaClass()->findProperty(u"Value"), 7);
  EXPECT_EQ(builder->create().as<EnumLiteral>().value(), 7);
}

TEST_F(MetaTest, AccessorsGiveTheCollectionOfAnElement) {
  const Package package = Package::create(model_);
  package->getTypesMutable().add(Enum::create(model_));
  const CollectionAccessor accessor = registry_.findCollectionAccessor(Package::metaClass());
  const auto collectionAt = [&](const char16_t* name) {
    return accessor(package, Package::metaClass()->findProperty(name));
  };
  EXPECT_EQ(std::get<ReferenceCollection>(collectionAt(u"Types")).size(), 1U);
  EXPECT_EQ(std::get<ReferenceCollection>(collectionAt(u"Packages")).size(), 0U);
  expectRaises<messages::NoSuchProperty>([&] { collectionAt(u"Name"); });
  expectRaises<messages::NoSuchProperty>(
      [&] { accessor(package, Enum::metaClass()->findProperty(u"Literals")); });
}

TEST_F(MetaTest, TheRegisteredMetaModelIsFrozen) {
  const Class cls = Class::metaClass();
  expectRaises<messages::CannotModifyFrozenModel>([&] { cls->setName(u"Klass"); });
  expectRaises<messages::CannotModifyFrozenModel>([&] { cls->destroy(); });
  EXPECT_EQ(cls.name(), u"Class");
}

TEST_F(MetaTest, PackagesOwnWhatIsInThem) {
  const Package root = Package::create(model_);
  const Package outer = Package::create(model_);
  const Package inner = Package::create(model_);
  outer->setName(u"outer");
  inner->setName(u"inner");
  outer->setParent(root);
  inner->setParent(outer);
  EXPECT_EQ(inner->getPath(), "outer.inner");
  EXPECT_EQ(root->findPackage(u"outer"), outer);
  EXPECT_FALSE(root->findPackage(u"inner"));

  const Class cls = Class::create(model_);
  cls->setName(u"Thing");
  cls->setPackage(outer);
  const Property property = Property::create(model_);
  property->setName(u"Size");
  property->setOwningClass(cls);
  const Operation operation = Operation::create(model_);
  operation->setName(u"grow");
  operation->setOwningClass(cls);
  EXPECT_EQ(outer->findType(u"Thing"), cls);
  EXPECT_EQ(cls->findOperation(u"grow"), operation);
  EXPECT_EQ(property->getPropertyValue(Property::metaClass()->findProperty(u"Class")), Value(cls));
  cls->setPackage(inner);
  EXPECT_EQ(cls->getPackage(), inner);
  EXPECT_FALSE(outer->hasTypes());

  outer->destroy();
  EXPECT_FALSE(property.isValid() || operation.isValid() || cls.isValid() || inner.isValid());
  EXPECT_EQ(model_->size(), 1U);
}

TEST_F(MetaTest, FreshPropertiesHoldOneValueAndHaveNoDefault) {
  const Property property = Property::create(model_);
  EXPECT_EQ(property->getLower(), 1);
  EXPECT_EQ(property->getUpper(), 1);
  EXPECT_FALSE(property->isMany());
  EXPECT_FALSE(property->getDefaultValue());
  property->setDefaultValue(u"");
  EXPECT_EQ(property->getDefaultValue(), u"");
  property->setDefaultValue(std::nullopt);
  EXPECT_FALSE(property->getDefaultValue());
}

TEST_F(MetaTest, EnumerationsFindTheirLiteralsByNameAndValue) {
  const Enum flags = enumOf(EnumTraits<ValueFlags>::info());
  EXPECT_EQ(registry_.findEnum("mf.zero.meta.ValueFlags"), flags);
  EXPECT_EQ(flags->getUnderlyingType(), registry_.primitiveType("Integer"));
  EXPECT_EQ(flags->findLiteral(u"Many").value(), 2);
  EXPECT_EQ(flags->findLiteral(1).name(), u"Single");
  EXPECT_EQ(flags->findLiteral(1)->getEnum(), flags);
  EXPECT_FALSE(flags->findLiteral(0));
  EXPECT_FALSE(flags->findLiteral(u"many"));
}

class NameLength final : public AbstractMethodInvoker {
 public:
  Value invoke(const ModelElement& element) const override {
    return static_cast<std::int32_t>(element.as<Package>().name().size());
  }
};

TEST_F(MetaTest, OperationsAreInvokedOnElementsOfTheirClassOnly) {
  const Package package = Package::create(model_);
  package->setName(u"four");
  const Operation operation = Operation::create(model_);
  expectRaises<messages::NoSuchElement>([&] { operation->invoke(package); });
  operation->setInvoker(std::make_unique<NameLength>());
  EXPECT_EQ(operation->invoke(package), Value(4));
  expectRaises<messages::CannotUseEmptyHandle>([&] { operation->invoke(ModelElement()); });
  package->destroy();
  expectRaises<messages::CannotUseDestroyedElement>([&] { operation->invoke(package); });
}

TEST_F(MetaTest, ObserversAreToldTheMetaPropertyThatChanged) {
  const Package package = Package::create(model_);
  std::vector<std::string> changed;
  const Subscription subscription = model_->observe([&](const ChangeSet& changes) {
    for (const Change& change : changes) changed.push_back(change.metaProperty().qualifiedName());
  });
  package->setUri("urn:x");
  EXPECT_EQ(changed, std::vector<std::string>{"mf.zero.meta.Package.Uri"});
}

TEST_F(MetaTest, DescriptionsThatNobodyRegistersAreRefused) {
  static constinit const ClassInfo kStray = {.name = u"Stray",
                                             .qualifiedName = "test.Stray",
                                             .scopedName = "test::Stray",
                                             .identity = {},
                                             .isAbstract = true,
                                             .super = nullptr,
                                             .properties = {},
                                             .operations = {},
                                             .firstIndex = 1,
                                             .indexCount = 0,
                                             .native = {}};
  const std::string text = expectRaises<messages::NoSuchType>([] { classOf(kStray); });
  EXPECT_NE(text.find("test.Stray"), std::string::npos) << text;
}

}  // namespace
}  // namespace mf::zero::meta
