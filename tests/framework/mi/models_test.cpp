// Models as scripts use them: transactions, observers, queries, meta classes.
#include <gtest/gtest.h>

#include "framework/element.h"
#include "framework/mi/script_test.h"
#include "host/function.h"

namespace mf::zero::testing {
namespace {

/// An object with a method "changed" that keeps what it is told.
class Listener {
 public:
  Listener()
      : function_("listen", {{1, 1, 0}, [this](vexal::Call& call) {
                               told_.push_back(vexal::deepCopy(call.input(0)));
                               if (fails) vxErrMsgId("Garden", "Rain");
                             }}) {}
  /// The change sets since the last call.
  std::vector<ArrayPtr> take() { return std::exchange(told_, {}); }
  bool fails = false;

 private:
  std::vector<ArrayPtr> told_;
  vexal::ScopedFunction function_;
};

class ScriptModelTest : public ScriptTest {};

TEST_F(ScriptModelTest, ATransactionIsKeptOrUndoneAndUndoneWhenItIsForgotten) {
  const ArrayPtr a = plant("a");
  {
    const ArrayPtr outer = call(model(), "beginTransaction");
    EXPECT_TRUE(truth(call(model(), "isInTransaction")));
    EXPECT_EQ(set(a, "Label", "b"), "");
    const ArrayPtr inner = call(model(), "beginTransaction");
    plant("c");
    EXPECT_EQ(errorOf(tryCall(outer, "commit")), "mf0:messages:CannotEndTransaction");
    call(inner, "rollback");
    EXPECT_EQ(number(call(model(), "size")), 1);
    EXPECT_FALSE(truth(call(inner, "isOpen")));
    EXPECT_EQ(errorOf(tryCall(inner, "commit")), "mf0:messages:CannotEndTransaction");
    EXPECT_EQ(errorOf(tryCall(model(), "close")), "mf0:messages:CannotCloseModelInTransaction");
    call(outer, "commit");
  }
  EXPECT_EQ(text(get(a, "Label")), "b");
  {
    const ArrayPtr forgotten = call(model(), "beginTransaction");
    EXPECT_EQ(set(a, "Label", "c"), "");
  }
  EXPECT_FALSE(truth(call(model(), "isInTransaction")));
  EXPECT_EQ(text(get(a, "Label")), "b");
}

TEST_F(ScriptModelTest, AnObserverIsToldWhatChangedUntilItsSubscriptionEnds) {
  Listener listener;
  const ArrayPtr a = plant("a");
  const ArrayPtr bed = make("garden.Bed", {model()});
  ArrayPtr subscription = call(model(), "observe", {"listen"});
  const ArrayPtr transaction = call(model(), "beginTransaction");
  EXPECT_EQ(set(a, "Label", "b"), "");
  EXPECT_EQ(set(a, "Bed", bed), "");
  EXPECT_EQ(set(a, "Kind", "Fruit"), "");
  const ArrayPtr made = plant("c");
  call(transaction, "commit");

  std::vector<ArrayPtr> told = listener.take();
  ASSERT_EQ(told.size(), 1U);
  EXPECT_EQ(identityOf(fieldOf(told[0], "Created")), identityOf(made));
  EXPECT_TRUE(vexal::isEmpty(fieldOf(told[0], "Destroyed").get()));
  const ArrayPtr modified = fieldOf(told[0], "Modified");
  ASSERT_EQ(vexal::elementCount(modified.get()), 3U);
  EXPECT_EQ(identityOf(fieldOf(modified, "Element")), identityOf(a));
  EXPECT_EQ(text(fieldOf(modified, "Property")), "Label");
  EXPECT_EQ(text(fieldOf(modified, "OldValue")), "a");
  EXPECT_EQ(text(fieldOf(modified, "NewValue")), "b");
  EXPECT_TRUE(vexal::isEmpty(fieldOf(modified, "OldValue", 1).get()));
  EXPECT_EQ(identityOf(fieldOf(modified, "NewValue", 1)), identityOf(bed));
  EXPECT_EQ(text(call(fieldOf(modified, "NewValue", 2), "getLiteral")), "Fruit");

  const std::string identity = text(call(a, "identity"));
  call(a, "destroy");
  told = listener.take();
  ASSERT_EQ(told.size(), 1U);
  EXPECT_EQ(text(fieldOf(fieldOf(told[0], "Destroyed"), "Identity")), identity);
  EXPECT_EQ(text(fieldOf(fieldOf(told[0], "Destroyed"), "Class")), "garden.Plant");

  listener.fails = true;
  EXPECT_EQ(set(made, "Label", "d"), "Garden:Rain");
  EXPECT_EQ(text(get(made, "Label")), "d") << "what was committed stays";
  listener.fails = false;
  listener.take();

  call(get(bed, "Shadows"), "add", {made});
  told = listener.take();
  ASSERT_EQ(told.size(), 1U);
  EXPECT_EQ(labels(fieldOf(fieldOf(told[0], "Modified"), "NewValue")), "d");

  // A listener that keeps what it was told of is no hindrance to its constructor.
  const ArrayPtr kept = make("garden.Bed", {model()});
  told = listener.take();
  EXPECT_EQ(identityOf(fieldOf(told[0], "Created")), identityOf(kept));

  call(subscription, "end");
  call(subscription, "end");
  plant("e");
  subscription = call(model(), "observe", {"listen"});
  subscription.reset();
  plant("f");
  EXPECT_TRUE(listener.take().empty());
}

TEST_F(ScriptModelTest, WhatCannotBeToldIsRefused) {
  EXPECT_EQ(errorOf(tryCall(model(), "observe", {"nobody"})), "Vexal:host:UnknownFunction");
  EXPECT_EQ(errorOf(tryCall(model(), "observe", {5})), "mf0:messages:CannotTellObserver");
  EXPECT_EQ(errorOf(tryCall(model(), "observe", {plant("a")})), "mf0:messages:CannotTellObserver");
}

TEST_F(ScriptModelTest, ElementsAreFoundByIdentityClassAndValues) {
  const ArrayPtr a = plant("a");
  const ArrayPtr b = plant("b");
  const ArrayPtr bed = make("garden.RaisedBed", {model()});
  EXPECT_EQ(set(b, "Kind", "Fruit"), "");
  EXPECT_EQ(set(b, "Bed", bed), "");
  call(get(a, "Neighbours"), "add", {b});
  const auto find = [this](const ArrayPtr& conditions) {
    return labels(call(model(), "elements", {"garden.Plant", conditions}));
  };
  EXPECT_EQ(vexal::elementCount(call(model(), "elements").get()), 3U);
  EXPECT_EQ(vexal::elementCount(call(model(), "elements", {"garden.Bed"}).get()), 1U);
  EXPECT_EQ(find(record({{"Label", "a"}})), "a");
  EXPECT_EQ(find(record({{"Kind", "Fruit"}, {"Bed", bed}})), "b");
  EXPECT_EQ(find(record({{"Neighbours", b}})), "a");
  EXPECT_EQ(find(record({{"Kind", "Fruit"}, {"Label", "a"}})), "");
  EXPECT_EQ(errorOf(tryCall(model(), "elements", {"garden.Tree"})), "mf0:messages:NoSuchType");
  for (const char* const other : {"garden.Kind", "mf.zero.Set"}) {
    EXPECT_EQ(errorOf(tryCall(model(), "elements", {other})), "mf0:messages:NotAnElementClass");
  }
  EXPECT_EQ(errorOf(tryCall(model(), "elements", {"garden.Plant", record({{"Age", 1}})})),
            "mf0:messages:NoSuchProperty");
  EXPECT_EQ(identityOf(call(model(), "findElement", {text(call(b, "identity"))})), identityOf(b));
  EXPECT_TRUE(
      vexal::isEmpty(call(model(), "findElement", {"0f8fad5b-d9cb-469f-a165-70867728950e"}).get()));
  EXPECT_EQ(errorOf(tryCall(model(), "findElement", {"b"})), "mf0:messages:InvalidValue");
}

TEST_F(ScriptModelTest, AFrozenModelRefusesChangesAndAClosedOneEverything) {
  const ArrayPtr a = plant("a");
  call(model(), "freeze");
  EXPECT_TRUE(truth(call(model(), "isFrozen")));
  EXPECT_EQ(set(a, "Label", "b"), "mf0:messages:CannotModifyFrozenModel");
  call(model(), "thaw");
  EXPECT_EQ(set(a, "Label", "b"), "");
  call(model(), "close");
  EXPECT_EQ(errorOf(tryCall(model(), "size")), "Vexal:class:InvalidHandle");
  EXPECT_EQ(errorOf(vexal::script::get(a.get(), "Label")), "Vexal:class:InvalidHandle");
}

TEST_F(ScriptModelTest, MetaClassesTellOfClassesAndCannotBeChanged) {
  const auto meta = vexal::script::invokeStatic("garden.RaisedBed", "StaticMetaClass", {});
  ASSERT_TRUE(meta) << errorOf(meta);
  EXPECT_EQ(text(get(meta.value, "Name")), "RaisedBed");
  EXPECT_EQ(text(get(meta.value, "Documentation")), "A bed on legs.");
  const ArrayPtr above = get(meta.value, "Superclass");
  EXPECT_EQ(text(get(above, "QualifiedName")), "garden.Bed");
  const ArrayPtr width = call(get(above, "Properties"), "at", {0});
  EXPECT_EQ(text(get(width, "Name")), "Width");
  EXPECT_EQ(text(get(get(width, "Type"), "Name")), "Real");
  EXPECT_EQ(text(call(get(width, "ValueFlags"), "getLiteral")), "Single");
  EXPECT_EQ(set(meta.value, "Name", "Pond"), "Vexal:class:ReadOnlyProperty");
  EXPECT_EQ(errorOf(tryCall(meta.value, "destroy")), "mf0:messages:CannotModifyFrozenModel");
  const ArrayPtr registry = call(meta.value, "model");
  EXPECT_EQ(errorOf(tryCall(registry, "thaw")), "mf0:messages:CannotModifyFrozenModel");
  EXPECT_EQ(errorOf(tryCall(registry, "close")), "mf0:messages:CannotModifyFrozenModel");
  EXPECT_EQ(
      identityOf(vexal::script::invokeStatic("garden.RaisedBed", "StaticMetaClass", {}).value),
      identityOf(meta.value));
  EXPECT_EQ(vexal::elementCount(call(model(), "elements", {meta.value}).get()), 0U);
}

TEST_F(ScriptModelTest, EveryPropertyOfAMetaClassSaysWhatItIs) {
  std::size_t count = 0;
  for (const std::string& name : vexal::script::classes("mf.zero.meta").value) {
    for (const auto& member : vexal::script::describeClass(name).value.members) {
      if (member.kind != vexal::script::MemberKind::Property) continue;
      EXPECT_NE(member.doc, "") << name << '.' << member.name;
      ++count;
    }
  }
  EXPECT_GT(count, 40U);
}

}  // namespace
}  // namespace mf::zero::testing
