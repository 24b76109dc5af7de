// Validation of the strain formulation's Neumann series against exact solutions: homogeneous
// material, zero load, and laminates whose interfaces lie on voxel planes.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "SolverTestSupport.h"

namespace gridmoor {
namespace {

using namespace solver_test;
double maxAbs(const Vector6& v) {
  double m = 0.0;
  for (double x : v) m = std::max(m, std::abs(x));
  return m;
}

TEST(NeumannHomogeneous, StrainLoadIsExactAfterTheFirstStep) {
  const Grid grid{4, 6, 5};
  Problem problem(grid, std::vector<Colour>(4 * 6 * 5, 0), {lameOf(210.0, 0.3)});
  // A reference far from the law, so that only the exact fixed point survives a step.
  problem.ctx.reference = ReferenceConstants::of(7.0, 40.0);
  const Voigt e{0.01, -0.002, 0.003, 0.004, -0.005, 0.006};
  const NeumannResult r = problem.solve(MacroscopicLoad::strain(e), 1e-10, 50);
  // The first iteration compares against the empty history; the second sees no change.
  EXPECT_EQ(r.iterations, 2);
  EXPECT_FALSE(r.limitReached);
  for (std::uint64_t x : {0u, 3u})
    for (std::uint64_t z : {0u, 4u}) {
      const Voigt v = problem.at(x, 5, z);
      for (int c = 0; c < 6; ++c) EXPECT_NEAR(v[c], e[c], 1e-15) << "component " << c;
    }
}

TEST(NeumannHomogeneous, StressLoadConvergesToTheCompliance) {
  const Grid grid{3, 4, 5};
  const Lame law = lameOf(100.0, 0.25);
  Problem problem(grid, std::vector<Colour>(60, 0), {law});
  const Voigt s{1.0, 0.5, -0.25, 0.2, 0.0, -0.1};
  const NeumannResult r = problem.solve(MacroscopicLoad::stress(s), 1e-13, 2000);
  EXPECT_FALSE(r.limitReached);
  EXPECT_GT(r.iterations, 2);  // the mean is corrected step by step
  const Vector6 expected = solve(stiffnessOf(law), s);
  const Voigt v = problem.at(2, 3, 4);
  for (int c = 0; c < 6; ++c) EXPECT_NEAR(v[c], expected[c], 1e-10) << "component " << c;
}

TEST(NeumannHomogeneous, ZeroLoadLeavesZero) {
  const Grid grid{4, 4, 6};
  Problem problem(grid, laminateColours(grid, 2, 3), {lameOf(10.0, 0.3), lameOf(100.0, 0.2)});
  const NeumannResult strain = problem.solve(MacroscopicLoad::strain({}), 1e-8, 20);
  EXPECT_EQ(strain.iterations, 1);
  EXPECT_EQ(problem.field->getFieldNorm(), 0.0);
  const NeumannResult stress = problem.solve(MacroscopicLoad::stress({}), 1e-8, 20);
  EXPECT_EQ(stress.iterations, 1);
  EXPECT_EQ(problem.field->getFieldNorm(), 0.0);
}

struct LaminateCase {
  GreenOperatorType discretisation;
  double contrast;
  int axis;
  Grid grid;
};

std::string caseName(const LaminateCase& c) {
  return std::string(c.discretisation == GreenOperatorType::Basic ? "Basic" : "StaggeredGrid") +
         "_contrast" + std::to_string(static_cast<int>(c.contrast)) + "_axis" +
         std::to_string(c.axis) + "_" + std::to_string(c.grid[0]) + "x" +
         std::to_string(c.grid[1]) + "x" + std::to_string(c.grid[2]);
}

// ctest lists a parameter by its printed form: the case's name, not its bytes.
void PrintTo(const LaminateCase& c, std::ostream* out) { *out << caseName(c); }

class NeumannLaminate : public testing::TestWithParam<LaminateCase> {
 protected:
  // Layer 1 (stiff) takes `thickness` planes along the axis, layer 0 the rest.
  void checkLayers(Problem& problem, const LaminateStrains& exact, std::uint64_t thickness,
                   double tolerance) {
    const LaminateCase& c = GetParam();
    const double scale = std::max(maxAbs(exact.layer0), maxAbs(exact.layer1));
    for (std::uint64_t x = 0; x < c.grid[0]; ++x)
      for (std::uint64_t y = 0; y < c.grid[1]; ++y)
        for (std::uint64_t z = 0; z < c.grid[2]; ++z) {
          const std::uint64_t coord[3] = {x, y, z};
          const Vector6& expected = coord[c.axis] < thickness ? exact.layer1 : exact.layer0;
          const Voigt v = problem.at(x, y, z);
          for (int k = 0; k < 6; ++k)
            ASSERT_NEAR(v[k], expected[k], tolerance * scale)
                << "voxel " << x << "," << y << "," << z << " component " << k;
        }
  }
};

TEST_P(NeumannLaminate, StrainLoadGivesTheExactLayerStrains) {
  const LaminateCase& c = GetParam();
  const std::uint64_t thickness = c.grid[c.axis] / 3;
  const Lame soft = lameOf(1.0, 0.3);
  const Lame stiff = lameOf(c.contrast, 0.2);
  Problem problem(c.grid, laminateColours(c.grid, c.axis, thickness), {soft, stiff},
                  c.discretisation);
  const Voigt e{0.01, -0.003, 0.002, 0.004, -0.006, 0.005};
  const NeumannResult r = problem.solve(MacroscopicLoad::strain(e), 1e-14, 200000);
  EXPECT_FALSE(r.limitReached);
  const Vector6 mean = e;
  const double f1 = static_cast<double>(thickness) / static_cast<double>(c.grid[c.axis]);
  const LaminateStrains exact =
      laminateUnderStrain(stiffnessOf(soft), stiffnessOf(stiff), f1, c.axis, mean);
  checkLayers(problem, exact, thickness, 1e-8);
}

TEST_P(NeumannLaminate, StressLoadGivesTheExactLayerStrains) {
  const LaminateCase& c = GetParam();
  const std::uint64_t thickness = c.grid[c.axis] / 2;
  const Lame soft = lameOf(1.0, 0.3);
  const Lame stiff = lameOf(c.contrast, 0.2);
  Problem problem(c.grid, laminateColours(c.grid, c.axis, thickness), {soft, stiff},
                  c.discretisation);
  const Voigt s{0.01, -0.003, 0.002, 0.004, -0.006, 0.005};
  const NeumannResult r = problem.solve(MacroscopicLoad::stress(s), 1e-14, 200000);
  EXPECT_FALSE(r.limitReached);
  const double f1 = static_cast<double>(thickness) / static_cast<double>(c.grid[c.axis]);
  const Matrix6 c0 = stiffnessOf(soft), c1 = stiffnessOf(stiff);
  const Vector6 mean = laminateMeanStrainUnderStress(c0, c1, f1, c.axis, s);
  const LaminateStrains exact = laminateUnderStrain(c0, c1, f1, c.axis, mean);
  checkLayers(problem, exact, thickness, 1e-7);
  // The mean stress of the solution is the prescribed one.
  FFTImage stress(6, c.grid[0], c.grid[1], c.grid[2], "stress");
  problem.field->computeStress(stress, problem.ctx);
  const ResultAverages averages = problem.field->computeAverages(stress, problem.ctx);
  for (int k = 0; k < 6; ++k) EXPECT_NEAR(averages.overall.stress[k], s[k], 1e-9) << k;
}

// A voxel of "Q1FE" holds eight integration points, each weighing 1/8. The exact laminate is
// in its element space, so every point holds the exact layer strain; the averages, the
// fractions and the face tractions of the voxels' point means are the exact laminate's, as
// under the one-point "Basic" scheme.
TEST(NeumannLaminateAverages, EveryDiscretisationGivesTheExactLaminateMeans) {
  const Grid grid{4, 3, 6};
  const std::uint64_t thickness = 2;
  const double f1 = 1.0 / 3.0;
  const Lame soft = lameOf(1.0, 0.3), stiff = lameOf(20.0, 0.2);
  const Matrix6 c0 = stiffnessOf(soft), c1 = stiffnessOf(stiff);
  const Voigt e{0.01, -0.003, 0.002, 0.004, -0.006, 0.005};
  const LaminateStrains exact = laminateUnderStrain(c0, c1, f1, 2, e);
  const Vector6 s0 = multiply(c0, exact.layer0), s1 = multiply(c1, exact.layer1);
  Vector6 mean{};
  for (int k = 0; k < 6; ++k) mean[k] = (1.0 - f1) * s0[k] + f1 * s1[k];
  for (const GreenOperatorType scheme : {GreenOperatorType::Basic, GreenOperatorType::Q1FE}) {
    SCOPED_TRACE(scheme == GreenOperatorType::Basic ? "Basic" : "Q1FE");
    Problem problem(grid, laminateColours(grid, 2, thickness), {soft, stiff}, scheme);
    ASSERT_EQ(problem.field->pointsPerVoxel(), scheme == GreenOperatorType::Basic ? 1u : 8u);
    const NeumannResult r = problem.solve(MacroscopicLoad::strain(e), 1e-13, 100000);
    ASSERT_FALSE(r.limitReached);
    FFTImage stress(problem.field->nComponents, grid[0], grid[1], grid[2], "stress");
    problem.field->computeStress(stress, problem.ctx);
    const ResultAverages a = problem.field->computeAverages(stress, problem.ctx);
    ASSERT_EQ(a.materials.size(), 2u);
    for (int k = 0; k < 6; ++k) {
      EXPECT_NEAR(a.overall.strain[k], e[k], 1e-12) << k;
      EXPECT_NEAR(a.overall.stress[k], mean[k], 1e-9) << k;
      for (const MaterialAverages& m : a.materials) {
        const bool layer1 = m.colour == 1;
        EXPECT_NEAR(m.volumeFraction, layer1 ? f1 : 1.0 - f1, 1e-15);
        EXPECT_NEAR(m.values.strain[k], (layer1 ? exact.layer1 : exact.layer0)[k], 1e-9) << k;
        EXPECT_NEAR(m.values.stress[k], (layer1 ? s1 : s0)[k], 1e-8) << k;
      }
    }
    // The z faces carry the traction that all layers share; an x face cuts both layers.
    const SurfaceForces f = problem.field->computeSurfaceForces(stress, problem.ctx);
    const std::vector<double> zTraction{s0[4], s0[3], s0[2]}, xTraction{mean[0], mean[5], mean[4]};
    for (int j = 0; j < 3; ++j) {
      EXPECT_NEAR(f.zPlus[j], zTraction[j], 1e-8) << j;
      EXPECT_NEAR(f.xPlus[j], xTraction[j], 1e-8) << j;
    }
  }
  // Around a single stiff voxel the points of a voxel differ; their weighted mean over the
  // cell is still the prescribed strain exactly, as the Gauss rule integrates the element
  // gradients exactly.
  std::vector<Colour> inclusion(grid[0] * grid[1] * grid[2], 0);
  inclusion[7] = 1;
  Problem problem(grid, inclusion, {soft, stiff}, GreenOperatorType::Q1FE);
  ASSERT_FALSE(problem.solve(MacroscopicLoad::strain(e), 1e-13, 100000).limitReached);
  double spread = 0.0;
  for (std::uint64_t point = 1; point < 8; ++point)
    for (int k = 0; k < 6; ++k)
      spread = std::max(spread, std::abs(problem.at(1, 1, 1, point)[k] - problem.at(1, 1, 1)[k]));
  EXPECT_GT(spread, 1e-4);
  FFTImage stress(problem.field->nComponents, grid[0], grid[1], grid[2], "stress");
  problem.field->computeStress(stress, problem.ctx);
  const ResultAverages a = problem.field->computeAverages(stress, problem.ctx);
  for (int k = 0; k < 6; ++k) EXPECT_NEAR(a.overall.strain[k], e[k], 1e-12) << k;
}

INSTANTIATE_TEST_SUITE_P(
    NeumannLayers, NeumannLaminate,
    testing::Values(LaminateCase{GreenOperatorType::Basic, 10.0, 0, {6, 4, 5}},
                    LaminateCase{GreenOperatorType::Basic, 1000.0, 1, {3, 9, 4}},
                    LaminateCase{GreenOperatorType::Basic, 100.0, 2, {4, 5, 8}},
                    LaminateCase{GreenOperatorType::StaggeredGrid, 10.0, 2, {5, 4, 6}},
                    LaminateCase{GreenOperatorType::StaggeredGrid, 1000.0, 0, {9, 3, 4}},
                    LaminateCase{GreenOperatorType::StaggeredGrid, 100.0, 1, {4, 6, 5}}),
    [](const testing::TestParamInfo<LaminateCase>& info) { return caseName(info.param); });

}  // namespace
}  // namespace gridmoor
