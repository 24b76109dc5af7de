#include "driver/MemoryEstimate.h"

#include <iostream>
#include <map>
#include <string>

#include "input/KeywordsElasticity.h"

namespace gridmoor {

namespace {

// Work fields of each method beyond deltaE, the start field "e0" not included.
const std::map<std::string, std::uint64_t>& methodFieldCounts() {
  static const std::map<std::string, std::uint64_t> counts = {
      {"NeumannSeries", 0}, {"CG", 3},     {"slowCG", 1},
      {"BiCGSTAB", 6},      {"MINRES", 7}, {"LSQR", 4}};
  return counts;
}

bool usesTwinFields(const KeywordsElasticity& kw) {
  const std::string formulation = kw.problemFormulation();
  return (formulation == "Polarization" || formulation == "Eigenstrain") &&
         !(kw.alpha() == 2.0 && kw.beta() == -2.0);
}

}  // namespace

std::uint64_t solverFieldCount(const KeywordsElasticity& kw, const MemoryEstimateInputs& in) {
  std::uint64_t fields = 1;  // deltaE
  const bool sequence = kw.numberOfSteps() >= 2 || kw.numberOfLoadCases() > 0;
  const bool extrapolatesFromLoad =
      in.pathIndependent && kw.extrapolation() != ExtrapolationType::AffinLinear;
  if (sequence && !extrapolatesFromLoad) ++fields;  // E_old
  if (kw.linearizeWithNR()) ++fields;               // E
  const auto method = methodFieldCounts().find(kw.iterativeMethod());
  if (method != methodFieldCounts().end()) {
    fields += method->second;
    if (method->first != "NeumannSeries") ++fields;  // e0, the right-hand side of the system
  } else {
    // A run with a method word outside the table solves nothing, so it has no method fields;
    // the word is named so that a typing error is found.
    std::cerr << "Unknown iterative method " << kw.iterativeMethod() << "\n";
  }
  if (usesTwinFields(kw)) fields *= 2;
  const std::string norm = kw.convergenceNorm();
  if (norm == "Divergence" || norm == "SimpleAndDivergence") ++fields;
  // The dual field is computed beside the solution for output and averages; the
  // homogenization keeps the converged state while the load cases run.
  if (kw.writeVtkOutput() || kw.averageStrainStress() || kw.averageSurfaceForces()) ++fields;
  if (kw.writeEffectiveMatrix()) ++fields;
  return fields;
}

std::uint64_t estimateMemoryKB(const KeywordsElasticity& kw, const MemoryEstimateInputs& in) {
  const std::uint64_t paddedThird = 2 * (in.grid[2] / 2 + 1);
  const std::uint64_t fieldBytes = in.valuesPerVoxel * in.grid[0] * in.grid[1] * paddedThird * 8;
  return in.baselineKB + ((solverFieldCount(kw, in) * fieldBytes) >> 10);
}

}  // namespace gridmoor
