// The whole registration, class by class, against a table that is kept by hand.
#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "framework/messages.h"
#include "framework/meta/registry.h"
#include "framework/mi/host_boundary.h"
#include "framework/model_impl.h"
#include "package/class_table.h"
#include "package/meta_package_kxsim_design.h"
#include "support/framework_errors.h"

namespace mf::zero::meta {
namespace {

namespace messages = mf0::messages;
using kxsim::MetaPackageKxsim_design;
using kxsim::testing::ClassRow;
using kxsim::testing::PackageRow;
using kxsim::testing::packages;
using kxsim::testing::PropertyRow;
using testing::expectRaises;

constexpr std::string_view kRootPath = "/mf0/kxsim_design/K2018b";
constexpr uuid kRoot = uuid::parse("6c1bc9dd-cf01-3f75-81ed-01adb1bd4891").value();

class RegistrationTest : public ::testing::Test {
 protected:
  RegistrationTest() { mi::attachToHost(); }

  std::string uriOf(const std::string& path) const {
    std::string uri(kSchemaBase);
    uri += kRootPath;
    return path.empty() ? uri : uri + '/' + path;
  }
  template <class Check>
  void forEachClass(Check check) {
    for (const PackageRow& package : packages()) {
      for (const ClassRow& row : package.classes) {
        const std::string name = package.path + '.' + row.name;
        SCOPED_TRACE(name);
        const Class cls = registry_.findClass(name);
        ASSERT_TRUE(cls) << "not registered";
        check(cls, row, name);
      }
    }
  }

  MetaRegistry& registry_ = MetaRegistry::getInstance();
};

// What the registry holds of one property, as a row of the table.
PropertyRow rowOf(const Property& property) {
  const bool isMany = property->isMany();
  using namespace kxsim::testing;
  const Sort sort = property->isDerived()       ? kComputed
                    : property->isContainment() ? (isMany ? kOwnedList : kOneOwned)
                                                : (isMany ? kList : kOne);
  const auto text = property->getDefaultValue();
  return {toUtf8(property.name()), property.index(), toUtf8(property.type().name()), sort,
          text ? std::optional(toUtf8(*text)) : std::nullopt};
}

void expectConsistentFlags(const Property& property) {
  SCOPED_TRACE(property.qualifiedName());
  const bool isMany = property->isMany();
  const bool isComputed = property.name() == u"NumIterations";
  EXPECT_TRUE(property->isOrdered());
  EXPECT_EQ(property->isUnique(), !isMany);
  EXPECT_EQ(property->getUpper(), isMany ? kUnbounded : 1);
  EXPECT_TRUE(property->isQualificationUnique());
  EXPECT_EQ(property->isReadOnly(), isComputed);
  EXPECT_EQ(property->isDerived(), isComputed);
  EXPECT_EQ(property->isTransient(), isComputed);
}

TEST_F(RegistrationTest, PackagesStandInOrderUnderTheRoot) {
  MetaPackageKxsim_design::getInstance();
  const Package root = registry_.findRootPackage(uriOf(""));
  ASSERT_TRUE(root);
  EXPECT_EQ(root.Uuid(), kRoot);
  EXPECT_EQ(root.name(), u"");
  std::size_t classCount = 0;
  for (const PackageRow& row : packages()) {
    SCOPED_TRACE(row.path);
    const Package package = registry_.findPackage(uriOf(row.path));
    ASSERT_TRUE(package);
    EXPECT_EQ(toUtf8(package.name()), row.name);
    EXPECT_EQ(package->getPath(), row.path);
    EXPECT_EQ(package->getParent(), registry_.findPackage(uriOf(row.parent)));
    std::vector<std::string> names;
    for (const Type& type : package->getTypes()) {
      if (type.as<Class>()) names.push_back(toUtf8(type.name()));
    }
    std::vector<std::string> expected;
    for (const ClassRow& cls : row.classes) expected.push_back(cls.name);
    EXPECT_EQ(names, expected);
    classCount += names.size();
  }
  EXPECT_EQ(classCount, 36U);
  EXPECT_EQ(root->getPackages().size(), 2U);
}

TEST_F(RegistrationTest, EveryClassIsFoundByItsNames) {
  MetaPackageKxsim_design::getInstance();
  forEachClass([&](const Class& cls, const ClassRow& row, const std::string& name) {
    EXPECT_EQ(toUtf8(cls.name()), row.name);
    EXPECT_EQ(cls.qualifiedName(), name);
    EXPECT_EQ(cls->isAbstract(), row.isAbstract);
    EXPECT_EQ(toUtf8(cls->getSuperclass().name()), row.superclass);
    std::string scoped;
    for (const char c : name) c == '.' ? scoped += "::" : scoped += c;
    EXPECT_EQ(cls->getScopedName(), scoped);
    EXPECT_EQ(registry_.findClass(scoped), cls);
    EXPECT_EQ(registry_.findClass(cls->getPackage().uri() + '#' + row.name), cls);
  });
}

TEST_F(RegistrationTest, EveryPropertyIsRegisteredAsTheTableSays) {
  MetaPackageKxsim_design::getInstance();
  forEachClass([&](const Class& cls, const ClassRow& row, const std::string&) {
    std::vector<PropertyRow> rows;
    for (const Property& property : cls->getProperties()) {
      rows.push_back(rowOf(property));
      expectConsistentFlags(property);
      EXPECT_EQ(property->getOwningClass(), cls);
      const Property expected = property.index() == 0 ? Property() : property;
      EXPECT_EQ(cls->findPropertyByIndex(property.index()), expected);
    }
    EXPECT_EQ(rows, row.properties);
  });
}

TEST_F(RegistrationTest, ConcreteClassesAreCreatedAbstractOnesAreNot) {
  MetaPackageKxsim_design::getInstance();
  const Model model = Model::create();
  std::size_t created = 0;
  forEachClass([&](const Class& cls, const ClassRow& row, const std::string&) {
    if (row.isAbstract) {
      EXPECT_FALSE(registry_.findBuilderFactory(cls));
      expectRaises<messages::CannotCreateAbstractClass>(
          [&] { registry_.createElement(cls, model); });
      return;
    }
    const uuid identity = generateNewUuid();
    const ModelElement element = registry_.createElement(cls, model, identity);
    EXPECT_EQ(element.Uuid(), identity);
    EXPECT_EQ(element->getMetaClass(), cls);
    ++created;
  });
  EXPECT_EQ(created, 31U);
  EXPECT_EQ(model->size(), 31U);
}

TEST_F(RegistrationTest, AccessorsReachEveryCollection) {
  MetaPackageKxsim_design::getInstance();
  const Model model = Model::create();
  forEachClass([&](const Class& cls, const ClassRow& row, const std::string&) {
    if (row.isAbstract) return;
    const ModelElement element = registry_.createElement(cls, model);
    const CollectionAccessor accessor = registry_.findCollectionAccessor(cls);
    for (const Property& property : cls->getAllProperties()) {
      if (!property->isMany()) continue;
      const Collection collection = accessor(element, property);
      EXPECT_EQ(std::holds_alternative<ReferenceCollection>(collection),
                bool(property.type().as<Class>()));
      std::visit([](const auto& items) { EXPECT_TRUE(items.empty()); }, collection);
    }
  });
}

TEST_F(RegistrationTest, EnumerationsKeepTheirNumbers) {
  MetaPackageKxsim_design::getInstance();
  using Names = std::vector<std::u16string>;
  const std::map<std::string, Names> expected = {
      {"DataProcessingType", {u"End", u"Min", u"Max", u"Mean", u"Trace"}},
      {"FigureDataSourceType", {u"Default", u"Parameter", u"Output"}},
      {"FigureType", {u"ScatterPlot", u"SurfPlot", u"Histogram", u"CustomPlot"}}};
  Names order;
  for (const Type& type : registry_.findPackage(uriOf("kxsim.design"))->getTypes()) {
    if (type.as<Enum>()) order.push_back(type.name());
  }
  EXPECT_EQ(order, (Names{u"DataProcessingType", u"FigureDataSourceType", u"FigureType"}));
  for (const auto& [name, literals] : expected) {
    SCOPED_TRACE(name);
    const Enum enumeration = registry_.findEnum("kxsim.design." + name);
    ASSERT_TRUE(enumeration);
    EXPECT_EQ(enumeration->getUnderlyingType(), registry_.primitiveType("Integer"));
    Names found;
    for (const EnumLiteral& literal : enumeration->getLiterals()) {
      found.push_back(literal.name());
      EXPECT_EQ(literal.value(), static_cast<std::int32_t>(found.size()));
    }
    EXPECT_EQ(found, literals);
    EXPECT_FALSE(enumeration->findLiteral(0));
    const auto serializer = PropertySerializerRegistry::getInstance().findSerializer(enumeration);
    ASSERT_TRUE(serializer);
    EXPECT_EQ(serializer->toText(serializer->fromText(toUtf8(literals.back()))),
              toUtf8(literals.back()));
  }
}

TEST_F(RegistrationTest, OperationsOfAParameterSpaceAreAbstractAndCallable) {
  MetaPackageKxsim_design::getInstance();
  const Class space = registry_.findClass("kxsim.design.ParameterSpace");
  ASSERT_EQ(space->getOperations().size(), 2U);
  const Operation create = space->getOperations().at(0);
  EXPECT_EQ(create.name(), u"createIterations");
  EXPECT_TRUE(create->isPublic());
  EXPECT_EQ(create.type(), registry_.findClass("kxsim.design.Iteration"));
  EXPECT_EQ(create->getLower(), 0);
  EXPECT_EQ(create->getUpper(), kUnbounded);
  const Operation count = space->getOperations().at(1);
  EXPECT_EQ(count.name(), u"getActualNumIterations");
  EXPECT_FALSE(count->isPublic());
  EXPECT_EQ(count.type(), registry_.primitiveType("Real"));
  EXPECT_EQ(count->getLower(), 1);
  EXPECT_EQ(count->getUpper(), 1);
  for (const Operation& operation : {create, count}) {
    EXPECT_TRUE(operation->isAbstract());
    EXPECT_FALSE(operation->isStatic() || operation->isEvent());
  }

  const Model model = Model::create();
  const ModelElement sequential =
      registry_.createElement(registry_.findClass("kxsim.design.Sequential"), model);
  EXPECT_EQ(count->invoke(sequential), Value(0.0));
  const ModelElement job =
      registry_.createElement(registry_.findClass("kinetra.simmanager.mm.Job"), model);
  expectRaises<messages::CannotCastIncompatibleTypes>([&] { count->invoke(job); });
}

TEST_F(RegistrationTest, IdentitiesStayAsTheyAre) {
  MetaPackageKxsim_design::getInstance();
  const auto identityOf = [&](const char* name) {
    return registry_.findType(name).Uuid().toString();
  };
  EXPECT_EQ(identityOf("kinetra.simmanager.mm.Job"), "bc026d1f-d252-355b-91a0-5b51270c43f5");
  EXPECT_EQ(identityOf("kxsim.design.Figure"), "8110d9ab-9367-3229-b117-750403f61986");
  EXPECT_EQ(identityOf("kxsim.design.FigureType"), "74d410bd-cb8f-34f7-b302-934a1377b101");
  const Class cls = registry_.findClass("kxsim.design.ParameterSpace");
  EXPECT_EQ(cls->findProperty(u"NumIterations").Uuid().toString(),
            "58777571-867d-3eaf-af96-53aba27d7094");
  EXPECT_EQ(cls->findOperation(u"createIterations").Uuid().toString(),
            "12840c42-2ea0-31ac-8e8c-e0cb7b1809c3");
  EXPECT_EQ(registry_.findPackage(uriOf("kxsim.design")).Uuid().toString(),
            "5fc9f3a5-25d7-303c-bee1-f4f2576c578e");
}

TEST_F(RegistrationTest, ASecondInitializationLeavesOneCompleteRegistration) {
  MetaPackageKxsim_design& package = MetaPackageKxsim_design::getInstance();
  const std::size_t size = registry_.model()->size();
  const Class former = registry_.findClass("kxsim.design.Figure");
  const Model model = Model::create();
  const ModelElement figure = registry_.createElement(former, model);
  package.initialize();
  EXPECT_FALSE(former.isValid());
  EXPECT_EQ(registry_.model()->size(), size);
  std::size_t roots = 0;
  for (const ModelElement& root : registry_.model()->roots()) roots += root.Uuid() == kRoot;
  EXPECT_EQ(roots, 1U);
  EXPECT_EQ(registry_.findRootPackage(uriOf("")), registry_.model()->findElement(kRoot));
  forEachClass([&](const Class& cls, const ClassRow& row, const std::string&) {
    EXPECT_TRUE(cls.isValid());
    EXPECT_EQ(cls->getProperties().size(), row.properties.size());
  });
  // Elements made before go on with the new meta elements.
  EXPECT_EQ(figure->getMetaClass(), registry_.findClass("kxsim.design.Figure"));
}

TEST_F(RegistrationTest, AFailingSecondInitializationKeepsTheFirst) {
  MetaPackageKxsim_design& package = MetaPackageKxsim_design::getInstance();
  const Class former = registry_.findClass("kxsim.design.Figure");
  registry_.unregisterPrimitiveType("VxArray");
  const std::string text = expectRaises<messages::NoSuchType>([&] { package.initialize(); });
  EXPECT_NE(text.find("'VxArray'"), std::string::npos) << text;
  EXPECT_TRUE(former.isValid());
  EXPECT_TRUE(registry_.model()->isFrozen());
  EXPECT_EQ(registry_.findRootPackage(uriOf("")).Uuid(), kRoot);
  forEachClass([&](const Class& cls, const ClassRow& row, const std::string&) {
    EXPECT_TRUE(cls.isValid());
    EXPECT_EQ(cls->getProperties().size(), row.properties.size());
  });
  mi::attachToHost();
  package.initialize();
  EXPECT_FALSE(former.isValid());
}

}  // namespace
}  // namespace mf::zero::meta
