#include "materials/DiscretizedHeatMaterial.h"

namespace gridmoor {

// Heat laws answer what they support; everything else ends the run naming the operation.

bool DiscretizedHeatMaterial::isLinear() const { refuseOperation("isLinear()"); }
bool DiscretizedHeatMaterial::isIsolating() const { refuseOperation("isIsolating()"); }
bool DiscretizedHeatMaterial::isPerfectConducting() const {
  refuseOperation("isPerfectConducting()");
}
bool DiscretizedHeatMaterial::isIsotropic() const { refuseOperation("isIsotropic()"); }
bool DiscretizedHeatMaterial::isTransversalIsotropic() const {
  refuseOperation("isTransversalIsotropic()");
}
bool DiscretizedHeatMaterial::needsOrientation() const { return !isIsotropic(); }

void DiscretizedHeatMaterial::getOutputVariables(std::vector<Vector<Real>*>& variables,
                                                 std::vector<std::string>& names,
                                                 std::vector<std::string>& units) {
  variables.clear();
  names.clear();
  units.clear();
}

void DiscretizedHeatMaterial::getStateVariables(std::vector<Vector<Real>*>& variables,
                                                std::vector<std::string>& names) {
  variables.clear();
  names.clear();
}

void DiscretizedHeatMaterial::Q(int, VoxelIndex, VoxelIndex, VoxelIndex, const double*, double*) {
  refuseOperation("Q(TVector,QVector)");
}
void DiscretizedHeatMaterial::T(int, VoxelIndex, VoxelIndex, VoxelIndex, const double*, double*) {
  refuseOperation("T(QVector,TVector)");
}
void DiscretizedHeatMaterial::Q(int, VoxelIndex, VoxelIndex, VoxelIndex, const double*,
                                const double*, double*) {
  refuseOperation("Q(TOldVector,TVector,QVector)");
}
void DiscretizedHeatMaterial::T(int, VoxelIndex, VoxelIndex, VoxelIndex, const double*,
                                const double*, double*) {
  refuseOperation("T(QOldVector,QVector,TVector)");
}
void DiscretizedHeatMaterial::Q(int, VoxelIndex, VoxelIndex, VoxelIndex, const double*,
                                const double*, const double*, double*) {
  refuseOperation("Q(TOldVector,TVector,deltaTVector,QVector)");
}
void DiscretizedHeatMaterial::T(int, VoxelIndex, VoxelIndex, VoxelIndex, const double*,
                                const double*, const double*, double*) {
  refuseOperation("T(QOldVector,QVector,deltaQVector,TVector)");
}

void DiscretizedHeatMaterial::polarizationGradient(int, VoxelIndex, VoxelIndex, VoxelIndex,
                                                   const DiscretizedHeatMaterial&, const double*,
                                                   double*) {
  refuseOperation("polarizationGradient(...)");
}
void DiscretizedHeatMaterial::eigengradientFlux(int, VoxelIndex, VoxelIndex, VoxelIndex,
                                                const DiscretizedHeatMaterial&, const double*,
                                                double*) {
  refuseOperation("eigengradientFlux(...)");
}
void DiscretizedHeatMaterial::polarizationGradient(int, VoxelIndex, VoxelIndex, VoxelIndex,
                                                   const DiscretizedHeatMaterial&, const double*,
                                                   const double*, double*) {
  refuseOperation("polarizationGradient(...)");
}
void DiscretizedHeatMaterial::eigengradientFlux(int, VoxelIndex, VoxelIndex, VoxelIndex,
                                                const DiscretizedHeatMaterial&, const double*,
                                                const double*, double*) {
  refuseOperation("eigengradientFlux(...)");
}
void DiscretizedHeatMaterial::polarizationGradient(int, VoxelIndex, VoxelIndex, VoxelIndex,
                                                   const DiscretizedHeatMaterial&, const double*,
                                                   const double*, const double*, double*) {
  refuseOperation("polarizationGradient(...)");
}
void DiscretizedHeatMaterial::eigengradientFlux(int, VoxelIndex, VoxelIndex, VoxelIndex,
                                                const DiscretizedHeatMaterial&, const double*,
                                                const double*, const double*, double*) {
  refuseOperation("eigengradientFlux(...)");
}

HeatMatrix DiscretizedHeatMaterial::getMatrixOfVoxel(int, VoxelIndex, VoxelIndex, VoxelIndex) {
  refuseOperation("getMatrixOfVoxel()");
}
HeatMatrix DiscretizedHeatMaterial::getMatrixInverseOfVoxel(int, VoxelIndex, VoxelIndex,
                                                            VoxelIndex) {
  refuseOperation("getMatrixInverseOfVoxel()");
}
HeatMatrix DiscretizedHeatMaterial::getMatrixLinearizedOfVoxel(int, VoxelIndex, VoxelIndex,
                                                               VoxelIndex) {
  refuseOperation("getMatrixLinearizedOfVoxel()");
}
HeatMatrix DiscretizedHeatMaterial::getMatrixMinusK0InverseOfVoxel(int, VoxelIndex, VoxelIndex,
                                                                   VoxelIndex,
                                                                   const DiscretizedHeatMaterial&) {
  refuseOperation("getMatrixMinusK0InverseOfVoxel()");
}
HeatMatrix DiscretizedHeatMaterial::getMatrixInverseMinusR0InverseOfVoxel(
    int, VoxelIndex, VoxelIndex, VoxelIndex, const DiscretizedHeatMaterial&) {
  refuseOperation("getMatrixInverseMinusR0InverseOfVoxel()");
}
void DiscretizedHeatMaterial::initLinearization() { refuseOperation("initLinearization()"); }
void DiscretizedHeatMaterial::updateLinearization(int, const Image<Real>&) {
  refuseOperation("updateLinearization()");
}

HeatMatrix DiscretizedHeatMaterial::getMatrix() const { refuseOperation("getMatrix()"); }
HeatMatrix DiscretizedHeatMaterial::getMatrixInverse() const {
  refuseOperation("getMatrixInverse()");
}

#define GRIDMOOR_REFUSING_HEAT_AVERAGE(Name)                               \
  HeatMatrix DiscretizedHeatMaterial::Name(const ColorImage&, int) const { \
    refuseOperation(#Name "()");                                           \
  }
GRIDMOOR_REFUSING_HEAT_AVERAGE(getMatrixAveragePolarization)
GRIDMOOR_REFUSING_HEAT_AVERAGE(getMatrixInverseAveragePolarization)
GRIDMOOR_REFUSING_HEAT_AVERAGE(getMatrixAverageEigengradient)
GRIDMOOR_REFUSING_HEAT_AVERAGE(getMatrixInverseAverageEigengradient)
#undef GRIDMOOR_REFUSING_HEAT_AVERAGE

void DiscretizedHeatMaterial::getMinMaxEigenvaluePolarization(int, const Image<Real>*, double&,
                                                              double&) const {
  refuseOperation("getMinMaxEigenvaluePolarization(...)");
}
void DiscretizedHeatMaterial::getMinMaxEigenvalueEigengradient(int, const Image<Real>*, double&,
                                                               double&) const {
  refuseOperation("getMinMaxEigenvalueEigengradient(...)");
}

}  // namespace gridmoor
