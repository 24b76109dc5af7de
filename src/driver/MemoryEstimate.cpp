#include "driver/MemoryEstimate.h"

#include <algorithm>
#include <map>
#include <string>

#include "input/KeywordsElasticity.h"
#include "postprocessing/LoadCaseResponses.h"

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

// E_old is a field of its own, not deltaE.
bool separateOldField(const KeywordsElasticity& kw, const MemoryEstimateInputs& in) {
  const bool sequence = kw.numberOfSteps() >= 2 || kw.numberOfLoadCases() > 0;
  const bool extrapolatesFromLoad =
      in.pathIndependent && kw.extrapolation() != ExtrapolationType::AffinLinear;
  return sequence && !extrapolatesFromLoad;
}

std::uint64_t paddedThird(const MemoryEstimateInputs& in) { return 2 * (in.grid[2] / 2 + 1); }

std::uint64_t fieldBytes(const MemoryEstimateInputs& in) {
  return in.valuesPerVoxel * in.grid[0] * in.grid[1] * paddedThird(in) * 8;
}

}  // namespace

std::uint64_t solverFieldCount(const KeywordsElasticity& kw, const MemoryEstimateInputs& in) {
  std::uint64_t fields = 1;  // deltaE
  if (separateOldField(kw, in)) ++fields;  // E_old
  if (kw.linearizeWithNR()) ++fields;               // E
  // A method word outside the table allocates no work fields: the run solves nothing.
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
  return fields;
}

std::uint64_t postprocessingBytes(const KeywordsElasticity& kw, const MemoryEstimateInputs& in) {
  const std::uint64_t field = fieldBytes(in);
  const std::uint64_t output =
      kw.writeVtkOutput() || kw.averageStrainStress() || kw.averageSurfaceForces() ? field : 0;
  if (!kw.writeEffectiveMatrix()) return output;
  // The dual field of each load case, and the step's solution kept in a copy while the cases
  // run when no E_old can hold it and later steps start from it.
  std::uint64_t homogenization = field;
  if (!separateOldField(kw, in) && kw.numberOfSteps() >= 2) homogenization += field;
  // A case reads back the responses of the earlier mechanical cases.
  if (kw.numberOfMechanicalLoadCases() >= 2) {
    const std::uint64_t planeBytes = in.valuesPerVoxel * in.grid[1] * paddedThird(in) * 8;
    homogenization += responseReadBlockPlanes(in.grid[0], planeBytes) * planeBytes;
  }
  return std::max(output, homogenization);
}

std::uint64_t estimateMemoryKB(const KeywordsElasticity& kw, const MemoryEstimateInputs& in) {
  const std::uint64_t bytes =
      solverFieldCount(kw, in) * fieldBytes(in) + postprocessingBytes(kw, in);
  return in.baselineKB + in.planKB + (bytes >> 10);
}

}  // namespace gridmoor
