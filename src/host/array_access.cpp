// Creation of arrays of numbers, and what can be asked of every array.
#include <array>
#include <cmath>
#include <cstring>
#include <vector>

#include "host/detail/class_table.h"
#include "host/detail/content.h"

namespace vexal {
namespace {

using detail::Content;
using detail::contentOf;

template <class T>
constexpr ClassId kClassOf = ClassId::Double;
template <>
constexpr ClassId kClassOf<bool> = ClassId::Logical;
template <>
constexpr ClassId kClassOf<char16_t> = ClassId::Char;
template <>
constexpr ClassId kClassOf<std::int32_t> = ClassId::Int32;

template <class T>
T* plainElements(Content* content) noexcept {
  return static_cast<T*>(detail::elementsOf(content));
}

template <class T>
ArrayPtr createScalar(T value) {
  auto content = detail::newScalarContent(kClassOf<T>);
  *plainElements<T>(content.get()) = value;
  return detail::newArray(std::move(content));
}

std::string_view nameOf(const Content& content) noexcept {
  return content.classId == ClassId::Object ? detail::classOf(content).name
                                            : detail::builtInClassName(content.classId);
}

template <class T>
void requireClass(const Content& content, const vxArray* array) {
  if (content.classId != kClassOf<T>) {
    detail::failWrongClass(detail::builtInClassName(kClassOf<T>), array);
  }
}

bool sameNumbers(const Content& a, const Content& b) noexcept {
  const auto* x = static_cast<const double*>(detail::elementsOf(a));
  const auto* y = static_cast<const double*>(detail::elementsOf(b));
  const auto same = [](double p, double q) { return p == q || (std::isnan(p) && std::isnan(q)); };
  return std::equal(x, x + detail::countOf(a), y, same);
}

bool sameRecords(const detail::Record& a, const detail::Record& b) noexcept {
  const bool sameNames = a.names == b.names || *a.names == *b.names;
  return a.hostClass == b.hostClass && a.payload == b.payload && sameNames;
}

template <class T>
bool sameBytes(const Content& a, const Content& b) noexcept {
  const std::size_t bytes = detail::countOf(a) * sizeof(T);
  return bytes == 0 || std::memcmp(detail::elementsOf(a), detail::elementsOf(b), bytes) == 0;
}

bool sameNatives(const Content& a, const Content& b) noexcept {
  const auto& x = detail::headOf<detail::NativeHead>(a);
  const auto& y = detail::headOf<detail::NativeHead>(b);
  return x.state == detail::NativeHead::State::Block && x.state == y.state &&
         x.hostClass == y.hostClass && x.family == y.family && sameBytes<void*>(a, b);
}

bool samePlainElements(const Content& a, const Content& b) noexcept {
  switch (a.classId) {
    case ClassId::Double: return sameNumbers(a, b);
    case ClassId::Logical: return sameBytes<bool>(a, b);
    case ClassId::Char: return sameBytes<char16_t>(a, b);
    case ClassId::Int32: return sameBytes<std::int32_t>(a, b);
    default: return true;  // a cell
  }
}

// Everything but the elements that are arrays.
bool sameButForChildren(const Content& a, const Content& b) noexcept {
  if (a.classId != b.classId || a.layout != b.layout ||
      !std::ranges::equal(detail::dimsOf(a), detail::dimsOf(b))) {
    return false;
  }
  switch (a.layout) {
    case detail::Layout::Elements: return samePlainElements(a, b);
    case detail::Layout::Fields: return sameRecords(detail::recordOf(a), detail::recordOf(b));
    case detail::Layout::Objects: return &detail::classOf(a) == &detail::classOf(b);
    case detail::Layout::Natives: return sameNatives(a, b);
    case detail::Layout::Values:
      return &detail::classOf(a) == &detail::classOf(b) && sameBytes<std::int32_t>(a, b);
  }
  return false;
}

}  // namespace

ArrayPtr createArray(ClassId classId, Dims dims) {
  switch (classId) {
    case ClassId::Object:
      detail::fail("WrongClass", {"built-in", "objects, which createObject makes"});
    case ClassId::Cell: return detail::newArray(detail::newCellContent(dims));
    case ClassId::Struct: {
      detail::Record record{{nullptr}, std::make_shared<detail::FieldNames>(), nullptr};
      return detail::newArray(detail::newRecordContent(classId, dims, std::move(record)));
    }
    default: return detail::newArray(detail::newPlainContent(classId, dims, detail::Fill::Zero));
  }
}

ArrayPtr createDoubleMatrix(std::size_t rows, std::size_t columns) {
  return createArray(ClassId::Double, std::array{rows, columns});
}

ArrayPtr createDoubleRow(std::span<const double> values) {
  const std::array<std::size_t, 2> dims{1, values.size()};
  auto content = detail::newPlainContent(ClassId::Double, dims, detail::Fill::None);
  std::ranges::copy(values, plainElements<double>(content.get()));
  return detail::newArray(std::move(content));
}

ArrayPtr createDouble(double value) { return createScalar(value); }
ArrayPtr createLogical(bool value) { return createScalar(value); }
ArrayPtr createInt32(std::int32_t value) { return createScalar(value); }

bool isClass(const vxArray* array, ClassId classId) {
  detail::requireHostThread();
  return array != nullptr && array->content->classId == classId;
}

bool isA(const vxArray* array, std::string_view className) {
  detail::requireHostThread();
  if (array == nullptr) return false;
  const Content& content = *array->content;
  if (content.classId != ClassId::Object) return nameOf(content) == className;
  return detail::isOrDerives(&detail::classOf(content), className);
}

bool isLogicalScalarTrue(const vxArray* array) {
  return isClass(array, ClassId::Logical) && elementCount(array) == 1 && elements<bool>(array)[0];
}

ClassId classId(const vxArray* array) { return contentOf(array).classId; }

std::string_view className(const vxArray* array) { return nameOf(contentOf(array)); }

bool isEmpty(const vxArray* array) { return elementCount(array) == 0; }

std::size_t elementCount(const vxArray* array) { return detail::countOf(contentOf(array)); }

Dims dimensions(const vxArray* array) { return detail::dimsOf(contentOf(array)); }

// Nested arrays are compared from a list, so that depth needs no stack.
bool equalContent(const vxArray* a, const vxArray* b) {
  detail::requireHostThread();
  if (a == nullptr || b == nullptr) return a == b;
  std::vector<std::pair<const Content*, const Content*>> pairs{{a->content, b->content}};
  while (!pairs.empty()) {
    const auto [x, y] = pairs.back();
    pairs.pop_back();
    if (x == y) continue;
    if (!sameButForChildren(*x, *y)) return false;
    const auto xs = detail::childrenOf(*x);
    const auto ys = detail::childrenOf(*y);
    for (std::size_t k = 0; k < xs.size(); ++k) pairs.emplace_back(xs[k].content, ys[k].content);
  }
  return true;
}

template <PlainElement T>
std::span<const T> elements(const vxArray* array) {
  const Content& content = contentOf(array);
  requireClass<T>(content, array);
  return {static_cast<const T*>(detail::elementsOf(content)), detail::countOf(content)};
}

template <PlainElement T>
std::span<T> mutableElements(vxArray* array) {
  requireClass<T>(contentOf(array), array);
  Content* const content = detail::uniqueContentOf(array);
  return {plainElements<T>(content), detail::countOf(*content)};
}

template VEXAL_API std::span<const double> elements(const vxArray*);
template VEXAL_API std::span<const bool> elements(const vxArray*);
template VEXAL_API std::span<const char16_t> elements(const vxArray*);
template VEXAL_API std::span<const std::int32_t> elements(const vxArray*);
template VEXAL_API std::span<double> mutableElements(vxArray*);
template VEXAL_API std::span<bool> mutableElements(vxArray*);
template VEXAL_API std::span<char16_t> mutableElements(vxArray*);
template VEXAL_API std::span<std::int32_t> mutableElements(vxArray*);

}  // namespace vexal
