// Named fields: those of struct arrays and of objects. Errors are those of array.h;
// a struct array has its fields in every element, an object has one element only.
#pragma once

#include <string>

#include "host/array.h"

namespace vexal {

/// A struct array with these fields, every value an empty 0-by-0 double; 1-by-1 without
/// a size. An empty or repeated name raises "Vexal:host:InvalidFieldName".
VEXAL_API ArrayPtr createStruct(std::span<const std::string_view> fields = {});
VEXAL_API ArrayPtr createStruct(Dims dims, std::span<const std::string_view> fields = {});

/// The field names in order of creation; valid while the array is unchanged.
VEXAL_API std::span<const std::string> fieldNames(const vxArray* record);

VEXAL_API bool hasField(const vxArray* record, std::string_view name);

/// The value of a field of the k-th element, borrowed like a cell's element. Raises
/// "Vexal:host:NoSuchField" when there is none of that name.
VEXAL_API const vxArray* field(const vxArray* record, std::string_view name, std::size_t k = 0);

/// The same of the field at a place in fieldNames().
VEXAL_API const vxArray* fieldAt(const vxArray* record, std::size_t place, std::size_t k = 0);

/// Stores a copy of the value in a field of the k-th element; a new name becomes a field
/// of every element. Raises "Vexal:host:InvalidFieldName" for an empty name, and
/// "Vexal:host:FixedObject" for an object that stands for a native value.
VEXAL_API void setField(vxArray* record, std::string_view name, const vxArray* value,
                        std::size_t k = 0);

}  // namespace vexal
