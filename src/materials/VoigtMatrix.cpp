#include "materials/VoigtMatrix.h"

#include <cmath>

namespace gridmoor {

namespace {
inline int pair(int i, int j) { return 3 * i + j; }
}  // namespace

TensorMatrix stiffnessTensorOf(const VoigtMatrix& c) {
  TensorMatrix t;
  for (int a = 0; a < 6; ++a) {
    const int i = voigtRow[a], j = voigtColumn[a];
    for (int b = 0; b < 6; ++b) {
      const int k = voigtRow[b], l = voigtColumn[b];
      const double v = c(a, b);
      t(pair(i, j), pair(k, l)) = v;
      t(pair(j, i), pair(k, l)) = v;
      t(pair(i, j), pair(l, k)) = v;
      t(pair(j, i), pair(l, k)) = v;
    }
  }
  return t;
}

TensorMatrix doubledShearTensorOf(const VoigtMatrix& c) {
  TensorMatrix t;
  for (int a = 0; a < 6; ++a) {
    const int i = voigtRow[a], j = voigtColumn[a];
    for (int b = 0; b < 6; ++b) {
      const int k = voigtRow[b], l = voigtColumn[b];
      const double v = c(a, b);
      if (a == b && a >= 3) {
        t(pair(i, j), pair(k, l)) += 2.0 * v;
        t(pair(j, i), pair(l, k)) += 2.0 * v;
      } else {
        t(pair(i, j), pair(k, l)) = v;
        t(pair(j, i), pair(l, k)) = v;
      }
    }
  }
  return t;
}

VoigtMatrix voigtOf(const TensorMatrix& t) {
  VoigtMatrix c;
  for (int a = 0; a < 6; ++a) {
    const int i = voigtRow[a], j = voigtColumn[a];
    for (int b = 0; b < 6; ++b) {
      const int k = voigtRow[b], l = voigtColumn[b];
      const double first = t(pair(i, j), pair(k, l));
      const double second = t(pair(j, i), pair(l, k));
      c(a, b) = std::fabs(first) <= std::fabs(second) ? first : second;
    }
  }
  return c;
}

}  // namespace gridmoor
