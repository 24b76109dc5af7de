// The places in the ladder of the polarization pair formulations and of large strain: their
// names are set, their solves are not built yet and end the run with one line.
#pragma once

#include <string>

#include "solvers/ElasticityImageLadder.h"

namespace gridmoor {

class PolarizationEigenstrainImage : public ElasticityImage {
 public:
  using ElasticityImage::ElasticityImage;

  void computeStress(FFTImage& out, const StepContext& ctx) const override;
  void setInitialCondition(const MacroscopicLoad& load, const StepContext& ctx) override;
  double getStressNormSquared(const StepContext& ctx) const override;
  std::array<double, 6> normWeights() const override { return {1, 1, 1, 0.5, 0.5, 0.5}; }
  std::array<double, 6> dualNormWeights() const override { return {1, 1, 1, 2, 2, 2}; }

 protected:
  void materialPass(StepKind kind, const StepContext& ctx, const MacroscopicLoad& load,
                    double* regularisationSums) override;
  void computeMeanFromSpectrum(const StepContext& ctx, const MacroscopicLoad& load,
                               const double* strainPart, double* mean) const override;
  double applyGreenOperator(const StepContext& ctx, const SpectrumPass& pass) override;
  double applyExternalForce(const StepContext& ctx, const SpectrumPass& pass) override;
};

class PolarizationImage : public PolarizationEigenstrainImage {
 public:
  using PolarizationEigenstrainImage::PolarizationEigenstrainImage;
  std::string getPrimaryFieldName() const override { return "Polarization"; }
};

class EigenstrainImage : public PolarizationEigenstrainImage {
 public:
  using PolarizationEigenstrainImage::PolarizationEigenstrainImage;
  std::string getPrimaryFieldName() const override { return "Eigenstrain"; }
  // Dual to the polarization field: the names of its matrices are swapped the same way as
  // those of the stress field.
  std::string getStiffnessName() const override { return "Compliance"; }
  std::string getComplianceName() const override { return "Stiffness"; }
  std::string getThermalStressName() const override { return "ThermalExpansion"; }
  std::string getThermalExpansionName() const override { return "ThermalStress"; }
};

// Nine components per point: the deformation gradient.
class DeformationGradientImage : public ElasticityHyperelasticityImage {
 public:
  DeformationGradientImage(const IntegrationRule& mainRule, const IntegrationRule& hourglassRule,
                           std::uint64_t n0, std::uint64_t n1, std::uint64_t n2,
                           const std::string& name)
      : ElasticityHyperelasticityImage(9, mainRule, hourglassRule, n0, n1, n2, name) {}

  std::string getPrimaryFieldName() const override { return "GreenLagrangeStrain"; }
  std::string getDualFieldName() const override { return "SecondPKStress"; }
  bool isOperatorSpecialized(const DiscreteGreenOperator& op) const override;
  void computeStress(FFTImage& out, const StepContext& ctx) const override;
  void setInitialCondition(const MacroscopicLoad& load, const StepContext& ctx) override;
  StepSums linearStep(const StepContext& ctx, const MacroscopicLoad& load) override;
  StepSums nonlinearStep(const StepContext& ctx, const MacroscopicLoad& load) override;
  StepSums linearizedStep(const StepContext& ctx, const MacroscopicLoad& load) override;
  StepSums eyreMiltonStep(const StepContext& ctx, const MacroscopicLoad& load) override;
  double getStressNormSquared(const StepContext& ctx) const override;
  std::array<double, 6> normWeights() const override { return {1, 1, 1, 1, 1, 1}; }
  std::array<double, 6> dualNormWeights() const override { return {1, 1, 1, 1, 1, 1}; }
};

}  // namespace gridmoor
