#include "framework/mi/host_classes.h"

#include <memory>

#include "framework/element.h"
#include "framework/mi/empty_parent_package.h"
#include "framework/mi/host_boundary.h"
#include "framework/mi/host_objects.h"
#include "host/vcos/om.h"

namespace mf::zero::mi {
namespace {

using vcos::COSPackage;
using vcos::factory::ClassTable;

// Maps have their names; no property is one.
constinit const ClassTable kMap{
    .name = "mf.zero.Map", .superclass = "mf.zero.Set", .doc = "Elements by key."};
constinit const ClassTable kMultimap{.name = "mf.zero.Multimap",
                                     .superclass = "mf.zero.Set",
                                     .doc = "Elements by key, several for one key."};
constinit const ClassTable kAssociative{.name = "mf.zero.PrimitiveAssociativeCollection",
                                        .superclass = "mf.zero.PrimitiveSet",
                                        .doc = "Values by key."};

constexpr const ClassTable* kTables[] = {
    &detail::kModelTable,
    &detail::kTransactionTable,
    &detail::kSubscriptionTable,
    &detail::kElementTable,
    &detail::kSetTable,
    &detail::kSequenceTable,
    &detail::kPrimitiveSetTable,
    &detail::kPrimitiveSequenceTable,
    &kMap,
    &kMultimap,
    &kAssociative,
};

// What scripts passed where a model belongs, but is none, becomes no model: the constructors say
// what they lack.
class NoModel final : public vcos::COSTypeConversion {
 public:
  vexal::ArrayPtr convert(const vxArray*) override { return omCreateVCOSEmpty(kModelName); }
};

class ZeroPackage final : public EmptyParentPackage {
 public:
  ZeroPackage() : EmptyParentPackage("mf.zero") {}
  void initializePackage(COSPackage* package) override {
    for (const ClassTable* table : kTables) package->addClass(*table);
    registerElementClass(ModelElement::classInfo());
  }
};

}  // namespace

void registerHostClasses() {
  attachToHost();
  EmptyParentPackage::registerPackage(std::make_unique<ZeroPackage>());
  EmptyParentPackage::registerPackage(detail::makeMetaPackage());
  if (!vcos::COSTypeRepository::getConversion("any", kModelName)) {
    vcos::COSTypeRepository::addConversion("any", kModelName, std::make_unique<NoModel>());
  }
}

}  // namespace mf::zero::mi
