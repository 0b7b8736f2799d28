// Models, elements and their collections as host objects: how the host keeps each, which class
// it is of, and the way from one to the other.
//
// A host object is a counted reference: it keeps its element (and so the model) in memory, and
// every use of one whose element was destroyed raises "Vexal:class:InvalidHandle". A collection's
// object is the pair of its owner and a property. All of it belongs to the host's thread.
#pragma once

#include <string_view>
#include <vector>

#include "framework/builder.h"
#include "framework/element.h"
#include "framework/export.h"
#include "framework/model.h"
#include "host/array.h"
#include "host/vcos/class.h"
#include "host/vcos/native.h"

namespace mf::zero::mi {

inline constexpr std::string_view kModelName = "mf.zero.Model";
inline constexpr std::string_view kElementName = "mf.zero.ModelElement";

extern MF0_API const vcos::NativeFamily kModels;
extern MF0_API const vcos::NativeFamily kElements;
/// Natives whose part is the PropertyInfo.
extern MF0_API const vcos::NativeFamily kCollections;

// Classes -------------------------------------------------------------------------------------

/// From now on elements of the class may be asked for by its qualified name. The description lives
/// for ever.
MF0_API void registerElementClass(const ClassInfo& info);

/// The description of an element class by its name. Raises NotAnElementClass for the name of
/// another class, an enumeration say, and NoSuchType.
MF0_API const ClassInfo& elementClass(std::string_view name);
/// The same for an argument: the name as text, or the class's object of "mf.zero.meta.Class".
/// Raises InvalidValue for anything else.
MF0_API const ClassInfo& elementClass(const vxArray* argument);

/// The host class of an element class: its own or, where scripts do not know that, the nearest
/// superclass's.
MF0_API const vcos::COSClass& hostClassOf(const ClassInfo& info);
/// The host class of an enumeration. Raises NoSuchType when it has none.
MF0_API const vcos::COSClass& hostClassOf(const EnumInfo& info);

// To the host ---------------------------------------------------------------------------------

/// The host object of an element; the empty array of `whenEmpty` for an empty handle.
MF0_API vexal::ArrayPtr toHost(const ModelElement& element,
                               const ClassInfo& whenEmpty = ModelElement::classInfo());
MF0_API vexal::ArrayPtr toHost(const Model& model);
/// The live view on a collection of an element.
MF0_API vexal::ArrayPtr toHost(const ElementImpl& owner, const PropertyInfo& collection);

/// A 1-by-n array of the elements, of the most specific class that all share; 0-by-0 of
/// `whenEmpty` without any. It takes over the handles, and its objects come into being one by one,
/// as they are looked at.
MF0_API vexal::ArrayPtr toHost(std::vector<ModelElement> elements, const ClassInfo& whenEmpty);

namespace detail {

/// The references that handles gave up, until an array has adopted them.
class MF0_API Handover {
 public:
  explicit Handover(std::size_t count) { natives_.reserve(count); }
  Handover(const Handover&) = delete;
  Handover& operator=(const Handover&) = delete;
  ~Handover();

  void take(ElementImpl* element) {
    const ClassInfo& info = element->classInfo();
    if (&info != common_) narrow(info);
    natives_.push_back(element);
  }
  vexal::ArrayPtr finish(const ClassInfo& whenEmpty);

 private:
  void narrow(const ClassInfo& info);
  std::vector<void*> natives_;
  const ClassInfo* common_ = nullptr;
};

}  // namespace detail

/// The same for handles of one class.
template <class X>
vexal::ArrayPtr toHost(std::vector<X> elements) {
  detail::Handover handover(elements.size());
  for (X& element : elements) handover.take(element.detach());
  return handover.finish(X::classInfo());
}

// From the host -------------------------------------------------------------------------------

/// The living element behind a 1-by-1 object. Raises "Vexal:class:InvalidHandle" when it is gone,
/// "Vexal:class:NotAnObject" for anything but an object, and CannotCastIncompatibleTypes for an
/// object that is no element.
MF0_API ModelElement elementOf(const vxArray* object);

/// The same of the k-th object, k below the count, of an object array or of a cell array of
/// objects.
MF0_API ModelElement elementOf(const vxArray* objects, std::size_t k);

/// The elements of an object array, of a cell array of objects or of a live collection; none of an
/// empty array. Raises what elementOf() raises.
MF0_API std::vector<ModelElement> elementsOf(const vxArray* objects);

/// The first model of an array; an empty handle when there is none, or it has been closed.
MF0_API Model modelOf(const vxArray* models) noexcept;

}  // namespace mf::zero::mi
