// The macroscopic load of a run: which kind the formulation reads, its value at a time from
// the constant or the table, the temperature change, the zero tests, the masks of mixed
// loads and the header printed at the start of each step.
#include <algorithm>
#include <cmath>
#include <iostream>
#include <sstream>

#include "common/Fatal.h"
#include "input/KeywordsElasticity.h"
#include "input/LoadTable.h"

namespace gridmoor {

namespace {

const std::string kLinearInterpolation = "LinearInterpolation";
const std::string kConstant = "Constant";
const std::string kZero = "Zero";

}  // namespace

const Parameter<std::string>& KeywordsElasticity::loadTypeParameter() const {
  const std::string formulation = problemFormulation();
  if (formulation == "DeformationGradient") return typeOfMacroscopicLoadDeformationGradient;
  if (formulation == "Polarization" || formulation == "Eigenstrain") {
    return typeOfMacroscopicLoadPolarizationEigenstrain;
  }
  return typeOfMacroscopicLoadStrainStress;
}

LoadKind KeywordsElasticity::macroscopicLoadKind() const {
  const std::string formulation = problemFormulation();
  const Parameter<std::string>& type = loadTypeParameter();
  const std::string& word = type();
  if (formulation == "Strain" || formulation == "Stress") {
    if (word == "Strain") return LoadKind::Strain;
    if (word == "Stress") return LoadKind::Stress;
    if (word == "Mixed") return LoadKind::StrainStress;
  } else if (formulation == "Polarization") {
    if (word == "Strain") return LoadKind::Strain;
    if (word == "Polarization") return LoadKind::Polarization;
  } else if (formulation == "Eigenstrain") {
    if (word == "Stress") return LoadKind::Stress;
    if (word == "Eigenstrain") return LoadKind::Eigenstrain;
  } else {
    // The flat schema writes one word for all three load type keys, so the small-strain words
    // "Strain" and "Stress" also name the pure large-strain kinds.
    if (word == "DeformationGradient" || word == "Strain") return LoadKind::DeformationGradient;
    if (word == "FirstPK" || word == "Stress") return LoadKind::FirstPK;
    if (word == "Mixed") return LoadKind::DeformationGradientFirstPK;
  }
  fatal(type.key + ": unknown load type \"" + word + "\" for the formulation " + formulation);
}

const Parameter<DoubleList>& KeywordsElasticity::constantLoadOf(LoadKind kind) const {
  switch (kind) {
    case LoadKind::Strain: return macroscopicStrain;
    case LoadKind::Stress: return macroscopicStress;
    case LoadKind::StrainStress: return macroscopicStrainStress;
    case LoadKind::Polarization: return macroscopicPolarization;
    case LoadKind::Eigenstrain: return macroscopicEigenstrain;
    case LoadKind::DeformationGradient: return macroscopicDeformationGradient;
    case LoadKind::FirstPK: return macroscopicFirstPK;
    case LoadKind::DeformationGradientFirstPK: return macroscopicDeformationGradientFirstPK;
  }
  return macroscopicStrain;
}

const Parameter<Table>& KeywordsElasticity::loadTableOf(LoadKind kind) const {
  switch (kind) {
    case LoadKind::Strain: return macroscopicStrainValues;
    case LoadKind::Stress: return macroscopicStressValues;
    case LoadKind::StrainStress: return macroscopicStrainStressValues;
    case LoadKind::Polarization: return macroscopicPolarizationValues;
    case LoadKind::Eigenstrain: return macroscopicEigenstrainValues;
    case LoadKind::DeformationGradient: return macroscopicDeformationGradientValues;
    case LoadKind::FirstPK: return macroscopicFirstPKValues;
    case LoadKind::DeformationGradientFirstPK: return macroscopicDeformationGradientFirstPKValues;
  }
  return macroscopicStrainValues;
}

const Parameter<double>& KeywordsElasticity::loadCaseIncrementOf(LoadKind kind) const {
  switch (kind) {
    case LoadKind::Strain: return macroscopicStrainIncrement;
    case LoadKind::Stress: return macroscopicStressIncrement;
    case LoadKind::StrainStress: return macroscopicStrainStressIncrement;
    case LoadKind::Polarization: return macroscopicPolarizationIncrement;
    case LoadKind::Eigenstrain: return macroscopicEigenstrainIncrement;
    case LoadKind::DeformationGradient: return macroscopicDeformationGradientIncrement;
    case LoadKind::FirstPK: return macroscopicFirstPKIncrement;
    case LoadKind::DeformationGradientFirstPK:
      return macroscopicDeformationGradientFirstPKIncrement;
  }
  return macroscopicStrainIncrement;
}

const DoubleList& KeywordsElasticity::checkedConstantLoad(LoadKind kind) const {
  const Parameter<DoubleList>& load = constantLoadOf(kind);
  const std::size_t count = static_cast<std::size_t>(componentCount(kind));
  if (load().size() != count) {
    fatal(load.key + " holds " + std::to_string(load().size()) + " values, but a " +
          loadKindName(kind) + " load has " + std::to_string(count));
  }
  // The C library reads "nan", "inf" and an overflowing 1e400 as numbers; such a load would
  // only show as fields of NaN after the iteration limit.
  for (const double value : load())
    if (!std::isfinite(value))
      fatal(load.key + " holds a value that is not a finite number: \"" + load.format() + "\"");
  return load();
}

void KeywordsElasticity::macroscopicLoadAt(double time, std::vector<double>& result,
                                           bool inverseSign) const {
  const LoadKind kind = macroscopicLoadKind();
  const std::size_t count = static_cast<std::size_t>(componentCount(kind));
  result.resize(count);
  const std::string& type = macroscopicStrainStressType();
  if (type == kLinearInterpolation) {
    const Parameter<Table>& table = loadTableOf(kind);
    checkLoadTable(table(), count, table.key);
    // A one-row table at exactly this time has no interval: the caller's values stay.
    if (!interpolateLoadTable(table(), time, result, table.key)) return;
  } else if (type == kConstant) {
    result = checkedConstantLoad(kind);
  } else {
    std::fill(result.begin(), result.end(), 0.0);
  }
  if (inverseSign) {
    for (double& value : result) value = -value;
  }
}

void KeywordsElasticity::macroscopicLoadIncrement(int i, std::vector<double>& result) const {
  const std::size_t count = static_cast<std::size_t>(componentCount(macroscopicLoadKind()));
  // Zero-filled, so that a load left untouched by a one-row table counts as zero.
  std::vector<double> start(count, 0.0);
  std::vector<double> end(count, 0.0);
  macroscopicLoadAt(timeOfStep(i), start);
  macroscopicLoadAt(timeOfStep(i + 1), end);
  result.resize(count);
  for (std::size_t c = 0; c < count; ++c) result[c] = end[c] - start[c];
}

double KeywordsElasticity::macroscopicLoadCaseIncrement() const {
  return loadCaseIncrementOf(macroscopicLoadKind())();
}

double KeywordsElasticity::temperatureChangeAt(double time) const {
  const std::string& type = macroscopicStrainStressType();
  if (type == kLinearInterpolation) {
    const Table& table = macroscopicTemperatureChangeValues();
    checkLoadTable(table, 1, macroscopicTemperatureChangeValues.key);
    return interpolateClampedTable(table, time);
  }
  if (type == kConstant) return macroscopicTemperatureChange();
  return 0.0;
}

bool KeywordsElasticity::isZeroThermalLoad() const {
  const std::string& type = macroscopicStrainStressType();
  return type == kZero || (type == kConstant && macroscopicTemperatureChange() == 0.0);
}

bool KeywordsElasticity::isZeroLoad() const {
  const std::string& type = macroscopicStrainStressType();
  if (type == kZero) return true;
  if (type != kConstant) return false;
  const LoadKind kind = macroscopicLoadKind();
  const DoubleList& load = checkedConstantLoad(kind);
  switch (kind) {
    case LoadKind::DeformationGradient:
      for (int slot = 0; slot < 9; ++slot) {
        if (load[slot] != (slot % 4 == 0 ? 1.0 : 0.0)) return false;
      }
      return true;
    case LoadKind::FirstPK:
      // Only the first entry is looked at; kept so on purpose, the host relies on it.
      return load[0] == 0.0;
    case LoadKind::DeformationGradientFirstPK: {
      // A prescribed diagonal entry of F is unloaded at 1, a prescribed one of P at 0.
      const unsigned mask = mixedTensorMask();
      for (int slot = 0; slot < 9; ++slot) {
        const bool diagonal = slot % 4 == 0;
        const double unloaded = diagonal && (mask & (1u << slot)) ? 1.0 : 0.0;
        if (load[slot] != unloaded) return false;
      }
      return true;
    }
    default:
      for (double value : load) {
        if (value != 0.0) return false;
      }
      return true;
  }
}

unsigned KeywordsElasticity::mixedMask() const {
  const std::string formulation = problemFormulation();
  const std::string& word = formulation == "Polarization" || formulation == "Eigenstrain"
                                ? typeOfMacroscopicLoadPolarizationEigenstrain()
                                : typeOfMacroscopicLoadStrainStress();
  if (word == "Strain") return kAllVoigtBits;
  if (word == "Mixed") return voigtMaskOf(strainList(), strainList.key);
  return 0;
}

unsigned KeywordsElasticity::mixedTensorMask() const {
  if (typeOfDeformation() != "Large") return tensorMaskOfVoigtMask(mixedMask());
  const std::string& word = typeOfMacroscopicLoadDeformationGradient();
  if (word == "DeformationGradient" || word == "Strain") return kAllTensorBits;
  if (word == "Mixed") return tensorMaskOf(deformationGradientList(), deformationGradientList.key);
  return 0;
}

std::array<double, 9> KeywordsElasticity::coordinateSystemMatrix() const {
  const DoubleList& numbers = coordinateSystem();
  if (numbers.size() != 9) {
    fatal(coordinateSystem.key + " holds " + std::to_string(numbers.size()) +
          " numbers, but a coordinate system is 9");
  }
  std::array<double, 9> matrix{};
  std::copy(numbers.begin(), numbers.end(), matrix.begin());
  return matrix;
}

void KeywordsElasticity::printStepHeader(int i) const {
  printStepHeader(i, std::cout);
  std::cout.flush();
}

void KeywordsElasticity::printStepHeader(int i, std::ostream& out) const {
  if (numberOfSteps() < 2) return;
  const double end = timeOfStep(i + 1);
  std::vector<double> load;
  macroscopicLoadAt(timeOfStep(i), load);
  // A fresh stream: the numbers come in the default format whatever the caller's stream holds.
  std::ostringstream text;
  text << "Timestep = " << i + 1 << '\n'
       << "Time = " << end << '\n'
       << "Temperature Change = " << temperatureChangeAt(end) << '\n'
       << "Macroscopic Load = (";
  if (load.size() == 9) {
    text << '\n';
    for (int row = 0; row < 3; ++row) {
      text << load[3 * row] << ',' << load[3 * row + 1] << ',' << load[3 * row + 2] << '\n';
    }
  } else {
    for (std::size_t c = 0; c < load.size(); ++c) text << (c > 0 ? "," : "") << load[c];
  }
  text << ")\n";
  out << text.str();
}

}  // namespace gridmoor
