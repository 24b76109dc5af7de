// The strain field class: mixed and rotated macroscopic loads, the per-point operations and
// the divergence measure.
#include <gtest/gtest.h>

#include <cmath>

#include "SolverTestSupport.h"
#include "solvers/MacroscopicRelation.h"

namespace gridmoor {
namespace {

using namespace solver_test;

// Volume averages of strain and stress over the field, with the stiffness of each colour.
void averages(const Problem& p, const Grid& g, const std::vector<Matrix6>& c, Vector6& strain,
              Vector6& stress) {
  strain = {};
  stress = {};
  const double n = static_cast<double>(g[0] * g[1] * g[2]);
  for (std::uint64_t x = 0; x < g[0]; ++x)
    for (std::uint64_t y = 0; y < g[1]; ++y)
      for (std::uint64_t z = 0; z < g[2]; ++z) {
        const Voigt e = p.at(x, y, z);
        const Vector6 s = multiply(c[p.geometry.RealVoxelImage.at(x, y, z)], e);
        for (int k = 0; k < 6; ++k) {
          strain[k] += e[k] / n;
          stress[k] += s[k] / n;
        }
      }
}

TEST(StrainImageLoads, MixedLoadHoldsStrainAndStressComponents) {
  const Grid g{4, 5, 6};
  const Lame soft = lameOf(1.0, 0.3), stiff = lameOf(50.0, 0.2);
  Problem problem(g, laminateColours(g, 2, 2), {soft, stiff});
  MacroscopicLoad load;
  // Strain on XX, YY and XY; stress on ZZ, YZ and XZ (the components across the layers).
  load.values = {0.01, -0.002, 0.3, 0.05, -0.02, 0.004};
  load.stressMask = 0b011100;
  const NeumannResult r = problem.solve(load, 1e-13, 100000);
  EXPECT_FALSE(r.limitReached);
  Vector6 strain, stress;
  averages(problem, g, {stiffnessOf(soft), stiffnessOf(stiff)}, strain, stress);
  for (int k : {0, 1, 5}) EXPECT_NEAR(strain[k], load.values[k], 1e-12) << k;
  for (int k : {2, 3, 4}) EXPECT_NEAR(stress[k], load.values[k], 1e-8) << k;
}

TEST(StrainImageLoads, StressLoadInARotatedFrame) {
  const Grid g{3, 3, 4};
  const Lame law = lameOf(20.0, 0.3);
  Problem problem(g, std::vector<Colour>(36, 0), {law});
  // Load frame turned by 30 degrees about z: its axes are the rows.
  const double c = std::cos(M_PI / 6), s = std::sin(M_PI / 6);
  MacroscopicLoad load = MacroscopicLoad::stress({1.0, 0.0, 0.0, 0.0, 0.0, 0.0});
  load.rotation = {c, s, 0, -s, c, 0, 0, 0, 1};
  problem.solve(load, 1e-14, 10000);
  // Uniaxial stress along the load frame's first axis (c, s, 0) in global coordinates.
  const Vector6 global{c * c, s * s, 0.0, 0.0, 0.0, c * s};
  const Vector6 expected = solve(stiffnessOf(law), global);
  const Voigt v = problem.at(1, 2, 3);
  for (int k = 0; k < 6; ++k) EXPECT_NEAR(v[k], expected[k], 1e-11) << k;
}

TEST(StrainImageLoads, InitialConditionTakesTheReferenceMean) {
  const Grid g{2, 2, 2};
  Problem problem(g, std::vector<Colour>(8, 0), {lameOf(10.0, 0.25)});
  problem.ctx.reference = ReferenceConstants::of(2.0, 3.0);
  MacroscopicLoad load;
  load.values = {0.01, 4.0, 0.0, 0.0, 0.0, 0.0};
  load.stressMask = 0b000010;  // YY as stress, the rest as strain
  problem.field->setInitialCondition(load, problem.ctx);
  // C0 row YY: lambda0 (e11 + e22 + e33) + 2 mu0 e22 = 4 with e11 = 0.01, e33 = 0.
  const double e22 = (4.0 - 2.0 * 0.01) / (2.0 + 6.0);
  const Voigt v = problem.at(1, 0, 1);
  EXPECT_DOUBLE_EQ(v[0], 0.01);
  EXPECT_NEAR(v[1], e22, 1e-15);
  EXPECT_EQ(v[2], 0.0);
}

TEST(StrainImagePoints, ConstantIsAddedAtEveryIntegrationPoint) {
  const Grid g{2, 3, 2};
  const GreenOperatorSettings settings =
      GreenOperatorSettings::of(GreenOperatorType::Q1FE, FilterType::None, false);
  StrainImage field(settings, g[0], g[1], g[2], "E");
  ASSERT_EQ(field.nComponents, 48u);
  static_cast<FFTImage&>(field) = 1.0;
  const double increment[6] = {1, 2, 3, 4, 5, 6};
  field.addConstantToPoints(increment);
  for (std::uint64_t z = 0; z < g[2]; ++z)
    for (std::uint64_t c = 0; c < 48; ++c)
      ASSERT_EQ(field.data()[field.planeStride + 2 * field.rowStride + z * 48 + c],
                1.0 + increment[c % 6]);
  // Tensor norm with engineering shear: each point counts 1+4+9 + (16+25+36)/2 of 1 + increment.
  static_cast<FFTImage&>(field) = 0.0;
  field.addConstantToPoints(increment);
  EXPECT_NEAR(field.getFieldNorm(), std::sqrt(12 * (14.0 + 38.5)), 1e-12);
}

TEST(StrainImageDivergence, VanishesAtTheLaminateSolutionOnly) {
  const Grid g{4, 4, 6};
  Problem problem(g, laminateColours(g, 2, 3), {lameOf(1.0, 0.3), lameOf(10.0, 0.3)});
  FFTImage work(6, g[0], g[1], g[2], "work");
  work.createPlans("Estimate");
  const MacroscopicLoad load = MacroscopicLoad::strain({0.0, 0.0, 0.01, 0.0, 0.0, 0.0});
  problem.field->setInitialCondition(load, problem.ctx);
  const double before = problem.field->getDivergenceNorm(work, problem.ctx);
  EXPECT_GT(before, 1e-3);
  problem.solve(load, 1e-14, 10000);
  problem.field->resetSolverState();
  EXPECT_LT(problem.field->getDivergenceNorm(work, problem.ctx), 1e-10);
}

}  // namespace
}  // namespace gridmoor
