#include "study.h"

#include <span>
#include <stdexcept>
#include <string>

#include "host/vexal.h"

namespace motor_study {

using namespace kxsim::design;
using mf::zero::Model;

namespace {

constexpr std::u16string_view kController = u"drive/speed controller";
constexpr std::u16string_view kWorkspace = u"plant";

/// A quantity of the setup by the name that the study gives it.
struct Knob {
  std::u16string_view name;
  double Setup::*field;
};

constexpr Knob kGains[] = {{u"Kp", &Setup::kp}, {u"Ki", &Setup::ki}};
constexpr Knob kVariables[] = {{u"J", &Setup::inertia}, {u"b", &Setup::friction}};
constexpr Knob kConditions[] = {{u"R", &Setup::resistance},
                                {u"LoadTorque", &Setup::loadTorque},
                                {u"LoadTime", &Setup::loadTime}};

// What is varied. -----------------------------------------------------------------------------

ValueSetParameter vary(const Model& model, const ParameterType& target,
                       std::span<const double> values) {
  const vexal::ArrayPtr cells = vexal::createCell(1, values.size());
  for (std::size_t k = 0; k < values.size(); ++k) {
    vexal::setCell(cells.get(), k, vexal::createDouble(values[k]).get());
  }
  return ValueSetParameter::Builder(model).setParameterType(target).setValues(cells.get()).create();
}

ValueSetParameter varyGain(const Model& model, std::u16string_view name,
                           std::span<const double> values) {
  const auto target = BlockParameter::Builder(model)
                          .setBlockPath(kController)
                          .setName(name)
                          .setConvertValueToString(false)
                          .create();
  return vary(model, target, values);
}

ValueSetParameter varyPlant(const Model& model, std::u16string_view name, double Plant::*field) {
  std::vector<double> values;
  for (const Plant& plant : kPlants) values.push_back(plant.*field);
  return vary(model, Variable::Builder(model).setWorkspace(kWorkspace).setName(name).create(),
              values);
}

RandomParameter draw(const Model& model, std::u16string_view name,
                     const vexal::ArrayPtr& distribution) {
  const auto parameter = RandomParameter::create(model);
  parameter->setParameterType(ModelParameter::Builder(model).setName(name).create());
  parameter->setDistribution(distribution.get());
  return parameter;
}

// How a sample reaches the setup. -------------------------------------------------------------

double Setup::*find(std::span<const Knob> knobs, std::u16string_view name) {
  for (const Knob& knob : knobs) {
    if (knob.name == name) return knob.field;
  }
  return nullptr;
}

/// The quantity that a target names; null when the drive has none.
double Setup::*knobOf(const ParameterType& target) {
  if (const auto block = target.as<BlockParameter>()) {
    return block.blockPath() == kController ? find(kGains, block.name()) : nullptr;
  }
  if (const auto variable = target.as<Variable>()) {
    return variable.workspace() == kWorkspace ? find(kVariables, variable.name()) : nullptr;
  }
  if (const auto parameter = target.as<ModelParameter>())
    return find(kConditions, parameter.name());
  return nullptr;
}

}  // namespace

Exhaustive buildStudy(const Model& model, const Options& options) {
  const auto plants = Sequential::Builder(model)
                          .addParameterSpaces(varyPlant(model, u"J", &Plant::inertia))
                          .addParameterSpaces(varyPlant(model, u"b", &Plant::friction))
                          .create();
  const auto resistance = vexal::makeUniform(0.55, 0.75);                 // ohm, cold to hot
  const auto torque = vexal::makeTruncatedNormal(0.10, 0.05, 0.0, 0.20);  // N m
  const auto time = vexal::makeUniform(0.7, 0.9);                         // s
  const auto conditions = RandomParameterSpace::Builder(model)
                              .setNumSamples(options.samples)
                              .addParameters(draw(model, u"R", resistance))
                              .addParameters(draw(model, u"LoadTorque", torque))
                              .addParameters(draw(model, u"LoadTime", time))
                              .create();
  return Exhaustive::Builder(model)
      .addParameterSpaces(varyGain(model, u"Kp", options.kp))
      .addParameterSpaces(varyGain(model, u"Ki", options.ki))
      .addParameterSpaces(plants)
      .addParameterSpaces(conditions)
      .create();
}

Setup setupOf(const Iteration& iteration) {
  Setup setup;
  for (const ParameterSample& sample : iteration.parameterSamples()) {
    double Setup::*const knob = knobOf(sample.parameterType());
    if (!knob) throw std::invalid_argument("the drive does not have what the study varies");
    setup.*knob = vexal::doubleData(sample.value()).front();
  }
  return setup;
}

}  // namespace motor_study
