#include "driver/MemoryEstimate.h"

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
  const bool separateOld = sequence && !extrapolatesFromLoad;
  if (separateOld) ++fields;  // E_old
  if (kw.linearizeWithNR()) ++fields;               // E
  // A method word outside the table never reaches the solve (the run refuses it), so it
  // adds no fields.
  const auto method = methodFieldCounts().find(kw.iterativeMethod());
  const bool neumann = method == methodFieldCounts().end() || method->first == "NeumannSeries";
  if (!neumann) {
    fields += method->second;
    // e0, the right-hand side of the system, unless the load alone fixes it.
    if (!in.allLinear || kw.linearizeWithNR()) ++fields;
  } else if (kw.calculateResiduum()) {
    ++fields;  // the residuum is measured on a copy of the solution
  }
  if (usesTwinFields(kw)) fields *= 2;
  const std::string norm = kw.convergenceNorm();
  if (norm == "Divergence" || norm == "SimpleAndDivergence") ++fields;
  // The dual field is computed beside the solution for output and averages; the
  // homogenization keeps the converged state in a copy while the load cases run, when no
  // E_old can hold it and later steps start from it.
  if (kw.writeVtkOutput() || kw.averageStrainStress() || kw.averageSurfaceForces()) ++fields;
  if (kw.writeEffectiveMatrix() && !separateOld && kw.numberOfSteps() >= 2) ++fields;
  return fields;
}

std::uint64_t estimateMemoryKB(const KeywordsElasticity& kw, const MemoryEstimateInputs& in) {
  const std::uint64_t paddedThird = 2 * (in.grid[2] / 2 + 1);
  const std::uint64_t fieldBytes = in.valuesPerVoxel * in.grid[0] * in.grid[1] * paddedThird * 8;
  return in.baselineKB + ((solverFieldCount(kw, in) * fieldBytes) >> 10);
}

}  // namespace gridmoor
