#include "extension/gather.h"

#include <vector>

#include "extension/errors.h"
#include "host/vcos/script.h"

namespace kxsim::python {
namespace {

namespace script = vexal::script;
using vexal::ArrayPtr;

class Columns {
 public:
  /// Stores a value of the k-th object; `at` is the column that probably takes it.
  void store(std::size_t k, std::size_t at, ArrayPtr key, nb::object value) {
    const std::uint64_t identity = take(script::identity(key.get()));
    Column& column = find(k, at, identity, std::move(key));
    pad(column, k);
    column.values.append(std::move(value));
  }

  nb::list finish(std::size_t count) {
    nb::list pairs;
    for (Column& column : columns_) {
      pad(column, count);
      pairs.append(nb::make_tuple(toPython(std::move(column.key), Reading::Optional),
                                  std::move(column.values)));
    }
    return pairs;
  }

 private:
  // The key's array keeps its identity from being given to another.
  struct Column {
    std::uint64_t identity;
    ArrayPtr key;
    nb::list values;

    bool takes(std::uint64_t wanted, std::size_t k) const {
      return identity == wanted && values.size() <= k;
    }
  };

  Column& find(std::size_t k, std::size_t at, std::uint64_t identity, ArrayPtr key) {
    if (at < columns_.size() && columns_[at].takes(identity, k)) return columns_[at];
    for (Column& column : columns_) {
      if (column.takes(identity, k)) return column;
    }
    return columns_.emplace_back(identity, std::move(key), nb::list());
  }

  static void pad(Column& column, std::size_t count) {
    while (column.values.size() < count) column.values.append(nb::none());
  }

  std::vector<Column> columns_;
};

}  // namespace

nb::list gather(const ObjectArray& objects, std::string_view collection, std::string_view key,
                std::string_view value) {
  const std::size_t count = vexal::elementCount(objects.array.get());
  Columns columns;
  for (std::size_t k = 0; k < count; ++k) {
    const ArrayPtr object = take(script::element(objects.array.get(), k));
    const ArrayPtr held = take(script::get(object.get(), collection));
    const ArrayPtr items = take(script::invoke(held.get(), "toArray", {}));
    for (std::size_t j = 0; j < vexal::elementCount(items.get()); ++j) {
      const ArrayPtr item = take(script::element(items.get(), j));
      columns.store(k, j, take(script::get(item.get(), key)),
                    toPython(take(script::get(item.get(), value))));
    }
    if (PyErr_CheckSignals() != 0) throw nb::python_error();
  }
  return columns.finish(count);
}

}  // namespace kxsim::python
