#include "support/plant.h"

#include <array>

#include "host/diagnostic.h"
#include "host/text.h"
#include "host/vcos/om.h"
#include "host/vcos/package.h"
#include "host/vcos/property.h"

namespace vcos::plant {

int Device::live = 0;

}  // namespace vcos::plant

namespace vcos::factory {

// The integer of a member; 0 for no member at all.
enum class Kind : std::int32_t {};

template <>
struct Marshal<Kind> {
  static constexpr std::string_view kDataType = "plant.Kind scalar";
  static vexal::ArrayPtr toArray(Kind kind) {
    return createValueObject(*COSClass::getClass("plant.Kind"), static_cast<std::int32_t>(kind));
  }
  static Kind fromArray(const vxArray* array) {
    if (omGetNumberOfElementsInUnderlyingArray(array) == 0) return Kind{0};
    return Kind{vexal::elements<std::int32_t>(omGetUnderlyingArray(array).get())[0]};
  }
};

}  // namespace vcos::factory

namespace vcos::plant {
namespace {

using factory::Kind;
using factory::MethodAttributes;
using factory::MethodCall;
using factory::property;
using factory::PropertyRow;
using factory::VcosMethod;
using factory::basic::BindingRegistry;
using vexal::ArrayPtr;

Device* deviceOf(const Native& native) { return static_cast<Device*>(native.object); }
Tank* tankOf(const MethodCall& call) { return static_cast<Tank*>(deviceOf(call.native)); }

void retain(const Native& native) { ++deviceOf(native)->references; }
void release(const Native& native) noexcept {
  if (--deviceOf(native)->references == 0) delete deviceOf(native);
}
bool isAlive(const Native& native) noexcept { return deviceOf(native)->isAlive; }
const COSClass* classOf(const Native& native) {
  return COSClass::getClass(deviceOf(native)->className);
}
std::string describe(const Native& native) { return vexal::toUtf8(deviceOf(native)->name); }

// Properties.
std::u16string getName(Device* device) { return device->name; }
void setName(Device* device, std::u16string name) {
  if (name.empty()) throw Trouble();
  device->name = std::move(name);
}
double getLevel(Tank* tank) { return tank->level; }
void setLevel(Tank* tank, double level) { tank->level = level; }
double getCapacity(Tank* tank) { return tank->capacity; }
bool isOpen(Tank* tank) { return tank->isOpen; }
void setOpen(Tank* tank, bool open) { tank->isOpen = open; }
Kind getKind(Tank* tank) { return Kind{tank->kind}; }
void setKind(Tank* tank, Kind kind) { tank->kind = static_cast<int>(kind); }
ArrayPtr readGauge(const PropertyRow& row, const Native& native) {
  return BindingRegistry::announce(kGauges, {native.object, row.context}, "plant.Gauge");
}
ArrayPtr readReading(const PropertyRow&, const Native& native) {
  return vexal::createDouble(static_cast<Tank*>(deviceOf(native))->level);
}

// Methods.
ArrayPtr constructTank(const MethodCall& call) {
  auto tank = std::make_unique<Tank>();
  tank->name = factory::extractString(call.inputs[0]);
  if (tank->name == u"nothing") return nullptr;
  if (call.inputs.size() > 1) tank->level = vexal::doubleData(call.inputs[1])[0];
  BindingRegistry::announceForConstructor(kDevices, {tank.get()}, call.hostClass.name(),
                                          call.constructed, true);
  tank.release();
  return nullptr;
}

ArrayPtr drain(const MethodCall& call) {
  const double amount = vexal::doubleData(call.inputs[0])[0];
  if (amount > tankOf(call)->level) throw Trouble();
  tankOf(call)->level -= amount;
  return vexal::createDouble(tankOf(call)->level);
}

ArrayPtr destroyDevice(const MethodCall& call) {
  deviceOf(call.native)->isAlive = false;
  return nullptr;
}

ArrayPtr copies(const MethodCall& call) {
  const auto count = static_cast<std::size_t>(vexal::doubleData(call.inputs[0])[0]);
  std::vector<void*> natives;
  for (std::size_t k = 0; k < count; ++k) {
    auto* tank = new Tank;
    tank->level = static_cast<double>(k);
    natives.push_back(tank);
  }
  return BindingRegistry::announceAll(kDevices, natives, COSClass::getClass("plant.Tank"));
}

ArrayPtr className(const MethodCall& call) { return vexal::createChar(call.hostClass.name()); }

ArrayPtr literal(const MethodCall& call) {
  const auto value = vexal::elements<std::int32_t>(omGetUnderlyingArray(call.object).get())[0];
  return vexal::createChar(call.hostClass.member(value)->name);
}

// Tables.
constexpr char kLeft = 'l', kRight = 'r';

constinit const PropertyRow kDeviceProperties[]{
    property<&getName, &setName>("Name", "What the device is called."),
};
constinit const VcosMethod kDeviceMethods[]{
    {.name = "destroy", .inputTypes = "plant.Device", .body = &destroyDevice},
    {.name = "StaticName",
     .attributes = MethodAttributes::Static,
     .outputType = "VcosFactoryString scalar",
     .body = &className},
};
constinit const PropertyRow kTankProperties[]{
    property<&getLevel, &setLevel>("Level", "How full it is."),
    property<&getCapacity>("Capacity"),
    property<&isOpen, &setOpen>("Open"),
    property<&getKind, &setKind>("Kind"),
    {.name = "Left", .dataType = "plant.Gauge", .read = &readGauge, .context = &kLeft},
    {.name = "Right", .dataType = "plant.Gauge", .read = &readGauge, .context = &kRight},
};
constinit const VcosMethod kTankMethods[]{
    {.name = "Tank",
     .attributes = MethodAttributes::Constructor,
     .inputNames = "name opt_level",
     .outputType = "plant.Tank",
     .inputTypes = "VcosFactoryString scalar, double scalar",
     .body = &constructTank,
     .doc = "A tank of that name."},
    {.name = "drain",
     .outputType = "double scalar",
     .inputTypes = "plant.Tank, double scalar",
     .body = &drain},
    {.name = "copies",
     .inputNames = "count",
     .outputType = "plant.Tank",
     .inputTypes = "plant.Tank, double scalar",
     .body = &copies},
};
constinit const PropertyRow kGaugeProperties[]{
    {.name = "Reading", .dataType = "double scalar", .read = &readReading},
};
constinit const COSEnumInfo kKinds[]{{"Oil", 1, "Burns."}, {"Water", 2, "Does not."}};
constinit const VcosMethod kKindMethods[]{
    {.name = "getLiteral",
     .outputType = "VcosFactoryString scalar",
     .inputTypes = "plant.Kind",
     .body = &literal},
};

constinit const factory::ClassTable kTables[]{
    {.name = "plant.Tank",
     .superclass = "plant.Device",
     .doc = "Holds a liquid.",
     .properties = kTankProperties,
     .methods = kTankMethods},
    {.name = "plant.Valve", .superclass = "plant.Device"},
    {.name = "plant.Device",
     .doc = "Whatever stands in a plant.",
     .isAbstract = true,
     .properties = kDeviceProperties,
     .methods = kDeviceMethods},
    {.name = "plant.Gauge", .properties = kGaugeProperties},
    {.name = "plant.Kind", .kind = ClassKind::Value, .methods = kKindMethods, .members = kKinds},
};

class PlantInfo final : public COSPackageInfo {
 public:
  PlantInfo() : COSPackageInfo("plant") {}
  void initializePackage(COSPackage* package) override {
    for (const auto& table : kTables) package->addClass(table);
  }
};

std::string identifierOf(const std::exception& error) noexcept {
  return dynamic_cast<const Trouble*>(&error) != nullptr ? "plant:messages:Jammed" : "";
}

}  // namespace

constinit const NativeFamily kDevices{.name = "device",
                                      .retain = &retain,
                                      .release = &release,
                                      .isAlive = &isAlive,
                                      .classOf = &classOf,
                                      .describe = &describe};
constinit const NativeFamily kGauges{
    .name = "gauge", .retain = &retain, .release = &release, .isAlive = &isAlive};

void registerPlant() {
  if (COSPackage::getPackage("plant") != nullptr) return;
  vexal::registerErrorTranslator(&identifierOf);
  COSPackage::addPackage(std::make_unique<PlantInfo>());
}

}  // namespace vcos::plant
