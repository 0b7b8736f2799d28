// "mf.zero.ModelElement": what every element answers.
#include "framework/meta/meta.h"
#include "framework/mi/host_classes.h"
#include "framework/mi/host_objects.h"
#include "framework/model_impl.h"
#include "host/text.h"
#include "host/vcos/type_repository.h"

namespace mf::zero::mi {
namespace {

using vcos::factory::MethodAttributes;
using vcos::factory::MethodCall;
using vcos::factory::VcosMethod;
using vexal::ArrayPtr;

ElementImpl& self(const MethodCall& call) { return *static_cast<ElementImpl*>(call.native.object); }

ArrayPtr destroy(const MethodCall& call) {
  self(call).destroy();
  return nullptr;
}

ArrayPtr staticMetaClass(const MethodCall& call) {
  return toHost(meta::classOf(elementClass(call.hostClass.name())));
}

ArrayPtr identity(const MethodCall& call) {
  return vexal::createChar(self(call).Uuid().toString());
}

ArrayPtr isValid(const MethodCall& call) {
  const auto native = vcos::factory::impl::nativeOf(call.inputs[0], kElements);
  return vexal::createLogical(native.object != nullptr);
}

ArrayPtr model(const MethodCall& call) { return toHost(self(call).getModel()); }

ArrayPtr owner(const MethodCall& call) { return toHost(self(call).getOwner()); }

constexpr VcosMethod kMethods[] = {
    {.name = "StaticMetaClass",
     .attributes = MethodAttributes::Static,
     .outputType = "mf.zero.meta.Class",
     .body = &staticMetaClass,
     .doc = "The meta class of the class."},
    {.name = "isValid",
     .attributes = MethodAttributes::Static,
     .inputNames = "object",
     .outputType = "logical scalar",
     .inputTypes = "any",
     .body = &isValid,
     .doc = "Whether an object refers to an element that has not been destroyed."},
    {.name = "destroy",
     .body = &destroy,
     .doc = "Destroys the element and what it contains, and takes them out of every reference."},
    {.name = "identity",
     .outputType = vcos::factory::detail::kStringScalar,
     .body = &identity,
     .doc = "The identity, which is fixed at creation, as text."},
    {.name = "model",
     .outputType = kModelName,
     .body = &model,
     .doc = "The model that the element belongs to."},
    {.name = "owner",
     .outputType = kElementName,
     .body = &owner,
     .doc = "The element that contains this one; an empty array for a root."},
};

}  // namespace

constinit const vcos::factory::ClassTable detail::kElementTable{.name = kElementName,
                                                                .doc = "The root of all elements.",
                                                                .isAbstract = true,
                                                                .methods = kMethods};

}  // namespace mf::zero::mi
