// Values as text: how defaults are declared and how stored data writes values down.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "framework/class_info.h"
#include "framework/export.h"
#include "framework/meta/staged.h"
#include "framework/meta/type.h"
#include "framework/value.h"

namespace mf::zero::meta {

/// Turns values of one type into text and back, without loss: reading what was written gives an
/// equal value, bit by bit for numbers. Texts are UTF-8 and independent of the locale.
class MF0_API PropertySerializer {
 public:
  virtual ~PropertySerializer() = default;
  /// Raises CannotCastIncompatibleTypes for a value of another type; an empty value reads as 0,
  /// false or the empty text.
  virtual std::string toText(const Value& value) const = 0;
  /// Raises InvalidValue for a text that is not exactly one value of the type.
  virtual Value fromText(std::string_view text) const = 0;
};

/// The serializer of a primitive kind; null for host arrays and elements, which have no text form.
/// Needs no registry.
MF0_API const PropertySerializer* primitiveSerializer(ValueKind kind);

/// The serializer of an enumeration: the literal's name, or the number where there is no literal.
MF0_API std::unique_ptr<PropertySerializer> enumSerializer(const EnumInfo& enumeration);

/// A text read as a single value of the property's type; how declared defaults are read. Raises
/// InvalidValue as `fromText` does, and for a type without a text form.
MF0_API Value valueFromText(const PropertyInfo& property, std::string_view text);

/// The serializers by type. Look-ups may be made from any thread at any time; changes are made
/// inside a Registration, and one made outside is a registration of its own.
class MF0_API PropertySerializerRegistry {
 public:
  /// Knows the primitive types that have a text form; packages add their enumerations.
  static PropertySerializerRegistry& getInstance();
  PropertySerializerRegistry(const PropertySerializerRegistry&) = delete;
  PropertySerializerRegistry& operator=(const PropertySerializerRegistry&) = delete;

  /// Sets the serializer of the type, in place of an earlier one. Raises
  /// CannotAddNonExistentObject when there is none to set.
  void registerSerializer(const Type& type, std::shared_ptr<const PropertySerializer> serializer);
  /// A type without a serializer is ignored.
  void unregisterSerializer(const Type& type);
  /// Null for a type without one. Constant time.
  std::shared_ptr<const PropertySerializer> findSerializer(const Type& type) const;

 private:
  friend class Registration;
  PropertySerializerRegistry();

  using Table = NameMap<std::shared_ptr<const PropertySerializer>>;
  static Table primitives();
  template <class Change>
  void change(Change&& make);

  Staged<Table> table_;  ///< by qualified name
};

}  // namespace mf::zero::meta
