#include "framework/mi/empty_parent_package.h"

#include <string>
#include <utility>

namespace mf::zero::mi {

vcos::COSPackage* EmptyParentPackage::registerPackage(std::unique_ptr<EmptyParentPackage> package) {
  const std::string_view name = package->name();
  if (vcos::COSPackage* known = vcos::COSPackage::getPackage(name)) return known;
  const std::size_t dot = name.rfind('.');
  if (dot != std::string_view::npos) registerPackage(name.substr(0, dot));
  return vcos::COSPackage::addPackage(std::move(package));
}

vcos::COSPackage* EmptyParentPackage::registerPackage(std::string_view name) {
  return registerPackage(std::make_unique<EmptyParentPackage>(std::string(name)));
}

}  // namespace mf::zero::mi
