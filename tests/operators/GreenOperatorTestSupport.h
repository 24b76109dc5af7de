// Helpers of the Green operator tests: random spectra, per-frequency values as Eigen
// vectors, the reference stiffness as a matrix, and the discretisation read off its divergence.
#pragma once

#include <Eigen/Dense>
#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <memory>
#include <ostream>
#include <random>
#include <vector>

#include "operators/DiscreteGreenOperator.h"

namespace gridmoor {
inline void PrintTo(GreenOperatorType v, std::ostream* os) { *os << wordOf(v); }
}  // namespace gridmoor

namespace gridmoor::test {

using Index = std::uint64_t;
using Cd = std::complex<double>;
using Grid = std::array<Index, 3>;
using G = GreenOperatorType;

// Odd extents: no Nyquist index, so no frequency but zero has a vanishing symbol. Unequal
// voxel lengths, so that a factor taken from the wrong axis shows.
inline const Grid kGrid = {5, 3, 7};
inline const std::array<double, 3> kVoxel = {1.0, 0.7, 1.3};
inline const ReferenceConstants kReference = ReferenceConstants::of(0.8, 1.7, 0.3, 0.45);

struct Frequency {
  Index i, j, l;
  bool isZero() const { return i == 0 && j == 0 && l == 0; }
};

inline std::vector<Frequency> frequenciesOf(const FFTImage& f) {
  std::vector<Frequency> all;
  for (Index i = 0; i < f.nFirst; ++i)
    for (Index j = 0; j < f.nSecond; ++j)
      for (Index l = 0; l <= f.nThird / 2; ++l) all.push_back({i, j, l});
  return all;
}

inline void fillRandom(FFTImage& f, unsigned seed) {
  std::mt19937 gen(seed);
  std::uniform_real_distribution<double> dist(-1.0, 1.0);
  for (double& v : f) v = dist(gen);
}

// A field standing in Fourier space with random complex values at every frequency.
inline std::unique_ptr<FFTImage> randomSpectrum(Index components, const Grid& g, unsigned seed) {
  auto f = std::make_unique<FFTImage>(components, g[0], g[1], g[2], "spectrum");
  fillRandom(*f, seed);
  f->isInFourierSpace = true;
  return f;
}

inline std::unique_ptr<FFTImage> copyOf(const FFTImage& f) {
  auto c = std::make_unique<FFTImage>(f.nComponents, f.nFirst, f.nSecond, f.nThird, "copy");
  *c = f;
  return c;
}

inline double maxDifference(const FFTImage& a, const FFTImage& b) {
  double m = 0.0;
  for (std::size_t n = 0; n < a.size(); ++n) m = std::max(m, std::abs(a[n] - b[n]));
  return m;
}

inline Eigen::VectorXcd valuesAt(const FFTImage& f, const Frequency& q) {
  Eigen::VectorXcd v(static_cast<Eigen::Index>(f.nComponents));
  for (Index c = 0; c < f.nComponents; ++c)
    v[static_cast<Eigen::Index>(c)] =
        Cd(f.realPart(c, q.i, q.j, q.l), f.imagPart(c, q.i, q.j, q.l));
  return v;
}

// field = m field at every frequency.
inline void multiply(FFTImage& field, const Eigen::MatrixXd& m) {
  for (const Frequency& q : frequenciesOf(field)) {
    const Eigen::VectorXcd v = m * valuesAt(field, q);
    for (Index c = 0; c < field.nComponents; ++c) {
      field.realPart(c, q.i, q.j, q.l) = v[static_cast<Eigen::Index>(c)].real();
      field.imagPart(c, q.i, q.j, q.l) = v[static_cast<Eigen::Index>(c)].imag();
    }
  }
}

// The reference stiffness on Voigt vectors (engineering shear in, plain shear out), the
// same on each of `points` points.
inline Eigen::MatrixXd stiffnessMatrix(double lambda, double mu, Index points = 1) {
  const auto n = static_cast<Eigen::Index>(points);
  Eigen::MatrixXd c = Eigen::MatrixXd::Zero(6 * n, 6 * n);
  for (Eigen::Index p = 0; p < 6 * n; p += 6) {
    c.block(p, p, 3, 3).setConstant(lambda);
    for (int a = 0; a < 3; ++a) {
      c(p + a, p + a) += 2.0 * mu;
      c(p + 3 + a, p + 3 + a) = mu;
    }
  }
  return c;
}

// The divergence of an operator as one 3 x (6 points) matrix per frequency, read off by
// applying it to unit tensors: everything that defines the discretisation's balance.
inline std::vector<Eigen::MatrixXcd> divergenceMatrices(const DiscreteGreenOperator& op,
                                                        const Grid& g) {
  const Index values = op.valuesPerVoxel();
  FFTImage probe(values, g[0], g[1], g[2], "probe");
  const std::vector<Frequency> all = frequenciesOf(probe);
  std::vector<Eigen::MatrixXcd> d(all.size(),
                                  Eigen::MatrixXcd(3, static_cast<Eigen::Index>(values)));
  for (Index c = 0; c < values; ++c) {
    probe = 0.0;
    for (const Frequency& q : all) probe.realPart(c, q.i, q.j, q.l) = 1.0;
    probe.isInFourierSpace = true;
    op.applyDivergence(probe);
    for (std::size_t n = 0; n < all.size(); ++n)
      d[n].col(static_cast<Eigen::Index>(c)) = valuesAt(probe, all[n]).head(3);
  }
  return d;
}

// The discrete symmetric gradient of the points, stacked (6 points x 3): the negative
// adjoint of the divergence, each point's block divided by its weight.
inline Eigen::MatrixXcd gradientFromDivergence(const Eigen::MatrixXcd& d,
                                               const IntegrationRule& rule) {
  Eigen::MatrixXcd b = -d.adjoint();
  for (Index p = 0; p < rule.count; ++p)
    b.middleRows(6 * static_cast<Eigen::Index>(p), 6) /= rule.weights[p];
  return b;
}

}  // namespace gridmoor::test
