#include "framework/mi/empty_parent_package.h"

#include <string>
#include <typeinfo>
#include <utility>

#include "framework/messages.h"
#include "framework/mi/enum_class.h"
#include "framework/mi/meta_marshaler_registry.h"

namespace mf::zero::mi {

namespace {

bool isPlain(const EmptyParentPackage& package) {
  return typeid(package) == typeid(EmptyParentPackage);
}

}  // namespace

vcos::COSPackage* EmptyParentPackage::registerPackage(std::unique_ptr<EmptyParentPackage> package) {
  const std::string_view name = package->name();
  if (vcos::COSPackage* known = vcos::COSPackage::getPackage(name)) {
    if (auto* ours = dynamic_cast<EmptyParentPackage*>(&known->info())) {
      ours->renew(known, std::move(package));
    } else if (!isPlain(*package)) {
      known->info().throwErrorForDefinitionOfExistingName(name);
    }
    return known;
  }
  const std::size_t dot = name.rfind('.');
  if (dot != std::string_view::npos) registerPackage(name.substr(0, dot));
  return vcos::COSPackage::addPackage(std::move(package));
}

vcos::COSPackage* EmptyParentPackage::registerPackage(std::string_view name) {
  return registerPackage(std::make_unique<EmptyParentPackage>(std::string(name)));
}

void EmptyParentPackage::install(const Enum& added) {
  installConversions(*added.info);
  registrar_.registerTypeMarshaler(*added.info, added.makeMarshaler());
}

void EmptyParentPackage::renew(vcos::COSPackage* package,
                               std::unique_ptr<EmptyParentPackage> again) {
  if (filled_) return filled_->renew(package, std::move(again));
  if (isPlain(*this) && !isPlain(*again)) {
    package->initializeWith(*again);
    filled_ = std::move(again);
  }
  for (const Enum& added : enums_) install(added);
}

// Registrar

EmptyParentPackage::Registrar::~Registrar() {
  while (!types_.empty()) remove(std::string(types_.back()));
}

void EmptyParentPackage::Registrar::registerTypeMarshaler(
    const EnumInfo& metaType, std::unique_ptr<ValueMarshaler> marshaler) {
  add(metaType.qualifiedName, std::move(marshaler));
}

void EmptyParentPackage::Registrar::registerTypeMarshaler(
    const meta::Type& metaType, std::unique_ptr<ValueMarshaler> marshaler) {
  add(metaType.qualifiedName(), std::move(marshaler));
}

void EmptyParentPackage::Registrar::unregisterTypeMarshaler(const EnumInfo& metaType) {
  remove(metaType.qualifiedName);
}

void EmptyParentPackage::Registrar::unregisterTypeMarshaler(const meta::Type& metaType) {
  remove(metaType.qualifiedName());
}

void EmptyParentPackage::Registrar::add(std::string_view type,
                                        std::unique_ptr<ValueMarshaler> marshaler) {
  if (!marshaler) reportException(mf0::messages::CannotAddNonExistentObject());
  marshaler->initializeDependencies();
  MetaMarshalerRegistry::getInstance().byType_[std::string(type)] = std::move(marshaler);
  std::erase(types_, type);
  types_.emplace_back(type);
}

void EmptyParentPackage::Registrar::remove(std::string_view type) {
  MetaMarshalerRegistry::getInstance().byType_.erase(std::string(type));
  std::erase(types_, type);
}

}  // namespace mf::zero::mi
