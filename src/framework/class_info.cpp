#include "framework/class_info.h"

#include <algorithm>

namespace mf::zero {
namespace {

template <class Table, class Matches>
auto findIn(const Table& table, Matches matches) {
  const auto found = std::find_if(table.begin(), table.end(), matches);
  return found == table.end() ? nullptr : &*found;
}

}  // namespace

const LiteralInfo* EnumInfo::find(std::int32_t value) const {
  return findIn(literals, [&](const LiteralInfo& literal) { return literal.value == value; });
}

const LiteralInfo* EnumInfo::find(std::u16string_view literal) const {
  return findIn(literals, [&](const LiteralInfo& other) { return other.name == literal; });
}

const PropertyInfo* ClassInfo::findByIndex(std::int64_t index) const {
  if (index < 1 || index > indexCount) return nullptr;
  const ClassInfo* holder = this;
  while (index < holder->firstIndex) holder = holder->super;
  const auto place = static_cast<std::size_t>(index - holder->firstIndex);
  const PropertyInfo& expected = holder->properties[place];
  if (expected.index == index) return &expected;
  // A derived property, which has no index, stands before it.
  return findIn(holder->properties, [&](const PropertyInfo& p) { return p.index == index; });
}

const PropertyInfo* ClassInfo::findByName(std::u16string_view propertyName) const {
  for (const ClassInfo* holder = this; holder; holder = holder->super) {
    const auto* found = findIn(holder->properties, [&](const PropertyInfo& property) {
      return property.name == propertyName;
    });
    if (found) return found;
  }
  return nullptr;
}

}  // namespace mf::zero
