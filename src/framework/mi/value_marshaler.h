// Values of primitive and enumeration properties between the model and host arrays.
//
// A marshaler serves one type. It is asked for arrays of its data type; converting to that is
// the host's business (host/vcos/type_repository.h). All of it belongs to the host's thread.
#pragma once

#include <string_view>
#include <vector>

#include "framework/export.h"
#include "framework/primitive_collection.h"
#include "framework/value.h"
#include "host/array.h"

namespace mf::zero::mi {

class MF0_API ValueMarshaler {
 public:
  /// One value as a 1-by-1 array or a text. Raises CannotCastIncompatibleTypes for a value of
  /// another type; an empty value is 0, false, the empty text or the empty array.
  virtual vexal::ArrayPtr toVxArray(const Value& value) const = 0;
  /// The value of an array of the data type. Raises what the host raises for another.
  virtual Value fromVxArray(const vxArray* array) const = 0;
  /// Whether the array is of the data type, so that nothing need be converted.
  virtual bool isCorrectType(const vxArray* array) const = 0;
  /// The values in an array of any size, or in the cells of one; each is converted. Raises what
  /// the conversion raises.
  virtual std::vector<Value> toValueVector(const vxArray* array) const = 0;
  /// A 1-by-n array of the values; a cell array where one array cannot hold many.
  virtual vexal::ArrayPtr fromValueVector(const std::vector<Value>& values) const = 0;
  /// The same of what a collection holds.
  virtual vexal::ArrayPtr fromCollection(const AbstractPrimitiveCollection& collection) const = 0;
  /// The value in the form in which a setter takes it: it makes copies of its own.
  virtual Value toUnmanagedSetValue(const vxArray* array) const = 0;
  /// Makes known to the host what the data type names. May be called again.
  virtual void initializeDependencies() = 0;
  virtual ~ValueMarshaler();

  /// "double scalar". The same on every call; valid for ever.
  virtual std::string_view dataType() const = 0;
};

}  // namespace mf::zero::mi
