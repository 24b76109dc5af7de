// Base of the laws whose response is a constant stiffness per voxel: the stored stiffness and
// compliance, the linear answers of the law interface and the Saint Venant-Kirchhoff chain.
#pragma once

#include <memory>
#include <string>

#include "materials/DiscretizedElasticMaterial.h"
#include "materials/VoigtMatrix.h"

namespace gridmoor {

class XmlNode;

class LinearElasticMaterial : public DiscretizedElasticMaterial {
 public:
  VoigtMatrix cVoigt;           // stiffness of the unrotated law
  VoigtMatrix cVoigtInverse;    // its compliance
  TensorMatrix cTensor;         // stiffness form of cVoigt
  TensorMatrix cTensorDoubled;  // doubled-shear form of cVoigt

  LinearElasticMaterial(std::string name, Colour colour, const KeywordsElasticity& keywords,
                        std::shared_ptr<const LoadCaseTable> loadCases,
                        std::shared_ptr<InternalVariablesStore> internalVariablesStore,
                        Geometry* geometry);
  // A law that lives outside the material table (the reference material of the solve).
  explicit LinearElasticMaterial(std::string name);

  // One parameter of the "MaterialParameters" element: a missing key reads as 0.
  static double readParameter(const XmlNode& parameters, const std::string& key);

  // ---- Capability questions ---------------------------------------------------------------
  bool usableForSmallDeformations() const override { return true; }
  bool usableForLargeDeformations() const override { return true; }
  bool isLinear() const override { return true; }
  bool isLinearStrain() const override { return !hasThermalExpansion(); }
  bool isLinearStress() const override { return !hasThermalExpansion(); }
  bool isLinearPolarization() const override { return !hasThermalExpansion(); }
  bool isLinearEigenstrain() const override { return !hasThermalExpansion(); }
  bool isLinearDeformationGradient() const override { return isSoft() || isRigid(); }
  bool isAffinLinearStrain() const override { return true; }
  bool isAffinLinearStress() const override { return true; }
  bool isAffinLinearPolarization() const override { return true; }
  bool isAffinLinearEigenstrain() const override { return true; }
  bool isAffinLinearDeformationGradient() const override { return isSoft() || isRigid(); }
  bool hasResidualStressAtZeroStrain() const override { return false; }
  bool hasResidualStressAtIdentity() const override { return false; }
  bool isRigid() const override { return false; }
  bool isTransversalIsotropic() const override { return true; }
  bool hasThermalExpansion() const override { return false; }

  // ---- No internal variables --------------------------------------------------------------
  bool hasInternalVariablesStrain() const override { return false; }
  bool hasInternalVariablesStress() const override { return false; }
  bool hasInternalVariablesPolarization() const override { return false; }
  bool hasInternalVariablesEigenstrain() const override { return false; }
  bool hasInternalVariablesDeformationGradient() const override { return false; }
  std::uint64_t totalNumberOfInternalVariablesPerVoxelStrain(unsigned char) const override {
    return 0;
  }
  std::uint64_t totalNumberOfInternalVariablesPerVoxelStress(unsigned char) const override {
    return 0;
  }
  std::uint64_t totalNumberOfInternalVariablesPerVoxelPolarization(unsigned char) const override {
    return 0;
  }
  std::uint64_t totalNumberOfInternalVariablesPerVoxelEigenstrain(unsigned char) const override {
    return 0;
  }
  std::uint64_t totalNumberOfInternalVariablesPerVoxelDeformationGradient(
      unsigned char) const override {
    return 0;
  }
  void initLinearizationDeformationGradient() override {}
  void updateLinearizationDeformationGradient(int, const Image<Real>&) override {}

  // ---- Pointwise small strain: old values and the load case do not matter ---------------
  using DiscretizedElasticMaterial::E;
  using DiscretizedElasticMaterial::eigenstrainStress;
  using DiscretizedElasticMaterial::polarizationStrain;
  using DiscretizedElasticMaterial::S;
  void S(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, const double* EVoigt,
         double* SVoigt) override;
  void E(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, const double* SVoigt,
         double* EVoigt) override;
  void polarizationStrain(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                          const DiscretizedElasticMaterial& referenceMaterial,
                          const double* tauVoigt, double* EVoigt) override;
  void eigenstrainStress(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                         const DiscretizedElasticMaterial& referenceMaterial,
                         const double* etaVoigt, double* SVoigt) override;
  void S(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, const double*,
         const double* EVoigt, double* SVoigt) override {
    S(loadCase, x, y, z, EVoigt, SVoigt);
  }
  void E(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, const double*,
         const double* SVoigt, double* EVoigt) override {
    E(loadCase, x, y, z, SVoigt, EVoigt);
  }
  void polarizationStrain(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                          const DiscretizedElasticMaterial& referenceMaterial, const double*,
                          const double* tauVoigt, double* EVoigt) override {
    polarizationStrain(loadCase, x, y, z, referenceMaterial, tauVoigt, EVoigt);
  }
  void eigenstrainStress(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                         const DiscretizedElasticMaterial& referenceMaterial, const double*,
                         const double* etaVoigt, double* SVoigt) override {
    eigenstrainStress(loadCase, x, y, z, referenceMaterial, etaVoigt, SVoigt);
  }
  VoigtMatrix getCVoigtLinearizedOfVoxel(int loadCase, VoxelIndex x, VoxelIndex y,
                                         VoxelIndex z) override {
    return getCVoigtOfVoxel(loadCase, x, y, z);
  }
  VoigtMatrix getCVoigtInverseOfVoxel(int loadCase, VoxelIndex x, VoxelIndex y,
                                      VoxelIndex z) override;
  VoigtMatrix getCVoigtMinusC0Inverse(
      int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
      const DiscretizedElasticMaterial& referenceMaterial) override {
    return getCVoigtMinusC0InverseOfVoxel(referenceMaterial, loadCase, x, y, z);
  }
  VoigtMatrix getDVoigtMinusD0Inverse(
      int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
      const DiscretizedElasticMaterial& referenceMaterial) override {
    return getDVoigtMinusD0InverseOfVoxel(referenceMaterial, loadCase, x, y, z);
  }

  // ---- Large strain: Saint Venant-Kirchhoff, S = C : E -----------------------------------
  void secondPiolaKirchhoff(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                            const double* E9, double* S9) override;
  // The old state does not matter to a linear law, at large strain as at small.
  void secondPiolaKirchhoff(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, const double*,
                            const double* E9, double* S9) override {
    secondPiolaKirchhoff(loadCase, x, y, z, E9, S9);
  }
  TensorMatrix dSdE(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                    const double*) override {
    return getTensorMatrixOfVoxel(loadCase, x, y, z);
  }

  // ---- Matrices of the whole law --------------------------------------------------------
  VoigtMatrix getCVoigt() const override { return cVoigt; }
  VoigtMatrix getCVoigtInverse() const override { return cVoigtInverse; }
  VoigtMatrix getCVoigtAverageStrain(const ColorImage& image, int) const override {
    return averageOverColour(image, false);
  }
  VoigtMatrix getCVoigtInverseAverageStrain(const ColorImage& image, int) const override {
    return averageOverColour(image, true);
  }
  VoigtMatrix getCVoigtInverseAverageStress(const ColorImage& image, int) const override {
    return averageOverColour(image, true);
  }
  VoigtMatrix getCVoigtAverageStress(const ColorImage& image, int) const override {
    return averageOverColour(image, false);
  }
  VoigtMatrix getCVoigtAveragePolarization(const ColorImage& image, int) const override {
    return averageOverColour(image, false);
  }
  VoigtMatrix getCVoigtInverseAveragePolarization(const ColorImage& image, int) const override {
    return averageOverColour(image, true);
  }
  VoigtMatrix getCVoigtInverseAverageEigenstrain(const ColorImage& image, int) const override {
    return averageOverColour(image, true);
  }
  VoigtMatrix getCVoigtAverageEigenstrain(const ColorImage& image, int) const override {
    return averageOverColour(image, false);
  }
  // Mandel-form eigenvalues of the stored stiffness (Strain, Polarisation) or compliance
  // (Stress, Eigenstrain); rotation does not change them.
  void getMinMaxEigenvalueStrain(int, const Image<Real>*, double& minimum,
                                 double& maximum) const override;
  void getMinMaxEigenvalueStress(int, const Image<Real>*, double& minimum,
                                 double& maximum) const override;
  void getMinMaxEigenvaluePolarisation(int loadCase, const Image<Real>* field, double& minimum,
                                       double& maximum) const override {
    getMinMaxEigenvalueStrain(loadCase, field, minimum, maximum);
  }
  void getMinMaxEigenvalueEigenstrain(int loadCase, const Image<Real>* field, double& minimum,
                                      double& maximum) const override {
    getMinMaxEigenvalueStress(loadCase, field, minimum, maximum);
  }

  // ---- Operations of the linear family ----------------------------------------------------
  // Rebuilds the stiffness from the parameters; here the two tensor forms from cVoigt, which
  // every law calls after setting cVoigt.
  virtual void updateMatrices();
  // Rebuilds the compliance; here by LU from cVoigt, for laws without a closed form.
  virtual void updateInverseMatrices();
  virtual VoigtMatrix getCVoigtOfVoxel(int loadCase, VoxelIndex x, VoxelIndex y,
                                       VoxelIndex z) const;
  // The compliance of the voxel; the interface operation of the same name forwards here.
  virtual VoigtMatrix complianceOfVoxel(int loadCase, VoxelIndex x, VoxelIndex y,
                                        VoxelIndex z) const;
  // (C - C0)^-1 and (D - D0)^-1 by LU with row pivoting. A reference equal to the law makes
  // the difference singular; that is not detected and gives non-finite entries.
  virtual VoigtMatrix getCVoigtMinusC0InverseOfVoxel(
      const DiscretizedElasticMaterial& referenceMaterial, int loadCase, VoxelIndex x, VoxelIndex y,
      VoxelIndex z);
  virtual VoigtMatrix getDVoigtMinusD0InverseOfVoxel(
      const DiscretizedElasticMaterial& referenceMaterial, int loadCase, VoxelIndex x, VoxelIndex y,
      VoxelIndex z);
  virtual TensorMatrix getTensorMatrixOfVoxel(int loadCase, VoxelIndex x, VoxelIndex y,
                                              VoxelIndex z) const;
  // Doubled-shear form of the stiffness of the voxel (of the stiffness, not the compliance).
  virtual TensorMatrix getTensorMatrixDoubledOfVoxel(int loadCase, VoxelIndex x, VoxelIndex y,
                                                     VoxelIndex z) const;

 protected:
  // Mean of the voxel stiffness (or compliance) over the voxels of this law's colour in the
  // image; a law whose matrix is the same everywhere answers with its stored matrix.
  virtual VoigtMatrix averageOverColour(const ColorImage& image, bool compliance) const;
};

}  // namespace gridmoor
