// Collections of elements: views on a many-valued reference or containment of one
// element. A view holds its owner by a counted handle; it is live, cheap to copy
// and shows every later change.
#pragma once

#include <cstddef>
#include <iterator>
#include <optional>
#include <span>
#include <unordered_set>
#include <vector>

#include "framework/element.h"
#include "framework/export.h"
#include "framework/raw.h"

namespace mf::zero {

/// The operations of every element collection. Reading a proxy owner loads it; changing one raises
/// CannotModifyProxy. Every change is one transaction and all or nothing; it raises
///   CannotAddNonExistentObject         a null or destroyed element,
///   CannotAddIncompatibleTypes         an element of another class,
///   CannotCreateCrossModelAssociation  an element of another model,
///   CannotAddSecondObject              an element that is already held,
///   CannotCreateContainmentCycle       a containment of the owner or one of its owners,
///   IndexOutOfRange                    a position past the end.
class MF0_API ReferenceCollection {
 public:
  ReferenceCollection(const ElementImpl* owner, const PropertyInfo& property)
      : owner_(const_cast<ElementImpl*>(owner)), property_(&property) {}

  std::size_t size() const;
  bool empty() const { return size() == 0; }
  /// The element at that place, 0 and up. Constant time while nothing was taken from the middle.
  ModelElement at(std::size_t index) const;
  /// Appends the elements as they stand now to `elements`, at a fraction of what going through them
  /// costs, since the caller is spared the handles: what may destroy elements must not run
  /// meanwhile.
  void copyTo(std::vector<ElementImpl*>& elements) const;
  bool contains(const ModelElement& element) const;
  std::optional<std::size_t> indexOf(const ModelElement& element) const;

  /// Appends; amortised constant time. An element of another containment moves here.
  void add(const ModelElement& element);
  void insert(std::size_t index, const ModelElement& element);
  /// Appends all or none.
  void append(std::span<const ModelElement> elements);
  /// The same, sparing the caller the handles.
  void append(std::span<ElementImpl* const> elements);
  /// Takes the element out; it stays in the model, as a root if it was contained. Raises
  /// NoSuchElement if it is not held.
  void remove(const ModelElement& element);
  void removeAt(std::size_t index);
  /// Moves the element at `from` so that it stands at `to`.
  void move(std::size_t from, std::size_t to);
  void clear();
  /// Makes the collection hold exactly these, in this order.
  void assign(std::span<const ModelElement> elements);
  /// Makes room for that many in all, without changing anything visible.
  void reserve(std::size_t count);

  /// Whether the element at that place is held as a proxy; does not load it.
  bool isProxyAt(std::size_t index) const;

  const ModelElement& owner() const { return owner_; }
  const PropertyInfo& property() const { return *property_; }
  bool isOrdered() const { return property_->has(kOrdered); }

  /// Goes through the elements; taking elements out or appending meanwhile does no harm.
  class MF0_API Cursor {
   public:
    Cursor() = default;
    explicit Cursor(const ReferenceCollection& collection);
    Cursor(const Cursor& other);
    Cursor& operator=(Cursor other) noexcept;
    ~Cursor();
    bool done() const { return !owner_.isValid() || slot_ >= list().size; }
    /// Null at the end, and where the element was taken out since the cursor came there.
    ElementImpl* element() const {
      const ElementId id = done() ? kNoElement : list().slots[slot_].target;
      return id == kNoElement ? nullptr : Chunk::find(*owner_.impl(), id);
    }
    void next() { seek(slot_ + 1); }

   private:
    const ReferenceList& list() const { return Raw::at<ReferenceList>(*owner_.impl(), *property_); }
    void count(int change) const;
    void seek(std::uint32_t slot) {
      while (slot < list().size && list().slots[slot].target == kNoElement) ++slot;
      slot_ = slot;
    }
    ModelElement owner_;
    const PropertyInfo* property_ = nullptr;
    std::uint32_t slot_ = 0;
  };

  template <class T>
  class Iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = T;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    using reference = T;

    Iterator() = default;
    explicit Iterator(const ReferenceCollection& collection) : cursor_(collection) {}
    T operator*() const { return T(static_cast<typename T::Impl*>(cursor_.element())); }
    Iterator& operator++() {
      cursor_.next();
      return *this;
    }
    void operator++(int) { cursor_.next(); }
    bool operator==(std::default_sentinel_t) const { return cursor_.done(); }

   private:
    Cursor cursor_;
  };

  Iterator<ModelElement> begin() const { return Iterator<ModelElement>(*this); }
  std::default_sentinel_t end() const { return {}; }

 private:
  ModelElement owner_;
  const PropertyInfo* property_;
};

/// A collection of elements of class T: ordered for Container = std::vector<T>, unordered for
/// std::unordered_set<T>. A proxy that is added is loaded first.
template <class T, class Container>
class TypedReferenceCollection : public ReferenceCollection {
 public:
  using ReferenceCollection::ReferenceCollection;
  using value_type = T;

  T at(std::size_t index) const {
    return T(static_cast<typename T::Impl*>(ReferenceCollection::at(index).impl()));
  }
  T operator[](std::size_t index) const { return at(index); }
  T front() const { return at(0); }
  T back() const { return at(size() - 1); }
  Iterator<T> begin() const { return Iterator<T>(*this); }
  /// The elements as they stand now.
  Container toContainer() const {
    Container copy;
    for (const T& element : *this) copy.insert(copy.end(), element);
    return copy;
  }
};

/// The same, which may also hold proxies of elements that are not loaded.
template <class Collection>
class WithProxies : public Collection {
 public:
  using Collection::Collection;
};

template <class T, class Container>
using TypedReferenceCollectionWithProxies = WithProxies<TypedReferenceCollection<T, Container>>;

}  // namespace mf::zero
