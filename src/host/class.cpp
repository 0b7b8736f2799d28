// Definition of classes and methods.
#include <algorithm>

#include "host/detail/class_table.h"
#include "host/detail/install.h"
#include "host/detail/messages.h"
#include "host/detail/thread.h"
#include "host/object.h"
#include "host/vcos/script.h"

namespace vexal {

void defineClass(std::string_view name, std::string_view superclass) {
  detail::requireHostThread();
  if (name.empty()) detail::fail("InvalidName", {name});
  const bool isTaken = detail::findClass(name) != nullptr || detail::isBuiltInClassName(name);
  if (isTaken) detail::fail("ClassExists", {name});
  const detail::HostClass* above = superclass.empty() ? nullptr : &detail::requireClass(superclass);
  detail::addClass(name, above);
}

bool isClassDefined(std::string_view name) {
  detail::requireHostThread();
  return detail::loadClass(name) != nullptr;
}

std::string_view superclassOf(std::string_view name) {
  detail::requireHostThread();
  const detail::HostClass* above = detail::requireClass(name).superclass;
  return above == nullptr ? std::string_view() : above->name;
}

bool isSubclass(std::string_view name, std::string_view ofClass) {
  detail::requireHostThread();
  return detail::isOrDerives(detail::loadClass(name), ofClass);
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
  hostClass.methods.push_back({symbol, std::make_shared<const HostFunction>(std::move(function))});
}

bool hasMethod(std::string_view className, std::string_view method) {
  detail::requireHostThread();
  const detail::Symbol* symbol = detail::findSymbol(method);
  return symbol != nullptr && detail::findMethod(detail::loadClass(className), symbol) != nullptr;
}

void detail::installClasses() {
  defineClass(kHeterogeneousClass);
  defineClass(kModelSimStateClass);
  defineClass(script::kForeignClass);
}

}  // namespace vexal
