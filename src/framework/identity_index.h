// Finds a model's elements by identity: an open-addressing table of four-byte ids,
// keys in the elements. Built in bulk at the first look-up; a model in which nobody
// looks anything up pays nothing for it.
#pragma once

#include <cstddef>
#include <vector>

#include "framework/element_pool.h"
#include "framework/storage.h"
#include "framework/uuid.h"

namespace mf::zero {

class IdentityIndex {
 public:
  explicit IdentityIndex(const ElementPool& pool) : pool_(pool) {}

  /// The element with that identity; null if there is none.
  ElementImpl* find(const uuid& identity);
  /// Notes a new element. Throws std::bad_alloc before anything changes.
  void add(const ElementImpl& element) {
    if (!table_.empty()) addToTable(element);
  }
  /// Forgets an element that is about to go or is destroyed.
  void remove(const ElementImpl& element) noexcept {
    if (!table_.empty()) removeFromTable(element);
  }
  /// Puts back an element that was forgotten; does not allocate.
  void restore(const ElementImpl& element) noexcept;
  /// Forgets everything; the next look-up builds anew.
  void clear() noexcept { table_.clear(); }
  std::size_t bytes() const { return table_.capacity() * sizeof(ElementId); }

 private:
  void addToTable(const ElementImpl& element);
  void removeFromTable(const ElementImpl& element) noexcept;
  void rebuild(std::size_t capacity);
  void put(ElementId id, std::size_t slot) noexcept;
  std::size_t home(const uuid& identity) const {
    return static_cast<std::size_t>(((identity.high ^ (identity.low << 1)) * 0x9e3779b97f4a7c15U) >>
                                    32) &
           (table_.size() - 1);
  }
  std::size_t slotOf(const ElementImpl& element) const;

  static constexpr ElementId kTombstone = 0xffffffff;
  const ElementPool& pool_;
  std::vector<ElementId> table_;  ///< a power of two; empty until the first look-up
  std::size_t used_ = 0;          ///< occupied and tombstones
  std::size_t live_ = 0;
};

}  // namespace mf::zero
