// Names that are kept once and for ever, so that they can be compared by address and be
// referred to without a thought of their lifetime. For the host's thread.
#pragma once

#include <string>
#include <string_view>

#include "host/export.h"

namespace vcos {

/// A name in the table of names; the default one is no name at all.
class InternedName {
 public:
  constexpr InternedName() = default;
  explicit constexpr InternedName(const std::string* text) : text_(text) {}
  /// Valid for ever; empty without a name.
  std::string_view text() const noexcept {
    return text_ == nullptr ? std::string_view() : std::string_view(*text_);
  }
  constexpr bool operator==(const InternedName&) const = default;

 private:
  const std::string* text_ = nullptr;
};

namespace internal {

/// The one interned name with that text.
VEXAL_API InternedName makeInterned(std::string_view text);

/// The same text, valid for ever.
inline std::string_view keptForEver(std::string_view text) { return makeInterned(text).text(); }

}  // namespace internal
}  // namespace vcos
