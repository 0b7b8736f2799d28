// Asking packages to load what nobody knows yet: a class, function or type of a dotted name.
#pragma once

#include <string_view>

namespace vcos {
class COSPackage;
class COSPackageInfo;
}  // namespace vcos

namespace vcos::detail {

/// May mark a package as busy, so that what its hook looks up is not passed on to it again.
class Loading {
 public:
  using Hook = bool (COSPackageInfo::*)(COSPackage*, std::string_view);
  static bool ask(std::string_view name, Hook hook);
};

/// Whether the package that the name lies in says that it has loaded it. Throws what it throws;
/// false while the same package is loading something.
bool loadClass(std::string_view name);
bool loadFunction(std::string_view name);
bool loadType(std::string_view name);

}  // namespace vcos::detail
