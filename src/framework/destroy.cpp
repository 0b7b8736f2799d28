// Destroying elements with all they contain, however deep.
#include <cstddef>
#include <utility>
#include <vector>

#include "framework/links.h"
#include "framework/messages.h"
#include "framework/model_impl.h"
#include "framework/raw.h"
#include "framework/references.h"

namespace mf::zero::references {

namespace {

/// Calls `visit(ElementId)` for what the element contains.
template <class Visit>
void forEachContained(const ElementImpl& element, Visit&& visit) {
  for (const PropertyInfo* property : Raw::layout(element).containments()) {
    const std::uint32_t count =
        property->has(kMany) ? Raw::at<ReferenceList>(element, *property).size : 1;
    for (std::uint32_t i = 0; i < count; ++i) {
      const ElementId child = links::slotAt(element, *property, i).target;
      if (child != kNoElement) visit(child);
    }
  }
}

void emptyReferrers(ModelImpl& model, std::span<const Incoming> referrers) noexcept {
  for (const Incoming& entry : referrers) {
    const ElementImpl& owner = *model.pool().at(entry.owner);
    const PropertyInfo& property = links::propertyOf(owner, entry.link);
    const std::uint32_t position = links::positionOf(entry.link);
    links::slotAt(owner, property, position).target = kNoElement;
    if (property.has(kMany)) links::emptied(owner, property, position);
  }
}

/// Whether the newest record, if it is not older than `first`, is of cells without referrers that
/// end where this one begins.
bool endsAt(const UndoLog& log, std::size_t first, ElementId id, std::uint32_t stride) {
  if (log.records.size() == first) return false;
  const UndoRecord& last = log.records.back();
  return last.old == 0 && last.position == stride && last.element + last.count * stride == id;
}

/// Takes an element out of the web of references; its slots and values stay for undoing.
/// Neighbouring cells without referrers become one record.
void retire(ModelImpl& model, std::size_t first, ElementId id) {
  ElementImpl& element = *model.pool().at(id);
  const Chunk& chunk = *Chunk::of(&element);
  UndoLog& log = model.log();
  if (!Raw::referrers(element).list && endsAt(log, first, id, chunk.cellUnits)) {
    ++log.records.back().count;
  } else {
    log.add({.kind = UndoKind::kDestroy, .element = id, .position = chunk.cellUnits, .count = 1});
    const links::KeptReferrers referrers = links::takeReferrers(element, log.records.back());
    emptyReferrers(model, referrers.entries());
  }
  if (!chunk.layout->references().empty()) links::withdraw(element);
  model.identities().remove(element);
  Raw::setRetired(element, true);
  model.elementsGone(1);
}

/// Retires the element and everything it contains, owners before contents. The records are the
/// queue, so that nothing recurses; the slots that say what is contained stay.
void retireAll(ModelImpl& model, const ElementImpl& element) {
  const UndoRecords& records = model.log().records;
  const std::size_t first = records.size();
  retire(model, first, element.id());
  for (std::size_t i = first; i < records.size(); ++i) {
    const ElementId run = records[i].element;
    if (Raw::layout(*model.pool().at(run)).containments().empty()) continue;
    for (std::uint32_t k = 0; k < records[i].count; ++k) {
      forEachContained(*model.pool().at(run + k * records[i].position),
                       [&](ElementId child) { retire(model, first, child); });
    }
  }
}

void checkUnreferenced(const ElementImpl& element, bool withContents) {
  std::vector<ElementId> doomed{element.id()};
  for (std::size_t i = 0; i < doomed.size(); ++i) {
    const ElementImpl& one = *Chunk::find(element, doomed[i]);
    if (isReferencedFromOutside(one, withContents ? element : one)) {
      reportException(mf0::messages::CannotDestroyReferencedElement(one.classInfo().qualifiedName));
    }
    if (withContents) forEachContained(one, [&](ElementId child) { doomed.push_back(child); });
  }
}

}  // namespace

void destroy(ElementImpl& element, bool withContents, bool evenIfReferenced) {
  ModelImpl& model = element.model();
  model.checkWritable();
  if (!evenIfReferenced) checkUnreferenced(element, withContents);
  ModelImpl::Scope scope(model);
  detach(element);
  if (!withContents) {
    std::vector<ElementId> contents;
    forEachContained(element, [&](ElementId child) { contents.push_back(child); });
    for (const ElementId child : contents) detach(*model.pool().at(child));
  }
  retireAll(model, element);
  scope.done();
}

}  // namespace mf::zero::references
