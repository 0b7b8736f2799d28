// What observers are told: which elements were created, destroyed and modified by
// one committed change, with old and new values, each property once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "framework/element.h"
#include "framework/export.h"
#include "framework/undo_log.h"

namespace mf::zero {

class ChangeSet;

enum class ChangeKind : std::uint8_t { kCreated, kDestroyed, kModified };

/// One change. Values are worked out when they are asked for; valid while its set is.
class MF0_API Change {
 public:
  ChangeKind kind() const { return kind_; }
  /// The element; a destroyed one still tells its identity and class.
  ModelElement element() const { return ModelElement(element_); }
  const uuid& Uuid() const { return element_->Uuid(); }
  /// The modified property; null for a creation or a destruction.
  const PropertyInfo* property() const { return property_; }
  meta::Property metaProperty() const;
  /// The value before the change. Collections answer lists.
  Value oldValue() const;
  /// The value after it, even if an observer has changed it again since.
  Value newValue() const;

 private:
  friend class ChangeSet;
  Change(const ChangeSet& set, ChangeKind kind, ElementImpl* element, const PropertyInfo* property)
      : set_(&set), element_(element), property_(property), kind_(kind) {}
  const ChangeSet* set_;
  ElementImpl* element_;
  const PropertyInfo* property_;
  ChangeKind kind_;
};

/// The changes of one outermost commit, in the order in which they first happened. What was
/// created and destroyed again, and what ended where it began, is not in it. Lives during the
/// call of the observer only. An element that was created is reported as such, not property by
/// property; so is one that was destroyed.
class MF0_API ChangeSet {
 public:
  explicit ChangeSet(UndoLog& log) : log_(log) {}

  std::size_t size() const { return changes().size(); }
  bool empty() const;
  auto begin() const { return changes().begin(); }
  auto end() const { return changes().end(); }
  /// What the commit was given.
  const std::optional<Value>& result() const { return log_.result; }
  ModelImpl& model() const;

 private:
  friend class Change;
  std::span<const Change> changes() const;
  void collect(const ChangeIndex& index, const ChangeIndex::Entry& entry) const;
  bool hasChanged(const Change& change, const ChangeIndex::Entry& entry) const;

  UndoLog& log_;
  mutable bool collected_ = false;
};

}  // namespace mf::zero
