#include "framework/builder.h"

#include <algorithm>

#include "framework/creation.h"
#include "framework/meta/meta.h"
#include "framework/model_impl.h"
#include "framework/raw.h"
#include "framework/references.h"
#include "framework/values.h"

namespace mf::zero {

// BuilderValues

BuilderValues::BuilderValues(const ClassInfo& info, Model model)
    : info_(&info), model_(std::move(model)) {}

BuilderValues::~BuilderValues() {
  // Children of children are taken out first, so that deep ones do not deepen the stack.
  std::vector<std::unique_ptr<Builder>> pending;
  const auto takeChildren = [&pending](BuilderValues& values) {
    for (Item& item : values.items_) {
      if (item.child) pending.push_back(std::move(item.child));
    }
  };
  takeChildren(*this);
  while (!pending.empty()) {
    const std::unique_ptr<Builder> last = std::move(pending.back());
    pending.pop_back();
    if (last->values_) takeChildren(*last->values_);
  }
}

void BuilderValues::copyFrom(const BuilderValues& source) {
  struct Pair {
    const BuilderValues* from;
    BuilderValues* to;
  };
  std::vector<Pair> pending{{&source, this}};
  while (!pending.empty()) {
    const Pair pair = pending.back();
    pending.pop_back();
    for (const Item& item : pair.from->items_) {
      std::unique_ptr<Builder> child;
      if (item.child) {
        const BuilderValues& values = item.child->values();
        child = std::make_unique<Builder>(values.classInfo(), values.model());
        pending.push_back({&values, &child->values()});
      }
      pair.to->items_.push_back({item.property, item.value, std::move(child)});
    }
  }
}

int BuilderValues::doSetOrAdd(const meta::Property& property, const Value& value) {
  const PropertyInfo& info = meta::infoOf(property);
  if (!info_->isA(*info.owner)) return -1;
  if (info.has(kReadOnly)) {
    reportException(mf0::messages::CannotSetReadOnlyProperty(
        std::string(info.owner->qualifiedName) + '.' + toUtf8(info.name)));
  }
  if (info.has(kMany)) {
    for (const Value& item : value.items()) values::checkSingle(info, item);
    for (const Value& item : value.items()) add(info, item);
    if (!value.isList() && !value.isEmpty()) add(info, value);
  } else {
    set(info, value);
  }
  return info.index;
}

int BuilderValues::doSetOrAdd(const meta::Property& property, std::unique_ptr<Builder> child) {
  const PropertyInfo& info = meta::infoOf(property);
  if (!info_->isA(*info.owner)) return -1;
  addChild(info, std::move(child));
  return info.index;
}

void BuilderValues::set(const PropertyInfo& property, Value value) {
  values::checkSingle(property, value);
  const auto known = std::find_if(items_.begin(), items_.end(),
                                  [&](const Item& item) { return item.property == &property; });
  if (known == items_.end()) {
    items_.push_back({&property, std::move(value), nullptr});
  } else {
    *known = {&property, std::move(value), nullptr};
  }
}

void BuilderValues::add(const PropertyInfo& property, Value value) {
  values::checkSingle(property, value);
  items_.push_back({&property, std::move(value), nullptr});
}

void BuilderValues::addChild(const PropertyInfo& property, std::unique_ptr<Builder> child) {
  if (!child) reportException(mf0::messages::CannotAddNonExistentObject());
  if (!property.has(kContainment)) {
    reportException(mf0::messages::CannotCastIncompatibleTypes(property.type));
  }
  const ClassInfo& info = child->values().classInfo();
  if (!info.isA(*property.target)) {
    reportException(mf0::messages::CannotAddIncompatibleTypes(
        toUtf16(property.target->qualifiedName), toUtf16(info.qualifiedName)));
  }
  if (!property.has(kMany)) clear(property);
  items_.push_back({&property, {}, std::move(child)});
}

void BuilderValues::clear(const PropertyInfo& property) {
  std::erase_if(items_, [&](const Item& item) { return item.property == &property; });
}

Value BuilderValues::get(const PropertyInfo& property) const {
  std::vector<Value> found;
  for (const Item& item : items_) {
    if (item.property != &property || item.child) continue;
    if (!property.has(kMany)) return item.value;
    found.push_back(item.value);
  }
  if (property.has(kMany)) return Value::ofList(std::move(found));
  return property.defaultValue ? values::parseDefault(property) : Value();
}

// Builder

Builder::Builder(const ClassInfo& info, Model model) {
  if (info.isAbstract) {
    reportException(mf0::messages::CannotCreateAbstractClass(info.qualifiedName));
  }
  values_ = info.native.newBuilder(info, std::move(model));
}

Builder::Builder(const Builder& other)
    : Builder(other.values().classInfo(), other.values().model()) {
  values_->copyFrom(other.values());
}

Builder::~Builder() = default;

BuilderValues& Builder::values() const {
  if (!values_) [[unlikely]]
    reportException(mf0::messages::CannotUseEmptyHandle());
  return *values_;
}

meta::Class Builder::getMetaClass() const { return values().getMetaClass(); }

ModelElement Builder::create(const uuid& identity) const {
  return Creation::create(values(), identity);
}

namespace {

ModelImpl& openImpl(const Model& model) {
  ModelImpl* const impl = model.impl();
  if (!impl || !impl->isOpen()) reportException(mf0::messages::CannotCreateWithoutModel());
  return *impl;
}

}  // namespace

ModelElement createElement(const ClassInfo& info, const Model& model, const uuid& identity) {
  ModelImpl& impl = openImpl(model);
  // A handle before anybody is told: an observer may destroy what was just made.
  ModelElement element(impl.createElement(info, identity));
  impl.publishIfOutermost();
  return element;
}

ElementSeries::ElementSeries(const ClassInfo& info, const Model& model, const PropertyInfo& list)
    : model_(openImpl(model)), info_(info), list_(list) {
  if (!info.isA(*list.owner)) {
    reportException(mf0::messages::NoSuchProperty(info.qualifiedName, toUtf8(list.name)));
  }
  if (!list.isReferenceList()) {
    reportException(mf0::messages::CannotCastIncompatibleTypes(list.type));
  }
}

}  // namespace mf::zero
