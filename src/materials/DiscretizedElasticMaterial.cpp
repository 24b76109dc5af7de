#include "materials/DiscretizedElasticMaterial.h"

#include "common/Fatal.h"

namespace gridmoor {

namespace {

// out += m v (six components).
void addProduct(const VoigtMatrix& m, const double* v, double* out) {
  for (int a = 0; a < 6; ++a) {
    double s = 0.0;
    for (int b = 0; b < 6; ++b) s += m(a, b) * v[b];
    out[a] += s;
  }
}

// out += m v (nine components).
void addProduct(const TensorMatrix& m, const double* v, double* out) {
  for (int p = 0; p < 9; ++p) {
    double s = 0.0;
    for (int q = 0; q < 9; ++q) s += m(p, q) * v[q];
    out[p] += s;
  }
}

// out = a b for 3x3 row-major tensors.
void multiply3(const double* a, const double* b, double* out) {
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) {
      double s = 0.0;
      for (int k = 0; k < 3; ++k) s += a[3 * i + k] * b[3 * k + j];
      out[3 * i + j] = s;
    }
}

void subtract(const double* a, const double* b, double* out, int n) {
  for (int i = 0; i < n; ++i) out[i] = a[i] - b[i];
}

// dS_ij/dF_kl from dS_ij/dE_mn through dE_mn/dF_kl = (delta_nl F_km + delta_ml F_kn) / 2.
TensorMatrix dSdFFromDSDE(const double* F, const TensorMatrix& dSdE) {
  TensorMatrix r;
  for (int p = 0; p < 9; ++p)
    for (int k = 0; k < 3; ++k)
      for (int l = 0; l < 3; ++l) {
        double s = 0.0;
        for (int m = 0; m < 3; ++m) s += F[3 * k + m] * (dSdE(p, 3 * m + l) + dSdE(p, 3 * l + m));
        r(p, 3 * k + l) = 0.5 * s;
      }
  return r;
}

// dP_ij/dF_kl = delta_ik S_lj + F_im dS_mj/dF_kl, for P = F S.
TensorMatrix dPdFFromDSDF(const double* F, const double* S9, const TensorMatrix& dSdF) {
  TensorMatrix r;
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j)
      for (int q = 0; q < 9; ++q) {
        double s = 0.0;
        for (int m = 0; m < 3; ++m) s += F[3 * i + m] * dSdF(3 * m + j, q);
        r(3 * i + j, q) = s;
      }
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j)
      for (int l = 0; l < 3; ++l) r(3 * i + j, 3 * i + l) += S9[3 * l + j];
  return r;
}

constexpr double zero9[9] = {0, 0, 0, 0, 0, 0, 0, 0, 0};

}  // namespace

void DiscretizedElasticMaterial::getOutputVariables(std::vector<Vector<Real>*>& variables,
                                                    std::vector<std::string>& names,
                                                    std::vector<std::string>& units) {
  variables.clear();
  names.clear();
  units.clear();
}

void DiscretizedElasticMaterial::getStateVariables(std::vector<Vector<Real>*>& variables,
                                                   std::vector<std::string>& names) {
  variables.clear();
  names.clear();
}

void DiscretizedElasticMaterial::setReferenceMaterial(const DiscretizedElasticMaterial& reference) {
  currentReference = &reference;
}

// ---- Pointwise small strain -------------------------------------------------------------

VoigtMatrix DiscretizedElasticMaterial::getCVoigtInverseOfVoxel(int, VoxelIndex, VoxelIndex,
                                                                VoxelIndex) {
  refuseOperation("getCVoigtInverseOfVoxel(...)");
}

VoigtMatrix DiscretizedElasticMaterial::getCVoigtMinusC0Inverse(int, VoxelIndex, VoxelIndex,
                                                                VoxelIndex,
                                                                const DiscretizedElasticMaterial&) {
  refuseOperation("getCVoigtMinusC0Inverse(...)");
}

VoigtMatrix DiscretizedElasticMaterial::getDVoigtMinusD0Inverse(int, VoxelIndex, VoxelIndex,
                                                                VoxelIndex,
                                                                const DiscretizedElasticMaterial&) {
  refuseOperation("getDVoigtMinusD0Inverse(...)");
}

void DiscretizedElasticMaterial::S(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                                   const double* EoldVoigt, const double* EVoigt,
                                   const double* deltaEVoigt, double* SVoigt) {
  S(loadCase, x, y, z, EoldVoigt, EVoigt, SVoigt);
  addProduct(getCVoigtLinearizedOfVoxel(loadCase, x, y, z), deltaEVoigt, SVoigt);
}

void DiscretizedElasticMaterial::E(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                                   const double* SoldVoigt, const double* SVoigt,
                                   const double* deltaSVoigt, double* EVoigt) {
  E(loadCase, x, y, z, SoldVoigt, SVoigt, EVoigt);
  addProduct(getCVoigtInverseOfVoxel(loadCase, x, y, z), deltaSVoigt, EVoigt);
}

void DiscretizedElasticMaterial::polarizationStrain(
    int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
    const DiscretizedElasticMaterial& referenceMaterial, const double* tauOldVoigt,
    const double* tauVoigt, const double* deltaTauVoigt, double* EVoigt) {
  polarizationStrain(loadCase, x, y, z, referenceMaterial, tauOldVoigt, tauVoigt, EVoigt);
  addProduct(getCVoigtMinusC0Inverse(loadCase, x, y, z, referenceMaterial), deltaTauVoigt, EVoigt);
}

void DiscretizedElasticMaterial::eigenstrainStress(
    int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
    const DiscretizedElasticMaterial& referenceMaterial, const double* etaOldVoigt,
    const double* etaVoigt, const double* deltaEtaVoigt, double* SVoigt) {
  eigenstrainStress(loadCase, x, y, z, referenceMaterial, etaOldVoigt, etaVoigt, SVoigt);
  addProduct(getDVoigtMinusD0Inverse(loadCase, x, y, z, referenceMaterial), deltaEtaVoigt, SVoigt);
}

// ---- Large strain -----------------------------------------------------------------------

void DiscretizedElasticMaterial::greenLagrangeStrain(const double* F, double* E9) const {
  DiscretizedElasticMaterial::largeStrainTensorTerm(F, zero9, E9);
}

void DiscretizedElasticMaterial::secondPiolaKirchhoffOfF(int loadCase, VoxelIndex x, VoxelIndex y,
                                                         VoxelIndex z, const double* F,
                                                         double* S9) {
  double E9[9];
  greenLagrangeStrain(F, E9);
  secondPiolaKirchhoff(loadCase, x, y, z, E9, S9);
}

void DiscretizedElasticMaterial::secondPiolaKirchhoffOfF(int loadCase, VoxelIndex x, VoxelIndex y,
                                                         VoxelIndex z, const double* Fold,
                                                         const double* F, double* S9) {
  double Eold9[9], E9[9];
  greenLagrangeStrain(Fold, Eold9);
  greenLagrangeStrain(F, E9);
  secondPiolaKirchhoff(loadCase, x, y, z, Eold9, E9, S9);
}

TensorMatrix DiscretizedElasticMaterial::dSdF(int loadCase, VoxelIndex x, VoxelIndex y,
                                              VoxelIndex z, const double* F) {
  double E9[9];
  greenLagrangeStrain(F, E9);
  return dSdFFromDSDE(F, dSdE(loadCase, x, y, z, E9));
}

void DiscretizedElasticMaterial::secondPiolaKirchhoff(int loadCase, VoxelIndex x, VoxelIndex y,
                                                      VoxelIndex z, const double* E9, double* S9) {
  // The Green-Lagrange strain of Fold = identity is zero.
  secondPiolaKirchhoff(loadCase, x, y, z, zero9, E9, S9);
}

void DiscretizedElasticMaterial::secondPiolaKirchhoff(int, VoxelIndex, VoxelIndex, VoxelIndex,
                                                      const double*, const double*, double*) {
  fatal("The second Piola-Kirchhoff tensor has not be implemented for all used materials!");
}

TensorMatrix DiscretizedElasticMaterial::dSdE(int, VoxelIndex, VoxelIndex, VoxelIndex,
                                              const double*) {
  fatal(
      "The derivative dS/dE of the second Piola-Kirchhoff tensor S has not be implemented for "
      "all used materials!");
}

void DiscretizedElasticMaterial::secondPiolaKirchhoffLinearized(int loadCase, VoxelIndex x,
                                                                VoxelIndex y, VoxelIndex z,
                                                                const double* Fold, const double* F,
                                                                const double* deltaE9, double* S9) {
  double Eold9[9], E9[9];
  greenLagrangeStrain(Fold, Eold9);
  greenLagrangeStrain(F, E9);
  secondPiolaKirchhoff(loadCase, x, y, z, Eold9, E9, S9);
  addProduct(dSdE(loadCase, x, y, z, E9), deltaE9, S9);
}

void DiscretizedElasticMaterial::firstPiolaKirchhoff(int loadCase, VoxelIndex x, VoxelIndex y,
                                                     VoxelIndex z, const double* F, double* P9) {
  double S9[9];
  secondPiolaKirchhoffOfF(loadCase, x, y, z, F, S9);
  multiply3(F, S9, P9);
}

void DiscretizedElasticMaterial::firstPiolaKirchhoff(int loadCase, VoxelIndex x, VoxelIndex y,
                                                     VoxelIndex z, const double* Fold,
                                                     const double* F, double* P9) {
  double S9[9];
  secondPiolaKirchhoffOfF(loadCase, x, y, z, Fold, F, S9);
  multiply3(F, S9, P9);
}

TensorMatrix DiscretizedElasticMaterial::dPdF(int loadCase, VoxelIndex x, VoxelIndex y,
                                              VoxelIndex z, const double* F) {
  double S9[9];
  secondPiolaKirchhoffOfF(loadCase, x, y, z, F, S9);
  return dPdFFromDSDF(F, S9, dSdF(loadCase, x, y, z, F));
}

void DiscretizedElasticMaterial::thermalStrainVoigt(int, VoxelIndex, VoxelIndex, VoxelIndex, double,
                                                    double*) const {
  fatal("The thermal expansion has not be implemented for all used thermoelastic materials!");
}

void DiscretizedElasticMaterial::thermalStrainTensor(int, VoxelIndex, VoxelIndex, VoxelIndex,
                                                     double, double*) const {
  fatal("The thermal expansion has not be implemented for all used thermoelastic materials!");
}

// ---- Thermal wrappers -------------------------------------------------------------------

void DiscretizedElasticMaterial::thermalE(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                                          double T, const double* SVoigt, double* EVoigt) {
  E(loadCase, x, y, z, SVoigt, EVoigt);
  if (!hasThermalExpansion()) return;
  double eth[6];
  thermalStrainVoigt(loadCase, x, y, z, T, eth);
  for (int a = 0; a < 6; ++a) EVoigt[a] += eth[a];
}

void DiscretizedElasticMaterial::thermalS(int loadCase, VoxelIndex x, VoxelIndex y, VoxelIndex z,
                                          double T, const double* EVoigt, double* SVoigt) {
  if (!hasThermalExpansion()) return S(loadCase, x, y, z, EVoigt, SVoigt);
  double eth[6], mechanical[6];
  thermalStrainVoigt(loadCase, x, y, z, T, eth);
  subtract(EVoigt, eth, mechanical, 6);
  S(loadCase, x, y, z, mechanical, SVoigt);
}

void DiscretizedElasticMaterial::thermalEWithHistory(int loadCase, VoxelIndex x, VoxelIndex y,
                                                     VoxelIndex z, double T,
                                                     const double* SoldVoigt, const double* SVoigt,
                                                     double* EVoigt) {
  E(loadCase, x, y, z, SoldVoigt, SVoigt, EVoigt);
  if (!hasThermalExpansion()) return;
  double eth[6];
  thermalStrainVoigt(loadCase, x, y, z, T, eth);
  for (int a = 0; a < 6; ++a) EVoigt[a] += eth[a];
}

void DiscretizedElasticMaterial::thermalSWithHistory(int loadCase, VoxelIndex x, VoxelIndex y,
                                                     VoxelIndex z, double T,
                                                     const double* EoldVoigt, const double* EVoigt,
                                                     double* SVoigt) {
  if (!hasThermalExpansion()) return S(loadCase, x, y, z, EoldVoigt, EVoigt, SVoigt);
  double eth[6], mechanicalOld[6], mechanical[6];
  thermalStrainVoigt(loadCase, x, y, z, T, eth);
  subtract(EoldVoigt, eth, mechanicalOld, 6);
  subtract(EVoigt, eth, mechanical, 6);
  S(loadCase, x, y, z, mechanicalOld, mechanical, SVoigt);
}

void DiscretizedElasticMaterial::thermalSLinearized(int loadCase, VoxelIndex x, VoxelIndex y,
                                                    VoxelIndex z, double T, const double* EoldVoigt,
                                                    const double* EVoigt, const double* deltaEVoigt,
                                                    double* SVoigt) {
  if (!hasThermalExpansion()) return S(loadCase, x, y, z, EoldVoigt, EVoigt, deltaEVoigt, SVoigt);
  double eth[6], mechanicalOld[6], mechanical[6];
  thermalStrainVoigt(loadCase, x, y, z, T, eth);
  subtract(EoldVoigt, eth, mechanicalOld, 6);
  subtract(EVoigt, eth, mechanical, 6);
  S(loadCase, x, y, z, mechanicalOld, mechanical, deltaEVoigt, SVoigt);
}

void DiscretizedElasticMaterial::thermalIdentityVoigt(int, VoxelIndex, VoxelIndex, VoxelIndex,
                                                      double, const double* inVoigt,
                                                      double* outVoigt) {
  for (int a = 0; a < 6; ++a) outVoigt[a] = inVoigt[a];
}

void DiscretizedElasticMaterial::thermalELinearized(int loadCase, VoxelIndex x, VoxelIndex y,
                                                    VoxelIndex z, double T, const double* SoldVoigt,
                                                    const double* SVoigt, const double* deltaSVoigt,
                                                    double* EVoigt) {
  E(loadCase, x, y, z, SoldVoigt, SVoigt, deltaSVoigt, EVoigt);
  if (!hasThermalExpansion()) return;
  double eth[6];
  thermalStrainVoigt(loadCase, x, y, z, T, eth);
  for (int a = 0; a < 6; ++a) EVoigt[a] += eth[a];
}

void DiscretizedElasticMaterial::thermalSecondPK(int loadCase, VoxelIndex x, VoxelIndex y,
                                                 VoxelIndex z, double T, const double* E9,
                                                 double* S9) {
  if (!hasThermalExpansion()) return secondPiolaKirchhoff(loadCase, x, y, z, E9, S9);
  double eth[9], mechanical[9];
  thermalStrainTensor(loadCase, x, y, z, T, eth);
  subtract(E9, eth, mechanical, 9);
  secondPiolaKirchhoff(loadCase, x, y, z, mechanical, S9);
}

void DiscretizedElasticMaterial::thermalSecondPKWithHistory(int loadCase, VoxelIndex x,
                                                            VoxelIndex y, VoxelIndex z, double T,
                                                            const double* Eold9, const double* E9,
                                                            double* S9) {
  if (!hasThermalExpansion()) return secondPiolaKirchhoff(loadCase, x, y, z, Eold9, E9, S9);
  double eth[9], mechanicalOld[9], mechanical[9];
  thermalStrainTensor(loadCase, x, y, z, T, eth);
  subtract(Eold9, eth, mechanicalOld, 9);
  subtract(E9, eth, mechanical, 9);
  secondPiolaKirchhoff(loadCase, x, y, z, mechanicalOld, mechanical, S9);
}

void DiscretizedElasticMaterial::thermalSecondPKOfF(int loadCase, VoxelIndex x, VoxelIndex y,
                                                    VoxelIndex z, double T, const double* F,
                                                    double* S9) {
  double eth[9], mechanical[9];
  if (hasThermalExpansion())
    thermalStrainTensor(loadCase, x, y, z, T, eth);
  else
    for (double& v : eth) v = 0.0;
  largeStrainTensorTerm(F, eth, mechanical);
  secondPiolaKirchhoff(loadCase, x, y, z, mechanical, S9);
}

void DiscretizedElasticMaterial::thermalSecondPKOfFWithHistory(int loadCase, VoxelIndex x,
                                                               VoxelIndex y, VoxelIndex z, double T,
                                                               const double* Fold, const double* F,
                                                               double* S9) {
  double eth[9], mechanicalOld[9], mechanical[9];
  if (hasThermalExpansion())
    thermalStrainTensor(loadCase, x, y, z, T, eth);
  else
    for (double& v : eth) v = 0.0;
  largeStrainTensorTerm(Fold, eth, mechanicalOld);
  largeStrainTensorTerm(F, eth, mechanical);
  secondPiolaKirchhoff(loadCase, x, y, z, mechanicalOld, mechanical, S9);
}

TensorMatrix DiscretizedElasticMaterial::thermalDSDE(int loadCase, VoxelIndex x, VoxelIndex y,
                                                     VoxelIndex z, double T, const double* E9) {
  if (!hasThermalExpansion()) return dSdE(loadCase, x, y, z, E9);
  double eth[9], mechanical[9];
  thermalStrainTensor(loadCase, x, y, z, T, eth);
  subtract(E9, eth, mechanical, 9);
  return dSdE(loadCase, x, y, z, mechanical);
}

void DiscretizedElasticMaterial::largeStrainTensorTerm(const double* F, const double* shift9,
                                                       double* out9) const {
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) {
      double s = 0.0;
      for (int k = 0; k < 3; ++k) s += F[3 * k + i] * F[3 * k + j];
      out9[3 * i + j] = 0.5 * (s - (i == j ? 1.0 : 0.0)) - shift9[3 * i + j];
    }
}

void DiscretizedElasticMaterial::largeStrainTensorTermForward(const double* F, const double* shift9,
                                                              double* out9) const {
  DiscretizedElasticMaterial::largeStrainTensorTerm(F, shift9, out9);
}

void DiscretizedElasticMaterial::thermalFirstPK(int loadCase, VoxelIndex x, VoxelIndex y,
                                                VoxelIndex z, double T, const double* F,
                                                double* P9) {
  double S9[9];
  thermalSecondPKOfF(loadCase, x, y, z, T, F, S9);
  multiply3(F, S9, P9);
}

void DiscretizedElasticMaterial::thermalFirstPKWithHistory(int loadCase, VoxelIndex x, VoxelIndex y,
                                                           VoxelIndex z, double T,
                                                           const double* Fold, const double* F,
                                                           double* P9) {
  double S9[9];
  thermalSecondPKOfFWithHistory(loadCase, x, y, z, T, Fold, F, S9);
  multiply3(F, S9, P9);
}

TensorMatrix DiscretizedElasticMaterial::thermalDPDF(int loadCase, VoxelIndex x, VoxelIndex y,
                                                     VoxelIndex z, double T, const double* F) {
  double S9[9], E9[9];
  thermalSecondPKOfF(loadCase, x, y, z, T, F, S9);
  greenLagrangeStrain(F, E9);
  return dPdFFromDSDF(F, S9, dSdFFromDSDE(F, thermalDSDE(loadCase, x, y, z, T, E9)));
}

// ---- Matrices of the whole law ----------------------------------------------------------

VoigtMatrix DiscretizedElasticMaterial::getCVoigt() const {
  fatal("getCVoigt() not implemented for this material");
}

VoigtMatrix DiscretizedElasticMaterial::getCVoigtInverse() const {
  fatal("getCVoigtInverse() not implemented for this material");
}

#define GRIDMOOR_REFUSING_AVERAGE(Name)                                        \
  VoigtMatrix DiscretizedElasticMaterial::Name(const ColorImage&, int) const { \
    refuseOperation(#Name "(...)");                                            \
  }
GRIDMOOR_REFUSING_AVERAGE(getCVoigtAverageStrain)
GRIDMOOR_REFUSING_AVERAGE(getCVoigtInverseAverageStrain)
GRIDMOOR_REFUSING_AVERAGE(getCVoigtInverseAverageStress)
GRIDMOOR_REFUSING_AVERAGE(getCVoigtAverageStress)
GRIDMOOR_REFUSING_AVERAGE(getCVoigtAveragePolarization)
GRIDMOOR_REFUSING_AVERAGE(getCVoigtInverseAveragePolarization)
GRIDMOOR_REFUSING_AVERAGE(getCVoigtInverseAverageEigenstrain)
GRIDMOOR_REFUSING_AVERAGE(getCVoigtAverageEigenstrain)
#undef GRIDMOOR_REFUSING_AVERAGE

#define GRIDMOOR_REFUSING_RANGE(Name)                                                      \
  void DiscretizedElasticMaterial::Name(int, const Image<Real>*, double&, double&) const { \
    refuseOperation(#Name "(...)");                                                        \
  }
GRIDMOOR_REFUSING_RANGE(getMinMaxEigenvalueStrain)
GRIDMOOR_REFUSING_RANGE(getMinMaxEigenvalueStress)
GRIDMOOR_REFUSING_RANGE(getMinMaxEigenvaluePolarisation)
GRIDMOOR_REFUSING_RANGE(getMinMaxEigenvalueEigenstrain)
GRIDMOOR_REFUSING_RANGE(getMinMaxEigenvalueDeformationGradient)
GRIDMOOR_REFUSING_RANGE(getMinMaxTraceDeformationGradient)
#undef GRIDMOOR_REFUSING_RANGE

}  // namespace gridmoor
