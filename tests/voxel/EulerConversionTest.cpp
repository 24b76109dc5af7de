#include "voxel/EulerConversion.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "../materials/LinearElasticTestSupport.h"

namespace gridmoor {
namespace {

using linear_elastic_test::axisRotation;
using linear_elastic_test::product;
using linear_elastic_test::xzxRotation;

// Rz(a) Rx(b) Rz(c), built independently of the conversion, against the converted angles.
double conversionError(double a, double b, double c) {
  const EulerTriple t = convertZXZToXZX({a, b, c});
  const RotationMatrix zxz = product(product(axisRotation(2, a), axisRotation(0, b)), axisRotation(2, c));
  const RotationMatrix xzx = xzxRotation(t[0], t[1], t[2]);
  double error = 0.0;
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) error = std::max(error, std::abs(zxz[i][j] - xzx[i][j]));
  return error;
}

TEST(EulerAngles, ZXZToXZXKeepsTheRotationForRandomAngles) {
  std::mt19937 random(2024);
  std::uniform_real_distribution<double> angle(-M_PI, M_PI);
  std::uniform_real_distribution<double> tilt(0.0, M_PI);
  for (int n = 0; n < 2000; ++n) {
    const double a = angle(random), b = tilt(random), c = angle(random);
    ASSERT_LT(conversionError(a, b, c), 1e-12) << a << " " << b << " " << c;
  }
}

TEST(EulerAngles, ZXZToXZXNearTheDegenerateTilts) {
  std::mt19937 random(99);
  std::uniform_real_distribution<double> angle(-M_PI, M_PI);
  for (double b : {0.0, 1e-9, 1e-7, 1e-5, M_PI - 1e-7, M_PI, -1e-8}) {
    for (int n = 0; n < 200; ++n) {
      const double a = angle(random), c = angle(random);
      // Below the threshold of 2^-19 the gimbal branch drops a term of that size.
      ASSERT_LT(conversionError(a, b, c), 4e-6) << a << " " << b << " " << c;
    }
  }
  // Rotations about x alone are the degenerate case on the XZX side: the middle angle is 0
  // and the whole turn is the first angle.
  for (double b : {0.3, -2.0, 3.0}) {
    const EulerTriple t = convertZXZToXZX({0.0, b, 0.0});
    EXPECT_NEAR(t[0], b, 1e-12);
    EXPECT_EQ(t[1], 0.0);
    EXPECT_EQ(t[2], 0.0);
  }
  // (a, 0, 0) is a turn about z: in XZX the middle angle takes it.
  const EulerTriple t = convertZXZToXZX({0.7, 0.0, 0.0});
  EXPECT_NEAR(std::abs(t[1]), 0.7, 1e-12);
  EXPECT_LT(conversionError(0.7, 0.0, 0.0), 1e-12);
}

}  // namespace
}  // namespace gridmoor
