// Inverse G of the acoustic tensor of the isotropic reference at one frequency: closed forms
// for the one-point discretisations and the accumulated 3 x 3 Hermitian form for all others.
#pragma once

#include "input/SolverEnums.h"
#include "operators/ComplexValue.h"
#include "operators/FrequencyVectors.h"
#include "operators/IntegrationRule.h"
#include "operators/KernelInline.h"
#include "operators/ReferenceConstants.h"

namespace gridmoor {

// The acoustic tensor is Hermitian, so is G: re symmetric, im antisymmetric.
struct HermitianMatrix3 {
  double re[3][3] = {};
  double im[3][3] = {};
};

// The staggered grid places normal strains at voxel centres and shear strains at edges:
// its gradient takes the normal strain with the opposite difference of the shear strain,
// which changes the acoustic tensor.
constexpr bool isStaggered(GreenOperatorType v) { return v == GreenOperatorType::StaggeredGrid; }

GRIDMOOR_HOT inline void applyHermitian(const HermitianMatrix3& g, const ComplexValue f[3],
                                        ComplexValue w[3]) {
  for (int a = 0; a < 3; ++a) {
    ComplexValue sum{};
    for (int b = 0; b < 3; ++b) sum += ComplexValue{g.re[a][b], g.im[a][b]} * f[b];
    w[a] = sum;
  }
}

// G of the finite differences and the reduced element in closed form, from the product
// tables of the first vector, with S = |kRe|^2 + |kIm|^2 and k . k = D + i T. Their tensor
// is A = mu S I + mu k k^H + lambda conj(k) k^T.
GRIDMOOR_HOT inline void closedFormAcousticInverse(const FrequencyState& s,
                                                   const ReferenceConstants& r,
                                                   HermitianMatrix3& g) {
  const double lambda = r.lambda0;
  const double mu = r.mu0;
  const double sr = s.rr[0][0] + s.rr[1][1] + s.rr[2][2];
  const double si = s.ii[0][0] + s.ii[1][1] + s.ii[2][2];
  const double S = sr + si;
  const double D = sr - si;
  const double T = 2.0 * (s.ri[0][0] + s.ri[1][1] + s.ri[2][2]);
  const double det = 2.0 * mu * (lambda + mu) * S * S - lambda * mu * (D * D + T * T);
  const double inverseDet = 1.0 / det;
  const double twoLambdaOverS = 2.0 * lambda / S;
  const double diagonal = 1.0 / (mu * S);
  for (int a = 0; a < 3; ++a)
    for (int b = 0; b < 3; ++b) {
      const double sum = s.rr[a][b] + s.ii[a][b];
      const double difference = s.rr[a][b] - s.ii[a][b];
      const double mixed = s.ri[a][b] + s.ri[b][a];
      g.re[a][b] = (-(3.0 * lambda + mu) * sum + twoLambdaOverS * (D * difference + T * mixed)) *
                       inverseDet +
                   (a == b ? diagonal : 0.0);
      g.im[a][b] = (mu - lambda) * (s.ri[a][b] - s.ri[b][a]) * inverseDet;
    }
}

// w = G f of the staggered grid. Its tensor is mu S I + (lambda + mu) k k^H, inverted by
// Sherman-Morrison: G = I / (mu S) - (lambda + mu) / (mu (lambda + 2 mu) S^2) k k^H, given as
// diagonal = 1 / (mu S) and rankOne = -(lambda + mu) / (mu (lambda + 2 mu) S^2). So G times the
// staggered tensor is the identity: the imaginary part of G at (r, c) has the sign of
// kIm[r] kRe[c] - kRe[r] kIm[c], the entry of k k^H. T is a complex value, or lanes holding
// those of several frequencies; R the type of the real factors.
template <class T, class R>
GRIDMOOR_HOT inline void staggeredAcousticInverse(const T k[3], const R& diagonal,
                                                  const R& rankOne, const T f[3], T w[3]) {
  const T scaled = rankOne * (conj(k[0]) * f[0] + conj(k[1]) * f[1] + conj(k[2]) * f[2]);
  for (int d = 0; d < 3; ++d) w[d] = diagonal * f[d] + k[d] * scaled;
}

// w = G f for the one-point discretisations with a closed form ("Basic" has its own
// operators, real in xi).
template <GreenOperatorType V>
GRIDMOOR_HOT inline void applyAcousticInverse(const FrequencyState& s, const ReferenceConstants& r,
                                              const ComplexValue f[3], ComplexValue w[3]) {
  if constexpr (V == GreenOperatorType::StaggeredGrid) {
    const double* kr = s.kRe[0];
    const double* ki = s.kIm[0];
    const double S = s.rr[0][0] + s.rr[1][1] + s.rr[2][2] + s.ii[0][0] + s.ii[1][1] + s.ii[2][2];
    const ComplexValue k[3] = {{kr[0], ki[0]}, {kr[1], ki[1]}, {kr[2], ki[2]}};
    staggeredAcousticInverse(k, 4.0 * r.inverseFourMu0 / S, -r.volumetricFactor / (S * S), f, w);
  } else {
    static_assert(
        V == GreenOperatorType::ForwardDifference || V == GreenOperatorType::CentralDifference ||
            V == GreenOperatorType::BackwardDifference || V == GreenOperatorType::TrilinearFE,
        "no closed form for this discretisation");
    HermitianMatrix3 g;
    closedFormAcousticInverse(s, r, g);
    applyHermitian(g, f, w);
  }
}

// Adds weight times the acoustic tensor of one gradient vector k for Lame constants
// (lambda, mu): mu S I + mu k k^H + lambda conj(k) k^T, or for the staggered gradient
// mu S I + (lambda + mu) k k^H.
GRIDMOOR_HOT inline void addAcousticTensor(bool staggered, const double kr[3], const double ki[3],
                                           double lambda, double mu, double weight,
                                           HermitianMatrix3& a) {
  const double S =
      kr[0] * kr[0] + kr[1] * kr[1] + kr[2] * kr[2] + ki[0] * ki[0] + ki[1] * ki[1] + ki[2] * ki[2];
  // k k^H = real + i imaginary; conj(k) k^T is its conjugate.
  const double realFactor = weight * (lambda + mu);
  const double imaginaryFactor = weight * (staggered ? lambda + mu : mu - lambda);
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c < 3; ++c) {
      a.re[r][c] += realFactor * (kr[r] * kr[c] + ki[r] * ki[c]) + (r == c ? weight * mu * S : 0.0);
      a.im[r][c] += imaginaryFactor * (ki[r] * kr[c] - kr[r] * ki[c]);
    }
}

// The inverse of a Hermitian 3 x 3 matrix by cofactors; its determinant is real.
GRIDMOOR_HOT inline void invertHermitian(const HermitianMatrix3& a, HermitianMatrix3& g) {
  const auto at = [&](int r, int c) { return ComplexValue{a.re[r][c], a.im[r][c]}; };
  const ComplexValue m01 = at(0, 1), m02 = at(0, 2), m12 = at(1, 2);
  const double m00 = a.re[0][0], m11 = a.re[1][1], m22 = a.re[2][2];
  const auto norm = [](ComplexValue z) { return z.re * z.re + z.im * z.im; };
  // Cofactors of the upper triangle: the inverse is their transpose over the determinant.
  const double c00 = m11 * m22 - norm(m12);
  const double c11 = m00 * m22 - norm(m02);
  const double c22 = m00 * m11 - norm(m01);
  const ComplexValue c01 = m02 * conj(m12) - m22 * m01;  // inverse (0, 1)
  const ComplexValue c02 = m01 * m12 - m11 * m02;        // inverse (0, 2)
  const ComplexValue c12 = conj(m01) * m02 - m00 * m12;  // inverse (1, 2)
  const double det = m00 * c00 + (m01 * conj(c01)).re + (m02 * conj(c02)).re;
  const double inverseDet = 1.0 / det;
  g.re[0][0] = c00 * inverseDet;
  g.re[1][1] = c11 * inverseDet;
  g.re[2][2] = c22 * inverseDet;
  g.im[0][0] = g.im[1][1] = g.im[2][2] = 0.0;
  const ComplexValue upper[3] = {inverseDet * c01, inverseDet * c02, inverseDet * c12};
  const int rows[3] = {0, 0, 1};
  const int columns[3] = {1, 2, 2};
  for (int n = 0; n < 3; ++n) {
    g.re[rows[n]][columns[n]] = g.re[columns[n]][rows[n]] = upper[n].re;
    g.im[rows[n]][columns[n]] = upper[n].im;
    g.im[columns[n]][rows[n]] = -upper[n].im;
  }
}

// The acoustic tensor of a frequency with several points: the weighted sum over the main
// points with the reference constants, plus, for the hourglass-controlled element, the
// weighted sum over the hourglass points with the hourglass constants.
template <GreenOperatorType V>
GRIDMOOR_HOT inline void accumulatedAcousticTensor(const FrequencyState& s,
                                                   const IntegrationRule& mainRule,
                                                   const IntegrationRule& hourglassRule,
                                                   const ReferenceConstants& r,
                                                   HermitianMatrix3& a) {
  a = HermitianMatrix3{};
  for (std::size_t p = 0; p < mainRule.count; ++p)
    addAcousticTensor(isStaggered(V), s.kRe[p], s.kIm[p], r.lambda0, r.mu0, mainRule.weights[p], a);
  if constexpr (V == GreenOperatorType::Hex8RHourGlassControl) {
    for (std::size_t p = 0; p < hourglassRule.count; ++p)
      addAcousticTensor(false, s.kRe[mainRule.count + p], s.kIm[mainRule.count + p],
                        r.lambdaHourglass, r.muHourglass, hourglassRule.weights[p], a);
  }
}

// G of the general form: the accumulated tensor, inverted.
template <GreenOperatorType V>
GRIDMOOR_HOT inline void generalAcousticInverse(const FrequencyState& s,
                                                const IntegrationRule& mainRule,
                                                const IntegrationRule& hourglassRule,
                                                const ReferenceConstants& r, HermitianMatrix3& g) {
  HermitianMatrix3 a;
  accumulatedAcousticTensor<V>(s, mainRule, hourglassRule, r, a);
  invertHermitian(a, g);
}

}  // namespace gridmoor
