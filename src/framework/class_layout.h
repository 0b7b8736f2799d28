// What a model works out about a class once, at its first element: the stored properties in one
// row, inherited ones first, and those that the runtime's own algorithms go through.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "framework/class_info.h"
#include "framework/text.h"

namespace mf::zero {

class ClassLayout {
 public:
  explicit ClassLayout(const ClassInfo& info);

  /// The stored property of that index, which the class must have.
  const PropertyInfo& property(std::size_t index) const { return *properties_[index - 1]; }

  using Properties = std::vector<const PropertyInfo*>;
  /// Those that refer to elements without containing them.
  const Properties& references() const { return references_; }
  const Properties& containments() const { return containments_; }
  /// Those of either whose slots lie in a block of the pool.
  const Properties& elementLists() const { return elementLists_; }
  /// Whether elements hold memory that is not the pool's: texts, arrays, primitive lists.
  bool ownsOutsideMemory() const { return ownsOutsideMemory_; }

  /// Gives a new or hollow element of the class the declared defaults.
  void applyDefaults(ElementImpl& element) const {
    if (!defaults_.empty()) storeDefaults(element);
  }

 private:
  struct Default {
    const PropertyInfo* property;
    std::uint64_t bits;
    std::size_t size;
    Text text;
  };
  void storeDefaults(ElementImpl& element) const;
  void takeIn(const PropertyInfo& property);

  Properties properties_, references_, containments_, elementLists_;
  std::vector<Default> defaults_;
  bool ownsOutsideMemory_ = false;
};

}  // namespace mf::zero
