#include "postprocessing/EffectiveMatrix.h"

#include <cmath>
#include <ostream>
#include <span>

#include "materials/VoigtMatrix.h"
#include "postprocessing/ResultFile.h"

// GCC 12 reports a false "may be used uninitialized" inside its own AVX-512 intrinsics when
// Eigen's LU is inlined with -march=native; the flagged code is the compiler's.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#include <Eigen/Dense>

namespace gridmoor {

void EffectiveMatrix::setIdentityLayout() {
  for (int a = 0; a < 6; ++a) {
    rowIndex[a] = voigtRow[a];
    columnIndex[a] = voigtColumn[a];
  }
}

bool EffectiveMatrix::invert() {
  for (double v : values)
    if (!std::isfinite(v)) return false;
  Eigen::Matrix<double, 6, 6, Eigen::RowMajor> m;
  for (int r = 0; r < 6; ++r)
    for (int c = 0; c < 6; ++c) m(r, c) = values[6 * r + c];
  // Full pivoting gives a rank decision that partial pivoting does not.
  const Eigen::FullPivLU<Eigen::Matrix<double, 6, 6, Eigen::RowMajor>> lu(m);
  if (!lu.isInvertible()) return false;
  const Eigen::Matrix<double, 6, 6, Eigen::RowMajor> inverse = lu.inverse();
  for (int r = 0; r < 6; ++r)
    for (int c = 0; c < 6; ++c) values[6 * r + c] = inverse(r, c);
  return true;
}

void EffectiveMatrix::writeRows(std::ostream& out, const std::string& key) const {
  writeMatrixRows(out, key, std::span<const double>(values), 6);
}

void EffectiveMatrix::writeRows(std::ostream& out, const std::string& key, unsigned rowMask,
                                unsigned columnMask) const {
  writeMaskedRows(out, key, std::span<const double>(values), 6, rowMask, columnMask);
}

void EffectiveMatrix::printPmatrix(std::ostream& out) const {
  out << "\\begin{pmatrix}\n";
  for (int r = 0; r < 6; ++r) {
    for (int c = 0; c < 6; ++c) out << (c == 0 ? "" : " & ") << values[6 * r + c];
    out << " \\\\\n";
  }
  out << "\\end{pmatrix}\n";
}

std::array<double, 9> tensorOfVoigt(const std::array<double, 6>& voigt, bool strainLike) {
  const double shear = strainLike ? 0.5 : 1.0;
  std::array<double, 9> t{};
  for (int a = 0; a < 6; ++a) {
    const double v = a < 3 ? voigt[a] : shear * voigt[a];
    t[3 * voigtRow[a] + voigtColumn[a]] = v;
    t[3 * voigtColumn[a] + voigtRow[a]] = v;
  }
  return t;
}

}  // namespace gridmoor

#pragma GCC diagnostic pop
