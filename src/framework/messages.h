// The framework's failures. Each is a message class of the catalog "mf0:messages";
// `reportException` is the one door through which they are raised.
#pragma once

#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "framework/export.h"

namespace foundation::core::except {

/// What every exception of the framework can do, whatever its message.
class MF0_API AbstractException {
 public:
  virtual ~AbstractException() = default;
  /// Catalog and key in one: "mf0:messages:CannotModifyProxy".
  virtual const std::string& GetID() const = 0;
  /// An independent copy, for carrying the exception elsewhere.
  virtual std::unique_ptr<AbstractException> clone() const = 0;
  /// Throws a copy of this exception with its full type.
  [[noreturn]] virtual void rethrow() const = 0;
};

/// The exception that carries message M; `what()` is the readable text.
template <class M, class Base = std::exception>
class Exception : public Base, public AbstractException {
 public:
  explicit Exception(M message) : message_(std::move(message)) {}
  const char* what() const noexcept override { return message_.text().c_str(); }
  const std::string& GetID() const override { return message_.id(); }
  std::unique_ptr<AbstractException> clone() const override {
    return std::make_unique<Exception>(*this);
  }
  [[noreturn]] void rethrow() const override { throw Exception(*this); }
  const M& message() const { return message_; }

 private:
  M message_;
};

}  // namespace foundation::core::except

namespace mf0::messages {

/// The texts of the catalog by key, with {0} and {1} for the arguments.
struct CatalogEntry {
  std::string_view key;
  std::string_view text;
};

/// A message: its identifier and its readable text, arguments put in.
class MF0_API Message {
 public:
  const std::string& id() const { return id_; }
  const std::string& text() const { return text_; }

 protected:
  explicit Message(std::string_view key, std::string_view first = {}, std::string_view second = {});

 private:
  std::string id_;
  std::string text_;
};

/// The whole catalog, for a host that wants to show the texts by itself.
MF0_API std::pair<const CatalogEntry*, std::size_t> catalog();

struct CannotModifyProxy : Message {
  CannotModifyProxy() : Message("CannotModifyProxy") {}
};
struct CannotCastIncompatibleTypes : Message {
  explicit CannotCastIncompatibleTypes(std::string_view type)
      : Message("CannotCastIncompatibleTypes", type) {}
  MF0_API explicit CannotCastIncompatibleTypes(std::u16string_view type);
};
struct CannotAddIncompatibleTypes : Message {
  MF0_API CannotAddIncompatibleTypes(std::u16string_view expected, std::u16string_view actual);
};
struct CannotAddNonExistentObject : Message {
  CannotAddNonExistentObject() : Message("CannotAddNonExistentObject") {}
};
struct CannotAddSecondObject : Message {
  CannotAddSecondObject() : Message("CannotAddSecondObject") {}
};
struct CannotCreateCrossModelAssociation : Message {
  CannotCreateCrossModelAssociation() : Message("CannotCreateCrossModelAssociation") {}
};
struct CannotCreateWithoutModel : Message {
  CannotCreateWithoutModel() : Message("CannotCreateWithoutModel") {}
};
struct CannotSetReadOnlyProperty : Message {
  explicit CannotSetReadOnlyProperty(std::string_view property)
      : Message("CannotSetReadOnlyProperty", property) {}
};
struct NoSuchType : Message {
  explicit NoSuchType(std::string_view type) : Message("NoSuchType", type) {}
};
struct InvalidValue : Message {
  InvalidValue() : Message("InvalidValue") {}
};

// Beyond the messages above, which other software knows by name: the framework's further refusals.

struct CannotCreateAbstractClass : Message {
  explicit CannotCreateAbstractClass(std::string_view type)
      : Message("CannotCreateAbstractClass", type) {}
};
struct CannotCreateContainmentCycle : Message {
  CannotCreateContainmentCycle() : Message("CannotCreateContainmentCycle") {}
};
struct CannotCreateDuplicateIdentity : Message {
  explicit CannotCreateDuplicateIdentity(std::string_view identity)
      : Message("CannotCreateDuplicateIdentity", identity) {}
};
struct CannotUseEmptyHandle : Message {
  CannotUseEmptyHandle() : Message("CannotUseEmptyHandle") {}
};
struct CannotUseDestroyedElement : Message {
  explicit CannotUseDestroyedElement(std::string_view type)
      : Message("CannotUseDestroyedElement", type) {}
};
struct CannotUseClosedModel : Message {
  CannotUseClosedModel() : Message("CannotUseClosedModel") {}
};
struct CannotModifyFrozenModel : Message {
  CannotModifyFrozenModel() : Message("CannotModifyFrozenModel") {}
};
struct CannotNestTransaction : Message {
  CannotNestTransaction() : Message("CannotNestTransaction") {}
};
struct CannotEndTransaction : Message {
  CannotEndTransaction() : Message("CannotEndTransaction") {}
};
struct CannotCloseModelInTransaction : Message {
  CannotCloseModelInTransaction() : Message("CannotCloseModelInTransaction") {}
};
struct CannotConvertToProxy : Message {
  explicit CannotConvertToProxy(std::string_view reason)
      : Message("CannotConvertToProxy", reason) {}
};
struct CannotResolveProxy : Message {
  CannotResolveProxy(std::string_view identity, std::string_view reason)
      : Message("CannotResolveProxy", identity, reason) {}
};
struct CannotDestroyReferencedElement : Message {
  explicit CannotDestroyReferencedElement(std::string_view type)
      : Message("CannotDestroyReferencedElement", type) {}
};
struct NotAnElementClass : Message {
  explicit NotAnElementClass(std::string_view type) : Message("NotAnElementClass", type) {}
};
struct NoSuchProperty : Message {
  NoSuchProperty(std::string_view type, std::string_view property)
      : Message("NoSuchProperty", type, property) {}
};
struct NoSuchLiteral : Message {
  NoSuchLiteral(std::string_view type, std::string_view literal)
      : Message("NoSuchLiteral", type, literal) {}
};
struct NoSuchElement : Message {
  NoSuchElement() : Message("NoSuchElement") {}
};
struct IndexOutOfRange : Message {
  IndexOutOfRange(std::string_view index, std::string_view size)
      : Message("IndexOutOfRange", index, size) {}
};
struct ModelIsFull : Message {
  explicit ModelIsFull(std::string_view what) : Message("ModelIsFull", what) {}
};
struct CannotCompareProperty : Message {
  CannotCompareProperty(std::string_view type, std::string_view property)
      : Message("CannotCompareProperty", type, property) {}
};
struct ListIsFull : Message {
  ListIsFull(std::string_view what, std::string_view most) : Message("ListIsFull", what, most) {}
};
struct CannotTellObserver : Message {
  explicit CannotTellObserver(std::string_view observer)
      : Message("CannotTellObserver", observer) {}
};
struct ObserversDoNotSettle : Message {
  ObserversDoNotSettle() : Message("ObserversDoNotSettle") {}
};
struct UnequalColumns : Message {
  UnequalColumns(std::string_view property, std::string_view count)
      : Message("UnequalColumns", property, count) {}
};
/// Not a failure of its own: follows the one of one among many elements.
struct ForElement : Message {
  explicit ForElement(std::string_view place) : Message("ForElement", place) {}
};

}  // namespace mf0::messages

namespace mf::zero {

/// Throws `Exception<M, std::exception>` carrying the message.
template <class M>
[[noreturn]] void reportException(M message) {
  throw foundation::core::except::Exception<M, std::exception>(std::move(message));
}

}  // namespace mf::zero
