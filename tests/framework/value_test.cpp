// Values: what they hold, how they compare, what they refuse.
#include "framework/value.h"

#include <cmath>
#include <limits>
#include <type_traits>

#include "framework/element.h"
#include "host/array.h"
#include "support/framework_errors.h"
#include "support/host_leak_test.h"

namespace mf::zero {

enum class Colour : std::int32_t { Red = 1, Blue = 2 };
enum class Size : std::int32_t { Small = 1 };

constexpr LiteralInfo kColours[] = {{u"Red", 1, {}}, {u"Blue", 2, {}}};
constexpr LiteralInfo kSizes[] = {{u"Small", 1, {}}};
constinit const EnumInfo kColour{u"Colour", "test.Colour", {}, kColours};
constinit const EnumInfo kSize{u"Size", "test.Size", {}, kSizes};

template <>
struct EnumTraits<Colour> {
  static const EnumInfo& info() { return kColour; }
};
template <>
struct EnumTraits<Size> {
  static const EnumInfo& info() { return kSize; }
};

namespace {

using mf0::messages::CannotCastIncompatibleTypes;
using testing::expectRaises;

class ValueTest : public vexal::testing::HostLeakTest {};

TEST_F(ValueTest, EachTypeReadsBackAsItself) {
  EXPECT_EQ(Value(true).getValue<bool>(), true);
  EXPECT_EQ(Value(std::int8_t{-128}).getValue<std::int8_t>(), -128);
  EXPECT_EQ(Value(std::numeric_limits<std::int32_t>::min()).getValue<std::int32_t>(),
            std::numeric_limits<std::int32_t>::min());
  EXPECT_TRUE(std::signbit(Value(-0.0).getValue<double>()));
  EXPECT_EQ(Value(u"a text too long for its place").getValue<std::u16string>(),
            u"a text too long for its place");
  EXPECT_EQ(Value(Colour::Blue).getValue<Colour>(), Colour::Blue);
  EXPECT_EQ(Value(Text(u"x")).getValue<std::u16string>(), u"x");
}

TEST_F(ValueTest, TheEmptyValueReadsAsNothingOfEveryType) {
  const Value empty;
  EXPECT_EQ(empty.getValue<double>(), 0.0);
  EXPECT_EQ(empty.getValue<bool>(), false);
  EXPECT_EQ(empty.getValue<std::u16string>(), u"");
  EXPECT_EQ(empty.getValue<const vxArray*>(), nullptr);
  EXPECT_FALSE(empty.getValue<ModelElement>());
  EXPECT_EQ(static_cast<int>(empty.getValue<Colour>()), 0);
  EXPECT_TRUE(empty.items().empty());
  EXPECT_EQ(empty, Value());
}

TEST_F(ValueTest, ReadingAnotherTypeIsRefusedByTheNameOfTheTypeAskedFor) {
  const Value real(1.0);
  const auto text = expectRaises<CannotCastIncompatibleTypes>([&] { real.getValue<bool>(); });
  EXPECT_NE(text.find("'Boolean'"), std::string::npos) << text;
  expectRaises<CannotCastIncompatibleTypes>([&] { real.getValue<std::int32_t>(); });
  expectRaises<CannotCastIncompatibleTypes>([&] { real.getValue<ModelElement>(); });
  expectRaises<CannotCastIncompatibleTypes>([] { Value(std::int8_t{1}).getValue<std::int32_t>(); });
  expectRaises<CannotCastIncompatibleTypes>([] { Value(u"1").checkCompatible<double>(); });
  expectRaises<CannotCastIncompatibleTypes>([] { Value::ofList({1.0}).getValue<double>(); });
  const auto other =
      expectRaises<CannotCastIncompatibleTypes>([] { Value(Colour::Red).getValue<Size>(); });
  EXPECT_NE(other.find("'test.Size'"), std::string::npos) << other;
}

TEST_F(ValueTest, EqualityIsOfKindAndContent) {
  EXPECT_EQ(Value(0.0), Value(-0.0));
  EXPECT_NE(Value(std::nan("")), Value(std::nan("")));
  EXPECT_NE(Value(1.0), Value(1));
  EXPECT_NE(Value(0.0), Value());
  EXPECT_NE(Value(false), Value());
  EXPECT_NE(Value(u""), Value());
  EXPECT_EQ(Value(u"content"), Value(std::u16string(u"content")));
  EXPECT_NE(Value(u"content"), Value(u"Content"));
  EXPECT_NE(Value(Colour::Red), Value(Size::Small));
  EXPECT_EQ(Value::ofList({1.0, u"a"}), Value::ofList({1.0, u"a"}));
  EXPECT_NE(Value::ofList({1.0, u"a"}), Value::ofList({u"a", 1.0}));
  EXPECT_NE(Value::ofList({1.0}), Value::ofList({1.0, 1.0}));
  EXPECT_NE(Value::ofList({1.0}), Value(1.0));
  EXPECT_EQ(Value::ofList({}), Value::ofList({}));
  EXPECT_NE(Value::ofList({}), Value());
  expectRaises<CannotCastIncompatibleTypes>([] { Value::ofList({Value::ofList({1.0})}); });
}

TEST_F(ValueTest, AnArrayIsCopiedOnceAndComparedByContent) {
  const vexal::ArrayPtr array = vexal::createDouble(1.0);
  const Value value = Value::ofArray(array.get());
  const Value copy = value;
  EXPECT_EQ(liveArrays(), 2U) << "the array and one property copy for both values";
  EXPECT_EQ(value, copy);
  EXPECT_NE(value.getValue<const vxArray*>(), array.get());
  EXPECT_EQ(value, Value::ofArray(array.get()));
  vexal::mutableDoubleData(array.get())[0] = 2.0;
  EXPECT_NE(value, Value::ofArray(array.get()));
  EXPECT_EQ(vexal::doubleData(copy.getValue<const vxArray*>())[0], 1.0);
  EXPECT_EQ(Value::ofArray(nullptr).getValue<const vxArray*>(), nullptr);
  EXPECT_NE(Value::ofArray(nullptr), Value());
}

TEST_F(ValueTest, CopiesAndMovesKeepWhatIsSharedAliveExactlyAsLongAsNeeded) {
  Value list;
  {
    const vexal::ArrayPtr array = vexal::createDouble(1.0);
    list = Value::ofList({Value::ofArray(array.get()), Value(u"text")});
  }
  Value copy = list;
  const Value moved = std::move(list);
  list = copy;
  copy = Value(1.0);
  EXPECT_EQ(moved, list);
  EXPECT_EQ(moved.items()[1], Value(u"text"));
  list = static_cast<const Value&>(list);
  EXPECT_EQ(list.items().size(), 2U);
  EXPECT_EQ(liveArrays(), 1U);
}

TEST_F(ValueTest, TypeNamesAreTheRegistrys) {
  EXPECT_EQ(Value(true).meta().typeName(), "Boolean");
  EXPECT_EQ(Value(std::int8_t{1}).meta().typeName(), "Integer8");
  EXPECT_EQ(Value(1).meta().typeName(), "Integer");
  EXPECT_EQ(Value(1.0).meta().typeName(), "Real");
  EXPECT_EQ(Value(u"").meta().typeName(), "String");
  EXPECT_EQ(Value::ofArray(nullptr).meta().typeName(), "VxArray");
  EXPECT_EQ(Value(Colour::Red).meta().typeName(), "test.Colour");
  EXPECT_EQ(Value(ModelElement()).meta().typeName(), "mf.zero.ModelElement");
  EXPECT_EQ(Value::ofList({1.0}).meta().typeName(), "list of Real");
  EXPECT_EQ(Value::ofList({Colour::Red}).meta().typeName(), "list of test.Colour");
}

TEST_F(ValueTest, TheDescriptionIsShortAndSaysWhatItIs) {
  EXPECT_EQ(Value().describe(), "empty");
  EXPECT_EQ(Value(0.1).describe(), "0.1");
  EXPECT_EQ(Value(std::int8_t{-5}).describe(), "-5");
  EXPECT_EQ(Value(u"grün").describe(), "\"grün\"");
  EXPECT_EQ(Value(std::u16string(1000, u'x')).describe().size(), 45U);
  EXPECT_EQ(Value(Colour::Blue).describe(), "Blue");
  EXPECT_EQ(Value(&kColour, 7).describe(), "7");
  EXPECT_EQ(Value(ModelElement()).describe(), "no element");
  EXPECT_EQ(Value::ofList({1.0, false}).describe(), "[1, false]");
  EXPECT_EQ(Value::ofList(std::vector<Value>(20, 1.0)).describe(),
            "[1, 1, 1, 1, 1, 1, 1, 1, ... 20 items]");
}

// A pointer that is no text would otherwise become a truth value.
static_assert(!std::is_constructible_v<Value, const void*>);
static_assert(!std::is_constructible_v<Value, const char*>);
static_assert(sizeof(Value) == 16);

}  // namespace
}  // namespace mf::zero
