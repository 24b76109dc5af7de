#include "materials/OrientedLinearElasticMaterial.h"

#include <algorithm>
#include <utility>

#include "common/Fatal.h"
#include "materials/VoigtRotation.h"
#include "voxel/EulerAnglesImage.h"
#include "voxel/Geometry.h"

namespace gridmoor {

OrientedLinearElasticMaterial::OrientedLinearElasticMaterial(
    std::string name, Colour colour, const KeywordsElasticity& keywords,
    std::shared_ptr<const LoadCaseTable> loadCases,
    std::shared_ptr<InternalVariablesStore> internalVariablesStore, Geometry* geometry,
    int numberOfAngles)
    : LinearElasticMaterial(std::move(name), colour, keywords, std::move(loadCases),
                            std::move(internalVariablesStore), geometry),
      numberOfAngles_(numberOfAngles) {}

bool OrientedLinearElasticMaterial::rotates() const {
  return orientation != nullptr && orientation->size() > 0 && !isIsotropic();
}

OrientationKey OrientedLinearElasticMaterial::keyOfVoxel(VoxelIndex x, VoxelIndex y,
                                                         VoxelIndex z) const {
  // A field with fewer components than the law uses leaves the missing angles at 0.
  OrientationKey key;
  const std::uint64_t components =
      std::min<std::uint64_t>(orientation->getNumberOfComponents(), numberOfAngles_);
  const double* angles = orientation->data() + orientation->elementIndex(0, x, y, z);
  for (std::uint64_t c = 0; c < components; ++c) key.angles[c] = angles[c];
  return key;
}

OrientedMatrices OrientedLinearElasticMaterial::orientedMatricesOf(
    const OrientationKey& key) const {
  const auto& [t1, t2, t3] = key.angles;
  OrientedMatrices m;
  m.stiffness = rotateStiffnessXZX(cVoigt, t1, t2, t3);
  m.compliance = rotateComplianceXZX(cVoigtInverse, t1, t2, t3);
  rotateStrainXZX(materialThermalExpansion.data(), t1, t2, t3, m.thermalExpansion.data());
  return m;
}

void OrientedLinearElasticMaterial::prepareVoxelData() {
  orientedMatrices_.clear();
  if (!rotates() || geometry == nullptr) return;
  const ColorImage& colours = geometry->RealVoxelImage;
  const std::uint64_t sizeX = colours.getSizeX(), sizeY = colours.sizeY, sizeZ = colours.sizeZ;
  if (orientation->getSizeX() != sizeX || orientation->getSizeY() != sizeY ||
      orientation->getSizeZ() != sizeZ)
    fatal("The orientation field (" + std::to_string(orientation->getSizeX()) + " x " +
          std::to_string(orientation->getSizeY()) + " x " +
          std::to_string(orientation->getSizeZ()) + " voxels) does not match the geometry (" +
          std::to_string(sizeX) + " x " + std::to_string(sizeY) + " x " + std::to_string(sizeZ) +
          " voxels) of material " + name);
  const Colour own = getColour();
  for (VoxelIndex x = 0; x < sizeX; ++x)
    for (VoxelIndex y = 0; y < sizeY; ++y)
      for (VoxelIndex z = 0; z < sizeZ; ++z) {
        if (colours.data()[colours.elementIndex(0, x, y, z)] != own) continue;
        const OrientationKey key = keyOfVoxel(x, y, z);
        if (orientedMatrices_.find(key) == orientedMatrices_.end())
          orientedMatrices_.emplace(key, orientedMatricesOf(key));
      }
}

void OrientedLinearElasticMaterial::S(int, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                                      const double* EVoigt, double* SVoigt) {
  withMatricesOfVoxel(x, y, z, [&](const VoigtMatrix& c, const VoigtMatrix&, const auto&) {
    c.multiply(EVoigt, SVoigt);
  });
}

void OrientedLinearElasticMaterial::E(int, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                                      const double* SVoigt, double* EVoigt) {
  withMatricesOfVoxel(x, y, z, [&](const VoigtMatrix&, const VoigtMatrix& d, const auto&) {
    d.multiply(SVoigt, EVoigt);
  });
}

VoigtMatrix OrientedLinearElasticMaterial::getCVoigtOfVoxel(int, VoxelIndex x, VoxelIndex y,
                                                            VoxelIndex z) const {
  return withMatricesOfVoxel(
      x, y, z, [](const VoigtMatrix& c, const VoigtMatrix&, const auto&) { return c; });
}

VoigtMatrix OrientedLinearElasticMaterial::complianceOfVoxel(int, VoxelIndex x, VoxelIndex y,
                                                             VoxelIndex z) const {
  return withMatricesOfVoxel(
      x, y, z, [](const VoigtMatrix&, const VoigtMatrix& d, const auto&) { return d; });
}

void OrientedLinearElasticMaterial::thermalStrainOfVoxel(VoxelIndex x, VoxelIndex y, VoxelIndex z,
                                                         double T, double* epsVoigt) const {
  withMatricesOfVoxel(x, y, z,
                      [&](const VoigtMatrix&, const VoigtMatrix&, const std::array<double, 6>& a) {
                        for (int k = 0; k < 6; ++k) epsVoigt[k] = T * a[k];
                      });
}

void OrientedLinearElasticMaterial::thermalStrainTensorOfVoxel(VoxelIndex x, VoxelIndex y,
                                                               VoxelIndex z, double T,
                                                               double* eps9) const {
  double e[6];
  thermalStrainOfVoxel(x, y, z, T, e);
  // Engineering shear to tensor components.
  eps9[0] = e[0];
  eps9[4] = e[1];
  eps9[8] = e[2];
  eps9[5] = eps9[7] = 0.5 * e[3];
  eps9[2] = eps9[6] = 0.5 * e[4];
  eps9[1] = eps9[3] = 0.5 * e[5];
}

}  // namespace gridmoor
