// Proxies: elements whose values are elsewhere until somebody looks at them.
#include <algorithm>
#include <vector>

#include "framework/creation.h"
#include "framework/element.h"
#include "framework/links.h"
#include "framework/meta/meta.h"
#include "framework/model_impl.h"
#include "framework/raw.h"
#include "framework/references.h"
#include "host/array.h"

namespace mf::zero {

ModelElement ModelImpl::createProxy(const ClassInfo& info, const uuid& identity) {
  if (!isOpen()) refuseWrite();
  if (identity.isNil()) reportException(mf0::messages::InvalidValue());
  if (info.isAbstract) {
    reportException(mf0::messages::CannotCreateAbstractClass(info.qualifiedName));
  }
  if (ElementImpl* known = identities_.find(identity)) {
    if (&known->classInfo() == &info) return ModelElement(known);
    reportException(mf0::messages::CannotCreateDuplicateIdentity(identity.toString()));
  }
  if (depth_ > 0) log_->add({.kind = UndoKind::kNothing});
  ElementImpl* proxy = newElement(info, identity);
  Raw::setProxy(*proxy, true);
  if (depth_ > 0) log_->records.back() = {.kind = UndoKind::kProxy, .element = proxy->id()};
  return ModelElement(proxy);
}

namespace {

/// Notes which elements are being loaded on this thread: a loader that looks at the one it loads
/// would never end.
class Loading {
 public:
  explicit Loading(const ElementImpl& element) {
    const auto& open = elements();
    nested_ = std::find(open.begin(), open.end(), &element) != open.end();
    elements().push_back(&element);
  }
  Loading(const Loading&) = delete;
  Loading& operator=(const Loading&) = delete;
  ~Loading() { elements().pop_back(); }
  bool isNested() const { return nested_; }

 private:
  static std::vector<const ElementImpl*>& elements() {
    thread_local std::vector<const ElementImpl*> open;
    return open;
  }
  bool nested_ = false;
};

[[noreturn]] void raiseCannotResolve(const ElementImpl& element, std::string_view reason) {
  reportException(mf0::messages::CannotResolveProxy(element.Uuid().toString(), reason));
}

}  // namespace

void ElementImpl::resolve() const {
  if (isDestroyed()) prepareRead();
  if (!isProxy()) return;
  const std::shared_ptr<ElementLoader> loader = model().loader();
  const ModelElement keep(const_cast<ElementImpl*>(this));
  const std::unique_ptr<BuilderValues> values =
      classInfo().native.newBuilder(classInfo(), getModel());
  const Loading loading(*this);
  if (loading.isNested()) raiseCannotResolve(*this, "it is being loaded already");
  if (!loader || !loader->load(Uuid(), *values)) {
    raiseCannotResolve(*this, "the model has no loader that knows it");
  }
  if (isDestroyed()) prepareRead();  // the loader's doing
  Creation::load(*keep.impl(), *values);
}

void ElementImpl::convertToProxy() {
  if (isDestroyed()) refuseChange();
  if (isProxy()) return;
  model().checkWritable();
  if (!model().loader()) {
    reportException(mf0::messages::CannotConvertToProxy("the model has no loader"));
  }
  if (!model().isQuiet()) {
    reportException(mf0::messages::CannotConvertToProxy("a transaction is open"));
  }
  const vexal::ReleasePause pause;
  Creation::empty(*this);
  Raw::setProxy(*this, true);
}

void ElementImpl::convertReferencesToProxies() {
  if (flags_ & kAttention) refuseChange();
  std::vector<ElementImpl*> targets;
  forEachProperty(classInfo(), [&](const PropertyInfo& property) {
    if (property.kind != ValueKind::kElement || property.has(kContainment)) return;
    if (property.has(kMany)) {
      const ReferenceList& list = Raw::at<ReferenceList>(*this, property);
      for (std::uint32_t i = 0; i < list.size; ++i) {
        if (ElementImpl* held = target(list.slots[i])) targets.push_back(held);
      }
    } else if (ElementImpl* held = target(Raw::at<ReferenceSlot>(*this, property))) {
      targets.push_back(held);
    }
  });
  for (ElementImpl* held : targets) {
    if (held != this) held->convertToProxy();
  }
}

bool ElementImpl::inverseContainsProxyTo(const ModelElement& element,
                                         const meta::Property& property) const {
  const PropertyInfo& info = checkedInfo(property);
  if (flags_ & kAttention) prepareRead();
  return info.kind == ValueKind::kElement && references::find(*this, info, element.impl()) &&
         element->isProxy();
}

}  // namespace mf::zero
