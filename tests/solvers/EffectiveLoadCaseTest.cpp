// Effective matrices from the homogenization load cases: the unit cases solved by the load
// step solver, their responses kept and paired through the temporary files, and the matrices
// of both principles against exact solutions.
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

constexpr double kIncrement = 0.01;

struct CaseRun {
  std::array<LoadCaseRecord, 7> records;
  std::unique_ptr<LoadCaseResponses> responses;
};

// Solves the cases in `cases` (bit 6: thermal) of a problem through the temporary files of a
// fresh directory, as the run does within a step.
CaseRun runCases(Problem& p, const Grid& g, unsigned cases, const std::string& name) {
  KeywordsElasticity& k = p.keywords;
  k.iterativeMethod.set("NeumannSeries");
  k.greenOperator.set(GreenOperatorType::Basic);
  k.maxIter.set(5000);
  k.maxRunTime.set(0);
  k.convergenceCriterion.set(1e-12);
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
