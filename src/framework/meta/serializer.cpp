#include "framework/meta/serializer.h"

#include <charconv>
#include <cstdint>
#include <system_error>
#include <type_traits>

#include "framework/messages.h"
#include "framework/meta/registry.h"
#include "framework/text.h"

namespace mf::zero::meta {
namespace {

// Numbers by the shortest digits that read back as the same number.
template <class T>
std::string numberToText(T number) {
  char digits[32];
  const auto end = std::to_chars(std::begin(digits), std::end(digits), number).ptr;
  return {digits, end};
}

template <class T>
bool numberFromText(std::string_view text, T& number) {
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stop == end;
}

template <class T>
std::string textOf(const Value& value) {
  const T plain = value.getValue<T>();
  if constexpr (std::is_same_v<T, bool>) {
    return plain ? "true" : "false";
  } else if constexpr (std::is_same_v<T, std::u16string>) {
    return toUtf8(plain);
  } else {
    return numberToText(plain);
  }
}

template <class T>
Value valueOf(std::string_view text) {
  if constexpr (std::is_same_v<T, bool>) {
    if (text == "true" || text == "false") return text == "true";
  } else if constexpr (std::is_same_v<T, std::u16string>) {
    return toUtf16(text);
  } else {
    T number{};
    if (numberFromText(text, number)) return number;
  }
  reportException(mf0::messages::InvalidValue());
}

template <class T>
class PrimitiveSerializer final : public PropertySerializer {
 public:
  std::string toText(const Value& value) const override { return textOf<T>(value); }
  Value fromText(std::string_view text) const override { return valueOf<T>(text); }
};

template <class T>
const PropertySerializer* primitive() {
  static const PrimitiveSerializer<T> serializer;
  return &serializer;
}

class EnumSerializer final : public PropertySerializer {
 public:
  explicit EnumSerializer(const EnumInfo& enumeration) : enumeration_(enumeration) {}

  std::string toText(const Value& value) const override {
    const std::int32_t number = numberOf(value);
    const LiteralInfo* literal = enumeration_.find(number);
    return literal ? toUtf8(literal->name) : numberToText(number);
  }

  Value fromText(std::string_view text) const override {
    const LiteralInfo* literal = enumeration_.find(toUtf16(text));
    std::int32_t number = literal ? literal->value : 0;
    if (!literal && !numberFromText(text, number)) reportException(mf0::messages::InvalidValue());
    return Value(&enumeration_, number);
  }

 private:
  std::int32_t numberOf(const Value& value) const {
    const bool isOurs =
        value.meta() == ValueMeta(ValueMeta::Form::kSingle, ValueKind::kEnumeration, &enumeration_);
    if (!isOurs && !value.isEmpty()) {
      reportException(mf0::messages::CannotCastIncompatibleTypes(enumeration_.qualifiedName));
    }
    return static_cast<std::int32_t>(value.bits());
  }

  const EnumInfo& enumeration_;
};

}  // namespace

const PropertySerializer* primitiveSerializer(ValueKind kind) {
  switch (kind) {
    case ValueKind::kBoolean: return primitive<bool>();
    case ValueKind::kInteger8: return primitive<std::int8_t>();
    case ValueKind::kInteger: return primitive<std::int32_t>();
    case ValueKind::kReal: return primitive<double>();
    case ValueKind::kString: return primitive<std::u16string>();
    case ValueKind::kArray:
    case ValueKind::kEnumeration:
    case ValueKind::kElement: break;
  }
  return nullptr;
}

std::unique_ptr<PropertySerializer> enumSerializer(const EnumInfo& enumeration) {
  return std::make_unique<EnumSerializer>(enumeration);
}

Value valueFromText(const PropertyInfo& property, std::string_view text) {
  if (property.enumeration) return EnumSerializer(*property.enumeration).fromText(text);
  const PropertySerializer* serializer = primitiveSerializer(property.kind);
  if (!serializer) reportException(mf0::messages::InvalidValue());
  return serializer->fromText(text);
}

PropertySerializerRegistry& PropertySerializerRegistry::getInstance() {
  static auto& registry = *new PropertySerializerRegistry;
  return registry;
}

PropertySerializerRegistry::PropertySerializerRegistry() : table_(primitives()) {}

PropertySerializerRegistry::Table PropertySerializerRegistry::primitives() {
  const auto of = [](ValueKind kind) {  // points to a static, so that nobody owns it
    return std::shared_ptr<const PropertySerializer>(std::shared_ptr<void>(),
                                                     primitiveSerializer(kind));
  };
  return {{"Boolean", of(ValueKind::kBoolean)}, {"Integer8", of(ValueKind::kInteger8)},
          {"Integer", of(ValueKind::kInteger)}, {"Real", of(ValueKind::kReal)},
          {"String", of(ValueKind::kString)},   {"StdString", of(ValueKind::kString)}};
}

template <class Change>
void PropertySerializerRegistry::change(Change&& make) {
  if (table_.isEditing()) return make(table_.next());
  Registration registration(MetaRegistry::getInstance());
  make(table_.next());
  registration.commit();
}

void PropertySerializerRegistry::registerSerializer(
    const Type& type, std::shared_ptr<const PropertySerializer> serializer) {
  if (!serializer) reportException(mf0::messages::CannotAddNonExistentObject());
  change(
      [&](Table& table) { table.insert_or_assign(type.qualifiedName(), std::move(serializer)); });
}

void PropertySerializerRegistry::unregisterSerializer(const Type& type) {
  change([&](Table& table) { table.erase(type.qualifiedName()); });
}

std::shared_ptr<const PropertySerializer> PropertySerializerRegistry::findSerializer(
    const Type& type) const {
  const std::string name = type.qualifiedName();
  return table_.read([&](const Table& table) {
    const auto found = table.find(name);
    return found == table.end() ? nullptr : found->second;
  });
}

}  // namespace mf::zero::meta
