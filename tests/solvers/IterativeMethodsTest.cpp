// The Krylov and accelerated methods against the Neumann series on sphere composites of an odd
// and an even grid, their stall thresholds, a law that is not affine linear, the residuum line
// and the products of the field algebra.
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

struct SolveOptions {
  // "e0" is allocated as for laws that are not affine linear.
  bool keepB = false;
  bool residuum = false;
  bool reportStall = true;
};

// Solves `problem` with `method` on fresh fields of the run's table and returns the volume mean
// of the stress; the solution is left in problem.field.
Outcome solveWith(Problem& problem, const std::string& method, const MacroscopicLoad& load,
                  double tolerance, const SolveOptions& with = {}) {
  const Grid g{problem.field->nFirst, problem.field->nSecond, problem.field->nThird};
  problem.keywords.iterativeMethod.set(method);
  problem.keywords.greenOperator.set(GreenOperatorType::Basic);
  problem.keywords.linearizeWithNR.set(with.keepB);
  SolverFields fields =
      allocateSolverFields(problem.keywords, problem.materials, problem.geometry, g, true);
  problem.keywords.linearizeWithNR.set(false);
  fields.deltaE->createPlans("Estimate");
  ConvergenceSettings settings;
  settings.tolerance = tolerance;
  settings.maxIter = 3000;
  MethodOptions options;
  options.calculateResiduum = with.residuum;
  options.reportStall = with.reportStall;
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

// What a tolerance guarantees: the simple criterion compares successive norms |x|, and an
// update d orthogonal to x changes the norm by only |d|^2 / (2 |x|). A change below tol |x| so
// still lets x move by sqrt(2 tol) |x|, which bounds how far the answer may be off.
double boundOf(double tolerance) { return std::sqrt(2.0 * tolerance); }

// A sphere of contrast 50 on an odd grid and on an even one, where the "Basic" operator's
// Nyquist modes leave the step's map slightly non-self-adjoint.
class IterativeMethodsSphere : public ::testing::TestWithParam<std::uint64_t> {
 protected:
  IterativeMethodsSphere()
      : problem({GetParam(), GetParam(), GetParam()},
                sphereColours(GetParam(), 0.29 * static_cast<double>(GetParam())),
                {lameOf(1.0, 0.3), lameOf(50.0, 0.2)}) {}
  Problem problem;
};

// Every method finds the columns of the effective stiffness that the Neumann series finds,
// whether L is the unloaded step or T - b, with the products counted as the report needs.
TEST_P(IterativeMethodsSphere, EveryMethodReachesTheNeumannStiffness) {
  const std::array<Voigt, 2> strains = {Voigt{1, 0, 0, 0, 0, 0}, Voigt{0, 0, 0, 1, 0, 0}};
  for (const Voigt& e : strains) {
    const MacroscopicLoad load = MacroscopicLoad::strain(e);
    const Outcome neumann = solveWith(problem, "NeumannSeries", load, 1e-13);
    ASSERT_FALSE(neumann.result.limitReached);
    for (const char* method : {"CG", "slowCG", "BiCGSTAB", "MINRES", "LSQR"})
      for (bool keepB : {false, true}) {
        // LSQR's iterate creeps where its residual plateaus: it needs the tighter criterion.
        const double tolerance = std::string(method) == "LSQR" ? 1e-12 : 1e-10;
        const Outcome o = solveWith(problem, method, load, tolerance, {.keepB = keepB});
        SCOPED_TRACE(std::string(method) + (keepB ? " with e0" : " without e0"));
        EXPECT_FALSE(o.result.limitReached);
        EXPECT_LT(relativeDistance(o.meanStress, neumann.meanStress), boundOf(tolerance));
        // Far fewer iterations than the series on a contrast of 50.
        if (std::string(method) != "LSQR") {
          EXPECT_LT(o.result.iterations, neumann.result.iterations / 2);
        }
        EXPECT_EQ(o.counters.iterations, o.result.iterations);
        // Products: b, A r for MINRES and LSQR (MINRES's last iteration forms no new pair),
        // then those of each iteration; the step forming the start residual is none.
        const std::map<std::string, std::pair<int, int>> products = {
            {"CG", {1, 1}}, {"slowCG", {0, 1}}, {"BiCGSTAB", {1, 2}}, {"MINRES", {1, 1}},
            {"LSQR", {2, 2}}};
        const auto [before, each] = products.at(method);
        EXPECT_EQ(o.counters.matrixVectorProducts, before + each * o.result.iterations);
      }
  }
}

// A reference with lambda0 != 0 couples the traces in the energy product (its values are
// checked below, in FieldAlgebra): the Krylov methods reach the same field with it. MINRES,
// LSQR and BiCGSTAB are held against CG, CG against the series.
TEST_P(IterativeMethodsSphere, KrylovMethodsAgreeUnderACoupledReference) {
  problem.ctx.reference = ReferenceConstants::of(30.0, problem.ctx.reference.mu0);
  const MacroscopicLoad load = MacroscopicLoad::strain({0.3, -0.1, 0.2, 0.1, 0, 0});
  const Outcome neumann = solveWith(problem, "NeumannSeries", load, 1e-13);
  const Outcome cg = solveWith(problem, "CG", load, 1e-11);
  EXPECT_LT(relativeDistance(cg.meanStress, neumann.meanStress), boundOf(1e-11));
  for (const char* method : {"BiCGSTAB", "MINRES", "LSQR"}) {
    const double tolerance = std::string(method) == "LSQR" ? 1e-12 : 1e-10;
    const Outcome o = solveWith(problem, method, load, tolerance);
    SCOPED_TRACE(method);
    EXPECT_FALSE(o.result.limitReached);
    EXPECT_LT(relativeDistance(o.meanStress, cg.meanStress),
              boundOf(tolerance) + boundOf(1e-11));
  }
}

INSTANTIATE_TEST_SUITE_P(OddAndEvenGrid, IterativeMethodsSphere, ::testing::Values(11, 10));

// A homogeneous material has L = 0: the start field b is exact and each method stops at its
// first product. The stall thresholds are absolute sums over the voxels: on a laminate whose
// first product is 0.84 e^2 (0.588 e^2 for MINRES's |A r|^2) under a strain e, loads a factor
// of three below and above each threshold's crossing stall at once or go on.
TEST(IterativeMethodsStall, KrylovMethodsStallOnlyBelowTheirThresholds) {
  struct Expected {
    const char* method;
    int iterations;
    int products;
    double crossing;  // the load at which the first product meets the threshold
  };
  const std::array<Expected, 4> expected = {Expected{"CG", 1, 2, std::sqrt(1e-16 / 0.84)},
                                            Expected{"BiCGSTAB", 1, 2, std::sqrt(1e-20 / 0.84)},
                                            Expected{"MINRES", 0, 2, std::sqrt(1e-16 / 0.588)},
                                            Expected{"LSQR", 0, 1, 0.0}};
  const Grid g{4, 5, 6};
  Problem homogeneous(g, std::vector<Colour>(120, 0), {lameOf(210.0, 0.3)});
  Problem laminate(g, laminateColours(g, 2, 3), {lameOf(1.0, 0.3), lameOf(2.0, 0.3)});
  const Voigt e{0.01, -0.002, 0.003, 0.004, -0.005, 0.006};
  for (const Expected& x : expected) {
    SCOPED_TRACE(x.method);
    const Outcome o = solveWith(homogeneous, x.method, MacroscopicLoad::strain(e), 1e-10);
    EXPECT_EQ(o.result.iterations, x.iterations);
    EXPECT_EQ(o.counters.matrixVectorProducts, x.products);
    EXPECT_NE(o.out.find(std::string(x.method) + " stopped: "), std::string::npos) << o.out;
    for (std::uint64_t at : {0u, 3u}) {
      const Voigt v = homogeneous.at(at, 4, 5);
      for (int c = 0; c < 6; ++c) EXPECT_NEAR(v[c], e[c], 1e-15) << "component " << c;
    }
    if (x.crossing == 0.0) continue;
    const Outcome below = solveWith(laminate, x.method,
                                    MacroscopicLoad::strain({x.crossing / 3, 0, 0, 0, 0, 0}), 1e-10);
    EXPECT_EQ(below.result.iterations, x.iterations);
    EXPECT_NE(below.out.find(" stopped: "), std::string::npos) << below.out;
    const Outcome above = solveWith(laminate, x.method,
                                    MacroscopicLoad::strain({3 * x.crossing, 0, 0, 0, 0, 0}), 1e-10);
    EXPECT_GT(above.result.iterations, x.iterations);
  }
  // Where the caller wants no note (a Newton-Raphson solve, an earlier load step), the
  // iteration's line is only closed.
  const Outcome quiet =
      solveWith(homogeneous, "CG", MacroscopicLoad::strain(e), 1e-10, {.reportStall = false});
  EXPECT_EQ(quiet.out.find("stopped"), std::string::npos) << quiet.out;
  EXPECT_EQ(quiet.out.back(), '\n');
}

// sigma = C e + k |e| e: not affine linear, free of history, so the linear routines solve it.
class StiffeningLaw : public IsotropicLinearElasticMaterial {
 public:
  StiffeningLaw(const Lame& lame, double k)
      : IsotropicLinearElasticMaterial("stiffening", lame.lambda, lame.mu), k_(k) {}
  bool isLinear() const override { return false; }
  bool isAffinLinearStrain() const override { return false; }
  using IsotropicLinearElasticMaterial::S;
  void S(int, VoxelIndex, VoxelIndex, VoxelIndex, const double* e, double* s) override {
    multiplyStiffness(e, s);
    const double norm = std::sqrt(e[0] * e[0] + e[1] * e[1] + e[2] * e[2] +
                                  0.5 * (e[3] * e[3] + e[4] * e[4] + e[5] * e[5]));
    for (int c = 0; c < 6; ++c) s[c] += k_ * norm * (c < 3 ? e[c] : 0.5 * e[c]);
  }

 private:
  double k_;
};

// CG on a law that is not affine linear (the material checks warn of it): b is kept in "e0",
// and the answer is the series' one up to CG's first-order error in the law's
// non-linearity, whose share of the stress here is k |e| / E = 1e-4.
TEST(IterativeMethodsNonlinear, CGKeepsTheStartAndFollowsTheSeries) {
  const std::uint64_t n = 9;
  Problem problem({n, n, n}, sphereColours(n, 2.7), {lameOf(1.0, 0.3), lameOf(10.0, 0.3)});
  auto* law = new StiffeningLaw(lameOf(1.0, 0.3), 0.01);
  law->colour = 0;
  problem.materials.addMaterial(0, std::make_unique<Material>(law, nullptr));
  problem.keywords.iterativeMethod.set("CG");
  const SolverFields fields =
      allocateSolverFields(problem.keywords, problem.materials, problem.geometry, {n, n, n}, true);
  EXPECT_EQ(fields.methodFields.count("e0"), 1u);
  const MacroscopicLoad load = MacroscopicLoad::strain({0.01, 0, 0, 0, 0, 0});
  const Outcome neumann = solveWith(problem, "NeumannSeries", load, 1e-13);
  const Outcome cg = solveWith(problem, "CG", load, 1e-10);
  EXPECT_FALSE(cg.result.limitReached);
  EXPECT_LT(relativeDistance(cg.meanStress, neumann.meanStress), 1e-4);
}

TEST_P(IterativeMethodsSphere, ResiduumIsPrintedAndFallsWithConvergence) {
  const MacroscopicLoad load = MacroscopicLoad::strain({0, 1, 0, 0, 0, 0});
  auto residuumOf = [](const std::string& out) {
    const std::size_t at = out.find("relative Residuum = ");
    EXPECT_NE(at, std::string::npos) << out;
    return at == std::string::npos ? -1.0 : std::stod(out.substr(at + 20));
  };
  const Outcome tight = solveWith(problem, "CG", load, 1e-11, {.residuum = true});
  const Outcome loose = solveWith(problem, "CG", load, 1e-1, {.residuum = true});
  EXPECT_LT(residuumOf(tight.out), 1e-6);
  EXPECT_GT(residuumOf(loose.out), 100 * residuumOf(tight.out));
  // The series has no work field of its own: the table adds one for the residuum.
  problem.keywords.calculateResiduum.set(true);
  const Outcome neumann = solveWith(problem, "NeumannSeries", load, 1e-9, {.residuum = true});
  EXPECT_LT(residuumOf(neumann.out), 1e-6);
}

// A strain field whose voxel loop does not read a step input: the input is formed in a pass
// before the step, as for the formulations that do not read it themselves.
class StrainImageFormingItsInput : public StrainImage {
 public:
  using StrainImage::StrainImage;

 protected:
  bool readsStepInput() const override { return false; }
};

// The step of a combination of fields (the stepped field itself among them) is the step of
// the combination formed first, whether the voxel loop reads it or a pass forms it, and the
// combination is stored where asked.
TEST(StepInput, TheVoxelLoopReadsTheCombinationAsAPassWouldFormIt) {
  const Grid g{6, 5, 4};
  Problem problem(g, laminateColours(g, 0, 2), {lameOf(1.0, 0.3), lameOf(7.0, 0.2)});
  const GreenOperatorSettings settings =
      GreenOperatorSettings::of(GreenOperatorType::Basic, FilterType::None, true);
  StrainImage fused(settings, g[0], g[1], g[2], "fused");
  StrainImageFormingItsInput formed(settings, g[0], g[1], g[2], "formed");
  StrainImage plain(settings, g[0], g[1], g[2], "plain");
  StrainImage u(settings, g[0], g[1], g[2], "u"), v(settings, g[0], g[1], g[2], "v");
  StrainImage fusedStore(settings, g[0], g[1], g[2], "a"), formedStore(settings, g[0], g[1], g[2], "b");
  for (StrainImage* f : {&fused, static_cast<StrainImage*>(&formed), &plain}) f->createPlans("Estimate");
  for (std::size_t i = 0; i < u.size(); ++i) {
    u.data()[i] = std::sin(0.37 * static_cast<double>(i));
    v.data()[i] = std::cos(0.11 * static_cast<double>(i));
    fused.data()[i] = formed.data()[i] = 0.01 * std::sin(0.05 * static_cast<double>(i));
  }
  static_cast<FFTImage&>(plain) = fused;
  const std::uint64_t nc = plain.nComponents;
  voxelPass<0>(plain, [&](std::uint64_t o, std::array<double, 0>&) {
    for (std::uint64_t c = 0; c < nc; ++c)
      plain.data()[o + c] = 0.7 * u.data()[o + c] - 1.3 * v.data()[o + c] + 2.0 * plain.data()[o + c];
  });
  const MacroscopicLoad load = MacroscopicLoad::strain({0.01, 0, 0, 0.02, 0, 0});
  fused.step(StepKind::Linear, problem.ctx, load,
             StepInput().add(0.7, u).add(-1.3, v).add(2.0, fused).storedIn(fusedStore));
  formed.step(StepKind::Linear, problem.ctx, load,
              StepInput().add(0.7, u).add(-1.3, v).add(2.0, formed).storedIn(formedStore));
  voxelPass<0>(fusedStore, [&](std::uint64_t o, std::array<double, 0>&) {
    for (std::uint64_t c = 0; c < nc; ++c) {
      EXPECT_NEAR(fusedStore.data()[o + c], plain.data()[o + c], 1e-15);
      EXPECT_NEAR(formedStore.data()[o + c], plain.data()[o + c], 1e-15);
    }
  });
  plain.step(StepKind::Linear, problem.ctx, load);
  voxelPass<0>(plain, [&](std::uint64_t o, std::array<double, 0>&) {
    for (std::uint64_t c = 0; c < nc; ++c) {
      EXPECT_NEAR(fused.data()[o + c], plain.data()[o + c], 1e-15);
      EXPECT_NEAR(formed.data()[o + c], plain.data()[o + c], 1e-15);
    }
  });
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
