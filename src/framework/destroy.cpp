// Destroying elements with all they contain, however deep.
#include <algorithm>
#include <utility>
#include <vector>

#include "framework/links.h"
#include "framework/model_impl.h"
#include "framework/raw.h"
#include "framework/references.h"

namespace mf::zero::references {

namespace {

template <class Visit>
void forEachContained(const ElementImpl& element, Visit&& visit) {
  for (const PropertyInfo* property : Raw::layout(element).containments()) {
    const std::uint32_t count =
        property->has(kMany) ? Raw::at<ReferenceList>(element, *property).size : 1;
    for (std::uint32_t i = 0; i < count; ++i) {
      const ElementId child = links::slotAt(element, *property, i).target;
      if (child != kNoElement) visit(*Chunk::find(element, child));
    }
  }
}

/// The element and everything it contains, owners before contents; no recursion.
std::vector<ElementImpl*> withAllContents(ElementImpl& element) {
  std::vector<ElementImpl*> all{&element};
  for (std::size_t i = 0; i < all.size(); ++i) {
    forEachContained(*all[i], [&](ElementImpl& child) { all.push_back(&child); });
  }
  return all;
}

/// Takes one element out of the web of references; its slots and values stay for undoing.
void retire(ModelImpl& model, ElementImpl& element) noexcept {
  IncomingList* referrers = std::exchange(Raw::incoming(element), nullptr);
  model.log().records.push_back({.kind = UndoKind::kDestroy,  // room was made
                                 .element = element.id(),
                                 .old = reinterpret_cast<std::uintptr_t>(referrers)});
  for (std::uint32_t i = 0; referrers && i < referrers->size; ++i) {
    const Incoming& entry = referrers->entries()[i];
    const ElementImpl& owner = *model.pool().at(entry.owner);
    const PropertyInfo& property = links::propertyOf(owner, entry.link);
    const std::uint32_t position = links::positionOf(entry.link);
    links::slotAt(owner, property, position).target = kNoElement;
    if (!property.has(kMany)) continue;
    ++Raw::at<ReferenceList>(owner, property).holes;
    if (!model.lists().empty()) {
      model.lists().removed(ListIndexes::key(entry.owner, property.index), position);
    }
  }
  links::withdraw(element);
  model.identities().remove(element);
  model.elementGone();
  Raw::setDestroyed(element, true);
  Raw::setInLog(element, true);
}

}  // namespace

void destroy(ElementImpl& element, bool withContents) {
  ModelImpl& model = element.model();
  model.checkWritable();
  ModelImpl::Scope scope(model);
  detach(element);
  if (!withContents) {
    std::vector<ElementImpl*> contents;
    forEachContained(element, [&](ElementImpl& child) { contents.push_back(&child); });
    for (ElementImpl* child : contents) detach(*child);
  }
  const std::vector<ElementImpl*> doomed = withAllContents(element);
  std::vector<UndoRecord>& records = model.log().records;
  if (records.capacity() < records.size() + doomed.size()) {
    records.reserve(std::max(records.capacity() * 2, records.size() + doomed.size()));
  }
  for (ElementImpl* one : doomed) retire(model, *one);
  scope.done();
}

}  // namespace mf::zero::references
