// The tables of classes and functions, in the form in which a call uses them: names are
// looked up once, as symbols, and compared by address from then on. Neither symbols nor
// classes that somebody has used are ever removed.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/function.h"
#include "host/vcos/class.h"

namespace vcos::detail {
class Description;
}

namespace vexal::detail {

/// A name that is or was that of a function or method.
struct Symbol {
  std::string_view name;
  std::shared_ptr<const HostFunction> function;  // null for names of methods only
};

struct Method {
  const Symbol* symbol;
  std::shared_ptr<const HostFunction> function;
};

struct HostClass final : vcos::COSClass {
  HostClass();
  ~HostClass();

  std::string_view name;
  const HostClass* superclass = nullptr;  // once a described class is filled in
  std::vector<Method> methods;
  std::unique_ptr<vcos::detail::Description> description;  // null for one defined by name alone
  bool isWithdrawn = false;  // its package failed to initialise, and may be added again
  std::vector<std::unique_ptr<vcos::detail::Description>> former;  // subclasses may refer to them
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

/// The class of that name if it is known by name, which says nothing of its superclass yet.
HostClass* findClass(std::string_view name);
/// The class, loaded by its package if need be and filled in; null when there is none. Raises
/// what its description throws.
HostClass* loadClass(std::string_view name);
/// The same; raises "Vexal:class:UnknownClass" when there is none.
HostClass& requireClass(std::string_view name);
HostClass& addClass(std::string_view name, const HostClass* superclass);
/// Takes out a described class if nobody has used it yet; otherwise its name may be given a new
/// description.
void withdrawClass(const std::string& name);
/// The names of the classes directly below a package, or at any depth, but for withdrawn ones; in
/// alphabetical order.
std::vector<std::string> classNamesBelow(std::string_view package, bool isDeep = false);

/// The method that objects of the class answer the name with, or null.
const std::shared_ptr<const HostFunction>* findMethod(const HostClass* hostClass,
                                                      const Symbol* symbol);

/// The most specific class that both are or derive from; null when there is none.
const HostClass* commonClass(const HostClass* a, const HostClass* b) noexcept;
bool isOrDerives(const HostClass* hostClass, const HostClass* ancestor) noexcept;
bool isOrDerives(const HostClass* hostClass, std::string_view ancestor) noexcept;

/// Calls a function for one output if it has any; null when it gives none. Throws what it throws.
ArrayPtr callForOptionalOutput(std::string_view name, std::span<const vxArray* const> inputs);

bool isBuiltInClassName(std::string_view name) noexcept;
std::string_view builtInClassName(ClassId classId) noexcept;

}  // namespace vexal::detail
