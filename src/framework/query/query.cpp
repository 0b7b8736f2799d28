#include "framework/query/query.h"

#include <algorithm>

#include "framework/messages.h"
#include "framework/model_impl.h"
#include "framework/query/detail/condition.h"
#include "framework/raw.h"
#include "framework/text.h"

namespace mf::zero::query {

AbstractQuery::AbstractQuery(Model model) : model_(std::move(model)) {}
AbstractQuery::~AbstractQuery() = default;

void AbstractQuery::restrictTo(const ClassInfo& info, SearchClassMatchMode mode) {
  classes_.push_back({&info, mode});
}

void AbstractQuery::where(const PropertyInfo& property, Comparison comparison,
                          const Value& operand) {
  const bool known = std::ranges::any_of(
      classes_, [&](const ClassFilter& filter) { return filter.info->isA(*property.owner); });
  if (!known) {
    const ClassInfo& looked = classes_.empty() ? ModelElement::classInfo() : *classes_[0].info;
    reportException(mf0::messages::NoSuchProperty(looked.qualifiedName, toUtf8(property.name)));
  }
  conditions_.emplace_back(*model_.operator->(), property, comparison, operand);
}

bool AbstractQuery::admits(const ClassInfo& info) const {
  return std::ranges::all_of(classes_,
                             [&](const ClassFilter& filter) { return filter.admits(info); });
}

bool AbstractQuery::meets(const ElementImpl& element) const {
  const std::byte* storage = Raw::storage(element);
  for (const Condition& condition : conditions_) {
    if (!condition.holds(element, storage)) return false;
  }
  return true;
}

Query::Query(Model model) : AbstractQuery(std::move(model)) {
  if (!this->model()) reportException(mf0::messages::CannotUseEmptyHandle());
}

std::vector<const ClassInfo*> Query::classes(const ClassInfo& as) const {
  for (const ClassFilter& filter : classes_) {
    if (!as.isA(*filter.info) && !filter.info->isA(as)) {
      reportException(mf0::messages::CannotCastIncompatibleTypes(as.qualifiedName));
    }
  }
  std::vector<const ClassInfo*> admitted;
  model_->pool().forEachClass([&](const ClassInfo& info) {
    if (admits(info) && info.isA(as)) admitted.push_back(&info);
  });
  return admitted;
}

template <class Take>
std::size_t Query::scan(const ClassInfo& as, std::size_t limit, Take take) const {
  if (!model_->isOpen()) reportException(mf0::messages::CannotUseClosedModel());
  for (;;) {
    std::size_t taken = 0;
    std::vector<ModelElement> proxies;
    const auto visit = [&](ElementImpl& element) {
      if (element.isDestroyed()) return false;
      if (element.isProxy() && !conditions_.empty()) {
        proxies.emplace_back(&element);
      } else if (meets(element)) {
        take(element, taken++);
      }
      return taken == limit;
    };
    for (const ClassInfo* info : classes(as)) {
      if (model_->pool().anyOf(*info, visit)) break;
    }
    if (proxies.empty()) return taken;
    // Loading makes elements, so it waits until nobody goes through them.
    for (const ModelElement& proxy : proxies) {
      if (proxy.isValid()) proxy->resolve();
    }
  }
}

std::vector<ElementImpl*> Query::find(const ClassInfo& as, std::size_t limit) const {
  std::vector<ElementImpl*> found;
  found.reserve(std::min(limit, model_->size()));
  const auto take = [&](ElementImpl& element, std::size_t place) {
    found.resize(place);  // what a scan found that begins again after loading
    found.push_back(&element);
  };
  found.resize(scan(as, limit, take));
  return found;
}

std::size_t Query::count() const {
  return scan(ModelElement::classInfo(), kAll, [](ElementImpl&, std::size_t) {});
}

}  // namespace mf::zero::query
