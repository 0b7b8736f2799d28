// The stored form of string properties: eight bytes that point to a shared,
// counted, immutable UTF-16 string. Equal short texts written to one model
// ("running", "finished", a machine's name) share one string.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

#include "framework/export.h"

namespace mf::zero {

class TextCache;

/// An immutable UTF-16 text. Copies share; the empty text owns nothing. Like a shared pointer,
/// copies of one text may be used and dropped from several threads, one Text object may not.
class MF0_API Text {
 public:
  constexpr Text() = default;
  explicit Text(std::u16string_view text);
  /// The same, sharing with an equal text written through the cache before.
  Text(TextCache& cache, std::u16string_view text);
  Text(const Text& other) : rep_(other.rep_) { retain(); }
  Text(Text&& other) noexcept : rep_(std::exchange(other.rep_, nullptr)) {}
  Text& operator=(Text other) noexcept {
    std::swap(rep_, other.rep_);
    return *this;
  }
  ~Text() {
    if (rep_ && rep_->refs.fetch_sub(1, std::memory_order_acq_rel) == 1) free(rep_);
  }

  const std::u16string& str() const { return rep_ ? rep_->text : emptyText(); }
  bool empty() const { return rep_ == nullptr; }
  bool operator==(const Text& other) const {
    return rep_ == other.rep_ || (rep_ && other.rep_ && same(rep_->text, other.rep_->text));
  }
  bool operator==(std::u16string_view text) const {
    return rep_ ? same(rep_->text, text) : text.empty();
  }

  /// The pointer itself, for a record that takes over the reference and gives it back.
  std::uintptr_t detach() { return reinterpret_cast<std::uintptr_t>(std::exchange(rep_, nullptr)); }
  static Text adopt(std::uintptr_t raw) {
    Text text;
    text.rep_ = reinterpret_cast<Rep*>(raw);
    return text;
  }
  /// One more reference to a detached text, which stays detached.
  static Text share(std::uintptr_t raw) {
    Text text = adopt(raw);
    text.retain();
    return text;
  }

 private:
  /// Counted atomically although a model is used from one thread at a time: values carry texts
  /// out of the meta model, which several threads read, and a count costs only 2 ns that way.
  struct Rep {
    std::atomic<std::uint64_t> refs;
    const std::u16string text;
  };
  void retain() const {
    if (rep_) rep_->refs.fetch_add(1, std::memory_order_relaxed);
  }
  /// Bytewise; the library compares UTF-16 unit by unit.
  static bool same(std::u16string_view a, std::u16string_view b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * 2) == 0;
  }
  static void free(Rep* rep);
  static const std::u16string& emptyText();

  Rep* rep_ = nullptr;
};

/// The short texts that were last written to a model. Used from one thread at a time.
class TextCache {
 private:
  friend class Text;
  static constexpr std::size_t kEntries = 256;
  static constexpr std::size_t kLongest = 64;  ///< longer texts are seldom written twice
  std::array<Text, kEntries> entries_;
};

/// UTF-16 to UTF-8; an unpaired surrogate becomes U+FFFD.
MF0_API std::string toUtf8(std::u16string_view text);
/// UTF-8 to UTF-16; each malformed sequence becomes U+FFFD.
MF0_API std::u16string toUtf16(std::string_view text);

}  // namespace mf::zero
