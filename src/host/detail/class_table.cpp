#include "host/detail/class_table.h"

#include <algorithm>
#include <array>

#include "host/detail/messages.h"
#include "host/vcos/detail/description.h"

namespace vexal::detail {
namespace {

constexpr std::array<std::string_view, 7> kBuiltInNames{"double", "logical", "char",  "cell",
                                                        "struct", "int32",   "object"};

// Neither table is ever destroyed: arrays may be released while the process ends.
NameTable<Symbol>& symbols() {
  static auto& table = *new NameTable<Symbol>;
  return table;
}

NameTable<HostClass>& classes() {
  static auto& table = *new NameTable<HostClass>;
  return table;
}

}  // namespace

// A study calls the same function over and over; symbols are never removed, so the latest
// one found stays good.
const Symbol* findSymbol(std::string_view name) {
  static constinit const NameTable<Symbol>::value_type* latest = nullptr;
  if (latest == nullptr || latest->first != name) {
    const auto found = symbols().find(name);
    if (found == symbols().end()) return nullptr;
    latest = &*found;
  }
  return &latest->second;
}

Symbol& symbolFor(std::string_view name) {
  const auto entry = symbols().try_emplace(std::string(name)).first;
  entry->second.name = entry->first;
  return entry->second;
}

HostClass::HostClass() = default;
HostClass::~HostClass() = default;

HostClass* findClass(std::string_view name) {
  const auto found = classes().find(name);
  return found == classes().end() ? nullptr : &found->second;
}

HostClass& addClass(std::string_view name, const HostClass* superclass) {
  const auto entry = classes().try_emplace(std::string(name)).first;
  entry->second.name = entry->first;
  entry->second.superclass = superclass;
  return entry->second;
}

HostClass& requireClass(std::string_view name) {
  HostClass* const found = loadClass(name);
  if (found == nullptr) fail("UnknownClass", {name});
  return *found;
}

void withdrawClass(const std::string& name) {
  HostClass* const found = findClass(name);
  if (found == nullptr || found->description == nullptr) return;
  if (found->description->isFilled()) {
    found->isWithdrawn = true;
  } else {
    classes().erase(name);
  }
}

std::vector<std::string> classNamesBelow(std::string_view package, bool isDeep) {
  std::vector<std::string> names;
  for (const auto& [name, hostClass] : classes()) {
    const bool isBelow =
        name.size() > package.size() && name[package.size()] == '.' && name.starts_with(package);
    const bool isWanted = isDeep || name.rfind('.') == package.size();
    if (isBelow && isWanted && !hostClass.isWithdrawn) names.push_back(name);
  }
  std::ranges::sort(names);
  return names;
}

const std::shared_ptr<const HostFunction>* findMethod(const HostClass* hostClass,
                                                      const Symbol* symbol) {
  for (; hostClass != nullptr; hostClass = hostClass->superclass) {
    for (const Method& method : hostClass->methods) {
      if (method.symbol == symbol) return &method.function;
    }
  }
  return nullptr;
}

const HostClass* commonClass(const HostClass* a, const HostClass* b) noexcept {
  while (a != nullptr && !isOrDerives(b, a)) a = a->superclass;
  return a;
}

bool isOrDerives(const HostClass* hostClass, const HostClass* ancestor) noexcept {
  while (hostClass != nullptr && hostClass != ancestor) hostClass = hostClass->superclass;
  return hostClass != nullptr;
}

bool isOrDerives(const HostClass* hostClass, std::string_view ancestor) noexcept {
  while (hostClass != nullptr && hostClass->name != ancestor) hostClass = hostClass->superclass;
  return hostClass != nullptr;
}

bool isBuiltInClassName(std::string_view name) noexcept {
  return std::ranges::count(kBuiltInNames, name) > 0;
}

std::string_view builtInClassName(ClassId classId) noexcept {
  return kBuiltInNames[static_cast<std::size_t>(classId)];
}

}  // namespace vexal::detail
