// Setting a number and reading it back, by name and by reflection. One element, n times: what
// counts is the call, and that it asks for no memory.
#include <cstddef>
#include <cstring>
#include <utility>

#include "framework/change_set.h"
#include "framework/meta/meta.h"
#include "framework/model_impl.h"
#include "row.h"
#include "simmanager/mm/job.h"

namespace kxsim::bench {

namespace {

using kinetra::simmanager::mm::Job;
using mf::zero::Model;
namespace meta = mf::zero::meta;

struct Listener : mf::zero::Observer {
  std::size_t heard = 0;
  void changed(const mf::zero::ChangeSet&) override { ++heard; }
};

double numberOf(std::size_t i) { return static_cast<double>(i + 1); }

void setTimes(std::size_t n, const Job& job) {
  for (std::size_t i = 0; i < n; ++i) job->setStartTime(numberOf(i));
}

void setAlone(std::size_t n, Meter& meter) {
  const Job job = Job::create(Model::create());
  setTimes(3, job);
  meter.measure([&] { setTimes(n, job); });
}

void setObserved(std::size_t n, Meter& meter) {
  const Model model = Model::create();
  const Job job = Job::create(model);
  Listener listener;
  const auto subscription = model->addObserver(listener);
  setTimes(3, job);
  meter.measure([&] { setTimes(n, job); });
}

void setInTransaction(std::size_t n, Meter& meter) {
  const Model model = Model::create();
  const Job job = Job::create(model);
  Listener listener;
  const auto subscription = model->addObserver(listener);
  setTimes(3, job);
  auto transaction = model->beginTransaction();
  setTimes(3, job);
  meter.measure([&] { setTimes(n, job); });
  transaction.commit();
}

void setEqual(std::size_t n, Meter& meter) {
  const Model model = Model::create();
  const Job job = Job::create(model);
  job->setStartTime(1.0);
  double value = 1.0;
  meter.measure([&] {
    for (std::size_t i = 0; i < n; ++i) {
      use(value);
      job->setStartTime(value);
    }
  });
}

// By reflection, as the host does it: by the registered property.

meta::Property startTime() { return Job::metaClass()->findProperty(u"StartTime"); }

void getByProperty(std::size_t n, Meter& meter) {
  const Job job = Job::create(Model::create());
  const meta::Property property = startTime();
  meter.measure([&] {
    for (std::size_t i = 0; i < n; ++i) {
      double value = job->getPropertyValue(property).getValue<double>();
      use(value);
    }
  });
}

void setByProperty(std::size_t n, Meter& meter) {
  const Job job = Job::create(Model::create());
  const meta::Property property = startTime();
  job->setPropertyValue(property, 0.5);
  meter.measure([&] {
    for (std::size_t i = 0; i < n; ++i) job->setPropertyValue(property, numberOf(i));
  });
}

// The floor: a struct, a compare, a store and a virtual call.

struct Record;
struct Hearer {
  virtual ~Hearer() = default;
  virtual void changed(const Record& record, double before) = 0;
};
struct Record {
  double startTime = 0;
  Hearer* hearer = nullptr;
  void setStartTime(double value) {
    if (startTime == value) return;
    const double before = std::exchange(startTime, value);
    if (hearer) hearer->changed(*this, before);
  }
};
struct CountingHearer : Hearer {
  std::size_t heard = 0;
  void changed(const Record&, double) override { ++heard; }
};

void setFloor(std::size_t n, Meter& meter, Hearer* hearer) {
  Record record{0, hearer};
  use(record);
  meter.measure([&] {
    for (std::size_t i = 0; i < n; ++i) {
      record.setStartTime(numberOf(i));
      use(record);
    }
  });
}

void setAloneFloor(std::size_t n, Meter& meter) { setFloor(n, meter, nullptr); }

void setObservedFloor(std::size_t n, Meter& meter) {
  CountingHearer hearer;
  setFloor(n, meter, &hearer);
}

void setEqualFloor(std::size_t n, Meter& meter) {
  Record record{1.0};
  meter.measure([&] {
    for (std::size_t i = 0; i < n; ++i) {
      use(record);
      record.setStartTime(1.0);
    }
  });
}

// A table of properties, and a tagged value.

struct TaggedValue {
  enum class Kind : std::uint8_t { kNumber, kFlag } kind;
  double number;
};
struct Field {
  TaggedValue::Kind kind;
  std::size_t offset;
};
constexpr Field kFields[] = {{TaggedValue::Kind::kNumber, offsetof(Record, startTime)}};

void getByPropertyFloor(std::size_t n, Meter& meter) {
  Record record{1.0};
  const Field* field = kFields;
  meter.measure([&] {
    for (std::size_t i = 0; i < n; ++i) {
      use(field);
      TaggedValue value{field->kind, 0};
      std::memcpy(&value.number, reinterpret_cast<std::byte*>(&record) + field->offset, 8);
      use(value);
    }
  });
}

void setByPropertyFloor(std::size_t n, Meter& meter) {
  Record record{1.0};
  const Field* field = kFields;
  meter.measure([&] {
    for (std::size_t i = 0; i < n; ++i) {
      use(field);
      TaggedValue value{TaggedValue::Kind::kNumber, numberOf(i)};
      use(value);
      if (value.kind != field->kind) continue;
      std::memcpy(reinterpret_cast<std::byte*>(&record) + field->offset, &value.number, 8);
      use(record);
    }
  });
}

constexpr Row kRows[] = {
    {"set-alone", "set", "a number, own transaction, nobody listens", Process::kThis, setAlone,
     setAloneFloor},
    {"set-observed", "set", "a number, own transaction, one observer", Process::kThis, setObserved,
     setObservedFloor},
    {"set-in-transaction", "set", "a number in an open transaction", Process::kThis,
     setInTransaction, setAloneFloor},
    {"set-equal", "set", "a number to the value it has", Process::kThis, setEqual, setEqualFloor},
    {"get-by-property", "get", "a number by its registered property", Process::kThis, getByProperty,
     getByPropertyFloor},
    {"set-by-property", "set", "a number by its registered property, nobody listens",
     Process::kThis, setByProperty, setByPropertyFloor},
};

}  // namespace

std::span<const Row> propertyRows() { return kRows; }

}  // namespace kxsim::bench
