// What a query may ask of an element's properties. The generated class
// `X::Constrainables` has one of these constraints per property of X, by name:
//
//   mf::zero::query::Query query(model);
//   auto run = query.constrain<SimulationRun>();
//   run.state.isEqualTo(u"running");
//   run.progress.isAtLeast(0.5);
//   for (const SimulationRun& slow : query.select<SimulationRun>()) ...
//
// Every call adds one condition to the query, and an element is selected when it
// meets all of them (AND). A condition cannot be taken back; make a new query.
#pragma once

#include <cstdint>
#include <string_view>

#include "framework/class_info.h"
#include "framework/element.h"
#include "framework/export.h"
#include "framework/value.h"

namespace mf::zero::query {

class AbstractQuery;

/// Which elements a query looks at.
enum class SearchClassMatchMode : std::uint8_t {
  kExactClass,      ///< those of the class itself
  kWithSubclasses,  ///< those of its subclasses too
};

/// How a property is compared. Which of them a property admits follows from its type; see the
/// constraint classes below.
enum class Comparison : std::uint8_t {
  kEqual,
  kNotEqual,
  kLess,
  kAtMost,
  kGreater,
  kAtLeast,
  kStartsWith,
  kContains,
  kSet,
  kUnset,
};

/// A property of the class that a query looks at; also the constraint of a host array, which can
/// be asked for its presence only. Valid while its query is. Every operation raises NoSuchProperty
/// and adds nothing when the query is restricted to a class that does not have the property.
class MF0_API Constraint {
 public:
  Constraint(Constrainables& constrainables, const PropertyInfo& property);
  const PropertyInfo& property() const { return *property_; }

  /// As `hasPropertyValue`: the text is non-empty, the number non-zero, the array or reference
  /// present, the collection non-empty, the enumeration one of its literals.
  void isSet() { add(Comparison::kSet); }
  void isUnset() { add(Comparison::kUnset); }

 protected:
  void add(Comparison comparison, const Value& operand = {});

 private:
  AbstractQuery* query_;
  const PropertyInfo* property_;
};

using ArrayConstraint = Constraint;

/// A single value. Numbers compare by ==, so that NaN equals nothing; texts by content; elements
/// by identity, an empty handle standing for an empty reference.
template <class T>
class EqualityConstraint : public Constraint {
 public:
  using Constraint::Constraint;
  void isEqualTo(const T& value) { add(Comparison::kEqual, value); }
  void isNotEqualTo(const T& value) { add(Comparison::kNotEqual, value); }
};

using BooleanConstraint = EqualityConstraint<bool>;
template <ModelEnum E>
using EnumConstraint = EqualityConstraint<E>;
/// A single reference or containment.
using ReferenceConstraint = EqualityConstraint<ModelElement>;

/// A single number. NaN is neither less nor greater than anything.
template <class T>
class OrderConstraint : public EqualityConstraint<T> {
 public:
  using EqualityConstraint<T>::EqualityConstraint;
  void isLessThan(T value) { this->add(Comparison::kLess, value); }
  void isAtMost(T value) { this->add(Comparison::kAtMost, value); }
  void isGreaterThan(T value) { this->add(Comparison::kGreater, value); }
  void isAtLeast(T value) { this->add(Comparison::kAtLeast, value); }
  /// Both ends included.
  void isBetween(T low, T high) {
    isAtLeast(low);
    isAtMost(high);
  }
};

using RealConstraint = OrderConstraint<double>;
/// Of either integer type.
using IntegerConstraint = OrderConstraint<std::int32_t>;

/// A single text; case matters.
class TextConstraint : public EqualityConstraint<std::u16string_view> {
 public:
  using EqualityConstraint::EqualityConstraint;
  void startsWith(std::u16string_view prefix) { add(Comparison::kStartsWith, prefix); }
};

/// A collection.
template <class T>
class MembershipConstraint : public Constraint {
 public:
  using Constraint::Constraint;
  /// Whether the collection holds it; an empty handle is in none.
  void contains(const T& value) { add(Comparison::kContains, value); }
};

/// Many references or contained elements.
using CollectionConstraint = MembershipConstraint<ModelElement>;
/// Many plain values: T is double, bool, std::int8_t, std::int32_t, std::u16string or an
/// enumeration.
template <class T>
using PrimitiveCollectionConstraint = MembershipConstraint<T>;

}  // namespace mf::zero::query

namespace mf::zero {

/// The base of every `X::Constrainables`: it restricts a query to the elements of one class, and
/// its constraints restrict it further. It does not own the query, and may end before it.
class MF0_API Constrainables {
 public:
  /// Several on one query restrict it to the elements that are of all of their classes. Raises
  /// CannotUseEmptyHandle for an empty meta class.
  Constrainables(query::AbstractQuery& query, const meta::Class& metaClass,
                 query::SearchClassMatchMode mode);

 private:
  friend class query::Constraint;
  query::AbstractQuery* query_;
};

}  // namespace mf::zero
