#include "framework/messages.h"

#include <algorithm>
#include <cassert>
#include <iterator>

#include "framework/text.h"

namespace mf0::messages {
namespace {

constexpr CatalogEntry kCatalog[] = {
    {"CannotModifyProxy",
     "The element is a proxy, which cannot be modified. Load it with resolve() first."},
    {"CannotCastIncompatibleTypes", "The value cannot be used where the type '{0}' is needed."},
    {"CannotAddIncompatibleTypes",
     "An element of class '{1}' cannot be added where '{0}' is held."},
    {"CannotAddNonExistentObject",
     "The element to be added does not exist: the handle or builder is empty, or the element has "
     "been destroyed."},
    {"CannotAddSecondObject",
     "The collection holds the element already, and holds each element once."},
    {"CannotCreateCrossModelAssociation",
     "The elements belong to different models; only elements of one model may refer to each "
     "other."},
    {"CannotCreateWithoutModel",
     "An element cannot be created without an open model. Give the builder a model with "
     "setModel()."},
    {"CannotSetReadOnlyProperty", "The property '{0}' is read-only."},
    {"NoSuchType",
     "There is no type named '{0}' in the meta registry. Its package has not been registered."},
    {"InvalidValue", "The value is not valid here."},
    {"CannotCreateAbstractClass",
     "The class '{0}' is abstract. Create an element of one of its subclasses."},
    {"CannotCreateContainmentCycle",
     "The element would contain itself, directly or through others."},
    {"CannotCreateDuplicateIdentity", "The model already holds an element of identity {0}."},
    {"CannotUseEmptyHandle", "The handle is empty: it refers to no element and no model."},
    {"CannotUseDestroyedElement", "The element, of class '{0}', has been destroyed."},
    {"CannotUseClosedModel", "The model has been closed."},
    {"CannotModifyFrozenModel", "The model is frozen. Thaw it for the time of the change."},
    {"CannotNestTransaction",
     "An outermost transaction was asked for, but the model is in a transaction already."},
    {"CannotEndTransaction",
     "The transaction cannot be ended: it has ended already, or one that was begun inside it is "
     "still open."},
    {"CannotCloseModelInTransaction",
     "The model cannot be closed while a transaction is open or observers are being told of one."},
    {"CannotConvertToProxy", "The element cannot be converted into a proxy: {0}."},
    {"CannotResolveProxy", "The element of identity {0} cannot be loaded: {1}."},
    {"CannotDestroyReferencedElement",
     "The element, of class '{0}', is kept because others refer to it."},
    {"NotAnElementClass", "Objects of '{0}' are not elements of a model."},
    {"NoSuchProperty", "The class '{0}' has no property '{1}'."},
    {"NoSuchLiteral", "The enumeration '{0}' has no literal '{1}'."},
    {"NoSuchElement", "The collection does not hold the element."},
    {"IndexOutOfRange", "The index {0} is out of range; the collection holds {1}."},
    {"CannotCompareProperty",
     "Elements of class '{0}' cannot be found by '{1}': host arrays are not compared."},
    {"ListIsFull", "There is no room for more: {0} holds at most {1} references."},
    {"ModelIsFull", "The model is full: there is no room for more {0}."},
    {"CannotTellObserver",
     "An observer is the name of a function of the host, or an object with a method 'changed'; "
     "given was: {0}."},
    {"ObserversDoNotSettle",
     "The observers of the model keep changing it in answer to each other's changes."},
    {"UnequalColumns", "Each property has one value for each of the elements, but '{0}' has {1}."},
    {"ForElement", "This was for the element at place {0}, counted from 0."},
};

std::string_view textOf(std::string_view key) {
  const auto* entry = std::find_if(std::begin(kCatalog), std::end(kCatalog),
                                   [&](const CatalogEntry& other) { return other.key == key; });
  assert(entry != std::end(kCatalog));
  return entry == std::end(kCatalog) ? key : entry->text;
}

// One pass, so that an argument with braces in it stays as it is.
std::string fill(std::string_view text, std::string_view first, std::string_view second) {
  std::string result;
  for (std::size_t at = 0; at < text.size();) {
    const std::string_view rest = text.substr(at);
    if (rest.starts_with("{0}") || rest.starts_with("{1}")) {
      result += rest[1] == '0' ? first : second;
      at += 3;
    } else {
      result += text[at++];
    }
  }
  return result;
}

}  // namespace

Message::Message(std::string_view key, std::string_view first, std::string_view second)
    : id_("mf0:messages:" + std::string(key)), text_(fill(textOf(key), first, second)) {}

std::pair<const CatalogEntry*, std::size_t> catalog() { return {kCatalog, std::size(kCatalog)}; }

CannotCastIncompatibleTypes::CannotCastIncompatibleTypes(std::u16string_view type)
    : CannotCastIncompatibleTypes(mf::zero::toUtf8(type)) {}

CannotAddIncompatibleTypes::CannotAddIncompatibleTypes(std::u16string_view expected,
                                                       std::u16string_view actual)
    : Message("CannotAddIncompatibleTypes", mf::zero::toUtf8(expected), mf::zero::toUtf8(actual)) {}

}  // namespace mf0::messages
