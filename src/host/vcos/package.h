// The packages of the class-object system: dotted names in a tree, each described by an
// info object that fills it and may load names when they are first asked for. All of it
// belongs to the host's thread.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/export.h"
#include "host/vcos/class_info.h"

namespace vcos {

class COSPackage;

namespace detail {
class Loading;
}

/// Describes one package. Owned by the package once that is added.
class VEXAL_API COSPackageInfo {
 public:
  /// The full dotted name, "kxsim.design".
  explicit COSPackageInfo(std::string name);
  COSPackageInfo(const COSPackageInfo&) = delete;
  COSPackageInfo& operator=(const COSPackageInfo&) = delete;
  virtual ~COSPackageInfo();

  const std::string& name() const noexcept { return name_; }

  /// Adds the package's classes and functions; called once, when it is added.
  virtual void initializePackage(COSPackage* package);

  /// Asked with the name below this package that nobody has defined; a hook that defines
  /// it returns true and the look-up is made once more. By default nothing is loaded.
  virtual bool attemptToLoadClass(COSPackage* package, std::string_view name);
  virtual bool attemptToLoadSubPackage(COSPackage* package, std::string_view name);
  virtual bool attemptToLoadFunction(COSPackage* package, std::string_view name);
  virtual bool attemptToLoadType(COSPackage* package, std::string_view name);

  /// Refuses a second definition of a name: raises "Vexal:class:NameExists".
  [[noreturn]] virtual void throwErrorForDefinitionOfExistingName(std::string_view name) const;

 private:
  std::string name_;
};

/// A package that the host knows. Lives as long as the process.
class VEXAL_API COSPackage {
 public:
  /// Adds and initialises a package. Raises "Vexal:class:InvalidName" for a name with an
  /// empty component, "Vexal:class:UnknownParentPackage" when the package above it is not
  /// known, and what the parent's throwErrorForDefinitionOfExistingName raises for a
  /// second definition. When the initialisation throws, the package and everything added
  /// below it are gone again; of a class that has been used already the name stays known, and
  /// may be defined anew.
  static COSPackage* addPackage(std::unique_ptr<COSPackageInfo> info);

  /// The package of that full name, loaded by the package above it when it is not known
  /// yet; null when there is none. What a hook looks up while it loads is not passed on
  /// to the same package again.
  static COSPackage* getPackage(std::string_view name);

  /// Adds a class below this package; its description is asked when the class is first used.
  /// Raises "Vexal:class:InvalidName" for a name that is not directly below this package, and
  /// what throwErrorForDefinitionOfExistingName raises when the name is taken.
  void addClass(std::unique_ptr<COSClassInfo> info);
  /// The same for a table, which must live for ever.
  void addClass(const factory::ClassTable& table);

  /// Lets a further description add its classes to this package: calls its initializePackage().
  /// When that throws, what it added is taken back as when a package is added.
  void initializeWith(COSPackageInfo& info);

  /// The full names of the classes and packages directly below, those added so far; in
  /// alphabetical order.
  std::vector<std::string> classNames() const;
  static std::vector<std::string> packageNames(const COSPackage* below);

  COSPackage(const COSPackage&) = delete;
  COSPackage& operator=(const COSPackage&) = delete;
  ~COSPackage();

  const std::string& name() const noexcept { return info_->name(); }
  COSPackageInfo& info() const noexcept { return *info_; }
  /// The package above this one; null for a root.
  COSPackage* parent() const noexcept { return parent_; }

 private:
  friend class detail::Loading;
  COSPackage(std::unique_ptr<COSPackageInfo> info, COSPackage* parent);

  std::unique_ptr<COSPackageInfo> info_;
  COSPackage* parent_;
  bool isLoading_ = false;
};

}  // namespace vcos
