#include "materials/VoigtRotation.h"

#include <cmath>

namespace gridmoor {

namespace {

// Voigt indices that a rotation about an axis touches: the two normal components of the
// turned plane (p, q), its shear (h), the normal along the axis (f) and the two shears that
// contain the axis (u, v), ordered so that both axes share one pattern.
struct AxisPattern {
  int p, q, h, f, u, v;
};

constexpr AxisPattern patternOf(RotationAxis axis) {
  return axis == RotationAxis::X ? AxisPattern{1, 2, 3, 0, 4, 5} : AxisPattern{0, 1, 5, 2, 3, 4};
}

// strainForm selects A (engineering shear) or B (plain shear); they differ only in where the
// factor 2 of the in-plane shear stands.
VoigtMatrix rotationMatrix(RotationAxis axis, double angle, bool strainForm) {
  const AxisPattern k = patternOf(axis);
  const double c = std::cos(angle), s = std::sin(angle);
  const double cc = c * c, cs = c * s;
  VoigtMatrix r;
  r(k.f, k.f) = 1.0;
  r(k.p, k.p) = cc;
  r(k.p, k.q) = 1.0 - cc;
  r(k.q, k.p) = 1.0 - cc;
  r(k.q, k.q) = cc;
  r(k.h, k.h) = 2.0 * cc - 1.0;
  const double toShear = strainForm ? 2.0 * cs : cs;    // row h, columns p and q
  const double fromShear = strainForm ? cs : 2.0 * cs;  // rows p and q, column h
  r(k.p, k.h) = fromShear;
  r(k.q, k.h) = -fromShear;
  r(k.h, k.p) = -toShear;
  r(k.h, k.q) = toShear;
  r(k.u, k.u) = c;
  r(k.u, k.v) = -s;
  r(k.v, k.u) = s;
  r(k.v, k.v) = c;
  return r;
}

}  // namespace

VoigtMatrix multiply(const VoigtMatrix& p, const VoigtMatrix& q) {
  VoigtMatrix r;
  for (int a = 0; a < 6; ++a)
    for (int b = 0; b < 6; ++b) {
      double sum = 0.0;
      for (int k = 0; k < 6; ++k) sum += p(a, k) * q(k, b);
      r(a, b) = sum;
    }
  return r;
}

VoigtMatrix strainRotationMatrix(RotationAxis axis, double angle) {
  return rotationMatrix(axis, angle, true);
}

VoigtMatrix stressRotationMatrix(RotationAxis axis, double angle) {
  return rotationMatrix(axis, angle, false);
}

VoigtMatrix rotateStiffness(const VoigtMatrix& c, RotationAxis axis, double angle) {
  return multiply(stressRotationMatrix(axis, -angle),
                  multiply(c, strainRotationMatrix(axis, angle)));
}

VoigtMatrix rotateCompliance(const VoigtMatrix& d, RotationAxis axis, double angle) {
  return multiply(strainRotationMatrix(axis, -angle),
                  multiply(d, stressRotationMatrix(axis, angle)));
}

namespace {

template <class Rotate>
VoigtMatrix rotateXZX(const VoigtMatrix& m, double t1, double t2, double t3, Rotate rotate) {
  VoigtMatrix r = m;
  if (t3 != 0.0) r = rotate(r, RotationAxis::X, t3);
  if (t2 != 0.0) r = rotate(r, RotationAxis::Z, t2);
  if (t1 != 0.0) r = rotate(r, RotationAxis::X, t1);
  return r;
}

}  // namespace

VoigtMatrix rotateStiffnessXZX(const VoigtMatrix& c, double t1, double t2, double t3) {
  return rotateXZX(c, t1, t2, t3, rotateStiffness);
}

VoigtMatrix rotateComplianceXZX(const VoigtMatrix& d, double t1, double t2, double t3) {
  return rotateXZX(d, t1, t2, t3, rotateCompliance);
}

void rotateStrainXZX(const double* strainVoigt, double t1, double t2, double t3, double* out) {
  double current[6], turned[6];
  for (int a = 0; a < 6; ++a) current[a] = strainVoigt[a];
  const RotationAxis axes[3] = {RotationAxis::X, RotationAxis::Z, RotationAxis::X};
  const double angles[3] = {t3, t2, t1};
  for (int step = 0; step < 3; ++step) {
    if (angles[step] == 0.0) continue;
    strainRotationMatrix(axes[step], -angles[step]).multiply(current, turned);
    for (int a = 0; a < 6; ++a) current[a] = turned[a];
  }
  for (int a = 0; a < 6; ++a) out[a] = current[a];
}

}  // namespace gridmoor
