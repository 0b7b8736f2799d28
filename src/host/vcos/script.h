// All that a scripting front end needs, by name alone.
//
// Nothing here throws: a result holds a value or the diagnostic that says why there is
// none, model errors included, under their own catalog and key. A front end needs no code
// per class: it asks for a class's description when it first meets one, makes properties
// and methods of it, and drives them through get(), set() and invoke().
//
//   if (auto got = script::get(run, "Progress")) use(*got); else report(*got.error);
//
// Handle objects are compared by identity: copies of one are the same, and identity() is a
// number to hash them by. Objects of the front end's own lie in host arrays as foreign
// objects: a NativePayload that answers methods by name (object.h). Everything belongs to
// the host's thread; from another one each operation returns "Vexal:host:WrongThread".
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/array.h"
#include "host/diagnostic.h"
#include "host/object.h"
#include "host/vcos/table.h"

namespace vexal::script {

/// A value, or why there is none.
template <class T>
struct Result {
  T value{};
  std::unique_ptr<Diagnostic> error;

  explicit operator bool() const noexcept { return error == nullptr; }
  T& operator*() noexcept { return value; }
  T* operator->() noexcept { return &value; }
};
struct Nothing {};

// Names ---------------------------------------------------------------------------------

enum class NameKind : std::uint8_t { Unknown, Package, Class, Function };

/// What a full dotted name stands for, loading it when its package can.
VEXAL_API Result<NameKind> lookUp(std::string_view name) noexcept;

/// The full names of the packages directly below a package that are known so far, of the root
/// packages for an empty name; in alphabetical order, empty for an unknown name.
VEXAL_API Result<std::vector<std::string>> packages(std::string_view below = {}) noexcept;

/// The full names of the classes directly in a package that are known so far; in alphabetical
/// order.
VEXAL_API Result<std::vector<std::string>> classes(std::string_view package) noexcept;

// Descriptions ----------------------------------------------------------------------------

struct Argument {
  std::string name;
  std::string dataType;
  bool isOptional = false;
};

enum class MemberKind : std::uint8_t { Property, Method, StaticMethod, Constructor };

/// A property or a method. Methods by name alone (defineMethod) have no argument list.
struct Member {
  MemberKind kind = MemberKind::Property;
  std::string name;
  std::string doc;
  /// Of the property's value or the method's result; "void" for none.
  std::string dataType;
  bool isWritable = false;
  /// The class that has it, this one or one above.
  std::string definedBy;
  /// Without the object.
  std::vector<Argument> arguments;
  /// Whether `arguments` says what the method takes.
  bool hasSignature = true;
};

struct EnumMember {
  std::string name;
  std::int32_t value = 0;
  std::string doc;
};

struct Class {
  std::string name;
  std::string doc;
  /// The names of the classes above, the nearest first.
  std::vector<std::string> superclasses;
  /// Nothing for a class that is defined by name alone.
  std::optional<vcos::ClassKind> kind;
  bool isAbstract = false;
  bool isConstructible = false;
  /// Inherited ones included (constructors are not inherited), in order of declaration, those
  /// of the topmost class first.
  std::vector<Member> members;
  /// Of an enumeration, in order of declaration.
  std::vector<EnumMember> enumMembers;
};

/// A class, whole. "Vexal:class:UnknownClass" for an unknown name.
VEXAL_API Result<Class> describeClass(std::string_view className) noexcept;

/// Whether values of a class or one value (its fields included) answer the name.
VEXAL_API Result<bool> hasMember(std::string_view className, std::string_view member) noexcept;
VEXAL_API Result<bool> hasMember(const vxArray* value, std::string_view member) noexcept;

// Objects -----------------------------------------------------------------------------------

using Arguments = std::span<const vxArray* const>;

/// A new object. Errors are those of omConstructObjectWithClient.
VEXAL_API Result<ArrayPtr> construct(std::string_view className, Arguments arguments) noexcept;

/// The value of a property, or of a field of an object that has fields. Errors:
/// "Vexal:class:NoSuchMember", "NotAProperty" for a method, "NotAnObject" for all but
/// 1-by-1 objects, "InvalidHandle" and what the getter throws.
VEXAL_API Result<ArrayPtr> get(const vxArray* object, std::string_view property) noexcept;

/// Sets a property, after converting the value to its data type, or an existing field.
/// Errors: those of get(), "Vexal:class:ReadOnlyProperty", and what the conversion raises
/// ("CannotConvert", "WrongShape").
VEXAL_API Result<Nothing> set(vxArray* object, std::string_view property,
                              const vxArray* value) noexcept;

/// Calls a method of a 1-by-1 object: one of its class, one defined by name or one that
/// its payload answers. The result is null when the method has none. Errors: "Vexal:class:"
/// NoSuchMember, NotAMethod, TooFewArguments, TooManyArguments, NotAnObject, InvalidHandle,
/// those of conversions and what the method throws.
VEXAL_API Result<ArrayPtr> invoke(const vxArray* object, std::string_view method,
                                  Arguments arguments) noexcept;

/// Calls a static method of a class or one that it inherits.
VEXAL_API Result<ArrayPtr> invokeStatic(std::string_view className, std::string_view method,
                                        Arguments arguments) noexcept;

/// Calls a function of the host by its full name; as callFunction() with one output, or with
/// none when the function gives none (the result is null then).
VEXAL_API Result<ArrayPtr> call(std::string_view function, Arguments arguments) noexcept;

/// The member of an enumeration with that name; "Vexal:class:NoSuchMember".
VEXAL_API Result<ArrayPtr> enumMember(std::string_view className, std::string_view member) noexcept;

/// The value in a data type (vcos/type_repository.h).
VEXAL_API Result<ArrayPtr> convert(const vxArray* value, std::string_view dataType) noexcept;

/// What is known of a value without its class's description.
struct ValueInfo {
  ClassId classId = ClassId::Double;
  /// Valid for ever.
  std::string_view className;
  std::size_t count = 0;
  /// The class of its objects has a description.
  bool isDescribed = false;
  /// A 1-by-1 handle object that can be used; true for everything that is no handle.
  bool isValid = true;
};
VEXAL_API Result<ValueInfo> inspect(const vxArray* value) noexcept;

/// Whether the value is of that class or of one below it; false for unknown names.
VEXAL_API Result<bool> isA(const vxArray* value, std::string_view className) noexcept;

/// A number for each handle object, the same for all its copies for as long as one of
/// them exists, also when its native is gone; 0 for everything else.
VEXAL_API Result<std::uint64_t> identity(const vxArray* value) noexcept;

/// Whether two handle objects are one and the same, two other values have equal content.
VEXAL_API Result<bool> same(const vxArray* a, const vxArray* b) noexcept;

// Arrays of objects and cells ---------------------------------------------------------------

/// The k-th element of any array, 0-based and column-major: of a cell what it holds, of other
/// arrays a 1-by-1 array. "Vexal:host:IndexOutOfRange" past the end.
VEXAL_API Result<ArrayPtr> element(const vxArray* array, std::size_t k) noexcept;

/// A 1-by-n array of 1-by-1 objects, of the most specific class that they share; of
/// `className` and 0-by-0 when there are none.
VEXAL_API Result<ArrayPtr> objectArray(Arguments objects, std::string_view className) noexcept;

// Tables ------------------------------------------------------------------------------------

/// What the items of many objects hold under one key.
struct Column {
  ArrayPtr key;
  /// One per object: a 1-by-n double array when each of them is one number (NaN where there is
  /// none), otherwise a 1-by-n cell array (an empty 0-by-0 double where there is none).
  ArrayPtr values;
  /// Which objects have a value, as 1-by-n logicals; null when all have.
  ArrayPtr present;
};

/// A table out of a collection that each of the objects has: of each item in it one property says
/// the column and another the value. Equal keys (same()) share a column, columns stand in the
/// order in which their keys are met, and an object with several items of one key fills as many
/// columns of that key. Makes no objects of items, and reads one that many objects share once or a
/// few times, so a value of a shared item costs some ten nanoseconds. Errors: those of get(),
/// "Vexal:class:NotACollection" for a property that does not list what it holds.
VEXAL_API Result<std::vector<Column>> columns(const vxArray* objects, std::string_view collection,
                                              std::string_view key,
                                              std::string_view value) noexcept;

// Objects of the front end's own --------------------------------------------------------------

/// The class of foreign objects.
inline constexpr std::string_view kForeignClass = "vexal.Foreign";

/// A 1-by-1 object that holds the payload, which is released on the host's thread with the last
/// copy. Methods that the payload answers can be called by name like those of any object. The class
/// may be any that is defined by name alone, so that the object passes where the host asks for one.
VEXAL_API Result<ArrayPtr> foreign(std::shared_ptr<NativePayload> payload,
                                   std::string_view className = kForeignClass) noexcept;

}  // namespace vexal::script
