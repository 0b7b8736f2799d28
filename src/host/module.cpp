#include "host/module.h"

#include <dlfcn.h>

#include <filesystem>
#include <map>
#include <memory>

#include "host/detail/messages.h"
#include "host/detail/thread.h"
#include "host/runtime.h"

namespace vexal {
namespace {

struct Module {
  void* library = nullptr;
  bool isInitialized = false;
};

// Never destroyed: modules last as long as the process.
std::map<std::string, Module, std::less<>>& modules() {
  static auto& table = *new std::map<std::string, Module, std::less<>>;
  return table;
}

std::string nameOf(std::string_view path) {
  std::string name = std::filesystem::path(path).filename().string();
  name = name.substr(0, name.find('.'));
  return name.starts_with("lib") ? name.substr(3) : name;
}

void* open(std::string_view name, const std::string& path) {
  void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library != nullptr) return library;
  const char* const reason = dlerror();
  detail::fail("ModuleNotLoaded", {name, reason != nullptr ? reason : path});
}

// Closed again only before any of its code has been called.
struct Closer {
  void operator()(void* library) const noexcept { dlclose(library); }
};
using Library = std::unique_ptr<void, Closer>;

constexpr std::string_view kInitialize = "VXInitialize_";
constexpr std::string_view kTerminate = "VXTerminate_";

using EntryPoint = void (*)();

EntryPoint entryPoint(void* library, std::string_view name, std::string_view prefix) {
  const std::string symbol = std::string(prefix) + std::string(name);
  void* const found = dlsym(library, symbol.c_str());
  if (found == nullptr) detail::fail("ModuleEntryMissing", {name, symbol});
  return reinterpret_cast<EntryPoint>(found);
}

}  // namespace

std::string loadModule(std::string_view path) {
  detail::requireHostThread();
  std::string name = nameOf(path);
  if (isModuleLoaded(name) && !omGetVcosUsingUSM()) return name;
  if (!modules().contains(name)) {
    Library library(open(name, std::string(path)));
    entryPoint(library.get(), name, kInitialize);
    modules()[name].library = library.get();
    library.release();
  }
  Module& module = modules()[name];
  module.isInitialized = false;
  entryPoint(module.library, name, kInitialize)();
  module.isInitialized = true;
  return name;
}

void terminateModule(std::string_view name) {
  detail::requireHostThread();
  if (!isModuleLoaded(name)) detail::fail("ModuleNotLoaded", {name, "nobody has loaded it."});
  Module& module = modules().find(name)->second;
  const EntryPoint terminate = entryPoint(module.library, name, kTerminate);
  module.isInitialized = false;
  terminate();
}

bool isModuleLoaded(std::string_view name) {
  detail::requireHostThread();
  const auto known = modules().find(name);
  return known != modules().end() && known->second.isInitialized;
}

}  // namespace vexal
