// The native functions of a concrete class, for its ClassInfo table.
#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <utility>

#include "framework/builder.h"
#include "framework/element.h"

namespace mf::zero {

/// How the runtime makes and ends elements of handle class X.
template <class X>
constexpr NativeInfo nativeOf() {
  using Impl = typename X::Impl;
  using Storage = typename Impl::Storage;
  static_assert(sizeof(Impl) == kStorageOffset, "an Impl keeps its values in its Storage");
  static_assert(alignof(Storage) <= kCellUnit);
  static_assert(kStorageOffset + sizeof(Storage) <= kChunkBytes / 4, "a chunk holds a few cells");
  return {
      .storageSize = sizeof(Storage),
      .construct = [](void* cell, const uuid& identity) -> ElementImpl* {
        new (static_cast<std::byte*>(cell) + kStorageOffset) Storage;
        return new (cell) Impl(identity);
      },
      .constructStorage = [](void* where) -> ElementStorage* { return new (where) Storage; },
      .destroyStorage = [](ElementStorage* storage) { static_cast<Storage*>(storage)->~Storage(); },
      .newBuilder = [](const ClassInfo& info, Model model) -> std::unique_ptr<BuilderValues> {
        return std::make_unique<typename Impl::BuilderImpl>(info, std::move(model));
      },
  };
}

}  // namespace mf::zero
