// Data types in the form in which conversions use them: parsed once, kept for ever.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "host/array.h"
#include "host/vcos/name.h"
#include "host/vcos/type_repository.h"

namespace vexal::detail {
struct HostClass;
}

namespace vcos::detail {

enum class TypeKind : std::uint8_t {
  Any,
  Void,
  Double,
  Logical,
  Int32,
  Char,
  Cell,
  Struct,
  Text,
  Class
};
enum class Shape : std::uint8_t { Any, Scalar, Vector, Property };

struct AddedConversion {
  InternedName from;
  std::unique_ptr<COSTypeConversion> conversion;
};

struct DataType {
  std::string_view name;
  std::string_view typeName;  // without the shape
  TypeKind kind = TypeKind::Any;
  Shape shape = Shape::Any;
  std::vector<AddedConversion> added;
  const vexal::detail::HostClass* hostClass = nullptr;  // once it is known
};

/// The data type of that name, which is kept for ever; classes in it need not be known yet.
DataType& dataTypeNamed(std::string_view name);
/// The same if it is kept already; null when it is not.
DataType* findDataType(std::string_view name);

/// A value in some data type: the one it was made from, or one of its own.
class Converted {
 public:
  explicit Converted(const vxArray* value) : value_(value) {}
  explicit Converted(vexal::ArrayPtr made) : made_(std::move(made)), value_(made_.get()) {}
  const vxArray* get() const noexcept { return value_; }
  /// The value of one's own, which stays where it is; null when there is none.
  vexal::ArrayPtr take() noexcept { return std::move(made_); }

 private:
  vexal::ArrayPtr made_;
  const vxArray* value_;
};

/// As COSTypeRepository::convert, without a copy of what fits already.
Converted convertTo(const DataType& type, const vxArray* value);

}  // namespace vcos::detail
