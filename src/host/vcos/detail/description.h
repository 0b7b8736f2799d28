// A described class, filled in: what its description said, looked up by name.
#pragma once

#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/vcos/class_info.h"
#include "host/vcos/detail/data_type.h"
#include "host/vcos/method.h"

namespace vexal::detail {
struct HostClass;
}

namespace vcos::detail {

using vexal::detail::HostClass;

struct Property {
  factory::PropertyRow row;
  const DataType* type;
};

/// One name that objects of a class answer; exactly one of the pointers is set.
struct Member {
  std::string_view name;
  const HostClass* definedBy;
  const Property* property = nullptr;
  const factory::impl::MethodImpl* method = nullptr;

  bool isStatic() const noexcept {
    return method != nullptr && method->method.attributes == factory::MethodAttributes::Static;
  }
};

class Description {
 public:
  explicit Description(std::unique_ptr<COSClassInfo> info) : info_(std::move(info)) {}

  bool isFilled() const noexcept { return state_ == State::Filled; }

  /// Asks the info object if that has not been done; whatever fails leaves the class as it was.
  void fill(HostClass& hostClass);

  const ClassDefinition& definition() const noexcept { return content_.definition; }
  /// Null for a class without a constructor of its own.
  const factory::impl::MethodImpl* constructor() const noexcept { return content_.constructor; }
  /// Those of the topmost class first.
  std::span<const Member> members() const noexcept { return content_.members; }
  const Member* find(std::string_view name) const noexcept {
    const auto found = content_.byName.find(name);
    return found == content_.byName.end() ? nullptr : &content_.members[found->second];
  }

 private:
  enum class State : std::uint8_t { Named, Filling, Filled };

  struct Content {
    ClassDefinition definition;
    std::vector<Property> properties;
    std::vector<factory::impl::MethodImpl> methods;
    const factory::impl::MethodImpl* constructor = nullptr;
    std::vector<Member> members;
    std::unordered_map<std::string_view, std::uint32_t> byName;
  };

  static void inherit(Content& content, const HostClass* superclass);
  static void addOwnMembers(Content& content, const HostClass& hostClass);

  std::unique_ptr<COSClassInfo> info_;
  State state_ = State::Named;
  Content content_;
};

}  // namespace vcos::detail
