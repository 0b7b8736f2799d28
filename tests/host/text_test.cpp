// Conversions between the two encodings, and text in arrays.
#include "host/text.h"

#include <limits>

#include "host/cell.h"
#include "support/host_errors.h"
#include "support/host_leak_test.h"

namespace vexal {
namespace {

using testing::expectHostError;

class TextTest : public testing::HostLeakTest {};

TEST_F(TextTest, EveryKindOfCodePointSurvivesBothConversions) {
  const std::string utf8 =
      "a\xc2\x80\xdf\xbf\xe0\xa0\x80\xef\xbf\xbf\xf0\x90\x80\x80\xf4\x8f\xbf\xbf";
  const std::u16string utf16 = u"a\u0080\u07ff\u0800\uffff\U00010000\U0010ffff";
  EXPECT_EQ(toUtf16(utf8), utf16);
  EXPECT_EQ(toUtf8(utf16), utf8);
}

TEST_F(TextTest, IllFormedTextIsRefusedWithItsPlace) {
  constexpr std::string_view kBad[] = {
      "ab\x80",              // a continuation byte alone
      "ab\xc3",              // cut short
      "ab\xc3(",             // no continuation byte
      "ab\xc0\xaf",          // longer than needed
      "ab\xed\xa0\x80",      // a surrogate
      "ab\xf4\x90\x80\x80",  // past the last code point
      "ab\xff",
  };
  for (const std::string_view text : kBad) {
    const std::string message =
        expectHostError("Vexal:host:InvalidUtf8", [&] { createChar(text); });
    EXPECT_NE(message.find("index 2"), std::string::npos) << message;
  }
  for (const char16_t* const text : {u"a\xd800", u"a\xdc00z", u"a\xd800z"}) {
    expectHostError("Vexal:host:InvalidUtf16", [&] { toUtf8(text); });
  }
}

TEST_F(TextTest, CharArraysAreRowsOfUtf16CodeUnits) {
  const ArrayPtr text = createChar("gr\xc3\xbc\xc3\x9f");
  EXPECT_EQ(describe(text.get()), "1-by-4 char array");
  EXPECT_EQ(charText(text.get()), u"gr\u00fc\u00df");
  EXPECT_EQ(describe(createChar(u"").get()), "empty 1-by-0 char array");
  EXPECT_EQ(charText(createChar(u"\xd800").get()), u"\xd800");
  EXPECT_EQ(charText(createArray(ClassId::Char, dimensions(createDoubleMatrix(0, 0).get())).get()),
            u"");
  const ArrayPtr tall = createArray(ClassId::Char, dimensions(createDoubleMatrix(2, 1).get()));
  expectHostError("Vexal:host:NotText", [&] { charText(tall.get()); });
  expectHostError("Vexal:host:NotText", [] { charText(createDouble(1).get()); });
}

TEST_F(TextTest, NumbersReadAsAReaderWouldWriteThem) {
  EXPECT_EQ(formatNumber(0.1), "0.1");
  EXPECT_EQ(formatNumber(-3), "-3");
  EXPECT_EQ(formatNumber(std::numeric_limits<double>::quiet_NaN()), "NaN");
  EXPECT_EQ(formatNumber(-std::numeric_limits<double>::infinity()), "-Inf");
  EXPECT_EQ(describe(nullptr), "no array");
}

}  // namespace
}  // namespace vexal
