#include "materials/TransversalIsotropicLinearElasticMaterial.h"

#include <utility>

#include "materials/LinearElasticMaterialMatrices.h"

namespace gridmoor {

TransversalIsotropicLinearElasticMaterial::TransversalIsotropicLinearElasticMaterial(
    std::string name, Colour colour, const XmlNode& parameters, Geometry* geometry,
    const KeywordsElasticity& keywords, std::shared_ptr<const LoadCaseTable> loadCases,
    std::shared_ptr<InternalVariablesStore> internalVariablesStore)
    : OrientedLinearElasticMaterial(std::move(name), colour, keywords, std::move(loadCases),
                                    std::move(internalVariablesStore), geometry, 2),
      E1(readParameter(parameters, parameterKeys[0])),
      E2(readParameter(parameters, parameterKeys[1])),
      nu12(readParameter(parameters, parameterKeys[2])),
      nu23(readParameter(parameters, parameterKeys[3])),
      G12(readParameter(parameters, parameterKeys[4])) {
  updateMatrices();
  updateInverseMatrices();
}

void TransversalIsotropicLinearElasticMaterial::updateMatrices() {
  cVoigt = transversalIsotropicStiffness(E1, E2, nu12, nu23, G12);
  LinearElasticMaterial::updateMatrices();
}

void TransversalIsotropicLinearElasticMaterial::updateInverseMatrices() {
  cVoigtInverse = transversalIsotropicCompliance(E1, E2, nu12, nu23, G12);
}

TransversalIsotropicLinearElasticMaterialWithThermalExpansion::
    TransversalIsotropicLinearElasticMaterialWithThermalExpansion(
        std::string name, Colour colour, const XmlNode& parameters, Geometry* geometry,
        const KeywordsElasticity& keywords, std::shared_ptr<const LoadCaseTable> loadCases,
        std::shared_ptr<InternalVariablesStore> internalVariablesStore)
    : OrientedThermalForm(std::move(name), colour, parameters, geometry, keywords,
                          std::move(loadCases), std::move(internalVariablesStore)),
      alpha1(readParameter(parameters, "alpha1")),
      alpha2(readParameter(parameters, "alpha2")) {
  materialThermalExpansion = {alpha1, alpha2, alpha2, 0.0, 0.0, 0.0};
}

}  // namespace gridmoor
