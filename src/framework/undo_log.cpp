#include "framework/undo_log.h"

#include <cstdlib>
#include <new>
#include <type_traits>
#include <utility>

#include "framework/change_set.h"
#include "framework/links.h"
#include "framework/model_impl.h"

namespace mf::zero {

// UndoRecords

void UndoRecords::grow() {
  static_assert(std::is_trivially_copyable_v<UndoRecord>);
  const std::size_t capacity = 2 * capacity_ + 8;
  void* const moved = std::realloc(records_, capacity * sizeof(UndoRecord));
  if (!moved) throw std::bad_alloc();
  records_ = static_cast<UndoRecord*>(moved);
  capacity_ = capacity;
}

void UndoRecords::release() {
  std::free(std::exchange(records_, nullptr));
  size_ = capacity_ = 0;
}

// UndoLog

UndoLog::UndoLog(ModelImpl& owner) : model(owner) {}

UndoLog::~UndoLog() = default;

void UndoLog::noteCreated(ElementId element, std::uint32_t cellUnits, std::size_t mark) {
  const bool extends = records.size() > mark && records.back().kind == UndoKind::kCreate &&
                       newestId_ + cellUnits == element && records.back().position == cellUnits;
  if (extends) {
    ++records.back().count;
  } else {
    add({.kind = UndoKind::kCreate, .element = element, .position = cellUnits, .count = 1});
  }
  newestId_ = element;
  indexed_ = false;
}

void UndoLog::dropCreated() {
  if (--records.back().count == 0) records.shrink(records.size() - 1);
  shrunk();
}

void UndoLog::noteInsert(ElementId element, std::uint16_t property, std::uint32_t position,
                         UndoKind kind, std::size_t mark) {
  if (hasSet(kind, element, property, mark) &&
      records.back().position + records.back().count == position) {
    ++records.back().count;
    return;
  }
  add({.kind = kind, .property = property, .element = element, .position = position, .count = 1});
}

ChangeIndex& UndoLog::index() {
  if (!indexed_) index_.clear();
  indexed_ = false;  // what memory did not suffice for is taken in anew
  index_.extend(records, model);
  indexed_ = true;
  return index_;
}

void UndoLog::clearAll() {
  constexpr std::size_t kKept = 4096;
  records.clear();
  changes.clear();
  result.reset();
  mayBeVoid = false;
  round = 0;
  shrunk();
  if (records.capacity() > kKept || changes.capacity() > kKept ||
      index_.entries().capacity() > kKept) {
    release();
  }
}

void UndoLog::release() {
  records.release();
  changes = {};
  index_ = {};  // a table that is emptied keeps its buckets
}

void UndoLog::drop(std::size_t mark) {
  records.shrink(mark);
  shrunk();
}

// ChangeIndex

void ChangeIndex::clear() {
  entries_.clear();
  steps_.clear();
  byKey_.clear();
  taken_ = 0;
}

void ChangeIndex::extend(const UndoRecords& records, ModelImpl& model) {
  for (; taken_ < records.size(); ++taken_) {
    const UndoRecord& record = records[taken_];
    const auto number = static_cast<std::uint32_t>(taken_);
    if (!isTold(record.kind)) continue;
    if (record.kind != UndoKind::kCreate && record.kind != UndoKind::kDestroy) {
      note(record.element, record.property, number, 0);
      continue;
    }
    for (std::uint32_t i = 0; i < record.count; ++i) {
      note(record.element + i * record.position, kLifetime, number, i);
    }
    if (record.kind == UndoKind::kCreate) continue;
    const links::KeptReferrers referrers(record);
    std::uint32_t referrer = 0;
    for (const Incoming& entry : referrers.entries()) {
      const PropertyInfo& property = links::propertyOf(*model.pool().at(entry.owner), entry.link);
      note(entry.owner, property.index, number, referrer++);
    }
  }
}

void ChangeIndex::note(ElementId element, std::uint16_t property, std::uint32_t record,
                       std::uint32_t sub) {
  const auto step = static_cast<std::uint32_t>(steps_.size());
  const auto [found, isNew] = byKey_.try_emplace(std::uint64_t{element} << 16 | property,
                                                 static_cast<std::uint32_t>(entries_.size()));
  if (isNew) {
    entries_.push_back({element, property, step, step});
    steps_.push_back({record, sub, kNone});
  } else {
    Entry& entry = entries_[found->second];
    steps_.push_back({record, sub, entry.lastStep});
    entry.lastStep = step;
  }
}

void ChangeIndex::forget(const Entry& entry) {
  const auto found = byKey_.find(std::uint64_t{entry.element} << 16 | entry.property);
  Entry& forgotten = entries_[found->second];
  forgotten.firstStep = forgotten.lastStep = kNone;
  byKey_.erase(found);
}

const ChangeIndex::Entry* ChangeIndex::find(ElementId element, std::uint16_t property) const {
  const auto found = byKey_.find(std::uint64_t{element} << 16 | property);
  return found == byKey_.end() ? nullptr : &entries_[found->second];
}

}  // namespace mf::zero
