// "mf.zero.Model": what scripts do with a model as a whole.
#include <string>

#include "framework/messages.h"
#include "framework/meta/registry.h"
#include "framework/mi/creation_arguments.h"
#include "framework/mi/creation_columns.h"
#include "framework/mi/element_property.h"
#include "framework/mi/host_classes.h"
#include "framework/mi/host_objects.h"
#include "framework/mi/meta_marshaler_registry.h"
#include "framework/mi/script_observer.h"
#include "framework/mi/script_transaction.h"
#include "framework/model_impl.h"
#include "framework/query/query.h"
#include "host/record.h"

namespace mf::zero::mi {
namespace {

using vcos::factory::MethodAttributes;
using vcos::factory::MethodCall;
using vcos::factory::VcosMethod;
using vexal::ArrayPtr;

Model self(const MethodCall& call) { return Model(static_cast<ModelImpl*>(call.native.object)); }

// The model of all meta elements is the registry's to change.
Model ownModel(const MethodCall& call) {
  Model model = self(call);
  if (model == meta::MetaRegistry::getInstance().model()) {
    reportException(mf0::messages::CannotModifyFrozenModel());
  }
  return model;
}

ArrayPtr construct(const MethodCall& call) {
  const Model model = Model::create();
  vcos::factory::basic::BindingRegistry::announceForConstructor(
      kModels, {model.impl()}, call.hostClass.name(), call.constructed, true);
  return nullptr;
}

ArrayPtr findElement(const MethodCall& call) {
  return toHost(self(call)->findElement(detail::extractUuid(call.inputs[0])));
}

// One condition: equal to the value or, for a collection, holding all of the values.
void addCondition(query::Query& query, const ClassInfo& info, const std::string& name,
                  const vxArray* value) {
  const PropertyInfo* const property = propertyNamed(info, name);
  if (!property) reportException(mf0::messages::NoSuchProperty(info.qualifiedName, name));
  if (property->kind == ValueKind::kArray) {
    reportException(mf0::messages::CannotCompareProperty(info.qualifiedName, name));
  }
  if (!property->has(kMany)) {
    return query.where(*property, query::Comparison::kEqual, valueOf(*property, value));
  }
  for (const Value& item : valuesOf(*property, value)) {
    query.where(*property, query::Comparison::kContains, item);
  }
}

ArrayPtr elements(const MethodCall& call) {
  const ClassInfo& info =
      call.inputs.empty() ? ModelElement::classInfo() : elementClass(call.inputs[0]);
  query::Query query(self(call));
  query.restrictTo(info, query::SearchClassMatchMode::kWithSubclasses);
  if (call.inputs.size() > 1) {
    const vxArray* const conditions = call.inputs[1];
    for (const std::string& name : vexal::fieldNames(conditions)) {
      addCondition(query, info, name, vexal::field(conditions, name));
    }
  }
  return toHost(query.select(), info);
}

ArrayPtr createElements(const MethodCall& call) {
  const ClassInfo& info = elementClass(call.inputs[0]);
  return toHost(createFromColumns(call.inputs[1], ownModel(call), info), info);
}

ArrayPtr roots(const MethodCall& call) {
  return toHost(self(call)->roots(), ModelElement::classInfo());
}

ArrayPtr size(const MethodCall& call) {
  return vexal::createDouble(static_cast<double>(self(call)->size()));
}

ArrayPtr beginTransaction(const MethodCall& call) { return announceTransaction(ownModel(call)); }

ArrayPtr isInTransaction(const MethodCall& call) {
  return vexal::createLogical(self(call)->isInTransaction());
}

ArrayPtr observe(const MethodCall& call) {
  return announceObserver(ownModel(call), call.inputs[0]);
}

ArrayPtr freeze(const MethodCall& call) {
  Model::Freezer(ownModel(call)).freeze();
  return nullptr;
}

ArrayPtr thaw(const MethodCall& call) {
  Model::Freezer(ownModel(call)).unfreeze();
  return nullptr;
}

ArrayPtr isFrozen(const MethodCall& call) { return vexal::createLogical(self(call)->isFrozen()); }

ArrayPtr close(const MethodCall& call) {
  ownModel(call)->close();
  return nullptr;
}

constexpr VcosMethod kMethods[] = {
    {.name = "Model",
     .attributes = MethodAttributes::Constructor,
     .outputType = kModelName,
     .body = &construct,
     .doc = "A new, empty model."},
    {.name = "findElement",
     .inputNames = "identity",
     .outputType = kElementName,
     .inputTypes = "any",
     .body = &findElement,
     .doc = "The element with that identity; an empty array when the model holds none."},
    {.name = "elements",
     .inputNames = "opt_class opt_conditions",
     .outputType = kElementName,
     .inputTypes = "any, struct scalar",
     .body = &elements,
     .doc = "All elements, or those of a class (by name or meta class) and its subclasses. Every "
            "field of the conditions names a property and the value that it must have; a "
            "collection must hold all values given."},
    {.name = "createElements",
     .inputNames = "class columns",
     .outputType = "mf.zero.ModelElement vector",
     .inputTypes = "any, struct scalar",
     .body = &createElements,
     .doc = "Creates elements of a class (by name or meta class), all or none of them, and answers "
            "them in order. Every field of the columns names a property and holds its values, one "
            "for each element: a cell array or an array of numbers, truth values or objects."},
    {.name = "roots",
     .outputType = kElementName,
     .body = &roots,
     .doc = "The elements that no other contains."},
    {.name = "size",
     .outputType = "double scalar",
     .body = &size,
     .doc = "How many elements the model holds, contained ones included."},
    {.name = "beginTransaction",
     .outputType = kTransactionName,
     .body = &beginTransaction,
     .doc = "Begins a transaction, inside the open one if there is one. It is rolled back unless "
            "it is committed before the last reference to it goes."},
    {.name = "isInTransaction",
     .outputType = "logical scalar",
     .body = &isInTransaction,
     .doc = "Whether a transaction is open."},
    {.name = "observe",
     .inputNames = "observer",
     .outputType = kSubscriptionName,
     .inputTypes = "any",
     .body = &observe,
     .doc = "From now on the observer (the name of a function, or an object with a method "
            "'changed') is called with every committed change set, until the subscription ends "
            "or the last reference to that goes. The change set is a struct: Created, an array of "
            "elements; Destroyed, a struct array of Identity and Class; Modified, a struct array "
            "of Element, Property, OldValue and NewValue."},
    {.name = "freeze", .body = &freeze, .doc = "Refuses every change until the model is thawed."},
    {.name = "thaw", .body = &thaw, .doc = "Lets changes be made again."},
    {.name = "isFrozen",
     .outputType = "logical scalar",
     .body = &isFrozen,
     .doc = "Whether changes are refused."},
    {.name = "close",
     .body = &close,
     .doc = "Destroys everything in the model, after which it cannot be used."},
};

}  // namespace

constinit const vcos::factory::ClassTable detail::kModelTable{
    .name = kModelName,
    .doc = "A container of elements, which may refer to each other.",
    .methods = kMethods};

}  // namespace mf::zero::mi
