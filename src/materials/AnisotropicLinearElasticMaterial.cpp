#include "materials/AnisotropicLinearElasticMaterial.h"

#include <utility>

#include "common/Fatal.h"
#include "input/Parameter.h"

namespace gridmoor {

AnisotropicLinearElasticMaterial::AnisotropicLinearElasticMaterial(
    std::string name, Colour colour, const XmlNode& parameters, Geometry* geometry,
    const KeywordsElasticity& keywords, std::shared_ptr<const LoadCaseTable> loadCases,
    std::shared_ptr<InternalVariablesStore> internalVariablesStore)
    : OrientedLinearElasticMaterial(std::move(name), colour, keywords, std::move(loadCases),
                                    std::move(internalVariablesStore), geometry, 3) {
  DoubleList values;
  parseValue(readParameterText(parameters, stiffnessKey, std::string()), values);
  // A missing key reads as zeros like every other parameter; a list of the wrong length is
  // a broken entry that no guess can repair.
  if (!values.empty() && values.size() != stiffnessValues.size())
    fatal("Material " + this->name + ": the stiffness matrix \"" + stiffnessKey +
          "\" needs 21 values, found " + std::to_string(values.size()));
  for (std::size_t k = 0; k < values.size(); ++k) stiffnessValues[k] = values[k];
  parseValue(readParameterText(parameters, isotropicKey, std::string()), isotropicMaterialLaw);
  updateMatrices();
  updateInverseMatrices();
}

void AnisotropicLinearElasticMaterial::updateMatrices() {
  std::size_t k = 0;
  for (int a = 0; a < 6; ++a)
    for (int b = a; b < 6; ++b) cVoigt(a, b) = cVoigt(b, a) = stiffnessValues[k++];
  LinearElasticMaterial::updateMatrices();
}

AnisotropicLinearElasticMaterialWithThermalExpansion::
    AnisotropicLinearElasticMaterialWithThermalExpansion(
        std::string name, Colour colour, const XmlNode& parameters, Geometry* geometry,
        const KeywordsElasticity& keywords, std::shared_ptr<const LoadCaseTable> loadCases,
        std::shared_ptr<InternalVariablesStore> internalVariablesStore)
    : OrientedThermalForm(std::move(name), colour, parameters, geometry, keywords,
                          std::move(loadCases), std::move(internalVariablesStore)),
      alpha1(readParameter(parameters, "alpha1")),
      alpha2(readParameter(parameters, "alpha2")),
      alpha3(readParameter(parameters, "alpha3")) {
  materialThermalExpansion = {alpha1, alpha2, alpha3, 0.0, 0.0, 0.0};
}

}  // namespace gridmoor
