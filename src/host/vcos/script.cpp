#include "host/vcos/script.h"

#include <algorithm>
#include <array>

#include "host/cell.h"
#include "host/detail/class_table.h"
#include "host/detail/content.h"
#include "host/function.h"
#include "host/record.h"
#include "host/text.h"
#include "host/vcos/detail/loading.h"
#include "host/vcos/detail/objects.h"
#include "host/vcos/om.h"
#include "host/vcos/package.h"

namespace vexal::script {
namespace {

using detail::Content;
using detail::fail;
using detail::HostClass;
using detail::Layout;
using vcos::factory::MethodAttributes;

// What the action gives, or the diagnostic of what it throws.
template <class Action>
auto guarded(std::string_view what, Action action) noexcept -> Result<decltype(action())> {
  try {
    return {action(), nullptr};
  } catch (...) {
    return {{}, diagnosticOfCurrentException(what)};
  }
}

void requireArrays(Arguments arguments) {
  if (std::ranges::count(arguments, nullptr) > 0) fail("NullArray");
}

bool isNativeObject(const Content& content) noexcept {
  return content.layout == Layout::Natives && detail::isOneObject(content);
}

bool hasMethodByName(const HostClass& hostClass, const vxArray* value, std::string_view name) {
  const detail::Symbol* const symbol = detail::findSymbol(name);
  if (symbol != nullptr && detail::findMethod(&hostClass, symbol) != nullptr) return true;
  const NativePayload* const native = payload(value);
  return native != nullptr && native->hasMethod(name);
}

// A described method is called as it is, every other one by its name.
ArrayPtr invokeMember(const vxArray* object, std::string_view name, Arguments arguments) {
  const Content& content = detail::contentOf(object);
  requireArrays(arguments);
  if (!detail::isOneObject(content)) fail("NotAnObject", {describe(object)});
  const HostClass& hostClass = detail::classOf(content);
  if (isNativeObject(content)) vcos::factory::impl::validateSelfPointer(object);
  if (const vcos::detail::Member* member = vcos::detail::findMember(hostClass, name)) {
    if (member->method == nullptr) fail("NotAMethod", {hostClass.name, name});
    return vcos::detail::callMethod(*member->method, hostClass, object, arguments);
  }
  if (!hasMethodByName(hostClass, object, name)) fail("NoSuchMember", {hostClass.name, name});
  std::vector<const vxArray*> inputs{object};
  inputs.insert(inputs.end(), arguments.begin(), arguments.end());
  return detail::callForOptionalOutput(name, inputs);
}

ArrayPtr invokeStaticMember(std::string_view className, std::string_view name,
                            Arguments arguments) {
  detail::requireHostThread();
  requireArrays(arguments);
  const HostClass& hostClass = detail::requireClass(className);
  const vcos::detail::Member* const member = vcos::detail::findMember(hostClass, name);
  if (member == nullptr) fail("NoSuchMember", {className, name});
  if (!member->isStatic()) fail("NotAMethod", {className, name});
  return vcos::detail::callMethod(*member->method, hostClass, nullptr, arguments);
}

template <class T>
ArrayPtr plainElement(const vxArray* array, std::size_t k) {
  constexpr std::size_t kScalarDims[]{1, 1};
  ArrayPtr one = createArray(classId(array), kScalarDims);
  mutableElements<T>(one.get())[0] = elements<T>(array)[k];
  return one;
}

ArrayPtr structElement(const vxArray* array, std::size_t k) {
  ArrayPtr one = createStruct();
  for (const std::string& name : fieldNames(array)) {
    setField(one.get(), name, field(array, name, k));
  }
  return one;
}

ArrayPtr elementOf(const vxArray* array, std::size_t k) {
  detail::requireIndex(k, elementCount(array));
  switch (classId(array)) {
    case ClassId::Double: return plainElement<double>(array, k);
    case ClassId::Logical: return plainElement<bool>(array, k);
    case ClassId::Char: return plainElement<char16_t>(array, k);
    case ClassId::Int32: return plainElement<std::int32_t>(array, k);
    case ClassId::Cell: return deepCopy(cellElement(array, k));
    case ClassId::Struct: return structElement(array, k);
    case ClassId::Object: return objectElement(array, k);
  }
  return nullptr;
}

ArrayPtr arrayOfObjects(Arguments objects, std::string_view className) {
  if (objects.empty()) return omCreateVCOSEmpty(className);
  ArrayPtr array = omCreateVCOSMatrix(1, objects.size(), kHeterogeneousClass);
  for (std::size_t k = 0; k < objects.size(); ++k) omSetArrayElement(array.get(), k, objects[k]);
  omSetClassOfHeterogeneousArray(array.get());
  return array;
}

bool isArrayOfHandles(const Content& content) noexcept {
  return content.layout == Layout::Objects || content.layout == Layout::Natives;
}

// A block of natives and an array of objects may hold the same objects.
bool areSame(const vxArray* a, const vxArray* b) {
  if (equalContent(a, b)) return true;
  if (a == nullptr || b == nullptr || a->content->layout == b->content->layout) return false;
  if (!isArrayOfHandles(*a->content) || !isArrayOfHandles(*b->content)) return false;
  const bool hasSameSize = std::ranges::equal(dimensions(a), dimensions(b));
  if (!hasSameSize || className(a) != className(b)) return false;
  for (std::size_t k = 0; k < elementCount(a); ++k) {
    if (!equalContent(objectElement(a, k).get(), objectElement(b, k).get())) return false;
  }
  return true;
}

NameKind kindOf(std::string_view name) {
  detail::requireHostThread();
  if (detail::loadClass(name) != nullptr) return NameKind::Class;
  if (vcos::COSPackage::getPackage(name) != nullptr) return NameKind::Package;
  if (isFunction(name) || vcos::detail::loadFunction(name)) return NameKind::Function;
  return NameKind::Unknown;
}

ValueInfo infoOf(const vxArray* value) {
  const Content& content = detail::contentOf(value);
  ValueInfo info{content.classId, className(value), detail::countOf(content)};
  info.isDescribed = omIsVCOS(value);
  if (isNativeObject(content)) {
    const auto* const family = detail::headOf<detail::NativeHead>(content).family;
    info.isValid = family != nullptr && vcos::factory::impl::nativeOf(value, *family).object;
  }
  return info;
}

}  // namespace

Result<NameKind> lookUp(std::string_view name) noexcept {
  return guarded(name, [&] { return kindOf(name); });
}

Result<bool> isA(const vxArray* value, std::string_view className) noexcept {
  return guarded(className, [&] { return vexal::isA(value, className); });
}

Result<std::vector<std::string>> packages(std::string_view below) noexcept {
  return guarded(below, [&] {
    const vcos::COSPackage* const package = vcos::COSPackage::getPackage(below);
    const bool isUnknown = package == nullptr && !below.empty();
    return isUnknown ? std::vector<std::string>() : vcos::COSPackage::packageNames(package);
  });
}

Result<std::vector<std::string>> classes(std::string_view package) noexcept {
  return guarded(package, [&] {
    detail::requireHostThread();
    return detail::classNamesBelow(package);
  });
}

Result<bool> hasMember(std::string_view className, std::string_view member) noexcept {
  return guarded(className, [&] {
    const HostClass& hostClass = detail::requireClass(className);
    return vcos::detail::findMember(hostClass, member) != nullptr ||
           hasMethodByName(hostClass, nullptr, member);
  });
}

Result<bool> hasMember(const vxArray* value, std::string_view member) noexcept {
  return guarded(member, [&] {
    const Content& content = detail::contentOf(value);
    if (content.layout == Layout::Fields && hasField(value, member)) return true;
    if (content.classId != ClassId::Object) return false;
    const HostClass& hostClass = detail::classOf(content);
    return vcos::detail::findMember(hostClass, member) != nullptr ||
           hasMethodByName(hostClass, value, member);
  });
}

Result<ArrayPtr> construct(std::string_view className, Arguments arguments) noexcept {
  return guarded(className, [&] {
    requireArrays(arguments);
    return omConstructObjectWithClient(className, arguments);
  });
}

Result<ArrayPtr> get(const vxArray* object, std::string_view property) noexcept {
  return guarded(property, [&] { return vcos::detail::readProperty(object, property); });
}

Result<Nothing> set(vxArray* object, std::string_view property, const vxArray* value) noexcept {
  return guarded(property, [&] {
    vcos::detail::writeProperty(object, property, value);
    return Nothing{};
  });
}

Result<ArrayPtr> invoke(const vxArray* object, std::string_view method,
                        Arguments arguments) noexcept {
  return guarded(method, [&] { return invokeMember(object, method, arguments); });
}

Result<ArrayPtr> invokeStatic(std::string_view className, std::string_view method,
                              Arguments arguments) noexcept {
  return guarded(method, [&] { return invokeStaticMember(className, method, arguments); });
}

Result<ArrayPtr> call(std::string_view function, Arguments arguments) noexcept {
  return guarded(function, [&] { return detail::callForOptionalOutput(function, arguments); });
}

Result<ArrayPtr> enumMember(std::string_view className, std::string_view member) noexcept {
  return guarded(className, [&] {
    const HostClass& hostClass = detail::requireClass(className);
    const vcos::COSEnumInfo* const found = hostClass.member(member);
    if (found == nullptr) fail("NoSuchMember", {className, member});
    return vcos::createValueObject(hostClass, found->value);
  });
}

Result<ArrayPtr> convert(const vxArray* value, std::string_view dataType) noexcept {
  return guarded(dataType, [&] { return vcos::COSTypeRepository::convert(value, dataType); });
}

Result<ValueInfo> inspect(const vxArray* value) noexcept {
  return guarded("inspect", [&] { return infoOf(value); });
}

// Every copy of a handle object has the same content, and while one is there no other has it.
Result<std::uint64_t> identity(const vxArray* value) noexcept {
  return guarded("identity", [&]() -> std::uint64_t {
    const Content& content = detail::contentOf(value);
    return isNativeObject(content) ? reinterpret_cast<std::uintptr_t>(&content) : 0;
  });
}

Result<bool> same(const vxArray* a, const vxArray* b) noexcept {
  return guarded("same", [&] { return areSame(a, b); });
}

Result<ArrayPtr> element(const vxArray* array, std::size_t k) noexcept {
  return guarded("element", [&] { return elementOf(array, k); });
}

Result<ArrayPtr> objectArray(Arguments objects, std::string_view className) noexcept {
  return guarded(className, [&] { return arrayOfObjects(objects, className); });
}

Result<ArrayPtr> foreign(std::shared_ptr<NativePayload> payload,
                         std::string_view className) noexcept {
  return guarded(className, [&] {
    ArrayPtr object = createObject(className);
    attachPayload(object.get(), std::move(payload));
    return object;
  });
}

}  // namespace vexal::script
