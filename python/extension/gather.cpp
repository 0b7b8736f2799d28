#include "extension/gather.h"

#include "extension/errors.h"
#include "host/cell.h"
#include "host/vcos/script.h"

namespace kxsim::python {
namespace {

namespace script = vexal::script;

nb::list listed(const script::Column& column) {
  const vxArray* const values = column.values.get();
  const bool isCell = vexal::isCell(values);
  nb::list items;
  for (std::size_t k = 0; k < vexal::elementCount(values); ++k) {
    if (column.present != nullptr && !vexal::elements<bool>(column.present.get())[k]) {
      items.append(nb::none());
    } else if (isCell) {
      items.append(toPython(vexal::deepCopy(vexal::cellElement(values, k))));
    } else {
      items.append(nb::float_(vexal::doubleData(values)[k]));
    }
  }
  return items;
}

}  // namespace

nb::list gather(const ObjectArray& objects, std::string_view collection, std::string_view key,
                std::string_view value) {
  nb::list pairs;
  for (script::Column& column :
       take(script::columns(objects.array.get(), collection, key, value))) {
    const bool isOfNumbers = column.present == nullptr && !vexal::isCell(column.values.get());
    nb::object values = isOfNumbers ? numbersToPython(std::move(column.values)) : listed(column);
    pairs.append(nb::make_tuple(toPython(std::move(column.key), Reading::Optional), values));
  }
  return pairs;
}

}  // namespace kxsim::python
