// The static description of every class: what a generated class says about
// itself, and all that the runtime needs to serve it. Tables of these are
// constant-initialised by the generated code; nothing here is computed at load.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include "framework/export.h"
#include "framework/uuid.h"

struct vxArray;

namespace mf::zero {

class BuilderValues;
class Model;
class Value;
struct ClassInfo;
class ElementImpl;
struct ElementStorage;

/// What kind of value a property holds.
enum class ValueKind : std::uint8_t {
  kBoolean,
  kInteger8,
  kInteger,
  kReal,
  kString,
  kArray,
  kEnumeration,
  kElement,
};

/// Facts of a property beyond its kind, as bits of `PropertyInfo::flags`.
enum PropertyFlags : std::uint16_t {
  kMany = 1,          ///< many-valued
  kContainment = 2,   ///< the holder owns the elements held
  kOrdered = 4,       ///< positions mean something
  kUnique = 8,        ///< marked unique in the meta registry
  kReadOnly = 16,     ///< no setter
  kDerived = 32,      ///< computed, not stored
  kTransient = 64,    ///< not saved
  kWithProxies = 128  ///< a collection that may hold elements that are not loaded
};

/// A link from a static description to the meta element made from it at registration; empty
/// before. Registration publishes it, any thread may read it.
class MetaLink {
 public:
  ElementImpl* get() const { return element_.load(std::memory_order_acquire); }
  void set(ElementImpl* element) const { element_.store(element, std::memory_order_release); }

 private:
  mutable std::atomic<ElementImpl*> element_{nullptr};
};

struct LiteralInfo {
  std::u16string_view name;
  std::int32_t value;
  uuid identity;
};

/// Aligned so that values have room beside its address for what else they note of their type.
struct alignas(64) EnumInfo {
  std::u16string_view name;
  std::string_view qualifiedName;
  uuid identity;
  std::span<const LiteralInfo> literals;
  /// Registers the enumeration's package with the meta registry if that has not happened yet.
  void (*ensureRegistered)() = nullptr;
  MetaLink meta = {};

  /// The literal with that value, or null.
  const LiteralInfo* find(std::int32_t value) const;
  /// The literal with that name, or null.
  const LiteralInfo* find(std::u16string_view literal) const;
};

struct PropertyInfo {
  std::u16string_view name;
  std::string_view type;  ///< registry name of the primitive; qualified name of a class or enum
  ValueKind kind;
  std::uint16_t flags;
  std::uint16_t index;   ///< counts on from the superclass; 0 for a derived property
  std::uint32_t offset;  ///< of the value in the class's storage
  uuid identity;
  const ClassInfo* owner;
  const ClassInfo* target = nullptr;       ///< element class, for kElement
  const EnumInfo* enumeration = nullptr;   ///< for kEnumeration
  const char* defaultValue = nullptr;      ///< as declared; null when none is
  const PropertyInfo* opposite = nullptr;  ///< the other end of a two-sided reference
  /// The hand-written check of a proposed host array; throws to refuse it.
  void (*check)(const ElementImpl&, const vxArray*) = nullptr;
  /// The hand-written value of a derived property.
  Value (*derive)(const ElementImpl&) = nullptr;
  MetaLink meta = {};

  bool has(PropertyFlags flag) const { return (flags & flag) != 0; }
  bool hasAny(int ofFlags) const { return (flags & ofFlags) != 0; }
  bool isReferenceList() const { return kind == ValueKind::kElement && has(kMany); }
  bool isStoredReal() const {
    return kind == ValueKind::kReal && !hasAny(kMany | kDerived | kReadOnly);
  }
};

struct OperationInfo {
  std::u16string_view name;
  uuid identity;
  bool isPublic;
  std::string_view resultType;
  bool resultMany;
  Value (*invoke)(const ElementImpl&);
  MetaLink meta = {};
};

/// How the runtime makes and ends the native parts of a class. Null functions for an abstract one.
struct NativeInfo {
  std::uint32_t storageSize = 0;
  ElementImpl* (*construct)(void* cell, const uuid& identity) = nullptr;
  ElementStorage* (*constructStorage)(void* where) = nullptr;
  void (*destroyStorage)(ElementStorage*) = nullptr;
  std::unique_ptr<BuilderValues> (*newBuilder)(const ClassInfo& info, Model model) = nullptr;
};

struct ClassInfo {
  std::u16string_view name;
  std::string_view qualifiedName;
  std::string_view scopedName;
  uuid identity;
  bool isAbstract;
  const ClassInfo* super;
  std::span<const PropertyInfo> properties;  ///< own ones, in index order
  std::span<const OperationInfo> operations;
  std::uint16_t firstIndex;  ///< index of the first own indexed property
  std::uint16_t indexCount;  ///< the highest index, inherited ones included
  NativeInfo native;
  /// Registers the class's package with the meta registry if that has not happened yet.
  void (*ensureRegistered)() = nullptr;
  /// A process-wide small number, given at the class's first element; 0 before.
  mutable std::atomic<std::uint32_t> number{0};
  MetaLink meta = {};

  bool isA(const ClassInfo& other) const {
    if (this == &other) [[likely]]
      return true;
    const ClassInfo* c = super;
    while (c && c != &other) c = c->super;
    return c != nullptr;
  }
  /// The property of that index, inherited ones included; null for any other index.
  MF0_API const PropertyInfo* findByIndex(std::int64_t index) const;
  /// The property of that name, inherited ones included, derived ones too; null if there is none.
  MF0_API const PropertyInfo* findByName(std::u16string_view propertyName) const;
};

struct PackageInfo {
  std::u16string_view name;
  std::string_view path;  ///< dotted; empty for the root
  int parent;             ///< position in the module's package list; -1 for a child of the root
  std::span<const ClassInfo* const> classes;
  std::span<const EnumInfo* const> enumerations;
};

}  // namespace mf::zero
