// Distribution objects: host objects whose payload draws.
#include "host/distribution.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "host/cell.h"
#include "host/detail/install.h"
#include "host/detail/messages.h"
#include "host/detail/samplers.h"
#include "host/object.h"
#include "host/record.h"
#include "host/text.h"

namespace vexal {
namespace {

class Distribution : public NativePayload {
 public:
  static constexpr char kTypeTag = 0;

  virtual ArrayPtr draw(Generator& from) const = 0;
  virtual ArrayPtr drawMatrix(Generator& from, std::size_t rows, std::size_t columns) const = 0;

 protected:
  Distribution() : NativePayload(&kTypeTag) {}
};

template <class Sampler>
class NumberDistribution final : public Distribution {
 public:
  explicit NumberDistribution(Sampler sampler) : sampler_(std::move(sampler)) {}

  ArrayPtr draw(Generator& from) const override { return createDouble(sampler_(from)); }

  ArrayPtr drawMatrix(Generator& from, std::size_t rows, std::size_t columns) const override {
    ArrayPtr matrix = createDoubleMatrix(rows, columns);
    for (double& value : mutableDoubleData(matrix.get())) value = sampler_(from);
    return matrix;
  }

 private:
  Sampler sampler_;
};

struct NumberChoice {
  std::vector<double> values;
  detail::AliasSampler pick;
  double operator()(Generator& from) const { return values[pick(from)]; }
};

class CellChoice final : public Distribution {
 public:
  CellChoice(ArrayPtr values, detail::AliasSampler pick)
      : values_(std::move(values)), pick_(std::move(pick)) {}

  ArrayPtr draw(Generator& from) const override { return deepCopy(drawn(from)); }

  ArrayPtr drawMatrix(Generator& from, std::size_t rows, std::size_t columns) const override {
    ArrayPtr matrix = createCell(rows, columns);
    for (std::size_t k = 0; k < elementCount(matrix.get()); ++k) {
      setCell(matrix.get(), k, drawn(from));
    }
    return matrix;
  }

 private:
  const vxArray* drawn(Generator& from) const { return cellElement(values_.get(), pick_(from)); }

  ArrayPtr values_;
  detail::AliasSampler pick_;
};

// Checks of parameters ----------------------------------------------------------------

[[noreturn]] void refuse(std::string_view className, const std::string& why) {
  detail::fail("InvalidDistribution", {className, why});
}

struct Parameter {
  std::string_view name;
  double value;
};

void requireFinite(std::string_view className, std::initializer_list<Parameter> parameters) {
  for (const auto& [name, value] : parameters) {
    if (std::isfinite(value)) continue;
    refuse(className, std::string(name) + " must be finite, not " + formatNumber(value) + '.');
  }
}

void requirePositive(std::string_view className, Parameter parameter) {
  requireFinite(className, {parameter});
  if (parameter.value > 0) return;
  refuse(className, std::string(parameter.name) + " must be positive, not " +
                        formatNumber(parameter.value) + '.');
}

// Also refuses NaN.
void requireBelow(std::string_view className, double lower, double upper) {
  if (lower < upper) return;
  refuse(className,
         "Lower (" + formatNumber(lower) + ") must be below Upper (" + formatNumber(upper) + ").");
}

std::span<const double> checkedWeights(std::string_view className, const vxArray* weights,
                                       std::size_t count) {
  if (!isClass(weights, ClassId::Double) || elementCount(weights) != count) {
    refuse(className, "Weights must be " + std::to_string(count) +
                          " numbers, one for each value, not " + describe(weights) + '.');
  }
  const auto data = doubleData(weights);
  const auto isWeight = [](double w) { return w >= 0 && std::isfinite(w); };
  if (!std::ranges::all_of(data, isWeight)) {
    refuse(className, "every weight must be a finite number that is not negative.");
  }
  if (std::ranges::none_of(data, [](double w) { return w > 0; })) {
    refuse(className, "at least one weight must be positive.");
  }
  return data;
}

// Objects -----------------------------------------------------------------------------

ArrayPtr withPayload(ArrayPtr object, std::shared_ptr<Distribution> distribution) {
  attachPayload(object.get(), std::move(distribution));
  return object;
}

template <class Sampler>
ArrayPtr numberDistribution(std::string_view className, Sampler sampler,
                            std::initializer_list<Parameter> parameters) {
  ArrayPtr object = createObject(className);
  for (const auto& [name, value] : parameters) {
    setField(object.get(), name, createDouble(value).get());
  }
  return withPayload(std::move(object),
                     std::make_shared<NumberDistribution<Sampler>>(std::move(sampler)));
}

constexpr std::string_view kUniform = "kxsim.dist.Uniform";
constexpr std::string_view kNormal = "kxsim.dist.Normal";
constexpr std::string_view kLognormal = "kxsim.dist.Lognormal";
constexpr std::string_view kTriangular = "kxsim.dist.Triangular";
constexpr std::string_view kExponential = "kxsim.dist.Exponential";
constexpr std::string_view kTruncatedNormal = "kxsim.dist.TruncatedNormal";
constexpr std::string_view kChoice = "kxsim.dist.Choice";

}  // namespace

ArrayPtr makeUniform(double lower, double upper) {
  requireFinite(kUniform, {{"Lower", lower}, {"Upper", upper}});
  requireBelow(kUniform, lower, upper);
  return numberDistribution(kUniform, detail::UniformSampler{lower, upper},
                            {{"Lower", lower}, {"Upper", upper}});
}

ArrayPtr makeNormal(double mean, double standardDeviation) {
  requireFinite(kNormal, {{"Mean", mean}});
  requirePositive(kNormal, {"StandardDeviation", standardDeviation});
  return numberDistribution(kNormal, detail::NormalSampler{mean, standardDeviation},
                            {{"Mean", mean}, {"StandardDeviation", standardDeviation}});
}

ArrayPtr makeLognormal(double mu, double sigma) {
  requireFinite(kLognormal, {{"Mu", mu}});
  requirePositive(kLognormal, {"Sigma", sigma});
  return numberDistribution(kLognormal, detail::LognormalSampler{{mu, sigma}},
                            {{"Mu", mu}, {"Sigma", sigma}});
}

ArrayPtr makeTriangular(double lower, double mode, double upper) {
  requireFinite(kTriangular, {{"Lower", lower}, {"Mode", mode}, {"Upper", upper}});
  requireBelow(kTriangular, lower, upper);
  requireFinite(kTriangular, {{"Upper - Lower", upper - lower}});
  if (mode < lower || mode > upper) {
    refuse(kTriangular, "Mode (" + formatNumber(mode) + ") must lie between Lower and Upper.");
  }
  return numberDistribution(kTriangular, detail::TriangularSampler{lower, mode, upper},
                            {{"Lower", lower}, {"Mode", mode}, {"Upper", upper}});
}

ArrayPtr makeExponential(double mean) {
  requirePositive(kExponential, {"Mean", mean});
  return numberDistribution(kExponential, detail::ExponentialSampler{mean}, {{"Mean", mean}});
}

ArrayPtr makeTruncatedNormal(double mean, double standardDeviation, double lower, double upper) {
  requireFinite(kTruncatedNormal, {{"Mean", mean}});
  requirePositive(kTruncatedNormal, {"StandardDeviation", standardDeviation});
  requireBelow(kTruncatedNormal, lower, upper);
  const detail::TruncatedNormalSampler sampler(mean, standardDeviation, lower, upper);
  if (!sampler.isReachable()) refuse(kTruncatedNormal, "the bounds are too far from the mean.");
  return numberDistribution(kTruncatedNormal, sampler,
                            {{"Mean", mean},
                             {"StandardDeviation", standardDeviation},
                             {"Lower", lower},
                             {"Upper", upper}});
}

ArrayPtr makeChoice(const vxArray* values, const vxArray* weights) {
  const bool isNumbers = isClass(values, ClassId::Double);
  if (!(isNumbers || isCell(values)) || isEmpty(values)) {
    refuse(kChoice, "Values must be a cell or double array with at least one element, not " +
                        describe(values) + '.');
  }
  const std::size_t count = elementCount(values);
  ArrayPtr equal;
  if (weights == nullptr) {
    equal = createDoubleRow(std::vector<double>(count, 1.0));
    weights = equal.get();
  }
  detail::AliasSampler pick(checkedWeights(kChoice, weights, count));
  ArrayPtr object = createObject(kChoice);
  setField(object.get(), "Values", values);
  setField(object.get(), "Weights", weights);
  if (!isNumbers) {
    auto choice = std::make_shared<CellChoice>(deepCopy(values), std::move(pick));
    return withPayload(std::move(object), std::move(choice));
  }
  const auto data = doubleData(values);
  NumberChoice choice{{data.begin(), data.end()}, std::move(pick)};
  return withPayload(std::move(object),
                     std::make_shared<NumberDistribution<NumberChoice>>(std::move(choice)));
}

// Host functions ------------------------------------------------------------------------

namespace {

double number(const Call& call, std::size_t k) {
  const vxArray* input = call.input(k);
  if (isClass(input, ClassId::Double) && elementCount(input) == 1) return doubleData(input)[0];
  if (isClass(input, ClassId::Int32) && elementCount(input) == 1) {
    return elements<std::int32_t>(input)[0];
  }
  detail::fail("NotAScalar", {call.name(), std::to_string(k + 1), describe(input)});
}

std::size_t size(const Call& call, std::size_t k) {
  const double value = number(call, k);
  if (!(value >= 0 && value <= 0x1p53 && std::floor(value) == value)) {
    detail::fail("InvalidSize", {formatNumber(value)});
  }
  return static_cast<std::size_t>(value);
}

void drawFrom(Call& call) {
  const auto* distribution = payloadAs<Distribution>(call.input(0));
  if (distribution == nullptr) detail::fail("NotADistribution", {describe(call.input(0))});
  if (call.inputCount() == 1) {
    call.setOutput(0, distribution->draw(generator()));
  } else {
    const std::size_t rows = size(call, 1);
    const std::size_t columns = call.inputCount() == 2 ? rows : size(call, 2);
    call.setOutput(0, distribution->drawMatrix(generator(), rows, columns));
  }
}

struct Maker {
  std::string_view className;
  std::size_t minInputs;
  std::size_t maxInputs;
  ArrayPtr (*make)(const Call& call);
};

constexpr Maker kMakers[] = {
    {kUniform, 2, 2, [](const Call& c) { return makeUniform(number(c, 0), number(c, 1)); }},
    {kNormal, 2, 2, [](const Call& c) { return makeNormal(number(c, 0), number(c, 1)); }},
    {kLognormal, 2, 2, [](const Call& c) { return makeLognormal(number(c, 0), number(c, 1)); }},
    {kTriangular, 3, 3,
     [](const Call& c) { return makeTriangular(number(c, 0), number(c, 1), number(c, 2)); }},
    {kExponential, 1, 1, [](const Call& c) { return makeExponential(number(c, 0)); }},
    {kTruncatedNormal, 4, 4,
     [](const Call& c) {
       return makeTruncatedNormal(number(c, 0), number(c, 1), number(c, 2), number(c, 3));
     }},
    {kChoice, 1, 2,
     [](const Call& c) {
       return makeChoice(c.input(0), c.inputCount() > 1 ? c.input(1) : nullptr);
     }},
};

}  // namespace

void detail::installDistributions() {
  defineClass(kDistributionClass);
  defineMethod(kDistributionClass, "random", {{1, 3, 1}, drawFrom});
  for (const Maker& maker : kMakers) {
    defineClass(maker.className, kDistributionClass);
    defineFunction(maker.className,
                   {{maker.minInputs, maker.maxInputs, 1},
                    [make = maker.make](Call& call) { call.setOutput(0, make(call)); }});
  }
}

}  // namespace vexal
