#include "host/vcos/native.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "host/detail/class_table.h"
#include "host/diagnostic.h"
#include "host/object.h"
#include "host/text.h"
#include "host/vcos/detail/pairings.h"

namespace vcos {
namespace {

using vexal::ArrayPtr;
using vexal::detail::Content;
using vexal::detail::ContentRef;
using vexal::detail::fail;
using vexal::detail::HostClass;
using vexal::detail::NativeHead;
using State = vexal::detail::NativeHead::State;

// Never destroyed: arrays may be released while the process ends.
detail::Pairings& pairings() {
  static auto& table = *new detail::Pairings;
  return table;
}

const HostClass& self(const COSClass& hostClass) {
  return static_cast<const HostClass&>(hostClass);
}

const HostClass& classOf(const NativeFamily& family, const Native& native,
                         const COSClass* hostClass) {
  if (hostClass == nullptr && family.classOf != nullptr) hostClass = family.classOf(native);
  if (hostClass == nullptr) fail("UnknownClass", {family.name});
  return self(*hostClass);
}

// After reserveOne(), of a native that has no object.
void pair(Content* content, const NativeFamily& family, const Native& native) {
  if (family.retain != nullptr) family.retain(native);
  *static_cast<void**>(vexal::detail::elementsOf(content)) = native.object;
  auto& head = vexal::detail::headOf<NativeHead>(content);
  head.family = &family;
  head.part = native.part;
  head.state = State::Paired;
  pairings().insert(content);
}

ContentRef pairedContent(const NativeFamily& family, const Native& native,
                         const COSClass* hostClass) {
  if (native.object == nullptr) fail("InvalidHandle");
  if (Content* const known = pairings().find(family, native)) {
    return ContentRef(vexal::detail::share(known));
  }
  const HostClass& itsClass = classOf(family, native, hostClass);
  pairings().reserveOne();
  ContentRef content = vexal::detail::newHandleContent(itsClass);
  pair(content.get(), family, native);
  return content;
}

// Whether it is an object of the class that nobody shares and that has never stood for anything.
bool isBlank(const Content& content, const HostClass& hostClass) {
  return content.layout == vexal::detail::Layout::Natives && content.references == 1 &&
         &vexal::detail::classOf(content) == &hostClass &&
         detail::nativeIn(content).object == nullptr;
}

const HostClass& sharedClass(const NativeFamily& family, std::span<void* const> natives) {
  const HostClass* common = nullptr;
  const HostClass* latest = nullptr;
  for (void* const native : natives) {
    const HostClass* const itsClass = &classOf(family, {native}, nullptr);
    if (itsClass == latest) continue;
    latest = itsClass;
    common = common == nullptr ? itsClass : vexal::detail::commonClass(common, itsClass);
    if (common == nullptr) return vexal::detail::requireClass(vexal::kHeterogeneousClass);
  }
  return *common;
}

const Content* oneNative(const vxArray* object) {
  const Content& content = *object->content;
  const bool isOne = content.layout == vexal::detail::Layout::Natives &&
                     vexal::detail::headOf<NativeHead>(content).state != State::Block;
  return isOne ? &content : nullptr;
}

bool isUsable(const Content& content) noexcept {
  const auto& head = vexal::detail::headOf<NativeHead>(content);
  if (head.state != State::Paired) return false;
  return head.family->isAlive == nullptr || head.family->isAlive(detail::nativeIn(content));
}

}  // namespace

namespace factory::basic {

ArrayPtr BindingRegistry::announce(const NativeFamily& family, Native native,
                                   const COSClass* hostClass) {
  vexal::detail::requireHostThread();
  return vexal::detail::newArray(pairedContent(family, native, hostClass));
}

ArrayPtr BindingRegistry::announce(const NativeFamily& family, Native native,
                                   std::string_view className) {
  vexal::detail::requireHostThread();
  return announce(family, native, &vexal::detail::requireClass(className));
}

void BindingRegistry::announceForConstructor(const NativeFamily& family, Native native,
                                             std::string_view className, vxArray* object,
                                             bool isExclusive) {
  const Content& content = vexal::detail::contentOf(object);
  if (native.object == nullptr) fail("InvalidHandle");
  const bool isKnown = isAnnounced(family, native);
  if (isExclusive && isKnown) fail("AlreadyBound", {className});
  const bool isOfClass = vexal::isClass(object, vexal::ClassId::Object) &&
                         vexal::detail::classOf(content).name == className;
  const HostClass& hostClass =
      isOfClass ? vexal::detail::classOf(content) : vexal::detail::requireClass(className);
  if (!isKnown && isBlank(content, hostClass)) {
    pairings().reserveOne();
    return pair(object->content, family, native);
  }
  vexal::detail::replaceContent(object, pairedContent(family, native, &hostClass));
}

ArrayPtr BindingRegistry::announceAll(const NativeFamily& family, std::span<void* const> natives,
                                      const COSClass* hostClass, Reference reference) {
  vexal::detail::requireHostThread();
  if (family.retain == nullptr || std::ranges::count(natives, nullptr) > 0) fail("InvalidHandle");
  if (natives.empty())
    return vexal::createObjectArray(classOf(family, {}, hostClass).name,
                                    std::array<std::size_t, 2>{0, 0});
  if (natives.size() == 1) {
    ArrayPtr object = announce(family, {natives[0]}, family.classOf ? nullptr : hostClass);
    if (reference == Reference::Adopt) family.release({natives[0]});
    return object;
  }
  const HostClass& common = hostClass != nullptr ? self(*hostClass) : sharedClass(family, natives);
  const std::array<std::size_t, 2> dims{1, natives.size()};
  ContentRef content =
      vexal::detail::newNativeContent({{&common}, &family, nullptr, State::Removed}, dims);
  ArrayPtr array = vexal::detail::newArray(std::move(content));
  auto* const places = static_cast<void**>(vexal::detail::elementsOf(array->content));
  for (std::size_t k = 0; k < natives.size(); ++k) {
    if (reference == Reference::Retain) family.retain({natives[k]});
    places[k] = natives[k];
  }
  vexal::detail::headOf<NativeHead>(array->content).state = State::Block;
  return array;
}

void BindingRegistry::remove(const NativeFamily& family, Native native) noexcept {
  Content* const content = pairings().find(family, native);
  if (content == nullptr) return;
  pairings().erase(*content);
  vexal::detail::headOf<NativeHead>(content).state = State::Removed;
}

bool BindingRegistry::isAnnounced(const NativeFamily& family, Native native) noexcept {
  return pairings().find(family, native) != nullptr;
}

}  // namespace factory::basic

namespace factory::impl {

Native validateSelfPointer(const vxArray* object) {
  vexal::detail::contentOf(object);
  const Content* const content = oneNative(object);
  if (content == nullptr) fail("NotAnObject", {vexal::describe(object)});
  return vcos::detail::livingNativeIn(*content);
}

Native nativeOf(const vxArray* object, const NativeFamily& family) noexcept {
  if (object == nullptr) return {};
  const Content* const content = oneNative(object);
  if (content == nullptr || !isUsable(*content)) return {};
  const bool isOfFamily = vexal::detail::headOf<NativeHead>(*content).family == &family;
  return isOfFamily ? vcos::detail::nativeIn(*content) : Native{};
}

std::span<void* const> nativesOf(const vxArray* objects, const NativeFamily& family) noexcept {
  if (objects == nullptr || objects->content->layout != vexal::detail::Layout::Natives) return {};
  const Content& content = *objects->content;
  const auto& head = vexal::detail::headOf<NativeHead>(content);
  if (head.state != State::Block || head.family != &family) return {};
  return {static_cast<void* const*>(vexal::detail::elementsOf(content)),
          vexal::detail::countOf(content)};
}

}  // namespace factory::impl
}  // namespace vcos

namespace vexal::detail {

// The pairing goes first: what a release runs may announce the native again.
void releaseNatives(Content* content) noexcept {
  const NativeHead head = headOf<NativeHead>(content);
  if (head.state == NativeHead::State::Paired) vcos::pairings().erase(*content);
  if (head.family == nullptr || head.family->release == nullptr) return;
  void* const* const natives = static_cast<void**>(elementsOf(content));
  const std::size_t count = countOf(*content);
  for (std::size_t k = 0; k < count; ++k) {
    if (natives[k] != nullptr) head.family->release({natives[k], head.part});
  }
}

}  // namespace vexal::detail
