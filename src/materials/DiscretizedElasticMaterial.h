// The mechanical law interface: capability questions, internal-variable families, pointwise
// small- and large-strain responses, thermal wrappers, matrices and their eigenvalue ranges.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/Types.h"
#include "materials/DiscretizedMaterial.h"
#include "materials/Formulations.h"
#include "materials/VoigtMatrix.h"

namespace gridmoor {

class ColorImage;
class EulerAnglesImage;
template <class T>
class Image;
template <class T>
class Vector;

// Pointwise operations (leading loadCase, x, y, z) are called from parallel voxel loops: they
// read the law's data, write only their outputs and their own voxel's slots, and allocate
// nothing. Voigt vectors are six doubles (strains with engineering shear), full tensors nine
// doubles in row-major order. S, E, polarizationStrain and eigenstrainStress come in three
// overloads each; a law that overrides one brings the others back with a using-declaration.
class DiscretizedElasticMaterial : public DiscretizedMaterial {
 public:
  // The run's orientation field (null: all angles zero) and the reference law last given.
  const EulerAnglesImage* orientation = nullptr;
  const DiscretizedElasticMaterial* currentReference = nullptr;

  using DiscretizedMaterial::DiscretizedMaterial;

  // ---- Capability questions -------------------------------------------------------------
  virtual bool usableForSmallDeformations() const = 0;
  virtual bool usableForLargeDeformations() const = 0;
  // No iterated non-linearity: with all laws linear no Newton iterations run.
  virtual bool isLinear() const = 0;
  // Reserved question, asked over all colours; no law answers true.
  virtual bool isAlwaysFalse() const { return false; }
  // Linear with no constant term, per formulation.
  GRIDMOOR_FOR_EACH_FORMULATION(GRIDMOOR_PURE_MEMBER, bool, isLinear, (), const)
  GRIDMOOR_FOR_EACH_FORMULATION(GRIDMOOR_PURE_MEMBER, bool, isAffinLinear, (), const)
  // A non-zero response at zero strain; the second form at F = identity ("Large").
  virtual bool hasResidualStressAtZeroStrain() const = 0;
  virtual bool hasResidualStressAtIdentity() const = 0;
  virtual bool isSoft() const = 0;            // E = 0, compared exactly
  virtual bool isIncompressible() const = 0;  // nu = 0.5, compared exactly
  virtual bool isRigid() const = 0;           // E = infinity
  virtual bool isIsotropic() const = 0;
  // Voigt and Reuss bounds can be formed analytically.
  virtual bool isTransversalIsotropic() const = 0;
  // Only the mixed hybrid law answers these four differently.
  virtual bool mixedHybridFlagA() const { return false; }
  virtual bool needsOrientation() const { return !isIsotropic(); }
  virtual bool isMixedHybrid() const { return false; }
  virtual bool mixedHybridFlagB() const { return false; }
  virtual bool hasThermalExpansion() const = 0;

  // ---- Internal variables ---------------------------------------------------------------
  GRIDMOOR_FOR_EACH_FORMULATION(GRIDMOOR_REFUSING_MEMBER, bool, hasInternalVariables, (), const)
  // (flag) -> values per voxel.
  GRIDMOOR_FOR_EACH_FORMULATION(GRIDMOOR_REFUSING_MEMBER, std::uint64_t,
                                totalNumberOfInternalVariablesPerVoxel, (unsigned char), const)
  // (keywords): allocates the law's stores.
  GRIDMOOR_FOR_EACH_FORMULATION(GRIDMOOR_REFUSING_MEMBER, void, initInternalVariables,
                                (const KeywordsElasticity&), )
  // (file name): restores a stored state.
  GRIDMOOR_FOR_EACH_FORMULATION(GRIDMOOR_NOOP_MEMBER, void, restoreInternalVariables,
                                (const std::string&), )
  // (keywords, loadCase, the formulation's field): start values.
  GRIDMOOR_FOR_EACH_FORMULATION(GRIDMOOR_REFUSING_MEMBER, void, initializeInternalVariables,
                                (const KeywordsElasticity&, int, Image<Real>&), )
  // (loadCase, current solution): copies the solved field into the law's store.
  GRIDMOOR_FOR_EACH_FORMULATION(GRIDMOOR_REFUSING_MEMBER, void, updateInternalSolution,
                                (int, const Image<Real>&), )
  // End of a converged step: the new state becomes the old one.
  GRIDMOOR_FOR_EACH_FORMULATION(GRIDMOOR_REFUSING_MEMBER, void, updateInternalVariables, (), )
  // Allocates the stores of the linearization.
  GRIDMOOR_FOR_EACH_FORMULATION(GRIDMOOR_REFUSING_MEMBER, void, initLinearization, (), )
  // (loadCase, current solution): the stored tangent at that solution.
  GRIDMOOR_FOR_EACH_FORMULATION(GRIDMOOR_REFUSING_MEMBER, void, updateLinearization,
                                (int, const Image<Real>&), )

  // Parallel lists of per-voxel stores, field names and units for output; cleared first.
  virtual void getOutputVariables(std::vector<Vector<Real>*>& variables,
                                  std::vector<std::string>& names, std::vector<std::string>& units);
  // The stores that hold the old state, for saving and loading it.
  virtual void getStateVariables(std::vector<Vector<Real>*>& variables,
                                 std::vector<std::string>& names);

  // ---- Run hooks --------------------------------------------------------------------------
  // The reference law of the solve; laws that cache something against it override this.
  virtual void setReferenceMaterial(const DiscretizedElasticMaterial& reference);
  // Step length and step number of the time grid, for laws with rate-dependent state.
  virtual void setStepLength(Real) {}
  virtual void setStepNumber(int) {}

  // ---- Pointwise small-strain responses -------------------------------------------------
  virtual void S(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, const double* EVoigt,
                 double* SVoigt) = 0;
  virtual void E(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, const double* SVoigt,
                 double* EVoigt) = 0;
  // (C - C0)^-1 (tau - S(0)); zero for a rigid law.
  virtual void polarizationStrain(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                                  const DiscretizedElasticMaterial& referenceMaterial,
                                  const double* tauVoigt, double* EVoigt) = 0;
  // (D - D0)^-1 (eta - E(0)); zero for a soft law.
  virtual void eigenstrainStress(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                                 const DiscretizedElasticMaterial& referenceMaterial,
                                 const double* etaVoigt, double* SVoigt) = 0;
  // History forms: the value of the last converged step first.
  virtual void S(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, const double* EoldVoigt,
                 const double* EVoigt, double* SVoigt) = 0;
  virtual void E(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, const double* SoldVoigt,
                 const double* SVoigt, double* EVoigt) = 0;
  virtual void polarizationStrain(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                                  const DiscretizedElasticMaterial& referenceMaterial,
                                  const double* tauOldVoigt, const double* tauVoigt,
                                  double* EVoigt) = 0;
  virtual void eigenstrainStress(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                                 const DiscretizedElasticMaterial& referenceMaterial,
                                 const double* etaOldVoigt, const double* etaVoigt,
                                 double* SVoigt) = 0;
  // Tangent stiffness and compliance at the voxel.
  virtual VoigtMatrix getCVoigtLinearizedOfVoxel(int loadCase, VoxelIndex x, VoxelIndex y,
                                                 VoxelIndex z) = 0;
  virtual VoigtMatrix getCVoigtInverseOfVoxel(int loadCase, VoxelIndex x, VoxelIndex y,
                                              VoxelIndex z);
  virtual VoigtMatrix getCVoigtMinusC0Inverse(int loadCase, VoxelIndex x, VoxelIndex y,
                                              VoxelIndex z,
                                              const DiscretizedElasticMaterial& referenceMaterial);
  virtual VoigtMatrix getDVoigtMinusD0Inverse(int loadCase, VoxelIndex x, VoxelIndex y,
                                              VoxelIndex z,
                                              const DiscretizedElasticMaterial& referenceMaterial);
  // Linearized forms: the history form plus the tangent times the increment.
  virtual void S(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, const double* EoldVoigt,
                 const double* EVoigt, const double* deltaEVoigt, double* SVoigt);
  virtual void E(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, const double* SoldVoigt,
                 const double* SVoigt, const double* deltaSVoigt, double* EVoigt);
  virtual void polarizationStrain(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                                  const DiscretizedElasticMaterial& referenceMaterial,
                                  const double* tauOldVoigt, const double* tauVoigt,
                                  const double* deltaTauVoigt, double* EVoigt);
  virtual void eigenstrainStress(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                                 const DiscretizedElasticMaterial& referenceMaterial,
                                 const double* etaOldVoigt, const double* etaVoigt,
                                 const double* deltaEtaVoigt, double* SVoigt);

  // ---- Large-strain chain (F, P, S, E as nine doubles) ----------------------------------
  // E = (F^T F - I) / 2.
  virtual void greenLagrangeStrain(const double* F, double* E9) const;
  virtual void secondPiolaKirchhoffOfF(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                                       const double* F, double* S9);
  virtual void secondPiolaKirchhoffOfF(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                                       const double* Fold, const double* F, double* S9);
  // dS/dF from dS/dE at E(F).
  virtual TensorMatrix dSdF(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                            const double* F);
  // Forwards to the history form with an unstrained old state (Fold = identity).
  virtual void secondPiolaKirchhoff(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                                    const double* E9, double* S9);
  virtual void secondPiolaKirchhoff(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                                    const double* Eold9, const double* E9, double* S9);
  virtual TensorMatrix dSdE(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                            const double* E9);
  // History form at (E(Fold), E(F)) plus dS/dE times the Green-Lagrange increment.
  virtual void secondPiolaKirchhoffLinearized(int loadCase, VoxelIndex x, VoxelIndex y,
                                              VoxelIndex z, const double* Fold, const double* F,
                                              const double* deltaE9, double* S9);
  // P = F S.
  virtual void firstPiolaKirchhoff(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                                   const double* F, double* P9);
  virtual void firstPiolaKirchhoff(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                                   const double* Fold, const double* F, double* P9);
  // dP/dF = I (x) S + F dS/dF, row 3 i + j and column 3 k + l for dP_ij / dF_kl.
  virtual TensorMatrix dPdF(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                            const double* F);
  // Thermal strain at the temperature change T; takes the voxel since rotated laws turn it.
  virtual void thermalStrainVoigt(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, double T,
                                  double* epsVoigt) const;
  virtual void thermalStrainTensor(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, double T,
                                   double* eps9) const;

  // ---- Thermally aware wrappers: plain forwards unless hasThermalExpansion ---------------
  virtual void thermalE(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, double T,
                        const double* SVoigt, double* EVoigt);
  virtual void thermalS(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, double T,
                        const double* EVoigt, double* SVoigt);
  virtual void thermalEWithHistory(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, double T,
                                   const double* SoldVoigt, const double* SVoigt, double* EVoigt);
  virtual void thermalSWithHistory(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, double T,
                                   const double* EoldVoigt, const double* EVoigt, double* SVoigt);
  virtual void thermalSLinearized(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, double T,
                                  const double* EoldVoigt, const double* EVoigt,
                                  const double* deltaEVoigt, double* SVoigt);
  virtual void thermalIdentityVoigt(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                                    double T, const double* inVoigt, double* outVoigt);
  virtual void thermalELinearized(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, double T,
                                  const double* SoldVoigt, const double* SVoigt,
                                  const double* deltaSVoigt, double* EVoigt);
  // Second Piola-Kirchhoff stress at E - E_th(T), from E and, in the two forwards, from F.
  virtual void thermalSecondPK(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, double T,
                               const double* E9, double* S9);
  virtual void thermalSecondPKWithHistory(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                                          double T, const double* Eold9, const double* E9,
                                          double* S9);
  virtual void thermalSecondPKOfF(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, double T,
                                  const double* F, double* S9);
  virtual void thermalSecondPKOfFWithHistory(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                                             double T, const double* Fold, const double* F,
                                             double* S9);
  virtual TensorMatrix thermalDSDE(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, double T,
                                   const double* E9);
  // out = (F^T F - I) / 2 - shift: the mechanical Green-Lagrange strain once the thermal
  // strain (shift) is taken off. Plain tensor algebra, no virtual calls.
  virtual void largeStrainTensorTerm(const double* F, const double* shift9, double* out9) const;
  virtual void largeStrainTensorTermForward(const double* F, const double* shift9,
                                            double* out9) const;
  virtual void thermalFirstPK(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, double T,
                              const double* F, double* P9);
  virtual void thermalFirstPKWithHistory(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                                         double T, const double* Fold, const double* F, double* P9);
  virtual TensorMatrix thermalDPDF(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, double T,
                                   const double* F);

  // ---- Matrices of the whole law -----------------------------------------------------------
  virtual VoigtMatrix getCVoigt() const;
  virtual VoigtMatrix getCVoigtInverse() const;
  // Average of C or C^-1 over this law's voxels of the colour image (rotated laws average
  // over their orientations), per formulation.
  virtual VoigtMatrix getCVoigtAverageStrain(const ColorImage& image, int loadCase) const;
  virtual VoigtMatrix getCVoigtInverseAverageStrain(const ColorImage& image, int loadCase) const;
  virtual VoigtMatrix getCVoigtInverseAverageStress(const ColorImage& image, int loadCase) const;
  virtual VoigtMatrix getCVoigtAverageStress(const ColorImage& image, int loadCase) const;
  virtual VoigtMatrix getCVoigtAveragePolarization(const ColorImage& image, int loadCase) const;
  virtual VoigtMatrix getCVoigtInverseAveragePolarization(const ColorImage& image,
                                                          int loadCase) const;
  virtual VoigtMatrix getCVoigtInverseAverageEigenstrain(const ColorImage& image,
                                                         int loadCase) const;
  virtual VoigtMatrix getCVoigtAverageEigenstrain(const ColorImage& image, int loadCase) const;
  // Smallest and largest eigenvalue of the law's matrix in Mandel form (stiffness for Strain
  // and Polarisation, compliance for Stress and Eigenstrain). loadCase and the current field
  // are passed through for laws whose tangent depends on the state.
  virtual void getMinMaxEigenvalueStrain(int loadCase, const Image<Real>* field, double& minimum,
                                         double& maximum) const;
  virtual void getMinMaxEigenvalueStress(int loadCase, const Image<Real>* field, double& minimum,
                                         double& maximum) const;
  virtual void getMinMaxEigenvaluePolarisation(int loadCase, const Image<Real>* field,
                                               double& minimum, double& maximum) const;
  virtual void getMinMaxEigenvalueEigenstrain(int loadCase, const Image<Real>* field,
                                              double& minimum, double& maximum) const;
  // Large strain: range of the tangent's eigenvalues and of its trace at the current F.
  virtual void getMinMaxEigenvalueDeformationGradient(int loadCase, const Image<Real>* field,
                                                      double& minimum, double& maximum) const;
  virtual void getMinMaxTraceDeformationGradient(int loadCase, const Image<Real>* field,
                                                 double& minimum, double& maximum) const;
};

}  // namespace gridmoor
