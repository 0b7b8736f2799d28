#include "framework/primitive_collection.h"

#include <algorithm>

#include "framework/collection_access.h"
#include "framework/model_impl.h"
#include "framework/values.h"

namespace mf::zero {

namespace {

/// An item on its way into a list: checked, and owned until it is in.
class Item {
 public:
  Item(const PropertyInfo& property, const Value& value) {
    values::checkSingle(property, value);
    if (values::isText(property)) {
      text_ = Text(value.getValue<std::u16string>());
    } else {
      bits_ = value.bits();
    }
  }
  std::uint64_t release() { return text_.empty() ? bits_ : text_.detach(); }

 private:
  Text text_;
  std::uint64_t bits_ = 0;
};

void insertOne(ElementImpl& owner, const PropertyInfo& property, std::size_t index,
               const Value& value) {
  ModelImpl& model = owner.model();
  Item item(property, value);
  PrimitiveValues& items = values::reserveItem(property, Raw::at<PrimitiveList>(owner, property));
  if (model.isRecording() && !model.log().coversNew(owner.id(), model.mark())) {
    model.log().noteInsert(owner.id(), property.index, static_cast<std::uint32_t>(index),
                           UndoKind::kValueInsert, model.mark());
  }
  values::insertRaw(property, items, index, item.release());
}

void removeOne(ElementImpl& owner, const PropertyInfo& property, std::size_t index) {
  ModelImpl& model = owner.model();
  const bool recording = model.isRecording();
  if (recording) {
    model.log().add({.kind = UndoKind::kValueRemove,
                     .property = property.index,
                     .element = owner.id(),
                     .position = static_cast<std::uint32_t>(index)});
  }
  PrimitiveValues& items = *Raw::at<PrimitiveList>(owner, property).values;
  const std::uint64_t raw = values::removeRaw(property, items, index);
  if (recording) {
    model.log().records.back().old = raw;
  } else if (values::isText(property)) {
    Text::adopt(raw);
  }
}

/// An empty value stands for the property's zero.
Value filled(const PropertyInfo& property, const Value& value) {
  values::checkSingle(property, value);
  if (!value.isEmpty()) return value;
  return values::isText(property) ? Value(u"") : values::fromBits(property, 0);
}

}  // namespace

std::size_t AbstractPrimitiveCollection::size() const {
  return values::countOf(*property_, readable<PrimitiveList>(owner_, *property_));
}

Value AbstractPrimitiveCollection::valueAt(std::size_t index) const {
  const PrimitiveList& list = readable<PrimitiveList>(owner_, *property_);
  const std::size_t count = values::countOf(*property_, list);
  if (index >= count) raiseOutOfRange(index, count);
  return values::itemAt(*property_, list, index);
}

std::optional<std::size_t> AbstractPrimitiveCollection::indexOfValue(const Value& value) const {
  const Value wanted = filled(*property_, value);
  const PrimitiveList& list = readable<PrimitiveList>(owner_, *property_);
  if (!isOrdered()) {
    const std::size_t place = values::lowerBound(*property_, list, wanted);
    return values::holdsAt(*property_, list, place, wanted) ? std::optional(place) : std::nullopt;
  }
  const std::size_t count = values::countOf(*property_, list);
  for (std::size_t i = 0; i < count; ++i) {
    if (values::same(values::itemAt(*property_, list, i), wanted)) return i;
  }
  return std::nullopt;
}

void AbstractPrimitiveCollection::addValue(const Value& value) {
  ElementImpl& owner = writable(owner_);
  const Value item = filled(*property_, value);
  const PrimitiveList& list = Raw::at<PrimitiveList>(owner, *property_);
  const std::size_t place =
      isOrdered() ? values::countOf(*property_, list) : values::lowerBound(*property_, list, item);
  if (!isOrdered() && values::holdsAt(*property_, list, place, item)) return;
  insertOne(owner, *property_, place, item);
  owner.model().publishIfOutermost();
}

void AbstractPrimitiveCollection::insertValue(std::size_t index, const Value& value) {
  ElementImpl& owner = writable(owner_);
  if (index > size()) raiseOutOfRange(index, size());
  if (!isOrdered()) return addValue(value);
  insertOne(owner, *property_, index, filled(*property_, value));
  owner.model().publishIfOutermost();
}

void AbstractPrimitiveCollection::setValueAt(std::size_t index, const Value& value) {
  ElementImpl& owner = writable(owner_);
  const Value item = filled(*property_, value);
  if (valueAt(index) == item) return;
  ModelImpl::Scope scope(owner.model());
  removeOne(owner, *property_, index);
  isOrdered() ? insertOne(owner, *property_, index, item) : addValue(item);
  scope.done();
}

void AbstractPrimitiveCollection::removeAt(std::size_t index) {
  ElementImpl& owner = writable(owner_);
  if (index >= size()) raiseOutOfRange(index, size());
  removeOne(owner, *property_, index);
  owner.model().publishIfOutermost();
}

void AbstractPrimitiveCollection::clear() { assignValues({}); }

void AbstractPrimitiveCollection::assignValues(std::span<const Value> items) {
  ElementImpl& owner = writable(owner_);
  std::vector<Value> wanted;
  wanted.reserve(items.size());
  for (const Value& item : items) wanted.push_back(filled(*property_, item));
  const Value present = values::read(owner, *property_);
  if (std::ranges::equal(present.items(), wanted)) return;
  ModelImpl::Scope scope(owner.model());
  for (std::size_t i = size(); i-- > 0;) removeOne(owner, *property_, i);
  for (const Value& item : wanted) addValue(item);
  scope.done();
}

std::span<const double> AbstractPrimitiveCollection::reals() const {
  const PrimitiveList& list = readable<PrimitiveList>(owner_, *property_);
  return list.values ? std::span<const double>(list.values->reals) : std::span<const double>();
}

}  // namespace mf::zero
