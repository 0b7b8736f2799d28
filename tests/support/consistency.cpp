#include "support/consistency.h"

#include <algorithm>
#include <unordered_set>

#include "framework/links.h"
#include "framework/model_impl.h"
#include "framework/raw.h"

namespace mf::zero::testing {

namespace {

class Checker {
 public:
  explicit Checker(ModelImpl& model) : model_(model) {}

  std::string run() {
    std::size_t alive = 0;
    model_.pool().forEach([&](ElementImpl& element) {
      if (element.isDestroyed()) return;
      ++alive;
      checkElement(element);
    });
    if (alive != model_.size()) found_ += "the model counts its elements wrongly\n";
    return found_;
  }

 private:
  void expect(bool holds, const ElementImpl& element, const PropertyInfo* property,
              const char* what) {
    if (holds) return;
    found_ += std::string(element.classInfo().qualifiedName) + ' ' + element.Uuid().toString();
    if (property) found_ += '.' + toUtf8(property->name);
    found_ += std::string(": ") + what + '\n';
  }

  void checkElement(ElementImpl& element) {
    expect(model_.findElement(element.Uuid()).impl() == &element, element, nullptr,
           "not found by its identity");
    checkOwner(element);
    checkReferrers(element);
    forEachProperty(element.classInfo(), [&](const PropertyInfo& property) {
      if (property.isReferenceList()) {
        checkList(element, property);
      } else if (property.kind == ValueKind::kElement) {
        checkSlot(element, property, 0, Raw::at<ReferenceSlot>(element, property));
      } else if (property.has(kMany) && !property.has(kOrdered)) {
        checkSorted(element, property);
      }
    });
  }

  void checkOwner(ElementImpl& element) {
    if (Raw::owner(element) == kNoElement) return;
    const ElementImpl& owner = *model_.pool().at(Raw::owner(element));
    expect(!owner.isDestroyed(), element, nullptr, "its owner is destroyed");
    const PropertyInfo* property = owner.classInfo().findByIndex(Raw::ownerProperty(element));
    expect(property && property->has(kContainment), element, nullptr, "nothing contains it");
    if (!property || !property->has(kContainment)) return;
    const std::uint32_t position = property->has(kMany) ? Raw::position(element) : 0;
    const bool inRange =
        !property->has(kMany) || position < Raw::at<ReferenceList>(owner, *property).size;
    expect(inRange && links::slotAt(owner, *property, position).target == element.id(), element,
           property, "its owner holds something else in its place");
  }

  void checkReferrers(ElementImpl& element) {
    const std::span<const Incoming> referrers = links::referrersOf(element);
    const bool isList = Raw::referrers(element).list && !Raw::hasOnlyReferrer(element);
    expect(!isList || referrers.size() <= Raw::referrers(element).list->capacity, element, nullptr,
           "more referrers than room for them");
    for (std::uint32_t i = 0; i < referrers.size(); ++i) {
      const Incoming& entry = referrers[i];
      const ElementImpl& owner = *model_.pool().at(entry.owner);
      expect(!owner.isDestroyed(), element, nullptr, "a destroyed element refers to it");
      const PropertyInfo& property = links::propertyOf(owner, entry.link);
      const ReferenceSlot& slot = links::slotAt(owner, property, links::positionOf(entry.link));
      expect(slot.target == element.id() && slot.back == i, owner, &property,
             "a referrer that does not refer back");
    }
  }

  void checkList(const ElementImpl& element, const PropertyInfo& property) {
    const ReferenceList& list = Raw::at<ReferenceList>(element, property);
    std::uint32_t holes = 0;
    std::unordered_set<ElementId> seen;
    for (std::uint32_t i = 0; i < list.size; ++i) {
      const ReferenceSlot& slot = list.slots[i];
      holes += slot.target == kNoElement;
      checkSlot(element, property, i, slot);
      expect(slot.target == kNoElement || seen.insert(slot.target).second, element, &property,
             "an element is held twice");
    }
    expect(holes == list.holes, element, &property, "holes are counted wrongly");
  }

  void checkSlot(const ElementImpl& element, const PropertyInfo& property, std::uint32_t position,
                 const ReferenceSlot& slot) {
    if (slot.target == kNoElement) return;
    ElementImpl& target = *model_.pool().at(slot.target);
    expect(!target.isDestroyed(), element, &property, "holds a destroyed element");
    expect(target.classInfo().isA(*property.target), element, &property,
           "holds an element of another class");
    if (property.has(kContainment)) {
      const bool owned = Raw::owner(target) == element.id() &&
                         Raw::ownerProperty(target) == property.index &&
                         (!property.has(kMany) || Raw::position(target) == position);
      expect(owned, element, &property, "the contained element does not know its place");
      return;
    }
    const std::span<const Incoming> referrers = links::referrersOf(target);
    const bool noted = slot.back < referrers.size() && referrers[slot.back].owner == element.id() &&
                       referrers[slot.back].link == links::link(property, position);
    expect(noted, element, &property, "not noted at what it refers to");
    if (!property.opposite || element.isProxy() || target.isProxy()) return;
    expect(holds(target, *property.opposite, element.id()), element, &property,
           "the opposite end does not refer back");
  }

  static bool holds(const ElementImpl& element, const PropertyInfo& property, ElementId target) {
    if (!property.has(kMany)) return Raw::at<ReferenceSlot>(element, property).target == target;
    const ReferenceList& list = Raw::at<ReferenceList>(element, property);
    return std::any_of(list.slots, list.slots + list.size,
                       [&](const ReferenceSlot& slot) { return slot.target == target; });
  }

  void checkSorted(const ElementImpl& element, const PropertyInfo& property) {
    if (element.isProxy()) return;
    const Value all = element.get(property);
    const auto unordered = [](const Value& a, const Value& b) {
      if (a.meta().kind() == ValueKind::kReal)
        return !(a.getValue<double>() < b.getValue<double>());
      if (a.meta().kind() != ValueKind::kString) {
        return static_cast<std::int64_t>(a.bits()) >= static_cast<std::int64_t>(b.bits());
      }
      return a.getValue<std::u16string>() >= b.getValue<std::u16string>();
    };
    const auto items = all.items();
    const auto wrong = std::adjacent_find(items.begin(), items.end(), unordered);
    const bool endsInNaN = wrong != items.end() && wrong + 2 == items.end() &&
                           items.back() != items.back() && *wrong == *wrong;
    expect(wrong == items.end() || endsInNaN, element, &property, "a set is not sorted");
  }

  ModelImpl& model_;
  std::string found_;
};

}  // namespace

std::string inconsistencies(const Model& model) { return Checker(*model.impl()).run(); }

}  // namespace mf::zero::testing
