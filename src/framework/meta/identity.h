// Identities made from names: version 3 of RFC 4122, the MD5 digest of one namespace
// and the name. Usable at compile time, so that tables of fixed identities say names.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "framework/uuid.h"

namespace mf::zero::meta {

namespace detail {

/// MD5 (RFC 1321) of bytes that are given one by one.
class Md5 {
 public:
  constexpr void add(std::uint8_t byte) {
    block_[length_++ % 64] = byte;
    if (length_ % 64 == 0) mix();
  }
  /// The digest as two big-endian halves. Call once, at the end.
  constexpr uuid finish() {
    const std::uint64_t bits = length_ * 8;
    add(0x80);
    while (length_ % 64 != 56) add(0);
    for (int k = 0; k < 8; ++k) add(static_cast<std::uint8_t>(bits >> 8 * k));
    return {half(0), half(2)};
  }

 private:
  constexpr void mix();
  constexpr std::uint32_t word(std::size_t k) const {
    std::uint32_t value = 0;
    for (std::size_t b = 4; b-- > 0;) value = value << 8 | block_[4 * k + b];
    return value;
  }
  static constexpr std::uint64_t swapped(std::uint32_t v) {
    return v >> 24 | (v >> 8 & 0xff00) | (v << 8 & 0xff0000) | (v & 0xff) << 24;
  }
  constexpr std::uint64_t half(std::size_t k) const {
    return swapped(state_[k]) << 32 | swapped(state_[k + 1]);
  }

  std::array<std::uint32_t, 4> state_ = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476};
  std::array<std::uint8_t, 64> block_{};
  std::uint64_t length_ = 0;
};

/// The integer parts of 2^32 |sin k|, k = 1..64.
inline constexpr std::uint32_t kMd5Sines[64] = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391};
inline constexpr int kMd5Turns[4][4] = {
    {7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};

constexpr void Md5::mix() {
  auto [a, b, c, d] = state_;
  for (std::size_t k = 0; k < 64; ++k) {
    const std::size_t round = k / 16;
    const std::uint32_t f = round == 0   ? (b & c) | (~b & d)
                            : round == 1 ? (d & b) | (~d & c)
                            : round == 2 ? b ^ c ^ d
                                         : c ^ (b | ~d);
    const std::size_t from = round == 0   ? k
                             : round == 1 ? 5 * k + 1
                             : round == 2 ? 3 * k + 5
                                          : 7 * k;
    const std::uint32_t sum = a + f + kMd5Sines[k] + word(from % 16);
    a = d;
    d = c;
    c = b;
    b += std::rotl(sum, kMd5Turns[round][k % 4]);
  }
  state_ = {state_[0] + a, state_[1] + b, state_[2] + c, state_[3] + d};
}

}  // namespace detail

/// The namespace of all identities that are made from names, for all time.
inline constexpr uuid kNameSpace = uuid::parse("2e7d7a05-d274-41b2-b11d-e146ff0bb733").value();

/// The identity of whatever has that name: "kxsim.design.Figure".
constexpr uuid identityOf(std::string_view name) {
  detail::Md5 digest;
  for (const std::uint64_t half : {kNameSpace.high, kNameSpace.low}) {
    for (int shift = 56; shift >= 0; shift -= 8) {
      digest.add(static_cast<std::uint8_t>(half >> shift));
    }
  }
  for (const char c : name) digest.add(static_cast<std::uint8_t>(c));
  const uuid plain = digest.finish();
  return {(plain.high & ~0xf000ULL) | 0x3000ULL, (plain.low & ~(3ULL << 62)) | 2ULL << 62};
}

}  // namespace mf::zero::meta
