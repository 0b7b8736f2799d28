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

/// Records the destruction of the element and of everything it contains, owners before contents,
/// or nothing. The records are the queue, so that nothing recurses.
void recordAll(ModelImpl& model, const ElementImpl& element) {
  std::vector<UndoRecord>& records = model.log().records;
  const std::size_t first = records.size();
  const auto record = [&](ElementId id) {
    records.push_back({.kind = UndoKind::kDestroy, .element = id});
  };
  try {
    record(element.id());
    for (std::size_t i = first; i < records.size(); ++i) {
      forEachContained(*model.pool().at(records[i].element), record);
    }
  } catch (...) {
    records.erase(records.begin() + static_cast<std::ptrdiff_t>(first), records.end());
    throw;
  }
}

/// Takes one element out of the web of references; its slots and values stay for undoing.
void retire(ModelImpl& model, UndoRecord& record) noexcept {
  ElementImpl& element = *model.pool().at(record.element);
  IncomingList* referrers = std::exchange(Raw::incoming(element), nullptr);
  record.old = reinterpret_cast<std::uintptr_t>(referrers);
  for (std::uint32_t i = 0; referrers && i < referrers->size; ++i) {
    const Incoming& entry = referrers->entries()[i];
    const ElementImpl& owner = *model.pool().at(entry.owner);
    const PropertyInfo& property = links::propertyOf(owner, entry.link);
    const std::uint32_t position = links::positionOf(entry.link);
    links::slotAt(owner, property, position).target = kNoElement;
    if (property.has(kMany)) links::emptied(owner, property, position);
  }
  links::withdraw(element);
  model.identities().remove(element);
  model.elementGone();
  Raw::setDestroyed(element, true);
  Raw::setInLog(element, true);
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
  std::vector<UndoRecord>& records = model.log().records;
  const std::size_t first = records.size();
  recordAll(model, element);
  for (std::size_t i = first; i < records.size(); ++i) retire(model, records[i]);
  scope.done();
}

}  // namespace mf::zero::references
