// Direct access to an element's header and values, for the runtime's own algorithms.
// Nothing here checks, records or notifies.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "framework/element.h"

namespace mf::zero {

struct Raw {
  static const ClassLayout& layout(const ElementImpl& element) {
    return *Chunk::of(&element)->layout;
  }
  static std::byte* storage(const ElementImpl& element) {
    return const_cast<std::byte*>(reinterpret_cast<const std::byte*>(&element)) + kStorageOffset;
  }
  template <class T>
  static T& at(const ElementImpl& element, const PropertyInfo& property) {
    return *reinterpret_cast<T*>(storage(element) + property.offset);
  }

  /// Writes the low `size` bytes of `bits` as the property's value.
  static void store(const ElementImpl& element, const PropertyInfo& property, std::uint64_t bits,
                    std::size_t size) {
    static_assert(std::endian::native == std::endian::little);
    std::memcpy(storage(element) + property.offset, &bits, size);
  }

  /// The `size` bytes of the property's value.
  static std::uint64_t load(const ElementImpl& element, const PropertyInfo& property,
                            std::size_t size) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, storage(element) + property.offset, size);
    return bits;
  }

  // The header's fields, by name.

  static std::uint32_t& refs(ElementImpl& e) { return e.refs_; }
  static ElementId& owner(ElementImpl& e) { return e.owner_; }
  static std::uint16_t& ownerProperty(ElementImpl& e) { return e.ownerProperty_; }
  static std::uint32_t& position(ElementImpl& e) { return e.position_; }
  static Referrers& referrers(ElementImpl& e) { return e.referrers_; }
  static bool hasOnlyReferrer(const ElementImpl& e) {
    return (e.flags_ & ElementImpl::kOnlyReferrer) != 0;
  }
  static void setReferrers(ElementImpl& e, Referrers referrers, bool only) {
    e.referrers_ = referrers;
    setFlag(e, ElementImpl::kOnlyReferrer, only);
  }
  static void setShared(ElementImpl& e) { e.shared_ = true; }
  static void setProxy(ElementImpl& e, bool on) { setFlag(e, ElementImpl::kProxy, on); }
  static void setDestroyed(ElementImpl& e, bool on) { setFlag(e, ElementImpl::kDestroyed, on); }
  static void setInLog(ElementImpl& e, bool on) { setFlag(e, ElementImpl::kInLog, on); }
  /// Destroyed, in a change that observers have not heard of yet.
  static void setRetired(ElementImpl& e, bool on) {
    setFlag(e, ElementImpl::kDestroyed | ElementImpl::kInLog, on);
  }
  static bool isInLog(const ElementImpl& e) { return (e.flags_ & ElementImpl::kInLog) != 0; }
  static bool isPlain(const ElementImpl& e) { return (e.flags_ & ElementImpl::kAttention) == 0; }
  /// Loads a proxy; raises CannotUseDestroyedElement.
  static void prepareRead(const ElementImpl& e) {
    if (!isPlain(e)) e.prepareRead();
  }
  [[noreturn]] static void refuseChange(const ElementImpl& e) { e.refuseChange(); }

 private:
  static void setFlag(ElementImpl& e, std::uint8_t flag, bool on) {
    e.flags_ = static_cast<std::uint8_t>(on ? e.flags_ | flag : e.flags_ & ~flag);
  }
};

/// Calls `visit(const PropertyInfo&)` for every stored property of the class, inherited ones first.
template <class Visit>
void forEachProperty(const ClassInfo& info, Visit&& visit) {
  if (info.super) forEachProperty(*info.super, visit);
  for (const PropertyInfo& property : info.properties) {
    if (!property.has(kDerived)) visit(property);
  }
}

}  // namespace mf::zero
