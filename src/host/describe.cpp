// Arrays and numbers in the words of messages.
#include <array>
#include <charconv>
#include <cmath>

#include "host/detail/class_table.h"
#include "host/detail/content.h"
#include "host/object.h"
#include "host/record.h"
#include "host/text.h"
#include "host/vcos/native.h"

namespace vexal {
namespace {

std::string fieldInWords(const vxArray* object, const std::string& name) {
  const vxArray* value = field(object, name);
  const bool isNumber = isClass(value, ClassId::Double) && elementCount(value) == 1;
  return name + ' ' + (isNumber ? formatNumber(doubleData(value)[0]) : describe(value));
}

std::string detailsOfNative(const vxArray* object) {
  const auto& head = detail::headOf<detail::NativeHead>(*object->content);
  if (head.family == nullptr) return {};
  const vcos::Native native = vcos::factory::impl::nativeOf(object, *head.family);
  if (native.object == nullptr) return "no longer there";
  return head.family->describe != nullptr ? head.family->describe(native) : std::string();
}

std::string detailsOfValue(const detail::Content& content) {
  const auto value = *static_cast<const std::int32_t*>(detail::elementsOf(content));
  const vcos::COSEnumInfo* const member = detail::classOf(content).member(value);
  return member != nullptr ? std::string(member->name) : std::to_string(value);
}

std::string detailsOf(const vxArray* object) {
  const detail::Content& content = detail::contentOf(object);
  if (content.layout == detail::Layout::Natives) return detailsOfNative(object);
  if (content.layout == detail::Layout::Values) return detailsOfValue(content);
  if (const NativePayload* native = payload(object)) {
    if (std::string words = native->describe(); !words.empty()) return words;
  }
  std::string words;
  for (const std::string& name : fieldNames(object)) {
    words += (words.empty() ? "" : ", ") + fieldInWords(object, name);
  }
  return words;
}

}  // namespace

std::string formatNumber(double value) {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value > 0 ? "Inf" : "-Inf";
  std::array<char, 32> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
  return {digits.data(), end};
}

std::string detail::sizeInWords(Dims dims) {
  std::string words;
  for (const std::size_t dim : dims) words += (words.empty() ? "" : "-by-") + std::to_string(dim);
  return words;
}

std::string describe(const vxArray* array) {
  if (array == nullptr) return "no array";
  std::string words = isEmpty(array) ? "empty " : "";
  words += detail::sizeInWords(dimensions(array));
  words += ' ';
  words += className(array);
  if (classId(array) != ClassId::Object) return words + " array";
  if (!detail::isOneObject(detail::contentOf(array))) return words + " object array";
  const std::string details = detailsOf(array);
  return words + " object" + (details.empty() ? "" : " (" + details + ')');
}

}  // namespace vexal
