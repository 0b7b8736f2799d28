// The marshalers by type.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "framework/meta/meta.h"
#include "framework/mi/value_marshaler.h"

namespace mf::zero::mi {

/// Knows the primitive types from the start; packages add their enumerations
/// (EmptyParentPackage::Registrar). Belongs to the host's thread.
class MF0_API MetaMarshalerRegistry {
 public:
  static MetaMarshalerRegistry& getInstance();
  MetaMarshalerRegistry(const MetaMarshalerRegistry&) = delete;
  MetaMarshalerRegistry& operator=(const MetaMarshalerRegistry&) = delete;

  /// The marshaler of a property's type, borrowed until that is unregistered; null without one, as
  /// for elements.
  const ValueMarshaler* getPropertyMarshaler(const PropertyInfo& property) const;
  const ValueMarshaler* getPropertyMarshaler(const meta::Property& property) const;

 private:
  friend class EmptyParentPackage;
  MetaMarshalerRegistry();
  struct Hash : std::hash<std::string_view> {
    using is_transparent = void;
  };
  std::unordered_map<std::string, std::unique_ptr<ValueMarshaler>, Hash, std::equal_to<>> byType_;
};

/// The marshaler that a property must have; raises NoSuchType where there is none.
MF0_API const ValueMarshaler& marshalerOf(const PropertyInfo& property);

/// The value of one array for a property that holds single values, or of one of many; the array
/// is converted to the data type of the property's marshaler or class first. Raises what the
/// conversion raises, and NoSuchType for an enumeration that no package has registered.
MF0_API Value valueOf(const PropertyInfo& property, const vxArray* array);

/// All values of an array for a many-valued property; none of an empty one.
MF0_API std::vector<Value> valuesOf(const PropertyInfo& property, const vxArray* array);

/// A value of a property, single or list, as an array: elements as their objects.
MF0_API vexal::ArrayPtr arrayOf(const PropertyInfo& property, const Value& value);

}  // namespace mf::zero::mi
