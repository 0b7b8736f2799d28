#include "framework/values.h"

#include <charconv>
#include <cstring>
#include <string>

#include "framework/messages.h"
#include "framework/raw.h"

namespace mf::zero::values {

namespace {

Value elementValue(const ElementImpl& near, ElementId id) {
  return id == kNoElement ? Value() : Value(ModelElement(Chunk::find(near, id)));
}

Value readElements(const ElementImpl& element, const ReferenceList& list) {
  std::vector<Value> items;
  items.reserve(list.live());
  for (std::uint32_t i = 0; i < list.size; ++i) {
    const ElementId target = list.slots[i].target;
    if (target != kNoElement) items.push_back(elementValue(element, target));
  }
  return Value::ofList(std::move(items));
}

Value readItems(const PropertyInfo& property, const PrimitiveList& list) {
  std::vector<Value> items;
  const std::size_t count = countOf(property, list);
  items.reserve(count);
  for (std::size_t i = 0; i < count; ++i) items.push_back(itemAt(property, list, i));
  return Value::ofList(std::move(items));
}

}  // namespace

Value readShared(const ElementImpl& element, const PropertyInfo& property) {
  if (property.isReferenceList()) {
    return readElements(element, Raw::at<ReferenceList>(element, property));
  }
  if (property.has(kMany)) return readItems(property, Raw::at<PrimitiveList>(element, property));
  switch (property.kind) {
    case ValueKind::kString: return Raw::at<Text>(element, property);
    case ValueKind::kArray: return Value::ofArray(Raw::at<ArraySlot>(element, property).array);
    case ValueKind::kElement:
      return elementValue(element, Raw::at<ReferenceSlot>(element, property).target);
    default: return {};
  }
}

bool isPresent(const ElementImpl& element, const PropertyInfo& property) {
  if (property.isReferenceList()) return Raw::at<ReferenceList>(element, property).live() > 0;
  if (property.has(kMany)) return countOf(property, Raw::at<PrimitiveList>(element, property)) > 0;
  switch (property.kind) {
    case ValueKind::kBoolean: return Raw::at<bool>(element, property);
    case ValueKind::kInteger8: return Raw::at<std::int8_t>(element, property) != 0;
    case ValueKind::kInteger: return Raw::at<std::int32_t>(element, property) != 0;
    case ValueKind::kReal: return Raw::at<double>(element, property) != 0;
    case ValueKind::kString: return !Raw::at<Text>(element, property).empty();
    case ValueKind::kArray: return Raw::at<ArraySlot>(element, property).array != nullptr;
    case ValueKind::kEnumeration:
      return property.enumeration->find(Raw::at<std::int32_t>(element, property)) != nullptr;
    case ValueKind::kElement: return Raw::at<ReferenceSlot>(element, property).target != kNoElement;
  }
  return false;
}

bool isPresent(const Value& value) {
  if (value.isEmpty()) return false;
  if (value.isList()) return !value.items().empty();
  switch (value.meta().kind()) {
    case ValueKind::kReal: return value.getValue<double>() != 0;
    case ValueKind::kString: return !value.getValue<std::u16string>().empty();
    case ValueKind::kArray: return value.getValue<const vxArray*>() != nullptr;
    case ValueKind::kElement: return static_cast<bool>(value.getValue<ModelElement>());
    case ValueKind::kEnumeration:
      return value.meta().enumeration()->find(static_cast<std::int32_t>(value.bits())) != nullptr;
    default: return value.bits() != 0;
  }
}

std::size_t sizeOf(const PropertyInfo& property) {
  switch (property.kind) {
    case ValueKind::kBoolean:
    case ValueKind::kInteger8: return 1;
    case ValueKind::kInteger:
    case ValueKind::kEnumeration: return 4;
    default: return 8;
  }
}

void raiseMisfit(const PropertyInfo& property) {
  reportException(mf0::messages::CannotCastIncompatibleTypes(property.type));
}

void checkLiteral(const EnumInfo& enumeration, const Value& value) {
  const auto number = static_cast<std::int32_t>(value.bits());
  if (number != 0 && !enumeration.find(number)) reportException(mf0::messages::InvalidValue());
}

Value startOf(const PropertyInfo& property) {
  if (property.has(kMany)) return Value::ofList({});
  if (property.defaultValue) return parseDefault(property);
  switch (property.kind) {
    case ValueKind::kString: return u"";
    case ValueKind::kArray: return Value::ofArray(nullptr);
    case ValueKind::kElement: return {};
    default: return fromBits(property, 0);
  }
}

Value parseDefault(const PropertyInfo& property) {
  const std::string_view text = property.defaultValue;
  switch (property.kind) {
    case ValueKind::kBoolean: return text == "true";
    case ValueKind::kString: return Value(toUtf16(text));
    case ValueKind::kEnumeration: {
      const LiteralInfo* literal = property.enumeration->find(toUtf16(text));
      return Value(property.enumeration, literal ? literal->value : 0);
    }
    case ValueKind::kReal: {
      double number = 0;
      std::from_chars(text.data(), text.data() + text.size(), number);
      return number;
    }
    case ValueKind::kInteger8:
    case ValueKind::kInteger: {
      std::int32_t number = 0;
      std::from_chars(text.data(), text.data() + text.size(), number);
      return property.kind == ValueKind::kInteger ? Value(number)
                                                  : Value(static_cast<std::int8_t>(number));
    }
    case ValueKind::kArray:
    case ValueKind::kElement: break;
  }
  return {};
}

bool isText(const PropertyInfo& property) { return property.kind == ValueKind::kString; }

std::uint64_t bitsOf(const PropertyInfo& property, const Value& value) {
  if (value.isEmpty()) return 0;
  checkSingle(property, value);
  return value.bits();
}

Value fromBits(const PropertyInfo& property, std::uint64_t bits) {
  const auto number = static_cast<std::int64_t>(bits);
  switch (property.kind) {
    case ValueKind::kBoolean: return bits != 0;
    case ValueKind::kInteger8: return static_cast<std::int8_t>(number);
    case ValueKind::kInteger: return static_cast<std::int32_t>(number);
    case ValueKind::kEnumeration:
      return Value(property.enumeration, static_cast<std::int32_t>(number));
    default: return std::bit_cast<double>(bits);
  }
}

std::size_t countOf(const PropertyInfo& property, const PrimitiveList& list) {
  if (!list.values) return 0;
  switch (property.kind) {
    case ValueKind::kReal: return list.values->reals.size();
    case ValueKind::kString: return list.values->texts.size();
    default: return list.values->integers.size();
  }
}

Value itemAt(const PropertyInfo& property, const PrimitiveList& list, std::size_t index) {
  switch (property.kind) {
    case ValueKind::kReal: return list.values->reals[index];
    case ValueKind::kString: return list.values->texts[index];
    default: return fromBits(property, static_cast<std::uint64_t>(list.values->integers[index]));
  }
}

namespace {

bool less(const Value& a, const Value& b) {
  switch (a.meta().kind()) {
    case ValueKind::kReal: {
      // NaN stands behind all numbers, so that a set may hold it once.
      const double x = a.getValue<double>();
      const double y = b.getValue<double>();
      return x < y || (y != y && x == x);
    }
    case ValueKind::kString: return a.getValue<std::u16string>() < b.getValue<std::u16string>();
    default: return static_cast<std::int64_t>(a.bits()) < static_cast<std::int64_t>(b.bits());
  }
}

}  // namespace

bool same(const Value& a, const Value& b) { return !less(a, b) && !less(b, a); }

std::size_t lowerBound(const PropertyInfo& property, const PrimitiveList& list,
                       const Value& value) {
  std::size_t first = 0;
  std::size_t count = countOf(property, list);
  while (count > 0) {
    const std::size_t half = count / 2;
    if (less(itemAt(property, list, first + half), value)) {
      first += half + 1;
      count -= half + 1;
    } else {
      count = half;
    }
  }
  return first;
}

bool holdsAt(const PropertyInfo& property, const PrimitiveList& list, std::size_t index,
             const Value& value) {
  return index < countOf(property, list) && !less(value, itemAt(property, list, index));
}

namespace {

template <class Vector>
void makeRoom(Vector& items) {
  if (items.size() == items.capacity()) items.reserve(items.empty() ? 4 : items.size() * 2);
}

}  // namespace

PrimitiveValues& reserveItem(const PropertyInfo& property, PrimitiveList& list) {
  if (!list.values) list.values = std::make_unique<PrimitiveValues>();
  switch (property.kind) {
    case ValueKind::kReal: makeRoom(list.values->reals); break;
    case ValueKind::kString: makeRoom(list.values->texts); break;
    default: makeRoom(list.values->integers); break;
  }
  return *list.values;
}

void insertRaw(const PropertyInfo& property, PrimitiveValues& items, std::size_t index,
               std::uint64_t raw) noexcept {
  const auto at = static_cast<std::ptrdiff_t>(index);
  switch (property.kind) {
    case ValueKind::kReal:
      items.reals.insert(items.reals.begin() + at, std::bit_cast<double>(raw));
      break;
    case ValueKind::kString: items.texts.insert(items.texts.begin() + at, Text::adopt(raw)); break;
    default:
      items.integers.insert(items.integers.begin() + at, static_cast<std::int64_t>(raw));
      break;
  }
}

std::uint64_t removeRaw(const PropertyInfo& property, PrimitiveValues& items,
                        std::size_t index) noexcept {
  const auto at = static_cast<std::ptrdiff_t>(index);
  std::uint64_t raw = 0;
  switch (property.kind) {
    case ValueKind::kReal:
      raw = std::bit_cast<std::uint64_t>(items.reals[index]);
      items.reals.erase(items.reals.begin() + at);
      break;
    case ValueKind::kString:
      raw = items.texts[index].detach();
      items.texts.erase(items.texts.begin() + at);
      break;
    default:
      raw = static_cast<std::uint64_t>(items.integers[index]);
      items.integers.erase(items.integers.begin() + at);
      break;
  }
  return raw;
}

}  // namespace mf::zero::values
