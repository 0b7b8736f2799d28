// Changes of references and containments by all the rules: what may refer to what,
// both ends of a two-sided reference, moves between containments, undo and notice.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "framework/element.h"
#include "framework/undo_log.h"

namespace mf::zero::references {

inline constexpr std::uint32_t kEnd = 0xffffffff;

/// Raises what adding `target` to `property` of `owner` must raise: CannotAddNonExistentObject,
/// CannotAddIncompatibleTypes, CannotCreateCrossModelAssociation, CannotCreateContainmentCycle.
void check(const ElementImpl& owner, const PropertyInfo& property, const ElementImpl* target);

/// The slot that holds `target`; empty if none does. Amortised constant time.
std::optional<std::uint32_t> find(const ElementImpl& owner, const PropertyInfo& property,
                                  const ElementImpl* target);

/// Puts `target` (null empties it) into a single reference or containment; one transaction.
void set(ElementImpl& owner, const PropertyInfo& property, ElementImpl* target);
/// Puts `target` into a list before the slot at `position`, or at the end; raises
/// CannotAddSecondObject if it is held already. One transaction.
void insert(ElementImpl& owner, const PropertyInfo& property, std::uint32_t position,
            ElementImpl* target);
/// Puts all of `targets` at the end of a list, or none; one transaction.
void append(ElementImpl& owner, const PropertyInfo& property,
            std::span<ElementImpl* const> targets);
/// Puts what the slot `from` holds before the slot `before`, or at the end. The other ends stay
/// as they are; one transaction.
void move(ElementImpl& owner, const PropertyInfo& property, std::uint32_t from,
          std::uint32_t before);
/// Makes a list hold exactly `targets`, in this order, or changes nothing. The other ends of what
/// was held before stay as they are; one transaction.
void assign(ElementImpl& owner, const PropertyInfo& property,
            std::span<ElementImpl* const> targets);
/// Empties a slot, at both ends; one transaction.
void removeSlot(ElementImpl& owner, const PropertyInfo& property, std::uint32_t position);
/// Empties a list; one transaction.
void clear(ElementImpl& owner, const PropertyInfo& property);
/// Whether anything but `whole` and its contents refers to the element.
bool isReferencedFromOutside(const ElementImpl& element, const ElementImpl& whole);
/// Takes `element` out of all references to it; one transaction.
void clearIncoming(ElementImpl& element);
/// Closes the gaps of the lists that the records took from, where gaps are half of a list; the
/// model must be idle.
void tidyAfter(ModelImpl& model, std::span<const UndoRecord> records) noexcept;
/// Takes a contained element out of its owner, if it has one. Within a transaction only.
void detach(ElementImpl& child);
/// Destroys `element`, with its contents or leaving them as roots; one transaction. Unless
/// `evenIfReferenced`, raises CannotDestroyReferencedElement when anything else refers to one of
/// the doomed.
void destroy(ElementImpl& element, bool withContents, bool evenIfReferenced);

}  // namespace mf::zero::references
