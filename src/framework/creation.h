// From collected values to elements: creation through builders, and the filling of
// proxies.
#pragma once

#include "framework/builder.h"
#include "framework/element.h"

namespace mf::zero {

class Creation {
 public:
  /// Creates the element of a builder and of all its child builders, in one transaction.
  static ModelElement create(const BuilderValues& values, const uuid& identity);
  /// Gives a proxy the values that a loader collected, unrecorded. Checks everything first.
  static void fillProxy(ElementImpl& proxy, const BuilderValues& values);
  /// Makes the two-sided references of a loaded element agree with their other ends, which were in
  /// memory while it was not.
  static void matchEnds(ElementImpl& element);
  /// Empties everything that a loader can bring back; containment stays.
  static void empty(ElementImpl& element) noexcept;

 private:
  static void fill(ElementImpl& element, const BuilderValues& values);
};

}  // namespace mf::zero
