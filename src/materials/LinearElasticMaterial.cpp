#include "materials/LinearElasticMaterial.h"

#include <cstdlib>
#include <utility>

#include "input/Parameter.h"
#include "input/XmlNode.h"
#include "materials/LinearElasticMaterialMatrices.h"
#include "materials/MandelEigenvalues.h"
#include "voxel/ColorImage.h"

namespace gridmoor {

LinearElasticMaterial::LinearElasticMaterial(
    std::string name, Colour colour, const KeywordsElasticity& keywords,
    std::shared_ptr<const LoadCaseTable> loadCases,
    std::shared_ptr<InternalVariablesStore> internalVariablesStore, Geometry* geometry)
    : DiscretizedElasticMaterial(std::move(name), colour, keywords, std::move(loadCases),
                                 std::move(internalVariablesStore), geometry) {}

LinearElasticMaterial::LinearElasticMaterial(std::string name) { this->name = std::move(name); }

double LinearElasticMaterial::readParameter(const XmlNode& parameters, const std::string& key) {
  return std::atof(readParameterText(parameters, key, std::string()).c_str());
}

void LinearElasticMaterial::S(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                              const double* EVoigt, double* SVoigt) {
  getCVoigtOfVoxel(loadCase, x, y, z).multiply(EVoigt, SVoigt);
}

void LinearElasticMaterial::E(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                              const double* SVoigt, double* EVoigt) {
  complianceOfVoxel(loadCase, x, y, z).multiply(SVoigt, EVoigt);
}

void LinearElasticMaterial::polarizationStrain(int loadCase, VoxelIndex x, VoxelIndex y,
                                               VoxelIndex z,
                                               const DiscretizedElasticMaterial& referenceMaterial,
                                               const double* tauVoigt, double* EVoigt) {
  if (isRigid()) {
    for (int a = 0; a < 6; ++a) EVoigt[a] = 0.0;
    return;
  }
  const double zero[6] = {0, 0, 0, 0, 0, 0};
  double shifted[6];
  S(loadCase, x, y, z, zero, shifted);
  for (int a = 0; a < 6; ++a) shifted[a] = tauVoigt[a] - shifted[a];
  getCVoigtMinusC0InverseOfVoxel(referenceMaterial, loadCase, x, y, z).multiply(shifted, EVoigt);
}

void LinearElasticMaterial::eigenstrainStress(int loadCase, VoxelIndex x, VoxelIndex y,
                                              VoxelIndex z,
                                              const DiscretizedElasticMaterial& referenceMaterial,
                                              const double* etaVoigt, double* SVoigt) {
  if (isSoft()) {
    for (int a = 0; a < 6; ++a) SVoigt[a] = 0.0;
    return;
  }
  const double zero[6] = {0, 0, 0, 0, 0, 0};
  double shifted[6];
  E(loadCase, x, y, z, zero, shifted);
  for (int a = 0; a < 6; ++a) shifted[a] = etaVoigt[a] - shifted[a];
  getDVoigtMinusD0InverseOfVoxel(referenceMaterial, loadCase, x, y, z).multiply(shifted, SVoigt);
}

VoigtMatrix LinearElasticMaterial::getCVoigtInverseOfVoxel(int loadCase, VoxelIndex x, VoxelIndex y,
                                                           VoxelIndex z) {
  return complianceOfVoxel(loadCase, x, y, z);
}

void LinearElasticMaterial::secondPiolaKirchhoff(int loadCase, VoxelIndex x, VoxelIndex y,
                                                 VoxelIndex z, const double* E9, double* S9) {
  const TensorMatrix c = getTensorMatrixOfVoxel(loadCase, x, y, z);
  for (int p = 0; p < 9; ++p) {
    double s = 0.0;
    for (int q = 0; q < 9; ++q) s += c(p, q) * E9[q];
    S9[p] = s;
  }
}

void LinearElasticMaterial::getMinMaxEigenvalueStrain(int, const Image<Real>*, double& minimum,
                                                      double& maximum) const {
  stiffnessEigenvalueRange(getCVoigt(), minimum, maximum);
}

void LinearElasticMaterial::getMinMaxEigenvalueStress(int, const Image<Real>*, double& minimum,
                                                      double& maximum) const {
  complianceEigenvalueRange(getCVoigtInverse(), minimum, maximum);
}

void LinearElasticMaterial::updateMatrices() {
  cTensor = stiffnessTensorOf(cVoigt);
  cTensorDoubled = doubledShearTensorOf(cVoigt);
}

void LinearElasticMaterial::updateInverseMatrices() { cVoigtInverse = invertByLU(cVoigt); }

VoigtMatrix LinearElasticMaterial::getCVoigtOfVoxel(int, VoxelIndex, VoxelIndex, VoxelIndex) const {
  return cVoigt;
}

VoigtMatrix LinearElasticMaterial::complianceOfVoxel(int, VoxelIndex, VoxelIndex,
                                                     VoxelIndex) const {
  return cVoigtInverse;
}

VoigtMatrix LinearElasticMaterial::getCVoigtMinusC0InverseOfVoxel(
    const DiscretizedElasticMaterial& referenceMaterial, int loadCase, VoxelIndex x, VoxelIndex y,
    VoxelIndex z) {
  VoigtMatrix difference = getCVoigtOfVoxel(loadCase, x, y, z);
  const VoigtMatrix c0 = referenceMaterial.getCVoigt();
  for (int i = 0; i < 36; ++i) difference.m[i] -= c0.m[i];
  return invertByLU(difference);
}

VoigtMatrix LinearElasticMaterial::getDVoigtMinusD0InverseOfVoxel(
    const DiscretizedElasticMaterial& referenceMaterial, int loadCase, VoxelIndex x, VoxelIndex y,
    VoxelIndex z) {
  VoigtMatrix difference = complianceOfVoxel(loadCase, x, y, z);
  const VoigtMatrix d0 = referenceMaterial.getCVoigtInverse();
  for (int i = 0; i < 36; ++i) difference.m[i] -= d0.m[i];
  return invertByLU(difference);
}

TensorMatrix LinearElasticMaterial::getTensorMatrixOfVoxel(int loadCase, VoxelIndex x, VoxelIndex y,
                                                           VoxelIndex z) const {
  return stiffnessTensorOf(getCVoigtOfVoxel(loadCase, x, y, z));
}

TensorMatrix LinearElasticMaterial::getTensorMatrixDoubledOfVoxel(int loadCase, VoxelIndex x,
                                                                  VoxelIndex y,
                                                                  VoxelIndex z) const {
  return doubledShearTensorOf(getCVoigtOfVoxel(loadCase, x, y, z));
}

VoigtMatrix LinearElasticMaterial::averageOverColour(const ColorImage& image,
                                                     bool compliance) const {
  if (!needsOrientation() || orientation == nullptr) return compliance ? cVoigtInverse : cVoigt;
  VoigtMatrix sum;
  std::uint64_t count = 0;
  const Colour own = getColour();
  for (VoxelIndex x = 0; x < image.getSizeX(); ++x)
    for (VoxelIndex y = 0; y < image.sizeY; ++y)
      for (VoxelIndex z = 0; z < image.sizeZ; ++z) {
        if (image.data()[image.elementIndex(0, x, y, z)] != own) continue;
        const VoigtMatrix m =
            compliance ? complianceOfVoxel(0, x, y, z) : getCVoigtOfVoxel(0, x, y, z);
        for (int i = 0; i < 36; ++i) sum.m[i] += m.m[i];
        ++count;
      }
  if (count == 0) return compliance ? cVoigtInverse : cVoigt;
  for (double& v : sum.m) v /= static_cast<double>(count);
  return sum;
}

}  // namespace gridmoor
