// The table of data types and the conversions that were added to it.
#include "host/vcos/type_repository.h"

#include <algorithm>
#include <array>

#include "host/detail/class_table.h"
#include "host/detail/messages.h"
#include "host/detail/thread.h"
#include "host/text.h"
#include "host/vcos/detail/data_type.h"

namespace vcos {

using vexal::detail::fail;

namespace detail {
namespace {

struct TypeWord {
  std::string_view word;
  TypeKind kind;
};
constexpr std::array kTypeWords{
    TypeWord{"any", TypeKind::Any},
    TypeWord{"void", TypeKind::Void},
    TypeWord{"double", TypeKind::Double},
    TypeWord{"logical", TypeKind::Logical},
    TypeWord{"int32", TypeKind::Int32},
    TypeWord{"char", TypeKind::Char},
    TypeWord{"cell", TypeKind::Cell},
    TypeWord{"struct", TypeKind::Struct},
    TypeWord{factory::detail::kStringType, TypeKind::Text},
};

struct ShapeWord {
  std::string_view word;
  Shape shape;
};
constexpr std::array kShapeWords{
    ShapeWord{"scalar", Shape::Scalar},
    ShapeWord{"vector", Shape::Vector},
    ShapeWord{"property", Shape::Property},
};

TypeKind kindOf(std::string_view typeName) {
  const auto found = std::ranges::find(kTypeWords, typeName, &TypeWord::word);
  return found == kTypeWords.end() ? TypeKind::Class : found->kind;
}

// For as long as the name's text is there.
DataType parsed(std::string_view name) {
  DataType type;
  type.name = name;
  type.typeName = name;
  const std::size_t blank = name.rfind(' ');
  if (blank != std::string_view::npos) {
    const auto found = std::ranges::find(kShapeWords, name.substr(blank + 1), &ShapeWord::word);
    if (found == kShapeWords.end()) fail("UnknownType", {name});
    type.shape = found->shape;
    type.typeName = name.substr(0, blank);
  }
  if (type.typeName.empty()) fail("UnknownType", {name});
  type.kind = kindOf(type.typeName);
  return type;
}

auto added(DataType& type, std::string_view from) {
  return std::ranges::find(type.added, from,
                           [](const AddedConversion& entry) { return entry.from.text(); });
}

}  // namespace

namespace {

vexal::detail::NameTable<DataType>& dataTypes() {
  vexal::detail::requireHostThread();
  // Never destroyed: classes and signatures refer to data types.
  static auto& types = *new vexal::detail::NameTable<DataType>;
  return types;
}

}  // namespace

DataType* findDataType(std::string_view name) {
  const auto known = dataTypes().find(name);
  return known == dataTypes().end() ? nullptr : &known->second;
}

DataType& dataTypeNamed(std::string_view name) {
  if (DataType* const known = findDataType(name)) return *known;
  const std::string_view kept = internal::keptForEver(name);
  return dataTypes().emplace(std::string(kept), parsed(kept)).first->second;
}

}  // namespace detail

COSTypeConversion::~COSTypeConversion() = default;

void COSTypeRepository::addConversion(std::string_view from, std::string_view to,
                                      std::unique_ptr<COSTypeConversion> conversion) {
  if (getConversion(from, to) != nullptr) fail("ConversionExists", {from, to});
  detail::dataTypeNamed(to).added.push_back({internal::makeInterned(from), std::move(conversion)});
}

COSTypeConversion* COSTypeRepository::getConversion(std::string_view from, std::string_view to) {
  detail::DataType* const type = detail::findDataType(to);
  if (type == nullptr) return nullptr;
  const auto found = detail::added(*type, from);
  return found == type->added.end() ? nullptr : found->conversion.get();
}

std::unique_ptr<COSTypeConversion> COSTypeRepository::removeConversion(std::string_view from,
                                                                       std::string_view to) {
  detail::DataType* const type = detail::findDataType(to);
  if (type == nullptr) return nullptr;
  const auto found = detail::added(*type, from);
  if (found == type->added.end()) return nullptr;
  std::unique_ptr<COSTypeConversion> conversion = std::move(found->conversion);
  type->added.erase(found);
  return conversion;
}

vexal::ArrayPtr COSTypeRepository::convert(const vxArray* value, std::string_view dataType) {
  // Scripts may ask for any name, so one that nobody has declared is not kept.
  if (const detail::DataType* const known = detail::findDataType(dataType)) {
    return vexal::deepCopy(detail::convertTo(*known, value).get());
  }
  return vexal::deepCopy(detail::convertTo(detail::parsed(dataType), value).get());
}

std::u16string factory::extractString(const vxArray* value) { return vexal::charText(value); }

void factory::detail::initStringDataTypes() {
  vcos::detail::dataTypeNamed(kStringScalar);
  vcos::detail::dataTypeNamed(kStringVector);
}

}  // namespace vcos
