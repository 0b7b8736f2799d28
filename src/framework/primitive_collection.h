// Collections of plain values: views on a many-valued primitive or enumeration
// property of one element, live as the element collections are.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <type_traits>
#include <vector>

#include "framework/element.h"
#include "framework/export.h"

namespace mf::zero {

/// The untyped operations. A sequence keeps order and duplicates; a set (not ordered) keeps its
/// values sorted and each once. Changing a proxy's raises CannotModifyProxy; a value of another
/// kind raises CannotCastIncompatibleTypes; a position past the end raises IndexOutOfRange.
class MF0_API AbstractPrimitiveCollection {
 public:
  AbstractPrimitiveCollection(const ElementImpl* owner, const PropertyInfo& property)
      : owner_(const_cast<ElementImpl*>(owner)), property_(&property) {}

  std::size_t size() const;
  bool empty() const { return size() == 0; }
  Value valueAt(std::size_t index) const;
  bool containsValue(const Value& value) const { return indexOfValue(value).has_value(); }
  /// The first place where the value stands; NaN is found as well.
  std::optional<std::size_t> indexOfValue(const Value& value) const;
  /// Appends to a sequence; puts into a set, where a value already held changes nothing.
  void addValue(const Value& value);
  void insertValue(std::size_t index, const Value& value);
  void setValueAt(std::size_t index, const Value& value);
  void removeAt(std::size_t index);
  void clear();
  /// Makes the collection hold exactly these; all or none.
  void assignValues(std::span<const Value> values);

  const ModelElement& owner() const { return owner_; }
  const PropertyInfo& property() const { return *property_; }
  bool isOrdered() const { return property_->has(kOrdered); }

 protected:
  /// The numbers of a real property as they lie in memory, valid until the next change.
  std::span<const double> reals() const;

 private:
  ModelElement owner_;
  const PropertyInfo* property_;
};

/// T is double, bool, std::int8_t, std::int32_t, std::u16string or an enumeration.
template <class T, class Container>
class PrimitiveCollection : public AbstractPrimitiveCollection {
 public:
  using AbstractPrimitiveCollection::AbstractPrimitiveCollection;
  using value_type = T;

  T at(std::size_t index) const { return valueAt(index).template getValue<T>(); }
  T operator[](std::size_t index) const { return at(index); }
  bool contains(const T& value) const { return containsValue(Value(value)); }
  void add(const T& value) { addValue(Value(value)); }
  void insert(std::size_t index, const T& value) { insertValue(index, Value(value)); }
  void set(std::size_t index, const T& value) { setValueAt(index, Value(value)); }
  void assign(std::span<const T> values) {
    const std::vector<Value> boxed(values.begin(), values.end());
    assignValues(boxed);
  }
  Container toContainer() const {
    Container copy;
    for (std::size_t i = 0; i < size(); ++i) copy.insert(copy.end(), at(i));
    return copy;
  }
  /// The numbers as they lie in memory; valid until the collection changes.
  std::span<const double> values() const
    requires std::is_same_v<T, double>
  {
    return reals();
  }
};

template <class T>
using PrimitiveSequence = PrimitiveCollection<T, std::vector<T>>;
template <class T>
using PrimitiveSet = PrimitiveCollection<T, std::set<T>>;

}  // namespace mf::zero
