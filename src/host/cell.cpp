#include "host/cell.h"

#include <array>

#include "host/detail/content.h"

namespace vexal {
namespace {

const detail::Content& requireCell(const vxArray* array) {
  const detail::Content& content = detail::contentOf(array);
  if (content.classId != ClassId::Cell) detail::failWrongClass("cell", array);
  return content;
}

}  // namespace

ArrayPtr createCell(std::size_t rows, std::size_t columns) {
  return createArray(ClassId::Cell, std::array{rows, columns});
}

const vxArray* cellElement(const vxArray* cell, std::size_t index) {
  const auto children = detail::childrenOf(requireCell(cell));
  detail::requireIndex(index, children.size());
  return &children[index];
}

void setCell(vxArray* cell, std::size_t index, const vxArray* value) {
  detail::requireIndex(index, detail::countOf(requireCell(cell)));
  detail::contentOf(value);
  // Taken before the cell is parted from its copies: the value may be the cell itself.
  detail::ContentRef content(detail::share(value->content));
  vxArray& element = detail::childrenOf(detail::uniqueContentOf(cell))[index];
  detail::replaceContent(&element, std::move(content));
}

}  // namespace vexal
