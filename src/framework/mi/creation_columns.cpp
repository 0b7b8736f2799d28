#include "framework/mi/creation_columns.h"

#include <string>

#include "framework/messages.h"
#include "framework/mi/creation_arguments.h"
#include "framework/mi/host_objects.h"
#include "host/cell.h"
#include "host/diagnostic.h"
#include "host/record.h"
#include "host/vcos/script.h"

namespace mf::zero::mi {
namespace {

// The values of one property.
class Column {
 public:
  Column(const PropertyInfo& property, const vxArray* values)
      : property_(&property),
        held_(vexal::deepCopy(values)),  // a conversion may run code that changes the array
        isCell_(vexal::isCell(values)),
        isOfElements_(vexal::isClass(values, vexal::ClassId::Object) &&
                      property.kind == ValueKind::kElement && !property.has(kMany) &&
                      !property.has(kContainment)) {}

  std::size_t count() const { return vexal::elementCount(held_.get()); }

  void set(BuilderValues& values, std::size_t k) const {
    if (isCell_) {
      detail::setProperty(values, *property_, vexal::cellElement(held_.get(), k));
    } else if (isOfElements_) {
      values.set(*property_, Value(elementOf(held_.get(), k)));
    } else {
      const auto one = vexal::script::element(held_.get(), k);
      if (!one) vexal::throwDiagnostic(*one.error);
      detail::setProperty(values, *property_, one.value.get());
    }
  }

 private:
  const PropertyInfo* property_;
  vexal::ArrayPtr held_;
  bool isCell_;
  bool isOfElements_;
};

std::vector<Column> columnsIn(const vxArray* columns, const ClassInfo& info) {
  std::vector<Column> found;
  for (const std::string& name : vexal::fieldNames(columns)) {
    found.emplace_back(detail::settableProperty(info, name), vexal::field(columns, name));
    const std::size_t count = found.back().count();
    if (count != found[0].count()) {
      const std::string counts =
          std::to_string(count) + " instead of " + std::to_string(found[0].count());
      reportException(mf0::messages::UnequalColumns(name, counts));
    }
  }
  return found;
}

ModelElement createOne(const std::vector<Column>& columns, std::size_t k, const Model& model,
                       const ClassInfo& info, bool isChecked) {
  const Builder builder(info, model);
  BuilderValues& values = builder.values();
  values.reserve(columns.size());
  for (const Column& column : columns) column.set(values, k);
  ModelElement created = builder.create();
  if (isChecked) askChecks(*created.impl());
  return created;
}

// Passes the current exception on, saying for which of many elements it was raised.
[[noreturn]] void rethrowFor(std::size_t k, const ClassInfo& info) {
  const auto diagnostic = vexal::diagnosticOfCurrentException(info.qualifiedName);
  const mf0::messages::ForElement note(std::to_string(k));
  diagnostic->add({"mf0:messages", "ForElement"}, note.text());
  vexal::throwDiagnostic(*diagnostic);
}

}  // namespace

std::vector<ModelElement> createFromColumns(const vxArray* columns, const Model& model,
                                            const ClassInfo& info) {
  const std::vector<Column> given = columnsIn(columns, info);
  const std::size_t count = given.empty() ? 0 : given[0].count();
  const bool isChecked = hasChecks(info);
  std::vector<ModelElement> created;
  created.reserve(count);
  Transaction transaction = model->beginTransaction();
  for (std::size_t k = 0; k < count; ++k) {
    try {
      created.push_back(createOne(given, k, model, info, isChecked));
    } catch (...) {
      rethrowFor(k, info);
    }
  }
  transaction.commit();
  return created;
}

}  // namespace mf::zero::mi
