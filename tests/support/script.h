// Acting as a script does: by name alone, with values as C++ has them.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/cell.h"
#include "host/record.h"
#include "host/text.h"
#include "host/vcos/script.h"

namespace vexal::testing {

/// An argument: a number, a truth value, a text, or an array that somebody else owns.
class Argument {
 public:
  Argument(double value) : owned_(createDouble(value)), array_(owned_.get()) {}   // NOLINT
  Argument(int value) : Argument(static_cast<double>(value)) {}                   // NOLINT
  Argument(bool value) : owned_(createLogical(value)), array_(owned_.get()) {}    // NOLINT
  Argument(const char* text) : owned_(createChar(text)), array_(owned_.get()) {}  // NOLINT
  Argument(const std::string& text) : Argument(text.c_str()) {}                   // NOLINT
  Argument(const ArrayPtr& array) : array_(array.get()) {}                        // NOLINT
  Argument(ArrayPtr&& array) : owned_(std::move(array)), array_(owned_.get()) {}  // NOLINT
  const vxArray* get() const { return array_; }

 private:
  ArrayPtr owned_;
  const vxArray* array_;
};

using Arguments = std::initializer_list<Argument>;

inline std::vector<const vxArray*> pointers(Arguments arguments) {
  std::vector<const vxArray*> found;
  for (const Argument& argument : arguments) found.push_back(argument.get());
  return found;
}

/// "mf0:messages:InvalidValue", or nothing for a success.
template <class T>
std::string errorOf(const script::Result<T>& result) {
  if (result) return {};
  return result.error->item(0).catalog + ':' + result.error->item(0).key;
}

/// What a script gets; a failure fails the test.
inline ArrayPtr valueOf(script::Result<ArrayPtr> result, std::string_view what = {}) {
  if (!result) ADD_FAILURE() << what << ": " << result.error->item(0).text;
  return std::move(result.value);
}

inline script::Result<ArrayPtr> tryNew(std::string_view className, Arguments arguments = {}) {
  return script::construct(className, pointers(arguments));
}
inline ArrayPtr make(std::string_view className, Arguments arguments = {}) {
  return valueOf(tryNew(className, arguments), className);
}
inline ArrayPtr get(const ArrayPtr& object, std::string_view property) {
  return valueOf(script::get(object.get(), property), property);
}
/// The error's identifier; nothing when it was set.
inline std::string set(const ArrayPtr& object, std::string_view property, const Argument& value) {
  return errorOf(script::set(object.get(), property, value.get()));
}
inline script::Result<ArrayPtr> tryCall(const ArrayPtr& object, std::string_view method,
                                        Arguments arguments = {}) {
  return script::invoke(object.get(), method, pointers(arguments));
}
inline ArrayPtr call(const ArrayPtr& object, std::string_view method, Arguments arguments = {}) {
  return valueOf(tryCall(object, method, arguments), method);
}

// What arrays hold.

inline double number(const ArrayPtr& array) {
  if (isClass(array.get(), ClassId::Int32)) return elements<std::int32_t>(array.get())[0];
  return doubleData(array.get())[0];
}
inline bool truth(const ArrayPtr& array) { return elements<bool>(array.get())[0]; }
inline std::string text(const ArrayPtr& array) { return toUtf8(charText(array.get())); }
inline ArrayPtr element(const ArrayPtr& array, std::size_t k) {
  return valueOf(script::element(array.get(), k), "element");
}
inline ArrayPtr fieldOf(const ArrayPtr& record, std::string_view name, std::size_t k = 0) {
  return deepCopy(field(record.get(), name, k));
}
inline std::uint64_t identityOf(const ArrayPtr& object) {
  return script::identity(object.get()).value;
}

inline ArrayPtr cell(Arguments items) {
  ArrayPtr cells = createCell(1, items.size());
  std::size_t k = 0;
  for (const Argument& item : items) setCell(cells.get(), k++, item.get());
  return cells;
}
inline ArrayPtr record(std::initializer_list<std::pair<std::string_view, Argument>> fields) {
  ArrayPtr made = createStruct();
  for (const auto& [name, value] : fields) setField(made.get(), name, value.get());
  return made;
}

}  // namespace vexal::testing
