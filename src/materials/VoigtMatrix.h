// Dense 6x6 (Voigt) and 9x9 (tensor index 3i+j) material matrices and the conversions
// between them. Plain arrays: they are copied by value into the callers' storage.
#pragma once

#include <array>

namespace gridmoor {

// Voigt order 11, 22, 33, 23, 13, 12 as tensor index pairs.
inline constexpr int voigtRow[6] = {0, 1, 2, 1, 0, 0};
inline constexpr int voigtColumn[6] = {0, 1, 2, 2, 2, 1};

struct VoigtMatrix {
  std::array<double, 36> m{};
  // The index rows that turn a Voigt index into its tensor index pair.
  std::array<double, 6> rowIndex{0, 1, 2, 1, 0, 0};
  std::array<double, 6> columnIndex{0, 1, 2, 2, 2, 1};

  double& operator()(int a, int b) { return m[6 * a + b]; }
  double operator()(int a, int b) const { return m[6 * a + b]; }
  // out = M v
  void multiply(const double* v, double* out) const {
    for (int a = 0; a < 6; ++a) {
      double s = 0.0;
      for (int b = 0; b < 6; ++b) s += m[6 * a + b] * v[b];
      out[a] = s;
    }
  }
  static VoigtMatrix identity() {
    VoigtMatrix r;
    for (int a = 0; a < 6; ++a) r(a, a) = 1.0;
    return r;
  }
};

struct TensorMatrix {
  std::array<double, 81> m{};
  double& operator()(int p, int q) { return m[9 * p + q]; }
  double operator()(int p, int q) const { return m[9 * p + q]; }
};

// Stiffness form: entry (a, b) goes to all four index pairs (ij|ji, kl|lk).
TensorMatrix stiffnessTensorOf(const VoigtMatrix& c);
// Doubled-shear form: entry (a, b) goes to (ij, kl) and (ji, lk) only; on the diagonal of the
// shear block both targets receive it twice.
TensorMatrix doubledShearTensorOf(const VoigtMatrix& c);
// Back to 6x6: of the candidates (ij, kl) and (ji, lk) the one of smaller magnitude.
VoigtMatrix voigtOf(const TensorMatrix& t);

}  // namespace gridmoor
