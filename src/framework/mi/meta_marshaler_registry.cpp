#include "framework/mi/meta_marshaler_registry.h"

#include "framework/mi/enum_value_marshaler.h"
#include "framework/mi/host_objects.h"

namespace mf::zero::mi {

MetaMarshalerRegistry& MetaMarshalerRegistry::getInstance() {
  static auto& registry = *new MetaMarshalerRegistry;
  return registry;
}

MetaMarshalerRegistry::MetaMarshalerRegistry() {
  const auto add = [this]<class T>(const char* type, std::in_place_type_t<T>) {
    byType_.emplace(type, std::make_unique<PolicyBasedValueMarshaler<T>>());
  };
  add("Boolean", std::in_place_type<bool>);
  add("Integer8", std::in_place_type<std::int8_t>);
  add("Integer", std::in_place_type<std::int32_t>);
  add("Real", std::in_place_type<double>);
  add("String", std::in_place_type<std::u16string>);
  add("StdString", std::in_place_type<std::u16string>);
  add("VxArray", std::in_place_type<const vxArray*>);
  for (const auto& [type, marshaler] : byType_) marshaler->initializeDependencies();
}

const ValueMarshaler* MetaMarshalerRegistry::getPropertyMarshaler(
    const PropertyInfo& property) const {
  const auto found = byType_.find(property.type);
  return found == byType_.end() ? nullptr : found->second.get();
}

const ValueMarshaler* MetaMarshalerRegistry::getPropertyMarshaler(
    const meta::Property& property) const {
  return getPropertyMarshaler(meta::infoOf(property));
}

const ValueMarshaler& marshalerOf(const PropertyInfo& property) {
  const auto* marshaler = MetaMarshalerRegistry::getInstance().getPropertyMarshaler(property);
  if (!marshaler) reportException(mf0::messages::NoSuchType(property.type));
  return *marshaler;
}

namespace {

std::vector<Value> valuesOf(const std::vector<ModelElement>& elements) {
  return {elements.begin(), elements.end()};
}

}  // namespace

Value valueOf(const PropertyInfo& property, const vxArray* array) {
  if (property.kind == ValueKind::kElement) {
    return vexal::isEmpty(array) ? Value() : Value(elementOf(array));
  }
  const bool isNumber = property.kind == ValueKind::kReal &&
                        vexal::isClass(array, vexal::ClassId::Double) &&
                        vexal::elementCount(array) == 1;
  if (isNumber) return Value(vexal::doubleData(array)[0]);  // the most frequent, spared the look-up
  const ValueMarshaler& marshaler = marshalerOf(property);
  if (marshaler.isCorrectType(array)) return marshaler.fromVxArray(array);
  return marshaler.fromVxArray(vcos::COSTypeRepository::convert(array, marshaler.dataType()).get());
}

std::vector<Value> valuesOf(const PropertyInfo& property, const vxArray* array) {
  if (property.kind == ValueKind::kElement) return valuesOf(elementsOf(array));
  const vcos::Native view = vcos::factory::impl::nativeOf(array, kCollections);
  if (view.part) {  // another collection
    const Value held = static_cast<const ElementImpl*>(view.object)
                           ->get(*static_cast<const PropertyInfo*>(view.part));
    return {held.items().begin(), held.items().end()};
  }
  return marshalerOf(property).toValueVector(array);
}

vexal::ArrayPtr arrayOf(const PropertyInfo& property, const Value& value) {
  if (property.kind != ValueKind::kElement) {
    const ValueMarshaler& marshaler = marshalerOf(property);
    if (!property.has(kMany)) return marshaler.toVxArray(value);
    return marshaler.fromValueVector({value.items().begin(), value.items().end()});
  }
  if (!property.has(kMany)) return toHost(value.getValue<ModelElement>(), *property.target);
  std::vector<ModelElement> elements;
  elements.reserve(value.items().size());
  for (const Value& item : value.items()) elements.push_back(item.getValue<ModelElement>());
  return toHost(std::move(elements), *property.target);
}

}  // namespace mf::zero::mi
