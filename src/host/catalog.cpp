// Catalogs in one table, guarded by a lock because errors are raised on every thread.
#include "host/catalog.h"

#include <map>
#include <mutex>

#include "host/detail/messages.h"

namespace vexal {
namespace {

using Texts = std::map<std::string, std::string, std::less<>>;

std::string identifierOf(MessageId id) {
  std::string identifier(id.catalog);
  identifier += ':';
  identifier += id.key;
  return identifier;
}

void put(Texts& texts, std::string_view catalog, std::span<const MessageText> entries) {
  for (const MessageText& entry : entries) {
    texts.insert_or_assign(identifierOf({catalog, entry.key}), std::string(entry.text));
  }
}

class Catalogs {
 public:
  Catalogs() {
    put(texts_, detail::kHostCatalog, detail::kHostTexts);
    put(texts_, detail::kClassCatalog, detail::kClassTexts);
  }

  void add(std::string_view catalog, std::span<const MessageText> entries) {
    const std::scoped_lock lock(mutex_);
    put(texts_, catalog, entries);
  }

  bool find(MessageId id, std::string& text) const {
    const std::scoped_lock lock(mutex_);
    const auto found = texts_.find(identifierOf(id));
    if (found != texts_.end()) text = found->second;
    return found != texts_.end();
  }

 private:
  mutable std::mutex mutex_;
  Texts texts_;
};

// Never destroyed: errors may still be raised while the process ends.
Catalogs& catalogs() {
  static Catalogs& table = *new Catalogs;
  return table;
}

// "{0}" to "{9}" become the arguments, one that is not given becomes nothing.
std::string fillIn(std::string_view text, std::span<const std::string_view> arguments) {
  std::string filled;
  for (std::size_t k = 0; k < text.size(); ++k) {
    const bool isPlace = text[k] == '{' && k + 2 < text.size() && text[k + 1] >= '0' &&
                         text[k + 1] <= '9' && text[k + 2] == '}';
    if (!isPlace) {
      filled += text[k];
      continue;
    }
    const auto index = static_cast<std::size_t>(text[k + 1] - '0');
    if (index < arguments.size()) filled += arguments[index];
    k += 2;
  }
  return filled;
}

constexpr bool isUpper(char c) { return c >= 'A' && c <= 'Z'; }
constexpr char toLower(char c) { return isUpper(c) ? static_cast<char>(c - 'A' + 'a') : c; }

// "RandomMethodNotFound" as "Random method not found".
std::string wordsOf(std::string_view key) {
  std::string words;
  for (const char c : key) {
    if (isUpper(c) && !words.empty()) words += ' ';
    words += words.empty() ? c : toLower(c);
  }
  return words;
}

std::string textFromKey(MessageId id, std::span<const std::string_view> arguments) {
  std::string text = wordsOf(id.key);
  std::string_view separator = ": ";
  for (const std::string_view argument : arguments) {
    if (argument.empty()) continue;
    text += separator;
    text += argument;
    separator = ", ";
  }
  return text;
}

}  // namespace

void registerCatalog(std::string_view catalog, std::span<const MessageText> texts) {
  catalogs().add(catalog, texts);
}

std::string messageText(MessageId id, std::span<const std::string_view> arguments) {
  std::string text;
  return catalogs().find(id, text) ? fillIn(text, arguments) : textFromKey(id, arguments);
}

}  // namespace vexal
