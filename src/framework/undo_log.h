// What it takes to undo a transaction: records, in order. Runs of creations and of
// appends are one record. Observers' old values come from here too.
#pragma once

#include <cassert>
#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "framework/storage.h"
#include "framework/undo_records.h"
#include "framework/value.h"

namespace mf::zero {

class ModelImpl;

/// Which properties of which elements a log touches, and by which records.
class ChangeIndex {
 public:
  /// Stands for the creation or destruction of the element itself.
  static constexpr std::uint16_t kLifetime = 0xffff;
  static constexpr std::uint32_t kNone = 0xffffffff;

  struct Step {
    std::uint32_t record;
    std::uint32_t sub;  ///< which creation of a run, which referrer of a destroyed element
    std::uint32_t previous;
  };
  struct Entry {
    ElementId element;
    std::uint16_t property;
    std::uint32_t firstStep;
    std::uint32_t lastStep;
  };

  /// Takes in the records that were added since the last call.
  void extend(const UndoRecords& records, ModelImpl& model);
  const Entry* find(ElementId element, std::uint16_t property) const;
  /// All entries; forgotten ones have no steps.
  const std::vector<Entry>& entries() const { return entries_; }
  /// Forgets an entry whose records were withdrawn.
  void forget(const Entry& entry);
  const Step& step(std::uint32_t number) const { return steps_[number]; }
  void clear();

 private:
  void note(ElementId element, std::uint16_t property, std::uint32_t record, std::uint32_t sub);

  std::vector<Entry> entries_;
  std::vector<Step> steps_;
  std::unordered_map<std::uint64_t, std::uint32_t> byKey_;
  std::size_t taken_ = 0;
};

class Change;

/// One outermost transaction's records.
class UndoLog {
 public:
  explicit UndoLog(ModelImpl& owner);
  UndoLog(const UndoLog&) = delete;
  UndoLog& operator=(const UndoLog&) = delete;
  ~UndoLog();

  bool empty() const { return records.empty(); }
  bool isCommitted() const { return round > 0; }
  /// Whether all that happened is that one plain value was replaced: the most frequent change.
  bool isOnePlainSet() const { return records.size() == 1 && isPlainSet(records.front().kind); }
  /// Adds a record; may throw std::bad_alloc, so it stands before the change.
  [[gnu::always_inline]] void add(const UndoRecord& record) {
    assert(!isCommitted());
    records.add(record);
  }
  /// Makes room for one record, so that adding it cannot fail.
  void makeRoom() { records.makeRoom(); }
  /// Whether the newest record, after `mark`, is the creation of this very element: undoing that
  /// undoes all that happens to the element's own values and references now.
  bool coversNew(ElementId element, std::size_t mark) const {
    return newestId_ == element && records.size() > mark &&
           records.back().kind == UndoKind::kCreate;
  }
  /// Whether the newest record, after `mark`, is of that kind and property already.
  bool hasSet(UndoKind kind, ElementId element, std::uint16_t property, std::size_t mark) const {
    if (records.size() <= mark) return false;
    const UndoRecord& last = records.back();
    return last.kind == kind && last.element == element && last.property == property;
  }
  /// Notes a creation; runs of neighbouring cells become one record.
  void noteCreated(ElementId element, std::uint32_t cellUnits, std::size_t mark);
  /// Forgets the newest creation, which is what was noted last.
  void dropCreated();
  /// Notes a slot or value put in; runs become one record.
  void noteInsert(ElementId element, std::uint16_t property, std::uint32_t position, UndoKind kind,
                  std::size_t mark);
  /// The up-to-date index of the log; drop it when records are taken back.
  ChangeIndex& index();
  /// Forgets the records from `mark` on, of which none keeps anything alive.
  void drop(std::size_t mark);
  /// To be called when records were taken back.
  void shrunk() {
    indexed_ = false;
    newestId_ = kNoElement;
  }
  /// Empties the log, but for room that is worth keeping for the next transaction. One set outside
  /// of a transaction that nobody looked at, the most frequent, has left nothing but its record.
  void clear() {
    if (isOnePlainSet() && !mayBeVoid && !indexed_) {
      records.clear();
      round = 0;
    } else {
      clearAll();
    }
  }
  /// Gives back that room too.
  void release();

  ModelImpl& model;
  UndoRecords records;
  std::optional<Value> result;  ///< what the commit was given
  bool mayBeVoid = false;       ///< several changes: everything may have ended where it began
  /// 0 while the transaction is open. Then 1; for an answer of observers to another log, one more
  /// than that one's.
  int round = 0;
  UndoLog* next = nullptr;      ///< the one that came after, while this one is needed
  std::vector<Change> changes;  ///< room for the change set, kept between commits

 private:
  void clearAll();

  ElementId newestId_ = kNoElement;
  bool indexed_ = false;
  ChangeIndex index_;
};

}  // namespace mf::zero
