// What a class costs: rows of constant tables.
//
// A class of the class-object system is a ClassTable: a few words on the class and a row
// per property, method and enumeration member. Rows are literal types, so tables are
// `constinit`; every text in them must live for ever (internal::makeInterned makes a text
// do so that was computed). What rows of one kind do alike is one function that many rows
// name, told apart by their `context`.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "host/array.h"
#include "host/vcos/native.h"

namespace vcos {

class COSClass;

namespace factory {

struct PropertyRow;

/// Reads a property of a living native; null is refused by the host.
using ReadProperty = vexal::ArrayPtr (*)(const PropertyRow& row, const Native& native);
/// Writes one; the value is converted to the row's data type and borrowed.
using WriteProperty = void (*)(const PropertyRow& row, const Native& native, const vxArray* value);

/// Adds the natives that a property holds, in order, without making objects of them.
using ListNatives = void (*)(const PropertyRow& row, const Native& native, NativeList& to);

/// A property of a handle class.
struct PropertyRow {
  std::string_view name;
  /// The data type of the value, "double scalar" (type_repository.h).
  std::string_view dataType;
  ReadProperty read = nullptr;
  /// Null for a property that is read-only.
  WriteProperty write = nullptr;
  std::string_view doc = {};
  /// For the functions to make something of.
  const void* context = nullptr;
  /// Of a property that holds many natives: what lists them. Null for all others.
  ListNatives list = nullptr;
  /// Tells the data type, for ever the same, when the class is first used; in place of `dataType`
  /// where that is known no sooner.
  std::string_view (*tellType)() = nullptr;
};

/// What a method is besides its name.
enum class MethodAttributes : std::uint8_t { None, Constructor, Static };

struct VcosMethod;

/// One call of a method, as its body sees it. Everything is borrowed for the call.
struct MethodCall {
  /// The class that the method was asked of, which may be a subclass of the one that has it.
  const COSClass& hostClass;
  const VcosMethod& method;
  /// The object; null for static methods and constructors.
  const vxArray* object = nullptr;
  /// What it stands for, alive; empty without one.
  Native native = {};
  /// For constructors: the object to announce a native for (BindingRegistry).
  vxArray* constructed = nullptr;
  /// The arguments without the object, converted to their data types; as many as given.
  std::span<const vxArray* const> inputs = {};
};

/// Carries out a method; the result is null when its output type is "void", and for
/// constructors. Constructors of value classes return the value.
using MethodBody = vexal::ArrayPtr (*)(const MethodCall& call);

/// A method of a class. The signature is in words: input names are parted by blanks, and
/// one that starts with "opt_" may be left out together with all after it; input types are
/// parted by commas. Without names the first type is the object's own, and the other inputs
/// are named by their types' places; `optionalInputs` says how many may be left out then.
struct VcosMethod {
  /// A constructor's is the class's short name.
  std::string_view name;
  MethodAttributes attributes = MethodAttributes::None;
  std::string_view inputNames = {};
  std::string_view outputType = "void";
  std::string_view inputTypes = {};
  MethodBody body = nullptr;
  std::string_view doc = {};
  std::uint8_t optionalInputs = 0;
  const void* context = nullptr;
};

}  // namespace factory

/// A member of an enumeration class.
struct COSEnumInfo {
  std::string_view name;
  std::int32_t value = 0;
  std::string_view doc = {};
};

/// Handle objects stand for natives; value objects are members of an enumeration, an int32
/// underneath.
enum class ClassKind : std::uint8_t { Handle, Value };

namespace factory {

/// A class, whole.
struct ClassTable {
  /// The full dotted name.
  std::string_view name;
  /// Empty for a class at the root.
  std::string_view superclass = {};
  std::string_view doc = {};
  ClassKind kind = ClassKind::Handle;
  bool isAbstract = false;
  std::span<const PropertyRow> properties = {};
  std::span<const VcosMethod> methods = {};
  std::span<const COSEnumInfo> members = {};
};

}  // namespace factory
}  // namespace vcos
