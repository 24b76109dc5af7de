#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "LinearElasticTestSupport.h"
#include "materials/LinearElasticMaterialMatrices.h"
#include "materials/VoigtRotation.h"

namespace gridmoor {
namespace {

using namespace linear_elastic_test;

// An axis-aligned fibre law and a strongly orthotropic one: no wrong rotation hides in them.
const VoigtMatrix samples[2] = {
    transversalIsotropicStiffness(170.0, 12.0, 0.31, 0.42, 9.5),
    orthotropicStiffness({150.0, 40.0, 9.0, 0.28, 0.35, 0.22, 17.0, 6.0, 3.5})};

class VoigtRotationRandom : public ::testing::Test {
 protected:
  std::mt19937 rng{20240611};
  double angle() { return std::uniform_real_distribution<double>(-M_PI, M_PI)(rng); }
};

TEST_F(VoigtRotationRandom, StiffnessEqualsTheRotatedFourthOrderTensor) {
  for (const VoigtMatrix& c : samples)
    for (int trial = 0; trial < 20; ++trial) {
      const double t1 = angle(), t2 = angle(), t3 = angle();
      EXPECT_LT(maxDifference(rotateStiffnessXZX(c, t1, t2, t3),
                              rotatedThroughTensor(c, xzxRotation(t1, t2, t3))),
                1e-10 * 170.0);
      // Each axis alone, so that sign errors of the two cannot cancel.
      EXPECT_LT(maxDifference(rotateStiffness(c, RotationAxis::Z, t2),
                              rotatedThroughTensor(c, axisRotation(2, t2))),
                1e-10 * 170.0);
    }
}

TEST_F(VoigtRotationRandom, RotatedComplianceIsTheInverseOfTheRotatedStiffness) {
  for (const VoigtMatrix& c : samples) {
    const VoigtMatrix d = invertByLU(c);
    for (int trial = 0; trial < 20; ++trial) {
      const double t1 = angle(), t2 = angle(), t3 = angle();
      const VoigtMatrix product =
          multiply(rotateComplianceXZX(d, t1, t2, t3), rotateStiffnessXZX(c, t1, t2, t3));
      EXPECT_LT(distanceToIdentity(product), 1e-10);
    }
  }
}

TEST_F(VoigtRotationRandom, StrainVectorTurnsLikeTheStrainTensor) {
  const double strain[6] = {0.3, -0.2, 0.7, 0.11, -0.05, 0.4};
  for (int trial = 0; trial < 20; ++trial) {
    const double t1 = angle(), t2 = angle(), t3 = angle();
    double turned[6];
    rotateStrainXZX(strain, t1, t2, t3, turned);
    const std::array<double, 6> expected = rotatedStrain(strain, xzxRotation(t1, t2, t3));
    for (int a = 0; a < 6; ++a) EXPECT_NEAR(turned[a], expected[a], 1e-14);
  }
}

TEST_F(VoigtRotationRandom, IsotropicMatricesAreUnchangedByAnyRotation) {
  const LameConstants lame = lameConstantsOf(210.0, 0.3);
  const VoigtMatrix c = isotropicStiffness(lame.lambda, lame.mu);
  const VoigtMatrix d = isotropicCompliance(210.0, 0.3);
  for (int trial = 0; trial < 20; ++trial) {
    const double t1 = angle(), t2 = angle(), t3 = angle();
    EXPECT_LT(maxDifference(rotateStiffnessXZX(c, t1, t2, t3), c), 1e-10 * 300.0);
    EXPECT_LT(maxDifference(rotateComplianceXZX(d, t1, t2, t3), d), 1e-14);
  }
}

}  // namespace
}  // namespace gridmoor
