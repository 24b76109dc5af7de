// The driver's entry points: the field table with its aliases, and one load step solved from
// the keyword store.
#include <gtest/gtest.h>

#include "SolverTestSupport.h"
#include "solvers/LoadStepSolver.h"

namespace gridmoor {
namespace {

using namespace solver_test;

void configure(KeywordsElasticity& k, const std::string& method) {
  k.iterativeMethod.set(method);
  k.greenOperator.set(GreenOperatorType::Basic);
  k.maxIter.set(5000);
  k.maxRunTime.set(0);
  k.convergenceCriterion.set(1e-12);
  k.macroscopicStrainStressType.set("Constant");
}

TEST(NeumannLoadStep, FieldTableAliasesWhatTheRunDoesNotNeed) {
  const Grid g{2, 3, 4};
  Problem p(g, std::vector<Colour>(24, 0), {lameOf(1.0, 0.3)});
  configure(p.keywords, "NeumannSeries");
  SolverFields single = allocateSolverFields(p.keywords, p.materials, p.geometry, g, true);
  EXPECT_EQ(single.deltaE->getName(), "deltaE");
  EXPECT_EQ(single.E_old, single.deltaE);
  EXPECT_EQ(single.E, single.deltaE);
  EXPECT_TRUE(single.methodFields.empty());
  EXPECT_NE(dynamic_cast<StrainImage*>(single.deltaE.get()), nullptr);

  p.keywords.linearizeWithNR.set(true);
  p.keywords.timeStepType.set(TimeStepType::Constant);
  p.keywords.timeStart.set(0.0);
  p.keywords.timeStop.set(1.0);
  p.keywords.timeNSteps.set(3);
  p.keywords.extrapolation.set(ExtrapolationType::AffinLinear);
  p.keywords.iterativeMethod.set("CG");
  SolverFields cg = allocateSolverFields(p.keywords, p.materials, p.geometry, g, true);
  EXPECT_NE(cg.E_old, cg.deltaE);
  EXPECT_EQ(cg.E_old->getName(), "E_old");
  EXPECT_NE(cg.E, cg.deltaE);
  ASSERT_EQ(cg.methodFields.size(), 4u);
  for (const char* name : {"d_k", "g_k", "Ad_k", "e0"})
    EXPECT_EQ(cg.methodFields.at(name)->getName(), name);
  EXPECT_EQ(cg.methodFields.at("d_k")->nComponents, 6u);
}

TEST(NeumannLoadStep, SolvesALaminateStepFromTheKeywords) {
  const Grid g{3, 4, 6};
  const Lame soft = lameOf(2.0, 0.3), stiff = lameOf(40.0, 0.25);
  Problem p(g, laminateColours(g, 2, 2), {soft, stiff});
  configure(p.keywords, "NeumannSeries");
  p.keywords.typeOfMacroscopicLoadStrainStress.set("Mixed");
  p.keywords.strainList.set({"XX", "YY", "XY"});
  p.keywords.macroscopicStrainStress.set({0.01, 0.0, 0.5, 0.0, 0.0, 0.0});
  SolverFields fields = allocateSolverFields(p.keywords, p.materials, p.geometry, g, true);
  fields.deltaE->createPlans("Estimate");
  LoadStepSolver solver(p.keywords, p.geometry, p.materials, "", nullptr);
  EXPECT_EQ(solver.routineSet(), RoutineSet::Linear);
  SolverCounters counters;
  testing::internal::CaptureStdout();
  const NeumannResult r = solver.solveStep(0, fields, p.ctx.reference.lambda0,
                                           p.ctx.reference.mu0, counters, 0, 1);
  const std::string out = testing::internal::GetCapturedStdout();
  EXPECT_FALSE(r.limitReached);
  EXPECT_EQ(counters.matrixVectorProducts, r.iterations);
  EXPECT_NE(out.find("Iteration 0 - relative Error = "), std::string::npos);
  EXPECT_NE(out.find("###SUBPROGRESS### 100"), std::string::npos);
  // ZZ carries a mean stress of 0.5 across the layers: the normal stress of every voxel.
  const Matrix6 c[2] = {stiffnessOf(soft), stiffnessOf(stiff)};
  auto* field = fields.deltaE.get();
  for (std::uint64_t z = 0; z < g[2]; ++z) {
    const double* v = field->data() + 2 * field->planeStride + field->rowStride + z * 6;
    const Vector6 e{v[0], v[1], v[2], v[3], v[4], v[5]};
    const Vector6 s = multiply(c[z < 2 ? 1 : 0], e);
    EXPECT_NEAR(s[2], 0.5, 1e-9) << z;
    EXPECT_NEAR(e[0], 0.01, 1e-12) << z;
  }
}

// The start field of step 1 of a proportional strain ramp over the unequal steps 0, 0.2,
// 0.6, 1, by Extrapolation word, from the solution sol0 of step 0. A linear laminate's
// solution scales with the load, so the affine extrapolation through the loads at 0, 0.2
// and 0.6 (ratio 2) starts at the solution 3 sol0 and the solve ends after the two
// iterations any solve takes (the first change is measured against the empty history); a
// shifted start needs more.
TEST(NeumannLoadStep, StartFieldOfTheNextStepByExtrapolationWord) {
  const Grid g{3, 4, 6};
  const Vector6 last{0.01, 0.0, -0.004, 0.0, 0.005, 0.0};
  struct Case {
    ExtrapolationType word;
    bool pathIndependent;
    double scale;      // start = scale * sol0 + shift * (0.4 last)
    double shift;
    bool keepsOld;     // E_old ends as sol0 (else it is E's alias)
  };
  int affineIterations = 0, shiftedIterations = 0;
  for (const Case c : {Case{ExtrapolationType::MemoryEfficient, true, 1.0, 1.0, false},
                       Case{ExtrapolationType::AffinLinear, true, 3.0, 0.0, true},
                       Case{ExtrapolationType::None, false, 1.0, 0.0, true},
                       Case{ExtrapolationType::Linear, false, 1.0, 1.0, true}}) {
    SCOPED_TRACE(static_cast<int>(c.word));
    Problem p(g, laminateColours(g, 2, 2), {lameOf(2.0, 0.3), lameOf(40.0, 0.25)});
    configure(p.keywords, "NeumannSeries");
    p.keywords.timeStepType.set(TimeStepType::UserDefined);
    p.keywords.timeSteps.set({0.0, 0.2, 0.6, 1.0});
    p.keywords.macroscopicStrainStressType.set("LinearInterpolation");
    p.keywords.macroscopicStrainValues.set(
        {{0, 0, 0, 0, 0, 0, 0}, {1, last[0], last[1], last[2], last[3], last[4], last[5]}});
    p.keywords.extrapolation.set(c.word);
    SolverFields fields =
        allocateSolverFields(p.keywords, p.materials, p.geometry, g, c.pathIndependent);
    ASSERT_EQ(fields.E_old != fields.E, c.keepsOld);
    fields.deltaE->createPlans("Estimate");
    LoadStepSolver solver(p.keywords, p.geometry, p.materials, "", nullptr);
    SolverCounters counters;
    testing::internal::CaptureStdout();
    solver.solveStep(0, fields, p.ctx.reference.lambda0, p.ctx.reference.mu0, counters, 0, 3);
    FFTImage sol0(6, g[0], g[1], g[2], "sol0");
    sol0 = *fields.E;
    extrapolateStartField(*fields.E, *fields.E_old, p.keywords, 1, 0, c.pathIndependent);
    for (std::uint64_t x = 0; x < g[0]; ++x)
      for (std::uint64_t z = 0; z < g[2]; ++z)
        for (int k = 0; k < 6; ++k) {
          const double s0 = *sol0.elementPointer(k, x, 1, z);
          EXPECT_NEAR(*fields.E->elementPointer(k, x, 1, z), c.scale * s0 + c.shift * 0.4 * last[k],
                      1e-15);
          if (c.keepsOld) {
            EXPECT_EQ(*fields.E_old->elementPointer(k, x, 1, z), s0);
          }
        }
    const NeumannResult r = solver.solveStep(1, fields, p.ctx.reference.lambda0,
                                             p.ctx.reference.mu0, counters, 1, 3);
    testing::internal::GetCapturedStdout();
    if (c.word == ExtrapolationType::AffinLinear) affineIterations = r.iterations;
    if (c.word == ExtrapolationType::MemoryEfficient) shiftedIterations = r.iterations;
  }
  EXPECT_EQ(affineIterations, 2);
  EXPECT_GT(shiftedIterations, 5);
}

}  // namespace
}  // namespace gridmoor
