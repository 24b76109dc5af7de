#include "materials/LinearElasticMaterialMatrices.h"

#include <cmath>
#include <utility>

namespace gridmoor {

LameConstants lameConstantsOf(double youngsModulus, double poissonRatio) {
  const double onePlusNu = 1.0 + poissonRatio;
  return {youngsModulus * poissonRatio / ((1.0 - 2.0 * poissonRatio) * onePlusNu),
          youngsModulus / (onePlusNu + onePlusNu)};
}

VoigtMatrix isotropicStiffness(double lambda, double mu) {
  VoigtMatrix c;
  for (int a = 0; a < 3; ++a) {
    for (int b = 0; b < 3; ++b) c(a, b) = lambda;
    c(a, a) = lambda + 2.0 * mu;
    c(a + 3, a + 3) = mu;
  }
  return c;
}

VoigtMatrix isotropicCompliance(double youngsModulus, double poissonRatio) {
  VoigtMatrix d;
  const double offDiagonal = -poissonRatio / youngsModulus;
  for (int a = 0; a < 3; ++a) {
    for (int b = 0; b < 3; ++b) d(a, b) = offDiagonal;
    d(a, a) = 1.0 / youngsModulus;
    d(a + 3, a + 3) = 2.0 * (1.0 + poissonRatio) / youngsModulus;
  }
  return d;
}

VoigtMatrix isotropicInverseByModuli(double dl, double dm) {
  const double sum = dl + dm;
  return isotropicCompliance(dm * (3.0 * dl + 2.0 * dm) / sum, dl / (2.0 * sum));
}

VoigtMatrix transversalIsotropicStiffness(double a, double b, double c, double d, double g12) {
  const double den = a * (d - 1.0) + 2.0 * b * c * c;
  VoigtMatrix m;
  m(0, 0) = a * a * (d - 1.0) / den;
  const double c01 = a * b * c / (a - 2.0 * b * c * c - a * d);
  m(0, 1) = m(1, 0) = m(0, 2) = m(2, 0) = c01;
  m(1, 1) = m(2, 2) = b * (b * c * c - a) / (den * (1.0 + d));
  m(1, 2) = m(2, 1) = -b * (b * c * c + a * d) / (den * (1.0 + d));
  m(3, 3) = b / (2.0 * d + 2.0);
  m(4, 4) = m(5, 5) = g12;
  return m;
}

VoigtMatrix transversalIsotropicCompliance(double a, double b, double c, double d, double g12) {
  VoigtMatrix m;
  m(0, 0) = 1.0 / a;
  m(0, 1) = m(1, 0) = m(0, 2) = m(2, 0) = -c / a;
  m(1, 1) = m(2, 2) = 1.0 / b;
  m(1, 2) = m(2, 1) = -d / b;
  m(3, 3) = (2.0 * d + 2.0) / b;
  m(4, 4) = m(5, 5) = 1.0 / g12;
  return m;
}

VoigtMatrix orthotropicCompliance(const OrthotropicConstants& k) {
  VoigtMatrix m;
  m(0, 0) = 1.0 / k.e1;
  m(0, 1) = m(1, 0) = -k.nu12 / k.e1;
  m(0, 2) = m(2, 0) = -k.nu13 / k.e1;
  m(1, 1) = 1.0 / k.e2;
  m(1, 2) = m(2, 1) = -k.nu23 / k.e2;
  m(2, 2) = 1.0 / k.e3;
  m(3, 3) = 1.0 / k.g23;
  m(4, 4) = 1.0 / k.g13;
  m(5, 5) = 1.0 / k.g12;
  return m;
}

VoigtMatrix orthotropicStiffness(const OrthotropicConstants& k) {
  const VoigtMatrix d = orthotropicCompliance(k);
  // Cofactors of the symmetric 3x3 normal block.
  const double c00 = d(1, 1) * d(2, 2) - d(1, 2) * d(2, 1);
  const double c01 = d(1, 2) * d(2, 0) - d(1, 0) * d(2, 2);
  const double c02 = d(1, 0) * d(2, 1) - d(1, 1) * d(2, 0);
  const double c11 = d(0, 0) * d(2, 2) - d(0, 2) * d(2, 0);
  const double c12 = d(0, 2) * d(1, 0) - d(0, 0) * d(1, 2);
  const double c22 = d(0, 0) * d(1, 1) - d(0, 1) * d(1, 0);
  const double det = d(0, 0) * c00 + d(0, 1) * c01 + d(0, 2) * c02;
  VoigtMatrix m;
  m(0, 0) = c00 / det;
  m(0, 1) = m(1, 0) = c01 / det;
  m(0, 2) = m(2, 0) = c02 / det;
  m(1, 1) = c11 / det;
  m(1, 2) = m(2, 1) = c12 / det;
  m(2, 2) = c22 / det;
  m(3, 3) = k.g23;
  m(4, 4) = k.g13;
  m(5, 5) = k.g12;
  return m;
}

VoigtMatrix invertByLU(const VoigtMatrix& m) {
  // Doolittle factorisation of a copy, P M = L U, with the row of the largest remaining
  // entry as pivot; no check of the pivot, so a singular matrix runs into a division by 0.
  double lu[6][6];
  int permutation[6];
  for (int a = 0; a < 6; ++a) {
    permutation[a] = a;
    for (int b = 0; b < 6; ++b) lu[a][b] = m(a, b);
  }
  for (int k = 0; k < 6; ++k) {
    int pivot = k;
    for (int a = k + 1; a < 6; ++a)
      if (std::abs(lu[a][k]) > std::abs(lu[pivot][k])) pivot = a;
    if (pivot != k) {
      std::swap(lu[pivot], lu[k]);
      std::swap(permutation[pivot], permutation[k]);
    }
    for (int a = k + 1; a < 6; ++a) {
      const double factor = lu[a][k] / lu[k][k];
      lu[a][k] = factor;
      for (int b = k + 1; b < 6; ++b) lu[a][b] -= factor * lu[k][b];
    }
  }
  // Column j of the inverse solves L U x = P e_j: forward, then backward substitution.
  VoigtMatrix inverse;
  for (int j = 0; j < 6; ++j) {
    double x[6];
    for (int a = 0; a < 6; ++a) {
      double sum = permutation[a] == j ? 1.0 : 0.0;
      for (int b = 0; b < a; ++b) sum -= lu[a][b] * x[b];
      x[a] = sum;
    }
    for (int a = 5; a >= 0; --a) {
      double sum = x[a];
      for (int b = a + 1; b < 6; ++b) sum -= lu[a][b] * x[b];
      x[a] = sum / lu[a][a];
    }
    for (int a = 0; a < 6; ++a) inverse(a, j) = x[a];
  }
  return inverse;
}

}  // namespace gridmoor
