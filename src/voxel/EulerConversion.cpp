#include "voxel/EulerConversion.h"

#include <cassert>
#include <cmath>

namespace gridmoor {

namespace {

struct Axes {
  int i, j, k;
  bool oddParity;
};

Axes decode(int convention) {
  assert((convention & 1) == 0 && (convention & 2) != 0 && "repeated conventions, frame bit 0");
  static constexpr int next[4] = {1, 2, 0, 1};
  const int parity = (convention >> 2) & 1;
  const int i = (convention >> 3) & 3;
  return {i, next[i + parity], next[i + 1 - parity], parity == 1};
}

// Below this the middle angle is taken as 0 or pi and the first and last angles can no
// longer be told apart: the whole turn about the repeated axis goes into the first angle.
constexpr double gimbalThreshold = 1.9073486328125e-06;  // 2^-19

}  // namespace

RotationMatrix eulerToMatrix(const EulerTriple& angles, int convention) {
  const Axes a = decode(convention);
  // Odd parity: the axis triple is not cyclic, which negating the angles makes up for.
  const double sign = a.oddParity ? -1.0 : 1.0;
  const double ti = sign * angles[0], tj = sign * angles[1], th = sign * angles[2];
  const double ci = std::cos(ti), cj = std::cos(tj), ch = std::cos(th);
  const double si = std::sin(ti), sj = std::sin(tj), sh = std::sin(th);
  const double cc = ci * ch, cs = ci * sh, sc = si * ch, ss = si * sh;
  RotationMatrix m{};
  m[a.i][a.i] = cj;
  m[a.i][a.j] = sj * si;
  m[a.i][a.k] = sj * ci;
  m[a.j][a.i] = sj * sh;
  m[a.j][a.j] = -cj * ss + cc;
  m[a.j][a.k] = -cj * cs - sc;
  m[a.k][a.i] = -sj * ch;
  m[a.k][a.j] = cj * sc + cs;
  m[a.k][a.k] = cj * cc - ss;
  return m;
}

EulerTriple matrixToEuler(const RotationMatrix& m, int convention) {
  const Axes a = decode(convention);
  const double sy = std::sqrt(m[a.i][a.j] * m[a.i][a.j] + m[a.i][a.k] * m[a.i][a.k]);
  EulerTriple angles;
  if (sy > gimbalThreshold) {
    angles[0] = std::atan2(m[a.i][a.j], m[a.i][a.k]);
    angles[1] = std::atan2(sy, m[a.i][a.i]);
    angles[2] = std::atan2(m[a.j][a.i], -m[a.k][a.i]);
  } else {
    angles[0] = std::atan2(-m[a.j][a.k], m[a.j][a.j]);
    angles[1] = std::atan2(sy, m[a.i][a.i]);
    angles[2] = 0.0;
  }
  if (a.oddParity)
    for (double& angle : angles) angle = -angle;
  return angles;
}

EulerTriple convertZXZToXZX(const EulerTriple& zxz) {
  return matrixToEuler(eulerToMatrix(zxz, eulerZXZ), eulerXZX);
}

}  // namespace gridmoor
