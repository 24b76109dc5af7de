// The isotropic linear elastic law (E, nu) and its form with thermal expansion; also the
// reference material of the solve, with a cache of (C - C0)^-1 and (D - D0)^-1 against it.
#pragma once

#include <array>
#include <memory>
#include <string>

#include "materials/LinearElasticMaterial.h"

namespace gridmoor {

class IsotropicLinearElasticMaterial : public LinearElasticMaterial {
 public:
  static constexpr std::array<const char*, 2> parameterKeys{"E", "nu"};

  double youngsModulus = 0.0;  // "E"
  double poissonRatio = 0.0;   // "nu"
  double lambda = 0.0;
  double mu = 0.0;

  IsotropicLinearElasticMaterial(std::string name, Colour colour, const XmlNode& parameters,
                                 Geometry* geometry, const KeywordsElasticity& keywords,
                                 std::shared_ptr<const LoadCaseTable> loadCases,
                                 std::shared_ptr<InternalVariablesStore> internalVariablesStore);
  // A law outside the material table, given by its Lame constants (the reference material).
  IsotropicLinearElasticMaterial(std::string name, double lambda, double mu);

  // Sets lambda and mu as given and E, nu from them, then rebuilds both matrices. The
  // reference selection calls this whenever it chooses new constants.
  void setLameConstants(double lambda, double mu);

  bool isSoft() const override { return youngsModulus == 0.0; }
  bool isIncompressible() const override { return poissonRatio == 0.5; }
  bool isIsotropic() const override { return true; }

  // Fills the cache against the reference when the reference is isotropic too.
  void setReferenceMaterial(const DiscretizedElasticMaterial& reference) override;

  // Sparse products: the normal block as a 3x3 product, each shear by its diagonal entry.
  void multiplyStiffness(const double* EVoigt, double* SVoigt) const;
  void multiplyCompliance(const double* SVoigt, double* EVoigt) const;

  using LinearElasticMaterial::E;
  using LinearElasticMaterial::S;
  void S(int, VoxelIndex, VoxelIndex, VoxelIndex, const double* EVoigt, double* SVoigt) override {
    multiplyStiffness(EVoigt, SVoigt);
  }
  void E(int, VoxelIndex, VoxelIndex, VoxelIndex, const double* SVoigt, double* EVoigt) override {
    multiplyCompliance(SVoigt, EVoigt);
  }
  void secondPiolaKirchhoff(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                            const double* E9, double* S9) override;
  using LinearElasticMaterial::secondPiolaKirchhoff;
  TensorMatrix getTensorMatrixOfVoxel(int, VoxelIndex, VoxelIndex, VoxelIndex) const override {
    return cTensor;
  }
  TensorMatrix getTensorMatrixDoubledOfVoxel(int, VoxelIndex, VoxelIndex,
                                             VoxelIndex) const override {
    return cTensorDoubled;
  }

  void updateMatrices() override;
  void updateInverseMatrices() override;

  // Against an isotropic reference: the cached matrix when the reference still has the
  // constants the cache was made for, else the inverse in closed form; the general LU where
  // the closed form does not apply.
  VoigtMatrix getCVoigtMinusC0InverseOfVoxel(const DiscretizedElasticMaterial& referenceMaterial,
                                             int loadCase, VoxelIndex x, VoxelIndex y,
                                             VoxelIndex z) override;
  VoigtMatrix getDVoigtMinusD0InverseOfVoxel(const DiscretizedElasticMaterial& referenceMaterial,
                                             int loadCase, VoxelIndex x, VoxelIndex y,
                                             VoxelIndex z) override;

 private:
  // The isotropic law behind a reference, or null. The reference the cache was made for is
  // recognised by its address, which avoids a dynamic_cast per voxel.
  const IsotropicLinearElasticMaterial* isotropicReference(
      const DiscretizedElasticMaterial& reference) const;
  bool cacheHolds(const IsotropicLinearElasticMaterial& reference) const {
    return cacheValid_ && reference.lambda == cachedLambda0_ && reference.mu == cachedMu0_;
  }
  VoigtMatrix stiffnessDifferenceInverse(const IsotropicLinearElasticMaterial& reference) const;

  const IsotropicLinearElasticMaterial* cachedReference_ = nullptr;
  bool cacheValid_ = false;
  double cachedLambda0_ = 0.0;
  double cachedMu0_ = 0.0;
  VoigtMatrix cachedCMinusC0Inverse_;
  VoigtMatrix cachedDMinusD0Inverse_;
};

class IsotropicLinearElasticMaterialWithThermalExpansion : public IsotropicLinearElasticMaterial {
 public:
  double alpha = 0.0;  // "alpha"

  IsotropicLinearElasticMaterialWithThermalExpansion(
      std::string name, Colour colour, const XmlNode& parameters, Geometry* geometry,
      const KeywordsElasticity& keywords, std::shared_ptr<const LoadCaseTable> loadCases,
      std::shared_ptr<InternalVariablesStore> internalVariablesStore);

  bool isLinearStrain() const override { return alpha == 0.0; }
  bool isLinearStress() const override { return alpha == 0.0; }
  bool isLinearPolarization() const override { return alpha == 0.0; }
  bool isLinearEigenstrain() const override { return alpha == 0.0; }
  bool hasThermalExpansion() const override { return alpha != 0.0; }
  // T alpha on the normal components, no shear.
  void thermalStrainVoigt(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, double T,
                          double* epsVoigt) const override;
  void thermalStrainTensor(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, double T,
                           double* eps9) const override;
};

}  // namespace gridmoor
