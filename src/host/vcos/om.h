// Operations on arrays of class objects, by the names under which libraries call them. Errors
// are those of array.h and object.h.
#pragma once

#include <span>
#include <string_view>

#include "host/array.h"

/// A rows-by-columns array of that class: its handles refer to nothing yet, its values are 0.
VEXAL_API vexal::ArrayPtr omCreateVCOSMatrix(std::size_t rows, std::size_t columns,
                                             std::string_view className);

/// The 0-by-0 array of that class.
VEXAL_API vexal::ArrayPtr omCreateVCOSEmpty(std::string_view className);

/// Puts a 1-by-1 object in the place of an element, 0-based and column-major.
VEXAL_API void omSetArrayElement(vxArray* objects, std::size_t index, const vxArray* object);

/// The object at that place: of a handle, the object that it always is.
VEXAL_API vexal::ArrayPtr omGetArrayElement(const vxArray* objects, std::size_t index);

/// Gives an array of class "vexal.mixin.Heterogeneous" the most specific class that all its
/// elements share; it stays as it is when they share none or there are none.
VEXAL_API void omSetClassOfHeterogeneousArray(vxArray* objects);

/// Whether the array is of a class that has a description; false for null.
VEXAL_API bool omIsVCOS(const vxArray* array);

/// A new object from the constructor of the class. Raises "Vexal:class:" UnknownClass,
/// AbstractClass, NotConstructible, what the conversion of the inputs raises and what the
/// constructor throws.
VEXAL_API vexal::ArrayPtr omConstructObjectWithClient(std::string_view className,
                                                      std::span<const vxArray* const> inputs);

/// The integers beneath an array of value objects, an int32 array of the same size. Raises
/// "Vexal:class:NotAValueClass".
VEXAL_API vexal::ArrayPtr omGetUnderlyingArray(const vxArray* values);

/// How many there are; 0 for anything but value objects.
VEXAL_API std::size_t omGetNumberOfElementsInUnderlyingArray(const vxArray* values);

/// The array of value objects with these integers beneath, whether members have them or not.
/// Raises "Vexal:class:NotAValueClass", "Vexal:host:WrongClass".
VEXAL_API vexal::ArrayPtr omCreateBuiltinBasedArrayFromUnderlyingArray(std::string_view className,
                                                                       const vxArray* integers);
