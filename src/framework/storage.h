// The building blocks of a class's storage: what a property's value looks like in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "framework/export.h"
#include "framework/text.h"

struct vxArray;

namespace mf::zero {

/// An element within its model, in four bytes; 0 is none.
using ElementId = std::uint32_t;
inline constexpr ElementId kNoElement = 0;

/// The base of every `X::Impl::Storage`: no members, so that derived ones start with their own.
struct ElementStorage {};

/// A host-array property: one owned property copy, or null.
struct ArraySlot {
  const vxArray* array = nullptr;
  ArraySlot() = default;
  ArraySlot(const ArraySlot&) = delete;
  ArraySlot& operator=(const ArraySlot&) = delete;
  MF0_API ~ArraySlot();
};

/// One held reference, eight bytes: which element, and where its list of referrers notes this one.
/// In a containment the second half is unused; the child knows its owner itself.
struct ReferenceSlot {
  ElementId target = kNoElement;
  std::uint32_t back = 0;
};

/// An ordered list of references. Removing leaves a hole, so that positions stay what they were and
/// taking one out costs the same wherever it stands. The block belongs to the model's pool.
struct ReferenceList {
  ReferenceSlot* slots = nullptr;
  std::uint32_t size = 0;   ///< slots in use, holes included
  std::uint32_t holes = 0;  ///< how many of them are empty
  std::uint32_t live() const { return size - holes; }
};

/// The values of a many-valued primitive property; only one of the vectors is used.
struct PrimitiveValues {
  std::vector<double> reals;
  std::vector<std::int64_t> integers;  ///< also booleans and enumerations
  std::vector<Text> texts;
};

/// A many-valued primitive property: nothing while it is empty.
struct PrimitiveList {
  std::unique_ptr<PrimitiveValues> values;
};

/// One note in an element's list of referrers: who refers to it, and from where.
struct Incoming {
  ElementId owner;
  std::uint32_t link;  ///< six bits of property index, 26 of position; see links.h
};

inline constexpr int kMaxReferenceIndex = 63;

/// The referrers of one element. The block belongs to the model's pool.
struct IncomingList {
  std::uint32_t size;
  std::uint32_t capacity;
  Incoming* entries() { return reinterpret_cast<Incoming*>(this + 1); }
  const Incoming* entries() const { return reinterpret_cast<const Incoming*>(this + 1); }
};

/// An element's referrers: the only one in its place, or the list of them; null without any.
union Referrers {
  IncomingList* list = nullptr;
  Incoming only;
};
static_assert(sizeof(Referrers) == sizeof(std::uint64_t));

}  // namespace mf::zero
