// Random changes of a garden in random nested transactions, each step held against
// plain pictures of the model: what fails must change nothing, a rollback must lead
// back to where its transaction began, and what observers are told must lead from the
// picture before a commit to the one after it. With proxies, which come and go without
// being told, only the bookkeeping and what a rollback leads back to are looked at. Driven
// by numbers from anywhere.
#pragma once

#include <algorithm>
#include <functional>
#include <limits>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "framework/builder.h"
#include "framework/change_set.h"
#include "framework/collection.h"
#include "framework/garden.h"
#include "framework/meta/meta.h"
#include "framework/mi/host_boundary.h"
#include "framework/model_impl.h"
#include "framework/primitive_collection.h"
#include "framework/raw.h"
#include "host/array.h"
#include "support/consistency.h"
#include "support/picture.h"

namespace mf::zero::testing {

/// Brings an element back as it was when it was remembered.
class Memory final : public ElementLoader {
 public:
  void remember(const ElementImpl& element) {
    std::vector<Item>& items = known_[element.Uuid()];
    items.clear();
    forEachProperty(element.classInfo(), [&](const PropertyInfo& property) {
      const Value value = element.get(property);
      if (!property.has(kMany)) return note(items, property, value);
      for (const Value& item : value.items()) note(items, property, item);
    });
  }
  bool load(const uuid& identity, BuilderValues& values) override {
    for (const Item& item : known_[identity]) {
      Value value = item.value;
      if (item.target) value = values.model()->createProxy(*item.target, item.identity);
      if (item.property->has(kMany)) {
        values.add(*item.property, value);
      } else {
        values.set(*item.property, value);
      }
    }
    return true;
  }

 private:
  struct Item {
    const PropertyInfo* property;
    Value value;  ///< for an element, its class and identity instead
    const ClassInfo* target;
    uuid identity;
  };
  static void note(std::vector<Item>& items, const PropertyInfo& property, const Value& value) {
    if (property.kind != ValueKind::kElement) {
      items.push_back({&property, value, nullptr, {}});
    } else if (const auto element = value.getValue<ModelElement>()) {
      items.push_back({&property, {}, &element->classInfo(), element.Uuid()});
    }
  }
  std::map<uuid, std::vector<Item>> known_;
};

class RandomChanges {
 public:
  enum class Proxies { kNone, kSome };

  /// `choose(n)` answers a number below n.
  RandomChanges(Proxies proxies, std::function<std::uint32_t(std::uint32_t)> choose)
      : proxies_(proxies),
        choose_(std::move(choose)),
        subscription_(model_->observe([this](const ChangeSet& changes) {
          const std::string wrong = apply(changes, mirror_);
          if (proxies_ == Proxies::kNone) complain("observer", wrong);
        })) {
    mi::attachToHost();
    model_->setLoader(memory_);
  }

  /// What did not hold, empty while all is well.
  const std::string& wrong() const { return wrong_; }
  int refused() const { return refused_; }

  void step() {
    const Picture before = pictureOf(model_);
    bool failed = false;
    try {
      change();
    } catch (const foundation::core::except::AbstractException&) {
      failed = true;
      ++refused_;
    }
    const Picture now = pictureOf(model_);
    if (failed) compare("refused", before, now);
    if (open_.empty()) compare("told", mirror_, now);
    complain("bookkeeping", inconsistencies(model_));
  }

  void finish() {
    while (!open_.empty()) commit();
  }

 private:
  struct Open {
    Transaction transaction;
    Picture before;
  };

  void complain(const char* where, const std::string& what) {
    if (!what.empty()) wrong_ += std::string(where) + ": " + what;
  }

  void compare(const char* where, const Picture& expected, const Picture& actual) {
    if (proxies_ == Proxies::kNone) complain(where, differences(expected, actual));
  }

  void change() {
    if (model_->size() < 15 && choose_(4) == 0) return create();
    switch (choose_(24)) {
      case 0: return begin();
      case 1: return open_.empty() ? begin() : commit();
      case 2: return open_.empty() ? begin() : rollback();
      case 3:
      case 4: return create();
      case 5: return destroy();
      case 6: return letGo();
      case 7: return askOldValues();
      case 8: return keepHandle();
      case 9:
      case 10: return proxies_ == Proxies::kSome ? forget() : changeProperty();
      default: return changeProperty();
    }
  }

  // Transactions

  void begin() {
    if (open_.size() < 4) open_.push_back({model_->beginTransaction(), pictureOf(model_)});
  }
  void commit() {
    Transaction transaction = std::move(open_.back().transaction);
    open_.pop_back();
    transaction.commit();
  }
  /// By name, by destruction, or from the middle with all inner ones.
  void rollback() {
    const auto first = std::next(open_.begin(), choose_(static_cast<std::uint32_t>(open_.size())));
    const Picture before = first->before;
    if (std::next(first) == open_.end() && choose_(2)) first->transaction.rollback();
    open_.erase(first, open_.end());
    complain("rolled back", differences(before, pictureOf(model_)));
  }

  // Elements

  ModelElement any() {
    const auto all = model_->elements(ModelElement::classInfo());
    return all.empty() ? ModelElement() : all[choose_(static_cast<std::uint32_t>(all.size()))];
  }
  const ClassInfo& anyClass() {
    const ClassInfo* const classes[] = {
        &Bed::classInfo(),      &RaisedBed::classInfo(), &Plant::classInfo(), &Bed::classInfo(),
        &Gardener::classInfo(), &Plant::classInfo(),     &Tool::classInfo(),  &Record::classInfo()};
    return *classes[choose_(8)];
  }

  void create() {
    if (model_->size() > 40) return destroy();
    if (choose_(2)) {
      createElement(anyClass(), model_, {});
      return;
    }
    if (choose_(2)) return createSeries();
    Bed::Builder builder(model_);
    builder.setLabel(u"built").setWidth(2.0).addPlants(Plant::Builder().setLabel(u"built"));
    builder.addBeds(Bed::Builder().addBeds(RaisedBed::Builder().setHeight(1.0)));
    if (const Gardener gardener = any().as<Gardener>()) builder.setGardener(gardener);
    if (const Spot spot = any().as<Spot>()) builder.addShadows(spot).addShadows(spot);  // twice
    builder.create();
  }
  void createSeries() {
    const ClassInfo& info = anyClass();
    std::vector<const PropertyInfo*> lists;
    forEachProperty(info, [&](const PropertyInfo& property) {
      if (property.isReferenceList()) lists.push_back(&property);
    });
    if (lists.empty()) return;
    std::vector<ElementImpl*> targets;
    for (std::uint32_t i = choose_(4); i > 0; --i) targets.push_back(any().impl());
    const auto which = choose_(static_cast<std::uint32_t>(lists.size()));
    zero::ElementSeries(info, model_, *lists[which]).create(targets);
  }
  void destroy() { any()->doDestroy(choose_(4) != 0, choose_(4) != 0); }
  void letGo() {
    const ModelElement element = any();
    switch (choose_(3)) {
      case 0: return element->disassociateIncoming();
      case 1: return element->basicDisassociateAll();
      default: element->revertUnchanged();
    }
  }
  void keepHandle() {
    if (kept_.size() > 8) kept_.clear();
    kept_.push_back(any());
  }

  void forget() {
    const ModelElement element = any();
    if (!element->isProxy()) memory_->remember(*element.impl());
    choose_(2) ? element->convertToProxy() : element->convertReferencesToProxies();
  }

  /// Outside the outermost transaction the mirror shows the values before it.
  void askOldValues() {
    if (open_.empty() || proxies_ == Proxies::kSome) return;
    const ModelElement element = any();
    const auto known = mirror_.find(element.Uuid().toString());
    if (known == mirror_.end()) return;
    forEachProperty(element->classInfo(), [&](const PropertyInfo& property) {
      const std::string old = pictureOf(element->getOldValue(meta::propertyOf(property)));
      const std::string& expected = known->second.at(toUtf8(property.name));
      if (old != expected) complain("old value", expected + " became " + old + '\n');
    });
  }

  // Values

  Value anyValue(const PropertyInfo& property) {
    if (choose_(16) == 0) return choose_(2) ? Value() : Value(u"a text");
    static constexpr double kNumbers[] = {0, 1, -2.5, 1e300,
                                          std::numeric_limits<double>::quiet_NaN()};
    switch (property.kind) {
      case ValueKind::kBoolean: return choose_(2) != 0;
      case ValueKind::kInteger8: return static_cast<std::int8_t>(choose_(5));
      case ValueKind::kInteger: return static_cast<std::int32_t>(choose_(5)) - 2;
      case ValueKind::kReal: return kNumbers[choose_(5)];
      case ValueKind::kString: return Value(std::u16string(choose_(4) * 20, u'x'));
      case ValueKind::kEnumeration:
        return Value(property.enumeration, static_cast<std::int32_t>(choose_(4)));
      case ValueKind::kArray: return Value::ofArray(vexal::createDouble(choose_(4)).get());
      case ValueKind::kElement: return Value(any());
    }
    return {};
  }
  std::vector<Value> anyValues(const PropertyInfo& property) {
    std::vector<Value> values(choose_(6));
    std::generate(values.begin(), values.end(), [&] { return anyValue(property); });
    return values;
  }
  std::size_t anyPlace(std::size_t count) { return choose_(static_cast<std::uint32_t>(count) + 2); }

  void changeProperty() {
    const ModelElement element = any();
    const int count = element->classInfo().indexCount;
    const auto index = static_cast<int>(choose_(static_cast<std::uint32_t>(count))) + 1;
    const PropertyInfo& property = *element->classInfo().findByIndex(index);
    if (!property.has(kMany) || choose_(8) == 0) {
      element->set(property,
                   property.has(kMany) ? Value::ofList(anyValues(property)) : anyValue(property));
    } else if (property.isReferenceList()) {
      changeList(ReferenceCollection(element.impl(), property));
    } else {
      changeValues(AbstractPrimitiveCollection(element.impl(), property));
    }
  }

  void changeList(ReferenceCollection list) {
    const std::size_t size = list.size();
    switch (choose_(10)) {
      case 0: return list.insert(anyPlace(size), any());
      case 1: return list.removeAt(anyPlace(size));
      case 2: return list.remove(any());
      case 3: return list.move(anyPlace(size), anyPlace(size));
      case 4: return choose_(4) ? list.add(any()) : list.clear();
      case 5: {
        std::vector<ModelElement> some;
        for (std::uint32_t i = choose_(5); i > 0; --i) some.push_back(any());
        return choose_(2) ? list.append(some) : list.assign(some);
      }
      default: return list.add(any());
    }
  }

  void changeValues(AbstractPrimitiveCollection values) {
    const PropertyInfo& property = values.property();
    const std::size_t size = values.size();
    switch (choose_(8)) {
      case 0: return values.insertValue(anyPlace(size), anyValue(property));
      case 1: return values.removeAt(anyPlace(size));
      case 2: return values.setValueAt(anyPlace(size), anyValue(property));
      case 3: return values.assignValues(anyValues(property));
      case 4: return choose_(4) ? values.addValue(anyValue(property)) : values.clear();
      default: return values.addValue(anyValue(property));
    }
  }

  const Proxies proxies_;
  std::function<std::uint32_t(std::uint32_t)> choose_;
  std::shared_ptr<Memory> memory_ = std::make_shared<Memory>();
  Model model_ = Model::create();
  Picture mirror_;
  std::string wrong_;
  int refused_ = 0;
  Subscription subscription_;
  std::vector<ModelElement> kept_;
  std::list<Open> open_;
};

}  // namespace mf::zero::testing
