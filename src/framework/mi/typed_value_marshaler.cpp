#include "framework/mi/typed_value_marshaler.h"

#include <algorithm>

#include "host/vcos/om.h"
#include "host/vcos/script.h"

namespace mf::zero::mi {

ValueMarshaler::~ValueMarshaler() = default;

namespace detail {
namespace {

template <vexal::PlainElement T>
vexal::ArrayPtr plainRow(vexal::ClassId classId, std::size_t count, const Value* values) {
  const std::size_t dims[] = {1, count};
  vexal::ArrayPtr row = vexal::createArray(classId, dims);
  std::transform(values, values + count, vexal::mutableElements<T>(row.get()).begin(),
                 [](const Value& value) { return value.getValue<T>(); });
  return row;
}

vexal::ArrayPtr smallIntegerRow(std::size_t count, const Value* values) {
  const std::size_t dims[] = {1, count};
  vexal::ArrayPtr row = vexal::createArray(vexal::ClassId::Int32, dims);
  std::transform(values, values + count, vexal::mutableElements<std::int32_t>(row.get()).begin(),
                 [](const Value& value) { return value.getValue<std::int8_t>(); });
  return row;
}

vexal::ArrayPtr enumRow(const EnumInfo& info, std::size_t count, const Value* values) {
  const std::size_t dims[] = {1, count};
  const vexal::ArrayPtr integers = vexal::createArray(vexal::ClassId::Int32, dims);
  std::transform(values, values + count,
                 vexal::mutableElements<std::int32_t>(integers.get()).begin(),
                 [](const Value& value) { return static_cast<std::int32_t>(value.bits()); });
  return omCreateBuiltinBasedArrayFromUnderlyingArray(info.qualifiedName, integers.get());
}

vexal::ArrayPtr cellRow(const ValueMarshaler& marshaler, std::size_t count, const Value* values) {
  vexal::ArrayPtr cells = vexal::createCell(1, count);
  for (std::size_t k = 0; k < count; ++k) {
    vexal::setCell(cells.get(), k, marshaler.toVxArray(values[k]).get());
  }
  return cells;
}

// The data type of any number of them: "double" of "double scalar".
std::string_view typeAlone(std::string_view dataType) {
  return dataType.substr(0, dataType.find(' '));
}

}  // namespace

vexal::ArrayPtr rowOf(const ValueMarshaler& marshaler, std::size_t count, const Value* values) {
  if (count == 0) return vexal::createDoubleMatrix(0, 0);
  const ValueMeta& meta = values[0].meta();
  switch (meta.kind()) {
    case ValueKind::kReal: return plainRow<double>(vexal::ClassId::Double, count, values);
    case ValueKind::kBoolean: return plainRow<bool>(vexal::ClassId::Logical, count, values);
    case ValueKind::kInteger: return plainRow<std::int32_t>(vexal::ClassId::Int32, count, values);
    case ValueKind::kInteger8: return smallIntegerRow(count, values);
    case ValueKind::kEnumeration: return enumRow(*meta.enumeration(), count, values);
    case ValueKind::kString:
    case ValueKind::kArray:
    case ValueKind::kElement: return cellRow(marshaler, count, values);
  }
  return nullptr;
}

std::vector<Value> itemsOf(const ValueMarshaler& marshaler, const vxArray* array) {
  using vcos::COSTypeRepository;
  std::vector<Value> values;
  if (vexal::isEmpty(array)) return values;
  const auto addOne = [&](const vxArray* one) {
    const vexal::ArrayPtr converted = COSTypeRepository::convert(one, marshaler.dataType());
    values.push_back(marshaler.fromVxArray(converted.get()));
  };
  if (vexal::isCell(array)) {
    for (std::size_t k = 0; k < vexal::elementCount(array); ++k) {
      addOne(vexal::cellElement(array, k));
    }
  } else if (vexal::elementCount(array) == 1 || marshaler.isCorrectType(array)) {
    addOne(array);
  } else {
    const vexal::ArrayPtr whole =
        COSTypeRepository::convert(array, typeAlone(marshaler.dataType()));
    for (std::size_t k = 0; k < vexal::elementCount(whole.get()); ++k) {
      const auto one = vexal::script::element(whole.get(), k);
      values.push_back(marshaler.fromVxArray(one.value.get()));
    }
  }
  return values;
}

}  // namespace detail
}  // namespace mf::zero::mi
