#include "voxel/EulerConversion.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace gridmoor {
namespace {

// Rotations built directly, independent of the conversion code.
RotationMatrix rotation(int axis, double angle) {
  const double c = std::cos(angle), s = std::sin(angle);
  const int a = (axis + 1) % 3, b = (axis + 2) % 3;
  RotationMatrix r{};
  r[axis][axis] = 1.0;
  r[a][a] = c;
  r[a][b] = -s;
  r[b][a] = s;
  r[b][b] = c;
  return r;
}

RotationMatrix product(const RotationMatrix& p, const RotationMatrix& q) {
  RotationMatrix r{};
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j)
      for (int k = 0; k < 3; ++k) r[i][j] += p[i][k] * q[k][j];
  return r;
}

constexpr int X = 0, Z = 2;

// Rz(a) Rx(b) Rz(c) against Rx(t1) Rz(t2) Rx(t3) of the converted angles.
double conversionError(double a, double b, double c) {
  const EulerTriple t = convertZXZToXZX({a, b, c});
  const RotationMatrix zxz = product(product(rotation(Z, a), rotation(X, b)), rotation(Z, c));
  const RotationMatrix xzx = product(product(rotation(X, t[0]), rotation(Z, t[1])), rotation(X, t[2]));
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
    EXPECT_LT(conversionError(0.0, b, 0.0), 1e-12);
  }
  // (a, 0, 0) is a turn about z: in XZX the middle angle takes it.
  const EulerTriple t = convertZXZToXZX({0.7, 0.0, 0.0});
  EXPECT_NEAR(std::abs(t[1]), 0.7, 1e-12);
  EXPECT_LT(conversionError(0.7, 0.0, 0.0), 1e-12);
}

TEST(EulerAngles, MatrixRoundTripInBothConventions) {
  std::mt19937 random(5);
  std::uniform_real_distribution<double> angle(-3.0, 3.0);
  std::uniform_real_distribution<double> tilt(0.1, 3.0);
  for (int convention : {eulerZXZ, eulerXZX}) {
    for (int n = 0; n < 100; ++n) {
      // Away from the gimbal case the angles themselves come back, up to the sign of the
      // middle angle, which the back conversion takes in [0, pi] (odd parity: [-pi, 0]).
      const double sign = convention == eulerXZX ? -1.0 : 1.0;
      const EulerTriple in{angle(random), sign * tilt(random), angle(random)};
      const EulerTriple back = matrixToEuler(eulerToMatrix(in, convention), convention);
      for (int k = 0; k < 3; ++k) ASSERT_NEAR(back[k], in[k], 1e-12) << convention;
    }
  }
  // The matrix of XZX angles (t1, t2, t3) is the product Rx(t3) Rz(t2) Rx(t1).
  const RotationMatrix m = eulerToMatrix({0.4, 1.1, -0.6}, eulerXZX);
  const RotationMatrix direct = product(product(rotation(X, -0.6), rotation(Z, 1.1)), rotation(X, 0.4));
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) EXPECT_NEAR(m[i][j], direct[i][j], 1e-14);
}

}  // namespace
}  // namespace gridmoor
