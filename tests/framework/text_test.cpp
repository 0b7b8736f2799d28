// Texts: sharing, and the conversions between UTF-16 and UTF-8.
#include "framework/text.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace mf::zero {
namespace {

bool shared(const Text& a, const Text& b) { return &a.str() == &b.str(); }

TEST(TextTest, CopiesShareAndOutliveTheirSource) {
  Text copy;
  {
    const Text text(u"a text that is too long to lie in place");
    copy = text;
    EXPECT_TRUE(shared(copy, text));
  }
  EXPECT_EQ(copy, u"a text that is too long to lie in place");
  EXPECT_TRUE(Text(u"").empty());
  EXPECT_EQ(Text(u""), Text());
  EXPECT_EQ(Text().str(), u"");
}

TEST(TextTest, EqualityIsByContent) {
  EXPECT_EQ(Text(u"running"), Text(u"running"));
  EXPECT_NE(Text(u"running"), Text(u"runninG"));
  EXPECT_NE(Text(u"running"), Text(u"runnin"));
  EXPECT_NE(Text(u"running"), Text());
  EXPECT_NE(Text(), u"running");
  EXPECT_EQ(Text(std::u16string_view(u"a\0b", 3)).str().size(), 3U);
}

TEST(TextTest, ShortTextsWrittenThroughACacheAreShared) {
  TextCache cache;
  const Text running(cache, u"running");
  EXPECT_TRUE(shared(running, Text(cache, u"running")));
  EXPECT_FALSE(shared(running, Text(u"running")));
  const std::u16string longText(65, u'x');
  EXPECT_EQ(Text(cache, longText), longText);
  EXPECT_FALSE(shared(Text(cache, longText), Text(cache, longText)));
  EXPECT_TRUE(Text(cache, u"").empty());
}

// Far more texts than the cache has places, of every length: each must still be itself.
TEST(TextTest, ACrowdedCacheNeverMixesTextsUp) {
  TextCache cache;
  std::vector<Text> texts;
  const auto name = [](std::size_t i) {
    std::u16string text(i % 70, u'a');
    return text + toUtf16(std::to_string(i));
  };
  for (std::size_t i = 0; i < 5000; ++i) texts.emplace_back(cache, name(i));
  for (std::size_t i = 0; i < texts.size(); ++i) EXPECT_EQ(texts[i], name(i));
}

TEST(TextTest, ATextOutlivesTheCacheItWasWrittenThrough) {
  Text text;
  {
    TextCache cache;
    text = Text(cache, u"finished");
  }
  EXPECT_EQ(text, u"finished");
}

TEST(TextTest, ADetachedTextKeepsItsReferenceUntilAdopted) {
  const std::uintptr_t raw = Text(u"kept by a record").detach();
  { EXPECT_EQ(Text::share(raw), u"kept by a record"); }
  EXPECT_EQ(Text::adopt(raw), u"kept by a record");
  EXPECT_TRUE(Text::adopt(Text().detach()).empty());
}

TEST(TextTest, CopiesMayBeMadeAndDroppedOnSeveralThreads) {
  const Text text(u"read by all");
  std::vector<std::jthread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&text] {
      for (int round = 0; round < 10'000; ++round) {
        const Text copy = text;
        EXPECT_FALSE(copy.empty());
      }
    });
  }
  threads.clear();
  EXPECT_EQ(text, u"read by all");
}

struct Pair {
  std::u16string_view utf16;
  std::string_view utf8;
};

TEST(TextTest, WellFormedTextConvertsBothWays) {
  using namespace std::literals;
  for (const Pair& pair : {
           Pair{u"", ""},
           Pair{u"a\0b"sv, "a\0b"sv},
           Pair{u"\u007F\u0080\u07FF\u0800", "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80"},
           Pair{u"\uD7FF\uE000\uFFFF", "\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF"},
           Pair{u"\U00010000\U0010FFFF", "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
       }) {
    EXPECT_EQ(toUtf8(pair.utf16), pair.utf8);
    EXPECT_EQ(toUtf16(pair.utf8), pair.utf16);
  }
}

TEST(TextTest, AnUnpairedSurrogateBecomesTheReplacementCharacter) {
  const char16_t high = 0xD83D;
  const char16_t low = 0xDE00;
  const std::string r = "\xEF\xBF\xBD";
  EXPECT_EQ(toUtf8(std::u16string{high}), r);
  EXPECT_EQ(toUtf8(std::u16string{low}), r);
  EXPECT_EQ(toUtf8(std::u16string{high, u'a'}), r + "a");
  EXPECT_EQ(toUtf8(std::u16string{low, high}), r + r);
  EXPECT_EQ(toUtf8(std::u16string{high, high, low}), r + "\xF0\x9F\x98\x80");
}

TEST(TextTest, EachMalformedSequenceBecomesOneReplacementCharacter) {
  const std::u16string r = u"\uFFFD";
  const std::vector<std::pair<std::string, std::u16string>> table = {
      {"\x80", r},                          // a continuation on its own
      {"\xC3", r},                          // ends too early
      {"\xC3z", r + u"z"},                  // is broken off
      {"\xE2\x82", r},                      // two of three bytes are one sequence
      {"\xE2\x82z", r + u"z"},              //
      {"\xF0\x9F\x98", r},                  // three of four
      {"\xC0\xAF", r + r},                  // overlong
      {"\xE0\x80\xAF", r + r + r},          //
      {"\xED\xA0\x80", r + r + r},          // a surrogate
      {"\xF4\x90\x80\x80", r + r + r + r},  // beyond U+10FFFF
      {"\xFF"
       "a\xFE",
       r + u"a" + r},
  };
  for (const auto& [bytes, expected] : table) EXPECT_EQ(toUtf16(bytes), expected);
}

}  // namespace
}  // namespace mf::zero
