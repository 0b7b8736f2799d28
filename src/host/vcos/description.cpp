// Filling in described classes.
#include "host/vcos/detail/description.h"

#include "host/detail/class_table.h"
#include "host/detail/messages.h"
#include "host/vcos/detail/objects.h"

namespace vcos {

using vexal::detail::fail;

COSClassInfo::~COSClassInfo() = default;

void factory::VcosFactoryClassInfo::initialize(ClassDefinition& definition) {
  definition.superclass = table_->superclass;
  definition.doc = table_->doc;
  definition.kind = table_->kind;
  definition.isAbstract = table_->isAbstract;
  const auto append = [](auto& rows, const auto& more) {
    rows.insert(rows.end(), more.begin(), more.end());
  };
  append(definition.properties, table_->properties);
  append(definition.methods, table_->methods);
  append(definition.members, table_->members);
}

namespace detail {
namespace {

using factory::MethodAttributes;
using factory::impl::MethodImpl;

std::vector<Property> propertiesOf(const ClassDefinition& definition) {
  std::vector<Property> properties;
  properties.reserve(definition.properties.size());
  for (const factory::PropertyRow& row : definition.properties) {
    properties.push_back({row, nullptr});
    factory::PropertyRow& own = properties.back().row;
    if (own.tellType != nullptr) own.dataType = own.tellType();
    properties.back().type = &dataTypeNamed(own.dataType);
  }
  return properties;
}

std::vector<MethodImpl> methodsOf(const ClassDefinition& definition) {
  std::vector<MethodImpl> methods;
  methods.reserve(definition.methods.size());
  for (const factory::VcosMethod& row : definition.methods) {
    if (row.body == nullptr) fail("InvalidFunction", {row.name});
    methods.push_back(
        {row, COSMethodSignature::createMethodSignature(row.inputNames, row.outputType,
                                                        row.inputTypes, row.optionalInputs)});
  }
  return methods;
}

// Methods of objects are functions by name too.
vexal::detail::Method asFunction(const MethodImpl& method, const HostClass& hostClass) {
  const std::size_t required = method.signature.requiredInputs();
  const std::size_t all = method.signature.inputs().size();
  const vexal::Arity arity{1 + required, 1 + all, method.signature.hasOutput() ? 1U : 0U};
  const auto body = [&method, &hostClass](vexal::Call& call) {
    std::vector<const vxArray*> inputs(call.inputCount() - 1);
    for (std::size_t k = 0; k < inputs.size(); ++k) inputs[k] = call.input(k + 1);
    call.setOutput(0, callMethod(method, hostClass, call.input(0), inputs));
  };
  return {&vexal::detail::symbolFor(method.method.name),
          std::make_shared<const vexal::HostFunction>(vexal::HostFunction{arity, body})};
}

std::vector<vexal::detail::Method> functionsOf(std::span<const MethodImpl> methods,
                                               const HostClass& hostClass) {
  std::vector<vexal::detail::Method> functions;
  for (const MethodImpl& method : methods) {
    const bool isOfObjects = method.method.attributes == MethodAttributes::None;
    if (isOfObjects) functions.push_back(asFunction(method, hostClass));
  }
  return functions;
}

}  // namespace

void Description::inherit(Content& content, const HostClass* superclass) {
  while (superclass != nullptr && superclass->description == nullptr) {
    superclass = superclass->superclass;
  }
  if (superclass == nullptr) return;
  const Content& inherited = superclass->description->content_;
  content.members = inherited.members;
  content.byName = inherited.byName;
}

void Description::addOwnMembers(Content& content, const HostClass& hostClass) {
  const auto add = [&](Member member) {
    const auto place = static_cast<std::uint32_t>(content.members.size());
    const auto [known, isNew] = content.byName.try_emplace(member.name, place);
    if (isNew) {
      content.members.push_back(member);
    } else if (content.members[known->second].definedBy != &hostClass) {
      content.members[known->second] = member;
    } else {
      fail("NameExists", {std::string(hostClass.name) + '.' + std::string(member.name)});
    }
  };
  for (const Property& property : content.properties) {
    add({property.row.name, &hostClass, &property, nullptr});
  }
  for (const MethodImpl& method : content.methods) {
    if (method.method.attributes == MethodAttributes::Constructor) {
      content.constructor = &method;
    } else {
      add({method.method.name, &hostClass, nullptr, &method});
    }
  }
}

void Description::fill(HostClass& hostClass) {
  if (state_ == State::Filled) return;
  if (state_ == State::Filling) fail("SuperclassCycle", {hostClass.name});
  struct Undo {
    State* state;
    ~Undo() {
      if (state != nullptr) *state = State::Named;
    }
  } undo{&(state_ = State::Filling)};

  Content content;
  info_->initialize(content.definition);
  const std::string_view above = content.definition.superclass;
  const HostClass* superclass = above.empty() ? nullptr : &vexal::detail::requireClass(above);
  content.properties = propertiesOf(content.definition);
  content.methods = methodsOf(content.definition);
  inherit(content, superclass);
  addOwnMembers(content, hostClass);
  std::vector<vexal::detail::Method> functions = functionsOf(content.methods, hostClass);

  content_ = std::move(content);
  hostClass.superclass = superclass;
  hostClass.methods = std::move(functions);
  state_ = State::Filled;
  undo.state = nullptr;
}

}  // namespace detail
}  // namespace vcos
