// Data types: what is of a type, what becomes one, and conversions that are added.
#include <array>

#include "host/cell.h"
#include "host/object.h"
#include "host/record.h"
#include "host/vcos/class.h"
#include "host/vcos/package.h"
#include "host/vcos/type_repository.h"
#include "support/host_errors.h"
#include "support/plant_test.h"

namespace vcos {
namespace {

using vexal::ArrayPtr;
using vexal::script::keyOf;
using vexal::script::valueOf;
using vexal::testing::expectHostError;

class ConversionTest : public vexal::script::PlantTest {};

struct Case {
  ArrayPtr value;
  const char* dataType;
  const char* becomes;  // in words, or the key of the error
};

TEST_F(ConversionTest, ValuesBecomeWhatLosesNothing) {
  const auto row = [](std::initializer_list<double> values) {
    return vexal::createDoubleRow(std::vector(values));
  };
  const auto empty = [] { return vexal::createDoubleMatrix(0, 0); };
  Case cases[]{
      {row({1, 2}), "double", "1-by-2 double array"},
      {row({1, 2}), "double scalar", "WrongShape"},
      {row({1, 2}), "double vector", "1-by-2 double array"},
      {vexal::createDoubleMatrix(2, 2), "double vector", "WrongShape"},
      {row({1, 2}), "int32", "1-by-2 int32 array"},
      {row({1, 2.5}), "int32", "CannotConvert"},
      {row({1, 3e9}), "int32", "CannotConvert"},
      {row({0, -2}), "logical vector", "1-by-2 logical array"},
      {vexal::createLogical(true), "double scalar", "1-by-1 double array"},
      {vexal::createChar("7"), "double scalar", "CannotConvert"},
      {empty(), "double property", "empty 0-by-0 double array"},
      {vexal::createChar("ab"), "VcosFactoryString scalar", "1-by-2 char array"},
      {vexal::createChar(""), "VcosFactoryString scalar", "empty 1-by-0 char array"},
      {vexal::createChar("ab"), "VcosFactoryString vector", "1-by-1 cell array"},
      {empty(), "VcosFactoryString scalar", "CannotConvert"},
      {empty(), "VcosFactoryString vector", "empty 0-by-0 cell array"},
      {vexal::createCell(1, 2), "VcosFactoryString vector", "CannotConvert"},
      {vexal::createCell(1, 2), "cell scalar", "WrongShape"},
      {vexal::createStruct(), "struct scalar", "1-by-1 struct array"},
      {vexal::createStruct(), "any", "1-by-1 struct array"},
      {vexal::createStruct(), "void", "CannotConvert"},
      {empty(), "plant.Device property", "empty 0-by-0 plant.Device object array"},
      {empty(), "plant.Device scalar", "CannotConvert"},
      {tank(), "plant.Device scalar", "1-by-1 plant.Tank object (main)"},
      {tank(), "plant.Valve", "CannotConvert"},
      {tank(), "plant.Pump", "UnknownType"},
      {tank(), "plant.Tank round", "UnknownType"},
      {tank(), "", "UnknownType"},
  };
  for (const Case& one : cases) {
    const auto result = vexal::script::convert(one.value.get(), one.dataType);
    EXPECT_EQ(result ? vexal::describe(result.value.get()) : keyOf(result), one.becomes)
        << vexal::describe(one.value.get()) << " to " << one.dataType;
  }
}

// Text names a member of plant.Kind, everything else is none.
class KindFromAny final : public COSTypeConversion {
 public:
  ArrayPtr convert(const vxArray* value) override {
    COSClass* const kind = COSClass::getClass("plant.Kind");
    const bool isText = vexal::isClass(value, vexal::ClassId::Char);
    const auto* member = isText ? kind->member(vexal::toUtf8(vexal::charText(value))) : nullptr;
    if (isText && member == nullptr) throw plant::Trouble();
    return createValueObject(*kind, member == nullptr ? 0 : member->value);
  }
};

TEST_F(ConversionTest, AddedConversionsReachWhateverIsNotOfTheTypeYet) {
  constexpr std::string_view kType = "plant.Kind scalar";
  EXPECT_EQ(COSTypeRepository::getConversion("any", kType), nullptr);
  COSTypeRepository::addConversion("any", kType, std::make_unique<KindFromAny>());
  expectHostError("Vexal:class:ConversionExists", [&] {
    COSTypeRepository::addConversion("any", kType, std::make_unique<KindFromAny>());
  });
  const ArrayPtr object = tank();
  const auto setKind = [&](const ArrayPtr& value) {
    return keyOf(vexal::script::set(object.get(), "Kind", value.get()));
  };
  const auto kind = [&] {
    return vexal::describe(valueOf(vexal::script::get(object.get(), "Kind")).get());
  };
  EXPECT_EQ(setKind(vexal::createChar("Water")), "");
  EXPECT_EQ(kind(), "1-by-1 plant.Kind object (Water)");
  EXPECT_EQ(setKind(vexal::createChar("Beer")), "plant:messages:Jammed");
  EXPECT_EQ(kind(), "1-by-1 plant.Kind object (Water)");
  EXPECT_EQ(setKind(vexal::createDoubleMatrix(0, 0)), "");
  EXPECT_EQ(kind(), "1-by-1 plant.Kind object (0)");
  EXPECT_NE(COSTypeRepository::removeConversion("any", kType), nullptr);
  EXPECT_EQ(COSTypeRepository::removeConversion("any", kType), nullptr);
  EXPECT_EQ(setKind(vexal::createChar("Water")), "CannotConvert");
}

// Makes everything into text, and is added when a type of its package is first asked for.
class ToText final : public COSTypeConversion {
 public:
  ArrayPtr convert(const vxArray*) override { return vexal::createChar("made"); }
};
class LateTypes final : public COSPackageInfo {
 public:
  LateTypes() : COSPackageInfo("late") {}
  bool attemptToLoadType(COSPackage*, std::string_view name) override {
    ++asked;
    if (name != "Text") return false;
    COSTypeRepository::addConversion("any", "late.Text", std::make_unique<ToText>());
    return true;
  }
  static inline int asked = 0;
};

TEST_F(ConversionTest, AnUnknownTypeIsAskedForEachTimeUntilSomebodyDeclaresIt) {
  COSPackage::addPackage(std::make_unique<LateTypes>());
  const ArrayPtr one = vexal::createDouble(1);
  const auto asked = [&](std::string_view dataType) {
    return keyOf(vexal::script::convert(one.get(), dataType));
  };
  EXPECT_EQ(asked("late.Never"), "UnknownType");
  EXPECT_EQ(asked("late.Never"), "UnknownType");
  EXPECT_EQ(LateTypes::asked, 2);
  EXPECT_EQ(COSTypeRepository::getConversion("any", "late.Text"), nullptr);
  EXPECT_EQ(COSTypeRepository::removeConversion("any", "late.Text"), nullptr);
  EXPECT_EQ(text(valueOf(vexal::script::convert(one.get(), "late.Text"))), "made");
  EXPECT_EQ(text(valueOf(vexal::script::convert(one.get(), "late.Text"))), "made");
  EXPECT_EQ(LateTypes::asked, 3);
}

}  // namespace
}  // namespace vcos
