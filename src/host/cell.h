// Cell arrays: arrays whose elements are arrays. Errors are those of array.h.
#pragma once

#include "host/array.h"

namespace vexal {

/// A rows-by-columns cell array of empty 0-by-0 doubles.
VEXAL_API ArrayPtr createCell(std::size_t rows, std::size_t columns);

/// The element at a 0-based column-major index, borrowed: valid until the cell array
/// is changed or released, never to be destroyed by the caller.
VEXAL_API const vxArray* cellElement(const vxArray* cell, std::size_t index);

/// Stores a copy of the value, which shares its content; the caller keeps the value.
VEXAL_API void setCell(vxArray* cell, std::size_t index, const vxArray* value);

}  // namespace vexal
