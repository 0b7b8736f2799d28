// Properties and operations: what a class has, and of which type.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "framework/meta/type.h"

namespace mf::zero {

namespace meta {

class Class;

/// How many values a property holds.
enum class ValueFlags : std::int32_t { kSingle = 1, kMany = 2 };

}  // namespace meta

template <>
struct MF0_API EnumTraits<meta::ValueFlags> {
  static const EnumInfo kInfo;
  static const EnumInfo& info() { return kInfo; }
};

}  // namespace mf::zero

namespace mf::zero::meta {

/// The upper bound of what may be held any number of times.
inline constexpr std::int32_t kUnbounded = -1;

/// Something with a name, a type and a multiplicity. Abstract.
class MF0_API TypedElement : public Handle<TypedElement, ModelElement> {
 public:
  class Impl;
  using Handle::Handle;

  std::u16string name() const;
  Type type() const;
};

class MF0_API TypedElement::Impl : public ElementImpl {
 public:
  using BuilderImpl = BuilderBase<Builder>;
  struct Storage : ElementImpl::Storage {
    Text name;
    ReferenceSlot type;
    std::int32_t lower = 0;
    std::int32_t upper = 0;
  };
  static const PropertyInfo kProperties[4];
  static const ClassInfo kClass;
  using ElementImpl::ElementImpl;

  const std::u16string& getName() const { return read<Storage>().name.str(); }
  void setName(std::u16string_view name) { assign(kProperties[0], own<Storage>().name, name); }
  /// The type of the values; for an operation, of its result.
  Type getType() const;
  void setType(const Type& type);
  bool hasType() const { return has(kProperties[1]); }
  /// The fewest values there can be; 1 unless set.
  std::int32_t getLower() const { return read<Storage>().lower; }
  void setLower(std::int32_t lower) { assign(kProperties[2], own<Storage>().lower, lower); }
  /// The most values there can be, or kUnbounded; 1 unless set.
  std::int32_t getUpper() const { return read<Storage>().upper; }
  void setUpper(std::int32_t upper) { assign(kProperties[3], own<Storage>().upper, upper); }
  /// Name of the owning class, ".", name; the name alone while no class owns it.
  std::string getQualifiedName() const;
  /// The class that owns the property or operation; empty while none does.
  Class getOwningClass() const;
};

/// A property of a class.
class MF0_API Property : public ConcreteHandle<Property, TypedElement> {
 public:
  class Impl;
  using ConcreteHandle::ConcreteHandle;

  std::string qualifiedName() const;
  std::int32_t index() const;
};

class MF0_API Property::Impl : public TypedElement::Impl {
 public:
  using BuilderImpl = BuilderBase<Builder, TypedElement::Impl::BuilderImpl>;
  struct Storage : TypedElement::Impl::Storage {
    std::int32_t index = 0;
    ValueFlags valueFlags{};
    Text defaultValue;
    bool hasDefault = false;
    bool isContainment = false;
    bool isOrdered = false;
    bool isUnique = false;
    bool isReadOnly = false;
    bool isDerived = false;
    bool isTransient = false;
    bool isQualificationUnique = false;
    const PropertyInfo* info = nullptr;
    const PropertyInfo* storedReal = nullptr;
  };
  static const PropertyInfo kProperties[12];
  static const ClassInfo kClass;
  using TypedElement::Impl::Impl;

  /// Counts on from the superclass, 1 and up; 0 for a derived property.
  std::int32_t getIndex() const { return read<Storage>().index; }
  void setIndex(std::int32_t index) { assign(kProperties[0], own<Storage>().index, index); }
  ValueFlags getValueFlags() const { return read<Storage>().valueFlags; }
  void setValueFlags(ValueFlags flags) { assign(kProperties[1], own<Storage>().valueFlags, flags); }
  bool isMany() const { return getValueFlags() == ValueFlags::kMany; }
  /// The declared default as text; nothing when none is declared.
  std::optional<std::u16string> getDefaultValue() const;
  void setDefaultValue(std::optional<std::u16string_view> text);
  /// Whether the owner owns the elements that it holds here.
  bool isContainment() const { return read<Storage>().isContainment; }
  void setIsContainment(bool on) { assign(kProperties[4], own<Storage>().isContainment, on); }
  bool isOrdered() const { return read<Storage>().isOrdered; }
  void setIsOrdered(bool on) { assign(kProperties[5], own<Storage>().isOrdered, on); }
  bool isUnique() const { return read<Storage>().isUnique; }
  void setIsUnique(bool on) { assign(kProperties[6], own<Storage>().isUnique, on); }
  bool isReadOnly() const { return read<Storage>().isReadOnly; }
  void setIsReadOnly(bool on) { assign(kProperties[7], own<Storage>().isReadOnly, on); }
  /// Computed, not stored.
  bool isDerived() const { return read<Storage>().isDerived; }
  void setIsDerived(bool on) { assign(kProperties[8], own<Storage>().isDerived, on); }
  /// Not saved.
  bool isTransient() const { return read<Storage>().isTransient; }
  void setIsTransient(bool on) { assign(kProperties[9], own<Storage>().isTransient, on); }
  bool isQualificationUnique() const { return read<Storage>().isQualificationUnique; }
  void setIsQualificationUnique(bool on) {
    assign(kProperties[10], own<Storage>().isQualificationUnique, on);
  }
  /// Moves the property into `owner`, behind its other properties.
  void setOwningClass(const Class& owner);

  /// The description that the property was registered from; null if it was made by hand.
  const PropertyInfo* info() const { return read<Storage>().info; }
  /// The same if the property is a single stored number that can be set, else null.
  const PropertyInfo* storedReal() const { return read<Storage>().storedReal; }
  /// Not undone by a rollback; for registration.
  void setInfo(const PropertyInfo* info) {
    own<Storage>().info = info;
    own<Storage>().storedReal = info && info->isStoredReal() ? info : nullptr;
  }
};

/// Calls an operation of an element.
class MF0_API AbstractMethodInvoker {
 public:
  virtual ~AbstractMethodInvoker() = default;
  /// The result of the operation on `element`, which is alive and of the operation's class.
  virtual Value invoke(const ModelElement& element) const = 0;
};

/// An operation of a class.
class MF0_API Operation : public ConcreteHandle<Operation, TypedElement> {
 public:
  class Impl;
  using ConcreteHandle::ConcreteHandle;
};

class MF0_API Operation::Impl : public TypedElement::Impl {
 public:
  using BuilderImpl = BuilderBase<Builder, TypedElement::Impl::BuilderImpl>;
  struct Storage : TypedElement::Impl::Storage {
    bool isPublic = false;
    bool isStatic = false;
    bool isAbstract = false;
    bool isEvent = false;
    std::unique_ptr<AbstractMethodInvoker> invoker;
  };
  static const PropertyInfo kProperties[5];
  static const ClassInfo kClass;
  using TypedElement::Impl::Impl;

  bool isPublic() const { return read<Storage>().isPublic; }
  void setIsPublic(bool on) { assign(kProperties[0], own<Storage>().isPublic, on); }
  bool isStatic() const { return read<Storage>().isStatic; }
  void setIsStatic(bool on) { assign(kProperties[1], own<Storage>().isStatic, on); }
  /// Left to the subclasses of the owning class.
  bool isAbstract() const { return read<Storage>().isAbstract; }
  void setIsAbstract(bool on) { assign(kProperties[2], own<Storage>().isAbstract, on); }
  bool isEvent() const { return read<Storage>().isEvent; }
  void setIsEvent(bool on) { assign(kProperties[3], own<Storage>().isEvent, on); }
  /// Moves the operation into `owner`, behind its other operations.
  void setOwningClass(const Class& owner);

  /// Installs what carries the operation out. Not undone by a rollback; for registration.
  void setInvoker(std::unique_ptr<AbstractMethodInvoker> invoker) {
    own<Storage>().invoker = std::move(invoker);
  }
  bool hasInvoker() const { return read<Storage>().invoker != nullptr; }
  /// Carries the operation out on `element`. Raises CannotUseEmptyHandle,
  /// CannotUseDestroyedElement, CannotCastIncompatibleTypes for an element of a class that does not
  /// have the operation, NoSuchElement without an invoker, and what the operation raises.
  Value invoke(const ModelElement& element) const;
};

inline std::u16string TypedElement::name() const { return (*this)->getName(); }
inline Type TypedElement::type() const { return (*this)->getType(); }
inline std::string Property::qualifiedName() const { return (*this)->getQualifiedName(); }
inline std::int32_t Property::index() const { return (*this)->getIndex(); }

}  // namespace mf::zero::meta
