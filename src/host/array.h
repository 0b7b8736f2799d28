// Host arrays: values of the host environment, held only through pointers.
//
// An array has a class, two or more dimensions and its elements in column-major
// order. Content is shared between copies and parted when one of them is changed,
// so a copy of any size costs the same few nanoseconds. A property copy is an
// array that a property keeps for itself: it is made by copyForProperty() and
// released by deletePropertyArray(), every other array by destroy(); ArrayPtr and
// PropertyArrayPtr do it by themselves.
//
// Unless a function says otherwise, null raises "Vexal:host:NullArray", an array of
// the wrong class "Vexal:host:WrongClass", an index past the end
// "Vexal:host:IndexOutOfRange" and a call from another thread
// "Vexal:host:WrongThread". A size whose element or byte count does not fit raises
// "Vexal:host:TooManyElements", one for which there is no memory
// "Vexal:host:OutOfMemory". A failed operation changes nothing.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include "host/export.h"

struct vxArray;

namespace vexal {

/// The built-in classes; every object of a named class is of class Object.
enum class ClassId : std::uint8_t { Double, Logical, Char, Cell, Struct, Int32, Object };

/// A size: two or more dimensions, rows first. Fewer raise "Vexal:host:TooFewDimensions".
using Dims = std::span<const std::size_t>;

// Lifetime ------------------------------------------------------------------------

/// Releases an owned array; null is ignored. Refused and counted as misuse, leaving
/// the array as it is, when it is a property copy, a borrowed element or (as far as
/// can be told) already released. From another thread the array is put aside and
/// released when the host's thread next creates one.
VEXAL_API void destroy(vxArray* array) noexcept;

/// Releases a property copy; null is ignored. Refused like destroy() when the
/// array is not a property copy.
VEXAL_API void deletePropertyArray(vxArray* array) noexcept;

/// While one exists, arrays that this thread releases are put aside; the last one to end releases
/// them. For code in the midst of a change: what an object array stands for may be foreign code,
/// which had better find everything whole. For the host's thread.
class VEXAL_API ReleasePause {
 public:
  ReleasePause() noexcept;
  ReleasePause(const ReleasePause&) = delete;
  ReleasePause& operator=(const ReleasePause&) = delete;
  ~ReleasePause();

 private:
  bool counts_;
};

struct ArrayDeleter {
  void operator()(vxArray* array) const noexcept { destroy(array); }
};
struct PropertyArrayDeleter {
  void operator()(vxArray* array) const noexcept { deletePropertyArray(array); }
};

/// An array with its owner.
using ArrayPtr = std::unique_ptr<vxArray, ArrayDeleter>;
/// A property copy with its owner.
using PropertyArrayPtr = std::unique_ptr<vxArray, PropertyArrayDeleter>;

/// An independent copy: no later change of either shows in the other.
VEXAL_API ArrayPtr deepCopy(const vxArray* array);

/// The property copy of an array, equally independent; null for null.
VEXAL_API PropertyArrayPtr copyForProperty(const vxArray* array);

/// Whether one is a copy of the other and neither has changed since; also of nulls.
VEXAL_API bool sharesContent(const vxArray* a, const vxArray* b) noexcept;

/// What the host has given out and taken back.
struct ArrayCounts {
  std::size_t live = 0;                ///< arrays not yet destroyed, property copies aside
  std::size_t livePropertyCopies = 0;  ///< property copies not yet released
  std::size_t contents = 0;            ///< content blocks behind them, each counted once
  std::uint64_t propertyCopiesMade = 0;
  std::uint64_t propertyCopiesReleased = 0;
  std::uint64_t misusedReleases = 0;  ///< releases that were refused
  bool operator==(const ArrayCounts&) const = default;
};

/// The counts now, releases from other threads included.
VEXAL_API ArrayCounts arrayCounts();

// Creation ------------------------------------------------------------------------

/// An array of that class and size: numbers are zero, logicals false, cells hold
/// empty 0-by-0 doubles, structs have no fields. Objects are made by createObject().
VEXAL_API ArrayPtr createArray(ClassId classId, Dims dims);

/// A rows-by-columns double array of zeros.
VEXAL_API ArrayPtr createDoubleMatrix(std::size_t rows, std::size_t columns);

/// A 1-by-n double array of the values.
VEXAL_API ArrayPtr createDoubleRow(std::span<const double> values);

/// 1-by-1 arrays.
VEXAL_API ArrayPtr createDouble(double value);
VEXAL_API ArrayPtr createLogical(bool value);
VEXAL_API ArrayPtr createInt32(std::int32_t value);

// Queries -------------------------------------------------------------------------

/// Whether the array is of the built-in class; false for null.
VEXAL_API bool isClass(const vxArray* array, ClassId classId);
inline bool isCell(const vxArray* array) { return isClass(array, ClassId::Cell); }

/// Whether the array is of the class of that name or of one of its subclasses;
/// false for null and for names that no class has.
VEXAL_API bool isA(const vxArray* array, std::string_view className);

/// True only for a 1-by-1 logical array holding true; false for null.
VEXAL_API bool isLogicalScalarTrue(const vxArray* array);

VEXAL_API ClassId classId(const vxArray* array);

/// "double", "cell", ..., or the name of the object's class. Valid for ever.
VEXAL_API std::string_view className(const vxArray* array);

VEXAL_API bool isEmpty(const vxArray* array);
VEXAL_API std::size_t elementCount(const vxArray* array);

/// The dimension list, at least two long; valid while the array is unchanged.
VEXAL_API Dims dimensions(const vxArray* array);

/// Whether two arrays have the same class, size and content. Two NaNs are the same,
/// native payloads only when they are one and the same; null is equal to null only.
VEXAL_API bool equalContent(const vxArray* a, const vxArray* b);

// Elements of number, logical and character arrays ----------------------------------

template <class T>
concept PlainElement = std::same_as<T, double> || std::same_as<T, bool> ||
                       std::same_as<T, char16_t> || std::same_as<T, std::int32_t>;

/// The elements, column-major; valid while the array is unchanged.
template <PlainElement T>
VEXAL_API std::span<const T> elements(const vxArray* array);

/// The elements for writing, parted from every copy first; valid until the array is
/// copied, changed by other means or released.
template <PlainElement T>
VEXAL_API std::span<T> mutableElements(vxArray* array);

inline std::span<const double> doubleData(const vxArray* array) { return elements<double>(array); }
inline std::span<double> mutableDoubleData(vxArray* array) {
  return mutableElements<double>(array);
}

}  // namespace vexal
