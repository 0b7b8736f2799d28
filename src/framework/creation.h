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
  /// Turns a proxy into the element that a loader described. Not told, but undone when an open
  /// transaction is rolled back. Checks everything first; a failure leaves the proxy as it was.
  static void load(ElementImpl& proxy, const BuilderValues& values);
  /// Empties everything that a loader can bring back; containment stays.
  static void empty(ElementImpl& element) noexcept;

 private:
  static void fill(ElementImpl& element, const BuilderValues& values);
};

}  // namespace mf::zero
