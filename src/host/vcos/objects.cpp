#include "host/vcos/detail/objects.h"

#include "host/detail/class_table.h"
#include "host/detail/content.h"
#include "host/diagnostic.h"
#include "host/object.h"
#include "host/record.h"
#include "host/text.h"
#include "host/vcos/detail/pairings.h"

namespace vcos::detail {
namespace {

using vexal::ArrayPtr;
using vexal::detail::Content;
using vexal::detail::fail;
using vexal::detail::Layout;

const Content& requireOneObject(const vxArray* object) {
  const Content& content = vexal::detail::contentOf(object);
  if (!vexal::detail::isOneObject(content)) fail("NotAnObject", {vexal::describe(object)});
  return content;
}

// The living native of a 1-by-1 object.
Native nativeOf(const Content& content, const vxArray* object) {
  return content.layout == Layout::Natives ? livingNativeIn(content)
                                           : factory::impl::validateSelfPointer(object);
}

// Tells of a failed conversion which property it was for.
Converted convertForProperty(const HostClass& hostClass, const Property& property,
                             const vxArray* value) {
  try {
    return convertTo(*property.type, value);
  } catch (const vexal::HostError& error) {
    vexal::Diagnostic diagnostic = error.diagnostic();
    diagnostic.add(vexal::detail::Key("ForProperty").id(), {property.row.name, hostClass.name});
    vexal::throwDiagnostic(diagnostic);
  }
}

// The field of that name, which need not be there.
void requireField(const vxArray* object, std::string_view name) {
  if (!vexal::hasField(object, name)) fail("NoSuchMember", {vexal::className(object), name});
}

bool isPaired(const Content& content) {
  return vexal::detail::headOf<vexal::detail::NativeHead>(content).state ==
         vexal::detail::NativeHead::State::Paired;
}

ArrayPtr valueFrom(const HostClass& hostClass, std::span<const vxArray* const> inputs) {
  if (inputs.empty()) fail("TooFewArguments", {hostClass.name, "1", "0"});
  if (inputs.size() > 1) {
    fail("TooManyArguments", {hostClass.name, "1", std::to_string(inputs.size())});
  }
  if (vexal::isClass(inputs[0], vexal::ClassId::Char)) {
    const std::string name = vexal::toUtf8(vexal::charText(inputs[0]));
    const COSEnumInfo* const member = hostClass.member(name);
    if (member == nullptr) fail("NoSuchMember", {hostClass.name, name});
    return createValueObject(hostClass, member->value);
  }
  const Converted number = convertTo(dataTypeNamed("int32 scalar"), inputs[0]);
  const std::int32_t value = vexal::elements<std::int32_t>(number.get())[0];
  if (hostClass.member(value) == nullptr) {
    fail("NoSuchMember", {hostClass.name, std::to_string(value)});
  }
  return createValueObject(hostClass, value);
}

}  // namespace

const Member* findMember(const HostClass& hostClass, std::string_view name) noexcept {
  for (const HostClass* at = &hostClass; at != nullptr; at = at->superclass) {
    if (at->description != nullptr) return at->description->find(name);
  }
  return nullptr;
}

const Property& requireProperty(const HostClass& hostClass, std::string_view name) {
  const Member* const member = findMember(hostClass, name);
  if (member == nullptr) fail("NoSuchMember", {hostClass.name, name});
  if (member->property == nullptr) fail("NotAProperty", {hostClass.name, name});
  return *member->property;
}

ArrayPtr readProperty(const vxArray* object, std::string_view name) {
  const Content& content = requireOneObject(object);
  if (content.layout == Layout::Fields) {
    requireField(object, name);
    return vexal::deepCopy(vexal::field(object, name));
  }
  const factory::PropertyRow& row = requireProperty(vexal::detail::classOf(content), name).row;
  if (row.read == nullptr) fail("NoSuchMember", {vexal::detail::classOf(content).name, name});
  return row.read(row, nativeOf(content, object));
}

void writeProperty(vxArray* object, std::string_view name, const vxArray* value) {
  const Content& content = requireOneObject(object);
  if (content.layout == Layout::Fields) {
    requireField(object, name);
    return vexal::setField(object, name, value);
  }
  const HostClass& hostClass = vexal::detail::classOf(content);
  const Property& property = requireProperty(hostClass, name);
  const Native native = nativeOf(content, object);
  if (property.row.write == nullptr) fail("ReadOnlyProperty", {hostClass.name, name});
  const Converted converted = convertForProperty(hostClass, property, value);
  // A conversion runs code of others, which may have destroyed the native.
  factory::impl::validateSelfPointer(object);
  property.row.write(property.row, native, converted.get());
}

ArrayPtr callMethod(const factory::impl::MethodImpl& method, const HostClass& hostClass,
                    const vxArray* object, std::span<const vxArray* const> inputs) {
  if (method.method.attributes != factory::MethodAttributes::None) {
    return factory::impl::Invoker::invoke(method, {hostClass, method.method}, inputs);
  }
  const Content& content = requireOneObject(object);
  factory::MethodCall call{vexal::detail::classOf(content), method.method, object};
  if (content.layout == Layout::Natives) call.native = factory::impl::validateSelfPointer(object);
  return factory::impl::Invoker::invoke(method, call, inputs);
}

ArrayPtr constructObject(const HostClass& hostClass, std::span<const vxArray* const> inputs) {
  if (hostClass.isAbstract()) fail("AbstractClass", {hostClass.name});
  const auto* const constructor =
      hostClass.description != nullptr ? hostClass.description->constructor() : nullptr;
  const bool isValue = hostClass.kind() == ClassKind::Value;
  if (constructor == nullptr && isValue) return valueFrom(hostClass, inputs);
  if (constructor == nullptr) fail("NotConstructible", {hostClass.name});
  ArrayPtr object;
  if (!isValue) object = vexal::detail::newArray(vexal::detail::newHandleContent(hostClass));
  factory::MethodCall call{hostClass, constructor->method};
  call.constructed = object.get();
  ArrayPtr made = factory::impl::Invoker::invoke(*constructor, call, inputs);
  if (!isValue) made = isPaired(*object->content) ? std::move(object) : nullptr;
  if (made == nullptr) fail("NotConstructed", {hostClass.name});
  return made;
}

}  // namespace vcos::detail
