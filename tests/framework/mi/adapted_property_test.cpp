// Typed getters and setters of elements as properties of a host class.
#include "framework/mi/adapted_property.h"

#include <gtest/gtest.h>

#include <optional>

#include "framework/garden.h"
#include "framework/mi/empty_parent_package.h"
#include "framework/mi/script_test.h"
#include "host/vcos/package.h"

namespace mf::zero::mi {
namespace {

using namespace vexal::testing;
using testing::Bed;
using testing::Kind;
using testing::Plant;
using testing::Record;
using vcos::factory::property;
using vexal::ArrayPtr;

Kind getKind(Plant* plant) { return plant->kind(); }
void setKind(Plant* plant, Kind kind) { (*plant)->setKind(kind); }
Bed getBed(Plant* plant) { return plant->bed(); }
void setBed(Plant* plant, Bed bed) { (*plant)->setBed(bed); }
const ReferenceCollection* getNeighbours(Plant* plant) {
  static std::optional<ReferenceCollection> latest;
  latest.reset();
  if (!plant->bed()) return nullptr;
  latest.emplace(plant->impl(), *Plant::classInfo().findByName(u"Neighbours"));
  return &*latest;
}
const AbstractPrimitiveCollection* noNumbers(Plant*) { return nullptr; }

constinit const vcos::factory::PropertyRow kRows[]{
    property<&getKind, &setKind>("Kind", "By its enumeration."),
    property<&getBed, &setBed>("Bed"),
    property<&getNeighbours>("Neighbours"),
    property<&noNumbers>("Numbers"),
};
constinit const vcos::factory::ClassTable kTable{.name = "adapted.Plant", .properties = kRows};

class AdaptedPropertyTest : public testing::ScriptTest {
 protected:
  AdaptedPropertyTest() {
    if (vcos::COSPackage::getPackage("adapted")) return;
    EmptyParentPackage::registerPackage("adapted")->addClass(kTable);
  }
  // A plant whose object is of the class with adapted properties.
  ArrayPtr adapted() {
    return vcos::factory::basic::BindingRegistry::announce(
        kElements, {plant_.impl()}, vcos::COSClass::getClass("adapted.Plant"));
  }
  Model model_ = Model::create();
  Plant plant_ = Plant::create(model_);
};

TEST_F(AdaptedPropertyTest, EnumerationsAreMembersOrTheirNames) {
  const ArrayPtr object = adapted();
  EXPECT_EQ(text(call(get(object, "Kind"), "getLiteral")), "Herb");
  EXPECT_EQ(set(object, "Kind", "Fruit"), "");
  EXPECT_EQ(plant_.kind(), Kind::Fruit);
  EXPECT_EQ(set(object, "Kind", "Tree"), "mf0:messages:NoSuchLiteral");
  EXPECT_EQ(plant_.kind(), Kind::Fruit);
  EXPECT_EQ(set(object, "Kind", vexal::createDoubleMatrix(0, 0)), "");
  EXPECT_EQ(plant_.kind(), Kind{});
}

TEST_F(AdaptedPropertyTest, ElementsAreObjectsOrNone) {
  const ArrayPtr object = adapted();
  EXPECT_EQ(vexal::describe(get(object, "Bed").get()), "empty 0-by-0 garden.Bed object array");
  const ArrayPtr bed = toHost(Bed::create(model_));
  EXPECT_EQ(set(object, "Bed", bed), "");
  EXPECT_EQ(identityOf(get(object, "Bed")), identityOf(bed));
  EXPECT_EQ(set(object, "Bed", object), "Vexal:class:CannotConvert");
  EXPECT_EQ(set(object, "Bed", vexal::createDoubleMatrix(0, 0)), "");
  EXPECT_FALSE(plant_.bed());
}

TEST_F(AdaptedPropertyTest, CollectionsAreLiveAndReadOnly) {
  const ArrayPtr object = adapted();
  EXPECT_EQ(vexal::describe(get(object, "Neighbours").get()),
            "empty 0-by-0 mf.zero.Set object array");
  EXPECT_EQ(vexal::className(get(object, "Numbers").get()), "mf.zero.PrimitiveSet");
  plant_->setBed(Bed::create(model_));
  const ArrayPtr neighbours = get(object, "Neighbours");
  call(neighbours, "add", {toHost(Plant::create(model_))});
  EXPECT_EQ(plant_.neighbours().size(), 1U);
  EXPECT_EQ(identityOf(get(object, "Neighbours")), identityOf(neighbours));
  EXPECT_EQ(set(object, "Neighbours", neighbours), "Vexal:class:ReadOnlyProperty");
}

TEST_F(AdaptedPropertyTest, DataTypesAreNamedByTheTypes) {
  const auto described = vexal::script::describeClass("adapted.Plant");
  std::vector<std::string> types;
  for (const auto& member : described.value.members) types.push_back(member.dataType);
  EXPECT_EQ(types, (std::vector<std::string>{"garden.Kind scalar", "garden.Bed property",
                                             "mf.zero.Set", "mf.zero.PrimitiveSet"}));
}

}  // namespace
}  // namespace mf::zero::mi
