// The operators on spectra: a real field stays real, the divergence of each finite-difference
// scheme is its stencil on the voxel grid, and the filters scale the operator as they should.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"  // GCC 12 on Eigen's AVX-512 code
#include <gtest/gtest.h>

#include <numbers>
#include <ostream>
#include <string>
#include <vector>

#include "GreenOperatorTestSupport.h"
#include "operators/FrequencyFilter.h"

namespace gridmoor::test {
namespace {

constexpr double kPi = std::numbers::pi;

struct SpectrumCase {
  G discretisation;
  Grid grid;
};
void PrintTo(const SpectrumCase& c, std::ostream* os) {
  *os << wordOf(c.discretisation) << " on " << c.grid[0] << "x" << c.grid[1] << "x" << c.grid[2];
}

class GreenOperatorRealField : public ::testing::TestWithParam<SpectrumCase> {};

std::vector<SpectrumCase> realFieldCases() {
  std::vector<SpectrumCase> cases;
  for (G v : {G::Basic, G::ForwardDifference, G::CentralDifference, G::BackwardDifference,
              G::StaggeredGrid, G::TrilinearFE, G::Q1FE, G::Hex8RHourGlassControl, G::Helmholtz})
    cases.push_back({v, {5, 3, 7}});
  // On even axes the vector of the Nyquist index must be its own conjugate. The continuous
  // i xi is not (those planes of "Basic" and "Helmholtz" are left to the transform), and the
  // central difference and the reduced element have a zero symbol there.
  for (G v : {G::ForwardDifference, G::BackwardDifference, G::StaggeredGrid, G::Q1FE,
              G::Hex8RHourGlassControl})
    cases.push_back({v, {4, 6, 8}});
  return cases;
}

INSTANTIATE_TEST_SUITE_P(GreenOperator, GreenOperatorRealField,
                         ::testing::ValuesIn(realFieldCases()),
                         [](const ::testing::TestParamInfo<SpectrumCase>& info) {
                           return wordOf(info.param.discretisation) +
                                  (info.param.grid[0] % 2 == 0 ? "Even" : "Odd");
                         });

// A solver step folds the 1 / N of the backward transform and the squared norm of the new
// field into the operator's loop. Against the separate passes: the same field after an
// unnormalised backward transform, and N times the returned sum equal to the weighted sum
// of squares over the voxels (Parseval over the half spectrum, twin planes counted twice).
// The general form is taken as well where the closed form exists. Transformed forth again,
// the field must return to the spectrum: one that is not Hermitian where it holds a frequency
// and its negative (third index 0 and, on an even axis, n / 2) loses its anti-Hermitian part.
TEST_P(GreenOperatorRealField, SpectrumStaysHermitianAndScaleAndNormFoldIntoTheLoop) {
  const Grid& g = GetParam().grid;
  const double n = static_cast<double>(g[0] * g[1] * g[2]);
  for (bool specialize : {true, false}) {
    const char* form = specialize ? " specialised" : " general";
    const auto op = DiscreteGreenOperator::create(
        GreenOperatorSettings::of(GetParam().discretisation, FilterType::None, specialize, kVoxel),
        g);
    FFTImage separate(op->valuesPerVoxel(), g[0], g[1], g[2], "separate");
    FFTImage folded(op->valuesPerVoxel(), g[0], g[1], g[2], "folded");
    FFTImage force(3, g[0], g[1], g[2], "force");
    for (FFTImage* f : {&separate, &folded, &force}) f->createPlans("Estimate");
    fillRandom(separate, 43);
    fillRandom(force, 44);
    folded = separate;
    for (FFTImage* f : {&separate, &folded, &force}) f->forwardTransform();
    std::vector<double> weights(op->valuesPerVoxel());
    for (std::size_t c = 0; c < weights.size(); ++c)
      weights[c] = 0.5 + 0.25 * static_cast<double>(c % 5);
    const SpectrumPass pass{1.0 / n, weights.data()};

    for (const char* which : {"Gamma0", "Psi0"}) {
      // The force term adds to the tensor term, which the first round left scaled in
      // `folded` and unscaled in `separate`.
      const bool withForce = which[0] == 'P';
      double sum = 0.0;
      if (!withForce) {
        op->applyGamma0(separate, kReference);
        sum = op->applyGamma0(folded, kReference, pass);
      } else {
        op->applyPsi0(force, separate, kReference);
        sum = op->applyPsi0(force, folded, kReference, pass);
      }
      // The loops leave the zero frequency alone; here it is cleared on both.
      for (Index c = 0; c < separate.nComponents; ++c)
        for (FFTImage* f : {&separate, &folded}) f->realPart(c, 0, 0, 0) = f->imagPart(c, 0, 0, 0) = 0.0;
      auto keptSeparate = copyOf(separate);
      auto keptFolded = copyOf(folded);
      separate.backwardTransform();
      folded.backwardTransformUnnormalised();
      double squares = 0.0, difference = 0.0;
      for (Index i = 0; i < g[0]; ++i)
        for (Index j = 0; j < g[1]; ++j)
          for (Index k = 0; k < g[2]; ++k)
            for (Index c = 0; c < separate.nComponents; ++c) {
              const double v = separate[separate.elementIndex(c, i, j, k)];
              squares += weights[c] * v * v;
              difference =
                  std::max(difference, std::abs(v - folded[folded.elementIndex(c, i, j, k)]));
            }
      EXPECT_LT(difference, 1e-12) << which << form;
      EXPECT_GT(squares, 0.0);
      EXPECT_NEAR(sum * n, squares, 1e-11 * squares) << which << form;
      separate.forwardTransform();
      EXPECT_LT(maxDifference(separate, *keptSeparate), 1e-12) << which << form << " not Hermitian";
      separate = *keptSeparate;
      folded = *keptFolded;
    }
  }
}

// The closed "Basic" and "StaggeredGrid" Gamma0 run over whole rows, two frequencies at a
// time: against the general form on rows of odd and even length (inner axes 7, 8 and 1), the
// Nyquist planes of even axes included, with the scale and the norm of a solver step, the
// zero frequency kept.
TEST(GreenOperatorClosedForms, RowsAgreeWithTheGeneralForm) {
  for (G v : {G::Basic, G::StaggeredGrid})
    for (const Grid& g : {Grid{5, 3, 7}, Grid{4, 6, 8}, Grid{6, 5, 1}}) {
      const auto closed = DiscreteGreenOperator::create(
          GreenOperatorSettings::of(v, FilterType::None, true, kVoxel), g);
      const auto general = DiscreteGreenOperator::create(
          GreenOperatorSettings::of(v, FilterType::None, false, kVoxel), g);
      ASSERT_TRUE(closed->isSpecialized());
      const auto a = randomSpectrum(6, g, 45);
      const auto b = copyOf(*a);
      b->isInFourierSpace = true;
      const std::vector<double> weights = {0.5, 0.75, 1.0, 1.25, 1.5, 0.5};
      const SpectrumPass pass{0.25, weights.data()};
      const double closedSum = closed->applyGamma0(*a, kReference, pass);
      const double generalSum = general->applyGamma0(*b, kReference, pass);
      const std::string where = wordOf(v) + " on " + std::to_string(g[0]) + "x" +
                                std::to_string(g[1]) + "x" + std::to_string(g[2]);
      EXPECT_LT(maxDifference(*a, *b), 1e-13) << where;
      EXPECT_NEAR(closedSum, generalSum, 1e-12 * generalSum) << where;
      const auto untouched = randomSpectrum(6, g, 45);
      EXPECT_EQ(valuesAt(*a, {0, 0, 0}), valuesAt(*untouched, {0, 0, 0})) << where;
    }
}

// The divergence of a real stress field through the spectrum against the stencils on the
// grid: forward (u[x + 1] - u[x]) / h, backward (u[x] - u[x - 1]) / h, central; the staggered
// grid differentiates normal stresses forward and shear stresses backward.
TEST(GreenOperatorStencils, DivergenceIsTheStencilOfItsScheme) {
  const Grid g = {5, 4, 6};
  const int voigt[3][3] = {{0, 5, 4}, {5, 1, 3}, {4, 3, 2}};
  enum Stencil { Forward, Backward, Central };
  struct Scheme {
    G discretisation;
    Stencil normal, shear;
  };
  for (const Scheme& scheme : {Scheme{G::ForwardDifference, Forward, Forward},
                               Scheme{G::BackwardDifference, Backward, Backward},
                               Scheme{G::CentralDifference, Central, Central},
                               Scheme{G::StaggeredGrid, Forward, Backward}}) {
    FFTImage stress(6, g[0], g[1], g[2], "stress");
    stress.createPlans("Estimate");
    fillRandom(stress, 43);
    const auto original = copyOf(stress);
    const auto at = [&](Index c, std::array<std::int64_t, 3> x) {
      for (int d = 0; d < 3; ++d)
        x[d] = (x[d] + static_cast<std::int64_t>(g[d])) % static_cast<std::int64_t>(g[d]);
      return *original->elementPointer(c, static_cast<Index>(x[0]), static_cast<Index>(x[1]),
                                       static_cast<Index>(x[2]));
    };
    stress.forwardTransform();
    DiscreteGreenOperator::create(
        GreenOperatorSettings::of(scheme.discretisation, FilterType::None, true, kVoxel), g)
        ->applyDivergence(stress);
    stress.backwardTransform();
    double worst = 0.0;
    for (Index i = 0; i < g[0]; ++i)
      for (Index j = 0; j < g[1]; ++j)
        for (Index k = 0; k < g[2]; ++k)
          for (int r = 0; r < 3; ++r) {
            double expected = 0.0;
            for (int d = 0; d < 3; ++d) {
              const auto c = static_cast<Index>(voigt[r][d]);
              std::array<std::int64_t, 3> x = {static_cast<std::int64_t>(i),
                                               static_cast<std::int64_t>(j),
                                               static_cast<std::int64_t>(k)};
              const double here = at(c, x);
              ++x[d];
              const double next = at(c, x);
              x[d] -= 2;
              const double previous = at(c, x);
              const Stencil s = r == d ? scheme.normal : scheme.shear;
              expected += (s == Forward    ? next - here
                           : s == Backward ? here - previous
                                           : (next - previous) / 2.0) /
                          kVoxel[d];
            }
            worst = std::max(
                worst, std::abs(*stress.elementPointer(static_cast<Index>(r), i, j, k) - expected));
          }
    EXPECT_LT(worst, 1e-13) << wordOf(scheme.discretisation);
  }
}

const Grid kFilterGrid = {4, 6, 5};  // even axes: the Nyquist index takes part

// Index 3 of 4 is f = -1: cos^2 of (f + a n) pi / (2 n) for the alias a. The operator test
// below sums over the aliases, which hides the sign of a.
TEST(GreenOperatorFilter, NonConsistentValueFollowsTheSignOfTheAlias) {
  EXPECT_NEAR(getFilterValue(FilterType::NonConsistent, 3, 4, 1),
              std::pow(std::cos(3 * kPi / 8), 2), 1e-15);
  EXPECT_NEAR(getFilterValue(FilterType::NonConsistent, 3, 4, -1),
              std::pow(std::cos(5 * kPi / 8), 2), 1e-15);
}

// Gamma0 with a filter and without it on the same random spectrum.
std::array<std::unique_ptr<FFTImage>, 2> gamma0WithAndWithout(G discretisation, FilterType filter) {
  auto plain = randomSpectrum(6, kFilterGrid, 51);
  auto filtered = copyOf(*plain);
  DiscreteGreenOperator::create(
      GreenOperatorSettings::of(discretisation, FilterType::None, false, kVoxel), kFilterGrid)
      ->applyGamma0(*plain, kReference);
  DiscreteGreenOperator::create(GreenOperatorSettings::of(discretisation, filter, true, kVoxel),
                                kFilterGrid)
      ->applyGamma0(*filtered, kReference);
  return {std::move(plain), std::move(filtered)};
}

double signedT(Index m, int d, double scale) {
  const auto n = static_cast<std::int64_t>(kFilterGrid[static_cast<std::size_t>(d)]);
  return static_cast<double>(signedFrequency(static_cast<std::int64_t>(m), n)) * kPi /
         (scale * static_cast<double>(n));
}

// Filters on an operator whose vector is the same at every alias (a finite difference's
// symbol is periodic): the periodized result is the plain one times the product of the axis
// values (sin t / t)^2, t = f pi / n; the non-consistent one adds the aliases' filter values,
// per axis cos^2 t + 2 sin^2 t, t = f pi / (2 n).
TEST(GreenOperatorFilter, FilteredOperatorIsThePlainOneTimesItsFilterSum) {
  for (FilterType filter : {FilterType::Periodize, FilterType::NonConsistent}) {
    const auto r = gamma0WithAndWithout(G::ForwardDifference, filter);
    for (const Frequency& q : frequenciesOf(*r[0])) {
      if (q.isZero()) continue;
      double factor = 1.0;
      const Index m[3] = {q.i, q.j, q.l};
      for (int d = 0; d < 3; ++d) {
        const double t = signedT(m[d], d, filter == FilterType::Periodize ? 1.0 : 2.0);
        factor *= filter == FilterType::NonConsistent ? 1.0 + std::pow(std::sin(t), 2)
                  : m[d] == 0                         ? 1.0
                                                      : std::pow(std::sin(t) / t, 2);
      }
      const Eigen::VectorXcd expected = factor * valuesAt(*r[0], q);
      EXPECT_LT((valuesAt(*r[1], q) - expected).norm(), 1e-12 * expected.norm());
    }
  }
}

}  // namespace
}  // namespace gridmoor::test
