// Queries: the elements of a model that are of a class and meet the conditions put on
// their properties. Conditions are tested where the values lie, so that going through
// a million elements costs little more than reading them.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "framework/element.h"
#include "framework/export.h"
#include "framework/meta/meta.h"
#include "framework/model.h"
#include "framework/query/constraints.h"

namespace mf::zero::query {

class Condition;

/// What a query asks: the classes and conditions that were collected so far.
class MF0_API AbstractQuery {
 public:
  AbstractQuery(const AbstractQuery&) = delete;
  AbstractQuery& operator=(const AbstractQuery&) = delete;

  const Model& model() const { return model_; }
  /// Restricts the query to elements of that class.
  void restrictTo(const ClassInfo& info, SearchClassMatchMode mode);
  /// Adds a condition; the typed constraints forward here. Raises, adding nothing:
  ///   NoSuchProperty               a property that the query's classes do not have; so for any
  ///                                property before `restrictTo`,
  ///   CannotCastIncompatibleTypes  an operand of another type,
  ///   InvalidValue                 a comparison that the property's type does not admit.
  void where(const PropertyInfo& property, Comparison comparison, const Value& operand = {});

 protected:
  explicit AbstractQuery(Model model);
  ~AbstractQuery();

  struct ClassFilter {
    const ClassInfo* info;
    SearchClassMatchMode mode;
    bool admits(const ClassInfo& other) const {
      return mode == SearchClassMatchMode::kExactClass ? &other == info : other.isA(*info);
    }
  };
  bool admits(const ClassInfo& info) const;
  bool meets(const ElementImpl& element) const;

  Model model_;
  std::vector<ClassFilter> classes_;
  std::vector<Condition> conditions_;
};

/// A query on one model. It can be asked any number of times and answers by the model's present
/// state. Destroyed elements never match. A condition looks at the element, so a query that has
/// conditions loads the proxies that it comes to (and raises CannotResolveProxy when one cannot be
/// loaded, with those before it loaded); one without conditions answers proxies as they are.
///
/// The order is class by class, and creation order within a class, except that an element may
/// stand in the place of one that was destroyed before it was made. The handle class X narrows
/// the query to elements of X and its subclasses; an X that has nothing in common with the classes
/// that the query is restricted to raises CannotCastIncompatibleTypes. A closed model raises
/// CannotUseClosedModel.
class MF0_API Query : public AbstractQuery {
 public:
  /// Raises CannotUseEmptyHandle for an empty model.
  explicit Query(Model model);

  /// The typed constraints of class X, to be narrowed by.
  template <class X>
  typename X::Constrainables constrain(
      SearchClassMatchMode mode = SearchClassMatchMode::kWithSubclasses) {
    return typename X::Constrainables(*this, X::metaClass(), mode);
  }

  /// All elements that match.
  template <class X = ModelElement>
  std::vector<X> select() const {
    std::vector<X> selected;
    const std::vector<ElementImpl*> found = find(X::classInfo(), kAll);
    selected.reserve(found.size());
    for (ElementImpl* element : found) selected.emplace_back(cast<X>(element));
    return selected;
  }
  /// The first element that matches; an empty handle when none does.
  template <class X = ModelElement>
  X first() const {
    const std::vector<ElementImpl*> found = find(X::classInfo(), 1);
    return found.empty() ? X() : X(cast<X>(found.front()));
  }
  /// Calls `visit(const X&)` for every element that matched when the call began and still exists
  /// when its turn comes; `visit` may change the model.
  template <class X = ModelElement, class Visit>
  void forEach(Visit&& visit) const {
    for (const X& element : select<X>()) {
      if (element.isValid()) visit(element);
    }
  }
  /// How many elements match.
  std::size_t count() const;

 private:
  static constexpr std::size_t kAll = static_cast<std::size_t>(-1);

  template <class X>
  static auto cast(ElementImpl* element) {
    return static_cast<typename X::Impl*>(element);
  }
  std::vector<const ClassInfo*> classes(const ClassInfo& as) const;
  template <class Take>
  std::size_t scan(const ClassInfo& as, std::size_t limit, Take take) const;
  std::vector<ElementImpl*> find(const ClassInfo& as, std::size_t limit) const;
};

}  // namespace mf::zero::query
