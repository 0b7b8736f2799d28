// The tables of classes and functions, in the form in which a call uses them: names are
// looked up once, as symbols, and compared by address from then on. Neither symbols nor
// classes are ever removed.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/function.h"

namespace vexal::detail {

/// A name that is or was that of a function or method.
struct Symbol {
  std::shared_ptr<const HostFunction> function;  // null for names of methods only
};

struct Method {
  const Symbol* symbol;
  std::shared_ptr<const HostFunction> function;
};

struct HostClass {
  std::string_view name;
  const HostClass* superclass;
  std::vector<Method> methods;
};

struct NameHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view name) const noexcept {
    return std::hash<std::string_view>()(name);
  }
};

template <class T>
using NameTable = std::unordered_map<std::string, T, NameHash, std::equal_to<>>;

/// The symbol of a name, or null; for a name that is to be defined, a new one.
const Symbol* findSymbol(std::string_view name);
Symbol& symbolFor(std::string_view name);

/// The class of that name, or null; the second raises "Vexal:class:UnknownClass".
const HostClass* findClass(std::string_view name);
HostClass& requireClass(std::string_view name);
HostClass& addClass(std::string_view name, const HostClass* superclass);

/// The method that objects of the class answer the name with, or null.
const std::shared_ptr<const HostFunction>* findMethod(const HostClass* hostClass,
                                                      const Symbol* symbol);

bool isOrDerives(const HostClass* hostClass, const HostClass* ancestor) noexcept;
bool isOrDerives(const HostClass* hostClass, std::string_view ancestor) noexcept;

bool isBuiltInClassName(std::string_view name) noexcept;
std::string_view builtInClassName(ClassId classId) noexcept;

}  // namespace vexal::detail
