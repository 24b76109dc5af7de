// Independent references for the linear elastic tests: rotation matrices about the axes and
// the rotation of a stiffness through its fourth-order tensor, sharing no code with the laws.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>

#include "materials/VoigtMatrix.h"

namespace gridmoor::linear_elastic_test {

using Matrix3 = std::array<std::array<double, 3>, 3>;

// Right-handed rotation by t about axis 0 (x), 1 (y) or 2 (z).
inline Matrix3 axisRotation(int axis, double t) {
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

inline Matrix3 product(const Matrix3& p, const Matrix3& q) {
  Matrix3 r{};
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j)
      for (int k = 0; k < 3; ++k) r[i][j] += p[i][k] * q[k][j];
  return r;
}

// R = Rx(t1) Rz(t2) Rx(t3).
inline Matrix3 xzxRotation(double t1, double t2, double t3) {
  return product(axisRotation(0, t1), product(axisRotation(2, t2), axisRotation(0, t3)));
}

inline constexpr int voigtOfPair[3][3] = {{0, 5, 4}, {5, 1, 3}, {4, 3, 2}};

// C'ijkl = Ria Rjb Rkc Rld Cabcd, read back at the Voigt pairs.
inline VoigtMatrix rotatedThroughTensor(const VoigtMatrix& c, const Matrix3& r) {
  const int row[6] = {0, 1, 2, 1, 0, 0}, col[6] = {0, 1, 2, 2, 2, 1};
  VoigtMatrix out;
  for (int p = 0; p < 6; ++p)
    for (int q = 0; q < 6; ++q) {
      const int i = row[p], j = col[p], k = row[q], l = col[q];
      double sum = 0.0;
      for (int a = 0; a < 3; ++a)
        for (int b = 0; b < 3; ++b)
          for (int e = 0; e < 3; ++e)
            for (int f = 0; f < 3; ++f)
              sum +=
                  r[i][a] * r[j][b] * r[k][e] * r[l][f] * c(voigtOfPair[a][b], voigtOfPair[e][f]);
      out(p, q) = sum;
    }
  return out;
}

// R eps R^T for a strain given in Voigt form with engineering shear; result in the same form.
inline std::array<double, 6> rotatedStrain(const double* e, const Matrix3& r) {
  double t[3][3];
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) {
      const int v = voigtOfPair[i][j];
      t[i][j] = v < 3 ? e[v] : 0.5 * e[v];
    }
  double u[3][3];
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) {
      double sum = 0.0;
      for (int a = 0; a < 3; ++a)
        for (int b = 0; b < 3; ++b) sum += r[i][a] * t[a][b] * r[j][b];
      u[i][j] = sum;
    }
  return {u[0][0], u[1][1], u[2][2], 2.0 * u[1][2], 2.0 * u[0][2], 2.0 * u[0][1]};
}

// Largest entry-wise difference; NaN when any entry is not a number, so that a comparison
// with a tolerance fails on it.
inline double maxDifference(const VoigtMatrix& p, const VoigtMatrix& q) {
  double d = 0.0;
  for (int i = 0; i < 36; ++i) {
    const double e = std::abs(p.m[i] - q.m[i]);
    if (!(e <= d)) d = e;
  }
  return d;
}

inline double distanceToIdentity(const VoigtMatrix& m) {
  return maxDifference(m, VoigtMatrix::identity());
}

}  // namespace gridmoor::linear_elastic_test
