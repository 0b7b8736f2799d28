// Conversions between the two encodings, and character arrays.
#include "host/text.h"

#include <algorithm>
#include <array>

#include "host/detail/content.h"

namespace vexal {
namespace {

constexpr char32_t kBad = 0xffffffff;

constexpr bool isHighSurrogate(char32_t unit) { return unit >= 0xd800 && unit < 0xdc00; }
constexpr bool isLowSurrogate(char32_t unit) { return unit >= 0xdc00 && unit < 0xe000; }

// What the first byte of a UTF-8 sequence says: its length, its share of the code point, and
// the least code point that needs that length. Length 0 marks a byte that cannot be first.
struct Lead {
  std::size_t length;
  char32_t bits;
  char32_t least;
};

constexpr Lead leadOf(unsigned char byte) {
  if (byte < 0x80) return {1, byte, 0};
  if (byte >= 0xc0 && byte < 0xe0) return {2, byte & 0x1fU, 0x80};
  if (byte >= 0xe0 && byte < 0xf0) return {3, byte & 0x0fU, 0x800};
  if (byte >= 0xf0 && byte < 0xf8) return {4, byte & 0x07U, 0x10000};
  return {0, 0, 0};
}

// The code point at k, which moves past it; kBad when the bytes are not well-formed.
char32_t decode(std::string_view utf8, std::size_t& k) {
  const Lead lead = leadOf(static_cast<unsigned char>(utf8[k]));
  if (lead.length == 0 || lead.length > utf8.size() - k) return kBad;
  char32_t point = lead.bits;
  for (std::size_t j = 1; j < lead.length; ++j) {
    const auto byte = static_cast<unsigned char>(utf8[k + j]);
    if ((byte & 0xc0U) != 0x80) return kBad;
    point = point << 6 | (byte & 0x3fU);
  }
  const bool isSurrogate = isHighSurrogate(point) || isLowSurrogate(point);
  if (point < lead.least || point > 0x10ffff || isSurrogate) return kBad;
  k += lead.length;
  return point;
}

char32_t decode(std::u16string_view utf16, std::size_t& k) {
  const char32_t unit = utf16[k];
  if (isLowSurrogate(unit)) return kBad;
  if (!isHighSurrogate(unit)) {
    ++k;
    return unit;
  }
  if (k + 1 == utf16.size() || !isLowSurrogate(utf16[k + 1])) return kBad;
  k += 2;
  return 0x10000 + ((unit - 0xd800) << 10) + (utf16[k - 1] - 0xdc00U);
}

void append(std::u16string& text, char32_t point) {
  if (point < 0x10000) {
    text += static_cast<char16_t>(point);
  } else {
    text += static_cast<char16_t>(0xd800 + ((point - 0x10000) >> 10));
    text += static_cast<char16_t>(0xdc00 + ((point - 0x10000) & 0x3ff));
  }
}

void append(std::string& text, char32_t point) {
  if (point < 0x80) {
    text += static_cast<char>(point);
    return;
  }
  const int rest = point < 0x800 ? 1 : point < 0x10000 ? 2 : 3;  // continuation bytes
  const unsigned mark = 0xff00U >> (rest + 1) & 0xffU;
  text += static_cast<char>(mark | point >> (6 * rest));
  for (int j = rest - 1; j >= 0; --j) {
    text += static_cast<char>(0x80 | (point >> (6 * j) & 0x3f));
  }
}

}  // namespace

std::u16string toUtf16(std::string_view utf8) {
  std::u16string text;
  text.reserve(utf8.size());
  for (std::size_t k = 0; k < utf8.size();) {
    const char32_t point = decode(utf8, k);
    if (point == kBad) detail::fail("InvalidUtf8", {std::to_string(k)});
    append(text, point);
  }
  return text;
}

std::string toUtf8(std::u16string_view utf16) {
  std::string text;
  text.reserve(utf16.size());
  for (std::size_t k = 0; k < utf16.size();) {
    const char32_t point = decode(utf16, k);
    if (point == kBad) detail::fail("InvalidUtf16", {std::to_string(k)});
    append(text, point);
  }
  return text;
}

ArrayPtr createChar(std::string_view utf8) { return createChar(toUtf16(utf8)); }

ArrayPtr createChar(std::u16string_view utf16) {
  const std::array<std::size_t, 2> dims{1, utf16.size()};
  auto content = detail::newPlainContent(ClassId::Char, dims, detail::Fill::None);
  std::ranges::copy(utf16, static_cast<char16_t*>(detail::elementsOf(content.get())));
  return detail::newArray(std::move(content));
}

std::u16string charText(const vxArray* array) {
  const bool isChar = classId(array) == ClassId::Char;
  const Dims dims = dimensions(array);
  const bool isRow = dims.size() == 2 && dims[0] == 1;
  if (!isChar || !(isRow || isEmpty(array))) detail::fail("NotText", {describe(array)});
  const auto units = elements<char16_t>(array);
  return {units.begin(), units.end()};
}

}  // namespace vexal
