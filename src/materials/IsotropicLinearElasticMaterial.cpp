#include "materials/IsotropicLinearElasticMaterial.h"

#include <utility>

#include "materials/LinearElasticMaterialMatrices.h"

namespace gridmoor {

IsotropicLinearElasticMaterial::IsotropicLinearElasticMaterial(
    std::string name, Colour colour, const XmlNode& parameters, Geometry* geometry,
    const KeywordsElasticity& keywords, std::shared_ptr<const LoadCaseTable> loadCases,
    std::shared_ptr<InternalVariablesStore> internalVariablesStore)
    : LinearElasticMaterial(std::move(name), colour, keywords, std::move(loadCases),
                            std::move(internalVariablesStore), geometry),
      youngsModulus(readParameter(parameters, parameterKeys[0])),
      poissonRatio(readParameter(parameters, parameterKeys[1])) {
  const LameConstants lame = lameConstantsOf(youngsModulus, poissonRatio);
  lambda = lame.lambda;
  mu = lame.mu;
  updateMatrices();
  updateInverseMatrices();
}

IsotropicLinearElasticMaterial::IsotropicLinearElasticMaterial(std::string name, double lambda,
                                                               double mu)
    : LinearElasticMaterial(std::move(name)) {
  setLameConstants(lambda, mu);
}

void IsotropicLinearElasticMaterial::setLameConstants(double newLambda, double newMu) {
  lambda = newLambda;
  mu = newMu;
  if (lambda + mu == 0.0) {
    // Both constants zero: the soft law. The formulas below are 0 / 0 there, and a NaN
    // modulus would hide the law from every "is it soft" test.
    youngsModulus = 0.0;
    poissonRatio = 0.0;
  } else {
    youngsModulus = mu * (3.0 * lambda + 2.0 * mu) / (lambda + mu);
    poissonRatio = lambda / (2.0 * (lambda + mu));
  }
  cacheValid_ = false;  // the cache was made for the old constants of this law
  updateMatrices();
  updateInverseMatrices();
}

void IsotropicLinearElasticMaterial::updateMatrices() {
  cVoigt = isotropicStiffness(lambda, mu);
  LinearElasticMaterial::updateMatrices();
}

void IsotropicLinearElasticMaterial::updateInverseMatrices() {
  cVoigtInverse = isotropicCompliance(youngsModulus, poissonRatio);
}

void IsotropicLinearElasticMaterial::multiplyStiffness(const double* e, double* s) const {
  const VoigtMatrix& c = cVoigt;
  for (int a = 0; a < 3; ++a) s[a] = c(a, 0) * e[0] + c(a, 1) * e[1] + c(a, 2) * e[2];
  for (int a = 3; a < 6; ++a) s[a] = c(a, a) * e[a];
}

void IsotropicLinearElasticMaterial::multiplyCompliance(const double* s, double* e) const {
  const VoigtMatrix& d = cVoigtInverse;
  for (int a = 0; a < 3; ++a) e[a] = d(a, 0) * s[0] + d(a, 1) * s[1] + d(a, 2) * s[2];
  for (int a = 3; a < 6; ++a) e[a] = d(a, a) * s[a];
}

void IsotropicLinearElasticMaterial::secondPiolaKirchhoff(int, VoxelIndex, VoxelIndex, VoxelIndex,
                                                          const double* E9, double* S9) {
  // lambda tr(E) I + mu (E + E^T): the stiffness-form tensor product without its zeros.
  const double lambdaTrace = cVoigt(0, 1) * (E9[0] + E9[4] + E9[8]);
  const double shear = cVoigt(3, 3);
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) S9[3 * i + j] = shear * (E9[3 * i + j] + E9[3 * j + i]);
  for (int i = 0; i < 3; ++i) S9[4 * i] += lambdaTrace;
}

const IsotropicLinearElasticMaterial* IsotropicLinearElasticMaterial::isotropicReference(
    const DiscretizedElasticMaterial& reference) const {
  if (&reference == cachedReference_) return cachedReference_;
  return dynamic_cast<const IsotropicLinearElasticMaterial*>(&reference);
}

VoigtMatrix IsotropicLinearElasticMaterial::stiffnessDifferenceInverse(
    const IsotropicLinearElasticMaterial& reference) const {
  const double dl = lambda - reference.lambda;
  const double dm = mu - reference.mu;
  // The closed form divides by dl + dm, which vanishes for invertible differences such as
  // (lambda, mu) = (2, 1) against (1, 2): those take the general route.
  if (dl + dm == 0.0) {
    VoigtMatrix difference = cVoigt;
    for (int i = 0; i < 36; ++i) difference.m[i] -= reference.cVoigt.m[i];
    return invertByLU(difference);
  }
  return isotropicInverseByModuli(dl, dm);
}

void IsotropicLinearElasticMaterial::setReferenceMaterial(
    const DiscretizedElasticMaterial& reference) {
  LinearElasticMaterial::setReferenceMaterial(reference);
  const auto* isotropic = dynamic_cast<const IsotropicLinearElasticMaterial*>(&reference);
  cachedReference_ = isotropic;
  cacheValid_ = isotropic != nullptr;
  if (!isotropic) return;
  cachedLambda0_ = isotropic->lambda;
  cachedMu0_ = isotropic->mu;
  cachedCMinusC0Inverse_ = stiffnessDifferenceInverse(*isotropic);
  VoigtMatrix difference = cVoigtInverse;
  for (int i = 0; i < 36; ++i) difference.m[i] -= isotropic->cVoigtInverse.m[i];
  cachedDMinusD0Inverse_ = invertByLU(difference);
}

VoigtMatrix IsotropicLinearElasticMaterial::getCVoigtMinusC0InverseOfVoxel(
    const DiscretizedElasticMaterial& referenceMaterial, int loadCase, VoxelIndex x, VoxelIndex y,
    VoxelIndex z) {
  const IsotropicLinearElasticMaterial* isotropic = isotropicReference(referenceMaterial);
  if (!isotropic)
    return LinearElasticMaterial::getCVoigtMinusC0InverseOfVoxel(referenceMaterial, loadCase, x, y,
                                                                 z);
  if (cacheHolds(*isotropic)) return cachedCMinusC0Inverse_;
  return stiffnessDifferenceInverse(*isotropic);
}

VoigtMatrix IsotropicLinearElasticMaterial::getDVoigtMinusD0InverseOfVoxel(
    const DiscretizedElasticMaterial& referenceMaterial, int loadCase, VoxelIndex x, VoxelIndex y,
    VoxelIndex z) {
  const IsotropicLinearElasticMaterial* isotropic = isotropicReference(referenceMaterial);
  if (isotropic && cacheHolds(*isotropic)) return cachedDMinusD0Inverse_;
  return LinearElasticMaterial::getDVoigtMinusD0InverseOfVoxel(referenceMaterial, loadCase, x, y,
                                                               z);
}

IsotropicLinearElasticMaterialWithThermalExpansion::
    IsotropicLinearElasticMaterialWithThermalExpansion(
        std::string name, Colour colour, const XmlNode& parameters, Geometry* geometry,
        const KeywordsElasticity& keywords, std::shared_ptr<const LoadCaseTable> loadCases,
        std::shared_ptr<InternalVariablesStore> internalVariablesStore)
    : IsotropicLinearElasticMaterial(std::move(name), colour, parameters, geometry, keywords,
                                     std::move(loadCases), std::move(internalVariablesStore)),
      alpha(readParameter(parameters, "alpha")) {}

void IsotropicLinearElasticMaterialWithThermalExpansion::thermalStrainVoigt(
    int, VoxelIndex, VoxelIndex, VoxelIndex, double T, double* epsVoigt) const {
  for (int a = 0; a < 3; ++a) epsVoigt[a] = T * alpha;
  for (int a = 3; a < 6; ++a) epsVoigt[a] = 0.0;
}

void IsotropicLinearElasticMaterialWithThermalExpansion::thermalStrainTensor(int, VoxelIndex,
                                                                             VoxelIndex, VoxelIndex,
                                                                             double T,
                                                                             double* eps9) const {
  for (int p = 0; p < 9; ++p) eps9[p] = 0.0;
  for (int i = 0; i < 3; ++i) eps9[4 * i] = T * alpha;
}

}  // namespace gridmoor
