// Live collections: "mf.zero.Set" and "mf.zero.Sequence" of elements, "mf.zero.PrimitiveSet" and
// "mf.zero.PrimitiveSequence" of plain values. Places count from 0.
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "framework/collection.h"
#include "framework/messages.h"
#include "framework/mi/host_classes.h"
#include "framework/mi/host_objects.h"
#include "framework/mi/meta_marshaler_registry.h"
#include "framework/model_impl.h"
#include "framework/primitive_collection.h"
#include "host/text.h"

namespace mf::zero::mi {
namespace {

using vcos::factory::MethodCall;
using vcos::factory::VcosMethod;
using vexal::ArrayPtr;

// The two kinds of collection, made alike.

struct Elements : ReferenceCollection {
  using ReferenceCollection::ReferenceCollection;
  ArrayPtr read(std::size_t index) const { return toHost(at(index)); }
  std::optional<std::size_t> find(const vxArray* element) const {
    return indexOf(elementOf(element));
  }
  void addAll(const vxArray* elements) { append(elementsOf(elements)); }
  void insertOne(std::size_t index, const vxArray* element) { insert(index, elementOf(element)); }
  void removeOne(const vxArray* element) { remove(elementOf(element)); }
  void assignAll(const vxArray* elements) { assign(elementsOf(elements)); }
  ArrayPtr readAll() const {
    std::vector<ModelElement> elements;
    elements.reserve(size());
    for (const ModelElement& element : *this) elements.push_back(element);
    return toHost(std::move(elements), *property().target);
  }
};

struct Primitives : AbstractPrimitiveCollection {
  using AbstractPrimitiveCollection::AbstractPrimitiveCollection;
  ArrayPtr read(std::size_t index) const {
    return marshalerOf(property()).toVxArray(valueAt(index));
  }
  std::optional<std::size_t> find(const vxArray* value) const {
    return indexOfValue(valueOf(property(), value));
  }
  void addAll(const vxArray* values) {
    Transaction transaction = owner()->model().beginTransaction();
    for (const Value& value : valuesOf(property(), values)) addValue(value);
    transaction.commit();
  }
  void insertOne(std::size_t index, const vxArray* value) {
    insertValue(index, valueOf(property(), value));
  }
  void removeOne(const vxArray* value) {
    const std::optional<std::size_t> index = find(value);
    if (!index) reportException(mf0::messages::NoSuchElement());
    removeAt(*index);
  }
  void move(std::size_t from, std::size_t to) {
    Transaction transaction = owner()->model().beginTransaction();
    const Value value = valueAt(from);
    removeAt(from);
    insertValue(to, value);
    transaction.commit();
  }
  void assignAll(const vxArray* values) { assignValues(valuesOf(property(), values)); }
  ArrayPtr readAll() const { return marshalerOf(property()).fromCollection(*this); }
};

template <class View>
View self(const MethodCall& call) {
  return {static_cast<const ElementImpl*>(call.native.object),
          *static_cast<const PropertyInfo*>(call.native.part)};
}

// The k-th argument as a place.
std::size_t placeIn(const MethodCall& call, std::size_t k, std::size_t size) {
  const double place = vexal::doubleData(call.inputs[k])[0];
  if (!(place >= 0 && place <= static_cast<double>(size)) || place != std::trunc(place)) {
    reportException(
        mf0::messages::IndexOutOfRange(vexal::formatNumber(place), std::to_string(size)));
  }
  return static_cast<std::size_t>(place);
}

// What scripts call -------------------------------------------------------------------------------

template <class View>
ArrayPtr size(const MethodCall& call) {
  return vexal::createDouble(static_cast<double>(self<View>(call).size()));
}

template <class View>
ArrayPtr at(const MethodCall& call) {
  const View view = self<View>(call);
  return view.read(placeIn(call, 0, view.size()));
}

template <class View>
ArrayPtr contains(const MethodCall& call) {
  return vexal::createLogical(self<View>(call).find(call.inputs[0]).has_value());
}

template <class View>
ArrayPtr indexOf(const MethodCall& call) {
  const std::optional<std::size_t> index = self<View>(call).find(call.inputs[0]);
  return vexal::createDouble(index ? static_cast<double>(*index) : -1.0);
}

template <class View>
ArrayPtr toArray(const MethodCall& call) {
  return self<View>(call).readAll();
}

template <class View>
ArrayPtr add(const MethodCall& call) {
  self<View>(call).addAll(call.inputs[0]);
  return nullptr;
}

template <class View>
ArrayPtr remove(const MethodCall& call) {
  self<View>(call).removeOne(call.inputs[0]);
  return nullptr;
}

template <class View>
ArrayPtr clear(const MethodCall& call) {
  self<View>(call).clear();
  return nullptr;
}

template <class View>
ArrayPtr assign(const MethodCall& call) {
  self<View>(call).assignAll(call.inputs[0]);
  return nullptr;
}

template <class View>
ArrayPtr insert(const MethodCall& call) {
  View view = self<View>(call);
  view.insertOne(placeIn(call, 0, view.size()), call.inputs[1]);
  return nullptr;
}

template <class View>
ArrayPtr removeAt(const MethodCall& call) {
  View view = self<View>(call);
  view.removeAt(placeIn(call, 0, view.size()));
  return nullptr;
}

template <class View>
ArrayPtr move(const MethodCall& call) {
  View view = self<View>(call);
  view.move(placeIn(call, 0, view.size()), placeIn(call, 1, view.size()));
  return nullptr;
}

constexpr VcosMethod result(std::string_view name, std::string_view type, std::string_view inputs,
                            std::string_view types, vcos::factory::MethodBody body,
                            std::string_view doc) {
  return {.name = name,
          .inputNames = inputs,
          .outputType = type,
          .inputTypes = types,
          .body = body,
          .doc = doc};
}

constexpr VcosMethod change(std::string_view name, std::string_view inputs, std::string_view types,
                            vcos::factory::MethodBody body, std::string_view doc) {
  return result(name, "void", inputs, types, body, doc);
}

template <class View>
constexpr VcosMethod kSetMethods[] = {
    result("size", "double scalar", "", "", &size<View>, "How many it holds."),
    result("at", "any", "index", "double scalar", &at<View>, "What stands at a place, from 0."),
    result("contains", "logical scalar", "value", "any", &contains<View>, "Whether it holds it."),
    result("indexOf", "double scalar", "value", "any", &indexOf<View>,
           "The place where it stands; -1 when it is not held."),
    result("toArray", "any", "", "", &toArray<View>, "All that it holds now, as one array."),
    change("add", "values", "any", &add<View>,
           "Adds one, or all of an array, a cell array or a collection."),
    change("remove", "value", "any", &remove<View>, "Takes it out."),
    change("clear", "", "", &clear<View>, "Takes everything out."),
    change("assign", "values", "any", &assign<View>, "Makes it hold exactly these."),
};

template <class View>
constexpr VcosMethod kSequenceMethods[] = {
    change("insert", "index value", "double scalar, any", &insert<View>,
           "Inserts it so that it stands at that place."),
    change("removeAt", "index", "double scalar", &removeAt<View>, "Takes out what stands there."),
    change("move", "from to", "double scalar, double scalar", &move<View>,
           "Moves what stands at one place to another."),
};

}  // namespace

constinit const vcos::factory::ClassTable detail::kSetTable{
    .name = "mf.zero.Set",
    .doc = "The elements that a property holds: a live view, in no particular order.",
    .methods = kSetMethods<Elements>};
constinit const vcos::factory::ClassTable detail::kSequenceTable{
    .name = "mf.zero.Sequence",
    .superclass = "mf.zero.Set",
    .doc = "The elements that a property holds, in order: a live view.",
    .methods = kSequenceMethods<Elements>};
constinit const vcos::factory::ClassTable detail::kPrimitiveSetTable{
    .name = "mf.zero.PrimitiveSet",
    .doc = "The values that a property holds, each once: a live view.",
    .methods = kSetMethods<Primitives>};
constinit const vcos::factory::ClassTable detail::kPrimitiveSequenceTable{
    .name = "mf.zero.PrimitiveSequence",
    .superclass = "mf.zero.PrimitiveSet",
    .doc = "The values that a property holds, in order: a live view.",
    .methods = kSequenceMethods<Primitives>};

}  // namespace mf::zero::mi
