#include "framework/class_layout.h"

#include <cassert>
#include <string>

#include "framework/raw.h"
#include "framework/values.h"

namespace mf::zero {

ClassLayout::ClassLayout(const ClassInfo& info) {
  properties_.reserve(info.indexCount);
  forEachProperty(info, [this](const PropertyInfo& property) { takeIn(property); });
}

void ClassLayout::takeIn(const PropertyInfo& property) {
  properties_.push_back(&property);
  assert(property.index == properties_.size());
  const bool holdsElements = property.kind == ValueKind::kElement;
  if (holdsElements)
    (property.has(kContainment) ? containments_ : references_).push_back(&property);
  if (property.isReferenceList()) elementLists_.push_back(&property);
  ownsOutsideMemory_ |= property.kind == ValueKind::kString || property.kind == ValueKind::kArray ||
                        (property.has(kMany) && !holdsElements);
  if (!property.defaultValue || property.has(kMany)) return;
  const Value value = values::parseDefault(property);
  if (property.kind == ValueKind::kString) {
    defaults_.push_back({&property, 0, 0, Text(value.getValue<std::u16string>())});
  } else {
    defaults_.push_back({&property, value.bits(), values::sizeOf(property), {}});
  }
}

void ClassLayout::storeDefaults(ElementImpl& element) const {
  for (const Default& item : defaults_) {
    if (item.property->kind == ValueKind::kString) {
      Raw::at<Text>(element, *item.property) = item.text;
    } else {
      Raw::store(element, *item.property, item.bits, item.size);
    }
  }
}

}  // namespace mf::zero
