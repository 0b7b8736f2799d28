// Message catalogs: the texts behind message identifiers.
//
// A text may name its arguments by position, "{0}", "{1}". The host brings the
// texts of "Vexal:class" and "Vexal:host"; every other library registers its own.
// May be used from any thread.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "host/export.h"

namespace vexal {

/// A catalog and a key, the name under which an error is known: "Kxsim:Design",
/// "InvalidSimState". Refers to the strings it was made from.
struct MessageId {
  std::string_view catalog;
  std::string_view key;
};

/// One line of a message table.
struct MessageText {
  std::string_view key;
  std::string_view text;
};

/// Adds the texts to the catalog, copying them; the text of a key that the
/// catalog already has is replaced.
VEXAL_API void registerCatalog(std::string_view catalog, std::span<const MessageText> texts);

/// The message in words, with its arguments put in. A message that nobody has
/// registered is told from its key and arguments: "Invalid sim state: x".
VEXAL_API std::string messageText(MessageId id, std::span<const std::string_view> arguments);

}  // namespace vexal
