#include "framework/value.h"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <utility>

#include "framework/element.h"
#include "framework/messages.h"
#include "host/array.h"

namespace mf::zero {
namespace {

using Form = ValueMeta::Form;

// What several values share; texts are shared in the same manner by themselves.
template <class T>
struct Box {
  std::atomic<std::uint64_t> refs;
  const T content;

  static std::uint64_t make(T content) {
    return reinterpret_cast<std::uint64_t>(new Box{{1}, std::move(content)});
  }
  static Box* at(std::uint64_t bits) { return reinterpret_cast<Box*>(bits); }
  static void retain(std::uint64_t bits) {
    if (bits) at(bits)->refs.fetch_add(1, std::memory_order_relaxed);
  }
  static void release(std::uint64_t bits) {
    if (bits && at(bits)->refs.fetch_sub(1, std::memory_order_acq_rel) == 1) delete at(bits);
  }
};
using ListBox = Box<std::vector<Value>>;
using ArrayBox = Box<vexal::PropertyArrayPtr>;

ElementImpl* elementAt(std::uint64_t bits) { return reinterpret_cast<ElementImpl*>(bits); }

std::string nameOf(ValueKind kind) {
  switch (kind) {
    case ValueKind::kBoolean: return "Boolean";
    case ValueKind::kInteger8: return "Integer8";
    case ValueKind::kInteger: return "Integer";
    case ValueKind::kReal: return "Real";
    case ValueKind::kString: return "String";
    case ValueKind::kArray: return "VxArray";
    case ValueKind::kEnumeration: return "Enumeration";
    case ValueKind::kElement: return "mf.zero.ModelElement";
  }
  return {};
}

// The shortest form that reads back as the same number.
std::string describeReal(double value) {
  char digits[32];
  const auto end = std::to_chars(std::begin(digits), std::end(digits), value).ptr;
  return {digits, end};
}

std::string describeText(const std::u16string& text) {
  constexpr std::size_t kShown = 40;
  if (text.size() <= kShown) return '"' + toUtf8(text) + '"';
  return '"' + toUtf8(std::u16string_view(text).substr(0, kShown)) + "...\"";
}

std::string describeLiteral(const EnumInfo& enumeration, std::int32_t value) {
  const LiteralInfo* literal = enumeration.find(value);
  return literal ? toUtf8(literal->name) : std::to_string(value);
}

std::string describeElement(const ElementImpl* element) {
  if (!element) return "no element";
  return std::string(element->classInfo().qualifiedName) + ' ' + element->Uuid().toString();
}

std::string describeItems(std::span<const Value> items) {
  constexpr std::size_t kShown = 8;
  std::string text = "[";
  for (const Value& item : items.first(std::min(items.size(), kShown))) {
    if (text.size() > 1) text += ", ";
    text += item.describe();
  }
  if (items.size() > kShown) text += ", ... " + std::to_string(items.size()) + " items";
  return text + ']';
}

}  // namespace

std::string ValueMeta::typeName() const {
  if (form() == Form::kEmpty) return "empty";
  const std::string item =
      enumeration() ? std::string(enumeration()->qualifiedName) : nameOf(kind());
  return form() == Form::kList ? "list of " + item : item;
}

Value::Value(std::u16string_view text) : Value(Text(text)) {}
Value::Value(const std::u16string& text) : Value(Text(text)) {}
Value::Value(const char16_t* text) : Value(Text(text)) {}
Value::Value(const Text& text) : Value(ValueKind::kString, Text(text).detach()) {}
Value::Value(const ModelElement& element)
    : Value(ValueKind::kElement, reinterpret_cast<std::uint64_t>(element.impl())) {
  if (element) element.addRef();
}

Value Value::ofArray(const vxArray* array) {
  return {ValueKind::kArray, array ? ArrayBox::make(vexal::copyForProperty(array)) : 0};
}

Value Value::ofList(std::vector<Value> items) {
  for (const Value& item : items) {
    if (item.isList()) reportException(mf0::messages::CannotCastIncompatibleTypes("list"));
  }
  const ValueMeta item = items.empty() ? ValueMeta() : items.front().meta();
  const ValueMeta meta(Form::kList, item.kind(), item.enumeration());
  return {meta, items.empty() ? 0 : ListBox::make(std::move(items))};
}

Value::Value(const Value& other) : meta_(other.meta_), bits_(other.bits_) {
  if (!meta_.isShared()) return;
  if (isList()) {
    ListBox::retain(bits_);
  } else if (meta_.kind() == ValueKind::kArray) {
    ArrayBox::retain(bits_);
  } else if (meta_.kind() == ValueKind::kString) {
    Text::share(bits_).detach();
  } else if (bits_) {
    elementAt(bits_)->addRef();
  }
}

Value& Value::operator=(Value other) noexcept {
  std::swap(meta_, other.meta_);
  std::swap(bits_, other.bits_);
  return *this;
}

void Value::release() {
  if (isList()) {
    ListBox::release(bits_);
  } else if (meta_.kind() == ValueKind::kArray) {
    ArrayBox::release(bits_);
  } else if (meta_.kind() == ValueKind::kString) {
    Text::adopt(bits_);
  } else if (bits_) {
    elementAt(bits_)->removeRef();
  }
}

std::span<const Value> Value::items() const& {
  if (!isList() || !bits_) return {};
  return ListBox::at(bits_)->content;
}

const vxArray* Value::array() const { return bits_ ? ArrayBox::at(bits_)->content.get() : nullptr; }

std::u16string Value::text() const { return Text::share(bits_).str(); }

bool Value::operator==(const Value& other) const {
  if (isList() && other.isList()) return std::ranges::equal(items(), other.items());
  if (meta_ != other.meta_) return false;
  if (isEmpty()) return true;
  if (meta_.kind() == ValueKind::kReal) {
    return std::bit_cast<double>(bits_) == std::bit_cast<double>(other.bits_);
  }
  if (meta_.kind() == ValueKind::kString) return Text::share(bits_) == Text::share(other.bits_);
  if (meta_.kind() == ValueKind::kArray) return vexal::equalContent(array(), other.array());
  return bits_ == other.bits_;
}

std::string Value::describe() const {
  if (isEmpty()) return "empty";
  if (isList()) return describeItems(items());
  const auto integer = static_cast<std::int64_t>(bits_);
  switch (meta_.kind()) {
    case ValueKind::kBoolean: return integer != 0 ? "true" : "false";
    case ValueKind::kInteger8:
    case ValueKind::kInteger: return std::to_string(integer);
    case ValueKind::kReal: return describeReal(std::bit_cast<double>(bits_));
    case ValueKind::kString: return describeText(text());
    case ValueKind::kArray: return bits_ ? "an array" : "no array";
    case ValueKind::kEnumeration:
      return describeLiteral(*meta_.enumeration(), static_cast<std::int32_t>(integer));
    case ValueKind::kElement: return describeElement(elementAt(bits_));
  }
  return {};
}

void Value::raiseIncompatible(const ValueMeta& wanted) {
  reportException(mf0::messages::CannotCastIncompatibleTypes(wanted.typeName()));
}

}  // namespace mf::zero
