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

/// The serializers by type. May be used from any thread; changes belong to a registration.
class MF0_API PropertySerializerRegistry {
 public:
  /// Knows the primitive types; other packages add their enumerations.
  static PropertySerializerRegistry& getInstance();

  /// Sets the serializer of a type by its qualified name. Raises CannotAddNonExistentObject when
  /// there is none.
  void registerSerializer(std::string_view type,
                          std::shared_ptr<const PropertySerializer> serializer);
  void registerSerializer(const Type& type, std::shared_ptr<const PropertySerializer> serializer);
  void unregisterSerializer(std::string_view type);

  /// Null for a type without one. Constant time.
  std::shared_ptr<const PropertySerializer> findSerializer(std::string_view type) const;
  std::shared_ptr<const PropertySerializer> findSerializer(const Type& type) const;

 private:
  friend class Registration;
  PropertySerializerRegistry();

  using Table = NameMap<std::shared_ptr<const PropertySerializer>>;
  Staged<Table> table_;
};

}  // namespace mf::zero::meta
