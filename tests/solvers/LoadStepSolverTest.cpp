// The load step solver: the field table with its aliases, one load step and the start field
// of the next one solved from the keyword store, and the homogenization load cases: the unit
// cases solved, their responses kept and paired through the temporary files, and the
// matrices of both principles against exact solutions.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "SolverTestSupport.h"
#include "input/XmlNode.h"
#include "postprocessing/LoadCaseResponses.h"
#include "solvers/LoadStepSolver.h"

namespace gridmoor {
namespace {

using namespace solver_test;
namespace fs = std::filesystem;

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

constexpr double kIncrement = 0.01;

struct CaseRun {
  std::array<LoadCaseRecord, 7> records;
  std::unique_ptr<LoadCaseResponses> responses;
};

// Solves the cases in `cases` (bit 6: thermal) of a problem through the temporary files of a
// fresh directory, as the run does within a step.
CaseRun runCases(Problem& p, const Grid& g, unsigned cases, const std::string& name) {
  KeywordsElasticity& k = p.keywords;
  configure(k, "NeumannSeries");
  k.macroscopicStrainIncrement.set(kIncrement);
  k.macroscopicStressIncrement.set(kIncrement);
  const fs::path dir = fs::path(::testing::TempDir()) / ("gridmoor_cases_" + name);
  fs::remove_all(dir);
  fs::create_directories(dir);
  std::array<std::string, 7> files, markers;
  for (int c = 0; c < 7; ++c) {
    files[c] = (dir / ("case" + std::to_string(c) + ".response")).string();
    markers[c] = (dir / ("case" + std::to_string(c) + ".finished")).string();
  }
  CaseRun run;
  run.responses = std::make_unique<LoadCaseResponses>(files, markers);
  SolverFields fields = allocateSolverFields(k, p.materials, p.geometry, g, true);
  fields.deltaE->createPlans("Estimate");
  LoadStepSolver solver(k, p.geometry, p.materials, dir.string() + "/", nullptr);
  FFTImage stress(6, g[0], g[1], g[2], "Stress");
  SolverCounters counters;
  const double l0 = p.ctx.reference.lambda0, m0 = p.ctx.reference.mu0;
  testing::internal::CaptureStdout();
  for (int c = 0; c < 7; ++c) {
    if (!(cases & (1u << c))) continue;
    const NeumannResult r = solver.solveLoadCase(0, c, fields, l0, m0, counters, 0, 1);
    EXPECT_FALSE(r.limitReached) << c;
    fields.deltaE->computeStress(stress, solver.loadCaseContext(c, l0, m0));
    const unsigned earlier = c < 6 ? cases & ((1u << c) - 1u) & 0x3Fu : 0u;
    run.records[c] = run.responses->record(c, earlier, *fields.deltaE, stress);
    run.responses->markFinished(c);
  }
  testing::internal::GetCapturedStdout();
  return run;
}

void expectMatrixNear(const EffectiveMatrix& m, const Matrix6& expected, double tolerance,
                      const std::string& what) {
  for (int i = 0; i < 6; ++i)
    for (int j = 0; j < 6; ++j)
      EXPECT_NEAR(m(i, j), expected[i][j], tolerance) << what << " (" << i << "," << j << ")";
}

TEST(EffectiveLoadCases, HomogeneousCellHasTheStiffnessOfItsMaterial) {
  const Grid g{4, 3, 5};
  const Lame law = lameOf(7.0, 0.3);
  Problem p(g, std::vector<Colour>(60, 0), {law});
  const CaseRun run = runCases(p, g, 0x3Fu, "homogeneous");
  const Matrix6 c = stiffnessOf(law);
  expectMatrixNear(measuredByEnergy(run.records, 0x3Fu, kIncrement), c, 1e-9, "energy");
  expectMatrixNear(measuredByStrain(run.records, 0x3Fu, kIncrement, false), c, 1e-9, "strain");
}

TEST(EffectiveLoadCases, LaminateOnVoxelPlanesGivesTheExactLaminateStiffness) {
  const Grid g{3, 4, 6};
  const Lame soft = lameOf(2.0, 0.3), stiff = lameOf(40.0, 0.25);
  const double f1 = 2.0 / 6.0;
  Problem p(g, laminateColours(g, 2, 2), {soft, stiff});
  const CaseRun run = runCases(p, g, 0x3Fu, "laminate");
  const Matrix6 exact = laminateStiffness(stiffnessOf(soft), stiffnessOf(stiff), f1, 2);
  // The closed forms behind it: the in-plane shear is the volume mean of the moduli, the
  // shears across the layers their harmonic mean.
  EXPECT_NEAR(exact[5][5], (1 - f1) * soft.mu + f1 * stiff.mu, 1e-12);
  EXPECT_NEAR(exact[3][3], 1.0 / ((1 - f1) / soft.mu + f1 / stiff.mu), 1e-12);
  const EffectiveMatrix energy = measuredByEnergy(run.records, 0x3Fu, kIncrement);
  const EffectiveMatrix strain = measuredByStrain(run.records, 0x3Fu, kIncrement, false);
  expectMatrixNear(energy, exact, 1e-8, "energy");
  expectMatrixNear(strain, exact, 1e-8, "strain");

  // What a restarted step reads back from the files is what the cases recorded.
  for (int c = 0; c < 6; ++c) {
    EXPECT_TRUE(run.responses->finished(c));
    const LoadCaseRecord back = run.responses->read(c);
    EXPECT_EQ(back.meanStress, run.records[c].meanStress);
    EXPECT_EQ(back.energy, run.records[c].energy);
  }
  run.responses->removeAll();
  EXPECT_FALSE(run.responses->finished(0));
}

TEST(EffectiveLoadCases, StressCasesMeasureTheComplianceAndPartialListsOnlyTheirEntries) {
  const Grid g{3, 4, 6};
  const Lame soft = lameOf(2.0, 0.3), stiff = lameOf(40.0, 0.25);
  Problem p(g, laminateColours(g, 2, 2), {soft, stiff});
  p.keywords.typeOfMacroscopicLoadStrainStress.set("Stress");
  ASSERT_TRUE(loadCasesPrescribeStress(p.keywords));
  const CaseRun run = runCases(p, g, 0x3Fu, "stress");
  const Matrix6 exact = laminateStiffness(stiffnessOf(soft), stiffnessOf(stiff), 2.0 / 6.0, 2);
  for (const bool byEnergy : {true, false}) {
    EffectiveMatrix m = byEnergy ? measuredByEnergy(run.records, 0x3Fu, kIncrement)
                                 : measuredByStrain(run.records, 0x3Fu, kIncrement, true);
    ASSERT_TRUE(m.invert());
    expectMatrixNear(m, exact, 1e-7, byEnergy ? "energy" : "strain");
  }

  // Strain cases 1 and 3 only: their block is the laminate's, every other entry stays 0.
  Problem partial(g, laminateColours(g, 2, 2), {soft, stiff});
  const unsigned mask = 0b101u;
  const CaseRun two = runCases(partial, g, mask, "partial");
  const EffectiveMatrix e = measuredByEnergy(two.records, mask, kIncrement);
  for (int i = 0; i < 6; ++i)
    for (int j = 0; j < 6; ++j) {
      const bool set = (mask & (1u << i)) && (mask & (1u << j));
      EXPECT_NEAR(e(i, j), set ? exact[i][j] : 0.0, 1e-8) << i << "," << j;
    }
}

TEST(EffectiveLoadCases, ThermalCaseOfPhasesWithOneExpansionGivesThatExpansion) {
  // With one expansion coefficient in all phases the free thermal strain is uniform and
  // stress-free, so the effective expansion is that coefficient whatever the stiffnesses.
  const Grid g{3, 4, 6};
  const Lame soft = lameOf(2.0, 0.3), stiff = lameOf(40.0, 0.25);
  Problem p(g, laminateColours(g, 2, 2), {soft, stiff});
  const double alpha = 3e-5;
  for (Colour c = 0; c < 2; ++c) {
    const double e = c == 0 ? 2.0 : 40.0, nu = c == 0 ? 0.3 : 0.25;
    const XmlNode parameters = XmlNode::parseString(
        "<MaterialParameters><E><value>" + std::to_string(e) + "</value></E><nu><value>" +
        std::to_string(nu) + "</value></nu><alpha><value>3e-5</value></alpha></MaterialParameters>");
    auto* law = new IsotropicLinearElasticMaterialWithThermalExpansion(
        "thermal" + std::to_string(c), c, parameters, nullptr, p.keywords, nullptr, nullptr);
    p.materials.addMaterial(c, std::make_unique<Material>(law, nullptr));
  }
  p.keywords.macroscopicTemperatureChangeIncrement.set(2.0);
  const CaseRun run = runCases(p, g, 0x7Fu, "thermal");
  EffectiveMatrix compliance = measuredByEnergy(run.records, 0x3Fu, kIncrement);
  ASSERT_TRUE(compliance.invert());
  // Mean stress per unit temperature at zero mean strain, then -C*^-1 of it.
  for (int i = 0; i < 6; ++i) {
    double expansion = 0.0;
    for (int k = 0; k < 6; ++k) expansion -= compliance(i, k) * run.records[6].meanStress[k] / 2.0;
    EXPECT_NEAR(expansion, i < 3 ? alpha : 0.0, 1e-12) << i;
    EXPECT_NEAR(run.records[6].meanStrain[i], 0.0, 1e-14) << i;
  }
  EXPECT_LT(run.records[6].meanStress[0], 0.0);
}

}  // namespace
}  // namespace gridmoor
