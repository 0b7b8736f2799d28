#include "framework/identity_index.h"

#include <array>
#include <bit>

#include "framework/element.h"

namespace mf::zero {

ElementImpl* IdentityIndex::find(const uuid& identity) {
  if (table_.empty()) rebuild(std::bit_ceil((pool_.size() + 8) * 2));
  for (std::size_t slot = home(identity);; slot = (slot + 1) & (table_.size() - 1)) {
    const ElementId id = table_[slot];
    if (id == kNoElement) return nullptr;
    if (id != kTombstone && pool_.at(id)->Uuid() == identity) return pool_.at(id);
  }
}

void IdentityIndex::addToTable(const ElementImpl& element) {
  if ((used_ + 1) * 4 > table_.size() * 3) {
    rebuild(std::bit_ceil((live_ + 1) * 2));  // takes the new element in with all others
  } else {
    put(element.id(), home(element.Uuid()));
  }
}

void IdentityIndex::removeFromTable(const ElementImpl& element) noexcept {
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

void IdentityIndex::rebuild(std::size_t capacity) {
  std::vector<ElementId> table(capacity);
  table_.swap(table);
  used_ = 0;
  live_ = 0;
  // Homes lie all over the table: each is asked for well before it is written to.
  struct Waiting {
    ElementId id;
    std::size_t home;
  };
  std::array<Waiting, 32> waiting{};
  std::size_t turn = 0;
  pool_.forEach([&](const ElementImpl& element) {
    if (element.isDestroyed()) return;
    Waiting& next = waiting[turn++ % waiting.size()];
    if (next.id != kNoElement) put(next.id, next.home);
    next = {element.id(), home(element.Uuid())};
    __builtin_prefetch(&table_[next.home], 1);
  });
  for (const Waiting& last : waiting) {
    if (last.id != kNoElement) put(last.id, last.home);
  }
}

void IdentityIndex::put(ElementId id, std::size_t slot) noexcept {
  while (table_[slot] != kNoElement) slot = (slot + 1) & (table_.size() - 1);
  table_[slot] = id;
  ++used_;
  ++live_;
}

}  // namespace mf::zero
