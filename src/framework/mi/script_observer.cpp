#include "framework/mi/script_observer.h"

#include <memory>
#include <string>
#include <vector>

#include "framework/messages.h"
#include "framework/mi/host_classes.h"
#include "framework/mi/host_objects.h"
#include "framework/mi/meta_marshaler_registry.h"
#include "framework/mi/native_box.h"
#include "framework/model_impl.h"
#include "host/function.h"
#include "host/record.h"
#include "host/text.h"
#include "host/vcos/script.h"

namespace mf::zero::mi {
namespace {

using vcos::factory::MethodCall;
using vexal::ArrayPtr;
using Box = detail::NativeBox<Subscription>;

constexpr std::string_view kMethod = "changed";

constinit const vcos::NativeFamily kSubscriptions =
    Box::family("subscription", [](const vcos::Native&) -> const vcos::COSClass* {
      return vcos::COSClass::getClass(kSubscriptionName);
    });

// Change sets -------------------------------------------------------------------------------------

using Changes = std::vector<const Change*>;

// A 1-by-n struct array with a record for each; `fill` stores its fields.
template <class Fill>
ArrayPtr records(const Changes& changes, std::initializer_list<std::string_view> fields,
                 Fill&& fill) {
  const std::size_t dims[] = {1, changes.size()};
  ArrayPtr array = vexal::createStruct(vexal::Dims(dims), {fields.begin(), fields.size()});
  for (std::size_t k = 0; k < changes.size(); ++k) {
    fill(*changes[k], [&](std::string_view field, const ArrayPtr& value) {
      vexal::setField(array.get(), field, value.get(), k);
    });
  }
  return array;
}

ArrayPtr createdElements(const Changes& changes) {
  std::vector<ModelElement> elements;
  elements.reserve(changes.size());
  for (const Change* change : changes) elements.push_back(change->element());
  return toHost(std::move(elements), ModelElement::classInfo());
}

ArrayPtr destroyedElements(const Changes& changes) {
  return records(changes, {"Identity", "Class"}, [](const Change& change, const auto& set) {
    set("Identity", vexal::createChar(change.Uuid().toString()));
    set("Class", vexal::createChar(change.element()->classInfo().qualifiedName));
  });
}

ArrayPtr modifiedProperties(const Changes& changes) {
  return records(changes, {"Element", "Property", "OldValue", "NewValue"},
                 [](const Change& change, const auto& set) {
                   const PropertyInfo& property = *change.property();
                   set("Element", toHost(change.element()));
                   set("Property", vexal::createChar(property.name));
                   set("OldValue", arrayOf(property, change.oldValue()));
                   set("NewValue", arrayOf(property, change.newValue()));
                 });
}

// Observers ---------------------------------------------------------------------------------------

void checkObserver(const vxArray* observer) {
  if (vexal::isClass(observer, vexal::ClassId::Char)) {
    const std::string name = vexal::toUtf8(vexal::charText(observer));
    if (!vexal::isFunction(name)) vxErrMsgId("Vexal:host", "UnknownFunction", name);
    return;
  }
  const auto answers = vexal::script::hasMember(observer, kMethod);
  if (!answers || !answers.value || vexal::elementCount(observer) != 1) {
    reportException(mf0::messages::CannotTellObserver(vexal::describe(observer)));
  }
}

void tell(const vxArray* observer, const ChangeSet& changes) {
  const ArrayPtr description = describeChanges(changes);
  const vxArray* const inputs[] = {description.get()};
  const bool isFunction = vexal::isClass(observer, vexal::ClassId::Char);
  const auto told = isFunction
                        ? vexal::script::call(vexal::toUtf8(vexal::charText(observer)), inputs)
                        : vexal::script::invoke(observer, kMethod, inputs);
  if (!told) vexal::throwDiagnostic(*told.error);
}

ArrayPtr end(const MethodCall& call) {
  Box::in(call.native) = Subscription();
  return nullptr;
}

constexpr vcos::factory::VcosMethod kMethods[] = {
    {.name = "end", .body = &end, .doc = "Tells the observer no more; may be called again."},
};

}  // namespace

constinit const vcos::factory::ClassTable detail::kSubscriptionTable{
    .name = kSubscriptionName,
    .doc = "An observation of a model, which lasts until it ends or the last reference to it goes.",
    .methods = kMethods};

ArrayPtr describeChanges(const ChangeSet& changes) {
  Changes created;
  Changes destroyed;
  Changes modified;
  for (const Change& change : changes) {
    switch (change.kind()) {
      case ChangeKind::kCreated: created.push_back(&change); break;
      case ChangeKind::kDestroyed: destroyed.push_back(&change); break;
      case ChangeKind::kModified: modified.push_back(&change); break;
    }
  }
  ArrayPtr description = vexal::createStruct();
  vexal::setField(description.get(), "Created", createdElements(created).get());
  vexal::setField(description.get(), "Destroyed", destroyedElements(destroyed).get());
  vexal::setField(description.get(), "Modified", modifiedProperties(modified).get());
  return description;
}

ArrayPtr announceObserver(const Model& model, const vxArray* observer) {
  checkObserver(observer);
  // Shared, for the model copies what it calls.
  const std::shared_ptr<vxArray> kept = vexal::deepCopy(observer);
  return Box::announce(kSubscriptions, model->observe([kept](const ChangeSet& changes) {
    tell(kept.get(), changes);
  }));
}

}  // namespace mf::zero::mi
