// The report's memory estimate counts the fields the run really allocates: its field count
// must follow the field table for every method and load history, and the scratch fields and
// buffers of output and homogenization come on top at their time. The measured memory and
// the disk figures of the report.
#include <gtest/gtest.h>

#include <set>

#include "../solvers/SolverTestSupport.h"
#include "driver/MemoryEstimate.h"
#include "driver/RunReport.h"
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

TEST(MemoryEstimate, BytesAreTheFieldsAndTheLargerLaterNeedOverBaseAndPlans) {
  KeywordsElasticity k;
  k.averageStrainStress.set(false);
  k.averageSurfaceForces.set(false);
  MemoryEstimateInputs in;
  in.grid = {64, 32, 30};
  in.baselineKB = 1000;
  in.planKB = 24;
  // Rows of 30 values are padded to 32 for the in-place transform.
  const std::uint64_t fieldKB = 6 * 64 * 32 * 32 * 8 / 1024;
  EXPECT_EQ(estimateMemoryKB(k, in), 1024u + fieldKB);
  k.iterativeMethod.set("BiCGSTAB");
  in.valuesPerVoxel = 48;  // eight integration points
  EXPECT_EQ(estimateMemoryKB(k, in), 1024u + 7 * 8 * fieldKB);

  // Averages need the dual field for a while; the load cases need it too, and read the
  // responses of the earlier cases back in a buffer of up to 16 MiB: here all 64 planes.
  k.iterativeMethod.set("NeumannSeries");
  in.valuesPerVoxel = 6;
  k.averageStrainStress.set(true);
  EXPECT_EQ(estimateMemoryKB(k, in), 1024u + 2 * fieldKB);
  k.writeEffectiveMatrix.set(true);
  k.computeAllLoadCases.set(true);
  EXPECT_EQ(estimateMemoryKB(k, in), 1024u + 3 * fieldKB);
  // Planes of 768 KiB: 21 of them fit in the buffer.
  in.grid = {128, 128, 126};
  EXPECT_EQ(estimateMemoryKB(k, in), 1024u + 2 * 128 * 768 + 21 * 768);
  // One case reads nothing back.
  k.computeAllLoadCases.set(false);
  k.computeLoadCaseList.set({"1"});
  EXPECT_EQ(estimateMemoryKB(k, in), 1024u + 2 * 128 * 768);
}

TEST(RunReport, MemoryAndDiskFigures) {
  const std::uint64_t before = realMemoryKB();
  EXPECT_GT(before, 0u);
  {
    Vector<double> big(32 * 1024 * 1024 / 8, 1.0, "big");  // 32 MiB, touched by the fill
    EXPECT_GE(realMemoryKB(), before + 30 * 1024);
  }
  EXPECT_EQ(freeDiskSpace("\\\\server\\share\\run.xml"), 0u);
  EXPECT_GT(diskSize("/tmp/run.xml"), 0u);
  EXPECT_LE(freeDiskSpace("/tmp/run.xml"), diskSize("/tmp/run.xml"));
}

}  // namespace
}  // namespace gridmoor
