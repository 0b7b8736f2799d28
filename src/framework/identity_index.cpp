#include "framework/identity_index.h"

#include <bit>

#include "framework/element.h"

namespace mf::zero {

ElementImpl* IdentityIndex::find(const uuid& identity) {
  if (table_.empty()) build();
  for (std::size_t slot = home(identity);; slot = (slot + 1) & (table_.size() - 1)) {
    const ElementId id = table_[slot];
    if (id == kNoElement) return nullptr;
    if (id != kTombstone && pool_.at(id)->Uuid() == identity) return pool_.at(id);
  }
}

void IdentityIndex::add(const ElementImpl& element) {
  if (table_.empty()) return;
  if ((used_ + 1) * 4 > table_.size() * 3) {
    rebuild(std::bit_ceil((live_ + 1) * 2));  // takes the new element in with all others
  } else {
    put(element.id(), element.Uuid());
  }
}

void IdentityIndex::remove(const ElementImpl& element) noexcept {
  if (table_.empty()) return;
  const std::size_t slot = slotOf(element);
  if (table_[slot] == kNoElement) return;
  table_[slot] = kTombstone;
  --live_;
}

void IdentityIndex::restore(const ElementImpl& element) noexcept {
  if (table_.empty()) return;
  std::size_t slot = home(element.Uuid());
  while (table_[slot] != kNoElement && table_[slot] != kTombstone) {
    if (table_[slot] == element.id()) return;
    slot = (slot + 1) & (table_.size() - 1);
  }
  if (table_[slot] == kNoElement && (used_ + 1) * 4 > table_.size() * 3) {
    // Too full, and growing could fail: the next look-up builds it anew.
    return clear();
  }
  used_ += table_[slot] == kNoElement;
  table_[slot] = element.id();
  ++live_;
}

std::size_t IdentityIndex::slotOf(const ElementImpl& element) const {
  const ElementId id = element.id();
  std::size_t slot = home(element.Uuid());
  while (table_[slot] != kNoElement && table_[slot] != id) slot = (slot + 1) & (table_.size() - 1);
  return slot;
}

void IdentityIndex::build() {
  live_ = 0;
  pool_.forEach([this](const ElementImpl& element) { live_ += !element.isDestroyed(); });
  rebuild(std::bit_ceil((live_ + 8) * 2));
}

void IdentityIndex::rebuild(std::size_t capacity) {
  std::vector<ElementId> table(capacity);
  table_.swap(table);
  used_ = 0;
  live_ = 0;
  pool_.forEach([this](const ElementImpl& element) {
    if (!element.isDestroyed()) put(element.id(), element.Uuid());
  });
}

void IdentityIndex::put(ElementId id, const uuid& identity) noexcept {
  std::size_t slot = home(identity);
  while (table_[slot] != kNoElement) slot = (slot + 1) & (table_.size() - 1);
  table_[slot] = id;
  ++used_;
  ++live_;
}

}  // namespace mf::zero
