#include "host/record.h"

#include <algorithm>
#include <array>

#include "host/detail/class_table.h"
#include "host/detail/content.h"

namespace vexal {
namespace {

using detail::Content;
using detail::ContentRef;
using detail::FieldNames;

constexpr std::array<std::size_t, 2> kScalarDims{1, 1};

const Content& requireRecord(const vxArray* array) {
  const Content& content = detail::contentOf(array);
  if (content.layout != detail::Layout::Fields) detail::failWrongClass("struct", array);
  return content;
}

const FieldNames& namesOf(const Content& content) { return *detail::recordOf(content).names; }

void requireNewName(const FieldNames& names, std::string_view name) {
  const bool isTaken = std::ranges::count(names, name) > 0;
  if (name.empty() || isTaken) detail::fail("InvalidFieldName", {name});
}

std::size_t indexOfName(const FieldNames& names, std::string_view name) {
  return static_cast<std::size_t>(std::ranges::find(names, name) - names.begin());
}

using SharedNames = std::shared_ptr<const FieldNames>;

SharedNames newNames(std::span<const std::string_view> fields) {
  auto names = std::make_shared<FieldNames>();
  for (const std::string_view field : fields) {
    requireNewName(*names, field);
    names->emplace_back(field);
  }
  return names;
}

// Structs with the same fields are often made one after the other, or in turn with a few others.
SharedNames namesOf(std::span<const std::string_view> fields) {
  detail::requireHostThread();
  // Never destroyed: a struct may be made while the process ends.
  static auto& latest = *new std::array<SharedNames, 4>();
  static std::size_t oldest = 0;
  for (const SharedNames& names : latest) {
    if (names != nullptr && std::ranges::equal(*names, fields)) return names;
  }
  SharedNames& place = latest[oldest++ % latest.size()];
  return place = newNames(fields);
}

// The content with one more field, empty in every element.
ContentRef withField(const Content& content, std::string_view name) {
  auto names = std::make_shared<FieldNames>(namesOf(content));
  const std::size_t width = names->size();
  requireNewName(*names, name);
  names->emplace_back(name);
  detail::Record record = detail::recordOf(content);
  record.names = std::move(names);
  ContentRef wider =
      detail::newRecordContent(content.classId, detail::dimsOf(content), std::move(record));
  const auto from = detail::childrenOf(content);
  const auto to = detail::childrenOf(wider.get());
  for (std::size_t k = 0; k < from.size(); ++k) {
    to[k / width * (width + 1) + k % width].content = detail::share(from[k].content);
  }
  return wider;
}

}  // namespace

ArrayPtr createStruct(std::span<const std::string_view> fields) {
  return createStruct(kScalarDims, fields);
}

ArrayPtr createStruct(Dims dims, std::span<const std::string_view> fields) {
  detail::Record record{{nullptr}, namesOf(fields), nullptr};
  return detail::newArray(detail::newRecordContent(ClassId::Struct, dims, std::move(record)));
}

std::span<const std::string> fieldNames(const vxArray* record) {
  return namesOf(requireRecord(record));
}

bool hasField(const vxArray* record, std::string_view name) {
  return std::ranges::count(fieldNames(record), name) > 0;
}

const vxArray* field(const vxArray* record, std::string_view name, std::size_t k) {
  const Content& content = requireRecord(record);
  const FieldNames& names = namesOf(content);
  const std::size_t column = indexOfName(names, name);
  if (column == names.size()) detail::fail("NoSuchField", {name, className(record)});
  return fieldAt(record, column, k);
}

const vxArray* fieldAt(const vxArray* record, std::size_t place, std::size_t k) {
  const Content& content = requireRecord(record);
  const std::size_t fields = namesOf(content).size();
  detail::requireIndex(place, fields);
  detail::requireIndex(k, detail::countOf(content));
  return static_cast<const vxArray*>(detail::elementsOf(content)) + (k * fields + place);
}

void setField(vxArray* record, std::string_view name, const vxArray* value, std::size_t k) {
  const Content& content = requireRecord(record);
  if (detail::recordOf(content).payload != nullptr) {
    detail::fail("FixedObject", {className(record)});
  }
  detail::requireIndex(k, detail::countOf(content));
  detail::contentOf(value);
  // Taken first: the value may be the record itself or lie in it.
  ContentRef taken(detail::share(value->content));
  const std::size_t column = indexOfName(namesOf(content), name);
  const bool isNew = column == namesOf(content).size();
  if (isNew) detail::replaceContent(record, withField(content, name));
  Content* const own = detail::uniqueContentOf(record);
  vxArray& element = detail::childrenOf(own)[k * namesOf(*own).size() + column];
  detail::replaceContent(&element, std::move(taken));
}

}  // namespace vexal
