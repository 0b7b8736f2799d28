#include "framework/meta/registry.h"

#include <algorithm>
#include <system_error>
#include <unordered_set>

#include "framework/meta/detail/tables.h"
#include "framework/meta/identity.h"
#include "framework/model_impl.h"

namespace mf::zero::meta {
namespace {

constexpr std::string_view kPrimitiveTypes[] = {"String",  "StdString", "Integer8",
                                                "Integer", "Real",      "Boolean"};

template <class T>
T lookUp(const NameMap<T>& table, std::string_view name) {
  const auto found = table.find(name);
  return found == table.end() ? T() : found->second;
}

template <class T>
void put(NameMap<T>& table, std::string name, const T& element) {
  const auto [place, isNew] = table.try_emplace(std::move(name), element);
  if (!isNew && place->second != element) {
    reportException(mf0::messages::CannotCreateDuplicateIdentity(place->first));
  }
}

void collect(const Package& package, std::unordered_set<ModelElement>& inside) {
  inside.insert(package);
  for (const Type& type : package->getTypes()) inside.insert(type);
  for (const Package& child : package->getPackages()) collect(child, inside);
}

// Registers the framework's own classes; the elements live on in the registry's model.
class FrameworkPackage final : public AbstractMetaPackage {
 public:
  FrameworkPackage() : AbstractMetaPackage(kFrameworkModule) {}
};

}  // namespace

Collection collectionOf(const ModelElement& element, const Property& property) {
  const PropertyInfo& info = infoOf(property);
  if (!element->classInfo().isA(*info.owner) || !info.has(kMany)) {
    reportException(
        mf0::messages::NoSuchProperty(element->classInfo().qualifiedName, toUtf8(info.name)));
  }
  if (info.kind == ValueKind::kElement) return ReferenceCollection(element.impl(), info);
  return AbstractPrimitiveCollection(element.impl(), info);
}

// RegistryMutex

void RegistryMutex::lock() {
  if (owner_.load(std::memory_order_relaxed) == std::this_thread::get_id()) {
    throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur),
                            "the meta registry is being changed by this thread already");
  }
  mutex_.lock();
  owner_.store(std::this_thread::get_id(), std::memory_order_relaxed);
}

void RegistryMutex::unlock() noexcept {
  owner_.store(std::thread::id(), std::memory_order_relaxed);
  mutex_.unlock();
}

// Registration

Registration::Registration(MetaRegistry& registry)
    : lock_(registry.mutex_),
      model_(registry.model_),
      thaw_(Model::Freezer(model_).thaw()),
      tables_(registry.tables_),
      serializers_(PropertySerializerRegistry::getInstance().table_),
      transaction_(model_->beginTransaction(true)) {}

void Registration::commit() {
  tables_.publish();
  serializers_.publish();
  transaction_.commit();
}

// MetaRegistry

MetaRegistry& MetaRegistry::getInstance() {
  // Never destroyed: meta elements may be asked while the process ends.
  static auto& registry = *new MetaRegistry;
  return registry;
}

MetaRegistry::MetaRegistry() : model_(Model::createShared()) {
  Model::Freezer(model_).freeze();
  for (const std::string_view name : kPrimitiveTypes) registerPrimitiveType(name);
  FrameworkPackage().initialize(*this);
}

template <class Change>
void MetaRegistry::change(Change&& make) {
  if (tables_.isEditing()) return make(tables_.next());
  Registration registration(*this);
  make(tables_.next());
  registration.commit();
}

void MetaRegistry::registerRootPackage(const Package& root) {
  change([&](Tables& tables) {
    put(tables.roots, root.uri(), root);
    add(tables, root);
  });
}

void MetaRegistry::add(Tables& tables, const Package& package) {
  put(tables.packages, package.uri(), package);
  for (const Type& type : package->getTypes()) {
    put(tables.types, type.qualifiedName(), type);
    if (const Class asClass = type.as<Class>()) {
      put(tables.classes, type.qualifiedName(), asClass);
    }
  }
  for (const Package& child : package->getPackages()) add(tables, child);
}

void MetaRegistry::unregisterRootPackage(std::string_view uri) {
  change([&](Tables& tables) {
    if (const Package root = lookUp(tables.roots, uri)) remove(tables, root);
  });
}

void MetaRegistry::remove(Tables& tables, const Package& package) {
  std::unordered_set<ModelElement> inside;
  collect(package, inside);
  const auto isInside = [&](const auto& entry) { return inside.contains(entry.second); };
  std::erase_if(tables.roots, isInside);
  std::erase_if(tables.packages, isInside);
  std::erase_if(tables.types, isInside);
  std::erase_if(tables.classes, isInside);
  std::erase_if(tables.constructions,
                [&](const auto& entry) { return inside.contains(entry.first); });
}

Package MetaRegistry::findRootPackage(std::string_view uri) const {
  return tables_.read([&](const Tables& tables) { return lookUp(tables.roots, uri); });
}

Package MetaRegistry::findPackage(std::string_view uri) const {
  return tables_.read([&](const Tables& tables) { return lookUp(tables.packages, uri); });
}

Type MetaRegistry::findType(std::string_view qualifiedName) const {
  return tables_.read([&](const Tables& tables) { return lookUp(tables.types, qualifiedName); });
}

Class MetaRegistry::findClass(std::string_view name) const {
  return tables_.read([&](const Tables& tables) { return lookUp(tables.classes, name); });
}

Enum MetaRegistry::findEnum(std::string_view qualifiedName) const {
  return findType(qualifiedName).as<Enum>();
}

PrimitiveType MetaRegistry::primitiveType(std::string_view name) const {
  const PrimitiveType type = findType(name).as<PrimitiveType>();
  if (!type) reportException(mf0::messages::NoSuchType(name));
  return type;
}

PrimitiveType MetaRegistry::registerPrimitiveType(std::string_view name) {
  PrimitiveType type;
  change([&](Tables& tables) {
    const uuid identity = identityOf(name);
    type = model_->findElement(identity).as<PrimitiveType>();
    if (!type) {
      type = PrimitiveType::create(model_, identity);
      type->setName(toUtf16(name));
      type->setQualifiedName(name);
    }
    put<Type>(tables.types, std::string(name), type);
  });
  return type;
}

void MetaRegistry::unregisterPrimitiveType(std::string_view name) {
  change([&](Tables& tables) {
    const auto found = tables.types.find(name);
    if (found != tables.types.end() && found->second.as<PrimitiveType>()) {
      tables.types.erase(found);
    }
  });
}

void MetaRegistry::registerType(const Class& type, CollectionAccessor accessor,
                                BuilderFactory factory) {
  if (!type) reportException(mf0::messages::CannotUseEmptyHandle());
  if (!accessor || !factory) reportException(mf0::messages::CannotAddNonExistentObject());
  auto construction =
      std::make_shared<const Construction>(Construction{std::move(accessor), std::move(factory)});
  change([&](Tables& tables) {
    tables.constructions.insert_or_assign(type, std::move(construction));
  });
}

void MetaRegistry::registerTypeNames(const Class& type, std::string_view scoped,
                                     std::string_view qualified, std::string_view schema) {
  if (!type) reportException(mf0::messages::CannotUseEmptyHandle());
  change([&](Tables& tables) {
    for (const std::string_view name : {scoped, qualified, schema}) {
      put(tables.classes, std::string(name), type);
    }
  });
}

std::shared_ptr<const MetaRegistry::Construction> MetaRegistry::constructionOf(
    const Class& type) const {
  return tables_.read([&](const Tables& tables) {
    const auto found = tables.constructions.find(type);
    return found == tables.constructions.end() ? nullptr : found->second;
  });
}

BuilderFactory MetaRegistry::findBuilderFactory(const Class& type) const {
  const auto construction = constructionOf(type);
  return construction ? construction->factory : nullptr;
}

CollectionAccessor MetaRegistry::findCollectionAccessor(const Class& type) const {
  const auto construction = constructionOf(type);
  return construction ? construction->accessor : nullptr;
}

ModelElement MetaRegistry::createElement(const Class& type, const Model& model,
                                         const uuid& identity) const {
  return type->instantiateBuilder(model)->create(identity);
}

}  // namespace mf::zero::meta
