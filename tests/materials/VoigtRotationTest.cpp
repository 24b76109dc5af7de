#include "materials/VoigtRotation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "materials/LinearElasticMaterialMatrices.h"

namespace gridmoor {
namespace {

using Matrix3 = std::array<std::array<double, 3>, 3>;

Matrix3 axisRotation(int axis, double t) {
  const double c = std::cos(t), s = std::sin(t);
  const int a = (axis + 1) % 3, b = (axis + 2) % 3;
  Matrix3 r{};
  r[axis][axis] = 1.0;
  r[a][a] = c;
  r[a][b] = -s;
  r[b][a] = s;
  r[b][b] = c;
  return r;
}

Matrix3 product(const Matrix3& p, const Matrix3& q) {
  Matrix3 r{};
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j)
      for (int k = 0; k < 3; ++k) r[i][j] += p[i][k] * q[k][j];
  return r;
}

// The stiffness turned by R, through the fourth-order tensor: C'ijkl = Ria Rjb Rkc Rld Cabcd.
// Written out in full so that it shares nothing with the Voigt rotation code.
VoigtMatrix rotatedThroughTensor(const VoigtMatrix& c, const Matrix3& r) {
  const int voigt[3][3] = {{0, 5, 4}, {5, 1, 3}, {4, 3, 2}};
  double t[3][3][3][3], u[3][3][3][3];
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j)
      for (int k = 0; k < 3; ++k)
        for (int l = 0; l < 3; ++l) t[i][j][k][l] = c(voigt[i][j], voigt[k][l]);
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j)
      for (int k = 0; k < 3; ++k)
        for (int l = 0; l < 3; ++l) {
          double sum = 0.0;
          for (int a = 0; a < 3; ++a)
            for (int b = 0; b < 3; ++b)
              for (int e = 0; e < 3; ++e)
                for (int f = 0; f < 3; ++f)
                  sum += r[i][a] * r[j][b] * r[k][e] * r[l][f] * t[a][b][e][f];
          u[i][j][k][l] = sum;
        }
  const int row[6] = {0, 1, 2, 1, 0, 0}, col[6] = {0, 1, 2, 2, 2, 1};
  VoigtMatrix out;
  for (int a = 0; a < 6; ++a)
    for (int b = 0; b < 6; ++b) out(a, b) = u[row[a]][col[a]][row[b]][col[b]];
  return out;
}

double maxDifference(const VoigtMatrix& p, const VoigtMatrix& q) {
  double d = 0.0;
  for (int i = 0; i < 36; ++i) d = std::max(d, std::abs(p.m[i] - q.m[i]));
  return d;
}

// Materials whose symmetry a wrong rotation cannot hide: an axis-aligned transversally
// isotropic law and a strongly orthotropic one.
VoigtMatrix transversalSample() { return transversalIsotropicStiffness(170.0, 12.0, 0.31, 0.42, 9.5); }
VoigtMatrix orthotropicSample() {
  return orthotropicStiffness({150.0, 40.0, 9.0, 0.28, 0.35, 0.22, 17.0, 6.0, 3.5});
}

class VoigtRotationRandom : public ::testing::Test {
 protected:
  std::mt19937 rng{20240611};
  double angle() { return std::uniform_real_distribution<double>(-M_PI, M_PI)(rng); }
};

TEST_F(VoigtRotationRandom, StiffnessEqualsTheRotatedFourthOrderTensor) {
  for (const VoigtMatrix& c : {transversalSample(), orthotropicSample()}) {
    for (int trial = 0; trial < 20; ++trial) {
      const double t1 = angle(), t2 = angle(), t3 = angle();
      const Matrix3 r3 = product(axisRotation(0, t1), product(axisRotation(2, t2), axisRotation(0, t3)));
      EXPECT_LT(maxDifference(rotateStiffnessXZX(c, t1, t2, t3), rotatedThroughTensor(c, r3)),
                1e-10 * 170.0);
      // Two angles: R = Rx(t1) Rz(t2).
      const Matrix3 r2 = product(axisRotation(0, t1), axisRotation(2, t2));
      EXPECT_LT(maxDifference(rotateStiffnessXZX(c, t1, t2, 0.0), rotatedThroughTensor(c, r2)),
                1e-10 * 170.0);
    }
  }
}

TEST_F(VoigtRotationRandom, SingleAxisRotationsTurnTheRightWay) {
  // Each axis on its own, so that a sign error in one cannot be compensated by the other.
  const VoigtMatrix c = orthotropicSample();
  for (int trial = 0; trial < 10; ++trial) {
    const double t = angle();
    EXPECT_LT(maxDifference(rotateStiffness(c, RotationAxis::X, t),
                            rotatedThroughTensor(c, axisRotation(0, t))),
              1e-10 * 150.0);
    EXPECT_LT(maxDifference(rotateStiffness(c, RotationAxis::Z, t),
                            rotatedThroughTensor(c, axisRotation(2, t))),
              1e-10 * 150.0);
  }
}

TEST_F(VoigtRotationRandom, RotatedComplianceIsTheInverseOfTheRotatedStiffness) {
  for (const VoigtMatrix& c : {transversalSample(), orthotropicSample()}) {
    const VoigtMatrix d = invertByLU(c);
    for (int trial = 0; trial < 20; ++trial) {
      const double t1 = angle(), t2 = angle(), t3 = angle();
      const VoigtMatrix cr = rotateStiffnessXZX(c, t1, t2, t3);
      const VoigtMatrix dr = rotateComplianceXZX(d, t1, t2, t3);
      EXPECT_LT(maxDifference(multiply(dr, cr), VoigtMatrix::identity()), 1e-10);
      EXPECT_LT(maxDifference(multiply(cr, dr), VoigtMatrix::identity()), 1e-10);
    }
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

TEST(VoigtRotation, QuarterTurnAboutTheTransversalAxisOfAFibreLaw) {
  // A fibre along x turned by 45 degrees about its own axis: every entry of both matrices
  // must stay, the in-plane shear compliance D33 included.
  const VoigtMatrix c = transversalSample();
  const VoigtMatrix d = invertByLU(c);
  const VoigtMatrix cr = rotateStiffness(c, RotationAxis::X, M_PI / 4.0);
  const VoigtMatrix dr = rotateCompliance(d, RotationAxis::X, M_PI / 4.0);
  EXPECT_LT(maxDifference(cr, c), 1e-12 * 170.0);
  EXPECT_LT(maxDifference(dr, d), 1e-14);
  // A fibre along x turned by 90 degrees about z lies along y.
  const VoigtMatrix cz = rotateStiffness(c, RotationAxis::Z, M_PI / 2.0);
  EXPECT_NEAR(cz(1, 1), c(0, 0), 1e-10);
  EXPECT_NEAR(cz(0, 0), c(1, 1), 1e-10);
  EXPECT_NEAR(cz(3, 3), c(5, 5), 1e-10);
}

TEST(VoigtRotation, ZeroAnglesLeaveTheMatrixBitForBit) {
  const VoigtMatrix c = orthotropicSample();
  EXPECT_EQ(rotateStiffnessXZX(c, 0.0, 0.0, 0.0).m, c.m);
  EXPECT_EQ(rotateComplianceXZX(c, 0.0, 0.0, 0.0).m, c.m);
}

}  // namespace
}  // namespace gridmoor
