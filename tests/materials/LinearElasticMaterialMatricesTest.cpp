#include "materials/LinearElasticMaterialMatrices.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "materials/VoigtRotation.h"

namespace gridmoor {
namespace {

double distanceToIdentity(const VoigtMatrix& m) {
  double d = 0.0;
  for (int a = 0; a < 6; ++a)
    for (int b = 0; b < 6; ++b) d = std::max(d, std::abs(m(a, b) - (a == b ? 1.0 : 0.0)));
  return d;
}

class LinearElasticMatrices : public ::testing::Test {
 protected:
  std::mt19937 rng{77};
  double uniform(double lo, double hi) { return std::uniform_real_distribution<double>(lo, hi)(rng); }
};

TEST_F(LinearElasticMatrices, StiffnessTimesComplianceIsTheIdentity) {
  for (int trial = 0; trial < 50; ++trial) {
    const double e = uniform(0.1, 500.0), nu = uniform(-0.9, 0.49);
    const LameConstants lame = lameConstantsOf(e, nu);
    EXPECT_LT(distanceToIdentity(multiply(isotropicStiffness(lame.lambda, lame.mu),
                                          isotropicCompliance(e, nu))),
              1e-9)
        << "E " << e << " nu " << nu;

    const double e1 = uniform(1.0, 400.0), e2 = uniform(1.0, 400.0), g12 = uniform(0.5, 100.0);
    const double nu12 = uniform(0.0, 0.4), nu23 = uniform(0.0, 0.45);
    EXPECT_LT(distanceToIdentity(multiply(transversalIsotropicStiffness(e1, e2, nu12, nu23, g12),
                                          transversalIsotropicCompliance(e1, e2, nu12, nu23, g12))),
              1e-9);

    const OrthotropicConstants k{uniform(1.0, 400.0), uniform(1.0, 400.0), uniform(1.0, 400.0),
                                 uniform(0.0, 0.3),   uniform(0.0, 0.3),   uniform(0.0, 0.3),
                                 uniform(0.5, 100.0), uniform(0.5, 100.0), uniform(0.5, 100.0)};
    EXPECT_LT(distanceToIdentity(multiply(orthotropicStiffness(k), orthotropicCompliance(k))), 1e-9);
  }
}

TEST_F(LinearElasticMatrices, SpecialLawsReduceToTheIsotropicMatrix) {
  // Isotropic parameters given to the transversally isotropic and orthotropic forms.
  const double e = 70.0, nu = 0.33, g = e / (2.0 * (1.0 + nu));
  const LameConstants lame = lameConstantsOf(e, nu);
  const VoigtMatrix iso = isotropicStiffness(lame.lambda, lame.mu);
  const VoigtMatrix ti = transversalIsotropicStiffness(e, e, nu, nu, g);
  const VoigtMatrix orth = orthotropicStiffness({e, e, e, nu, nu, nu, g, g, g});
  for (int i = 0; i < 36; ++i) {
    EXPECT_NEAR(ti.m[i], iso.m[i], 1e-11 * e);
    EXPECT_NEAR(orth.m[i], iso.m[i], 1e-11 * e);
  }
  EXPECT_NEAR(lame.mu, 26.31578947368421, 1e-12);
  EXPECT_NEAR(lame.lambda, 51.083591331269346, 1e-11);
}

TEST_F(LinearElasticMatrices, LUInverseOfGeneralAndPivotingMatrices) {
  VoigtMatrix spd;
  for (int a = 0; a < 6; ++a)
    for (int b = a; b < 6; ++b) spd(a, b) = spd(b, a) = uniform(-1.0, 1.0) + (a == b ? 8.0 : 0.0);
  EXPECT_LT(distanceToIdentity(multiply(spd, invertByLU(spd))), 1e-13);

  // A zero leading entry: no inverse without row exchanges.
  VoigtMatrix permuted;
  const int order[6] = {3, 0, 5, 1, 4, 2};
  for (int a = 0; a < 6; ++a) {
    permuted(a, order[a]) = 2.0 + a;
    permuted(a, (order[a] + 1) % 6) = 0.5;
  }
  ASSERT_EQ(permuted(0, 0), 0.0);
  EXPECT_LT(distanceToIdentity(multiply(permuted, invertByLU(permuted))), 1e-13);

  // A singular matrix is not reported: its inverse holds non-finite entries.
  const VoigtMatrix singular;
  bool anyNonFinite = false;
  for (double v : invertByLU(singular).m) anyNonFinite = anyNonFinite || !std::isfinite(v);
  EXPECT_TRUE(anyNonFinite);
}

TEST_F(LinearElasticMatrices, IsotropicInverseByModuliMatchesLU) {
  for (int trial = 0; trial < 50; ++trial) {
    const double dl = uniform(-50.0, 50.0), dm = uniform(-50.0, 50.0);
    if (std::abs(dl + dm) < 1.0 || std::abs(dm) < 1.0 || std::abs(3.0 * dl + 2.0 * dm) < 1.0) continue;
    const VoigtMatrix byModuli = isotropicInverseByModuli(dl, dm);
    const VoigtMatrix byLU = invertByLU(isotropicStiffness(dl, dm));
    for (int i = 0; i < 36; ++i) EXPECT_NEAR(byModuli.m[i], byLU.m[i], 1e-10) << dl << " " << dm;
  }
}

}  // namespace
}  // namespace gridmoor
