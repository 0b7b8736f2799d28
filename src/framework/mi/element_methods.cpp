#include "framework/mi/element_methods.h"

#include "framework/messages.h"
#include "framework/model_impl.h"

namespace mf::zero::mi::detail {

vexal::ArrayPtr construct(const vcos::factory::MethodCall& call) {
  const auto& info = *static_cast<const ClassInfo*>(call.method.context);
  const Model model = call.inputs.empty() ? Model() : modelOf(call.inputs[0]);
  if (!model) reportException(mf0::messages::CannotCreateWithoutModel());
  const CreationArguments arguments = readCreationArguments(call.inputs.subspan(1), model, info);
  const ModelElement created = createChecked(
      arguments, model, [&] { return arguments.builder->create(arguments.identity); });
  vcos::factory::basic::BindingRegistry::announceForConstructor(
      kElements, {created.impl()}, call.hostClass.name(), call.constructed,
      false);  // an observer may have met the element already
  return nullptr;
}

}  // namespace mf::zero::mi::detail
