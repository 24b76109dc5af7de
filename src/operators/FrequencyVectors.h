// The discrete gradient vectors of a frequency: per-axis factors of each discretisation,
// tabulated once per grid, and the vectors and product tables assembled from them level by level.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "input/SolverEnums.h"
#include "operators/IntegrationRule.h"
#include "operators/KernelInline.h"

namespace gridmoor {

// Everything the vectors need from one index of one axis.
struct AxisFactor {
  // Angular frequency 2 pi f / (n h) of the (alias) index.
  double xi = 0.0;
  // The discretisation's axis factors re and im.
  double re = 0.0;
  double im = 0.0;
  // sin(x / 2), x = xi h: with re = cos(x / 2) it is the half-angle phase of the reduced element.
  double halfSin = 0.0;
  // cos x and sin x: the corner phase exp(-i x) of the trilinear element.
  double cosX = 1.0;
  double sinX = 0.0;
  // Filter value of the index (1 without filter).
  double filter = 1.0;
};

// re and im of one axis, x = xi h, in extended precision. The discretisations without axis
// factors ("Basic", "Q1FE", "Helmholtz") give zeros; a value outside the table stops the run
// with "Unknown finite difference " and its number ("Bilaplacian" among them).
void computeAxisFactors(GreenOperatorType value, long double x, long double h, double& re,
                        double& im);

// The factors of every index of the three axes of one grid, with the alias indices one
// period below and above, computed once when an operator is made: sines and cosines per
// frequency would cost more than the operator itself.
class AxisTables {
 public:
  AxisTables(GreenOperatorType value, FilterType filter,
             const std::array<std::uint64_t, 3>& extents, const std::array<double, 3>& voxelLength);

  // Index m of `axis`, shifted by alias periods (-1, 0 or 1).
  const AxisFactor& at(int axis, int alias, std::uint64_t m) const {
    return factors_[static_cast<std::size_t>(
        axis)][static_cast<std::size_t>(alias + 1) * extents_[static_cast<std::size_t>(axis)] + m];
  }
  const std::array<std::uint64_t, 3>& extents() const { return extents_; }
  const std::array<double, 3>& voxelLength() const { return voxelLength_; }

 private:
  std::array<std::uint64_t, 3> extents_;
  std::array<double, 3> voxelLength_;
  std::array<std::vector<AxisFactor>, 3> factors_;
};

// What the loop keeps for the current frequency, per thread on the stack: the factors of
// the current index of each axis, the gradient vectors k = kRe + i kIm of the main points
// (and behind them those of the hourglass points), and the product tables of the first
// vector, which the closed forms read.
struct FrequencyState {
  static constexpr std::size_t kMaxVectors = 2 * IntegrationRule::kMaxPoints;

  std::array<double, 3> h{1.0, 1.0, 1.0};
  std::array<AxisFactor, 3> axis{};
  // exp(i (x_0 + ... + x_d) / 2), accumulated level by level for the reduced element.
  std::array<double, 3> halfPhaseRe{};
  std::array<double, 3> halfPhaseIm{};
  double kRe[kMaxVectors][3] = {};
  double kIm[kMaxVectors][3] = {};
  // kRe outer kRe, kRe outer kIm (entry (r, c) = kRe[r] kIm[c]), kIm outer kIm.
  double rr[3][3] = {};
  double ri[3][3] = {};
  double ii[3][3] = {};
};

// Discretisations whose vector components each depend on one axis only: their vector and
// product tables are completed axis level by axis level.
constexpr bool hasSeparableVector(GreenOperatorType v) {
  return v == GreenOperatorType::Basic || v == GreenOperatorType::ForwardDifference ||
         v == GreenOperatorType::CentralDifference || v == GreenOperatorType::BackwardDifference ||
         v == GreenOperatorType::StaggeredGrid || v == GreenOperatorType::Helmholtz;
}

// Completes the product tables of the first vector for rows and columns 0..d.
GRIDMOOR_HOT inline void completeProductTables(FrequencyState& s, int d) {
  const double* kr = s.kRe[0];
  const double* ki = s.kIm[0];
  for (int c = 0; c <= d; ++c) {
    s.rr[d][c] = s.rr[c][d] = kr[d] * kr[c];
    s.ii[d][c] = s.ii[c][d] = ki[d] * ki[c];
    s.ri[d][c] = kr[d] * ki[c];
    s.ri[c][d] = kr[c] * ki[d];
  }
}

// On entry of axis level d: takes that axis's factors and does the work that holds for all
// inner levels. Tables: whether the product tables are kept (only the closed forms read them).
template <GreenOperatorType V, bool Tables>
GRIDMOOR_HOT inline void enterAxis(FrequencyState& s, int d, const AxisFactor& f) {
  s.axis[static_cast<std::size_t>(d)] = f;
  if constexpr (hasSeparableVector(V)) {
    double kr = 0.0;
    double ki = 0.0;
    if constexpr (V == GreenOperatorType::Basic || V == GreenOperatorType::Helmholtz) {
      ki = f.xi;
    } else if constexpr (V == GreenOperatorType::ForwardDifference ||
                         V == GreenOperatorType::BackwardDifference) {
      kr = -f.re;
      ki = f.im;
    } else if constexpr (V == GreenOperatorType::CentralDifference) {
      ki = f.im;
    } else {  // StaggeredGrid keeps the opposite sign of the forward difference in re.
      kr = f.re;
      ki = f.im;
    }
    s.kRe[0][d] = kr;
    s.kIm[0][d] = ki;
    if constexpr (Tables) completeProductTables(s, d);
  } else if constexpr (V == GreenOperatorType::TrilinearFE ||
                       V == GreenOperatorType::Hex8RHourGlassControl) {
    // cos(x / 2) is the axis factor re of the reduced element.
    const double pr = f.re;
    const double pi = f.halfSin;
    if (d == 0) {
      s.halfPhaseRe[0] = pr;
      s.halfPhaseIm[0] = pi;
    } else {
      const double qr = s.halfPhaseRe[static_cast<std::size_t>(d - 1)];
      const double qi = s.halfPhaseIm[static_cast<std::size_t>(d - 1)];
      s.halfPhaseRe[static_cast<std::size_t>(d)] = qr * pr - qi * pi;
      s.halfPhaseIm[static_cast<std::size_t>(d)] = qr * pi + qi * pr;
    }
  }
}

// Gradient vector of the trilinear element at point p of the unit cube: the sum over the
// eight corners (a, b, c) of the shape function gradient times exp(-i phi), phi = a x_0 +
// b x_1 + c x_2. The sum factors into one-axis sums: (exp(-i x_d) - 1) / h_d for the
// differentiated axis and (1 - t) + t exp(-i x_e) for each other axis at coordinate t.
// With the phase exp(-i phi) this vector is the conjugate of the reduced element's at the
// centre, about -i xi at low frequencies where every other discretisation has +i xi. The
// operators on tensors and the acoustic tensor do not see a phase of the vector; the force
// operators and the divergence of the full element take the opposite sign for it.
GRIDMOOR_HOT inline void trilinearElementVector(const FrequencyState& s,
                                                const std::array<double, 3>& p, double kr[3],
                                                double ki[3]) {
  double dRe[3], dIm[3], mRe[3], mIm[3];
  for (std::size_t d = 0; d < 3; ++d) {
    const AxisFactor& f = s.axis[d];
    dRe[d] = (f.cosX - 1.0) / s.h[d];
    dIm[d] = -f.sinX / s.h[d];
    mRe[d] = 1.0 - p[d] + p[d] * f.cosX;
    mIm[d] = -p[d] * f.sinX;
  }
  for (std::size_t d = 0; d < 3; ++d) {
    const std::size_t e = (d + 1) % 3;
    const std::size_t g = (d + 2) % 3;
    const double pr = mRe[e] * mRe[g] - mIm[e] * mIm[g];
    const double pi = mRe[e] * mIm[g] + mIm[e] * mRe[g];
    kr[d] = dRe[d] * pr - dIm[d] * pi;
    ki[d] = dRe[d] * pi + dIm[d] * pr;
  }
}

// The vectors of all main points (and, for the hourglass-controlled element, of the
// hourglass points behind them), once all three axis levels have been entered.
template <GreenOperatorType V, bool Tables>
GRIDMOOR_HOT inline void computeGradientVectors(FrequencyState& s, const IntegrationRule& mainRule,
                                                const IntegrationRule& hourglassRule) {
  if constexpr (V == GreenOperatorType::TrilinearFE ||
                V == GreenOperatorType::Hex8RHourGlassControl) {
    const double a = -2.0 * s.halfPhaseIm[2];  // -2 sin s
    const double b = 2.0 * s.halfPhaseRe[2];   //  2 cos s
    const std::array<AxisFactor, 3>& f = s.axis;
    const double v[3] = {f[1].re * f[2].re * f[0].im, f[0].re * f[2].re * f[1].im,
                         f[0].re * f[1].re * f[2].im};
    for (std::size_t d = 0; d < 3; ++d) {
      s.kRe[0][d] = v[d] * a;
      s.kIm[0][d] = v[d] * b;
    }
    if constexpr (Tables)
      for (int d = 0; d < 3; ++d) completeProductTables(s, d);
  }
  if constexpr (V == GreenOperatorType::Q1FE) {
    for (std::size_t p = 0; p < mainRule.count; ++p)
      trilinearElementVector(s, mainRule.points[p], s.kRe[p], s.kIm[p]);
  } else {
    for (std::size_t p = 1; p < mainRule.count; ++p)
      for (std::size_t d = 0; d < 3; ++d) {
        s.kRe[p][d] = s.kRe[0][d];
        s.kIm[p][d] = s.kIm[0][d];
      }
  }
  if constexpr (V == GreenOperatorType::Hex8RHourGlassControl) {
    for (std::size_t p = 0; p < hourglassRule.count; ++p)
      trilinearElementVector(s, hourglassRule.points[p], s.kRe[mainRule.count + p],
                             s.kIm[mainRule.count + p]);
  }
}

}  // namespace gridmoor
