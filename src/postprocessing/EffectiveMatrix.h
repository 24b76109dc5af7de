// The 6x6 effective matrices of homogenization (stiffness, compliance, bounds) in Voigt
// order, their inverse, and the row formats of the result file and of a LaTeX print.
#pragma once

#include <array>
#include <iosfwd>
#include <string>

namespace gridmoor {

class EffectiveMatrix {
 public:
  // Row-major values; slot a of a row or column stands for the tensor index pair
  // (rowIndex[a], columnIndex[a]): XX, YY, ZZ, YZ, XZ, XY.
  std::array<double, 36> values{};
  std::array<int, 6> rowIndex{};
  std::array<int, 6> columnIndex{};

  EffectiveMatrix() { setIdentityLayout(); }

  // The Voigt index table (XX, YY, ZZ, YZ, XZ, XY).
  void setIdentityLayout();
  double& operator()(int row, int column) { return values[6 * row + column]; }
  double operator()(int row, int column) const { return values[6 * row + column]; }

  // Replaces the matrix by its inverse. A singular matrix (rank below 6, or non-finite
  // entries) is left as it is and false is returned.
  bool invert();

  // "key:r  v1,...,v6" for rows 1 to 6.
  void writeRows(std::ostream& out, const std::string& key) const;
  // Only rows whose bit is set in rowMask, each with only the columns set in columnMask.
  void writeRows(std::ostream& out, const std::string& key, unsigned rowMask,
                 unsigned columnMask) const;
  // "\begin{pmatrix}", rows "a & b & ... \\", "\end{pmatrix}".
  void printPmatrix(std::ostream& out) const;
};

// The symmetric 3x3 tensor (row-major) of a Voigt vector. Strain-like vectors carry
// engineering shear, which is halved here so that the tensor is the physical one; stress-like
// vectors carry the tensor shear already.
std::array<double, 9> tensorOfVoigt(const std::array<double, 6>& voigt, bool strainLike);

}  // namespace gridmoor
