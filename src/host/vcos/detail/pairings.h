// The natives that have a host object now: a hash table of their content blocks, open
// addressing with linear probing, at most three quarters full.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "host/detail/content.h"
#include "host/vcos/native.h"

namespace vcos::detail {

/// The native of a block that holds one.
inline Native nativeIn(const vexal::detail::Content& content) noexcept {
  return {*static_cast<void* const*>(vexal::detail::elementsOf(content)),
          vexal::detail::headOf<vexal::detail::NativeHead>(content).part};
}

/// The same of one object; raises "Vexal:class:InvalidHandle" unless it can be used.
inline Native livingNativeIn(const vexal::detail::Content& content) {
  const auto& head = vexal::detail::headOf<vexal::detail::NativeHead>(content);
  const Native native = nativeIn(content);
  const bool isPaired = head.state == vexal::detail::NativeHead::State::Paired;
  if (!isPaired || (head.family->isAlive != nullptr && !head.family->isAlive(native))) {
    vexal::detail::fail("InvalidHandle");
  }
  return native;
}

class Pairings {
 public:
  using Content = vexal::detail::Content;

  /// Null when there is none.
  Content* find(const NativeFamily& family, const Native& native) const noexcept {
    return slots_.empty() ? nullptr : slots_[placeOf(family, native)].content;
  }

  /// Room for one more; raises std::bad_alloc.
  void reserveOne() {
    if ((count_ + 1) * 4 > slots_.size() * 3) grow();
  }
  /// Of a native that is not in it, after reserveOne().
  void insert(Content* content) noexcept {
    const NativeFamily& family = *headOf(*content).family;
    const Native native = nativeIn(*content);
    slots_[placeOf(family, native)] = {native.object, content};
    ++count_;
  }
  /// Of one that is in it.
  void erase(const Content& content) noexcept {
    std::size_t hole = placeOf(*headOf(content).family, nativeIn(content));
    // What follows and belongs at or before the hole moves into it, so no mark is left.
    for (std::size_t next = after(hole); slots_[next].content != nullptr; next = after(next)) {
      const std::size_t home = homeOf(nativeIn(*slots_[next].content));
      if (((next - home) & mask()) < ((next - hole) & mask())) continue;
      slots_[hole] = slots_[next];
      hole = next;
    }
    slots_[hole] = {};
    --count_;
  }

 private:
  struct Slot {
    const void* object = nullptr;
    Content* content = nullptr;
  };

  static const vexal::detail::NativeHead& headOf(const Content& content) noexcept {
    return vexal::detail::headOf<vexal::detail::NativeHead>(content);
  }
  std::size_t mask() const noexcept { return slots_.size() - 1; }
  std::size_t after(std::size_t place) const noexcept { return (place + 1) & mask(); }

  std::size_t homeOf(const Native& native) const noexcept {
    constexpr std::uint64_t kGolden = 0x9e3779b97f4a7c15;
    const auto object = reinterpret_cast<std::uintptr_t>(native.object);
    const auto part = reinterpret_cast<std::uintptr_t>(native.part);
    return static_cast<std::size_t>(((object ^ (part << 20)) * kGolden) >> 24) & mask();
  }

  // Where it is, or the free place where it would be.
  std::size_t placeOf(const NativeFamily& family, const Native& native) const noexcept {
    std::size_t place = homeOf(native);
    for (; slots_[place].content != nullptr; place = after(place)) {
      const bool isSame = slots_[place].object == native.object &&
                          nativeIn(*slots_[place].content).part == native.part &&
                          headOf(*slots_[place].content).family == &family;
      if (isSame) break;
    }
    return place;
  }

  void grow() {
    std::vector<Slot> old(slots_.empty() ? 64 : slots_.size() * 2);
    old.swap(slots_);
    count_ = 0;
    for (const Slot& slot : old) {
      if (slot.content != nullptr) insert(slot.content);
    }
  }

  std::vector<Slot> slots_;  // a power of two of them
  std::size_t count_ = 0;
};

}  // namespace vcos::detail
