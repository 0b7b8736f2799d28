// How a value comes to be of a data type.
#include <algorithm>
#include <cmath>
#include <limits>

#include "host/cell.h"
#include "host/detail/class_table.h"
#include "host/detail/content.h"
#include "host/detail/messages.h"
#include "host/object.h"
#include "host/record.h"
#include "host/text.h"
#include "host/vcos/detail/data_type.h"
#include "host/vcos/detail/loading.h"

namespace vcos::detail {
namespace {

using vexal::ArrayPtr;
using vexal::ClassId;
using vexal::detail::Content;
using vexal::detail::countOf;
using vexal::detail::fail;
using vexal::detail::HostClass;

constexpr std::size_t kEmptyDims[]{0, 0};

const HostClass* classOf(const DataType& type) {
  if (type.hostClass != nullptr) return type.hostClass;
  const HostClass* const found = vexal::detail::loadClass(type.typeName);
  const_cast<DataType&>(type).hostClass = found;  // a note, made when it becomes known
  return found;
}

// Types and shapes ----------------------------------------------------------------------

bool isText(const Content& content) noexcept {
  if (content.classId != ClassId::Char) return false;
  const auto dims = vexal::detail::dimsOf(content);
  return countOf(content) == 0 || (dims.size() == 2 && dims[0] == 1);
}

bool isCellOfTexts(const Content& content) noexcept {
  if (content.classId != ClassId::Cell) return false;
  return std::ranges::all_of(vexal::detail::childrenOf(content),
                             [](const vxArray& child) { return isText(*child.content); });
}

bool hasShape(Shape shape, const Content& content) noexcept {
  const std::size_t count = countOf(content);
  const auto dims = vexal::detail::dimsOf(content);
  switch (shape) {
    case Shape::Any: return true;
    case Shape::Scalar: return count == 1;
    case Shape::Property: return count <= 1;
    case Shape::Vector: return count == 0 || (dims.size() == 2 && (dims[0] == 1 || dims[1] == 1));
  }
  return false;
}

bool isTextOf(Shape shape, const Content& content) noexcept {
  switch (shape) {
    case Shape::Vector: return isCellOfTexts(content) && hasShape(shape, content);
    case Shape::Any: return isText(content) || isCellOfTexts(content);
    default: return isText(content);
  }
}

bool isOfClass(const DataType& type, const Content& content) {
  if (content.classId != ClassId::Object) return false;
  const HostClass* const wanted = classOf(type);
  if (wanted == nullptr) return false;
  return wanted->name == vexal::kHeterogeneousClass ||
         vexal::detail::isOrDerives(&vexal::detail::classOf(content), wanted);
}

bool isOfKind(const DataType& type, const Content& content) {
  switch (type.kind) {
    case TypeKind::Any: return true;
    case TypeKind::Double: return content.classId == ClassId::Double;
    case TypeKind::Logical: return content.classId == ClassId::Logical;
    case TypeKind::Int32: return content.classId == ClassId::Int32;
    case TypeKind::Char: return content.classId == ClassId::Char;
    case TypeKind::Cell: return content.classId == ClassId::Cell;
    case TypeKind::Struct: return content.classId == ClassId::Struct;
    case TypeKind::Text: return isText(content) || isCellOfTexts(content);
    case TypeKind::Class: return isOfClass(type, content);
    case TypeKind::Void: return false;
  }
  return false;
}

bool isOfType(const DataType& type, const Content& content) {
  if (type.kind == TypeKind::Text) return isTextOf(type.shape, content);
  return isOfKind(type, content) && hasShape(type.shape, content);
}

// Added conversions -----------------------------------------------------------------------

COSTypeConversion* conversionFrom(const DataType& type, std::string_view from) {
  const auto found = std::ranges::find(
      type.added, from, [](const AddedConversion& entry) { return entry.from.text(); });
  return found == type.added.end() ? nullptr : found->conversion.get();
}

COSTypeConversion* addedConversion(const DataType& type, const vxArray* value) {
  if (type.added.empty()) return nullptr;
  COSTypeConversion* found = nullptr;
  if (value->content->classId != ClassId::Object) {
    found = conversionFrom(type, vexal::className(value));
  } else {
    const HostClass* from = &vexal::detail::classOf(*value->content);
    for (; from != nullptr && found == nullptr; from = from->superclass) {
      found = conversionFrom(type, from->name);
    }
  }
  return found != nullptr ? found : conversionFrom(type, "any");
}

// The host's own ----------------------------------------------------------------------------

// Nothing of the value may be lost.
bool fits(double value, double& to) {
  to = value;
  return true;
}
bool fits(double value, bool& to) {
  to = value != 0;
  return !std::isnan(value);
}
bool fits(double value, std::int32_t& to) {
  constexpr double kLowest = std::numeric_limits<std::int32_t>::min();
  constexpr double kHighest = std::numeric_limits<std::int32_t>::max();
  if (!(value >= kLowest && value <= kHighest) || value != std::trunc(value)) return false;
  to = static_cast<std::int32_t>(value);
  return true;
}

template <class To, class From>
ArrayPtr castAll(ClassId to, const vxArray* value) {
  ArrayPtr made = vexal::createArray(to, vexal::dimensions(value));
  const auto from = vexal::elements<From>(value);
  const auto places = vexal::mutableElements<To>(made.get());
  for (std::size_t k = 0; k < from.size(); ++k) {
    if (!fits(static_cast<double>(from[k]), places[k])) return nullptr;
  }
  return made;
}

template <class To>
ArrayPtr toNumbers(ClassId to, const vxArray* value) {
  switch (value->content->classId) {
    case ClassId::Double: return castAll<To, double>(to, value);
    case ClassId::Logical: return castAll<To, bool>(to, value);
    case ClassId::Int32: return castAll<To, std::int32_t>(to, value);
    default: return nullptr;
  }
}

bool isEmptyDouble(const Content& content) noexcept {
  const auto dims = vexal::detail::dimsOf(content);
  return content.classId == ClassId::Double && dims.size() == 2 && dims[0] == 0 && dims[1] == 0;
}

ArrayPtr emptyOf(const DataType& type) {
  switch (type.kind) {
    case TypeKind::Char: return vexal::createArray(ClassId::Char, kEmptyDims);
    case TypeKind::Struct: return vexal::createStruct(vexal::Dims(kEmptyDims));
    case TypeKind::Text:
    case TypeKind::Cell: return vexal::createCell(0, 0);
    case TypeKind::Class:
      return classOf(type) == nullptr ? nullptr
                                      : vexal::createObjectArray(type.typeName, kEmptyDims);
    default: return nullptr;
  }
}

ArrayPtr byHost(const DataType& type, const vxArray* value) {
  const Content& content = *value->content;
  const bool mayBeEmpty = type.shape != Shape::Scalar &&
                          !(type.kind == TypeKind::Text && type.shape == Shape::Property);
  if (mayBeEmpty && isEmptyDouble(content)) {
    if (ArrayPtr empty = emptyOf(type)) return empty;
  }
  if (type.kind == TypeKind::Text && type.shape == Shape::Vector && isText(content)) {
    ArrayPtr texts = vexal::createCell(1, 1);
    vexal::setCell(texts.get(), 0, value);
    return texts;
  }
  if (!hasShape(type.shape, content)) return nullptr;
  switch (type.kind) {
    case TypeKind::Double: return toNumbers<double>(ClassId::Double, value);
    case TypeKind::Logical: return toNumbers<bool>(ClassId::Logical, value);
    case TypeKind::Int32: return toNumbers<std::int32_t>(ClassId::Int32, value);
    default: return nullptr;
  }
}

[[noreturn]] void refuse(const DataType& type, const vxArray* value) {
  if (type.kind == TypeKind::Class && classOf(type) == nullptr && type.added.empty()) {
    fail("UnknownType", {type.name});
  }
  const bool isOnlyShape = isOfKind(type, *value->content);
  isOnlyShape ? fail("WrongShape", {type.name, vexal::describe(value)})
              : fail("CannotConvert", {type.name, vexal::describe(value)});
}

}  // namespace

Converted convertTo(const DataType& type, const vxArray* value) {
  const Content& content = vexal::detail::contentOf(value);
  if (isOfType(type, content)) return Converted(value);
  if (type.kind == TypeKind::Class && classOf(type) == nullptr && type.added.empty()) {
    loadType(type.typeName);
    const DataType* const declared = findDataType(type.name);
    if (declared != nullptr && declared != &type) return convertTo(*declared, value);
  }
  if (COSTypeConversion* const conversion = addedConversion(type, value)) {
    if (ArrayPtr made = conversion->convert(value)) return Converted(std::move(made));
  }
  if (ArrayPtr made = byHost(type, value)) return Converted(std::move(made));
  refuse(type, value);
}

}  // namespace vcos::detail
