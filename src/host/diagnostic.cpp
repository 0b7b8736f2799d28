#include "host/diagnostic.h"

#include "host/detail/messages.h"

namespace vexal {

void Diagnostic::add(MessageId id, std::initializer_list<std::string_view> arguments) {
  items_.push_back({std::string(id.catalog), std::string(id.key),
                    messageText(id, {arguments.begin(), arguments.size()})});
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

void throwDiagnostic(const Diagnostic& diagnostic) { throw HostError(diagnostic); }

void raise(MessageId id, std::initializer_list<std::string_view> arguments) {
  Diagnostic diagnostic;
  diagnostic.add(id, arguments);
  throw HostError(std::move(diagnostic));
}

}  // namespace vexal
