// Natives that exist for scripts only: counted by the host objects that stand for them.
#pragma once

#include <cstddef>
#include <string_view>

#include "host/vcos/native.h"

namespace mf::zero::mi::detail {

/// A T with a count; freed with the last reference.
template <class T>
struct NativeBox {
  T content;
  std::size_t references = 0;

  static T& in(const vcos::Native& native) { return boxIn(native).content; }

  /// The family of such boxes, of which each has the class of that name.
  static constexpr vcos::NativeFamily family(
      std::string_view name, const vcos::COSClass* (*classOf)(const vcos::Native&)) {
    return {
        .name = name,
        .retain = [](const vcos::Native& native) { ++boxIn(native).references; },
        .release =
            [](const vcos::Native& native) noexcept {
              if (--boxIn(native).references == 0) delete &boxIn(native);
            },
        .classOf = classOf,
    };
  }

  /// The host object of a new box.
  static vexal::ArrayPtr announce(const vcos::NativeFamily& family, T content) {
    auto* const box = new NativeBox{std::move(content), 1};
    const vcos::Native native{box};
    struct Release {
      const vcos::NativeFamily& family;
      const vcos::Native& native;
      ~Release() { family.release(native); }
    } const release{family, native};
    return vcos::factory::basic::BindingRegistry::announce(family, native);
  }

 private:
  static NativeBox& boxIn(const vcos::Native& native) {
    return *static_cast<NativeBox*>(native.object);
  }
};

}  // namespace mf::zero::mi::detail
