// The framework's messages and the exceptions that carry them.
#include "framework/messages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace mf0::messages {
namespace {

namespace except = foundation::core::except;

std::vector<Message> oneOfEach() {
  return {
      CannotModifyProxy(),
      CannotCastIncompatibleTypes("@one"),
      CannotAddIncompatibleTypes(u"@one", u"@two"),
      CannotAddNonExistentObject(),
      CannotAddSecondObject(),
      CannotCreateCrossModelAssociation(),
      CannotCreateWithoutModel(),
      CannotSetReadOnlyProperty("@one"),
      NoSuchType("@one"),
      InvalidValue(),
      CannotCreateAbstractClass("@one"),
      CannotCreateContainmentCycle(),
      CannotCreateDuplicateIdentity("@one"),
      CannotUseEmptyHandle(),
      CannotUseDestroyedElement("@one"),
      CannotUseClosedModel(),
      CannotModifyFrozenModel(),
      CannotNestTransaction(),
      CannotEndTransaction(),
      CannotCloseModelInTransaction(),
      CannotConvertToProxy("@one"),
      CannotResolveProxy("@one", "@two"),
      CannotDestroyReferencedElement("@one"),
      NotAnElementClass("@one"),
      NoSuchProperty("@one", "@two"),
      NoSuchLiteral("@one", "@two"),
      NoSuchElement(),
      IndexOutOfRange("@one", "@two"),
      ModelIsFull("@one"),
      ListIsFull("@one", "@two"),
      CannotCompareProperty("@one", "@two"),
      CannotTellObserver("@one"),
      ObserversDoNotSettle(),
      UnequalColumns("@one", "@two"),
      ForElement("@one"),
  };
}

bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

TEST(MessagesTest, EveryMessageHasATextThatTakesItsArguments) {
  std::set<std::string> ids;
  const auto [entries, count] = catalog();
  for (const Message& message : oneOfEach()) {
    EXPECT_TRUE(ids.insert(message.id()).second) << message.id();
    const auto entry = std::find_if(entries, entries + count, [&](const CatalogEntry& e) {
      return message.id() == "mf0:messages:" + std::string(e.key);
    });
    ASSERT_NE(entry, entries + count) << message.id();
    const std::string& text = message.text();
    EXPECT_EQ(contains(entry->text, "{0}"), contains(text, "@one")) << text;
    EXPECT_EQ(contains(entry->text, "{1}"), contains(text, "@two")) << text;
    EXPECT_FALSE(contains(text, "{")) << text;
    EXPECT_TRUE(text.ends_with('.')) << text;
  }
  EXPECT_EQ(ids.size(), count) << "a text without a message";
}

TEST(MessagesTest, ArgumentsAreTakenAsTheyAre) {
  const std::string wide = CannotCastIncompatibleTypes(u"Gr\u00F6\u00DFe").text();
  EXPECT_TRUE(contains(wide,
                       "'Gr\xC3\xB6\xC3\x9F"
                       "e'"))
      << wide;
  const std::string text = CannotAddIncompatibleTypes(u"a.{1}", u"b.{0}").text();
  EXPECT_TRUE(contains(text, "'a.{1}'") && contains(text, "'b.{0}'")) << text;
}

TEST(MessagesTest, AnExceptionCanBeCarriedElsewhereWithItsFullType) {
  std::unique_ptr<except::AbstractException> carried;
  try {
    mf::zero::reportException(NoSuchType("VxArray"));
  } catch (const except::AbstractException& error) {
    carried = error.clone();
  }
  ASSERT_TRUE(carried);
  EXPECT_EQ(carried->GetID(), "mf0:messages:NoSuchType");
  try {
    carried->rethrow();
  } catch (const except::Exception<NoSuchType, std::exception>& error) {
    EXPECT_TRUE(contains(error.what(), "'VxArray'")) << error.what();
    EXPECT_EQ(error.what(), error.message().text());
  }
  EXPECT_THROW(carried->rethrow(), std::exception);
}

}  // namespace
}  // namespace mf0::messages
