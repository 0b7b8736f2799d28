// The stored form of string properties: eight bytes that point to a shared,
// counted, immutable UTF-16 string. Equal short texts written one after another
// ("running", "finished", a machine's name) share one string.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "framework/export.h"

namespace mf::zero {

/// An immutable UTF-16 text. Copies share; the empty text owns nothing.
/// Not for use from several threads at once, as everything that lives in a model.
class MF0_API Text {
 public:
  constexpr Text() = default;
  explicit Text(std::u16string_view text);
  Text(const Text& other) : rep_(other.rep_) {
    if (rep_) ++rep_->refs;
  }
  Text(Text&& other) noexcept : rep_(std::exchange(other.rep_, nullptr)) {}
  Text& operator=(Text other) noexcept {
    std::swap(rep_, other.rep_);
    return *this;
  }
  ~Text() {
    if (rep_ && --rep_->refs == 0) free(rep_);
  }

  const std::u16string& str() const { return rep_ ? rep_->text : emptyText(); }
  bool empty() const { return rep_ == nullptr; }
  bool operator==(const Text& other) const { return rep_ == other.rep_ || str() == other.str(); }
  bool operator==(std::u16string_view text) const { return str() == text; }

  /// The pointer itself, for a record that takes over the reference and gives it back.
  std::uintptr_t detach() { return reinterpret_cast<std::uintptr_t>(std::exchange(rep_, nullptr)); }
  static Text adopt(std::uintptr_t raw) {
    Text text;
    text.rep_ = reinterpret_cast<Rep*>(raw);
    return text;
  }

 private:
  struct Rep {
    std::uint64_t refs;
    std::u16string text;
  };
  static void free(Rep* rep);
  static const std::u16string& emptyText();

  Rep* rep_ = nullptr;
};

/// UTF-16 to UTF-8; an unpaired surrogate becomes U+FFFD.
MF0_API std::string toUtf8(std::u16string_view text);
/// UTF-8 to UTF-16; each malformed sequence becomes U+FFFD.
MF0_API std::u16string toUtf16(std::string_view text);

}  // namespace mf::zero
