// Elements: the counted handle, the behaviour base that every class derives from,
// and the storage that lies directly behind it in the same allocation.
//
//   [ ElementImpl: 48 bytes ][ X::Impl::Storage ]   one cell of a model's pool
//
// What all classes do alike is written here once and driven by ClassInfo tables;
// a generated class adds typed names.
#pragma once

#include <bit>
#include <compare>
#include <concepts>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "framework/class_info.h"
#include "framework/element_pool.h"
#include "framework/export.h"
#include "framework/messages.h"
#include "framework/storage.h"
#include "framework/text.h"
#include "framework/uuid.h"
#include "framework/value.h"

namespace mf::zero {

class Builder;
class BuilderValues;
template <class X>
class BuilderWrapper;
template <class T, class Container>
class TypedReferenceCollection;
class Constrainables;
class ElementState;
class Model;
class ModelImpl;
class ModelElement;

/// Says that an element is known to be of a handle's class.
struct KnownClass {};

namespace meta {
class Class;
class Property;
}  // namespace meta

/// The behaviour base of every class (`ModelElement::Impl`). Lives in its model's pool: created
/// through `create` or a builder, ended by `destroy`, never by delete. Used from one thread at a
/// time, as its model is.
class MF0_API ElementImpl {
 public:
  using Storage = ElementStorage;
  using BuilderImpl = BuilderValues;

  explicit ElementImpl(const uuid& identity) : identity_(identity) {}
  ElementImpl(const ElementImpl&) = delete;
  ElementImpl& operator=(const ElementImpl&) = delete;

  /// A fresh identity for an element.
  static uuid generateNewUuid() { return mf::zero::generateNewUuid(); }

  /// Fixed at creation; valid for destroyed elements too.
  const uuid& Uuid() const { return identity_; }
  const ClassInfo& classInfo() const { return *Chunk::of(this)->info; }
  meta::Class getMetaClass() const;
  /// The model the element belongs to.
  Model getModel() const;
  ModelImpl& model() const { return *Chunk::of(this)->model; }
  ElementId id() const { return Chunk::of(this)->idOf(this); }

  bool isProxy() const { return (flags_ & kProxy) != 0; }
  bool isDestroyed() const { return (flags_ & kDestroyed) != 0; }
  /// The element that contains this one; empty for a root.
  ModelElement getOwner() const;
  /// The containment property of the owner that holds this element; empty for a root.
  meta::Property getOwningProperty() const;

  void addRef() {
    if (shared_) [[unlikely]] {
      addSharedRef();
    } else if (refs_++ == 0) {
      firstRef();
    }
  }
  void removeRef() noexcept {
    if (shared_) [[unlikely]] {
      removeSharedRef();
    } else if (--refs_ == 0) {
      lastRef();
    }
  }

  // Lifecycle.

  /// Destroys the element and all that it contains, and takes them out of every collection and
  /// reference that holds them. Remaining handles stay safe and answer `isValid()` with false.
  /// Raises CannotModifyProxy for a proxy; CannotModifyFrozenModel.
  void destroy() { doDestroy(true, true); }
  /// As `destroy`. Without `withContents` the contained elements become roots; without
  /// `evenIfReferenced`, CannotDestroyReferencedElement is raised and nothing is destroyed when
  /// others refer to the element or to contents that would go with it.
  void doDestroy(bool withContents, bool evenIfReferenced);
  /// Makes room for that many more references to this element, for those who are about to make
  /// them; nothing visible changes.
  void reserveReferrers(std::size_t count);
  /// Has the processor fetch the newest note of a reference to this element, by which the next one
  /// will be: for who is about to refer to many elements that are used in turn. A hint; nothing
  /// changes.
  void prefetchReferrers() const;
  /// Takes this element out of every reference and reference collection that holds it.
  /// Containment stays.
  void disassociateIncoming();
  /// Empties every reference and reference collection of this element. Containment stays.
  void basicDisassociateAll();
  /// Drops the values of this element, to be loaded again when they are looked at; identity,
  /// class, contents and the references to it stay. Raises CannotConvertToProxy when the model
  /// has no loader or a transaction is open.
  void convertToProxy();
  /// Converts every element that this one refers to (contents excepted) into a proxy.
  void convertReferencesToProxies();
  /// Whether `property` of this element holds `target` as a proxy.
  bool inverseContainsProxyTo(const ModelElement& target, const meta::Property& property) const;
  /// Puts `element` into this element's `property`, and this element into the opposite end.
  void inverseAdd(const ModelElement& element, const meta::Property& property);
  /// Takes `element` out of this element's `property`, at both ends.
  void inverseRemove(const ModelElement& element, const meta::Property& property);
  /// Loads a proxy now. Raises CannotResolveProxy when the model's loader does not know it.
  void resolve() const;

  // Reflection. A property that is not of this element's class raises NoSuchProperty.

  /// The property of that index, 1 and up, inherited ones included; empty for any other.
  meta::Property getPropertyByIndex(int index) const;
  Value getPropertyValue(const meta::Property& property) const {
    // Numbers are read most; made here, the value of one need not leave the registers.
    if (const double* const number = findReal(property)) [[likely]]
      return *number;
    return readProperty(property);
  }
  /// Sets a single value by the typed setter's rules, or replaces the contents of a collection by
  /// the items of a list value. Raises CannotSetReadOnlyProperty, CannotCastIncompatibleTypes and
  /// what the typed setter raises; an empty value reads as 0, false, the empty text or nothing.
  void setPropertyValue(const meta::Property& property, const Value& value) {
    if (value.meta() == Value::metaOf<double>()) [[likely]] {
      writeReal(property, std::bit_cast<double>(value.bits()));
    } else {
      writeProperty(property, value);
    }
  }
  /// Whether a text is non-empty, a number non-zero, a reference or array present, a collection
  /// non-empty, an enumeration one of its literals.
  bool hasPropertyValue(const meta::Property& property) const;

  // Change support.

  /// The value before the open outermost transaction; the present one when there is none or it
  /// did not change the property; the empty value when the element was made in it.
  Value getOldValue(const meta::Property& property) const;
  /// Forgets pending changes of this element that ended where they began, as far as they lie in
  /// the innermost open transaction. Returns how many properties that concerned.
  int revertUnchanged();
  /// A state of this class with every property at its default.
  ElementState createStorage() const;
  /// A copy of all present values, to compare with or return to.
  ElementState createChanges() const;
  void copyValue(ElementState& into, int index) const;
  /// Sets every stored property that differs, in one transaction. Hooks are not asked: the values
  /// were in an element before.
  void copyStateFromStorage(const ElementState& state);

  // The same by static description; for generated code and tools.

  Value get(const PropertyInfo& property) const;
  void set(const PropertyInfo& property, const Value& value);
  bool has(const PropertyInfo& property) const;

 protected:
  virtual ~ElementImpl() = default;

  /// The values, for reading: loads a proxy first; raises CannotUseDestroyedElement.
  template <class S>
  const S& read() const {
    if (flags_ & kAttention) [[unlikely]]
      prepareRead();
    return *static_cast<const S*>(storage());
  }
  /// The values, for a setter that does its own checks.
  template <class S>
  S& own() {
    return *static_cast<S*>(storage());
  }

  // The setter: refuse a proxy, return on an equal value, record, store, notify.

  void assign(const PropertyInfo& property, double& slot, double value) {
    if (flags_ & kAttention) [[unlikely]]
      refuseChange();
    if (slot != value) changeWord(property, &slot, std::bit_cast<std::uint64_t>(value));
  }
  void assign(const PropertyInfo& property, bool& slot, bool value) {
    if (flags_ & kAttention) [[unlikely]]
      refuseChange();
    if (slot != value) changeByte(property, &slot, value);
  }
  void assign(const PropertyInfo& property, std::int8_t& slot, std::int8_t value) {
    if (flags_ & kAttention) [[unlikely]]
      refuseChange();
    if (slot != value) changeByte(property, &slot, static_cast<std::uint8_t>(value));
  }
  void assign(const PropertyInfo& property, std::int32_t& slot, std::int32_t value) {
    if (flags_ & kAttention) [[unlikely]]
      refuseChange();
    if (slot != value) changeHalf(property, &slot, static_cast<std::uint32_t>(value));
  }
  template <ModelEnum E>
  void assign(const PropertyInfo& property, E& slot, E value) {
    static_assert(sizeof(E) == sizeof(std::int32_t));
    if (flags_ & kAttention) [[unlikely]]
      refuseChange();
    if (slot != value) changeLiteral(property, &slot, static_cast<std::int32_t>(value));
  }
  void assign(const PropertyInfo& property, Text& slot, std::u16string_view value) {
    if (flags_ & kAttention) [[unlikely]]
      refuseChange();
    if (slot != value) changeText(property, slot, value);
  }
  void assign(const PropertyInfo& property, ArraySlot& slot, const vxArray* value) {
    if (flags_ & kAttention) [[unlikely]]
      refuseChange();
    if (slot.array != value) changeArray(property, slot, value);
  }
  void assign(const PropertyInfo& property, ReferenceSlot& slot, const ModelElement& value);
  /// The same by the place in the storage; for generated setters.
  template <class S, class T, class V>
  void assign(const PropertyInfo& property, T S::*slot, const V& value) {
    assign(property, own<S>().*slot, value);
  }

  /// The element in a single reference or containment slot, without resolving it; null if unset.
  ElementImpl* target(const ReferenceSlot& slot) const {
    return slot.target ? Chunk::find(*this, slot.target) : nullptr;
  }
  /// Creates an element from `builder` with that identity inside this element's containment
  /// `property`: appends to a list, replaces a single one. All or nothing.
  ModelElement createInto(const PropertyInfo& property, Builder& builder, const uuid& identity);

  // The same as handles, for the generated accessors.

  template <class X>
  X element(const ReferenceSlot& slot) const {
    return X(static_cast<typename X::Impl*>(target(slot)));
  }
  template <class X>
  X createInto(const PropertyInfo& property, const BuilderWrapper<X>& builder,
               const uuid& identity) {
    return X(KnownClass(), createInto(property, builder.builder(), identity));
  }

 private:
  friend class ModelImpl;
  friend class ElementPool;
  friend struct Raw;

  enum Flags : std::uint8_t {
    kProxy = 1,
    kDestroyed = 2,
    kAttention = kProxy | kDestroyed,
    kInLog = 4,         ///< destroyed in a change that observers have not heard of yet
    kOnlyReferrer = 8,  ///< referred to once, which is noted in the element itself
  };

  ElementStorage* storage() {
    return reinterpret_cast<ElementStorage*>(reinterpret_cast<std::byte*>(this) + kStorageOffset);
  }
  const ElementStorage* storage() const {
    return reinterpret_cast<const ElementStorage*>(reinterpret_cast<const std::byte*>(this) +
                                                   kStorageOffset);
  }

  void prepareRead() const;
  [[noreturn]] void refuseChange() const;
  void changeWord(const PropertyInfo& property, void* slot, std::uint64_t bits);
  void changeHalf(const PropertyInfo& property, void* slot, std::uint32_t bits);
  /// Raises InvalidValue for a number that is neither a literal nor 0, which is none.
  void changeLiteral(const PropertyInfo& property, void* slot, std::int32_t number);
  void changeByte(const PropertyInfo& property, void* slot, std::uint8_t bits);
  void changeText(const PropertyInfo& property, Text& slot, std::u16string_view value);
  void changeArray(const PropertyInfo& property, ArraySlot& slot, const vxArray* value);
  const PropertyInfo& checkedInfo(const meta::Property& property) const;
  /// Where a stored number lies; null when that takes a closer look.
  const double* findReal(const meta::Property& property) const;
  Value readProperty(const meta::Property& property) const;
  void writeReal(const meta::Property& property, double value);
  void writeProperty(const meta::Property& property, const Value& value);
  void setShared(const PropertyInfo& property, const Value& value);
  void firstRef();
  void lastRef() noexcept;
  void addSharedRef();
  void removeSharedRef() noexcept;

  uuid identity_;
  std::uint32_t refs_ = 0;
  std::uint8_t flags_ = 0;
  bool shared_ = false;              ///< in a model that several threads read: counts atomically
  std::uint16_t ownerProperty_ = 0;  ///< index of the containment property in the owner's class
  ElementId owner_ = kNoElement;
  std::uint32_t position_ = 0;  ///< in the owner's list
  Referrers referrers_;
};

static_assert(sizeof(ElementImpl) == kStorageOffset);

/// The handle of any element: a counted reference. Copies share the element; an empty handle tests
/// false, and using one raises CannotUseEmptyHandle. A handle keeps its model alive, and outlives
/// the element safely: `isValid` says whether the element still exists.
class MF0_API ModelElement {
 public:
  using Impl = ElementImpl;
  using Builder = mf::zero::Builder;
  using Constrainables = mf::zero::Constrainables;

  ModelElement() = default;
  explicit ModelElement(ElementImpl* impl) : impl_(impl) {
    if (impl_) impl_->addRef();
  }
  ModelElement(KnownClass, ModelElement&& element) noexcept : ModelElement(std::move(element)) {}
  ModelElement(const ModelElement& other) : ModelElement(other.impl_) {}
  ModelElement(ModelElement&& other) noexcept : impl_(std::exchange(other.impl_, nullptr)) {}
  ModelElement& operator=(ModelElement other) noexcept {
    std::swap(impl_, other.impl_);
    return *this;
  }
  ~ModelElement() {
    if (impl_) impl_->removeRef();
  }

  static meta::Class metaClass();
  static const ClassInfo& classInfo();

  explicit operator bool() const { return impl_ != nullptr; }
  /// Whether the handle refers to an element that has not been destroyed.
  bool isValid() const { return impl_ && !impl_->isDestroyed(); }
  /// The identity; nil for an empty handle.
  uuid Uuid() const { return impl_ ? impl_->Uuid() : uuid{}; }
  void addRef() const { checked()->addRef(); }
  void removeRef() const { checked()->removeRef(); }

  ElementImpl* operator->() const { return checked(); }
  /// The implementation, null for an empty handle.
  ElementImpl* impl() const { return impl_; }
  /// The same with the handle's reference, which the caller gives back; the handle is empty then.
  [[nodiscard]] ElementImpl* detach() noexcept { return std::exchange(impl_, nullptr); }
  /// The same element as a handle of class X; empty if it is none.
  template <class X>
  X as() const {
    return impl_ && impl_->classInfo().isA(X::classInfo())
               ? X(static_cast<typename X::Impl*>(impl_))
               : X();
  }

  bool operator==(const ModelElement& other) const { return impl_ == other.impl_; }
  /// Orders by identity; elements of different models that share one, in no particular order.
  std::strong_ordering operator<=>(const ModelElement& other) const {
    const std::strong_ordering order = Uuid() <=> other.Uuid();
    return order != 0 ? order : std::compare_three_way()(impl_, other.impl_);
  }

 protected:
  ElementImpl* checked() const {
    if (!impl_) [[unlikely]]
      raiseEmpty();
    return impl_;
  }

 private:
  [[noreturn]] static void raiseEmpty();

  ElementImpl* impl_ = nullptr;
};

/// Creates an element of a concrete class with defaults; the body of every `X::create`.
MF0_API ModelElement createElement(const ClassInfo& info, const Model& model, const uuid& identity);

/// New elements of one class, one after the other, each with a collection that is full from the
/// start: `create` and `append` as one change, at a fraction of what both cost, since what all of
/// them have in common is checked once. The model must live as long.
class MF0_API ElementSeries {
 public:
  /// Raises CannotCreateWithoutModel for an empty or closed model, NoSuchProperty for a property of
  /// another class and CannotCastIncompatibleTypes for one that is no collection of elements.
  ElementSeries(const ClassInfo& info, const Model& model, const PropertyInfo& list);
  /// The next element, its collection holding `targets` in their order, of which observers hear
  /// once. Raises what creating and appending raise; there is no element then.
  ModelElement create(std::span<ElementImpl* const> targets);

 private:
  inline ElementImpl* createAtOnce(std::span<ElementImpl* const> targets);

  ModelImpl& model_;
  const ClassInfo& info_;
  const PropertyInfo& list_;
  const ClassLayout* welcome_ = nullptr;  ///< that of the last target, which suited
};

/// A collection of elements of class T, in order or without; see collection.h.
template <class T>
using ElementSequence = TypedReferenceCollection<T, std::vector<T>>;
template <class T>
using ElementSet = TypedReferenceCollection<T, std::unordered_set<T>>;

/// Whether I implements handle class X or a class below it; a concept, so that X may still be
/// incomplete where a handle class derives from its typed part.
template <class I, class X>
concept ImplementationOf = std::derived_from<I, typename X::Impl>;

/// The typed part that every handle class has: X is the class, Super the handle it derives from.
template <class X, class Super = ModelElement>
class Handle : public Super {
 public:
  using BuilderWrapper = mf::zero::BuilderWrapper<X>;
  using Sequence = ElementSequence<X>;
  using Set = ElementSet<X>;

  Handle() = default;
  template <ImplementationOf<X> I>
  explicit Handle(I* impl) : Super(impl) {}
  /// The same element; nothing is checked.
  Handle(KnownClass known, ModelElement&& element) noexcept : Super(known, std::move(element)) {}

  auto operator->() const { return static_cast<typename X::Impl*>(this->checked()); }
  auto impl() const { return static_cast<typename X::Impl*>(ModelElement::impl()); }

  static const ClassInfo& classInfo() { return X::Impl::kClass; }
  /// The registered meta class; the first use registers the class's package.
  static meta::Class metaClass();
};

/// The typed part of a class that can be created.
template <class X, class Super = ModelElement>
class ConcreteHandle : public Handle<X, Super> {
 public:
  using Handle<X, Super>::Handle;

  /// A new element of X in `model` with every property at its default. A nil identity asks for a
  /// fresh one. Raises CannotCreateWithoutModel for an empty or closed model and
  /// CannotCreateDuplicateIdentity when the model holds that identity already.
  static X create(const Model& model, const uuid& identity = {}) {
    return X(KnownClass(), createElement(X::Impl::kClass, model, identity));
  }

  /// New elements of X, each with a collection that is full from the start; see ElementSeries.
  class Series : public ElementSeries {
   public:
    Series(const Model& model, const PropertyInfo& list)
        : ElementSeries(X::Impl::kClass, model, list) {}
    X create(std::span<ElementImpl* const> targets) {
      return X(KnownClass(), ElementSeries::create(targets));
    }
  };
};

/// All stored values of an element, by property; detached from any model change.
class MF0_API ElementState {
 public:
  explicit ElementState(const ClassInfo& info);
  const ClassInfo& classInfo() const { return *info_; }
  /// The value of the property of that index; raises NoSuchProperty for an index out of range.
  const Value& value(int index) const;
  void setValue(int index, Value value);
  bool operator==(const ElementState&) const = default;

 private:
  const ClassInfo* info_;
  std::vector<Value> values_;
};

}  // namespace mf::zero

template <std::derived_from<mf::zero::ModelElement> X>
struct std::hash<X> {
  std::size_t operator()(const mf::zero::ModelElement& element) const noexcept {
    return std::hash<const void*>()(element.impl());
  }
};
