#include "host/vcos/class.h"

#include <algorithm>
#include <set>

#include "host/detail/class_table.h"
#include "host/detail/content.h"
#include "host/vcos/detail/description.h"
#include "host/vcos/detail/loading.h"

namespace vcos {
namespace {

using vexal::detail::HostClass;

const HostClass& self(const COSClass& hostClass) {
  return static_cast<const HostClass&>(hostClass);
}

const ClassDefinition* definitionOf(const COSClass& hostClass) {
  const auto& description = self(hostClass).description;
  return description == nullptr ? nullptr : &description->definition();
}

}  // namespace

InternedName internal::makeInterned(std::string_view text) {
  vexal::detail::requireHostThread();
  // Never destroyed: names last as long as the process.
  static auto& names = *new std::set<std::string, std::less<>>;
  const auto known = names.find(text);
  return InternedName(known != names.end() ? &*known : &*names.emplace(text).first);
}

COSClass* COSClass::getClass(InternedName name) { return getClass(name.text()); }

COSClass* COSClass::getClass(std::string_view name) {
  vexal::detail::requireHostThread();
  return vexal::detail::loadClass(name);
}

std::string_view COSClass::name() const noexcept { return self(*this).name; }

std::string_view COSClass::shortName() const noexcept {
  return name().substr(name().rfind('.') + 1);  // npos + 1 is 0
}

std::string_view COSClass::doc() const noexcept {
  const ClassDefinition* definition = definitionOf(*this);
  return definition == nullptr ? std::string_view() : definition->doc;
}

const COSClass* COSClass::superclass() const noexcept { return self(*this).superclass; }

bool COSClass::isOrDerivesFrom(const COSClass& ancestor) const noexcept {
  return vexal::detail::isOrDerives(&self(*this), &self(ancestor));
}

std::optional<ClassKind> COSClass::kind() const noexcept {
  const ClassDefinition* definition = definitionOf(*this);
  return definition == nullptr ? std::nullopt : std::optional(definition->kind);
}

bool COSClass::isAbstract() const noexcept {
  const ClassDefinition* definition = definitionOf(*this);
  return definition != nullptr && definition->isAbstract;
}

std::span<const COSEnumInfo> COSClass::members() const noexcept {
  const ClassDefinition* definition = definitionOf(*this);
  if (definition == nullptr) return {};
  return definition->members;
}

const COSEnumInfo* COSClass::member(std::string_view name) const noexcept {
  const auto found = std::ranges::find(members(), name, &COSEnumInfo::name);
  return found == members().end() ? nullptr : &*found;
}

const COSEnumInfo* COSClass::member(std::int32_t value) const noexcept {
  const auto found = std::ranges::find(members(), value, &COSEnumInfo::value);
  return found == members().end() ? nullptr : &*found;
}

vexal::ArrayPtr createValueObject(const COSClass& valueClass, std::int32_t value) {
  if (valueClass.kind() != ClassKind::Value) {
    vexal::detail::fail("NotAValueClass", {valueClass.name()});
  }
  constexpr std::size_t kDims[]{1, 1};
  auto content = vexal::detail::newValueContent(self(valueClass), kDims);
  *static_cast<std::int32_t*>(vexal::detail::elementsOf(content.get())) = value;
  return vexal::detail::newArray(std::move(content));
}

}  // namespace vcos

namespace vexal::detail {

HostClass* loadClass(std::string_view name) {
  HostClass* found = findClass(name);
  if (found == nullptr && vcos::detail::loadClass(name)) found = findClass(name);
  if (found != nullptr && found->description != nullptr) found->description->fill(*found);
  return found;
}

}  // namespace vexal::detail
