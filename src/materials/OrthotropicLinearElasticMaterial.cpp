#include "materials/OrthotropicLinearElasticMaterial.h"

#include <utility>

namespace gridmoor {

OrthotropicLinearElasticMaterial::OrthotropicLinearElasticMaterial(
    std::string name, Colour colour, const XmlNode& parameters, Geometry* geometry,
    const KeywordsElasticity& keywords, std::shared_ptr<const LoadCaseTable> loadCases,
    std::shared_ptr<InternalVariablesStore> internalVariablesStore)
    : OrientedLinearElasticMaterial(std::move(name), colour, keywords, std::move(loadCases),
                                    std::move(internalVariablesStore), geometry, 3) {
  double* const fields[9] = {&E1, &E2, &E3, &nu12, &nu13, &nu23, &G12, &G13, &G23};
  for (int k = 0; k < 9; ++k) *fields[k] = readParameter(parameters, parameterKeys[k]);
  updateMatrices();
  updateInverseMatrices();
}

bool OrthotropicLinearElasticMaterial::isIncompressible() const {
  const VoigtMatrix& d = cVoigtInverse;
  const double det = d(0, 0) * (d(1, 1) * d(2, 2) - d(1, 2) * d(2, 1)) -
                     d(0, 1) * (d(1, 0) * d(2, 2) - d(1, 2) * d(2, 0)) +
                     d(0, 2) * (d(1, 0) * d(2, 1) - d(1, 1) * d(2, 0));
  return det == 0.0;
}

void OrthotropicLinearElasticMaterial::updateMatrices() {
  cVoigt = orthotropicStiffness(constants());
  LinearElasticMaterial::updateMatrices();
}

void OrthotropicLinearElasticMaterial::updateInverseMatrices() {
  cVoigtInverse = orthotropicCompliance(constants());
}

OrthotropicLinearElasticMaterialWithThermalExpansion::
    OrthotropicLinearElasticMaterialWithThermalExpansion(
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
