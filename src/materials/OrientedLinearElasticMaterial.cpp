#include "materials/OrientedLinearElasticMaterial.h"

#include <algorithm>
#include <utility>

#include "common/Fatal.h"
#include "materials/VoigtRotation.h"
#include "voxel/EulerAnglesImage.h"
#include "voxel/Geometry.h"

namespace gridmoor {

namespace {

// out = m v, accumulated column by column in locals: the six row sums run side by side
// instead of as six dependent chains, and out cannot alias the matrix in the compiler's eyes.
inline void multiplyFast(const VoigtMatrix& m, const double* v, double* out) {
  double sum[6] = {0, 0, 0, 0, 0, 0};
  for (int b = 0; b < 6; ++b) {
    const double vb = v[b];
    for (int a = 0; a < 6; ++a) sum[a] += m.m[6 * a + b] * vb;
  }
  for (int a = 0; a < 6; ++a) out[a] = sum[a];
}

}  // namespace

OrientedLinearElasticMaterial::OrientedLinearElasticMaterial(
    std::string name, Colour colour, const KeywordsElasticity& keywords,
    std::shared_ptr<const LoadCaseTable> loadCases,
    std::shared_ptr<InternalVariablesStore> internalVariablesStore, Geometry* geometry,
    int numberOfAngles)
    : LinearElasticMaterial(std::move(name), colour, keywords, std::move(loadCases),
                            std::move(internalVariablesStore), geometry),
      numberOfAngles_(numberOfAngles) {}

void OrientationTable::clear() {
  slots_.clear();
  entries_.clear();
  mask_ = 0;
}

void OrientationTable::grow() {
  // At most half the slots in use keeps the probe sequences short.
  const std::size_t capacity = slots_.empty() ? 64 : 2 * slots_.size();
  std::vector<Slot> old = std::move(slots_);
  slots_.assign(capacity, Slot{});
  mask_ = capacity - 1;
  for (const Slot& slot : old) {
    if (slot.entry == 0) continue;
    std::uint64_t i = hashOf(slot.key) & mask_;
    while (slots_[i].entry != 0) i = (i + 1) & mask_;
    slots_[i] = slot;
  }
}

void OrientationTable::insert(const OrientationKey& key, const OrientedMatrices& matrices) {
  if (2 * (entries_.size() + 1) > slots_.size()) grow();
  entries_.push_back(matrices);
  std::uint64_t i = hashOf(key) & mask_;
  while (slots_[i].entry != 0) i = (i + 1) & mask_;
  slots_[i] = Slot{key, static_cast<std::uint32_t>(entries_.size())};
}

OrientationKey OrientedLinearElasticMaterial::keyOfVoxel(VoxelIndex x, VoxelIndex y,
                                                         VoxelIndex z) const {
  // A field with fewer components than the law uses leaves the missing angles at 0.
  OrientationKey key;
  // strideZ is the number of components; read directly, as this runs per voxel.
  const std::uint64_t components = std::min<std::uint64_t>(orientation->strideZ, numberOfAngles_);
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
  turned_ = orientation != nullptr && orientation->size() > 0 && !isIsotropic();
  if (!turned_ || geometry == nullptr) return;
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
        if (!orientedMatrices_.find(key)) orientedMatrices_.insert(key, orientedMatricesOf(key));
      }
}

void OrientedLinearElasticMaterial::S(int, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                                      const double* EVoigt, double* SVoigt) {
  withMatricesOfVoxel(x, y, z, [&](const VoigtMatrix& c, const VoigtMatrix&, const auto&) {
    multiplyFast(c, EVoigt, SVoigt);
  });
}

void OrientedLinearElasticMaterial::E(int, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                                      const double* SVoigt, double* EVoigt) {
  withMatricesOfVoxel(x, y, z, [&](const VoigtMatrix&, const VoigtMatrix& d, const auto&) {
    multiplyFast(d, SVoigt, EVoigt);
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
