// Objects and object arrays.
#include "host/object.h"

#include <algorithm>

#include "host/detail/class_table.h"
#include "host/detail/content.h"
#include "host/text.h"

namespace vexal {
namespace {

using detail::Content;
using detail::ContentRef;
using detail::HostClass;

constexpr std::size_t kScalarDims[]{1, 1};

ContentRef newObject(const HostClass& hostClass) {
  static const auto noFields = std::make_shared<const detail::FieldNames>();
  return detail::newRecordContent(ClassId::Object, kScalarDims, {&hostClass, noFields, nullptr});
}

bool isOneObject(const Content& content) noexcept {
  return content.classId == ClassId::Object && !content.isObjectArray;
}

const Content& requireObjects(const vxArray* array) {
  const Content& content = detail::contentOf(array);
  if (content.classId != ClassId::Object) detail::failWrongClass("object", array);
  return content;
}

const HostClass& classOf(const Content& content) { return *detail::recordOf(content).hostClass; }

bool admits(const HostClass& hostClass, const HostClass& elementClass) noexcept {
  return hostClass.name == kHeterogeneousClass || detail::isOrDerives(&elementClass, &hostClass);
}

const HostClass* commonClass(const HostClass* a, const HostClass* b) noexcept {
  while (a != nullptr && !detail::isOrDerives(b, a)) a = a->superclass;
  return a;
}

}  // namespace

NativePayload::~NativePayload() = default;

ArrayPtr createObject(std::string_view className) {
  detail::requireHostThread();
  return detail::newArray(newObject(detail::requireClass(className)));
}

ArrayPtr createObjectArray(std::string_view className, Dims dims) {
  detail::requireHostThread();
  const HostClass& hostClass = detail::requireClass(className);
  ContentRef object = newObject(hostClass);
  ContentRef objects = detail::newObjectArrayContent(hostClass, dims, object.get());
  const bool isOne = detail::countOf(*objects.get()) == 1;
  return detail::newArray(isOne ? std::move(object) : std::move(objects));
}

const vxArray* objectElement(const vxArray* objects, std::size_t index) {
  const Content& content = requireObjects(objects);
  detail::requireIndex(index, detail::countOf(content));
  return content.isObjectArray ? &detail::childrenOf(content)[index] : objects;
}

void setObjectElement(vxArray* objects, std::size_t index, const vxArray* object) {
  const Content& content = requireObjects(objects);
  detail::requireIndex(index, detail::countOf(content));
  const Content& element = detail::contentOf(object);
  if (!isOneObject(element)) detail::fail("NotAnObject", {describe(object)});
  if (!admits(classOf(content), classOf(element))) {
    detail::fail("ElementClass", {classOf(element).name, classOf(content).name});
  }
  ContentRef taken(detail::share(object->content));
  vxArray* const place = content.isObjectArray
                             ? &detail::childrenOf(detail::uniqueContentOf(objects))[index]
                             : objects;
  detail::replaceContent(place, std::move(taken));
}

void narrowClass(vxArray* objects) {
  const auto elements = detail::childrenOf(requireObjects(objects));
  if (!requireObjects(objects).isObjectArray || elements.empty()) return;
  const HostClass* common = &classOf(*elements[0].content);
  for (const vxArray& element : elements) {
    common = commonClass(common, &classOf(*element.content));
  }
  if (common != nullptr) detail::recordOf(detail::uniqueContentOf(objects)).hostClass = common;
}

void attachPayload(vxArray* object, std::shared_ptr<NativePayload> payload) {
  if (!isOneObject(requireObjects(object))) detail::failWrongClass("1-by-1 object", object);
  detail::recordOf(detail::uniqueContentOf(object)).payload = std::move(payload);
}

NativePayload* payload(const vxArray* object) {
  detail::requireHostThread();
  if (object == nullptr || !isOneObject(*object->content)) return nullptr;
  return detail::recordOf(*object->content).payload.get();
}

}  // namespace vexal
