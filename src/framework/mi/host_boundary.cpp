#include "framework/mi/host_boundary.h"

#include <string>
#include <vector>

#include "framework/messages.h"
#include "framework/meta/registry.h"
#include "host/catalog.h"
#include "host/diagnostic.h"

namespace mf::zero::mi {
namespace {

void registerMessages() {
  const auto [entries, count] = mf0::messages::catalog();
  std::vector<vexal::MessageText> texts;
  texts.reserve(count);
  for (std::size_t k = 0; k < count; ++k) texts.push_back({entries[k].key, entries[k].text});
  vexal::registerCatalog("mf0:messages", texts);
}

// The framework's exceptions reach scripts under their own catalog and key.
std::string identifierOf(const std::exception& error) noexcept {
  const auto* known = dynamic_cast<const foundation::core::except::AbstractException*>(&error);
  return known ? known->GetID() : std::string();
}

}  // namespace

void attachToHost() {
  meta::MetaRegistry& registry = meta::MetaRegistry::getInstance();
  if (!registry.findType(kHostArrayType)) registry.registerPrimitiveType(kHostArrayType);
  registerMessages();
  vexal::registerErrorTranslator(&identifierOf);
}

}  // namespace mf::zero::mi
