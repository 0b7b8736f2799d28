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

/// Records a destruction; runs of neighbouring cells without referrers become one record.
void record(UndoLog& log, std::size_t first, const ElementImpl& element) {
  const ElementId id = element.id();
  const std::uint32_t stride = Chunk::of(&element)->cellUnits;
  const bool isAlone = Raw::incoming(const_cast<ElementImpl&>(element)) != nullptr;
  if (log.records.size() > first && !isAlone) {
    UndoRecord& last = log.records.back();
    if (last.old == 0 && last.position == stride && last.element + last.count * stride == id) {
      ++last.count;
      return;
    }
  }
  // Until it is retired, an odd `old` keeps the record from becoming a run.
  log.add({.kind = UndoKind::kDestroy,
           .element = id,
           .position = stride,
           .count = 1,
           .old = isAlone ? 1U : 0U});
}

/// Records the destruction of the element and of everything it contains, owners before contents,
/// or nothing. The records are the queue, so that nothing recurses.
void recordAll(ModelImpl& model, const ElementImpl& element) {
  UndoLog& log = model.log();
  const std::size_t first = log.records.size();
  try {
    record(log, first, element);
    for (std::size_t i = first; i < log.records.size(); ++i) {
      for (std::uint32_t k = 0; k < log.records[i].count; ++k) {
        const ElementId id = log.records[i].element + k * log.records[i].position;
        forEachContained(*model.pool().at(id),
                         [&](ElementId child) { record(log, first, *model.pool().at(child)); });
      }
    }
  } catch (...) {
    log.drop(first);
    throw;
  }
}

void emptyReferrers(ModelImpl& model, IncomingList& referrers) noexcept {
  for (std::uint32_t i = 0; i < referrers.size; ++i) {
    const Incoming& entry = referrers.entries()[i];
    const ElementImpl& owner = *model.pool().at(entry.owner);
    const PropertyInfo& property = links::propertyOf(owner, entry.link);
    const std::uint32_t position = links::positionOf(entry.link);
    links::slotAt(owner, property, position).target = kNoElement;
    if (property.has(kMany)) links::emptied(owner, property, position);
  }
}

/// Takes elements out of the web of references; their slots and values stay for undoing.
void retire(ModelImpl& model, UndoRecord& record) noexcept {
  record.old = 0;
  for (std::uint32_t k = 0; k < record.count; ++k) {
    ElementImpl& element = *model.pool().at(record.element + k * record.position);
    if (IncomingList* referrers = std::exchange(Raw::incoming(element), nullptr)) {
      record.old = reinterpret_cast<std::uintptr_t>(referrers);
      emptyReferrers(model, *referrers);
    }
    links::withdraw(element);
    model.identities().remove(element);
    Raw::setRetired(element, true);
  }
  model.elementsGone(record.count);
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
