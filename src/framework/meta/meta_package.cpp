#include "framework/meta/meta_package.h"

#include <unordered_set>
#include <utility>

#include "framework/meta/identity.h"
#include "framework/model_impl.h"

namespace mf::zero::meta {
namespace {

// Calls an operation as its table row says.
class TableInvoker final : public AbstractMethodInvoker {
 public:
  explicit TableInvoker(const OperationInfo& operation) : operation_(operation) {}
  Value invoke(const ModelElement& element) const override {
    return operation_.invoke(*element.impl());
  }

 private:
  const OperationInfo& operation_;
};

// References may be empty, and so may a property that holds a host array; numbers, texts and
// literals are always there.
bool mayBeEmpty(ValueKind kind) { return kind == ValueKind::kElement || kind == ValueKind::kArray; }

}  // namespace

AbstractMetaPackage::~AbstractMetaPackage() = default;

void AbstractMetaPackage::initialize() { initialize(MetaRegistry::getInstance()); }

void AbstractMetaPackage::initialize(MetaRegistry& registry) {
  registerOtherModules();
  registry_ = &registry;
  Registration registration(registry);
  Made former = std::exchange(made_, {});
  try {
    registerAll();
  } catch (...) {
    made_ = std::move(former);
    throw;
  }
  for (const auto& [from, to] : made_.links) from->set(to);
  registration.commit();
}

void AbstractMetaPackage::registerAll() {
  dropFormer();
  Transaction transaction = registry_->model()->beginTransaction(false);
  createRoot();
  instantiate(registry_);
  weave(registry_, &PropertySerializerRegistry::getInstance());
  transaction.commit();
  registry_->registerRootPackage(made_.root);
}

// Before the lock is taken: the others lock for themselves.
void AbstractMetaPackage::registerOtherModules() const {
  std::unordered_set<const ClassInfo*> own;
  for (const PackageInfo& package : module_.packages) {
    own.insert(package.classes.begin(), package.classes.end());
  }
  const auto need = [&](const ClassInfo* other) {
    if (other && !own.contains(other) && !other->meta.get()) classOf(*other);
  };
  for (const ClassInfo* info : own) {
    need(info->super);
    for (const PropertyInfo& property : info->properties) need(property.target);
  }
}

void AbstractMetaPackage::dropFormer() {
  const Package former = registry_->model()->findElement(module_.root).as<Package>();
  if (!former) return;
  Transaction transaction = registry_->model()->beginTransaction(false);
  registry_->unregisterRootPackage(former.uri());
  former->destroy();
  transaction.commit();
}

void AbstractMetaPackage::createRoot() {
  made_.root = create<Package>(module_.root);
  made_.root->setName(u"");
  made_.root->setUri(uriOf(""));
}

void AbstractMetaPackage::instantiate(MetaRegistry* registry) {
  for (const PackageInfo& package : module_.packages) instantiatePackage(registry, package);
}

void AbstractMetaPackage::weave(MetaRegistry* registry, PropertySerializerRegistry* serializers) {
  for (const PackageInfo& package : module_.packages) weavePackage(registry, serializers, package);
}

// Factory operations

template <class X>
X AbstractMetaPackage::create(const uuid& identity) {
  const X created = X::create(registry_->model(), identity);
  made_.elements[identity] = created;
  return created;
}

Package AbstractMetaPackage::createPackage(std::u16string_view name, std::string_view uri) {
  const std::string_view path = uri.starts_with(kSchemaBase) ? uri.substr(kSchemaBase.size()) : uri;
  const Package package = create<Package>(identityOf(path));
  package->setName(name);
  package->setUri(uri);
  return package;
}

Class AbstractMetaPackage::createClass(std::u16string_view name, std::string_view qualifiedName,
                                       bool isAbstract, const uuid& identity) {
  const Class created = create<Class>(identity);
  created->setName(name);
  created->setQualifiedName(qualifiedName);
  created->setIsAbstract(isAbstract);
  return created;
}

Property AbstractMetaPackage::createProperty(std::u16string_view name, ValueFlags flags,
                                             bool isContainment, const uuid& identity) {
  const Property created = create<Property>(identity);
  const bool isSingle = flags == ValueFlags::kSingle;
  created->setName(name);
  created->setValueFlags(flags);
  created->setIsContainment(isContainment);
  created->setIsOrdered(isSingle || isContainment);
  created->setIsUnique(isSingle);
  return created;
}

void AbstractMetaPackage::setPropertyIndex(const Property& property, int index) {
  property->setIndex(index);
}

Enum AbstractMetaPackage::createEnum(std::u16string_view name, const uuid& identity) {
  const Enum created = create<Enum>(identity);
  created->setName(name);
  return created;
}

EnumLiteral AbstractMetaPackage::createEnumLiteral(std::u16string_view name, std::int32_t value,
                                                   const uuid& identity) {
  const EnumLiteral created = create<EnumLiteral>(identity);
  created->setName(name);
  created->setValue(value);
  return created;
}

Operation AbstractMetaPackage::createOperation(std::u16string_view name, const uuid& identity) {
  const Operation created = create<Operation>(identity);
  created->setName(name);
  return created;
}

// Instantiate

void AbstractMetaPackage::instantiatePackage(MetaRegistry*, const PackageInfo& package) {
  made_.packages[std::string(package.path)] = createPackage(package.name, uriOf(package.path));
  for (const ClassInfo* info : package.classes) instantiateClass(*info);
  for (const EnumInfo* info : package.enumerations) instantiateEnum(*info);
  for (const ClassInfo* info : package.classes) {
    for (const OperationInfo& operation : info->operations) instantiateOperation(operation, *info);
  }
}

void AbstractMetaPackage::instantiateClass(const ClassInfo& info) {
  const Class created = createClass(info.name, info.qualifiedName, info.isAbstract, info.identity);
  created->setScopedName(info.scopedName);
  created->setInfo(&info);
  link(info.meta, created);
  made_.types[std::string(info.qualifiedName)] = created;
  for (const PropertyInfo& property : info.properties) instantiateProperty(property);
}

void AbstractMetaPackage::instantiateProperty(const PropertyInfo& info) {
  // The one primitive type that need not be there: fail before anything is linked.
  if (info.kind == ValueKind::kArray) typeNamed(info.type);
  const Property created =
      createProperty(info.name, info.has(kMany) ? ValueFlags::kMany : ValueFlags::kSingle,
                     info.has(kContainment), info.identity);
  created->setIsOrdered(info.has(kOrdered));
  created->setIsUnique(info.has(kUnique));
  created->setIsReadOnly(info.has(kReadOnly));
  created->setIsDerived(info.has(kDerived));
  created->setIsTransient(info.has(kTransient));
  if (info.defaultValue) created->setDefaultValue(toUtf16(info.defaultValue));
  setPropertyIndex(created, info.index);
  created->setInfo(&info);
  link(info.meta, created);
}

void AbstractMetaPackage::instantiateEnum(const EnumInfo& info) {
  const Enum created = createEnum(info.name, info.identity);
  created->setQualifiedName(info.qualifiedName);
  created->setInfo(&info);
  for (const LiteralInfo& literal : info.literals) {
    createEnumLiteral(literal.name, literal.value, literal.identity);
  }
  link(info.meta, created);
  made_.types[std::string(info.qualifiedName)] = created;
}

void AbstractMetaPackage::instantiateOperation(const OperationInfo& info, const ClassInfo& owner) {
  const Operation created = createOperation(info.name, info.identity);
  created->setIsPublic(info.isPublic);
  created->setIsStatic(false);
  created->setIsAbstract(owner.isAbstract);  // an abstract class leaves its operations to others
  created->setIsEvent(false);
  link(info.meta, created);
}

// Weave

template <class X>
X AbstractMetaPackage::made(const uuid& identity) const {
  return made_.elements.at(identity).as<X>();
}

void AbstractMetaPackage::link(const MetaLink& from, const ModelElement& to) {
  made_.links.emplace_back(&from, to.impl());
}

Type AbstractMetaPackage::typeNamed(std::string_view name) {
  const auto known = made_.types.find(name);
  if (known != made_.types.end()) return known->second;
  const Type found = registry_->findType(name);
  if (!found) reportException(mf0::messages::NoSuchType(name));
  return made_.types.emplace(name, found).first->second;
}

std::string AbstractMetaPackage::uriOf(std::string_view packagePath) const {
  std::string uri(kSchemaBase);
  uri += module_.uriPath;
  if (!packagePath.empty()) (uri += '/') += packagePath;
  return uri;
}

void AbstractMetaPackage::weavePackage(MetaRegistry*, PropertySerializerRegistry* serializers,
                                       const PackageInfo& package) {
  const auto packageAt = [&](std::string_view path) { return made_.packages.find(path)->second; };
  const Package self = packageAt(package.path);
  self->setParent(package.parent < 0
                      ? made_.root
                      : packageAt(module_.packages[static_cast<std::size_t>(package.parent)].path));
  for (const ClassInfo* info : package.classes) weaveClass(*info, self);
  for (const ClassInfo* info : package.classes) registerClass(*info, self);
  for (const EnumInfo* info : package.enumerations) {
    weaveEnum(*info, self);
    serializers->registerSerializer(made<Enum>(info->identity), enumSerializer(*info));
  }
}

void AbstractMetaPackage::weaveClass(const ClassInfo& info, const Package& package) {
  const Class self = made<Class>(info.identity);
  self->setPackage(package);
  const ClassInfo& super = info.super ? *info.super : kModelElementClass;
  if (&info != &kModelElementClass) self->setSuperclass(typeNamed(super.qualifiedName).as<Class>());
  for (const PropertyInfo& property : info.properties) weaveProperty(property, self);
  for (const OperationInfo& operation : info.operations) weaveOperation(operation, self);
}

void AbstractMetaPackage::weaveProperty(const PropertyInfo& info, const Class& owner) {
  const Property self = made<Property>(info.identity);
  self->setOwningClass(owner);
  self->setType(typeNamed(info.type));
  if (info.has(kMany) || mayBeEmpty(info.kind)) self->setLower(0);
  if (info.has(kMany)) self->setUpper(kUnbounded);
  self->setIsQualificationUnique(true);
}

void AbstractMetaPackage::weaveOperation(const OperationInfo& info, const Class& owner) {
  const Operation self = made<Operation>(info.identity);
  self->setOwningClass(owner);
  if (!info.resultType.empty()) self->setType(typeNamed(info.resultType));
  if (info.resultMany) {
    self->setLower(0);
    self->setUpper(kUnbounded);
  }
  self->setInvoker(std::make_unique<TableInvoker>(info));
}

void AbstractMetaPackage::registerClass(const ClassInfo& info, const Package& package) {
  const Class self = made<Class>(info.identity);
  if (!info.isAbstract) {
    registry_->registerType(self, collectionOf, [&info](const Model& model) {
      return std::make_unique<Builder>(info, model);
    });
  }
  registry_->registerTypeNames(self, info.scopedName, info.qualifiedName,
                               package.uri() + '#' + toUtf8(info.name));
}

void AbstractMetaPackage::weaveEnum(const EnumInfo& info, const Package& package) {
  const Enum self = made<Enum>(info.identity);
  self->setPackage(package);
  self->setUnderlyingType(typeNamed("Integer").as<PrimitiveType>());
  for (const LiteralInfo& literal : info.literals) {
    made<EnumLiteral>(literal.identity)->setEnum(self);
  }
}

}  // namespace mf::zero::meta
