// Signatures of methods, and methods in the form in which the host calls them.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/export.h"
#include "host/vcos/name.h"
#include "host/vcos/table.h"

namespace vcos {

namespace detail {
struct DataType;
}

/// What a method takes and gives.
class VEXAL_API COSMethodSignature {
 public:
  struct Input {
    InternedName name;
    /// The data type.
    InternedName type;
    bool isOptional = false;
    const detail::DataType* parsed = nullptr;
  };

  /// From the words of a VcosMethod. Raises "Vexal:class:InvalidSignature" when there are
  /// more names than types or an input that must be given follows one that need not.
  static COSMethodSignature createMethodSignature(std::string_view inputNames,
                                                  std::string_view outputType,
                                                  std::string_view inputTypes,
                                                  std::size_t optionalInputs = 0);

  /// The inputs without the object.
  std::span<const Input> inputs() const noexcept { return inputs_; }
  /// How many of them must be given.
  std::size_t requiredInputs() const noexcept;
  InternedName outputType() const noexcept { return outputType_; }
  bool hasOutput() const noexcept { return outputType_.text() != "void"; }

 private:
  std::vector<Input> inputs_;
  InternedName outputType_;
};

namespace factory::impl {

/// A method of a class that is filled in.
struct MethodImpl {
  VcosMethod method;
  COSMethodSignature signature;
};

/// Checks and converts arguments and calls a method's body.
class VEXAL_API Invoker {
 public:
  /// As COSMethodSignature::createMethodSignature, with one type of input each.
  static COSMethodSignature createSignature(std::string_view inputNames,
                                            std::string_view outputType,
                                            std::span<const std::string_view> inputTypes);

  /// Calls it; `call` has everything but the inputs. Raises "Vexal:class:" TooFewArguments
  /// and TooManyArguments, what a conversion raises, with the input's name, and what the
  /// body throws.
  static vexal::ArrayPtr invoke(const MethodImpl& method, MethodCall call,
                                std::span<const vxArray* const> inputs);
};

}  // namespace factory::impl
}  // namespace vcos
