// The Voigt matrix forms, their rotation (against the independently rotated fourth-order
// tensor) and the LU inverse.
#include "materials/VoigtMatrix.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "LinearElasticTestSupport.h"
#include "materials/LinearElasticMaterialMatrices.h"
#include "materials/VoigtRotation.h"

namespace gridmoor {
namespace {

using namespace linear_elastic_test;

VoigtMatrix symmetricSample() {
  VoigtMatrix c;
  for (int a = 0; a < 6; ++a)
    for (int b = a; b < 6; ++b) c(a, b) = c(b, a) = 1.0 + a + 7.0 * b + (a == b ? 20.0 : 0.0);
  return c;
}

TEST(VoigtMatrix, TensorFormsHaveMinorSymmetriesAndReturnToVoigt) {
  const VoigtMatrix c = symmetricSample();
  const TensorMatrix t = stiffnessTensorOf(c);
  for (int p = 0; p < 9; ++p)
    for (int q = 0; q < 9; ++q) {
      const int transposedP = 3 * (p % 3) + p / 3, transposedQ = 3 * (q % 3) + q / 3;
      EXPECT_EQ(t(p, q), t(transposedP, q));
      EXPECT_EQ(t(p, q), t(p, transposedQ));
    }
  EXPECT_EQ(t(3, 4), c(5, 1));  // shear yx (Voigt 5) against normal yy (Voigt 1)
  EXPECT_EQ(voigtOf(t).m, c.m);

  // The doubled shear form: (yz, yz) and (zy, zy) carry twice C33, the mixed pair stays empty.
  const TensorMatrix d = doubledShearTensorOf(c);
  EXPECT_EQ(d(5, 5), 2.0 * c(3, 3));
  EXPECT_EQ(d(7, 7), 2.0 * c(3, 3));
  EXPECT_EQ(d(5, 7), 0.0);
  EXPECT_EQ(d(0, 4), c(0, 1));
  EXPECT_EQ(d(3, 0), c(5, 0));
}

TEST(VoigtRotation, StiffnessEqualsTheRotatedFourthOrderTensor) {
  // An axis-aligned fibre law and a strongly orthotropic one: no wrong rotation hides in them.
  const VoigtMatrix samples[2] = {
      transversalIsotropicStiffness(170.0, 12.0, 0.31, 0.42, 9.5),
      orthotropicStiffness({150.0, 40.0, 9.0, 0.28, 0.35, 0.22, 17.0, 6.0, 3.5})};
  std::mt19937 rng{20240611};
  std::uniform_real_distribution<double> angle(-M_PI, M_PI);
  for (const VoigtMatrix& c : samples)
    for (int trial = 0; trial < 20; ++trial) {
      const double t1 = angle(rng), t2 = angle(rng), t3 = angle(rng);
      EXPECT_LT(maxDifference(rotateStiffnessXZX(c, t1, t2, t3),
                              rotatedThroughTensor(c, xzxRotation(t1, t2, t3))),
                1e-10 * 170.0);
      // Each axis alone, so that sign errors of the two cannot cancel.
      EXPECT_LT(maxDifference(rotateStiffness(c, RotationAxis::Z, t2),
                              rotatedThroughTensor(c, axisRotation(2, t2))),
                1e-10 * 170.0);
    }
}

TEST(LinearElasticMatrices, LUInverseNeedsRowExchangesAndDoesNotCheckSingularity) {
  // Zero leading entries everywhere: no inverse without row exchanges.
  VoigtMatrix permuted;
  const int order[6] = {3, 0, 5, 1, 4, 2};
  for (int a = 0; a < 6; ++a) {
    permuted(a, order[a]) = 2.0 + a;
    permuted(a, (order[a] + 1) % 6) = 0.5;
  }
  ASSERT_EQ(permuted(0, 0), 0.0);
  EXPECT_LT(distanceToIdentity(multiply(permuted, invertByLU(permuted))), 1e-13);

  // A singular matrix is not reported: its inverse holds non-finite entries.
  VoigtMatrix singular = permuted;
  for (int b = 0; b < 6; ++b) singular(4, b) = 2.0 * singular(1, b);
  bool anyNonFinite = false;
  for (double v : invertByLU(singular).m) anyNonFinite = anyNonFinite || !std::isfinite(v);
  EXPECT_TRUE(anyNonFinite);
}

}  // namespace
}  // namespace gridmoor
