// The heat-conduction law interface: flux from temperature gradient and back, per voxel, with
// the conductivity matrices, their averages and ranges. Every default refuses the call.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "common/Types.h"
#include "materials/DiscretizedMaterial.h"

namespace gridmoor {

class ColorImage;
template <class T>
class Image;
template <class T>
class Vector;

// The two heat formulations: prescribed polarization and prescribed eigengradient.
#define GRIDMOOR_FOR_EACH_HEAT_FORMULATION(M, ...) \
  M(Polarization, __VA_ARGS__)                     \
  M(Eigengradient, __VA_ARGS__)

// 3x3 conductivity (or resistivity) matrix, row-major.
using HeatMatrix = std::array<double, 9>;

// Gradient and flux vectors are three doubles. Pointwise operations follow the rules of the
// mechanical interface: called from parallel loops, no allocation, only outputs written.
class DiscretizedHeatMaterial : public DiscretizedMaterial {
 public:
  using DiscretizedMaterial::DiscretizedMaterial;

  // ---- Capability questions -------------------------------------------------------------
  virtual bool isLinear() const;
  GRIDMOOR_FOR_EACH_HEAT_FORMULATION(GRIDMOOR_REFUSING_MEMBER, bool, isLinear, (), const)
  GRIDMOOR_FOR_EACH_HEAT_FORMULATION(GRIDMOOR_REFUSING_MEMBER, bool, isAffinLinear, (), const)
  virtual bool isIsolating() const;          // conductivity zero
  virtual bool isPerfectConducting() const;  // conductivity infinite
  virtual bool isIsotropic() const;
  virtual bool isTransversalIsotropic() const;
  virtual bool needsOrientation() const;

  // ---- Internal variables ---------------------------------------------------------------
  GRIDMOOR_FOR_EACH_HEAT_FORMULATION(GRIDMOOR_REFUSING_MEMBER, bool, hasInternalVariables, (),
                                     const)
  GRIDMOOR_FOR_EACH_HEAT_FORMULATION(GRIDMOOR_REFUSING_MEMBER, std::uint64_t,
                                     totalNumberOfInternalVariablesPerVoxel, (unsigned char), const)
  GRIDMOOR_FOR_EACH_HEAT_FORMULATION(GRIDMOOR_REFUSING_MEMBER, void, initInternalVariables,
                                     (const KeywordsElasticity&), )
  GRIDMOOR_FOR_EACH_HEAT_FORMULATION(GRIDMOOR_REFUSING_MEMBER, void, initializeInternalVariables,
                                     (const KeywordsElasticity&, int, Image<Real>&), )
  GRIDMOOR_FOR_EACH_HEAT_FORMULATION(GRIDMOOR_REFUSING_MEMBER, void, updateInternalSolution,
                                     (int, const Image<Real>&), )
  GRIDMOOR_FOR_EACH_HEAT_FORMULATION(GRIDMOOR_REFUSING_MEMBER, void, updateInternalVariables, (), )
  virtual void getOutputVariables(std::vector<Vector<Real>*>& variables,
                                  std::vector<std::string>& names, std::vector<std::string>& units);
  virtual void getStateVariables(std::vector<Vector<Real>*>& variables,
                                 std::vector<std::string>& names);

  // ---- Pointwise responses ----------------------------------------------------------------
  // Flux from gradient and gradient from flux, plain, with history and linearized.
  virtual void Q(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, const double* TVector,
                 double* QVector);
  virtual void T(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, const double* QVector,
                 double* TVector);
  virtual void Q(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, const double* TOldVector,
                 const double* TVector, double* QVector);
  virtual void T(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, const double* QOldVector,
                 const double* QVector, double* TVector);
  virtual void Q(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, const double* TOldVector,
                 const double* TVector, const double* deltaTVector, double* QVector);
  virtual void T(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z, const double* QOldVector,
                 const double* QVector, const double* deltaQVector, double* TVector);
  // Gradient of a polarization: (K - K0)^-1 tau; flux of an eigengradient: (R - R0)^-1 eta.
  virtual void polarizationGradient(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                                    const DiscretizedHeatMaterial& referenceMaterial,
                                    const double* tauVector, double* TVector);
  virtual void eigengradientFlux(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                                 const DiscretizedHeatMaterial& referenceMaterial,
                                 const double* etaVector, double* QVector);
  virtual void polarizationGradient(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                                    const DiscretizedHeatMaterial& referenceMaterial,
                                    const double* tauOldVector, const double* tauVector,
                                    double* TVector);
  virtual void eigengradientFlux(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                                 const DiscretizedHeatMaterial& referenceMaterial,
                                 const double* etaOldVector, const double* etaVector,
                                 double* QVector);
  virtual void polarizationGradient(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                                    const DiscretizedHeatMaterial& referenceMaterial,
                                    const double* tauOldVector, const double* tauVector,
                                    const double* deltaTauVector, double* TVector);
  virtual void eigengradientFlux(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                                 const DiscretizedHeatMaterial& referenceMaterial,
                                 const double* etaOldVector, const double* etaVector,
                                 const double* deltaEtaVector, double* QVector);
  virtual HeatMatrix getMatrixOfVoxel(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z);
  virtual HeatMatrix getMatrixInverseOfVoxel(int loadCase, VoxelIndex x, VoxelIndex y,
                                             VoxelIndex z);
  virtual HeatMatrix getMatrixLinearizedOfVoxel(int loadCase, VoxelIndex x, VoxelIndex y,
                                                VoxelIndex z);
  virtual HeatMatrix getMatrixMinusK0InverseOfVoxel(
      int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
      const DiscretizedHeatMaterial& referenceMaterial);
  virtual HeatMatrix getMatrixInverseMinusR0InverseOfVoxel(
      int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
      const DiscretizedHeatMaterial& referenceMaterial);
  virtual void initLinearization();
  virtual void updateLinearization(int loadCase, const Image<Real>& solution);

  // ---- Matrices of the whole law -----------------------------------------------------------
  virtual HeatMatrix getMatrix() const;
  virtual HeatMatrix getMatrixInverse() const;
  virtual HeatMatrix getMatrixAveragePolarization(const ColorImage& image, int loadCase) const;
  virtual HeatMatrix getMatrixInverseAveragePolarization(const ColorImage& image,
                                                         int loadCase) const;
  virtual HeatMatrix getMatrixAverageEigengradient(const ColorImage& image, int loadCase) const;
  virtual HeatMatrix getMatrixInverseAverageEigengradient(const ColorImage& image,
                                                          int loadCase) const;
  virtual void getMinMaxEigenvaluePolarization(int loadCase, const Image<Real>* field,
                                               double& minimum, double& maximum) const;
  virtual void getMinMaxEigenvalueEigengradient(int loadCase, const Image<Real>* field,
                                                double& minimum, double& maximum) const;
};

}  // namespace gridmoor
