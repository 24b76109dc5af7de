// The step variants: the inline voxel loop of isotropic laws against the general one, the
// Tikhonov-regularised step with a soft phase, and the linearized step of Newton iterations.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "SolverTestSupport.h"

namespace gridmoor {
namespace {

using namespace solver_test;

// The isotropic law under another type: same answers, but the general voxel loop.
class DerivedIsotropic : public IsotropicLinearElasticMaterial {
 public:
  using IsotropicLinearElasticMaterial::IsotropicLinearElasticMaterial;
};

// One step of each loop from the same field, as plain and as history step: the same new
// field and norm. The reference has lambda0 != 0 so that every entry of C - C0 is exercised.
TEST(IsotropicVoxelLoop, AgreesWithTheGeneralLoop) {
  const Grid g{4, 3, 5};
  std::mt19937 gen(3);
  std::vector<Colour> colours(g[0] * g[1] * g[2]);
  for (Colour& c : colours) c = static_cast<Colour>(gen() % 3);
  const std::vector<Lame> laws{lameOf(2.0, 0.3), lameOf(15.0, 0.2), lameOf(7.0, 0.45)};
  Problem fast(g, colours, laws), general(g, colours, laws);
  for (std::size_t c = 0; c < laws.size(); ++c) {
    auto* law = new DerivedIsotropic("derived", laws[c].lambda, laws[c].mu);
    law->colour = static_cast<std::uint32_t>(c);
    general.materials.addMaterial(static_cast<Colour>(c), std::make_unique<Material>(law, nullptr));
  }
  FFTImage start(6, g[0], g[1], g[2], "start"), old(6, g[0], g[1], g[2], "old");
  std::uniform_real_distribution<double> dist(-1.0, 1.0);
  for (double& v : start) v = dist(gen);
  for (double& v : old) v = dist(gen);
  const MacroscopicLoad load = MacroscopicLoad::strain({0.3, -0.1, 0.2, 0.05, 0.0, -0.4});
  for (StepKind kind : {StepKind::Linear, StepKind::Nonlinear}) {
    for (Problem* p : {&fast, &general}) {
      static_cast<FFTImage&>(*p->field) = start;
      p->ctx.reference = ReferenceConstants::of(1.5, 4.0);
      p->ctx.oldField = &old;
    }
    const StepSums a = fast.field->step(kind, fast.ctx, load);
    const StepSums b = general.field->step(kind, general.ctx, load);
    EXPECT_NEAR(a.fieldNormSquared, b.fieldNormSquared, 1e-12 * b.fieldNormSquared);
    for (std::uint64_t x = 0; x < g[0]; ++x)
      for (std::uint64_t y = 0; y < g[1]; ++y)
        for (std::uint64_t z = 0; z < g[2]; ++z) {
          const Voigt u = fast.at(x, y, z), v = general.at(x, y, z);
          for (int k = 0; k < 6; ++k) ASSERT_NEAR(u[k], v[k], 1e-13) << x << y << z << " " << k;
        }
  }
}

// A laminate of a stiff law and a soft layer (all constants zero) under a mean strain with a
// normal and a transverse shear part. The regularised fixed point is known in closed form:
// in-plane strains are the load's everywhere; on each slot k across the layers the stiff
// layer balances its stress plus the pull alpha C0 (e - E) against the soft layer's zero
// traction, and the mean of the field moves by alpha / N times the stiff voxels' mismatch.
TEST(TikhonovStep, SoftLayerLaminateReachesTheRegularisedSolution) {
  const Grid g{3, 4, 8};
  const std::uint64_t softLayers = 2;
  const double f = 1.0 - static_cast<double>(softLayers) / static_cast<double>(g[2]);
  const Lame stiff = lameOf(10.0, 0.3);
  const Vector6 load{0.01, 0.0, 0.0, 0.0, 0.004, 0.0};
  const double hi = 3.0 * stiff.lambda + 2.0 * stiff.mu;

  auto run = [&](double alpha, NeumannResult& result) {
    auto p = std::make_unique<Problem>(g, laminateColours(g, 2, softLayers),
                                       std::vector<Lame>{stiff, Lame{0.0, 0.0}});
    // The reference of the regularised scheme: lambda0 = 0, mu0 near the stiffest law.
    p->ctx.reference = ReferenceConstants::of(0.0, hi / (2.0 * (2.0 - alpha)));
    p->ctx.tikhonovAlpha = alpha;
    result = p->solve(MacroscopicLoad::strain(load), 1e-12, 5000);
    return p;
  };

  NeumannResult plain, regularised;
  run(0.0, plain);
  const double alpha = 0.5;
  const auto p = run(alpha, regularised);
  ASSERT_FALSE(plain.limitReached);
  ASSERT_FALSE(regularised.limitReached);
  // What the regularisation is for: the soft phase no longer stalls the series.
  EXPECT_LT(regularised.iterations, plain.iterations);

  const Matrix6 c = stiffnessOf(stiff);
  const double mu0 = p->ctx.reference.mu0;
  const Vector6 c0{2 * mu0, 2 * mu0, 2 * mu0, mu0, mu0, mu0};
  Vector6 stiffLayer = load, softLayer = load;
  for (int k : normalSlots(2)) {
    double inPlane = 0.0;
    for (int j : {0, 1, 5}) inPlane += c[k][j] * load[j];
    const double m = (alpha * c0[k] * load[k] - inPlane) / (c[k][k] + alpha * c0[k]);
    stiffLayer[k] = m;
    softLayer[k] = (load[k] + alpha * f * (m - load[k]) - f * m) / (1.0 - f);
  }
  // The closed form must differ from the unregularised laminate, or the test shows nothing.
  EXPECT_GT(std::abs(stiffLayer[2] - laminateUnderStrain(c, Matrix6{}, 1.0 - f, 2, load).layer0[2]),
            1e-4);
  for (std::uint64_t x = 0; x < g[0]; ++x)
    for (std::uint64_t y = 0; y < g[1]; ++y)
      for (std::uint64_t z = 0; z < g[2]; ++z) {
        const Voigt v = p->at(x, y, z);
        const Vector6& expected = z < softLayers ? softLayer : stiffLayer;
        for (int k = 0; k < 6; ++k)
          ASSERT_NEAR(v[k], expected[k], 1e-9) << x << " " << y << " " << z << " slot " << k;
      }
}

// For a linear law the Newton step about a converged field e1 is the linear step's
// increment: T(e1 + d) - e1 with the load E2 equals the linearized step of d about e1 with
// the load E2 - E1. The linearized material call returns sigma(e1) + C d, so a step that
// ignores the total field, or takes the increment as the total, fails here.
TEST(LinearizedStep, MatchesTheLinearIncrementAboutAConvergedField) {
  // Odd extents: on an even axis the continuous operator is not a projection at the Nyquist
  // frequencies, and a converged field keeps a small Gamma0 C e1 there.
  const Grid g{5, 3, 7};
  std::mt19937 gen(7);
  std::vector<Colour> colours(g[0] * g[1] * g[2]);
  for (Colour& c : colours) c = static_cast<Colour>(gen() % 2);
  Problem p(g, colours, {lameOf(3.0, 0.3), lameOf(12.0, 0.2)});
  const Vector6 e1Load{0.01, -0.003, 0.002, 0.001, 0.0, -0.004};
  const Vector6 e2Load{0.012, -0.001, 0.0, 0.003, 0.002, -0.004};
  ASSERT_FALSE(p.solve(MacroscopicLoad::strain(e1Load), 1e-15, 20000).limitReached);

  StrainImage& field = *p.field;
  FFTImage e1(6, g[0], g[1], g[2], "e1"), increment(6, g[0], g[1], g[2], "increment");
  FFTImage old(6, g[0], g[1], g[2], "old");
  e1 = field;
  std::uniform_real_distribution<double> dist(-1e-3, 1e-3);
  for (double& v : increment) v = dist(gen);
  // A linear law has no history: whatever the last converged field is must not matter.
  for (double& v : old) v = dist(gen);

  // The linear step from e1 + d.
  for (std::size_t i = 0; i < field.size(); ++i) field[i] = e1[i] + increment[i];
  field.linearStep(p.ctx, MacroscopicLoad::strain(e2Load));
  FFTImage linear(6, g[0], g[1], g[2], "linear");
  linear = field;

  // The linearized step of d about e1.
  static_cast<FFTImage&>(field) = increment;
  Vector6 delta;
  for (int k = 0; k < 6; ++k) delta[k] = e2Load[k] - e1Load[k];
  p.ctx.totalField = &e1;
  p.ctx.oldField = &old;
  field.linearizedStep(p.ctx, MacroscopicLoad::strain(delta));

  double largest = 0.0;
  for (std::uint64_t x = 0; x < g[0]; ++x)
    for (std::uint64_t y = 0; y < g[1]; ++y)
      for (std::uint64_t z = 0; z < g[2]; ++z)
        for (std::uint64_t c = 0; c < 6; ++c) {
          const std::uint64_t at = field.elementIndex(c, x, y, z);
          const double expected = linear[at] - e1[at];
          largest = std::max(largest, std::abs(expected));
          ASSERT_NEAR(field[at], expected, 1e-11) << x << " " << y << " " << z << " " << c;
        }
  EXPECT_GT(largest, 1e-4);
}

}  // namespace
}  // namespace gridmoor
