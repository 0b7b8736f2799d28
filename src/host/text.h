// Text: character arrays, conversions between UTF-8 and UTF-16, and the words in
// which messages speak of an array.
#pragma once

#include <string>
#include <string_view>

#include "host/array.h"

namespace vexal {

/// UTF-16 of well-formed UTF-8; raises "Vexal:host:InvalidUtf8" otherwise.
VEXAL_API std::u16string toUtf16(std::string_view utf8);

/// UTF-8 of well-formed UTF-16; raises "Vexal:host:InvalidUtf16" otherwise.
VEXAL_API std::string toUtf8(std::u16string_view utf16);

/// A 1-by-n character array of the text, 1-by-0 when it is empty. UTF-8 must be
/// well-formed ("Vexal:host:InvalidUtf8"); UTF-16 code units are taken as they are.
VEXAL_API ArrayPtr createChar(std::string_view utf8);
VEXAL_API ArrayPtr createChar(std::u16string_view utf16);

/// The text of a character array: a row, or any empty one. Raises
/// "Vexal:host:NullArray" for null and "Vexal:host:NotText" for anything else.
VEXAL_API std::u16string charText(const vxArray* array);

/// The number as a reader would write it: the shortest form that reads back to
/// the same value, "NaN", "Inf" and "-Inf".
VEXAL_API std::string formatNumber(double value);

/// Size and class in words, "1-by-3 cell array", "empty 0-by-0 double array",
/// "1-by-1 kxsim.dist.Normal object (mean 0, standard deviation 1)"; "no array"
/// for null.
VEXAL_API std::string describe(const vxArray* array);

}  // namespace vexal
