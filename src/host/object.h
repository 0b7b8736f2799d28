// Objects and their classes.
//
// A class has a name, at most one superclass and methods, which are functions found by
// name on the class and then on its superclasses. A class is defined once and for ever.
// An object has a class, named fields (record.h) and perhaps a native payload; an object
// array holds objects of its class and its subclasses, each element its own. The class
// kHeterogeneousClass admits every object. Errors are those of array.h, and
// "Vexal:class:UnknownClass" for a class name that nobody has defined.
#pragma once

#include <memory>
#include <string>

#include "host/array.h"
#include "host/function.h"

namespace vexal {

inline constexpr std::string_view kHeterogeneousClass = "vexal.mixin.Heterogeneous";
inline constexpr std::string_view kModelSimStateClass = "Kinetra.SimState.ModelSimState";

/// Defines a class. Raises "Vexal:class:ClassExists" for a second definition or the name
/// of a built-in class, and "Vexal:class:InvalidName" for an empty name.
VEXAL_API void defineClass(std::string_view name, std::string_view superclass = {});
VEXAL_API bool isClassDefined(std::string_view name);

/// The superclass's name, empty for a root class; valid for ever.
VEXAL_API std::string_view superclassOf(std::string_view name);

/// Whether a class is another or one of its subclasses; false for unknown names.
VEXAL_API bool isSubclass(std::string_view name, std::string_view ofClass);

/// Defines a method; subclasses inherit it and may define their own. Its first input is
/// the object. Raises "Vexal:class:MethodExists" when the class itself has one already.
VEXAL_API void defineMethod(std::string_view className, std::string_view method,
                            HostFunction function);

/// Whether the class defines or inherits the method; false for unknown classes.
VEXAL_API bool hasMethod(std::string_view className, std::string_view method);

/// Native state behind an object, shared by all copies of it and released with the last,
/// always on the host's thread. A payload may have methods of its own, besides those of the
/// object's class.
class VEXAL_API NativePayload {
 public:
  virtual ~NativePayload();
  /// A few words for messages; empty when there is nothing to say.
  virtual std::string describe() const { return {}; }
  /// Whether it has a method of that name, which must answer calls until it says otherwise.
  virtual bool hasMethod(std::string_view name) const;
  /// Calls the method call.name(); the object is one of the inputs. Sets outputs and reports
  /// failure as a HostFunction does.
  virtual void callMethod(Call& call);
  const void* typeTag() const noexcept { return typeTag_; }

 protected:
  /// The tag is an address that only this type of payload uses.
  explicit NativePayload(const void* typeTag) noexcept : typeTag_(typeTag) {}
  NativePayload(const NativePayload&) = default;
  NativePayload& operator=(const NativePayload&) = default;

 private:
  const void* typeTag_;
};

/// A 1-by-1 object: of a class defined by name alone without fields, of a handle class one that
/// refers to nothing, of a value class one with the integer 0 (vcos/class_info.h).
VEXAL_API ArrayPtr createObject(std::string_view className);

/// An object array of a class, every element a fresh object of it; 1-by-1 is an object.
VEXAL_API ArrayPtr createObjectArray(std::string_view className, Dims dims);

/// The element at a 0-based column-major index.
VEXAL_API ArrayPtr objectElement(const vxArray* objects, std::size_t index);

/// Stores a copy of a 1-by-1 object, which of a handle is the object itself; a 1-by-1 array becomes
/// that object. Raises "Vexal:class:ElementClass" when the object's class is not the array's or one
/// of its subclasses.
VEXAL_API void setObjectElement(vxArray* objects, std::size_t index, const vxArray* object);

/// Gives an object array the most specific class that all its elements share; the
/// array stays as it is when they share none or there are none.
VEXAL_API void narrowClass(vxArray* objects);

/// Makes a 1-by-1 object of a class defined by name alone stand for a native value; from then on
/// its fields are fixed.
VEXAL_API void attachPayload(vxArray* object, std::shared_ptr<NativePayload> payload);

/// The payload of a 1-by-1 object; null without one, for null and for other arrays.
VEXAL_API NativePayload* payload(const vxArray* object);

/// The payload when it is of type T, which names its tag T::kTypeTag; else null.
template <class T>
T* payloadAs(const vxArray* object) {
  NativePayload* found = payload(object);
  return found != nullptr && found->typeTag() == &T::kTypeTag ? static_cast<T*>(found) : nullptr;
}

}  // namespace vexal
