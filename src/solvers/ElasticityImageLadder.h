// The upper levels of the solver field ladder: every primary field is itself the solver, and
// the fixed-point step is written once here over a few per-formulation hooks.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "operators/DiscreteGreenOperator.h"
#include "operators/FFTImage.h"
#include "operators/IntegrationRule.h"
#include "postprocessing/ColourAverages.h"
#include "postprocessing/ResultFile.h"
#include "solvers/StepContext.h"

namespace gridmoor {

class DataWriter;

// Integration rules and the operations every field of the family answers. Only the elastic
// branch is built; the Laplace and Stokes-Brinkman names stay for the family's shape.
class ElasticityLaplaceStokesBrinkmanImage : public FFTImage {
 public:
  IntegrationRule mainRule;
  IntegrationRule hourglassRule;
  std::uint64_t componentsPerPoint;

  ElasticityLaplaceStokesBrinkmanImage(std::uint64_t componentsPerPoint,
                                       const IntegrationRule& mainRule,
                                       const IntegrationRule& hourglassRule, std::uint64_t n0,
                                       std::uint64_t n1, std::uint64_t n2,
                                       const std::string& name);

  std::uint64_t pointsPerVoxel() const { return mainRule.count; }
  // The points of a voxel with their weights, as post-processing reads the field.
  PointLayout pointLayout() const;
  // Adds increment (componentsPerPoint values) to every integration point of every voxel:
  // the extrapolation of a start field between load steps.
  virtual void addConstantToPoints(const double* increment);
  // Sets every integration point of every voxel to value (componentsPerPoint values).
  void setConstantAtPoints(const double* value);
  virtual bool isOperatorSpecialized(const DiscreteGreenOperator& op) const = 0;
};

class ElasticityLaplaceImage : public ElasticityLaplaceStokesBrinkmanImage {
 public:
  using ElasticityLaplaceStokesBrinkmanImage::ElasticityLaplaceStokesBrinkmanImage;
  virtual std::string getStiffnessName() const { return "Stiffness"; }
  virtual std::string getComplianceName() const { return "Compliance"; }
};

// The solver interface the iterative methods see: steps, norms and state, never the
// formulation.
class ElasticityHyperelasticityImage : public ElasticityLaplaceImage {
 public:
  // 2 after a divergence evaluation of the unchanged field, 4 after a Newton-Raphson end,
  // 0 after a reset.
  int stateMark = 0;
  double cachedDivergenceError = 0.0;
  bool linearizationValid = false;

  using ElasticityLaplaceImage::ElasticityLaplaceImage;

  void resetSolverState() {
    stateMark = 0;
    linearizationValid = false;
  }

  // 1: the law acts pointwise on the primary field.
  virtual int isFormulationPointwise() const { return 1; }
  virtual std::string getPrimaryFieldName() const { return "Strain"; }
  virtual std::string getDualFieldName() const { return "Stress"; }
  virtual std::string getThermalStressName() const { return "ThermalStress"; }
  virtual std::string getThermalExpansionName() const { return "ThermalExpansion"; }
  virtual void beforeSolve(const StepContext&) {}

  // The dual field of this one, per voxel through the materials, written into `out` (same
  // shape, real space). This field is left unchanged.
  virtual void computeStress(FFTImage& out, const StepContext& ctx) const = 0;
  // The start field of a solve: the mean that the load calls for at every point.
  virtual void setInitialCondition(const MacroscopicLoad& load, const StepContext& ctx) = 0;

  // One fixed-point step in place, T(e) = E - Gamma0 (sigma(e) - C0 e).
  virtual StepSums linearStep(const StepContext& ctx, const MacroscopicLoad& load) = 0;
  virtual StepSums nonlinearStep(const StepContext& ctx, const MacroscopicLoad& load) = 0;
  virtual StepSums linearizedStep(const StepContext& ctx, const MacroscopicLoad& load) = 0;
  virtual StepSums eyreMiltonStep(const StepContext& ctx, const MacroscopicLoad& load);
  StepSums step(StepKind kind, const StepContext& ctx, const MacroscopicLoad& load);
  // The step of `input` (see StepInput) into this field.
  StepSums step(StepKind kind, const StepContext& ctx, const MacroscopicLoad& load,
                const StepInput& input);

  // Hands the solved field to laws with history, and closes a time step.
  void updateInternalSolution(const StepContext& ctx) const;
  void updateInternalVariables(const StepContext& ctx) const;

  // Norm of the primary field: square root of the sum over voxels and points of the point
  // weight times the tensor norm.
  virtual double getFieldNorm() const;
  // Sum over voxels and points of the weight times the squared norm of the dual field.
  virtual double getStressNormSquared(const StepContext& ctx) const = 0;
  // Relative equilibrium error |div sigma| / |mean sigma| of the current field; `work` is a
  // planned image of this shape that the evaluation overwrites.
  virtual double getDivergenceNorm(FFTImage& work, const StepContext& ctx);

  // Norm weight of each component of a point: 1 for normal components, 1/2 for engineering
  // shear of strains, 2 for plain shear of stresses.
  virtual std::array<double, 6> normWeights() const = 0;
  virtual std::array<double, 6> dualNormWeights() const = 0;

  // Post-processing of the solved field; `dual` holds the dual field (computeStress) in this
  // field's layout. Every voxel counts with the weighted mean of its points.
  // The strain and stress averages, overall and per colour in use, over the averaging box of
  // the keywords (subvolumeOf). Here for the small-strain fields of six Voigt values a point.
  virtual ResultAverages computeAverages(const FFTImage& dual, const StepContext& ctx) const;
  // The mean tractions on the faces of the cell, from whichever field is the stress.
  virtual SurfaceForces computeSurfaceForces(const FFTImage& dual, const StepContext& ctx) const;
  // Registers this field and `dual` with `writer` under their names, with the components
  // that StrainComponents and StressComponents list (all six when `complete`). Both fields
  // must outlive the writer's write().
  void addStrainStressToFile(DataWriter& writer, const FFTImage& dual,
                             const KeywordsElasticity& keywords, bool complete) const;

 protected:
  // True where the voxel loop reads a StepInput itself; for the other formulations the input
  // is formed in a pass before the step.
  virtual bool readsStepInput() const { return false; }
  // The input of the step under way, null when the step reads the field's own values.
  const StepInput* stepInput() const { return stepInput_; }

 private:
  const StepInput* stepInput_ = nullptr;
};

// Small-strain common code: the step itself, written once over the hooks below.
class ElasticityImage : public ElasticityHyperelasticityImage {
 public:
  // Largest number of values per voxel: six per point of the full trilinear rule.
  static constexpr std::size_t kMaxValuesPerVoxel = 6 * IntegrationRule::kMaxPoints;

  ElasticityImage(const IntegrationRule& mainRule, const IntegrationRule& hourglassRule,
                  std::uint64_t n0, std::uint64_t n1, std::uint64_t n2, const std::string& name);

  bool isOperatorSpecialized(const DiscreteGreenOperator& op) const override;
  StepSums linearStep(const StepContext& ctx, const MacroscopicLoad& load) override {
    return fixedPointStep(StepKind::Linear, ctx, load);
  }
  StepSums nonlinearStep(const StepContext& ctx, const MacroscopicLoad& load) override {
    return fixedPointStep(StepKind::Nonlinear, ctx, load);
  }
  StepSums linearizedStep(const StepContext& ctx, const MacroscopicLoad& load) override {
    return fixedPointStep(StepKind::Linearized, ctx, load);
  }

 protected:
  // The voxel loop: the material call of the step kind at each point, the reference term
  // taken off in place. Fills `regularisationSums` (six per point) when Tikhonov is on.
  virtual void materialPass(StepKind kind, const StepContext& ctx, const MacroscopicLoad& load,
                            double* regularisationSums) = 0;
  // The mean that the regularisation adds, from the sums of the voxel loop.
  virtual void computeMeanForRegularization(const StepContext& ctx,
                                            const double* regularisationSums,
                                            double* meanFromLoad) const;
  // The strain part of the load: components prescribed as stress set to 0.
  virtual void maskConstrainedComponents(const MacroscopicLoad& load, double* strainPart) const;
  // The mean of the new field at each point, from the load and the spectrum's zero frequency.
  virtual void computeMeanFromSpectrum(const StepContext& ctx, const MacroscopicLoad& load,
                                       const double* strainPart, double* mean) const = 0;
  // The operator and the body-force term on the spectrum, with the pass folded into their
  // frequency loops; each returns the norm sum of its pass.
  virtual double applyGreenOperator(const StepContext& ctx, const SpectrumPass& pass) = 0;
  virtual double applyExternalForce(const StepContext& ctx, const SpectrumPass& pass) = 0;

 private:
  StepSums fixedPointStep(StepKind kind, const StepContext& ctx, const MacroscopicLoad& load);
  // Writes the mean at the zero frequency of a spectrum already divided by N and returns the
  // mean's share of the pass's norm sum.
  double setMean(const double* mean, const double* normWeights);
};

}  // namespace gridmoor
