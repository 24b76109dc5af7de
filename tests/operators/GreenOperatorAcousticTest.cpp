// The closed forms of the acoustic inverse against the acoustic tensor built from the
// discretisation's gradient: G times the tensor is the identity for every vector.
// GCC 12 reports its own AVX-512 intrinsics as maybe uninitialised inside Eigen's complex
// matrix-vector products; the state at the intrinsics' header decides, so this comes first.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#include <gtest/gtest.h>

#include <random>

#include "GreenOperatorTestSupport.h"
#include "operators/AcousticInverse.h"

namespace gridmoor::test {
namespace {

using G = GreenOperatorType;

// The 6 x 3 symmetric gradient (engineering shear) of vector k. The staggered one is the
// negative adjoint of a divergence whose normal term is +k_i tau_ii.
Eigen::Matrix<Cd, 6, 3> gradientMatrix(const Eigen::Vector3cd& k, bool staggered) {
  Eigen::Matrix<Cd, 6, 3> b = Eigen::Matrix<Cd, 6, 3>::Zero();
  for (int i = 0; i < 3; ++i) b(i, i) = staggered ? -std::conj(k[i]) : k[i];
  b(3, 1) = k[2];
  b(3, 2) = k[1];
  b(4, 0) = k[2];
  b(4, 2) = k[0];
  b(5, 0) = k[1];
  b(5, 1) = k[0];
  return b;
}

Eigen::Matrix3cd acousticTensor(const Eigen::Vector3cd& k, bool staggered, double lambda,
                                double mu) {
  const Eigen::Matrix<Cd, 6, 3> b = gradientMatrix(k, staggered);
  return b.adjoint() * stiffnessMatrix(lambda, mu).cast<Cd>() * b;
}

FrequencyState stateWithVector(const Eigen::Vector3cd& k) {
  FrequencyState s;
  for (int d = 0; d < 3; ++d) {
    s.kRe[0][d] = k[d].real();
    s.kIm[0][d] = k[d].imag();
  }
  for (int d = 0; d < 3; ++d) completeProductTables(s, d);
  return s;
}

Eigen::Matrix3cd toEigen(const HermitianMatrix3& m) {
  Eigen::Matrix3cd e;
  for (int a = 0; a < 3; ++a)
    for (int b = 0; b < 3; ++b) e(a, b) = Cd(m.re[a][b], m.im[a][b]);
  return e;
}

// G of a closed form, column by column: G applied to the unit vectors.
template <G V>
Eigen::Matrix3cd closedForm(const FrequencyState& s, const ReferenceConstants& r) {
  Eigen::Matrix3cd g;
  for (int c = 0; c < 3; ++c) {
    ComplexValue unit[3] = {}, column[3];
    unit[c] = {1.0, 0.0};
    applyAcousticInverse<V>(s, r, unit, column);
    for (int a = 0; a < 3; ++a) g(a, c) = Cd(column[a].re, column[a].im);
  }
  return g;
}

TEST(GreenOperatorAcoustic, ClosedFormsInvertTheirDiscretisationsTensor) {
  std::mt19937 gen(31);
  std::uniform_real_distribution<double> dist(-2.0, 2.0);
  std::uniform_real_distribution<double> positive(0.2, 3.0);
  for (int trial = 0; trial < 50; ++trial) {
    // lambda0 may be zero or negative in a reference.
    const double mu = positive(gen);
    const double lambda = trial % 5 == 0 ? 0.0 : dist(gen) * mu / 4.0;
    const ReferenceConstants r = ReferenceConstants::of(lambda, mu);
    const Eigen::Vector3cd k(Cd(dist(gen), dist(gen)), Cd(dist(gen), dist(gen)),
                             Cd(dist(gen), dist(gen)));
    const FrequencyState s = stateWithVector(k);
    const Eigen::Matrix3cd standard = acousticTensor(k, false, lambda, mu);
    const Eigen::Matrix3cd staggered = acousticTensor(k, true, lambda, mu);
    const Eigen::Matrix3cd identity = Eigen::Matrix3cd::Identity();
    // The finite differences and the reduced element share one form for complex vectors.
    EXPECT_LT((closedForm<G::ForwardDifference>(s, r) * standard - identity).norm(), 1e-12);
    EXPECT_LT((closedForm<G::TrilinearFE>(s, r) * standard - identity).norm(), 1e-12);
    // The staggered grid: the sign of its imaginary part follows from its own gradient.
    EXPECT_LT((closedForm<G::StaggeredGrid>(s, r) * staggered - identity).norm(), 1e-12);

    // The continuous form, k = i xi.
    const Eigen::Vector3cd basic(Cd(0.0, dist(gen)), Cd(0.0, dist(gen)), Cd(0.0, dist(gen)));
    EXPECT_LT((closedForm<G::Basic>(stateWithVector(basic), r) *
                   acousticTensor(basic, false, lambda, mu) -
               identity)
                  .norm(),
              1e-12);

    // The general form accumulates the same tensors with the points' weights, and inverts
    // the sum.
    IntegrationRule two = IntegrationRule::centre();
    two.count = 2;
    two.weights = {0.25, 0.75};
    FrequencyState pair = s;
    const Eigen::Vector3cd k2(Cd(dist(gen), dist(gen)), Cd(dist(gen), dist(gen)),
                              Cd(dist(gen), dist(gen)));
    for (int d = 0; d < 3; ++d) {
      pair.kRe[1][d] = k2[d].real();
      pair.kIm[1][d] = k2[d].imag();
    }
    for (bool stag : {false, true}) {
      const Eigen::Matrix3cd weighted =
          0.25 * (stag ? staggered : standard) + 0.75 * acousticTensor(k2, stag, lambda, mu);
      HermitianMatrix3 a, g;
      if (stag)
        accumulatedAcousticTensor<G::StaggeredGrid>(pair, two, IntegrationRule::empty(), r, a);
      else
        accumulatedAcousticTensor<G::Q1FE>(pair, two, IntegrationRule::empty(), r, a);
      EXPECT_LT((toEigen(a) - weighted).norm(), 1e-12 * weighted.norm());
      invertHermitian(a, g);
      EXPECT_LT((toEigen(g) * weighted - identity).norm(), 1e-12);
    }
  }
}

}  // namespace
}  // namespace gridmoor::test
