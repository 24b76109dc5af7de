// The Green operator of one discretisation on a whole spectrum: chosen once from the settings,
// it runs the frequency loop of each operator, so solvers never branch on the discretisation.
#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "input/SolverEnums.h"
#include "operators/FFTImage.h"
#include "operators/FrequencyVectors.h"
#include "operators/IntegrationRule.h"
#include "operators/ReferenceConstants.h"

namespace gridmoor {

// The discretisations with a closed, one-point form: "Basic", the three finite differences,
// "StaggeredGrid" and "TrilinearFE".
constexpr bool isOperatorSpecialized(GreenOperatorType v) {
  return v == GreenOperatorType::Basic || v == GreenOperatorType::ForwardDifference ||
         v == GreenOperatorType::CentralDifference || v == GreenOperatorType::BackwardDifference ||
         v == GreenOperatorType::StaggeredGrid || v == GreenOperatorType::TrilinearFE;
}

struct GreenOperatorSettings {
  GreenOperatorType discretisation = GreenOperatorType::Basic;
  FilterType filter = FilterType::None;
  // Whether the closed one-point forms may be used where they exist. There is no setting for
  // precalculated product tables: the loops build the tables only where a closed form reads
  // them, so switching them off elsewhere would change nothing.
  bool specializeOperators = false;
  IntegrationRule mainRule = IntegrationRule::centre();
  IntegrationRule hourglassRule = IntegrationRule::empty();
  std::array<double, 3> voxelLength = {1.0, 1.0, 1.0};

  // Settings with the integration rules that belong to the discretisation.
  static GreenOperatorSettings of(GreenOperatorType discretisation, FilterType filter,
                                  bool specializeOperators,
                                  const std::array<double, 3>& voxelLength = {1.0, 1.0, 1.0});
};

// What a frequency loop does besides its operator, while it holds each value anyway: scale
// what it writes (a solver step takes the backward transform's 1/N here and transforms
// back unnormalised) and sum sum_c weight[c] |value_c|^2 over the half spectrum, the planes
// k = 0 and (even nThird) k = nThird / 2 once, all others twice for their conjugate twins.
// The zero frequency is not in the sum: the loops never touch it.
struct SpectrumPass {
  double scale = 1.0;
  // One weight per value of a voxel; null: no norm.
  const double* normWeights = nullptr;
};

// All operators work in place on spectra (after the forward transform) with six values per
// integration point, Voigt order 11, 22, 33, 23, 13, 12; strain-like values carry engineering
// shear, stress-like values plain shear. Force fields have three values per voxel. The zero
// frequency is never touched: the solver sets the mean there. The reference constants are
// taken at each call, so a reference updated between steps needs no new operator.
class DiscreteGreenOperator {
 public:
  // Stops the run for a discretisation without vectors ("Unknown finite difference 9" for
  // "Bilaplacian") or an unknown filter.
  static std::unique_ptr<DiscreteGreenOperator> create(const GreenOperatorSettings& settings,
                                                       const std::array<std::uint64_t, 3>& grid);

  virtual ~DiscreteGreenOperator() = default;
  DiscreteGreenOperator(const DiscreteGreenOperator&) = delete;
  DiscreteGreenOperator& operator=(const DiscreteGreenOperator&) = delete;

  // tau (stress-like) becomes -Gamma0 tau (strain-like): the strain that, with C0 and tau,
  // balances in the discretisation's divergence.
  void applyGamma0(FFTImage& tensor, const ReferenceConstants& reference) const {
    applyGamma0(tensor, reference, SpectrumPass{});
  }
  // tau (strain-like) becomes -(C0 - C0 Gamma0 C0) tau (stress-like).
  void applyDelta0(FFTImage& tensor, const ReferenceConstants& reference) const {
    applyDelta0(tensor, reference, SpectrumPass{});
  }
  // Adds to `strain` the strain whose reference stress has the divergence `force`.
  void applyPsi0(const FFTImage& force, FFTImage& strain,
                 const ReferenceConstants& reference) const {
    applyPsi0(force, strain, reference, SpectrumPass{});
  }
  // Adds to `stress` the reference stress of that strain.
  void applyOmega0(const FFTImage& force, FFTImage& stress,
                   const ReferenceConstants& reference) const {
    applyOmega0(force, stress, reference, SpectrumPass{});
  }

  // The same operators with the pass's scale and norm folded into their frequency loop.
  // Each returns the weighted squared norm of the non-zero frequencies it leaves (0 without
  // norm weights). The force operators scale their contribution only: the values they add
  // to stand scaled already when the tensor operator ran with the same pass.
  virtual double applyGamma0(FFTImage& tensor, const ReferenceConstants& reference,
                             const SpectrumPass& pass) const = 0;
  virtual double applyDelta0(FFTImage& tensor, const ReferenceConstants& reference,
                             const SpectrumPass& pass) const = 0;
  virtual double applyPsi0(const FFTImage& force, FFTImage& strain,
                           const ReferenceConstants& reference, const SpectrumPass& pass) const = 0;
  virtual double applyOmega0(const FFTImage& force, FFTImage& stress,
                             const ReferenceConstants& reference,
                             const SpectrumPass& pass) const = 0;
  // Replaces each frequency's tensors by their divergence: the force in the first three
  // values, zeros in all others. The divergence is never filtered: it measures equilibrium
  // in the discretisation itself.
  virtual void applyDivergence(FFTImage& tensor) const = 0;

  const GreenOperatorSettings& settings() const { return settings_; }
  // True when the closed one-point form runs.
  bool isSpecialized() const { return specialized_; }
  std::uint64_t valuesPerVoxel() const { return 6 * settings_.mainRule.count; }

 protected:
  DiscreteGreenOperator(const GreenOperatorSettings& settings,
                        const std::array<std::uint64_t, 3>& grid, bool specialized);

  // Stop the run on a field that does not fit this operator.
  void checkTensorField(const FFTImage& field) const;
  void checkForceField(const FFTImage& force, const FFTImage& tensor) const;

  GreenOperatorSettings settings_;
  AxisTables tables_;
  bool specialized_;
};

// The closed one-point form of a discretisation; any value outside "Basic" .. "TrilinearFE"
// stops the run with "Operator not specialized.".
std::unique_ptr<DiscreteGreenOperator> makeSpecializedGreenOperator(
    const GreenOperatorSettings& settings, const std::array<std::uint64_t, 3>& grid);

}  // namespace gridmoor
