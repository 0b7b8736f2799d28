// Tables out of collections of objects, without objects for what the collections hold.
#include <algorithm>
#include <bit>
#include <limits>

#include "host/cell.h"
#include "host/detail/class_table.h"
#include "host/detail/content.h"
#include "host/text.h"
#include "host/vcos/detail/objects.h"
#include "host/vcos/detail/pairings.h"
#include "host/vcos/script.h"

namespace vexal::script {
namespace {

using detail::Content;
using detail::fail;
using detail::HostClass;
using detail::Layout;
using detail::NativeHead;
using vcos::Native;
using vcos::NativeFamily;
using vcos::NativeList;
using vcos::factory::PropertyRow;

// A living native and its class.
struct Subject {
  Native native;
  const HostClass& hostClass;
};

Subject subjectOf(const NativeFamily& family, const Native& native, const HostClass* nearest) {
  if (family.isAlive != nullptr && !family.isAlive(native)) fail("InvalidHandle");
  const vcos::COSClass* own = family.classOf != nullptr ? family.classOf(native) : nearest;
  if (own == nullptr) fail("UnknownClass", {family.name});
  return {native, static_cast<const HostClass&>(*own)};
}

Subject subjectAt(const vxArray* objects, std::size_t k) {
  const Content& content = *objects->content;
  if (content.layout == Layout::Objects) return subjectAt(&detail::childrenOf(content)[k], 0);
  if (content.layout != Layout::Natives) fail("NotAnObject", {describe(objects)});
  const auto& head = detail::headOf<NativeHead>(content);
  if (head.state == NativeHead::State::Removed) fail("InvalidHandle");
  void* const native = static_cast<void* const*>(detail::elementsOf(content))[k];
  return subjectOf(*head.family, {native, head.part}, head.hostClass);
}

// A property of objects of which most have the same class.
class Step {
 public:
  explicit Step(std::string_view name) : name_(name) {}

  const PropertyRow& rowIn(const HostClass& hostClass) {
    if (latest_ != &hostClass) {
      row_ = &vcos::detail::requireProperty(hostClass, name_).row;
      latest_ = &hostClass;
    }
    return *row_;
  }
  ArrayPtr read(const Subject& subject) {
    const PropertyRow& row = rowIn(subject.hostClass);
    if (row.read == nullptr) fail("NoSuchMember", {subject.hostClass.name, name_});
    return row.read(row, subject.native);
  }
  void list(const Subject& subject, NativeList& to) {
    const PropertyRow& row = rowIn(subject.hostClass);
    if (row.list == nullptr) fail("NotACollection", {subject.hostClass.name, name_});
    row.list(row, subject.native, to);
  }

 private:
  std::string_view name_;
  const HostClass* latest_ = nullptr;
  const PropertyRow* row_ = nullptr;
};

// One number, or any other value.
struct Entry {
  double number = 0;
  ArrayPtr other;

  Entry() = default;
  explicit Entry(ArrayPtr value) {
    const bool isNumber = isClass(value.get(), ClassId::Double) && elementCount(value.get()) == 1;
    if (isNumber) {
      number = doubleData(value.get())[0];
    } else {
      other = std::move(value);
    }
  }
};

// A column that is being filled: numbers for as long as there is nothing else, cells from then on.
class Filling {
 public:
  Filling(ArrayPtr key, std::size_t count)
      : key_(std::move(key)), values_(createDoubleMatrix(1, count)) {
    const std::size_t dims[]{1, count};
    present_ = createArray(ClassId::Logical, dims);
    numbers_ = mutableDoubleData(values_.get());
    marks_ = mutableElements<bool>(present_.get());
  }

  const vxArray* key() const noexcept { return key_.get(); }
  /// Whether the k-th place and those after it are free.
  bool isFree(std::size_t k) const noexcept { return next_ <= k; }
  /// The next column of the same key; 0 for none. That one is a repeat.
  std::size_t again = 0;
  bool isRepeat = false;

  void put(std::size_t k, const Entry& entry) {
    if (isOfNumbers_ && entry.other != nullptr) becomeCells();
    if (isOfNumbers_) {
      numbers_[k] = entry.number;
    } else {
      putCell(k, entry);
    }
    marks_[k] = true;
    next_ = k + 1;
    ++count_;
  }

  Column finish() {
    if (count_ == marks_.size()) return {std::move(key_), std::move(values_), nullptr};
    for (std::size_t k = 0; isOfNumbers_ && k < numbers_.size(); ++k) {
      if (!marks_[k]) numbers_[k] = std::numeric_limits<double>::quiet_NaN();
    }
    return {std::move(key_), std::move(values_), std::move(present_)};
  }

 private:
  void putCell(std::size_t k, const Entry& entry) {
    const ArrayPtr made = entry.other == nullptr ? createDouble(entry.number) : nullptr;
    setCell(values_.get(), k, made != nullptr ? made.get() : entry.other.get());
  }
  void becomeCells() {
    const ArrayPtr numbers = std::exchange(values_, createCell(1, marks_.size()));
    isOfNumbers_ = false;
    for (std::size_t k = 0; k < next_; ++k) {
      if (marks_[k]) setCell(values_.get(), k, createDouble(numbers_[k]).get());
    }
  }

  ArrayPtr key_;
  ArrayPtr values_;
  ArrayPtr present_;
  std::span<double> numbers_;
  std::span<bool> marks_;
  std::size_t next_ = 0;
  std::size_t count_ = 0;
  bool isOfNumbers_ = true;
};

// Keys that are handles are the same when their content is one and the same.
bool isSameKey(const vxArray* a, const vxArray* b) {
  return a->content == b->content || (a->content->layout != Layout::Natives && equalContent(a, b));
}

class Table {
 public:
  Table(std::size_t count, std::string_view key, std::string_view value)
      : count_(count),
        key_(key),
        value_(value),
        known_(std::bit_ceil(std::clamp(count, kFewest, kMost))) {}

  /// Stores what the items of the k-th object hold.
  void add(std::size_t k, const NativeList& items) {
    std::size_t place = 0;
    for (void* const native : items.natives()) {
      const Known& known = knownOf(items.family(), native, place);
      const std::size_t column = freeColumn(known.column, k);
      fillings_[column].put(k, known.entry);
      place = column + 1;
    }
  }

  std::vector<Column> finish() {
    std::vector<Column> columns;
    columns.reserve(fillings_.size());
    for (Filling& filling : fillings_) columns.push_back(filling.finish());
    return columns;
  }

 private:
  // What was read of an item, which is kept so that no other comes to lie at its address.
  struct Known {
    const NativeFamily* family = nullptr;
    void* native = nullptr;
    std::size_t column = 0;
    Entry entry;

    Known() = default;
    Known(const Known&) = delete;
    Known& operator=(const Known&) = delete;
    ~Known() { keep(nullptr, nullptr); }

    void keep(const NativeFamily* itsFamily, void* item) {
      if (item != nullptr) itsFamily->retain({item});
      void* const former = std::exchange(native, item);
      const NativeFamily* const formerFamily = std::exchange(family, itsFamily);
      if (former != nullptr) formerFamily->release({former});
    }
  };
  static constexpr std::size_t kFewest = 64;
  static constexpr std::size_t kMost = 1 << 14;

  // The latest item of each place; all others are read again.
  const Known& knownOf(const NativeFamily& family, void* native, std::size_t place) {
    constexpr std::uint64_t kGolden = 0x9e3779b97f4a7c15;
    const std::uint64_t mixed = reinterpret_cast<std::uintptr_t>(native) * kGolden;
    Known& known = known_[(mixed >> 32) & (known_.size() - 1)];
    if (known.native == native && known.family == &family) return known;
    const Subject item = subjectOf(family, {native}, nullptr);
    ArrayPtr key = key_.read(item);
    Entry entry(value_.read(item));
    known.column = columnOf(std::move(key), place);
    known.entry = std::move(entry);
    known.keep(&family, native);
    return known;
  }

  // The first column of the key, which is probably the one at that place.
  std::size_t columnOf(ArrayPtr key, std::size_t place) {
    const auto isOf = [&](const Filling& filling) {
      return !filling.isRepeat && isSameKey(filling.key(), key.get());
    };
    if (place < fillings_.size() && isOf(fillings_[place])) return place;
    const auto found = std::ranges::find_if(fillings_, isOf);
    if (found == fillings_.end()) return addColumn(std::move(key));
    return static_cast<std::size_t>(found - fillings_.begin());
  }

  // The first column of the same key that the k-th object has not filled.
  std::size_t freeColumn(std::size_t column, std::size_t k) {
    while (!fillings_[column].isFree(k)) {
      if (fillings_[column].again == 0) {
        const std::size_t added = addColumn(deepCopy(fillings_[column].key()));
        fillings_[column].again = added;
        fillings_[added].isRepeat = true;
      }
      column = fillings_[column].again;
    }
    return column;
  }

  std::size_t addColumn(ArrayPtr key) {
    fillings_.emplace_back(std::move(key), count_);
    return fillings_.size() - 1;
  }

  std::size_t count_;
  Step key_;
  Step value_;
  std::vector<Known> known_;
  std::vector<Filling> fillings_;
};

std::vector<Column> columnsOf(const vxArray* objects, std::string_view collection,
                              std::string_view key, std::string_view value) {
  detail::contentOf(objects);
  const ArrayPtr held = deepCopy(objects);  // reading may run code that changes the array
  const std::size_t count = elementCount(held.get());
  Step list(collection);
  Table table(count, key, value);
  NativeList items;
  for (std::size_t k = 0; k < count; ++k) {
    list.list(subjectAt(held.get(), k), items);
    table.add(k, items);
    items.clear();
  }
  return table.finish();
}

}  // namespace

Result<std::vector<Column>> columns(const vxArray* objects, std::string_view collection,
                                    std::string_view key, std::string_view value) noexcept {
  try {
    return {columnsOf(objects, collection, key, value), nullptr};
  } catch (...) {
    return {{}, diagnosticOfCurrentException(collection)};
  }
}

}  // namespace vexal::script
