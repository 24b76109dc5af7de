#include "solvers/MacroscopicRelation.h"

#include <cmath>
#include <utility>

#include "common/Fatal.h"

namespace gridmoor {

namespace {

constexpr int kRow[6] = {0, 1, 2, 1, 0, 0};
constexpr int kCol[6] = {0, 1, 2, 2, 2, 1};
constexpr int kVoigt[3][3] = {{0, 5, 4}, {5, 1, 3}, {4, 3, 2}};

}  // namespace

LoadFrame::LoadFrame(const std::array<double, 9>& r) {
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j)
      for (int k = 0; k < 3; ++k)
        for (int l = 0; l < 3; ++l) table_[i][j][k][l] = r[3 * i + k] * r[3 * j + l];
}

std::array<double, 6> LoadFrame::apply(const std::array<double, 6>& v, bool engineeringShear,
                                       bool forwards) const {
  double t[3][3];
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) {
      const int s = kVoigt[i][j];
      t[i][j] = (s >= 3 && engineeringShear) ? 0.5 * v[s] : v[s];
    }
  std::array<double, 6> out{};
  for (int s = 0; s < 6; ++s) {
    const int i = kRow[s], j = kCol[s];
    double sum = 0.0;
    for (int k = 0; k < 3; ++k)
      for (int l = 0; l < 3; ++l)
        sum += (forwards ? table_[i][j][k][l] : table_[k][l][i][j]) * t[k][l];
    out[s] = (s >= 3 && engineeringShear) ? 2.0 * sum : sum;
  }
  return out;
}

std::array<double, 6> LoadFrame::toLoadFrame(const std::array<double, 6>& v,
                                             bool engineeringShear) const {
  return apply(v, engineeringShear, true);
}

std::array<double, 6> LoadFrame::toGlobalFrame(const std::array<double, 6>& v,
                                               bool engineeringShear) const {
  return apply(v, engineeringShear, false);
}

std::array<double, 6> solveMacroscopicStrain(const MacroscopicLoad& load,
                                             const std::array<double, 6>& meanPolarization,
                                             const ReferenceConstants& reference) {
  std::array<double, 6> strain{};
  if (load.isPureStrain()) return load.values;
  const LoadFrame frame(load.rotation);
  const std::array<double, 6> tau = frame.toLoadFrame(meanPolarization, false);
  // C0 in Voigt form; an isotropic reference is the same in every frame.
  double c0[6][6] = {};
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) c0[i][j] = reference.lambda0;
    c0[i][i] += 2.0 * reference.mu0;
    c0[i + 3][i + 3] = reference.mu0;
  }
  int unknown[6];
  int n = 0;
  for (int c = 0; c < 6; ++c) {
    if (load.stressMask & (1u << c))
      unknown[n++] = c;
    else
      strain[c] = load.values[c];
  }
  // The rows of the stress-prescribed components: C0[S,S] x = Sigma_S - tau_S - C0[S,K] E_K.
  double a[6][7] = {};
  for (int r = 0; r < n; ++r) {
    const int i = unknown[r];
    double rhs = load.values[i] - tau[i];
    for (int c = 0; c < 6; ++c)
      if (!(load.stressMask & (1u << c))) rhs -= c0[i][c] * strain[c];
    for (int q = 0; q < n; ++q) a[r][q] = c0[i][unknown[q]];
    a[r][n] = rhs;
  }
  // Gaussian elimination with partial pivoting; C0[S,S] is positive definite for mu0 > 0.
  for (int k = 0; k < n; ++k) {
    int pivot = k;
    for (int r = k + 1; r < n; ++r)
      if (std::abs(a[r][k]) > std::abs(a[pivot][k])) pivot = r;
    if (a[pivot][k] == 0.0) fatal("Macroscopic relation is singular: reference material is zero");
    if (pivot != k)
      for (int c = 0; c <= n; ++c) std::swap(a[k][c], a[pivot][c]);
    for (int r = k + 1; r < n; ++r) {
      const double f = a[r][k] / a[k][k];
      for (int c = k; c <= n; ++c) a[r][c] -= f * a[k][c];
    }
  }
  for (int r = n - 1; r >= 0; --r) {
    double s = a[r][n];
    for (int c = r + 1; c < n; ++c) s -= a[r][c] * strain[unknown[c]];
    strain[unknown[r]] = s / a[r][r];
  }
  return frame.toGlobalFrame(strain, true);
}

}  // namespace gridmoor
