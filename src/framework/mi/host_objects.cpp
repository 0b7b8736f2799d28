#include "framework/mi/host_objects.h"

#include <string>
#include <unordered_map>

#include "framework/class_info.h"
#include "framework/collection.h"
#include "framework/meta/meta.h"
#include "framework/model_impl.h"
#include "host/cell.h"
#include "host/diagnostic.h"
#include "host/text.h"
#include "host/vcos/om.h"

namespace mf::zero::mi {
namespace {

using vcos::COSClass;
using vcos::Native;
using vcos::factory::basic::BindingRegistry;

ElementImpl& elementIn(const Native& native) { return *static_cast<ElementImpl*>(native.object); }
ModelImpl& modelIn(const Native& native) { return *static_cast<ModelImpl*>(native.object); }

std::string_view collectionClass(const PropertyInfo& property) {
  if (property.kind == ValueKind::kElement) {
    return property.has(kOrdered) ? "mf.zero.Sequence" : "mf.zero.Set";
  }
  return property.has(kOrdered) ? "mf.zero.PrimitiveSequence" : "mf.zero.PrimitiveSet";
}

const COSClass* classOfCollection(const Native& native) {
  return COSClass::getClass(collectionClass(*static_cast<const PropertyInfo*>(native.part)));
}

std::string describeElement(const Native& native) {
  return "identity " + elementIn(native).Uuid().toString();
}

void retainElement(const Native& native) { elementIn(native).addRef(); }
void releaseElement(const Native& native) noexcept { elementIn(native).removeRef(); }
bool isAlive(const Native& native) noexcept { return !elementIn(native).isDestroyed(); }

}  // namespace

constinit const vcos::NativeFamily kModels{
    .name = "model",
    .retain = [](const Native& native) { modelIn(native).addRef(); },
    .release = [](const Native& native) noexcept { modelIn(native).removeRef(); },
    .isAlive = [](const Native& native) noexcept { return modelIn(native).isOpen(); },
    .classOf = [](const Native&) -> const COSClass* { return COSClass::getClass(kModelName); },
};

constinit const vcos::NativeFamily kElements{
    .name = "element",
    .retain = &retainElement,
    .release = &releaseElement,
    .isAlive = &isAlive,
    .classOf = [](const Native& native) { return &hostClassOf(elementIn(native).classInfo()); },
    .describe = &describeElement,
};

constinit const vcos::NativeFamily kCollections{
    .name = "collection",
    .retain = &retainElement,
    .release = &releaseElement,
    .isAlive = &isAlive,
    .classOf = &classOfCollection,
};

// Classes

namespace {

// The description and the host class of what scripts know, found by either.
struct KnownClasses {
  std::unordered_map<std::string_view, const ClassInfo*> byName;
  std::unordered_map<const void*, const COSClass*> hostClasses;  ///< of a ClassInfo or an EnumInfo
};

// Never destroyed: classes last as long as the process.
KnownClasses& known() {
  static auto& classes = *new KnownClasses;
  return classes;
}

const COSClass* findHostClass(const void* info, std::string_view name) {
  auto& classes = known().hostClasses;
  if (const auto found = classes.find(info); found != classes.end()) return found->second;
  const COSClass* const hostClass = COSClass::getClass(name);
  if (hostClass) classes.emplace(info, hostClass);
  return hostClass;
}

}  // namespace

void registerElementClass(const ClassInfo& info) { known().byName[info.qualifiedName] = &info; }

const ClassInfo& elementClass(std::string_view name) {
  const COSClass* const hostClass = COSClass::getClass(name);  // its package may have it
  const auto found = known().byName.find(name);
  if (found != known().byName.end()) return *found->second;
  if (hostClass) reportException(mf0::messages::NotAnElementClass(name));
  reportException(mf0::messages::NoSuchType(name));
}

const ClassInfo& elementClass(const vxArray* argument) {
  if (vexal::isClass(argument, vexal::ClassId::Char)) {
    return elementClass(vexal::toUtf8(vexal::charText(argument)));
  }
  const Native native = vcos::factory::impl::nativeOf(argument, kElements);
  const auto metaClass = ModelElement(static_cast<ElementImpl*>(native.object)).as<meta::Class>();
  if (!metaClass || !metaClass->info()) reportException(mf0::messages::InvalidValue());
  return *metaClass->info();
}

const COSClass& hostClassOf(const ClassInfo& info) {
  for (const ClassInfo* each = &info; each; each = each->super) {
    if (const COSClass* const hostClass = findHostClass(each, each->qualifiedName))
      return *hostClass;
  }
  reportException(mf0::messages::NoSuchType(info.qualifiedName));
}

const COSClass& hostClassOf(const EnumInfo& info) {
  if (const COSClass* const hostClass = findHostClass(&info, info.qualifiedName)) return *hostClass;
  reportException(mf0::messages::NoSuchType(info.qualifiedName));
}

// To the host

vexal::ArrayPtr toHost(const ModelElement& element, const ClassInfo& whenEmpty) {
  if (!element) return omCreateVCOSEmpty(hostClassOf(whenEmpty).name());
  return BindingRegistry::announce(kElements, {element.impl()});
}

vexal::ArrayPtr toHost(const Model& model) {
  return BindingRegistry::announce(kModels, {model.impl()});
}

vexal::ArrayPtr toHost(const ElementImpl& owner, const PropertyInfo& collection) {
  return BindingRegistry::announce(kCollections, {const_cast<ElementImpl*>(&owner), &collection});
}

namespace detail {

Handover::~Handover() {
  for (void* native : natives_) static_cast<ElementImpl*>(native)->removeRef();
}

void Handover::narrow(const ClassInfo& info) {
  if (!common_) common_ = &info;
  while (!info.isA(*common_)) common_ = common_->super;
}

vexal::ArrayPtr Handover::finish(const ClassInfo& whenEmpty) {
  const COSClass& hostClass = hostClassOf(common_ ? *common_ : whenEmpty);
  if (natives_.empty()) return omCreateVCOSEmpty(hostClass.name());
  vexal::ArrayPtr array =
      BindingRegistry::announceAll(kElements, natives_, &hostClass, vcos::Reference::Adopt);
  natives_.clear();
  return array;
}

}  // namespace detail

vexal::ArrayPtr toHost(std::vector<ModelElement> elements, const ClassInfo& whenEmpty) {
  detail::Handover handover(elements.size());
  for (ModelElement& element : elements) handover.take(element.detach());
  return handover.finish(whenEmpty);
}

// From the host

ModelElement elementOf(const vxArray* object) {
  const Native native = vcos::factory::impl::nativeOf(object, kElements);
  if (!native.object) {
    vcos::factory::impl::validateSelfPointer(object);
    reportException(mf0::messages::CannotCastIncompatibleTypes(kElementName));
  }
  return ModelElement(&elementIn(native));
}

ModelElement elementOf(const vxArray* objects, std::size_t k) {
  if (vexal::isCell(objects)) return elementOf(vexal::cellElement(objects, k));
  const auto natives = vcos::factory::impl::nativesOf(objects, kElements);
  if (natives.empty()) return elementOf(omGetArrayElement(objects, k).get());
  auto* const element = static_cast<ElementImpl*>(natives[k]);
  if (element->isDestroyed()) vxErrMsgId(component_Vexal::catalog_class::key_InvalidHandle);
  return ModelElement(element);
}

std::vector<ModelElement> elementsOf(const vxArray* objects) {
  const Native view = vcos::factory::impl::nativeOf(objects, kCollections);
  const auto* property = static_cast<const PropertyInfo*>(view.part);
  std::vector<ModelElement> elements;
  if (property && property->isReferenceList()) {
    for (const ModelElement& element : ReferenceCollection(&elementIn(view), *property)) {
      elements.push_back(element);
    }
    return elements;
  }
  const std::size_t count = vexal::elementCount(objects);
  elements.reserve(count);
  for (std::size_t k = 0; k < count; ++k) elements.push_back(elementOf(objects, k));
  return elements;
}

Model modelOf(const vxArray* models) noexcept {
  try {
    if (const Native one = vcos::factory::impl::nativeOf(models, kModels); one.object) {
      return Model(&modelIn(one));
    }
    if (vexal::isEmpty(models) || !vexal::isClass(models, vexal::ClassId::Object)) return {};
    const vexal::ArrayPtr first = omGetArrayElement(models, 0);
    return Model(
        static_cast<ModelImpl*>(vcos::factory::impl::nativeOf(first.get(), kModels).object));
  } catch (...) {
    return {};
  }
}

}  // namespace mf::zero::mi
