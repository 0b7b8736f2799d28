// Elements of every class, property by property: what a new one holds, and what each kind
// of property does with a value, by reflection and through a builder.
#include <map>
#include <set>

#include "framework/builder.h"
#include "framework/meta/registry.h"
#include "host/cell.h"
#include "host/distribution.h"
#include "host/object.h"
#include "package/class_table.h"
#include "package/meta_package_kxsim_design.h"
#include "package/package_test.h"
#include "support/framework_errors.h"

namespace kxsim::testing {
namespace {

namespace messages = mf0::messages;
using mf::zero::ModelElement;
using mf::zero::Value;
using mf::zero::meta::Class;
using mf::zero::meta::Enum;
using mf::zero::meta::MetaRegistry;
using mf::zero::meta::Property;
using mf::zero::testing::expectRaises;

enum class Kind { Real, Text, Flag, Array, Literal, Element };

struct Subject {
  ModelElement element;  ///< new, of the class
  Property property;
  const PropertyRow& row;

  bool isMany() const { return row.sort == kList || row.sort == kOwnedList; }
  bool isContainment() const { return row.sort == kOneOwned || row.sort == kOwnedList; }
  Kind kind() const {
    static const std::map<std::string, Kind> kinds{{"Real", Kind::Real},
                                                   {"String", Kind::Text},
                                                   {"Boolean", Kind::Flag},
                                                   {"VxArray", Kind::Array},
                                                   {"FigureType", Kind::Literal},
                                                   {"FigureDataSourceType", Kind::Literal},
                                                   {"DataProcessingType", Kind::Literal}};
    const auto known = kinds.find(row.type);
    return known == kinds.end() ? Kind::Element : known->second;
  }
  std::string shown() const { return element->getPropertyValue(property).describe(); }
  /// What a new element shows.
  std::string shownAtFirst() const {
    if (row.defaultValue && kind() == Kind::Text) return '"' + *row.defaultValue + '"';
    return row.defaultValue ? *row.defaultValue : shownEmpty();
  }
  /// What an element without a value shows.
  std::string shownEmpty() const {
    static const std::map<Kind, std::string> shown{{Kind::Real, "0"},     {Kind::Text, "\"\""},
                                                   {Kind::Flag, "false"}, {Kind::Array, "no array"},
                                                   {Kind::Literal, "0"},  {Kind::Element, "empty"}};
    return isMany() ? "[]" : shown.at(kind());
  }
};

class EveryClassTest : public PackageTest {
 protected:
  EveryClassTest() { MetaPackageKxsim_design::getInstance(); }

  static const MetaRegistry& registry() { return MetaRegistry::getInstance(); }

  /// Calls `test(class, rows of all its properties)` for each concrete class.
  template <class Test>
  static void forEachClass(Test&& test) {
    std::map<std::string, const ClassRow*> byName;
    static const std::vector<PackageRow> table = packages();
    for (const PackageRow& package : table) {
      for (const ClassRow& row : package.classes) byName[row.name] = &row;
    }
    int classes = 0;
    for (const PackageRow& package : table) {
      for (const ClassRow& row : package.classes) {
        if (row.isAbstract) continue;
        SCOPED_TRACE(row.name);
        std::vector<const PropertyRow*> properties;
        for (const ClassRow* c = &row; c; c = byName[c->superclass]) {
          for (const PropertyRow& p : c->properties) {
            if (p.sort != kComputed) properties.push_back(&p);
          }
        }
        test(registry().findClass(package.path + '.' + row.name), properties);
        ++classes;
      }
    }
    EXPECT_EQ(classes, 31);
  }

  /// Calls `test(subject)` for each property of each concrete class, inherited ones included.
  template <class Test>
  void forEachProperty(Test&& test) {
    forEachClass([&](const Class& type, const std::vector<const PropertyRow*>& rows) {
      const ModelElement element = registry().createElement(type, model());
      for (const PropertyRow* row : rows) {
        SCOPED_TRACE(row->name);
        const Property property = element->getPropertyByIndex(row->index);
        ASSERT_TRUE(property);
        ASSERT_EQ(mf::zero::toUtf8(property.name()), row->name);
        test(Subject{element, property, *row});
      }
    });
  }

  ModelElement create(const std::string& qualifiedName) {
    return registry().createElement(registry().findClass(qualifiedName), model());
  }
  /// A new element that the property can hold.
  ModelElement elementFor(const Subject& subject) {
    if (subject.row.type == "ParameterSpace") return create("kxsim.design.Sequential");
    if (subject.row.type == "ParameterType") return create("kxsim.design.Variable");
    return create(subject.property.type().qualifiedName());
  }
  /// A host array that the property can hold.
  static vexal::ArrayPtr arrayFor(const Subject& subject) {
    if (subject.row.name == "Values") return vexal::createCell(1, 3);
    if (subject.row.name == "Distribution") return vexal::makeUniform(0, 1);
    if (subject.row.name == "SimState") return vexal::createObject(vexal::kModelSimStateClass);
    return vexal::createDouble(7);
  }
  /// A value that the property can hold and no new element holds.
  Value another(const Subject& subject) {
    if (!subject.isMany()) return anotherItem(subject);
    return Value::ofList({anotherItem(subject), anotherItem(subject)});
  }
  Value anotherItem(const Subject& subject) {
    switch (subject.kind()) {
      case Kind::Real: return 0.5;
      case Kind::Text: return u"\u00E4nders \U0001F680";
      case Kind::Flag: return subject.row.defaultValue != "true";
      case Kind::Array: return Value::ofArray(arrayFor(subject).get());
      case Kind::Literal: return Value(subject.property.type().as<Enum>()->info(), 3);
      case Kind::Element: return elementFor(subject);
    }
    return {};
  }

  static void expectHolds(const ModelElement& element, const Property& property,
                          const Value& expected) {
    const Value held = element->getPropertyValue(property);
    if (held.meta() == Value::metaOf<const vxArray*>()) {
      EXPECT_TRUE(vexal::equalContent(held.getValue<const vxArray*>(),
                                      expected.getValue<const vxArray*>()));
    } else {
      EXPECT_EQ(held, expected) << held.describe() << ", not " << expected.describe();
    }
  }
};

TEST_F(EveryClassTest, PropertiesHaveTheIndicesFromOneOnAndNoOthers) {
  forEachClass([&](const Class& type, const std::vector<const PropertyRow*>& rows) {
    const ModelElement element = registry().createElement(type, model());
    const int last = static_cast<int>(rows.size());
    std::set<Property> found;
    for (int index = 1; index <= last; ++index) found.insert(element->getPropertyByIndex(index));
    EXPECT_EQ(found.size(), rows.size());
    EXPECT_FALSE(found.contains(Property()));
    for (const int index : {0, -1, last + 1, 1000}) {
      EXPECT_FALSE(element->getPropertyByIndex(index)) << index;
    }
  });
}

TEST_F(EveryClassTest, ANewElementHoldsTheDefaultsHoweverItWasMade) {
  forEachProperty([&](const Subject& subject) {
    EXPECT_EQ(subject.shown(), subject.shownAtFirst());
    EXPECT_EQ(subject.element->hasPropertyValue(subject.property),
              subject.row.defaultValue.value_or("false") != "false");
    const auto builder = subject.element->getMetaClass()->instantiateBuilder(model());
    EXPECT_EQ(builder->create()->getPropertyValue(subject.property).describe(),
              subject.shownAtFirst());
  });
}

TEST_F(EveryClassTest, AValueThatIsSetReadsBackAndIsToldOnce) {
  forEachProperty([&](const Subject& subject) {
    const Value value = another(subject);
    ChangeLog log(model());
    subject.element->setPropertyValue(subject.property, value);
    expectHolds(subject.element, subject.property, value);
    EXPECT_EQ(subject.element->hasPropertyValue(subject.property), value.describe() != "false");
    EXPECT_EQ(log.commits(), 1);
    const Lines lines = log.take();
    ASSERT_EQ(lines.size(), 1U);
    const std::string change = '.' + subject.row.name + ": " + subject.shownAtFirst() + " -> ";
    EXPECT_NE(lines[0].find(change), std::string::npos) << lines[0];
  });
}

TEST_F(EveryClassTest, EachPropertyHasAPlaceOfItsOwn) {
  forEachClass([&](const Class& type, const std::vector<const PropertyRow*>& rows) {
    const ModelElement element = registry().createElement(type, model());
    std::vector<std::pair<Property, Value>> given;
    for (const PropertyRow* row : rows) {
      const Subject subject{element, element->getPropertyByIndex(row->index), *row};
      Value value = another(subject);
      if (!subject.isMany() && subject.kind() == Kind::Real) value = row->index + 0.5;
      if (subject.kind() == Kind::Text) value = Value(mf::zero::toUtf16(row->name));
      element->setPropertyValue(subject.property, value);
      given.emplace_back(subject.property, value);
    }
    for (const auto& [property, value] : given) expectHolds(element, property, value);
  });
}

TEST_F(EveryClassTest, AnEqualValueChangesNothingAndIsNotTold) {
  forEachProperty([&](const Subject& subject) {
    if (subject.kind() == Kind::Array) return;  // an array is equal to none but itself
    const Value value = another(subject);
    subject.element->setPropertyValue(subject.property, value);
    ChangeLog log(model());
    subject.element->setPropertyValue(subject.property, value);
    EXPECT_EQ(log.commits(), 0);
  });
}

TEST_F(EveryClassTest, AValueOfAnotherKindIsRefusedAndNothingChanges) {
  const vexal::ArrayPtr cell = vexal::createCell(0, 0);
  const Enum figureType = registry().findEnum("kxsim.design.FigureType");
  const std::map<Kind, Value> samples{{Kind::Real, 0.5},
                                      {Kind::Text, u"0.5"},
                                      {Kind::Flag, true},
                                      {Kind::Array, Value::ofArray(cell.get())},
                                      {Kind::Literal, Value(figureType->info(), 1)},
                                      {Kind::Element, create("kxsim.design.Variable")}};
  forEachProperty([&](const Subject& subject) {
    subject.element->setPropertyValue(subject.property, another(subject));
    const std::string before = subject.shown();
    ChangeLog log(model());
    const auto refused = [&](const Value& value) {
      const std::string text = expectRaises<messages::CannotCastIncompatibleTypes>(
          [&] { subject.element->setPropertyValue(subject.property, value); });
      const std::string type = subject.property.type().qualifiedName();
      EXPECT_NE(text.find('\'' + type + '\''), std::string::npos) << text;
    };
    for (const auto& [kind, value] : samples) {
      if (kind != subject.kind() || subject.isMany()) refused(value);
      if (kind != subject.kind() || !subject.isMany()) refused(Value::ofList({value}));
    }
    EXPECT_EQ(subject.shown(), before);
    EXPECT_EQ(log.commits(), 0);
  });
}

TEST_F(EveryClassTest, ALiteralOfAnotherEnumerationIsRefused) {
  const Enum figureType = registry().findEnum("kxsim.design.FigureType");
  const Enum processing = registry().findEnum("kxsim.design.DataProcessingType");
  forEachProperty([&](const Subject& subject) {
    if (subject.kind() != Kind::Literal) return;
    const Enum& other = subject.row.type == "FigureType" ? processing : figureType;
    expectRaises<messages::CannotCastIncompatibleTypes>(
        [&] { subject.element->setPropertyValue(subject.property, Value(other->info(), 1)); });
    EXPECT_EQ(subject.shown(), subject.shownAtFirst());
  });
}

TEST_F(EveryClassTest, AnElementOfAnotherClassIsRefusedAndNoneOfItsListStays) {
  const Value job = create("kinetra.simmanager.mm.Job");
  forEachProperty([&](const Subject& subject) {
    if (subject.kind() != Kind::Element) return;
    const Value value = subject.isMany() ? Value::ofList({anotherItem(subject), job}) : job;
    expectRaises<messages::CannotAddIncompatibleTypes>(
        [&] { subject.element->setPropertyValue(subject.property, value); });
    EXPECT_EQ(subject.shown(), subject.shownAtFirst());
  });
}

TEST_F(EveryClassTest, AnEmptyValueReadsAsNothing) {
  forEachProperty([&](const Subject& subject) {
    if (subject.kind() == Kind::Array && subject.row.name != "Value") return;  // checked
    subject.element->setPropertyValue(subject.property, another(subject));
    subject.element->setPropertyValue(subject.property, Value());
    EXPECT_EQ(subject.shown(), subject.shownEmpty());
    EXPECT_FALSE(subject.element->hasPropertyValue(subject.property));
  });
}

TEST_F(EveryClassTest, ABuilderTakesEveryPropertyAndAnswersItsIndex) {
  forEachProperty([&](const Subject& subject) {
    const auto builder = subject.element->getMetaClass()->instantiateBuilder(model());
    const Value value = another(subject);
    EXPECT_EQ(builder->values().doSetOrAdd(subject.property, value), subject.row.index);
    expectHolds(builder->create(), subject.property, value);
  });
}

TEST_F(EveryClassTest, ABuilderTakesChildrenWhereTheyAreContainedOnly) {
  forEachProperty([&](const Subject& subject) {
    const auto builder = subject.element->getMetaClass()->instantiateBuilder(model());
    const auto addChild = [&] {
      auto child = subject.kind() == Kind::Element ? elementFor(subject) : subject.element;
      return builder->values().doSetOrAdd(subject.property,
                                          child->getMetaClass()->instantiateBuilder({}));
    };
    if (!subject.isContainment()) {
      expectRaises<messages::CannotCastIncompatibleTypes>(addChild);
      return;
    }
    EXPECT_EQ(addChild(), subject.row.index);
    EXPECT_EQ(addChild(), subject.row.index);
    const ModelElement parent = builder->create();
    const Value held = parent->getPropertyValue(subject.property);
    EXPECT_EQ(held.items().size(), subject.isMany() ? 2U : 0U);
    const Value child = subject.isMany() ? held.items()[1] : held;
    EXPECT_EQ(child.getValue<ModelElement>()->getOwner(), parent);
  });
}

TEST_F(EveryClassTest, APropertyOfAnotherClassIsLeftAlone) {
  const ModelElement job = create("kinetra.simmanager.mm.Job");
  const ModelElement figure = create("kxsim.design.Figure");
  forEachClass([&](const Class& type, const auto&) {
    const ModelElement& other = type == figure->getMetaClass() ? job : figure;
    const Property property = other->getPropertyByIndex(1);
    const Value value = other->getPropertyValue(property);
    const auto builder = type->instantiateBuilder(model());
    EXPECT_EQ(builder->values().doSetOrAdd(property, value), -1);
    EXPECT_EQ(builder->values().doSetOrAdd(property, type->instantiateBuilder({})), -1);
    const ModelElement element = builder->create();
    expectRaises<messages::NoSuchProperty>([&] { element->getPropertyValue(property); });
    expectRaises<messages::NoSuchProperty>([&] { element->setPropertyValue(property, value); });
  });
}

TEST_F(EveryClassTest, ABuilderWithoutAModelCreatesNothing) {
  forEachClass([&](const Class& type, const auto&) {
    const auto builder = type->instantiateBuilder({});
    expectRaises<messages::CannotCreateWithoutModel>([&] { builder->create(); });
    builder->setModel(model());
    EXPECT_EQ(builder->create()->getMetaClass(), type);
  });
}

TEST_F(EveryClassTest, AProxyRefusesEveryChangeAndStaysAProxy) {
  forEachProperty([&](const Subject& subject) {
    const ModelElement proxy =
        model()->createProxy(subject.element->getMetaClass(), mf::zero::generateNewUuid());
    const Value value = another(subject);
    expectRaises<messages::CannotModifyProxy>(
        [&] { proxy->setPropertyValue(subject.property, value); });
    EXPECT_TRUE(proxy->isProxy());
    expectRaises<messages::CannotResolveProxy>([&] { proxy->getPropertyValue(subject.property); });
  });
}

TEST_F(EveryClassTest, TheNumberOfIterationsIsReadOnly) {
  const Property property =
      registry().findClass("kxsim.design.ParameterSpace")->findProperty(u"NumIterations");
  for (const char* name :
       {"Exhaustive", "Sequential", "RandomParameterSpace", "ValueSetParameter"}) {
    const ModelElement space = create(std::string("kxsim.design.") + name);
    const double iterations = space->getPropertyValue(property).getValue<double>();
    EXPECT_EQ(iterations, std::string(name) == "Exhaustive" ? 1.0 : 0.0);
    const auto refused = [](auto&& action) {
      const std::string text = expectRaises<messages::CannotSetReadOnlyProperty>(action);
      EXPECT_NE(text.find("'kxsim.design.ParameterSpace.NumIterations'"), std::string::npos);
    };
    refused([&] { space->setPropertyValue(property, iterations); });
    const auto builder = space->getMetaClass()->instantiateBuilder(model());
    refused([&] { builder->values().doSetOrAdd(property, iterations); });
  }
}

}  // namespace
}  // namespace kxsim::testing
