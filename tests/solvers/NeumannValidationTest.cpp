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

std::string caseName(const testing::TestParamInfo<LaminateCase>& info) {
  const LaminateCase& c = info.param;
  return std::string(c.discretisation == GreenOperatorType::Basic ? "Basic" : "StaggeredGrid") +
         "_contrast" + std::to_string(static_cast<int>(c.contrast)) + "_axis" +
         std::to_string(c.axis) + "_" + std::to_string(c.grid[0]) + "x" +
         std::to_string(c.grid[1]) + "x" + std::to_string(c.grid[2]);
}

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
  // The layer stresses themselves: the normal traction is one across the interface.
  const Vector6 s0 = multiply(c0, exact.layer0), s1 = multiply(c1, exact.layer1);
  for (int slot : normalSlots(c.axis)) EXPECT_NEAR(s0[slot], s1[slot], 1e-12);
}

INSTANTIATE_TEST_SUITE_P(
    NeumannLayers, NeumannLaminate,
    testing::Values(LaminateCase{GreenOperatorType::Basic, 10.0, 0, {6, 4, 5}},
                    LaminateCase{GreenOperatorType::Basic, 1000.0, 1, {3, 9, 4}},
                    LaminateCase{GreenOperatorType::Basic, 100.0, 2, {4, 5, 8}},
                    LaminateCase{GreenOperatorType::StaggeredGrid, 10.0, 2, {5, 4, 6}},
                    LaminateCase{GreenOperatorType::StaggeredGrid, 1000.0, 0, {9, 3, 4}},
                    LaminateCase{GreenOperatorType::StaggeredGrid, 100.0, 1, {4, 6, 5}}),
    caseName);

}  // namespace
}  // namespace gridmoor
