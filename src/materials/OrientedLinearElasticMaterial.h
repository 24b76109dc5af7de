// Common part of the linear laws turned by the orientation field: one entry of rotated
// stiffness, compliance and thermal expansion per distinct orientation, built before the solve.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <unordered_map>

#include "materials/LinearElasticMaterial.h"

namespace gridmoor {

// The Euler angles of a voxel (XZX; unused angles 0). Compared and hashed by their bits, so
// that angles differing in the last bit are two orientations and a NaN angle still finds its
// own entry.
struct OrientationKey {
  std::array<double, 3> angles{};
  bool operator==(const OrientationKey& other) const {
    return std::memcmp(angles.data(), other.angles.data(), sizeof angles) == 0;
  }
};

struct OrientationKeyHash {
  std::size_t operator()(const OrientationKey& key) const {
    std::uint64_t h = 1469598103934665603ull;
    for (double angle : key.angles) {
      std::uint64_t bits;
      std::memcpy(&bits, &angle, sizeof bits);
      h = (h ^ bits) * 1099511628211ull;
      h ^= h >> 29;
    }
    return static_cast<std::size_t>(h);
  }
};

struct OrientedMatrices {
  VoigtMatrix stiffness;
  VoigtMatrix compliance;
  // Thermal strain per unit temperature in the voxel's frame (engineering shear).
  std::array<double, 6> thermalExpansion{};
};

class OrientedLinearElasticMaterial : public LinearElasticMaterial {
 public:
  // numberOfAngles: 2 for laws with an axis of symmetry, 3 otherwise.
  OrientedLinearElasticMaterial(std::string name, Colour colour, const KeywordsElasticity& keywords,
                                std::shared_ptr<const LoadCaseTable> loadCases,
                                std::shared_ptr<InternalVariablesStore> internalVariablesStore,
                                Geometry* geometry, int numberOfAngles);

  // Walks the voxels of this law's colour in the local slab and makes one entry per new
  // orientation. Runs on the main thread before the solve; afterwards the map is only read.
  // A law that is isotropic after all, or a run without orientation field, needs no entry.
  void prepareVoxelData() override;

  int numberOfAngles() const { return numberOfAngles_; }
  std::size_t numberOfOrientations() const { return orientedMatrices_.size(); }

  // Per voxel: one lookup, then the product with the entry's matrix.
  using LinearElasticMaterial::E;
  using LinearElasticMaterial::S;
  void S(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, const double* EVoigt,
         double* SVoigt) override;
  void E(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, const double* SVoigt,
         double* EVoigt) override;
  VoigtMatrix getCVoigtOfVoxel(int loadCase, VoxelIndex x, VoxelIndex y,
                               VoxelIndex z) const override;
  VoigtMatrix complianceOfVoxel(int loadCase, VoxelIndex x, VoxelIndex y,
                                VoxelIndex z) const override;

 protected:
  // Thermal expansion per unit temperature in the material's own frame; the thermal forms
  // set it in their constructors.
  std::array<double, 6> materialThermalExpansion{};

  // T times the thermal expansion of the voxel, as a Voigt vector or a full tensor.
  void thermalStrainOfVoxel(VoxelIndex x, VoxelIndex y, VoxelIndex z, double T,
                            double* epsVoigt) const;
  void thermalStrainTensorOfVoxel(VoxelIndex x, VoxelIndex y, VoxelIndex z, double T,
                                  double* eps9) const;

 private:
  bool rotates() const;
  OrientationKey keyOfVoxel(VoxelIndex x, VoxelIndex y, VoxelIndex z) const;
  OrientedMatrices orientedMatricesOf(const OrientationKey& key) const;
  // Calls use(stiffness, compliance, thermalExpansion) with the matrices of the voxel: the
  // stored ones where the law is not turned, else its map entry. An orientation missing from
  // the map (a voxel of another colour, asked by a mixing law) is turned on the spot.
  template <class Use>
  auto withMatricesOfVoxel(VoxelIndex x, VoxelIndex y, VoxelIndex z, Use use) const {
    if (!rotates()) return use(cVoigt, cVoigtInverse, materialThermalExpansion);
    const OrientationKey key = keyOfVoxel(x, y, z);
    const auto entry = orientedMatrices_.find(key);
    if (entry != orientedMatrices_.end())
      return use(entry->second.stiffness, entry->second.compliance, entry->second.thermalExpansion);
    const OrientedMatrices turned = orientedMatricesOf(key);
    return use(turned.stiffness, turned.compliance, turned.thermalExpansion);
  }

  int numberOfAngles_;
  std::unordered_map<OrientationKey, OrientedMatrices, OrientationKeyHash> orientedMatrices_;
};

}  // namespace gridmoor
