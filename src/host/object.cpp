// Objects and object arrays.
#include "host/object.h"

#include "host/detail/class_table.h"
#include "host/detail/content.h"
#include "host/text.h"
#include "host/vcos/native.h"

namespace vexal {
namespace {

using detail::Content;
using detail::ContentRef;
using detail::HostClass;

constexpr std::size_t kScalarDims[]{1, 1};

ContentRef newObject(const HostClass& hostClass) {
  static const auto noFields = std::make_shared<const detail::FieldNames>();
  switch (hostClass.kind().value_or(vcos::ClassKind::Handle)) {
    case vcos::ClassKind::Value: return detail::newValueContent(hostClass, kScalarDims);
    case vcos::ClassKind::Handle: break;
  }
  if (hostClass.kind()) return detail::newHandleContent(hostClass);
  return detail::newRecordContent(ClassId::Object, kScalarDims, {{&hostClass}, noFields, nullptr});
}

const Content& requireObjects(const vxArray* array) {
  const Content& content = detail::contentOf(array);
  if (content.classId != ClassId::Object) detail::failWrongClass("object", array);
  return content;
}

bool admits(const HostClass& hostClass, const HostClass& elementClass) noexcept {
  return hostClass.name == kHeterogeneousClass || detail::isOrDerives(&elementClass, &hostClass);
}

ArrayPtr valueElement(const Content& values, std::size_t index) {
  ContentRef element = detail::newValueContent(detail::classOf(values), kScalarDims);
  *static_cast<std::int32_t*>(detail::elementsOf(element.get())) =
      static_cast<const std::int32_t*>(detail::elementsOf(values))[index];
  return detail::newArray(std::move(element));
}

ArrayPtr nativeElement(const Content& natives, std::size_t index) {
  const auto& family = *detail::headOf<detail::NativeHead>(natives).family;
  void* const native = static_cast<void* const*>(detail::elementsOf(natives))[index];
  const bool tells = family.classOf != nullptr;
  return vcos::factory::basic::BindingRegistry::announce(
      family, {native}, tells ? nullptr : &detail::classOf(natives));
}

// The same array with an object for each element, so that one can be replaced.
void spreadOut(vxArray* objects) {
  const Content& content = *objects->content;
  if (content.layout == detail::Layout::Objects) return;
  const HostClass& hostClass = detail::classOf(content);
  ContentRef first = newObject(hostClass);
  ContentRef spread =
      detail::newObjectArrayContent(hostClass, detail::dimsOf(content), first.get());
  const auto places = detail::childrenOf(spread.get());
  for (std::size_t k = 0; k < places.size(); ++k) {
    detail::replaceContent(&places[k],
                           ContentRef(detail::share(objectElement(objects, k)->content)));
  }
  detail::replaceContent(objects, std::move(spread));
}

}  // namespace

NativePayload::~NativePayload() = default;
bool NativePayload::hasMethod(std::string_view) const { return false; }
void NativePayload::callMethod(Call& call) { detail::fail("UnknownFunction", {call.name()}); }

ArrayPtr createObject(std::string_view className) {
  detail::requireHostThread();
  return detail::newArray(newObject(detail::requireClass(className)));
}

ArrayPtr createObjectArray(std::string_view className, Dims dims) {
  detail::requireHostThread();
  const HostClass& hostClass = detail::requireClass(className);
  if (hostClass.kind() == vcos::ClassKind::Value) {
    return detail::newArray(detail::newValueContent(hostClass, dims));
  }
  ContentRef object = newObject(hostClass);
  ContentRef objects = detail::newObjectArrayContent(hostClass, dims, object.get());
  const bool isOne = detail::countOf(*objects.get()) == 1;
  return detail::newArray(isOne ? std::move(object) : std::move(objects));
}

ArrayPtr objectElement(const vxArray* objects, std::size_t index) {
  const Content& content = requireObjects(objects);
  detail::requireIndex(index, detail::countOf(content));
  if (detail::isOneObject(content)) return deepCopy(objects);
  switch (content.layout) {
    case detail::Layout::Values: return valueElement(content, index);
    case detail::Layout::Natives: return nativeElement(content, index);
    default: return deepCopy(&detail::childrenOf(content)[index]);
  }
}

void setObjectElement(vxArray* objects, std::size_t index, const vxArray* object) {
  const Content& content = requireObjects(objects);
  detail::requireIndex(index, detail::countOf(content));
  const Content& element = detail::contentOf(object);
  if (!detail::isOneObject(element)) detail::fail("NotAnObject", {describe(object)});
  if (!admits(detail::classOf(content), detail::classOf(element))) {
    detail::fail("ElementClass", {detail::classOf(element).name, detail::classOf(content).name});
  }
  ContentRef taken(detail::share(object->content));
  vxArray* place = objects;
  if (!detail::isOneObject(content)) {
    spreadOut(objects);
    place = &detail::childrenOf(detail::uniqueContentOf(objects))[index];
  }
  detail::replaceContent(place, std::move(taken));
}

void narrowClass(vxArray* objects) {
  const Content& content = requireObjects(objects);
  const auto elements = detail::childrenOf(content);
  if (content.layout != detail::Layout::Objects || elements.empty()) return;
  const HostClass* common = &detail::classOf(*elements[0].content);
  for (const vxArray& element : elements) {
    common = detail::commonClass(common, &detail::classOf(*element.content));
  }
  if (common == nullptr) return;
  detail::headOf<detail::ObjectHead>(detail::uniqueContentOf(objects)).hostClass = common;
}

void attachPayload(vxArray* object, std::shared_ptr<NativePayload> payload) {
  const Content& content = requireObjects(object);
  if (content.layout != detail::Layout::Fields) detail::failWrongClass("1-by-1 object", object);
  detail::headOf<detail::Record>(detail::uniqueContentOf(object)).payload = std::move(payload);
}

NativePayload* payload(const vxArray* object) {
  detail::requireHostThread();
  if (object == nullptr || object->content->classId != ClassId::Object) return nullptr;
  if (object->content->layout != detail::Layout::Fields) return nullptr;
  return detail::recordOf(*object->content).payload.get();
}

}  // namespace vexal
