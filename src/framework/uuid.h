// The identity of elements and meta elements: a 128-bit UUID as a plain value,
// readable at compile time so that generated tables can hold identities.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "framework/export.h"

namespace mf::zero {

/// A UUID in its two big-endian halves. The default value is the nil identity
/// (all bits zero), which asks `create` for a fresh one.
struct uuid {
  std::uint64_t high = 0;
  std::uint64_t low = 0;

  constexpr bool isNil() const { return (high | low) == 0; }
  constexpr auto operator<=>(const uuid&) const = default;

  /// Reads the form 8-4-4-4-12 in hexadecimal, either case; empty if `text` is anything else.
  static constexpr std::optional<uuid> parse(std::string_view text);

  /// The same form in lower case, 36 characters.
  MF0_API std::string toString() const;
};

namespace detail {
constexpr int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}
}  // namespace detail

constexpr std::optional<uuid> uuid::parse(std::string_view text) {
  if (text.size() != 36) return std::nullopt;
  uuid result;
  for (std::size_t i = 0, digits = 0; i < text.size(); ++i) {
    if (i == 8 || i == 13 || i == 18 || i == 23) {
      if (text[i] != '-') return std::nullopt;
      continue;
    }
    const int digit = detail::hexDigit(text[i]);
    if (digit < 0) return std::nullopt;
    std::uint64_t& half = digits++ < 16 ? result.high : result.low;
    half = half << 4 | static_cast<std::uint64_t>(digit);
  }
  return result;
}

namespace literals {
/// An identity in the source text; anything but a well-formed UUID does not compile.
consteval uuid operator""_uuid(const char* text, std::size_t length) {
  return uuid::parse({text, length}).value();
}
}  // namespace literals

/// A fresh random identity (version 4, variant 1). Each thread has its own generator, seeded
/// from the system and seeded anew in a forked child; no system call is made per identity.
MF0_API uuid generateNewUuid();

}  // namespace mf::zero

template <>
struct std::hash<mf::zero::uuid> {
  std::size_t operator()(const mf::zero::uuid& id) const noexcept {
    return static_cast<std::size_t>((id.high ^ id.low) * 0x9e3779b97f4a7c15U);
  }
};
