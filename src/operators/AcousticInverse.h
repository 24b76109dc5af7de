// Inverse G of the acoustic tensor of the isotropic reference at one frequency: closed forms
// for the one-point discretisations and the accumulated 3 x 3 complex form for all others.
#pragma once

#include <Eigen/Dense>
#include <complex>

#include "input/SolverEnums.h"
#include "operators/FrequencyVectors.h"
#include "operators/IntegrationRule.h"
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

// Closed form of G for the specialised discretisations, from the product tables of the
// first vector, with S = |kRe|^2 + |kIm|^2 and k . k = D + i T.
template <GreenOperatorType V>
inline void closedFormAcousticInverse(const FrequencyState& s, const ReferenceConstants& r,
                                      HermitianMatrix3& g) {
  const double lambda = r.lambda0;
  const double mu = r.mu0;
  const double sr = s.rr[0][0] + s.rr[1][1] + s.rr[2][2];
  const double si = s.ii[0][0] + s.ii[1][1] + s.ii[2][2];
  const double S = sr + si;
  const double diagonal = 1.0 / (mu * S);
  if constexpr (V == GreenOperatorType::Basic) {
    // k = i xi: G = I / (mu |xi|^2) - (lambda + mu) / (mu (lambda + 2 mu)) xi xi / |xi|^4.
    const double c = -r.volumetricFactor / (S * S);
    for (int a = 0; a < 3; ++a)
      for (int b = 0; b < 3; ++b) {
        g.re[a][b] = c * s.ii[a][b] + (a == b ? diagonal : 0.0);
        g.im[a][b] = 0.0;
      }
  } else if constexpr (V == GreenOperatorType::StaggeredGrid) {
    // A = mu S I + (lambda + mu) k k^H, inverted by Sherman-Morrison. The imaginary part of
    // k k^H at (r, c) is kIm[r] kRe[c] - kRe[r] kIm[c].
    const double c2 = -(lambda + mu) / (mu * (lambda + 2.0 * mu) * S * S);
    for (int a = 0; a < 3; ++a)
      for (int b = 0; b < 3; ++b) {
        g.re[a][b] = c2 * (s.rr[a][b] + s.ii[a][b]) + (a == b ? diagonal : 0.0);
        g.im[a][b] = c2 * (s.ri[b][a] - s.ri[a][b]);
      }
  } else {
    static_assert(V == GreenOperatorType::ForwardDifference ||
                      V == GreenOperatorType::CentralDifference ||
                      V == GreenOperatorType::BackwardDifference ||
                      V == GreenOperatorType::TrilinearFE,
                  "no closed form for this discretisation");
    // A = mu S I + mu k k^H + lambda conj(k) k^T.
    const double D = sr - si;
    const double T = 2.0 * (s.ri[0][0] + s.ri[1][1] + s.ri[2][2]);
    const double det = 2.0 * mu * (lambda + mu) * S * S - lambda * mu * (D * D + T * T);
    const double inverseDet = 1.0 / det;
    const double twoLambdaOverS = 2.0 * lambda / S;
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
}

// Adds weight times the acoustic tensor of one gradient vector k for Lame constants
// (lambda, mu): mu S I + mu k k^H + lambda conj(k) k^T, or for the staggered gradient
// mu S I + (lambda + mu) k k^H.
inline void addAcousticTensor(bool staggered, const double kr[3], const double ki[3],
                              double lambda, double mu, double weight, Eigen::Matrix3cd& a) {
  using C = std::complex<double>;
  const double S = kr[0] * kr[0] + kr[1] * kr[1] + kr[2] * kr[2] + ki[0] * ki[0] +
                   ki[1] * ki[1] + ki[2] * ki[2];
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c < 3; ++c) {
      const C kkH(kr[r] * kr[c] + ki[r] * ki[c], ki[r] * kr[c] - kr[r] * ki[c]);
      C entry = staggered ? (lambda + mu) * kkH : mu * kkH + lambda * std::conj(kkH);
      if (r == c) entry += mu * S;
      a(r, c) += weight * entry;
    }
}

// The acoustic tensor of a frequency with several points: the weighted sum over the main
// points with the reference constants, plus, for the hourglass-controlled element, the
// weighted sum over the hourglass points with the hourglass constants.
template <GreenOperatorType V>
inline Eigen::Matrix3cd accumulatedAcousticTensor(const FrequencyState& s,
                                                  const IntegrationRule& mainRule,
                                                  const IntegrationRule& hourglassRule,
                                                  const ReferenceConstants& r) {
  Eigen::Matrix3cd a = Eigen::Matrix3cd::Zero();
  for (std::size_t p = 0; p < mainRule.count; ++p)
    addAcousticTensor(isStaggered(V), s.kRe[p], s.kIm[p], r.lambda0, r.mu0, mainRule.weights[p],
                      a);
  if constexpr (V == GreenOperatorType::Hex8RHourGlassControl) {
    for (std::size_t p = 0; p < hourglassRule.count; ++p)
      addAcousticTensor(false, s.kRe[mainRule.count + p], s.kIm[mainRule.count + p],
                        r.lambdaHourglass, r.muHourglass, hourglassRule.weights[p], a);
  }
  return a;
}

}  // namespace gridmoor
