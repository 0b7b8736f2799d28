// Data types and the conversions between them.
//
// A data type is a type and perhaps a shape, "double scalar":
//
//   types    double, logical, int32, char, cell, struct; VcosFactoryString, which is text (a
//            character array; for more than one, a cell array of them); the name of any
//            class; any, which takes everything as it is; void, which is nothing
//   shapes   scalar    one element (of text: one text)
//            vector    one row or column, or empty
//            property  one element or none
//            without a word, any size
//
// A value that is of the type already passes as it is. Otherwise a conversion that somebody
// has added is tried, from the value's class, then its superclasses, then "any"; what it
// makes is taken without another look. Then the host's own: numbers and logicals become
// one another where nothing is lost (a number that is not whole is no int32, NaN no logical,
// any other number but 0 is true), an empty 0-by-0 double becomes the empty array of
// any type that may be empty. All of it belongs to the host's thread.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "host/array.h"

namespace vcos {

/// A conversion that is added to the host's own.
class VEXAL_API COSTypeConversion {
 public:
  virtual ~COSTypeConversion();
  /// A value of the target type; whatever it throws reaches whoever needed the conversion.
  virtual vexal::ArrayPtr convert(const vxArray* value) = 0;

 protected:
  COSTypeConversion() = default;
  COSTypeConversion(const COSTypeConversion&) = default;
  COSTypeConversion& operator=(const COSTypeConversion&) = default;
};

/// The conversions that were added, each from the name of a type (or "any") to the name of
/// a data type.
class VEXAL_API COSTypeRepository {
 public:
  COSTypeRepository() = delete;

  /// Raises "Vexal:class:ConversionExists" when there is one of that pair.
  static void addConversion(std::string_view from, std::string_view to,
                            std::unique_ptr<COSTypeConversion> conversion);
  /// The conversion of that pair, borrowed; null when there is none.
  static COSTypeConversion* getConversion(std::string_view from, std::string_view to);
  /// Takes it out and returns it; null when there is none.
  static std::unique_ptr<COSTypeConversion> removeConversion(std::string_view from,
                                                             std::string_view to);

  /// The value in that data type. Raises "Vexal:class:" CannotConvert, WrongShape,
  /// UnknownType, and whatever an added conversion throws.
  static vexal::ArrayPtr convert(const vxArray* value, std::string_view dataType);
};

namespace factory {

/// The text of a "VcosFactoryString scalar"; raises "Vexal:host:NotText".
VEXAL_API std::u16string extractString(const vxArray* value);

namespace detail {

inline constexpr std::string_view kStringType = "VcosFactoryString";
inline constexpr std::string_view kStringScalar = "VcosFactoryString scalar";
inline constexpr std::string_view kStringVector = "VcosFactoryString vector";

/// Makes the data types of text known. They are from the host's start; calling it again
/// does no harm.
VEXAL_API void initStringDataTypes();

}  // namespace detail
}  // namespace factory
}  // namespace vcos
