// The strain and stress fields of the small-strain formulations: the common code of the two,
// the working strain formulation and the stress formulation's place in the ladder.
#pragma once

#include <array>
#include <string>

#include "operators/DiscreteGreenOperator.h"
#include "solvers/ElasticityImageLadder.h"

namespace gridmoor {

class StrainStressImage : public ElasticityImage {
 public:
  StrainStressImage(const IntegrationRule& mainRule, const IntegrationRule& hourglassRule,
                    std::uint64_t n0, std::uint64_t n1, std::uint64_t n2, const std::string& name)
      : ElasticityImage(mainRule, hourglassRule, n0, n1, n2, name) {}
  StrainStressImage(const GreenOperatorSettings& settings, std::uint64_t n0, std::uint64_t n1,
                    std::uint64_t n2, const std::string& name)
      : StrainStressImage(settings.mainRule, settings.hourglassRule, n0, n1, n2, name) {}

  // The Green operator of the formulation on the spectrum, and the body-force term.
  virtual double applyGamma0(const StepContext& ctx, const SpectrumPass& pass) = 0;
  virtual double applyPsi0(const StepContext& ctx, const SpectrumPass& pass) = 0;

 protected:
  double applyGreenOperator(const StepContext& ctx, const SpectrumPass& pass) override {
    return applyGamma0(ctx, pass);
  }
  double applyExternalForce(const StepContext& ctx, const SpectrumPass& pass) override {
    return applyPsi0(ctx, pass);
  }
};

// Primary field: the strain, engineering shear. The step maps e to E - Gamma0 (sigma(e) - C0 e).
class StrainImage : public StrainStressImage {
 public:
  using StrainStressImage::StrainStressImage;

  void computeStress(FFTImage& out, const StepContext& ctx) const override;
  void setInitialCondition(const MacroscopicLoad& load, const StepContext& ctx) override;
  double getStressNormSquared(const StepContext& ctx) const override;
  std::array<double, 6> normWeights() const override { return {1, 1, 1, 0.5, 0.5, 0.5}; }
  std::array<double, 6> dualNormWeights() const override { return {1, 1, 1, 2, 2, 2}; }
  double applyGamma0(const StepContext& ctx, const SpectrumPass& pass) override;
  double applyPsi0(const StepContext& ctx, const SpectrumPass& pass) override;

 protected:
  bool readsStepInput() const override { return true; }
  void materialPass(StepKind kind, const StepContext& ctx, const MacroscopicLoad& load,
                    double* regularisationSums) override;
  void computeMeanFromSpectrum(const StepContext& ctx, const MacroscopicLoad& load,
                               const double* strainPart, double* mean) const override;
};

// Primary field: the stress. Its place in the ladder and its names are set; the dual step is
// not built yet, and every solver operation ends the run with one line.
class StressImage : public StrainStressImage {
 public:
  using StrainStressImage::StrainStressImage;

  std::string getPrimaryFieldName() const override { return "Stress"; }
  std::string getDualFieldName() const override { return "Strain"; }
  // The stress field measures strains under unit stresses: its first matrix is a compliance,
  // and its thermal response at zero mean stress is the expansion.
  std::string getStiffnessName() const override { return "Compliance"; }
  std::string getComplianceName() const override { return "Stiffness"; }
  std::string getThermalStressName() const override { return "ThermalExpansion"; }
  std::string getThermalExpansionName() const override { return "ThermalStress"; }
  void computeStress(FFTImage& out, const StepContext& ctx) const override;
  void setInitialCondition(const MacroscopicLoad& load, const StepContext& ctx) override;
  double getStressNormSquared(const StepContext& ctx) const override;
  std::array<double, 6> normWeights() const override { return {1, 1, 1, 2, 2, 2}; }
  std::array<double, 6> dualNormWeights() const override { return {1, 1, 1, 0.5, 0.5, 0.5}; }
  double applyGamma0(const StepContext& ctx, const SpectrumPass& pass) override;
  double applyPsi0(const StepContext& ctx, const SpectrumPass& pass) override;

 protected:
  void materialPass(StepKind kind, const StepContext& ctx, const MacroscopicLoad& load,
                    double* regularisationSums) override;
  void computeMeanFromSpectrum(const StepContext& ctx, const MacroscopicLoad& load,
                               const double* strainPart, double* mean) const override;
};

}  // namespace gridmoor
