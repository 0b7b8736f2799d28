// Live collections as scripts use them.
#include <gtest/gtest.h>

#include <limits>

#include "framework/mi/script_test.h"

namespace mf::zero::testing {
namespace {

class ScriptCollectionTest : public ScriptTest {
 protected:
  /// What the collection holds: texts as they are, everything else as numbers.
  static std::string values(const ArrayPtr& collection) {
    std::string all;
    for (int k = 0; k < number(call(collection, "size")); ++k) {
      const ArrayPtr value = call(collection, "at", {k});
      const bool isText = vexal::isClass(value.get(), vexal::ClassId::Char);
      const bool isTruth = vexal::isClass(value.get(), vexal::ClassId::Logical);
      const bool isMember = vexal::isClass(value.get(), vexal::ClassId::Object);
      all += (k > 0 ? " " : "") + (isText     ? text(value)
                                   : isMember ? text(call(value, "getLiteral"))
                                   : isTruth  ? std::string(truth(value) ? "true" : "false")
                                              : vexal::formatNumber(number(value)));
    }
    return all;
  }
};

TEST_F(ScriptCollectionTest, ASequenceOfElementsIsChangedInPlace) {
  const ArrayPtr bed = make("garden.Bed", {model()});
  const ArrayPtr shadows = get(bed, "Shadows");
  const ArrayPtr a = plant("a");
  const ArrayPtr b = plant("b");
  const ArrayPtr c = plant("c");
  const auto now = [&] { return labels(call(shadows, "toArray")); };
  EXPECT_EQ(vexal::className(shadows.get()), "mf.zero.Sequence");
  EXPECT_EQ(vexal::className(call(shadows, "toArray").get()), "garden.Spot");
  call(shadows, "add", {a});
  call(shadows, "add", {cell({b, c})});
  EXPECT_EQ(now(), "a b c");
  EXPECT_EQ(vexal::className(call(shadows, "toArray").get()), "garden.Plant");
  call(shadows, "move", {2, 0});
  EXPECT_EQ(now(), "c a b");
  call(shadows, "removeAt", {1});
  call(shadows, "insert", {0, a});
  EXPECT_EQ(now(), "a c b");
  EXPECT_EQ(number(call(shadows, "indexOf", {b})), 2);
  call(shadows, "remove", {b});
  EXPECT_FALSE(truth(call(shadows, "contains", {b})));
  EXPECT_EQ(number(call(shadows, "indexOf", {b})), -1);
  call(shadows, "assign", {call(model(), "elements", {"garden.Plant"})});
  EXPECT_EQ(now(), "a b c");

  const std::pair<vexal::script::Result<ArrayPtr>, std::string> refused[] = {
      {tryCall(shadows, "at", {3}), "mf0:messages:IndexOutOfRange"},
      {tryCall(shadows, "at", {-1}), "mf0:messages:IndexOutOfRange"},
      {tryCall(shadows, "at", {0.5}), "mf0:messages:IndexOutOfRange"},
      {tryCall(shadows, "insert", {7, a}), "mf0:messages:IndexOutOfRange"},
      {tryCall(shadows, "add", {cell({plant("d"), a})}), "mf0:messages:CannotAddSecondObject"},
      {tryCall(shadows, "add", {make("garden.Gardener", {model()})}),
       "mf0:messages:CannotAddIncompatibleTypes"},
      {tryCall(shadows, "add", {model()}), "mf0:messages:CannotCastIncompatibleTypes"},
      {tryCall(shadows, "add", {cell({5})}), "Vexal:class:NotAnObject"},
  };
  for (const auto& [result, error] : refused) EXPECT_EQ(errorOf(result), error);
  EXPECT_EQ(now(), "a b c");
  const ArrayPtr other = make("garden.Bed", {model()});
  call(get(other, "Shadows"), "assign", {shadows});
  EXPECT_EQ(labels(call(get(other, "Shadows"), "toArray")), "a b c");
  call(shadows, "clear");
  EXPECT_EQ(now(), "");
}

TEST_F(ScriptCollectionTest, AnUnorderedContainmentIsASet) {
  const ArrayPtr bed = make("garden.Bed", {model()});
  const ArrayPtr plants = get(bed, "Plants");
  EXPECT_EQ(vexal::className(plants.get()), "mf.zero.Set");
  const ArrayPtr grown = call(bed, "createIntoPlants", {record({{"Label", "a"}})});
  call(plants, "add", {plant("b")});
  EXPECT_EQ(number(call(plants, "size")), 2);
  EXPECT_EQ(errorOf(tryCall(plants, "insert", {0, grown})), "Vexal:class:NoSuchMember");
  call(plants, "remove", {grown});
  EXPECT_TRUE(vexal::isEmpty(call(grown, "owner").get()));
}

TEST_F(ScriptCollectionTest, EveryKindOfValueGoesIntoSequencesAndSets) {
  const ArrayPtr numbers = vexal::createDoubleRow(std::vector<double>{3, 1, 3});
  const struct {
    std::string property;
    ArrayPtr given;
    std::string inSequence;
    std::string inSet;
    const char* refused;
  } cases[] = {
      {"Flag", cell({true, false, true}), "true false true", "false true", "text"},
      {"Small", cell({3, 1, 3}), "3 1 3", "1 3", "text"},
      {"Whole", vexal::deepCopy(numbers.get()), "3 1 3", "1 3", "text"},
      {"Number", vexal::deepCopy(numbers.get()), "3 1 3", "1 3", "text"},
      {"Text", cell({"b", "a", "b"}), "b a b", "a b", nullptr},
      {"Plain", cell({"b", "a", "b"}), "b a b", "a b", nullptr},
      {"Choice", cell({"Fruit", "Herb", "Fruit"}), "Fruit Herb Fruit", "Herb Fruit", "Tree"},
  };
  const ArrayPtr holder = make("garden.Record", {model()});
  for (const auto& each : cases) {
    SCOPED_TRACE(each.property);
    const ArrayPtr sequence = get(holder, each.property + "s");
    EXPECT_EQ(vexal::className(sequence.get()), "mf.zero.PrimitiveSequence");
    call(sequence, "assign", {each.given});
    EXPECT_EQ(values(sequence), each.inSequence);
    const ArrayPtr set = get(holder, each.property + "Set");
    EXPECT_EQ(vexal::className(set.get()), "mf.zero.PrimitiveSet");
    call(set, "add", {call(sequence, "toArray")});
    EXPECT_EQ(values(set), each.inSet);
    call(set, "clear");
    call(set, "add", {sequence});  // another collection, as it stands
    EXPECT_EQ(values(set), each.inSet);

    const ArrayPtr first = call(sequence, "at", {0});
    EXPECT_EQ(number(call(sequence, "indexOf", {first})), 0);
    call(sequence, "move", {0, 1});
    EXPECT_EQ(number(call(sequence, "indexOf", {first})), 1);
    call(sequence, "remove", {first});
    call(sequence, "insert", {0, first});
    EXPECT_EQ(values(sequence).substr(0, 2), each.inSequence.substr(0, 2));
    call(set, "clear");
    EXPECT_EQ(errorOf(tryCall(set, "remove", {first})), "mf0:messages:NoSuchElement");
    EXPECT_EQ(number(call(sequence, "size")), 3);
    if (!each.refused) continue;
    EXPECT_NE(errorOf(tryCall(sequence, "add", {each.refused})), "");
    EXPECT_EQ(values(sequence).substr(0, 2), each.inSequence.substr(0, 2));
  }
  const ArrayPtr nan = vexal::createDouble(std::numeric_limits<double>::quiet_NaN());
  for (const char* const property : {"Numbers", "NumberSet"}) {
    const ArrayPtr held = get(holder, property);
    call(held, "assign", {cell({1, nan, nan})});
    EXPECT_TRUE(truth(call(held, "contains", {nan})));
    EXPECT_EQ(number(call(held, "indexOf", {nan})), 1);
    EXPECT_EQ(number(call(held, "indexOf", {2})), -1);
  }
  const ArrayPtr smalls = get(holder, "Smalls");
  EXPECT_EQ(errorOf(tryCall(smalls, "add", {cell({5, 128})})), "mf0:messages:InvalidValue");
  EXPECT_EQ(number(call(smalls, "size")), 3) << "all or none";
}

TEST_F(ScriptCollectionTest, EveryKindOfSingleValueIsKept) {
  const ArrayPtr holder = make("garden.Record", {model()});
  EXPECT_EQ(set(holder, "Small", -128), "");
  EXPECT_EQ(set(holder, "Small", 128), "mf0:messages:InvalidValue");
  EXPECT_EQ(set(holder, "Small", 0.5), "Vexal:class:CannotConvert");
  EXPECT_EQ(number(get(holder, "Small")), -128);
  EXPECT_EQ(set(holder, "Whole", 7), "");
  EXPECT_TRUE(vexal::isClass(get(holder, "Whole").get(), vexal::ClassId::Int32));
  EXPECT_EQ(set(holder, "Plain", "p"), "");
  EXPECT_EQ(text(get(holder, "Plain")), "p");
  EXPECT_EQ(set(holder, "Choice", "Flower"), "");
  EXPECT_EQ(text(call(get(holder, "Choice"), "getLiteral")), "Flower");
  EXPECT_EQ(set(holder, "Data", record({{"x", 1}})), "");
  EXPECT_EQ(number(fieldOf(get(holder, "Data"), "x")), 1);
}

}  // namespace
}  // namespace mf::zero::testing
