// The filters on known spectra: their values, the periodized operator as the plain one
// scaled per frequency, and the non-consistent one as the sum over the 27 aliases.
// GCC 12 reports its own AVX-512 intrinsics as maybe uninitialised inside Eigen's complex
// matrix-vector products; the state at the intrinsics' header decides, so this comes first.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <set>

#include "GreenOperatorTestSupport.h"
#include "operators/DiscreteGreenOperator.h"
#include "operators/SpectralFilter.h"

namespace gridmoor::test {
namespace {

using G = GreenOperatorType;
constexpr double kPi = std::numbers::pi;

// Even extents: the Nyquist index takes part.
const Grid kGrid = {4, 6, 5};
const std::array<double, 3> kVoxel = {1.0, 0.7, 1.3};
const ReferenceConstants kReference = ReferenceConstants::of(0.8, 1.7);

TEST(GreenOperatorFilter, ValuesOfOneAxis) {
  EXPECT_EQ(getFilterValue(FilterType::None, 3, 8, 0), 1.0);
  EXPECT_EQ(getFilterValue(FilterType::Periodize, 0, 8, 0), 1.0);
  // m = 1 of 4: t = pi / 4; the Nyquist index 2 of 4 has f = -2, t = -pi / 2.
  EXPECT_NEAR(getFilterValue(FilterType::Periodize, 1, 4, 0), 0.5 / (kPi * kPi / 16.0), 1e-15);
  EXPECT_NEAR(getFilterValue(FilterType::Periodize, 2, 4, 0), 4.0 / (kPi * kPi), 1e-15);
  EXPECT_NEAR(getFilterValue(FilterType::Periodize, 3, 4, 0),
              getFilterValue(FilterType::Periodize, 1, 4, 0), 1e-15);
  // Non-consistent: cos^2 of (f + a n) pi / (2 n). Index 3 of 4 is f = -1.
  EXPECT_NEAR(getFilterValue(FilterType::NonConsistent, 0, 4, 0), 1.0, 1e-15);
  EXPECT_NEAR(getFilterValue(FilterType::NonConsistent, 0, 4, 1), 0.0, 1e-15);
  EXPECT_NEAR(getFilterValue(FilterType::NonConsistent, 3, 4, 1),
              std::pow(std::cos(3.0 * kPi / 8.0), 2), 1e-15);
  EXPECT_NEAR(getFilterValue(FilterType::NonConsistent, 3, 4, -1),
              std::pow(std::cos(-5.0 * kPi / 8.0), 2), 1e-15);
  // The aliases: the frequency itself first, then 26 distinct others.
  EXPECT_EQ(kAliasTriples[0], (AliasTriple{0, 0, 0}));
  EXPECT_EQ(std::set<AliasTriple>(kAliasTriples.begin(), kAliasTriples.end()).size(), 27u);
}

double axisProduct(const Frequency& q, FilterType filter) {
  return getFilterValue(filter, static_cast<std::int64_t>(q.i), 4, 0) *
         getFilterValue(filter, static_cast<std::int64_t>(q.j), 6, 0) *
         getFilterValue(filter, static_cast<std::int64_t>(q.l), 5, 0);
}

// The result of Gamma0 with a filter and without it on the same random spectrum.
struct FilteredPair {
  std::unique_ptr<FFTImage> plain, filtered;
};
FilteredPair gamma0WithAndWithout(G discretisation, FilterType filter) {
  const auto input = randomSpectrum(6, kGrid, 51);
  FilteredPair r{copyOf(*input), copyOf(*input)};
  DiscreteGreenOperator::create(
      GreenOperatorSettings::of(discretisation, FilterType::None, false, kVoxel), kGrid)
      ->applyGamma0(*r.plain, kReference);
  DiscreteGreenOperator::create(GreenOperatorSettings::of(discretisation, filter, true, kVoxel),
                                kGrid)
      ->applyGamma0(*r.filtered, kReference);
  return r;
}

TEST(GreenOperatorFilter, PeriodizeScalesEachFrequencyByItsAxisProduct) {
  const FilteredPair r = gamma0WithAndWithout(G::Basic, FilterType::Periodize);
  for (const Frequency& q : frequenciesOf(*r.plain)) {
    if (q.isZero()) continue;
    const Eigen::VectorXcd expected = axisProduct(q, FilterType::Periodize) * valuesAt(*r.plain, q);
    EXPECT_LT((valuesAt(*r.filtered, q) - expected).norm(), 1e-13 * expected.norm());
  }
}

// A finite difference has the same vector at every alias (its symbol is periodic), so its
// aliases only add their filter values: per axis cos^2 t + sin^2 t + sin^2 t with
// t = f pi / (2 n) for the shifts 0, -1 and +1.
TEST(GreenOperatorFilter, NonConsistentSumsTheAliasFilterValues) {
  const FilteredPair r = gamma0WithAndWithout(G::ForwardDifference, FilterType::NonConsistent);
  for (const Frequency& q : frequenciesOf(*r.plain)) {
    if (q.isZero()) continue;
    double factor = 1.0;
    const Index m[3] = {q.i, q.j, q.l};
    for (int d = 0; d < 3; ++d) {
      const auto n = static_cast<std::int64_t>(kGrid[static_cast<std::size_t>(d)]);
      const double t = static_cast<double>(signedFrequency(static_cast<std::int64_t>(m[d]), n)) *
                       kPi / (2.0 * static_cast<double>(n));
      factor *= std::cos(t) * std::cos(t) + 2.0 * std::sin(t) * std::sin(t);
    }
    const Eigen::VectorXcd expected = factor * valuesAt(*r.plain, q);
    EXPECT_LT((valuesAt(*r.filtered, q) - expected).norm(), 1e-12 * expected.norm());
  }
}

// The continuous operator differs at each alias: the sum is checked against the operator
// -B (B^H C0 B)^-1 B^H built here at each alias frequency xi + 2 pi a / h.
TEST(GreenOperatorFilter, NonConsistentBasicIsTheFilteredAliasSum) {
  const FilteredPair r = gamma0WithAndWithout(G::Basic, FilterType::NonConsistent);
  const auto input = randomSpectrum(6, kGrid, 51);
  const Eigen::MatrixXcd c0 = stiffnessMatrix(kReference.lambda0, kReference.mu0).cast<Cd>();
  for (const Frequency& q : frequenciesOf(*r.plain)) {
    if (q.isZero()) continue;
    const Index m[3] = {q.i, q.j, q.l};
    Eigen::MatrixXcd sum = Eigen::MatrixXcd::Zero(6, 6);
    for (int a0 = -1; a0 <= 1; ++a0)
      for (int a1 = -1; a1 <= 1; ++a1)
        for (int a2 = -1; a2 <= 1; ++a2) {
          const int a[3] = {a0, a1, a2};
          double filter = 1.0;
          Eigen::Vector3d xi;
          for (int d = 0; d < 3; ++d) {
            const auto n = static_cast<std::int64_t>(kGrid[static_cast<std::size_t>(d)]);
            const double f =
                static_cast<double>(signedFrequency(static_cast<std::int64_t>(m[d]), n) + a[d] * n);
            xi[d] = 2.0 * kPi * f / static_cast<double>(n) / kVoxel[static_cast<std::size_t>(d)];
            filter *= std::pow(std::cos(f * kPi / (2.0 * static_cast<double>(n))), 2);
          }
          Eigen::MatrixXcd b = Eigen::MatrixXcd::Zero(6, 3);
          for (int d = 0; d < 3; ++d) b(d, d) = Cd(0.0, xi[d]);
          b(3, 1) = b(4, 0) = Cd(0.0, xi[2]);
          b(3, 2) = b(5, 0) = Cd(0.0, xi[1]);
          b(4, 2) = b(5, 1) = Cd(0.0, xi[0]);
          const Eigen::MatrixXcd a3 = b.adjoint() * c0 * b;
          sum -= filter * b * a3.inverse() * b.adjoint();
        }
    const Eigen::VectorXcd expected = sum * valuesAt(*input, q);
    EXPECT_LT((valuesAt(*r.filtered, q) - expected).norm(), 1e-12 * expected.norm());
  }
}

}  // namespace
}  // namespace gridmoor::test
