// Builders: what an element shall be, collected before it exists. A builder can
// create any number of elements; child builders create the contents with it.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "framework/element.h"
#include "framework/export.h"
#include "framework/model.h"

namespace mf::zero {

/// The collected values (`X::Impl::BuilderImpl` adds the typed names). Nothing is checked against
/// a model before `create`, and host-array hooks are not asked.
class MF0_API BuilderValues {
 public:
  using ChildBuilder = std::unique_ptr<Builder>;

  BuilderValues(const ClassInfo& info, Model model);
  BuilderValues(const BuilderValues&) = delete;
  BuilderValues& operator=(const BuilderValues&) = delete;
  virtual ~BuilderValues();

  const ClassInfo& classInfo() const { return *info_; }
  meta::Class getMetaClass() const;
  const Model& model() const { return model_; }
  void setModel(Model model) { model_ = std::move(model); }

  /// Sets a single value, or appends to a many-valued property (all items of a list value).
  /// Returns the property's index; -1 for a property that the class does not have, which changes
  /// nothing. Raises CannotCastIncompatibleTypes and CannotSetReadOnlyProperty.
  int doSetOrAdd(const meta::Property& property, const Value& value);
  /// The same for a contained child; CannotAddIncompatibleTypes for a builder of another class.
  int doSetOrAdd(const meta::Property& property, std::unique_ptr<Builder> child);

  // The same by static description; the typed operations forward here.

  /// Makes room for that many values.
  void reserve(std::size_t count) { items_.reserve(count); }
  void set(const PropertyInfo& property, Value value);
  void set(const PropertyInfo& property, const vxArray* value) {
    set(property, Value::ofArray(value));
  }
  void add(const PropertyInfo& property, Value value);
  template <class T>
  void addAll(const PropertyInfo& property, std::span<const T> values) {
    for (const T& value : values) add(property, Value(value));
  }
  void addChild(const PropertyInfo& property, std::unique_ptr<Builder> child);
  void clear(const PropertyInfo& property);
  /// What was set; otherwise the declared default, or the empty value where there is none.
  Value get(const PropertyInfo& property) const;
  /// Takes over copies of all values and child builders of another builder of the class.
  void copyFrom(const BuilderValues& source);
  template <class T>
  T get(const PropertyInfo& property) const {
    return get(property).template getValue<T>();
  }
  template <class X>
  X getElement(const PropertyInfo& property) const {
    return get<ModelElement>(property).template as<X>();
  }

 private:
  friend class Creation;
  struct Item {
    const PropertyInfo* property;
    Value value;
    std::unique_ptr<Builder> child;
  };

  const ClassInfo* info_;
  Model model_;
  std::vector<Item> items_;
};

/// The generated builder implementation of a class derives from this.
template <class B, class Super = BuilderValues>
class BuilderBase : public Super {
 public:
  using Super::Super;
};

/// The construction base. A value: copying copies the child builders too.
class MF0_API Builder {
 public:
  /// A builder of any concrete class. Raises CannotCreateAbstractClass.
  Builder(const ClassInfo& info, Model model);
  Builder(const Builder& other);
  Builder(Builder&&) noexcept = default;
  Builder& operator=(Builder other) noexcept {
    std::swap(values_, other.values_);
    return *this;
  }
  ~Builder();

  void setModel(Model model) { values().setModel(std::move(model)); }
  meta::Class getMetaClass() const;
  /// Raises CannotUseEmptyHandle after the builder was moved away.
  BuilderValues& values() const;
  /// Creates the element and, in list order, its contents, in one transaction: all or nothing.
  /// A nil identity asks for a fresh one. Raises CannotCreateWithoutModel,
  /// CannotCreateDuplicateIdentity, and for a reference what adding it would raise.
  ModelElement create(const uuid& identity = {}) const;

 private:
  friend class BuilderValues;
  std::unique_ptr<BuilderValues> values_;
};

/// The typed part of `X::Builder`.
template <class X>
class TypedBuilder : public Builder {
 public:
  explicit TypedBuilder(Model model = {}) : Builder(X::classInfo(), std::move(model)) {}
  X create(const uuid& identity = {}) const { return X(KnownClass(), Builder::create(identity)); }

  /// The values under the class's own names; BuilderImpl adds names and nothing else.
  auto& values() const { return static_cast<typename X::Impl::BuilderImpl&>(Builder::values()); }

 protected:
  // For the generated setters: the row in the table of implementation I, whose class X is or
  // inherits from. Each answers the builder itself, for the next one in the chain.

  template <class I>
  auto& set(std::size_t row, Value value) {
    values().set(I::kProperties[row], std::move(value));
    return self();
  }
  template <class I>
  auto& set(std::size_t row, const vxArray* value) {
    values().set(I::kProperties[row], value);
    return self();
  }
  template <class I>
  auto& set(std::size_t row, std::unique_ptr<Builder> child) {
    values().addChild(I::kProperties[row], std::move(child));
    return self();
  }
  template <class I>
  auto& add(std::size_t row, Value value) {
    values().add(I::kProperties[row], std::move(value));
    return self();
  }
  template <class I>
  auto& add(std::size_t row, std::unique_ptr<Builder> child) {
    return set<I>(row, std::move(child));
  }
  template <class I, class T>
  auto& add(std::size_t row, std::span<const T> all) {
    values().addAll(I::kProperties[row], all);
    return self();
  }

 private:
  auto& self() { return static_cast<typename X::Builder&>(*this); }
};

/// How a builder of class X (or a subclass) is handed over: copied, moved, or by unique pointer.
template <class X>
class BuilderWrapper {
 public:
  template <class Y>
    requires std::is_base_of_v<X, Y>
  BuilderWrapper(const TypedBuilder<Y>& builder)  // NOLINT: hand a builder over as it is
      : builder_(std::make_unique<Builder>(builder)) {}
  template <class Y>
    requires std::is_base_of_v<X, Y>
  BuilderWrapper(TypedBuilder<Y>&& builder)  // NOLINT
      : builder_(std::make_unique<Builder>(std::move(builder))) {}
  BuilderWrapper(std::unique_ptr<Builder> builder)  // NOLINT
      : builder_(std::move(builder)) {}

  /// Raises CannotAddNonExistentObject when there is no builder inside.
  Builder& builder() const {
    if (!builder_) reportException(mf0::messages::CannotAddNonExistentObject());
    return *builder_;
  }
  std::unique_ptr<Builder> release() { return std::move(builder_); }

 private:
  std::unique_ptr<Builder> builder_;
};

}  // namespace mf::zero
