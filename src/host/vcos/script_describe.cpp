// Descriptions of classes in the words of scripts.
#include <algorithm>

#include "host/detail/class_table.h"
#include "host/detail/messages.h"
#include "host/detail/thread.h"
#include "host/vcos/detail/description.h"
#include "host/vcos/script.h"

namespace vexal::script {
namespace {

using detail::HostClass;
using vcos::factory::impl::MethodImpl;

std::vector<Argument> argumentsOf(const MethodImpl& method) {
  std::vector<Argument> arguments;
  for (const auto& input : method.signature.inputs()) {
    arguments.push_back(
        {std::string(input.name.text()), std::string(input.type.text()), input.isOptional});
  }
  return arguments;
}

Member memberFrom(const MethodImpl& method, MemberKind kind, std::string_view definedBy) {
  Member member;
  member.kind = kind;
  member.name = method.method.name;
  member.doc = method.method.doc;
  member.dataType = method.signature.outputType().text();
  member.definedBy = definedBy;
  member.arguments = argumentsOf(method);
  return member;
}

Member memberFrom(const vcos::detail::Member& from) {
  if (from.method != nullptr) {
    const MemberKind kind = from.isStatic() ? MemberKind::StaticMethod : MemberKind::Method;
    return memberFrom(*from.method, kind, from.definedBy->name);
  }
  const vcos::factory::PropertyRow& row = from.property->row;
  Member member;
  member.name = row.name;
  member.doc = row.doc;
  member.dataType = row.dataType;
  member.isWritable = row.write != nullptr;
  member.definedBy = from.definedBy->name;
  return member;
}

void addDescribed(const HostClass& hostClass, Class& to) {
  const vcos::ClassDefinition& definition = hostClass.description->definition();
  to.doc = definition.doc;
  to.kind = definition.kind;
  to.isAbstract = definition.isAbstract;
  for (const vcos::detail::Member& member : hostClass.description->members()) {
    to.members.push_back(memberFrom(member));
  }
  const MethodImpl* const constructor = hostClass.description->constructor();
  const bool isValue = definition.kind == vcos::ClassKind::Value;
  to.isConstructible = !to.isAbstract && (constructor != nullptr || isValue);
  if (constructor != nullptr) {
    to.members.push_back(memberFrom(*constructor, MemberKind::Constructor, hostClass.name));
  }
  for (const vcos::COSEnumInfo& member : definition.members) {
    to.enumMembers.push_back({std::string(member.name), member.value, std::string(member.doc)});
  }
}

// Methods that were defined by name alone, on the class or one above it.
void addMethodsByName(const HostClass& hostClass, Class& to) {
  for (const HostClass* at = &hostClass; at != nullptr; at = at->superclass) {
    for (const detail::Method& method : at->methods) {
      const std::string_view name = method.symbol->name;
      if (std::ranges::count(to.members, name, &Member::name) > 0) continue;
      Member member;
      member.kind = MemberKind::Method;
      member.name = name;
      member.dataType = "any";
      member.definedBy = at->name;
      member.hasSignature = false;
      to.members.push_back(std::move(member));
    }
  }
}

Class describe(const HostClass& hostClass) {
  Class described;
  described.name = hostClass.name;
  for (const HostClass* at = hostClass.superclass; at != nullptr; at = at->superclass) {
    described.superclasses.emplace_back(at->name);
  }
  if (hostClass.description != nullptr) addDescribed(hostClass, described);
  addMethodsByName(hostClass, described);
  return described;
}

}  // namespace

Result<Class> describeClass(std::string_view className) noexcept {
  try {
    detail::requireHostThread();
    return {describe(detail::requireClass(className)), nullptr};
  } catch (...) {
    return {{}, diagnosticOfCurrentException(className)};
  }
}

}  // namespace vexal::script
