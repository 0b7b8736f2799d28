// What the host's class objects cost by themselves: one small class, driven by name alone.
#include <vector>

#include "host/vcos/class.h"
#include "host/vcos/package.h"
#include "host/vcos/property.h"
#include "host/vcos/script.h"
#include "row.h"

namespace kxsim::bench {

namespace {

namespace script = vexal::script;
using vcos::Native;

struct Dial {
  int references = 1;
  double angle = 0.5;
};

Dial* dialOf(const Native& native) { return static_cast<Dial*>(native.object); }
double getAngle(Dial* dial) { return dial->angle; }
void setAngle(Dial* dial, double angle) { dial->angle = angle; }

constinit const vcos::factory::PropertyRow kProperties[]{
    vcos::factory::property<&getAngle, &setAngle>("Angle"),
};
constinit const vcos::factory::ClassTable kDial{.name = "bench.Dial", .properties = kProperties};

constinit const vcos::NativeFamily kDials{
    .name = "dial",
    .retain = [](const Native& native) { ++dialOf(native)->references; },
    .release = [](const Native& native) noexcept { --dialOf(native)->references; },
    .isAlive = [](const Native& native) noexcept { return dialOf(native)->references > 0; },
};

const vcos::COSClass* dialClass() {
  static const vcos::COSClass* const known = [] {
    vcos::COSPackage::addPackage(std::make_unique<vcos::COSPackageInfo>("bench"))->addClass(kDial);
    return vcos::COSClass::getClass("bench.Dial");
  }();
  return known;
}

vexal::ArrayPtr objectOf(Dial& dial) {
  return vcos::factory::basic::BindingRegistry::announce(kDials, {&dial}, dialClass());
}

std::vector<void*> addressesOf(std::vector<Dial>& dials) {
  std::vector<void*> addresses;
  for (Dial& dial : dials) addresses.push_back(&dial);
  return addresses;
}

void readProperty(std::size_t n, Meter& meter) {
  Dial dial;
  const vexal::ArrayPtr object = objectOf(dial);
  meter.measure([&] {
    for (std::size_t i = 0; i < n; ++i) {
      benchmark::DoNotOptimize(script::get(object.get(), "Angle").value.get());
    }
  });
}

void writeProperty(std::size_t n, Meter& meter) {
  Dial dial;
  const vexal::ArrayPtr object = objectOf(dial);
  const vexal::ArrayPtr angle = vexal::createDouble(1.5);
  meter.measure([&] {
    for (std::size_t i = 0; i < n; ++i) {
      benchmark::DoNotOptimize(script::set(object.get(), "Angle", angle.get()).error.get());
    }
  });
}

void handOver(std::size_t n, Meter& meter) {
  std::vector<Dial> dials(n);
  const std::vector<void*> addresses = addressesOf(dials);
  vexal::ArrayPtr array;
  meter.measure([&] {
    array = vcos::factory::basic::BindingRegistry::announceAll(kDials, addresses, dialClass());
  });
}

void handOverFloor(std::size_t n, Meter& meter) {
  std::vector<Dial> dials(n);
  const std::vector<void*> addresses = addressesOf(dials);
  std::vector<void*> array;
  meter.measure([&] {
    array.reserve(n);
    for (void* const address : addresses) {
      ++static_cast<Dial*>(address)->references;
      array.push_back(address);
    }
  });
}

void walk(std::size_t n, Meter& meter) {
  std::vector<Dial> dials(n);
  const std::vector<void*> addresses = addressesOf(dials);
  const vexal::ArrayPtr array =
      vcos::factory::basic::BindingRegistry::announceAll(kDials, addresses, dialClass());
  meter.measure([&] {
    for (std::size_t i = 0; i < n; ++i) {
      benchmark::DoNotOptimize(script::element(array.get(), i).value.get());
    }
  });
}

constexpr Row kRows[] = {
    {"script-read", "read", "read a number of a host object by name", Process::kThis, readProperty,
     nullptr},
    {"script-write", "write", "write a number of a host object by name", Process::kThis,
     writeProperty, nullptr},
    {"hand-over", "element", "hand natives over to the host as one array", Process::kFresh,
     handOver, handOverFloor},
    {"script-walk", "element", "look at each element of such an array", Process::kThis, walk,
     nullptr},
};

}  // namespace

std::span<const Row> scriptRows() { return kRows; }

}  // namespace kxsim::bench
