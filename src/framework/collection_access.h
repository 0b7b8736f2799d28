// How the operations of every collection begin.
#pragma once

#include <cstddef>
#include <string>

#include "framework/element.h"
#include "framework/model_impl.h"
#include "framework/raw.h"

namespace mf::zero {

/// The owner's list for reading: a proxy is loaded first.
template <class List>
List& readable(const ModelElement& owner, const PropertyInfo& property) {
  Raw::prepareRead(*owner.impl());
  return Raw::at<List>(*owner.impl(), property);
}

/// The owner of a list that is about to change. Raises what every setter raises first.
inline ElementImpl& writable(const ModelElement& owner) {
  if (!Raw::isPlain(*owner.impl())) Raw::refuseChange(*owner.impl());
  owner.impl()->model().checkWritable();
  return *owner.impl();
}

[[noreturn]] inline void raiseOutOfRange(std::size_t index, std::size_t size) {
  reportException(mf0::messages::IndexOutOfRange(std::to_string(index), std::to_string(size)));
}

}  // namespace mf::zero
