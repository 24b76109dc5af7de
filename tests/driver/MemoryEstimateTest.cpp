// The report's memory estimate counts the fields the run really allocates: its field count
// must follow the field table for every method and load history.
#include <gtest/gtest.h>

#include <set>

#include "../solvers/SolverTestSupport.h"
#include "driver/MemoryEstimate.h"
#include "solvers/LoadStepSolver.h"

namespace gridmoor {
namespace {

using namespace solver_test;

std::uint64_t distinctFields(const SolverFields& f) {
  std::set<const void*> fields = {f.deltaE.get(), f.E_old.get(), f.E.get()};
  for (const auto& [name, field] : f.methodFields) fields.insert(field.get());
  return fields.size();
}

TEST(MemoryEstimate, FieldCountFollowsTheAllocatedTable) {
  const Grid g{2, 3, 4};
  Problem p(g, std::vector<Colour>(24, 0), {lameOf(1.0, 0.3)});
  KeywordsElasticity& k = p.keywords;
  // No output and no divergence criterion: only the solver's own fields count.
  k.averageStrainStress.set(false);
  k.averageSurfaceForces.set(false);
  MemoryEstimateInputs in;
  in.grid = {g[0], g[1], g[2]};
  for (const char* method : {"NeumannSeries", "CG", "slowCG", "BiCGSTAB", "MINRES", "LSQR"}) {
    for (int steps : {1, 3}) {
      for (bool newton : {false, true}) {
        for (bool residuum : {false, true}) {
          k.iterativeMethod.set(method);
          k.timeStepType.set(steps == 1 ? TimeStepType::None : TimeStepType::Constant);
          k.timeStart.set(0.0);
          k.timeStop.set(1.0);
          k.timeNSteps.set(steps);
          k.extrapolation.set(ExtrapolationType::AffinLinear);
          k.linearizeWithNR.set(newton);
          k.calculateResiduum.set(residuum);
          const SolverFields f = allocateSolverFields(k, p.materials, p.geometry, g, true);
          EXPECT_EQ(solverFieldCount(k, in), distinctFields(f))
              << method << ", " << steps << " steps, Newton-Raphson " << newton << ", residuum "
              << residuum;
        }
      }
    }
  }
}

TEST(MemoryEstimate, BytesAreTheFieldsOverTheResidentBase) {
  KeywordsElasticity k;
  k.averageStrainStress.set(false);
  k.averageSurfaceForces.set(false);
  MemoryEstimateInputs in;
  in.grid = {64, 32, 30};
  in.baselineKB = 1000;
  // Rows of 30 values are padded to 32 for the in-place transform.
  EXPECT_EQ(estimateMemoryKB(k, in), 1000u + 6 * 64 * 32 * 32 * 8 / 1024);
  k.iterativeMethod.set("BiCGSTAB");
  in.valuesPerVoxel = 48;  // eight integration points
  EXPECT_EQ(estimateMemoryKB(k, in), 1000u + 7 * 48 * 64 * 32 * 32 * 8 / 1024);
}

}  // namespace
}  // namespace gridmoor
