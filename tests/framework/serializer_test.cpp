// Values as text and back.
#include "framework/meta/serializer.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <string>

#include "framework/meta/registry.h"
#include "support/framework_errors.h"

namespace mf::zero::meta {
namespace {

namespace messages = mf0::messages;
using testing::expectRaises;

const PropertySerializer& of(ValueKind kind) { return *primitiveSerializer(kind); }

TEST(PropertySerializerTest, NumbersComeBackBitByBit) {
  using Limits = std::numeric_limits<double>;
  for (const double number :
       {0.0, -0.0, 0.1, 1.0 / 3, 1e23, 9007199254740993.0, Limits::max(), Limits::min(),
        Limits::denorm_min(), Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN()}) {
    const std::string text = of(ValueKind::kReal).toText(number);
    const double back = of(ValueKind::kReal).fromText(text).getValue<double>();
    EXPECT_EQ(std::bit_cast<std::uint64_t>(back), std::bit_cast<std::uint64_t>(number)) << text;
  }
  for (const std::int32_t number : {0, -1, std::numeric_limits<std::int32_t>::min()}) {
    const std::string text = of(ValueKind::kInteger).toText(number);
    EXPECT_EQ(of(ValueKind::kInteger).fromText(text), Value(number));
  }
  EXPECT_EQ(of(ValueKind::kInteger8).fromText("-128"), Value(std::int8_t{-128}));
}

TEST(PropertySerializerTest, TextsAreShortAndFitForReading) {
  EXPECT_EQ(of(ValueKind::kReal).toText(0.1), "0.1");
  EXPECT_EQ(of(ValueKind::kReal).toText(3.0), "3");
  EXPECT_EQ(of(ValueKind::kInteger8).toText(std::int8_t{65}), "65");
  EXPECT_EQ(of(ValueKind::kBoolean).toText(true), "true");
  EXPECT_EQ(of(ValueKind::kString).toText(u"d\u00fcse \U0001f600"), "d\u00fcse \U0001f600");
  EXPECT_EQ(of(ValueKind::kString).fromText("d\u00fcse"), Value(u"d\u00fcse"));
  EXPECT_EQ(of(ValueKind::kString).fromText(""), Value(u""));
  EXPECT_EQ(of(ValueKind::kReal).toText(Value()), "0");
}

TEST(PropertySerializerTest, AnythingButExactlyOneValueIsRefused) {
  for (const char* text : {"", " 1", "1 ", "1,5", "+1", "0x1p3", "1e999", "one"}) {
    expectRaises<messages::InvalidValue>([&] { of(ValueKind::kReal).fromText(text); });
  }
  for (const char* text : {"", "1.0", "2147483648", "--1"}) {
    expectRaises<messages::InvalidValue>([&] { of(ValueKind::kInteger).fromText(text); });
  }
  expectRaises<messages::InvalidValue>([] { of(ValueKind::kInteger8).fromText("128"); });
  for (const char* text : {"", "True", "1", "true "}) {
    expectRaises<messages::InvalidValue>([&] { of(ValueKind::kBoolean).fromText(text); });
  }
  expectRaises<messages::CannotCastIncompatibleTypes>([] { of(ValueKind::kReal).toText(1); });
  expectRaises<messages::CannotCastIncompatibleTypes>(
      [] { of(ValueKind::kInteger).toText(Value::ofList({1, 2})); });
}

TEST(PropertySerializerTest, LiteralsAreWrittenByName) {
  const EnumInfo& info = EnumTraits<ValueFlags>::info();
  const auto serializer = enumSerializer(info);
  EXPECT_EQ(serializer->toText(ValueFlags::kMany), "Many");
  EXPECT_EQ(serializer->fromText("Single"), Value(ValueFlags::kSingle));
  EXPECT_EQ(serializer->fromText(serializer->toText(Value(&info, 0))), Value(&info, 0));
  expectRaises<messages::InvalidValue>([&] { serializer->fromText("single"); });
  expectRaises<messages::InvalidValue>([&] { serializer->fromText(""); });
  const std::string text =
      expectRaises<messages::CannotCastIncompatibleTypes>([&] { serializer->toText(2); });
  EXPECT_NE(text.find("mf.zero.meta.ValueFlags"), std::string::npos) << text;
}

TEST(PropertySerializerTest, DeclaredDefaultsAreReadByTheTypeOfTheProperty) {
  EXPECT_EQ(valueFromText(TypedElement::Impl::kProperties[3], "-1"), Value(-1));
  EXPECT_EQ(valueFromText(Property::Impl::kProperties[1], "Many"), Value(ValueFlags::kMany));
  expectRaises<messages::InvalidValue>(
      [] { valueFromText(TypedElement::Impl::kProperties[1], "Real"); });
}

TEST(PropertySerializerRegistryTest, SerializersAreFoundByType) {
  const MetaRegistry& registry = MetaRegistry::getInstance();
  auto& serializers = PropertySerializerRegistry::getInstance();
  for (const char* name : {"Boolean", "Integer8", "Integer", "Real", "String", "StdString"}) {
    EXPECT_TRUE(serializers.findSerializer(registry.primitiveType(name))) << name;
  }
  const Type flags = registry.findType("mf.zero.meta.ValueFlags");
  EXPECT_EQ(serializers.findSerializer(flags)->toText(ValueFlags::kMany), "Many");
  EXPECT_FALSE(serializers.findSerializer(Class::metaClass()));
  expectRaises<messages::CannotUseEmptyHandle>([&] { serializers.findSerializer(Type()); });

  expectRaises<messages::CannotAddNonExistentObject>(
      [&] { serializers.registerSerializer(flags, nullptr); });
  serializers.unregisterSerializer(flags);
  EXPECT_FALSE(serializers.findSerializer(flags));
  serializers.registerSerializer(flags, enumSerializer(EnumTraits<ValueFlags>::info()));
  EXPECT_TRUE(serializers.findSerializer(flags));
}

}  // namespace
}  // namespace mf::zero::meta
