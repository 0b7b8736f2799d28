// Marshalers by themselves, and the registry that has them by type.
#include <gtest/gtest.h>

#include "framework/garden.h"
#include "framework/mi/empty_parent_package.h"
#include "framework/mi/enum_value_marshaler.h"
#include "framework/mi/meta_marshaler_registry.h"
#include "framework/mi/script_test.h"

namespace mf::zero::mi {
namespace {

using namespace vexal::testing;
using testing::Kind;
using testing::Record;
using vexal::ArrayPtr;

class MarshalerTest : public testing::ScriptTest {
 protected:
  static const PropertyInfo& property(std::u16string_view name) {
    return *Record::classInfo().findByName(name);
  }
  static const ValueMarshaler* marshalerOf(std::u16string_view name) {
    return MetaMarshalerRegistry::getInstance().getPropertyMarshaler(property(name));
  }
};

TEST_F(MarshalerTest, EveryTypeHasItsDataTypeAndKeepsItsValues) {
  const struct {
    const char16_t* property;
    const char* dataType;
    std::vector<Value> values;
  } cases[] = {
      {u"Flag", "logical scalar", {true, false}},
      {u"Small", "int32 scalar", {std::int8_t{-128}, std::int8_t{127}}},
      {u"Whole", "int32 scalar", {-5, 2147483647}},
      {u"Number", "double scalar", {0.5, -1e300}},
      {u"Text", "VcosFactoryString scalar", {u"gr\u00FCn", u""}},
      {u"Plain", "VcosFactoryString scalar", {u"b", u"a"}},
      {u"Choice", "garden.Kind scalar", {Kind::Fruit, Kind::Herb}},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.dataType);
    const ValueMarshaler* const marshaler = marshalerOf(each.property);
    ASSERT_NE(marshaler, nullptr);
    EXPECT_EQ(marshaler->dataType(), each.dataType);
    EXPECT_EQ(marshaler->dataType().data(), marshaler->dataType().data());
    for (const Value& value : each.values) {
      const ArrayPtr array = marshaler->toVxArray(value);
      EXPECT_TRUE(marshaler->isCorrectType(array.get()));
      EXPECT_EQ(marshaler->fromVxArray(array.get()), value);
      EXPECT_EQ(marshaler->toUnmanagedSetValue(array.get()), value);
    }
    const ArrayPtr row = marshaler->fromValueVector(each.values);
    EXPECT_EQ(vexal::elementCount(row.get()), each.values.size());
    EXPECT_EQ(marshaler->toValueVector(row.get()), each.values);
    EXPECT_FALSE(marshaler->isCorrectType(vexal::createCell(1, 1).get()));
    EXPECT_TRUE(marshaler->toValueVector(vexal::createDoubleMatrix(0, 0).get()).empty());
  }
  EXPECT_EQ(marshalerOf(u"Data")->dataType(), "any");
  const PropertyInfo& reference = *testing::Plant::classInfo().findByName(u"Bed");
  EXPECT_EQ(MetaMarshalerRegistry::getInstance().getPropertyMarshaler(reference), nullptr);
}

TEST_F(MarshalerTest, WhatIsNoMemberIsReadAsZero) {
  const PolicyBasedEnumValueMarshaler<Kind> marshaler;
  EXPECT_EQ(marshaler.fromVxArray(make("garden.Kind", {"Fruit"}).get()), Value(Kind::Fruit));
  for (const ArrayPtr& other : {vexal::createDouble(2), vexal::createChar("Fruit"), cell({1}),
                                vexal::createDoubleMatrix(0, 0)}) {
    EXPECT_EQ(marshaler.fromVxArray(other.get()), Value(Kind{}));
  }
}

TEST_F(MarshalerTest, ARegistrarTakesBackWhatItBrought) {
  const ValueMarshaler* const before = marshalerOf(u"Choice");
  const EnumInfo other{u"Other", "garden.Other", {}, {}};
  const PropertyInfo ofOther{u"X",    "garden.Other", ValueKind::kEnumeration, 0, 0, 0, {}, nullptr,
                             nullptr, &other};
  const auto& registry = MetaMarshalerRegistry::getInstance();
  {
    EmptyParentPackage::Registrar registrar;
    registrar.registerTypeMarshaler(other, std::make_unique<PolicyBasedEnumValueMarshaler<Kind>>());
    EXPECT_NE(registry.getPropertyMarshaler(ofOther), nullptr);
    registrar.unregisterTypeMarshaler(other);
    registrar.unregisterTypeMarshaler(other);
    EXPECT_EQ(registry.getPropertyMarshaler(ofOther), nullptr);
    registrar.registerTypeMarshaler(other, std::make_unique<PolicyBasedEnumValueMarshaler<Kind>>());
  }
  EXPECT_EQ(registry.getPropertyMarshaler(ofOther), nullptr);
  EXPECT_EQ(marshalerOf(u"Choice"), before);
}

}  // namespace
}  // namespace mf::zero::mi
