#include "host/diagnostic.h"

#include <array>
#include <atomic>
#include <new>

#include "host/detail/messages.h"

namespace vexal {
namespace {

// Errors are turned into diagnostics on every thread.
constinit std::array<std::atomic<ErrorTranslator>, 8> translators{};

std::string identifierFrom(const std::exception& error) {
  for (const auto& translator : translators) {
    const ErrorTranslator translate = translator.load(std::memory_order_acquire);
    if (translate == nullptr) break;
    if (std::string identifier = translate(error); !identifier.empty()) return identifier;
  }
  return {};
}

std::unique_ptr<Diagnostic> diagnosticOf(MessageId id,
                                         std::initializer_list<std::string_view> arguments) {
  auto diagnostic = std::make_unique<Diagnostic>();
  diagnostic->add(id, arguments);
  return diagnostic;
}

std::unique_ptr<Diagnostic> diagnosticOf(const std::exception& error, std::string_view what) {
  const std::string identifier = identifierFrom(error);
  if (identifier.empty()) {
    return diagnosticOf(detail::Key("FunctionFailed").id(), {what, error.what()});
  }
  const std::size_t colon = identifier.rfind(':');
  const std::string_view all = identifier;
  auto diagnostic = std::make_unique<Diagnostic>();
  diagnostic->add({all.substr(0, colon), all.substr(colon + 1)}, std::string(error.what()));
  return diagnostic;
}

}  // namespace

void Diagnostic::add(MessageId id, std::initializer_list<std::string_view> arguments) {
  items_.push_back({std::string(id.catalog), std::string(id.key),
                    messageText(id, {arguments.begin(), arguments.size()})});
}

void Diagnostic::add(MessageId id, std::string text) {
  items_.push_back({std::string(id.catalog), std::string(id.key), std::move(text)});
}

struct HostError::State {
  Diagnostic diagnostic;
  std::string identifier;
};

HostError::HostError(Diagnostic diagnostic) {
  if (diagnostic.itemCount() == 0) diagnostic.add(detail::Key("UnknownError").id());
  std::string identifier = diagnostic.item(0).catalog + ':' + diagnostic.item(0).key;
  state_ = std::make_shared<const State>(State{std::move(diagnostic), std::move(identifier)});
}

HostError::~HostError() = default;

const std::string& HostError::identifier() const noexcept { return state_->identifier; }
const std::string& HostError::catalog() const noexcept { return diagnostic().item(0).catalog; }
const std::string& HostError::key() const noexcept { return diagnostic().item(0).key; }
const char* HostError::what() const noexcept { return diagnostic().item(0).text.c_str(); }
const Diagnostic& HostError::diagnostic() const noexcept { return state_->diagnostic; }

std::unique_ptr<Diagnostic> createDiagnostic(MessageId id, std::string_view argument) {
  auto diagnostic = std::make_unique<Diagnostic>();
  diagnostic->add(id, {argument});
  return diagnostic;
}

bool registerErrorTranslator(ErrorTranslator translator) noexcept {
  for (auto& place : translators) {
    ErrorTranslator held = nullptr;
    if (place.compare_exchange_strong(held, translator) || held == translator) return true;
  }
  return false;
}

std::unique_ptr<Diagnostic> diagnosticOfCurrentException(std::string_view what) {
  try {
    throw;
  } catch (const HostError& error) {
    return std::make_unique<Diagnostic>(error.diagnostic());
  } catch (const std::bad_alloc&) {
    return diagnosticOf(detail::Key("OutOfMemory").id(), {});
  } catch (const std::exception& error) {
    return diagnosticOf(error, what);
  } catch (...) {
    return diagnosticOf(detail::Key("FunctionFailed").id(), {what, "unknown exception"});
  }
}

void throwDiagnostic(const Diagnostic& diagnostic) { throw HostError(diagnostic); }

void raise(MessageId id, std::initializer_list<std::string_view> arguments) {
  Diagnostic diagnostic;
  diagnostic.add(id, arguments);
  throw HostError(std::move(diagnostic));
}

}  // namespace vexal
