#include "host/vcos/om.h"

#include <array>
#include <cstring>

#include "host/detail/class_table.h"
#include "host/detail/content.h"
#include "host/object.h"
#include "host/vcos/detail/objects.h"

namespace {

using vexal::ArrayPtr;
using vexal::ClassId;
using vexal::detail::Content;
using vexal::detail::elementsOf;
using vexal::detail::fail;
using vexal::detail::Layout;

bool isOfValues(const Content& content) noexcept {
  return content.classId == ClassId::Object &&
         vexal::detail::classOf(content).kind() == vcos::ClassKind::Value;
}

// The integers of a block, or of an array of the same size whose objects are each their own.
void copyIntegers(Content* to, const Content& from) noexcept {
  auto* place = static_cast<std::byte*>(elementsOf(to));
  const std::size_t bytes = vexal::detail::countOf(from) * sizeof(std::int32_t);
  if (bytes == 0) return;
  if (from.layout != Layout::Objects) {
    std::memcpy(place, elementsOf(from), bytes);
    return;
  }
  for (const vxArray& object : vexal::detail::childrenOf(from)) {
    std::memcpy(place, elementsOf(*object.content), sizeof(std::int32_t));
    place += sizeof(std::int32_t);
  }
}

}  // namespace

ArrayPtr omCreateVCOSMatrix(std::size_t rows, std::size_t columns, std::string_view className) {
  return vexal::createObjectArray(className, std::array{rows, columns});
}

ArrayPtr omCreateVCOSEmpty(std::string_view className) {
  return omCreateVCOSMatrix(0, 0, className);
}

void omSetArrayElement(vxArray* objects, std::size_t index, const vxArray* object) {
  vexal::setObjectElement(objects, index, object);
}

ArrayPtr omGetArrayElement(const vxArray* objects, std::size_t index) {
  return vexal::objectElement(objects, index);
}

void omSetClassOfHeterogeneousArray(vxArray* objects) { vexal::narrowClass(objects); }

bool omIsVCOS(const vxArray* array) {
  return vexal::isClass(array, ClassId::Object) &&
         vexal::detail::classOf(*array->content).kind().has_value();
}

ArrayPtr omConstructObjectWithClient(std::string_view className,
                                     std::span<const vxArray* const> inputs) {
  vexal::detail::requireHostThread();
  return vcos::detail::constructObject(vexal::detail::requireClass(className), inputs);
}

ArrayPtr omGetUnderlyingArray(const vxArray* values) {
  const Content& content = vexal::detail::contentOf(values);
  if (!isOfValues(content)) fail("NotAValueClass", {vexal::className(values)});
  ArrayPtr integers = vexal::createArray(ClassId::Int32, vexal::dimensions(values));
  copyIntegers(integers->content, content);
  return integers;
}

std::size_t omGetNumberOfElementsInUnderlyingArray(const vxArray* values) {
  const Content& content = vexal::detail::contentOf(values);
  return isOfValues(content) ? vexal::detail::countOf(content) : 0;
}

ArrayPtr omCreateBuiltinBasedArrayFromUnderlyingArray(std::string_view className,
                                                      const vxArray* integers) {
  const Content& content = vexal::detail::contentOf(integers);
  if (content.classId != ClassId::Int32) vexal::detail::failWrongClass("int32", integers);
  const auto& hostClass = vexal::detail::requireClass(className);
  if (hostClass.kind() != vcos::ClassKind::Value) fail("NotAValueClass", {className});
  auto values = vexal::detail::newValueContent(hostClass, vexal::detail::dimsOf(content));
  copyIntegers(values.get(), content);
  return vexal::detail::newArray(std::move(values));
}
