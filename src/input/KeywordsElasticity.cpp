#include "input/KeywordsElasticity.h"

#include <algorithm>
#include <array>
#include <iostream>
#include <string_view>

#include "common/Fatal.h"

namespace gridmoor {

namespace {

// Settings that the load schema keeps under "input/Load/" with their last key component,
// besides every "Macroscopic..." setting.
constexpr std::array<std::string_view, 28> kLoadSchemaKeys = {
    "TypeOfMacroscopicLoadStrainStress",
    "TypeOfMacroscopicLoadPolarizationEigenstrain",
    "ExternalForce",
    "ExternalForceFile",
    "ExternalForceField",
    "ScaleExternalForce",
    "TimeStepType",
    "TimeSteps",
    "TimeStart",
    "TimeStop",
    "TimeNSteps",
    "TimeUnit",
    "WriteEffectiveMatrix",
    "UseSubvolumeForHomogenization",
    "SubvolumeForHomogenizationSizeX",
    "SubvolumeForHomogenizationSizeY",
    "SubvolumeForHomogenizationSizeZ",
    "UsingLinearizedMaterialLawForHomogenization",
    "ComputeAllLoadCases",
    "ComputeLoadCaseList",
    "ComputeThermalExpansion",
    "TypeOfDeformation",
    "CoordinateSystem",
    "MacroscopicStrainStressType",
    "StrainList",
    "TypeOfMacroscopicLoadDeformationGradient",
    "DeformationGradientList",
    "EquivalencePrinciple"};

std::string lastComponent(const std::string& key) {
  const std::size_t slash = key.rfind('/');
  return slash == std::string::npos ? key : key.substr(slash + 1);
}

}  // namespace

KeywordsElasticity::KeywordsElasticity(const XmlNode& tree) {
  if (readParameterText(tree, "Properties/Version", "2014") != "2014") useLoadSchema();
  KeywordsElasticity::readParameters(tree);
}

void KeywordsElasticity::useLoadSchema() {
  for (ParameterBase* parameter : parameters_) {
    const std::string name = lastComponent(parameter->key);
    if (name == "SaveRestartFile") {
      parameter->key = "input/Solution/SaveRestartFile";
    } else if (name.starts_with("Macroscopic") ||
               std::find(kLoadSchemaKeys.begin(), kLoadSchemaKeys.end(), name) !=
                   kLoadSchemaKeys.end()) {
      parameter->key = "input/Load/" + name;
    }
  }
}

void KeywordsElasticity::printParameters(std::ostream& out) {
  Keywords::printParameters(out);
  printBlock(out, Elasticity, "                 Elastictiy parameters ",
             "                 End Elastictiy parameters ");
}

bool KeywordsElasticity::writeVtkOutput() const { return !exportSolutionVtkFileName().empty(); }

bool KeywordsElasticity::writeDasOutput() const { return !writeDasFilename().empty(); }

bool KeywordsElasticity::computeVoigtReussBounds() const { return voigtReussBounds(); }

std::string KeywordsElasticity::problemFormulation() const {
  if (typeOfDeformation() == "Large") return "DeformationGradient";
  const std::string& unknown = primaryUnknown();
  if (unknown == "Strain") return "Strain";
  if (unknown == "Stress") return "Stress";
  if (unknown == "PolarizationEigenstrain") {
    const std::string& load = typeOfMacroscopicLoadPolarizationEigenstrain();
    if (load == "Polarization" || load == "Strain") return "Polarization";
    if (load == "Eigenstrain" || load == "Stress") return "Eigenstrain";
  }
  fatal("Problem formulation can not be determined!");
}

}  // namespace gridmoor
