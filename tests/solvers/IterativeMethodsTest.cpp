// The Krylov and accelerated methods against the Neumann series on a sphere composite, their
// stall on a homogeneous material, the routine rules of the dispatch and the residuum line.
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <sstream>
#include <string>

#include "SolverTestSupport.h"
#include "solvers/FieldAlgebra.h"
#include "solvers/IterativeMethods.h"
#include "solvers/LoadStepSolver.h"

namespace gridmoor {
namespace {

using namespace solver_test;

std::vector<Colour> sphereColours(std::uint64_t n, double radius) {
  std::vector<Colour> colours;
  const double c = (static_cast<double>(n) - 1.0) / 2.0;
  for (std::uint64_t x = 0; x < n; ++x)
    for (std::uint64_t y = 0; y < n; ++y)
      for (std::uint64_t z = 0; z < n; ++z) {
        const double dx = x - c, dy = y - c, dz = z - c;
        colours.push_back(dx * dx + dy * dy + dz * dz <= radius * radius ? 1 : 0);
      }
  return colours;
}

struct Outcome {
  NeumannResult result;
  SolverCounters counters;
  Vector6 meanStress{};
  std::string out;
};

// Solves `problem` with `method` on fresh fields of the run's table (keepB: "e0" is allocated
// as for laws that are not affine linear) and returns the volume mean of the stress.
Outcome solveWith(Problem& problem, const std::string& method, const MacroscopicLoad& load,
                  double tolerance, bool keepB = false, bool residuum = false) {
  const Grid g{problem.field->nFirst, problem.field->nSecond, problem.field->nThird};
  problem.keywords.iterativeMethod.set(method);
  problem.keywords.greenOperator.set(GreenOperatorType::Basic);
  problem.keywords.linearizeWithNR.set(keepB);
  SolverFields fields =
      allocateSolverFields(problem.keywords, problem.materials, problem.geometry, g, true);
  problem.keywords.linearizeWithNR.set(false);
  EXPECT_EQ(fields.methodFields.count("e0") == 1, keepB) << method;
  fields.deltaE->createPlans("Estimate");
  ConvergenceSettings settings;
  settings.tolerance = tolerance;
  settings.maxIter = 3000;
  MethodOptions options;
  options.calculateResiduum = residuum;
  Outcome o;
  std::ostringstream out, err;
  o.result = solveWithMethod(method, fields, problem.ctx, load, options, settings, o.counters, out,
                             err);
  o.out = out.str();
  FFTImage stress(6, g[0], g[1], g[2], "stress");
  fields.deltaE->computeStress(stress, problem.ctx);
  const double voxels = static_cast<double>(g[0] * g[1] * g[2]);
  const auto sums = voxelPass<6>(stress, [&](std::uint64_t off, std::array<double, 6>& s) {
    for (int c = 0; c < 6; ++c) s[c] += stress.data()[off + c];
  });
  for (int c = 0; c < 6; ++c) o.meanStress[c] = sums[c] / voxels;
  // The iterate of the method is the primary field.
  static_cast<FFTImage&>(*problem.field) = *fields.deltaE;
  return o;
}

double relativeDistance(const Vector6& a, const Vector6& b) {
  double d = 0.0, s = 0.0;
  for (int c = 0; c < 6; ++c) {
    d += (a[c] - b[c]) * (a[c] - b[c]);
    s += b[c] * b[c];
  }
  return std::sqrt(d / s);
}

class IterativeMethodsSphere : public ::testing::Test {
 protected:
  // An odd grid: on even axes the Nyquist modes of the "Basic" operator are not Hermitian,
  // which leaves the map slightly non-self-adjoint, and MINRES then stalls short of the
  // solution.
  static constexpr std::uint64_t n = 11;
  IterativeMethodsSphere()
      : problem({n, n, n}, sphereColours(n, 3.2), {lameOf(1.0, 0.3), lameOf(50.0, 0.2)}) {}
  Problem problem;
};

// Every method finds the columns of the effective stiffness that the Neumann series finds,
// to within what the tolerance allows, whether L is the unloaded step or T - b.
TEST_F(IterativeMethodsSphere, EveryMethodReachesTheNeumannStiffness) {
  const std::array<Voigt, 2> strains = {Voigt{1, 0, 0, 0, 0, 0}, Voigt{0, 0, 0, 1, 0, 0}};
  for (const Voigt& e : strains) {
    const MacroscopicLoad load = MacroscopicLoad::strain(e);
    const Outcome neumann = solveWith(problem, "NeumannSeries", load, 1e-12);
    ASSERT_FALSE(neumann.result.limitReached);
    for (const char* method : {"CG", "slowCG", "BiCGSTAB", "MINRES", "LSQR"})
      for (bool keepB : {false, true}) {
        // The criterion watches the change of |x|, which lags the error of x itself; most of
        // all in LSQR, whose iterate creeps along where its residual plateaus.
        const double tolerance = std::string(method) == "LSQR" ? 1e-12 : 1e-10;
        const Outcome o = solveWith(problem, method, load, tolerance, keepB);
        SCOPED_TRACE(std::string(method) + (keepB ? " with e0" : " without e0"));
        EXPECT_FALSE(o.result.limitReached);
        EXPECT_LT(relativeDistance(o.meanStress, neumann.meanStress), 1e-6);
        // Far fewer iterations than the series on a contrast of 50.
        if (std::string(method) != "LSQR") {
          EXPECT_LT(o.result.iterations, neumann.result.iterations / 2);
        }
        EXPECT_EQ(o.counters.iterations, o.result.iterations);
        // Products: b (the step forming the start residual is not one), A r for MINRES and
        // LSQR (MINRES's last iteration forms no new direction), then those of each iteration.
        const std::map<std::string, std::pair<int, int>> products = {
            {"CG", {1, 1}}, {"slowCG", {0, 1}}, {"BiCGSTAB", {1, 2}}, {"MINRES", {1, 1}},
            {"LSQR", {2, 2}}};
        const auto [before, each] = products.at(method);
        EXPECT_EQ(o.counters.matrixVectorProducts, before + each * o.result.iterations);
      }
  }
}

// A reference with lambda0 != 0 couples the traces in the energy product: the symmetric
// methods only converge to the right field when their product carries that coupling.
TEST_F(IterativeMethodsSphere, SymmetricMethodsUseTheReferenceEnergyProduct) {
  problem.ctx.reference = ReferenceConstants::of(30.0, problem.ctx.reference.mu0);
  const MacroscopicLoad load = MacroscopicLoad::strain({0.3, -0.1, 0.2, 0.1, 0, 0});
  const Outcome neumann = solveWith(problem, "NeumannSeries", load, 1e-11);
  for (const char* method : {"CG", "MINRES"}) {
    const Outcome o = solveWith(problem, method, load, 1e-9);
    SCOPED_TRACE(method);
    EXPECT_FALSE(o.result.limitReached);
    EXPECT_LT(relativeDistance(o.meanStress, neumann.meanStress), 1e-6);
  }
}

TEST(IterativeMethodsHomogeneous, KrylovMethodsStopAtOnceWithTheExactField) {
  const Grid g{4, 5, 6};
  Problem problem(g, std::vector<Colour>(120, 0), {lameOf(210.0, 0.3)});
  const Voigt e{0.01, -0.002, 0.003, 0.004, -0.005, 0.006};
  for (const char* method : {"CG", "BiCGSTAB", "MINRES", "LSQR"}) {
    SCOPED_TRACE(method);
    const Outcome o = solveWith(problem, method, MacroscopicLoad::strain(e), 1e-10);
    EXPECT_LE(o.result.iterations, 1);
    EXPECT_NE(o.out.find(std::string(method) + " stopped: "), std::string::npos) << o.out;
    for (std::uint64_t x : {0u, 3u}) {
      const Voigt v = problem.at(x, 4, 5);
      for (int c = 0; c < 6; ++c) EXPECT_NEAR(v[c], e[c], 1e-15) << "component " << c;
    }
  }
}

TEST_F(IterativeMethodsSphere, ResiduumIsPrintedAndFallsWithConvergence) {
  const MacroscopicLoad load = MacroscopicLoad::strain({0, 1, 0, 0, 0, 0});
  auto residuumOf = [](const std::string& out) {
    const std::size_t at = out.find("relative Residuum = ");
    EXPECT_NE(at, std::string::npos) << out;
    return at == std::string::npos ? -1.0 : std::stod(out.substr(at + 20));
  };
  const Outcome tight = solveWith(problem, "CG", load, 1e-11, false, true);
  const Outcome loose = solveWith(problem, "CG", load, 1e-1, false, true);
  EXPECT_LT(residuumOf(tight.out), 1e-6);
  EXPECT_GT(residuumOf(loose.out), 100 * residuumOf(tight.out));
  // The series has no work field of its own: the table adds one for the residuum.
  problem.keywords.calculateResiduum.set(true);
  const Outcome neumann = solveWith(problem, "NeumannSeries", load, 1e-9, false, true);
  EXPECT_LT(residuumOf(neumann.out), 1e-6);
}

// The algebra sees voxel values only: leftovers in the r2c padding never enter a result,
// and the energy product is x . (C0 y) / (2 mu0) with engineering shear.
TEST(FieldAlgebra, ProductsSkipThePaddingAndWeighTheComponents) {
  StrainImage x(GreenOperatorSettings::of(GreenOperatorType::Basic, FilterType::None, true), 2, 2,
                3, "x");
  StrainImage y(GreenOperatorSettings::of(GreenOperatorType::Basic, FilterType::None, true), 2, 2,
                3, "y");
  ASSERT_GT(x.rowStride, x.nThird * 6);
  static_cast<FFTImage&>(x) = 1e6;  // padding keeps this
  static_cast<FFTImage&>(y) = -3e5;
  const double a[6] = {1, 2, 3, 4, 5, 6};
  const double b[6] = {-1, 0.5, 2, -2, 1, 3};
  x.setConstantAtPoints(a);
  y.setConstantAtPoints(b);
  const double lambda0 = 3.0, mu0 = 2.0;
  const FieldProduct energy = FieldProduct::energy(x, ReferenceConstants::of(lambda0, mu0));
  // C0 b in Voigt form: plain shear stress from engineering shear strain.
  const double tr = b[0] + b[1] + b[2];
  double expected = 0.0;
  for (int c = 0; c < 3; ++c) expected += a[c] * (lambda0 * tr + 2 * mu0 * b[c]);
  for (int c = 3; c < 6; ++c) expected += a[c] * mu0 * b[c];
  expected *= 12.0 / (2 * mu0);
  EXPECT_NEAR(dot(x, y, energy), expected, 1e-9);
  EXPECT_NEAR(dot(y, x, energy), expected, 1e-9);
  const FieldProduct tensor = FieldProduct::tensor(x);
  EXPECT_NEAR(std::sqrt(norm2(x, tensor)), x.getFieldNorm(), 1e-12);
  copyValues(x, y);
  EXPECT_EQ(x.data()[x.rowStride - 1], 1e6);
  EXPECT_NEAR(dot(x, y, tensor), norm2(y, tensor), 1e-9);
}

}  // namespace
}  // namespace gridmoor
