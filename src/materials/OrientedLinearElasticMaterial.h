// Common part of the linear laws turned by the orientation field: one entry of rotated
// stiffness, compliance and thermal expansion per distinct orientation, built before the solve.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

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

inline std::uint64_t hashOf(const OrientationKey& key) {
  std::uint64_t h = 0;
  for (double angle : key.angles) {
    std::uint64_t bits;
    std::memcpy(&bits, &angle, sizeof bits);
    h = (h ^ bits) * 0x9e3779b97f4a7c15ull;
    h ^= h >> 32;
  }
  // Final mix, so that the low bits that pick the slot depend on every bit of the angles.
  h ^= h >> 33;
  h *= 0xff51afd7ed558ccdull;
  h ^= h >> 33;
  return h;
}

struct OrientedMatrices {
  VoigtMatrix stiffness;
  VoigtMatrix compliance;
  // Thermal strain per unit temperature in the voxel's frame (engineering shear).
  std::array<double, 6> thermalExpansion{};
};

// Map from orientation to its matrices, read once per voxel in the solver loops. Open
// addressing over a power-of-two slot array keeps the keys of thousands of orientations in a
// few cache lines, where node-based maps cost a cache miss per voxel; the matrices stand in
// one contiguous array.
class OrientationTable {
 public:
  void clear();
  std::size_t size() const { return entries_.size(); }
  // The entry of key, or null.
  const OrientedMatrices* find(const OrientationKey& key) const {
    if (slots_.empty()) return nullptr;
    for (std::uint64_t i = hashOf(key) & mask_;; i = (i + 1) & mask_) {
      const Slot& slot = slots_[i];
      if (slot.entry == 0) return nullptr;
      if (slot.key == key) return &entries_[slot.entry - 1];
    }
  }
  // Adds an entry for a key that is not in the table yet.
  void insert(const OrientationKey& key, const OrientedMatrices& matrices);

 private:
  struct Slot {
    OrientationKey key;
    std::uint32_t entry = 0;  // index + 1 into entries_; 0 marks a free slot
  };
  void grow();

  std::vector<Slot> slots_;
  std::uint64_t mask_ = 0;
  std::vector<OrientedMatrices> entries_;
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
  // It also decides whether the law is turned at all: not when it is isotropic after all or
  // the run has no orientation field.
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
  // Set by prepareVoxelData; the orientation pointer is checked as well, so that a law whose
  // field is taken away answers unturned.
  bool rotates() const { return turned_ && orientation != nullptr; }
  OrientationKey keyOfVoxel(VoxelIndex x, VoxelIndex y, VoxelIndex z) const;
  OrientedMatrices orientedMatricesOf(const OrientationKey& key) const;
  // Calls use(stiffness, compliance, thermalExpansion) with the matrices of the voxel: the
  // stored ones where the law is not turned, else its map entry. An orientation missing from
  // the map (a voxel of another colour, asked by a mixing law) is turned on the spot.
  template <class Use>
  auto withMatricesOfVoxel(VoxelIndex x, VoxelIndex y, VoxelIndex z, Use use) const {
    if (!rotates()) return use(cVoigt, cVoigtInverse, materialThermalExpansion);
    const OrientationKey key = keyOfVoxel(x, y, z);
    if (const OrientedMatrices* entry = orientedMatrices_.find(key))
      return use(entry->stiffness, entry->compliance, entry->thermalExpansion);
    const OrientedMatrices turned = orientedMatricesOf(key);
    return use(turned.stiffness, turned.compliance, turned.thermalExpansion);
  }

  int numberOfAngles_;
  bool turned_ = false;
  OrientationTable orientedMatrices_;
};

// The thermal form of a turned law: its expansion (set by the concrete form's constructor in
// materialThermalExpansion, material frame) is turned into each voxel's frame like the
// stiffness. The response is linear without a constant term only when there is no expansion.
template <class Law>
class OrientedThermalForm : public Law {
 public:
  using Law::Law;

  bool isLinearStrain() const override { return !hasThermalExpansion(); }
  bool isLinearStress() const override { return !hasThermalExpansion(); }
  bool isLinearPolarization() const override { return !hasThermalExpansion(); }
  bool isLinearEigenstrain() const override { return !hasThermalExpansion(); }
  bool hasThermalExpansion() const override {
    const auto& alpha = this->materialThermalExpansion;
    return alpha[0] != 0.0 || alpha[1] != 0.0 || alpha[2] != 0.0;
  }
  void thermalStrainVoigt(int, VoxelIndex x, VoxelIndex y, VoxelIndex z, double T,
                          double* epsVoigt) const override {
    this->thermalStrainOfVoxel(x, y, z, T, epsVoigt);
  }
  void thermalStrainTensor(int, VoxelIndex x, VoxelIndex y, VoxelIndex z, double T,
                           double* eps9) const override {
    this->thermalStrainTensorOfVoxel(x, y, z, T, eps9);
  }
};

}  // namespace gridmoor
