// The meta registry: every registered package, class, enumeration and primitive type,
// found by name in constant time, and how to build each class.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <variant>

#include "framework/collection.h"
#include "framework/export.h"
#include "framework/meta/meta.h"
#include "framework/meta/serializer.h"
#include "framework/meta/staged.h"
#include "framework/model.h"
#include "framework/primitive_collection.h"

namespace mf::zero::meta {

/// A view on a many-valued property.
using Collection = std::variant<ReferenceCollection, AbstractPrimitiveCollection>;
/// Gives the collection that holds a many-valued property of an element. Raises NoSuchProperty.
using CollectionAccessor = std::function<Collection(const ModelElement&, const Property&)>;
/// Makes a fresh builder of one class for a model.
using BuilderFactory = std::function<std::unique_ptr<Builder>(const Model&)>;

/// The accessor of every class that is described by a ClassInfo.
MF0_API Collection collectionOf(const ModelElement& element, const Property& property);

/// Held for the whole of a registration. Locking it a second time on the same thread raises
/// std::system_error (resource_deadlock_would_occur) instead of waiting for ever.
class MF0_API RegistryMutex {
 public:
  void lock();
  void unlock() noexcept;

 private:
  std::mutex mutex_;
  std::atomic<std::thread::id> owner_{};
};

/// The one registry of the process. Look-ups may be made from any thread at any time and see only
/// complete registrations; changes are made inside a Registration, and one made outside is a
/// registration of its own. An answer that finds nothing is an empty handle or null.
class MF0_API MetaRegistry {
 public:
  /// Knows the primitive types and the framework's own classes. Lives as long as the process.
  static MetaRegistry& getInstance();
  MetaRegistry(const MetaRegistry&) = delete;
  MetaRegistry& operator=(const MetaRegistry&) = delete;

  /// The model of all meta elements. Frozen; thawed by a Registration while it lasts.
  const Model& model() const { return model_; }

  // Packages and types.

  /// Makes a root package known by its URI, and everything in it by its names. Raises
  /// CannotCreateDuplicateIdentity, naming the URI, when another root has it.
  void registerRootPackage(const Package& root);
  /// Forgets the root package and everything in it; an unknown URI is ignored. The elements stay.
  void unregisterRootPackage(std::string_view uri);
  Package findRootPackage(std::string_view uri) const;
  /// A package, root or not, by its URI.
  Package findPackage(std::string_view uri) const;

  /// A class, enumeration or primitive type by qualified name: "kxsim.design.Figure", "Real".
  Type findType(std::string_view qualifiedName) const;
  /// The class of that qualified, scoped or schema name.
  Class findClass(std::string_view name) const;
  Enum findEnum(std::string_view qualifiedName) const;

  /// A primitive type by name. Raises NoSuchType with that name.
  PrimitiveType primitiveType(std::string_view name) const;
  /// Adds a primitive type, or brings a removed one back; a known name changes nothing.
  PrimitiveType registerPrimitiveType(std::string_view name);
  /// Forgets the name; properties that have the type keep it. An unknown name is ignored.
  void unregisterPrimitiveType(std::string_view name);

  // How classes are built.

  /// Raises CannotUseEmptyHandle for an empty class, CannotAddNonExistentObject for a missing
  /// accessor or factory.
  void registerType(const Class& type, CollectionAccessor accessor, BuilderFactory factory);
  /// Further names of a class for `findClass`: scoped ("kxsim::design::Figure"), qualified
  /// ("kxsim.design.Figure") and schema name (package URI, "#", name), by which stored data say
  /// a class.
  void registerTypeNames(const Class& type, std::string_view scoped, std::string_view qualified,
                         std::string_view schema);
  /// Null for a class without a builder, an abstract one.
  BuilderFactory findBuilderFactory(const Class& type) const;
  CollectionAccessor findCollectionAccessor(const Class& type) const;
  /// A new element of the class. Raises CannotCreateAbstractClass for a class without a builder,
  /// and what `create` raises. A nil identity asks for a fresh one.
  ModelElement createElement(const Class& type, const Model& model,
                             const uuid& identity = {}) const;

 private:
  friend class AbstractMetaPackage;
  friend class Registration;
  struct Construction {
    CollectionAccessor accessor;
    BuilderFactory factory;
  };
  struct Tables {
    NameMap<Package> roots;     ///< by URI
    NameMap<Package> packages;  ///< by URI
    NameMap<Type> types;        ///< by qualified name
    NameMap<Class> classes;     ///< by every name they have
    std::unordered_map<ModelElement, std::shared_ptr<const Construction>> constructions;
  };

  MetaRegistry();
  template <class Change>
  void change(Change&& make);
  static void add(Tables& tables, const Package& package);
  static void remove(Tables& tables, const Package& package);
  std::shared_ptr<const Construction> constructionOf(const Class& type) const;

  Model model_;
  RegistryMutex mutex_;
  Staged<Tables> tables_;
};

/// A change of the registries in progress: holds the registry's mutex, keeps the meta model thawed
/// and in one transaction. Destroyed without commit it leaves everything as it was. Raises
/// std::system_error when the mutex cannot be locked, and CannotNestTransaction when somebody has
/// a transaction open on the meta model, whose end would take back what was published.
class MF0_API Registration {
 public:
  explicit Registration(MetaRegistry& registry);
  Registration(const Registration&) = delete;
  Registration& operator=(const Registration&) = delete;

  /// Publishes the new versions of both registries and commits. Observers of the meta model that
  /// throw are heard by the caller; what was registered stays.
  void commit();

 private:
  std::unique_lock<RegistryMutex> lock_;
  Model model_;
  Model::Thawer thaw_;
  Staged<MetaRegistry::Tables>::Edit tables_;
  Staged<PropertySerializerRegistry::Table>::Edit serializers_;
  Transaction transaction_;
};

}  // namespace mf::zero::meta
