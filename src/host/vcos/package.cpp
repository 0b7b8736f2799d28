#include "host/vcos/package.h"

#include <algorithm>
#include <map>
#include <utility>

#include "host/detail/class_table.h"
#include "host/detail/messages.h"
#include "host/detail/thread.h"
#include "host/vcos/detail/description.h"
#include "host/vcos/detail/loading.h"

namespace vcos {
namespace {

using vexal::detail::fail;

// Never destroyed: packages last as long as the process.
std::map<std::string, std::unique_ptr<COSPackage>, std::less<>>& packages() {
  static auto& table = *new std::map<std::string, std::unique_ptr<COSPackage>, std::less<>>;
  return table;
}

COSPackage* find(std::string_view name) {
  const auto found = packages().find(name);
  return found == packages().end() ? nullptr : found->second.get();
}

// "a.b" of "a.b.c"; empty for a root.
std::string_view parentName(std::string_view name) {
  const std::size_t dot = name.rfind('.');
  return dot == std::string_view::npos ? std::string_view() : name.substr(0, dot);
}

std::string_view shortName(std::string_view name) {
  return name.substr(name.rfind('.') + 1);  // npos + 1 is 0
}

bool isWellFormed(std::string_view name) {
  const bool hasEmptyEnd = name.empty() || name.front() == '.' || name.back() == '.';
  return !hasEmptyEnd && name.find("..") == std::string_view::npos;
}

void removeTree(const std::string& name) {
  std::erase_if(packages(), [&](const auto& entry) {
    return entry.first == name || entry.first.starts_with(name + '.');
  });
}

}  // namespace

COSPackageInfo::COSPackageInfo(std::string name) : name_(std::move(name)) {}

COSPackageInfo::~COSPackageInfo() = default;

void COSPackageInfo::initializePackage(COSPackage*) {}

bool COSPackageInfo::attemptToLoadClass(COSPackage*, std::string_view) { return false; }
bool COSPackageInfo::attemptToLoadSubPackage(COSPackage*, std::string_view) { return false; }
bool COSPackageInfo::attemptToLoadFunction(COSPackage*, std::string_view) { return false; }
bool COSPackageInfo::attemptToLoadType(COSPackage*, std::string_view) { return false; }

void COSPackageInfo::throwErrorForDefinitionOfExistingName(std::string_view name) const {
  fail("NameExists", {name});
}

COSPackage::COSPackage(std::unique_ptr<COSPackageInfo> info, COSPackage* parent)
    : info_(std::move(info)), parent_(parent) {}

COSPackage::~COSPackage() = default;

COSPackage* COSPackage::addPackage(std::unique_ptr<COSPackageInfo> info) {
  vexal::detail::requireHostThread();
  const std::string name = info->name();
  if (!isWellFormed(name)) fail("InvalidName", {name});
  COSPackage* const parent = find(parentName(name));
  if (parent == nullptr && !parentName(name).empty()) {
    fail("UnknownParentPackage", {name, parentName(name)});
  }
  if (const COSPackage* const existing = find(name)) {
    const COSPackage& refusing = parent != nullptr ? *parent : *existing;
    refusing.info().throwErrorForDefinitionOfExistingName(name);
  }
  std::unique_ptr<COSPackage> owned(new COSPackage(std::move(info), parent));
  COSPackage* const package = packages().emplace(name, std::move(owned)).first->second.get();
  try {
    package->info_->initializePackage(package);
  } catch (...) {
    for (const std::string& each : vexal::detail::classNamesBelow(name, true)) {
      vexal::detail::withdrawClass(each);
    }
    removeTree(name);
    throw;
  }
  return package;
}

COSPackage* COSPackage::getPackage(std::string_view name) {
  vexal::detail::requireHostThread();
  if (COSPackage* const known = find(name)) return known;
  return detail::Loading::ask(name, &COSPackageInfo::attemptToLoadSubPackage) ? find(name)
                                                                              : nullptr;
}

void COSPackage::addClass(std::unique_ptr<COSClassInfo> info) {
  vexal::detail::requireHostThread();
  const std::string fullName = info->name();
  if (!isWellFormed(fullName) || parentName(fullName) != name()) fail("InvalidName", {fullName});
  const vexal::detail::HostClass* const known = vexal::detail::findClass(fullName);
  if ((known != nullptr && !known->isWithdrawn) || find(fullName) != nullptr) {
    info_->throwErrorForDefinitionOfExistingName(fullName);
  }
  auto description = std::make_unique<detail::Description>(std::move(info));
  vexal::detail::HostClass& hostClass = vexal::detail::addClass(fullName, nullptr);
  if (hostClass.description != nullptr) {
    hostClass.former.push_back(std::exchange(hostClass.description, nullptr));
  }
  hostClass.description = std::move(description);
  hostClass.isWithdrawn = false;
}

void COSPackage::initializeWith(COSPackageInfo& info) {
  const std::vector<std::string> before = classNames();
  try {
    info.initializePackage(this);
  } catch (...) {
    for (const std::string& name : classNames()) {
      if (!std::ranges::binary_search(before, name)) vexal::detail::withdrawClass(name);
    }
    throw;
  }
}

void COSPackage::addClass(const factory::ClassTable& table) {
  addClass(std::make_unique<factory::VcosFactoryClassInfo>(table));
}

std::vector<std::string> COSPackage::classNames() const {
  return vexal::detail::classNamesBelow(name());
}

std::vector<std::string> COSPackage::packageNames(const COSPackage* below) {
  vexal::detail::requireHostThread();
  std::vector<std::string> names;
  for (const auto& [name, package] : packages()) {
    if (package->parent() == below) names.push_back(name);
  }
  return names;
}

// Marks the package while it is asked.
bool detail::Loading::ask(std::string_view name, Hook hook) {
  if (parentName(name).empty()) return false;
  COSPackage* const package = COSPackage::getPackage(parentName(name));
  if (package == nullptr || package->isLoading_) return false;
  package->isLoading_ = true;
  struct Done {
    COSPackage& package;
    ~Done() { package.isLoading_ = false; }
  } const done{*package};
  return (package->info().*hook)(package, shortName(name));
}

bool detail::loadClass(std::string_view name) {
  return Loading::ask(name, &COSPackageInfo::attemptToLoadClass);
}

bool detail::loadFunction(std::string_view name) {
  return Loading::ask(name, &COSPackageInfo::attemptToLoadFunction);
}

bool detail::loadType(std::string_view name) {
  return Loading::ask(name, &COSPackageInfo::attemptToLoadType);
}

}  // namespace vcos
