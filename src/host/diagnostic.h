// Diagnostics and host errors: how the host reports what went wrong.
//
// A call by name returns a Diagnostic; everything else throws a HostError, which
// carries one. May be used from any thread.
#pragma once

#include <exception>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/catalog.h"
#include "host/export.h"

namespace vexal {

/// The record of a failure: zero or more messages, the first being the failure
/// itself and the others telling more about it.
class VEXAL_API Diagnostic {
 public:
  struct Item {
    std::string catalog;
    std::string key;
    std::string text;
  };

  /// Adds a message, its text taken from the catalogs as they are now.
  void add(MessageId id, std::initializer_list<std::string_view> arguments = {});

  /// Adds a message in words of its own.
  void add(MessageId id, std::string text);

  std::size_t itemCount() const noexcept { return items_.size(); }

  /// The k-th message, k below itemCount().
  const Item& item(std::size_t k) const { return items_.at(k); }

 private:
  std::vector<Item> items_;
};

/// The exception in which a diagnostic travels. Copies share the diagnostic.
class VEXAL_API HostError : public std::exception {
 public:
  /// A diagnostic without messages is given "Vexal:host:UnknownError".
  explicit HostError(Diagnostic diagnostic);
  HostError(const HostError&) noexcept = default;
  HostError& operator=(const HostError&) noexcept = default;
  ~HostError() override;

  /// "Kxsim:Design:ValuesMustBeCellArray": catalog and key of the first message.
  const std::string& identifier() const noexcept;
  const std::string& catalog() const noexcept;
  const std::string& key() const noexcept;
  /// The text of the first message, UTF-8.
  const char* what() const noexcept override;
  const Diagnostic& diagnostic() const noexcept;

 private:
  struct State;
  std::shared_ptr<const State> state_;
};

/// A diagnostic holding the one message.
VEXAL_API std::unique_ptr<Diagnostic> createDiagnostic(MessageId id, std::string_view argument);

/// Throws the HostError built from the diagnostic.
[[noreturn]] VEXAL_API void throwDiagnostic(const Diagnostic& diagnostic);

/// Tells the identifier ("mf0:messages:InvalidValue") of an exception of another library;
/// empty when it is none of that library's. Must not throw.
using ErrorTranslator = std::string (*)(const std::exception& error) noexcept;

/// From now on exceptions that the translator knows become diagnostics with that catalog and
/// key and the exception's own text. Registering one again does no harm; there is room
/// for eight, and the function answers whether it was found or added.
VEXAL_API bool registerErrorTranslator(ErrorTranslator translator) noexcept;

/// The diagnostic of the exception being handled: that of a HostError as it is, one with the
/// identifier that a translator tells, "Vexal:host:OutOfMemory" for std::bad_alloc, and
/// "Vexal:host:FunctionFailed" naming `what` for every other.
VEXAL_API std::unique_ptr<Diagnostic> diagnosticOfCurrentException(std::string_view what);

/// Throws the HostError of one message.
[[noreturn]] VEXAL_API void raise(MessageId id,
                                  std::initializer_list<std::string_view> arguments = {});

}  // namespace vexal

/// Raises a host error by catalog key; the arguments are strings.
template <class... Arguments>
[[noreturn]] void vxErrMsgId(std::string_view catalog, std::string_view key,
                             const Arguments&... arguments) {
  vexal::raise({catalog, key}, {std::string_view(arguments)...});
}

/// As above, for identifiers that have a name.
template <class... Arguments>
[[noreturn]] void vxErrMsgId(vexal::MessageId id, const Arguments&... arguments) {
  vexal::raise(id, {std::string_view(arguments)...});
}

namespace component_Vexal::catalog_class {

/// A host object whose native element is gone.
inline constexpr vexal::MessageId key_InvalidHandle{"Vexal:class", "InvalidHandle"};

}  // namespace component_Vexal::catalog_class
