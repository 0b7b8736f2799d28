#include "host/class_table.h"

#include "host/install.h"
#include "host/messages.h"
#include "host/object.h"
#include "host/thread.h"

#include <algorithm>
#include <array>

namespace vexal {
namespace detail {
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

const Symbol* findSymbol(std::string_view name) {
  const auto found = symbols().find(name);
  return found == symbols().end() ? nullptr : &found->second;
}

Symbol& symbolFor(std::string_view name) { return symbols()[std::string(name)]; }

const HostClass* findClass(std::string_view name) {
  const auto found = classes().find(name);
  return found == classes().end() ? nullptr : &found->second;
}

HostClass& requireClass(std::string_view name) {
  const auto found = classes().find(name);
  if (found == classes().end()) fail("UnknownClass", {name});
  return found->second;
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

bool isOrDerives(const HostClass* hostClass, const HostClass* ancestor) noexcept {
  while (hostClass != nullptr && hostClass != ancestor) hostClass = hostClass->superclass;
  return hostClass != nullptr;
}

bool isOrDerives(const HostClass* hostClass, std::string_view ancestor) noexcept {
  while (hostClass != nullptr && hostClass->name != ancestor) hostClass = hostClass->superclass;
  return hostClass != nullptr;
}

std::string_view builtInClassName(ClassId classId) noexcept {
  return kBuiltInNames[static_cast<std::size_t>(classId)];
}

void installClasses() {
  defineClass(kHeterogeneousClass);
  defineClass(kModelSimStateClass);
}

}  // namespace detail

void defineClass(std::string_view name, std::string_view superclass) {
  detail::requireHostThread();
  if (name.empty()) detail::fail("InvalidName", {name});
  const bool isTaken = detail::findClass(name) != nullptr ||
                       std::ranges::count(detail::kBuiltInNames, name) > 0;
  if (isTaken) detail::fail("ClassExists", {name});
  const detail::HostClass* above =
      superclass.empty() ? nullptr : &detail::requireClass(superclass);
  const auto entry = detail::classes().try_emplace(std::string(name)).first;
  entry->second = {entry->first, above, {}};
}

bool isClassDefined(std::string_view name) {
  detail::requireHostThread();
  return detail::findClass(name) != nullptr;
}

std::string_view superclassOf(std::string_view name) {
  detail::requireHostThread();
  const detail::HostClass* above = detail::requireClass(name).superclass;
  return above == nullptr ? std::string_view() : above->name;
}

bool isSubclass(std::string_view name, std::string_view ofClass) {
  detail::requireHostThread();
  return detail::isOrDerives(detail::findClass(name), ofClass);
}

void defineMethod(std::string_view className, std::string_view method, HostFunction function) {
  detail::requireHostThread();
  detail::HostClass& hostClass = detail::requireClass(className);
  if (method.empty()) detail::fail("InvalidName", {method});
  if (!function.body) detail::fail("InvalidFunction", {method});
  const detail::Symbol* symbol = &detail::symbolFor(method);
  if (std::ranges::count(hostClass.methods, symbol, &detail::Method::symbol) > 0) {
    detail::fail("MethodExists", {className, method});
  }
  hostClass.methods.push_back(
      {symbol, std::make_shared<const HostFunction>(std::move(function))});
}

bool hasMethod(std::string_view className, std::string_view method) {
  detail::requireHostThread();
  const detail::Symbol* symbol = detail::findSymbol(method);
  return symbol != nullptr && detail::findMethod(detail::findClass(className), symbol) != nullptr;
}

}  // namespace vexal
