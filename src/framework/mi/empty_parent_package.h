// Packages of the host's class-object system, made known together with the packages
// above them.
#pragma once

#include <memory>
#include <string_view>

#include "framework/export.h"
#include "host/vcos/package.h"

namespace mf::zero::mi {

/// A host package that adds nothing by itself: a parent of others, or the base of one that adds
/// classes.
class MF0_API EmptyParentPackage : public vcos::COSPackageInfo {
 public:
  using COSPackageInfo::COSPackageInfo;

  /// Adds the package to the host, its missing parents first as empty packages. A package that the
  /// host knows already stays as it is. Answers the host's package, which lives as long as the
  /// process. Raises what the host raises; parents added before that stay.
  static vcos::COSPackage* registerPackage(std::unique_ptr<EmptyParentPackage> package);
  /// The same for a plain one.
  static vcos::COSPackage* registerPackage(std::string_view name);
};

}  // namespace mf::zero::mi
