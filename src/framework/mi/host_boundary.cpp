#include "framework/mi/host_boundary.h"

#include <vector>

#include "framework/messages.h"
#include "framework/meta/registry.h"
#include "host/catalog.h"

namespace mf::zero::mi {
namespace {

void registerMessages() {
  const auto [entries, count] = mf0::messages::catalog();
  std::vector<vexal::MessageText> texts;
  texts.reserve(count);
  for (std::size_t k = 0; k < count; ++k) texts.push_back({entries[k].key, entries[k].text});
  vexal::registerCatalog("mf0:messages", texts);
}

}  // namespace

void attachToHost() {
  meta::MetaRegistry& registry = meta::MetaRegistry::getInstance();
  if (!registry.findType(kHostArrayType)) registry.registerPrimitiveType(kHostArrayType);
  registerMessages();
}

}  // namespace mf::zero::mi
