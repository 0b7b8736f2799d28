// Undoing and settling records: the two ends of a transaction.
#pragma once

#include "framework/element.h"
#include "framework/undo_log.h"

namespace mf::zero::undo {

/// Takes one record's change back. Neither fails nor allocates.
void revert(ModelImpl& model, const UndoRecord& record) noexcept;
/// Ends what a record kept alive for an undo that will not come.
void settle(ModelImpl& model, const UndoRecord& record) noexcept;

/// Ends an element that nothing in the model refers to any more: its identity, its lists, its
/// values; and its cell, unless handles are left.
void discard(ModelImpl& model, ElementImpl& element) noexcept;

/// Whether the element was made by one of the changes of `log`.
bool isCreatedIn(UndoLog& log, const ElementImpl& element);
/// The value of a property before the changes of `log`, and after them.
Value valueBefore(UndoLog& log, const ElementImpl& element, const PropertyInfo& property);
Value valueAfter(UndoLog& log, const ElementImpl& element, const PropertyInfo& property);

}  // namespace mf::zero::undo
