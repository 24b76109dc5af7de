#include "materials/MandelEigenvalues.h"

#include <cmath>
#include <numbers>

// GCC 12 reports a false "may be used uninitialized" inside its own AVX-512 intrinsics when
// Eigen's eigensolver is inlined with -march=native; the flagged code is the compiler's.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#include <Eigen/Dense>

namespace gridmoor {

void mandelEigenvalueRange(const VoigtMatrix& matrix, double shearFactor, double& minimum,
                           double& maximum) {
  Eigen::Matrix<double, 6, 6> mandel;
  for (int a = 0; a < 6; ++a)
    for (int b = 0; b < 6; ++b)
      mandel(a, b) = matrix(a, b) * (a >= 3 ? shearFactor : 1.0) * (b >= 3 ? shearFactor : 1.0);
  // A general solver: a law's matrix need not be symmetric (tangents of non-linear laws).
  const Eigen::EigenSolver<Eigen::Matrix<double, 6, 6>> solver(mandel, false);
  const auto eigenvalues = solver.eigenvalues();
  minimum = maximum = eigenvalues(0).real();
  for (int i = 1; i < 6; ++i) {
    const double v = eigenvalues(i).real();
    if (v < minimum) minimum = v;
    if (v > maximum) maximum = v;
  }
}

void stiffnessEigenvalueRange(const VoigtMatrix& stiffness, double& minimum, double& maximum) {
  mandelEigenvalueRange(stiffness, std::numbers::sqrt2, minimum, maximum);
}

void complianceEigenvalueRange(const VoigtMatrix& compliance, double& minimum, double& maximum) {
  mandelEigenvalueRange(compliance, 1.0 / std::numbers::sqrt2, minimum, maximum);
}

}  // namespace gridmoor

#pragma GCC diagnostic pop
