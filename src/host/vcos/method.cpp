#include "host/vcos/method.h"

#include <algorithm>
#include <array>

#include "host/detail/messages.h"
#include "host/vcos/detail/data_type.h"

namespace vcos {
namespace {

using vexal::detail::fail;

// The parts between separators, without blanks around them; empty parts are left out.
std::vector<std::string_view> partsOf(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(separator), text.size());
    std::string_view part = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    while (part.starts_with(' ')) part.remove_prefix(1);
    while (part.ends_with(' ')) part.remove_suffix(1);
    if (!part.empty()) parts.push_back(part);
  }
  return parts;
}

std::string placeName(std::size_t k) { return "input" + std::to_string(k + 1); }

void requireOptionalLast(std::span<const COSMethodSignature::Input> inputs,
                         std::string_view inputTypes) {
  const auto firstOptional =
      std::ranges::find(inputs, true, &COSMethodSignature::Input::isOptional);
  if (std::ranges::count(firstOptional, inputs.end(), false,
                         &COSMethodSignature::Input::isOptional) > 0) {
    fail("InvalidSignature", {inputTypes, "an input that must be given follows one that need not"});
  }
}

}  // namespace

COSMethodSignature COSMethodSignature::createMethodSignature(std::string_view inputNames,
                                                             std::string_view outputType,
                                                             std::string_view inputTypes,
                                                             std::size_t optionalInputs) {
  const std::vector<std::string_view> names = partsOf(inputNames, ' ');
  std::vector<std::string_view> types = partsOf(inputTypes, ',');
  if (names.size() > types.size()) {
    fail("InvalidSignature", {inputNames, "it has more names than types"});
  }
  // What is not named is the object.
  const bool isObjectFirst = !types.empty() && (names.empty() || types.size() > names.size());
  if (isObjectFirst) types.erase(types.begin());

  COSMethodSignature signature;
  for (std::size_t k = 0; k < types.size(); ++k) {
    const bool isNamed = k < names.size();
    const bool isOptional =
        k + optionalInputs >= types.size() || (isNamed && names[k].starts_with("opt_"));
    signature.inputs_.push_back({internal::makeInterned(isNamed ? names[k] : placeName(k)),
                                 internal::makeInterned(types[k]), isOptional,
                                 &detail::dataTypeNamed(types[k])});
  }
  signature.outputType_ = internal::makeInterned(outputType);
  requireOptionalLast(signature.inputs_, inputTypes);
  return signature;
}

std::size_t COSMethodSignature::requiredInputs() const noexcept {
  return static_cast<std::size_t>(std::ranges::count(inputs_, false, &Input::isOptional));
}

namespace factory::impl {
namespace {

// Tells of a failed conversion which argument it was for.
vcos::detail::Converted convertArgument(const MethodImpl& method, std::size_t k,
                                        const vxArray* value) {
  const COSMethodSignature::Input& input = method.signature.inputs()[k];
  try {
    return vcos::detail::convertTo(*input.parsed, value);
  } catch (const vexal::HostError& error) {
    vexal::Diagnostic diagnostic = error.diagnostic();
    diagnostic.add(vexal::detail::Key("ForArgument").id(), {input.name.text(), method.method.name});
    vexal::throwDiagnostic(diagnostic);
  }
}

}  // namespace

COSMethodSignature Invoker::createSignature(std::string_view inputNames,
                                            std::string_view outputType,
                                            std::span<const std::string_view> inputTypes) {
  std::string types;
  for (const std::string_view type : inputTypes) (types += type) += ',';
  return COSMethodSignature::createMethodSignature(inputNames, outputType, types);
}

vexal::ArrayPtr Invoker::invoke(const MethodImpl& method, MethodCall call,
                                std::span<const vxArray* const> inputs) {
  const std::size_t required = method.signature.requiredInputs();
  const std::size_t all = method.signature.inputs().size();
  const auto refuse = [&](vexal::detail::Key key, std::size_t limit) {
    fail(key, {method.method.name, std::to_string(limit), std::to_string(inputs.size())});
  };
  if (inputs.size() < required) refuse("TooFewArguments", required);
  if (inputs.size() > all) refuse("TooManyArguments", all);

  std::array<const vxArray*, 8> few;
  std::vector<const vxArray*> many(inputs.size() > few.size() ? inputs.size() : 0);
  const std::span<const vxArray*> values(many.empty() ? few.data() : many.data(), inputs.size());
  std::vector<vexal::ArrayPtr> made;
  for (std::size_t k = 0; k < inputs.size(); ++k) {
    vcos::detail::Converted converted = convertArgument(method, k, inputs[k]);
    values[k] = converted.get();
    if (vexal::ArrayPtr owned = converted.take()) made.push_back(std::move(owned));
  }
  call.inputs = values;
  // A conversion runs code of others, which may have destroyed the native.
  if (call.native.object != nullptr) validateSelfPointer(call.object);
  return method.method.body(call);
}

}  // namespace factory::impl
}  // namespace vcos
