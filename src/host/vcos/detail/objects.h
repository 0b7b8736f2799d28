// What scripts do with one object, for callers that handle exceptions.
#pragma once

#include <span>
#include <string_view>

#include "host/array.h"
#include "host/vcos/detail/description.h"

namespace vcos::detail {

/// What the class answers the name with; null when nothing. Only described classes have such
/// members.
const Member* findMember(const HostClass& hostClass, std::string_view name) noexcept;

/// The property of that name. Raises "Vexal:class:" NoSuchMember and NotAProperty.
const Property& requireProperty(const HostClass& hostClass, std::string_view name);

vexal::ArrayPtr readProperty(const vxArray* object, std::string_view name);
void writeProperty(vxArray* object, std::string_view name, const vxArray* value);

/// Calls a method of the object or, without one, a static method that was asked of the class.
vexal::ArrayPtr callMethod(const factory::impl::MethodImpl& method, const HostClass& hostClass,
                           const vxArray* object, std::span<const vxArray* const> inputs);

vexal::ArrayPtr constructObject(const HostClass& hostClass, std::span<const vxArray* const> inputs);

}  // namespace vcos::detail
