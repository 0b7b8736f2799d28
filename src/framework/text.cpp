#include "framework/text.h"

#include <cstring>
#include <new>

namespace mf::zero {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

// Eight bytes at a time, the last ones overlapping; good enough to spread a few hundred texts.
std::size_t hashOf(std::u16string_view text) {
  constexpr std::uint64_t kFactor = 0x9e3779b97f4a7c15U;
  std::uint64_t hash = text.size();
  const auto mix = [&hash](std::uint64_t word) {
    hash = (hash ^ word) * kFactor;
    hash ^= hash >> 32;
  };
  const auto mixFour = [&mix](const char16_t* units) {
    std::uint64_t word = 0;
    std::memcpy(&word, units, sizeof word);
    mix(word);
  };
  if (text.size() < 4) {
    for (const char16_t unit : text) mix(unit);
  } else {
    const char16_t* const last = text.data() + text.size() - 4;
    for (const char16_t* at = text.data(); at < last; at += 4) mixFour(at);
    mixFour(last);
  }
  return static_cast<std::size_t>(hash);
}

bool isHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool isLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

// Takes the next code point off the front.
char32_t takeUtf16(std::u16string_view& text) {
  const char32_t unit = text.front();
  text.remove_prefix(1);
  if (isHighSurrogate(unit) && !text.empty() && isLowSurrogate(text.front())) {
    const char32_t low = text.front();
    text.remove_prefix(1);
    return 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
  }
  return isHighSurrogate(unit) || isLowSurrogate(unit) ? kReplacement : unit;
}

void appendUtf8(std::string& out, char32_t code) {
  const auto trail = [&](int shift) { out += static_cast<char>(0x80 | ((code >> shift) & 0x3F)); };
  if (code < 0x80) {
    out += static_cast<char>(code);
  } else if (code < 0x800) {
    out += static_cast<char>(0xC0 | (code >> 6));
    trail(0);
  } else if (code < 0x10000) {
    out += static_cast<char>(0xE0 | (code >> 12));
    trail(6);
    trail(0);
  } else {
    out += static_cast<char>(0xF0 | (code >> 18));
    trail(12);
    trail(6);
    trail(0);
  }
}

void appendUtf16(std::u16string& out, char32_t code) {
  if (code < 0x10000) {
    out += static_cast<char16_t>(code);
  } else {
    out += static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10));
    out += static_cast<char16_t>(0xDC00 + ((code - 0x10000) & 0x3FF));
  }
}

struct Lead {
  int trailing;        // bytes to follow; -1 for a byte that begins nothing
  unsigned char low;   // the range of the first of them, which keeps out overlong forms,
  unsigned char high;  // surrogates and what lies beyond U+10FFFF
};

Lead leadOf(unsigned char byte) {
  if (byte < 0x80) return {0, 0, 0};
  if (byte < 0xC2 || byte > 0xF4) return {-1, 0, 0};
  if (byte < 0xE0) return {1, 0x80, 0xBF};
  if (byte == 0xE0) return {2, 0xA0, 0xBF};
  if (byte == 0xED) return {2, 0x80, 0x9F};
  if (byte < 0xF0) return {2, 0x80, 0xBF};
  if (byte == 0xF0) return {3, 0x90, 0xBF};
  return {3, 0x80, static_cast<unsigned char>(byte == 0xF4 ? 0x8F : 0xBF)};
}

// Takes the next code point off the front; of a malformed sequence, as much as could have begun a
// well-formed one.
char32_t takeUtf8(std::string_view& text) {
  const auto first = static_cast<unsigned char>(text.front());
  text.remove_prefix(1);
  Lead lead = leadOf(first);
  if (lead.trailing < 0) return kReplacement;
  if (lead.trailing == 0) return first;
  char32_t code = first & (0x3FU >> lead.trailing);
  for (; lead.trailing > 0; --lead.trailing) {
    const auto next = static_cast<unsigned char>(text.empty() ? 0 : text.front());
    if (next < lead.low || next > lead.high) return kReplacement;
    text.remove_prefix(1);
    code = code << 6 | (next & 0x3FU);
    lead.low = 0x80;
    lead.high = 0xBF;
  }
  return code;
}

}  // namespace

Text::Text(std::u16string_view text) {
  if (!text.empty()) rep_ = new Rep{{1}, std::u16string(text)};
}

Text::Text(TextCache& cache, std::u16string_view text) {
  if (text.size() > TextCache::kLongest) {
    *this = Text(text);
    return;
  }
  Text& entry = cache.entries_[hashOf(text) % TextCache::kEntries];
  if (entry != text) entry = Text(text);
  rep_ = entry.rep_;
  retain();
}

void Text::free(Rep* rep) { delete rep; }

const std::u16string& Text::emptyText() {
  // Never destroyed: texts may be read while the process ends.
  alignas(std::u16string) static std::byte memory[sizeof(std::u16string)];
  static const auto* const empty = new (memory) std::u16string;
  return *empty;
}

std::string toUtf8(std::u16string_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) appendUtf8(result, takeUtf16(text));
  return result;
}

std::u16string toUtf16(std::string_view text) {
  std::u16string result;
  result.reserve(text.size());
  while (!text.empty()) appendUtf16(result, takeUtf8(text));
  return result;
}

}  // namespace mf::zero
