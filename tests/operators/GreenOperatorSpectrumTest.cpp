// The operators on the spectra of real fields: a real field stays real, and the divergence
// of each finite-difference scheme is its stencil on the voxel grid.
// GCC 12 reports its own AVX-512 intrinsics as maybe uninitialised inside Eigen's complex
// matrix-vector products; the state at the intrinsics' header decides, so this comes first.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "GreenOperatorTestSupport.h"
#include "operators/DiscreteGreenOperator.h"

namespace gridmoor::test {
namespace {

using G = GreenOperatorType;

const std::array<double, 3> kVoxel = {1.0, 0.7, 1.3};
const ReferenceConstants kReference = ReferenceConstants::of(0.8, 1.7, 0.3, 0.45);

void fillRandom(FFTImage& f, unsigned seed) {
  std::mt19937 gen(seed);
  std::uniform_real_distribution<double> dist(-1.0, 1.0);
  for (double& v : f) v = dist(gen);
}

std::vector<double> copyValues(const FFTImage& f) { return {f.begin(), f.end()}; }

double maxDifference(const FFTImage& f, const std::vector<double>& values) {
  double m = 0.0, scale = 0.0;
  for (std::size_t n = 0; n < values.size(); ++n) {
    m = std::max(m, std::abs(f[n] - values[n]));
    scale = std::max(scale, std::abs(values[n]));
  }
  return m / scale;
}

struct SpectrumCase {
  G discretisation;
  Grid grid;
};

void PrintTo(const SpectrumCase& c, std::ostream* os) {
  *os << wordOf(c.discretisation) << " on " << c.grid[0] << "x" << c.grid[1] << "x" << c.grid[2];
}

class GreenOperatorRealField : public ::testing::TestWithParam<SpectrumCase> {};

// Transform a real field, apply the operator, transform back and forth: a spectrum that
// is not Hermitian where it holds both a frequency and its negative (the planes of third
// index 0 and, on an even axis, n / 2) loses its anti-Hermitian part on the way and differs.
TEST_P(GreenOperatorRealField, SpectrumStaysHermitian) {
  const SpectrumCase c = GetParam();
  const Grid& g = c.grid;
  const auto op = DiscreteGreenOperator::create(
      GreenOperatorSettings::of(c.discretisation, FilterType::None, true, kVoxel), g);
  const Index values = op->valuesPerVoxel();

  FFTImage tensor(values, g[0], g[1], g[2], "tensor");
  tensor.createPlans("Estimate");
  fillRandom(tensor, 41);
  tensor.forwardTransform();
  op->applyGamma0(tensor, kReference);
  const std::vector<double> gamma = copyValues(tensor);
  tensor.backwardTransform();
  tensor.forwardTransform();
  EXPECT_LT(maxDifference(tensor, gamma), 1e-13) << "Gamma0";

  FFTImage force(3, g[0], g[1], g[2], "force");
  force.createPlans("Estimate");
  fillRandom(force, 42);
  force.forwardTransform();
  tensor = 0.0;
  op->applyPsi0(force, tensor, kReference);
  const std::vector<double> psi = copyValues(tensor);
  tensor.backwardTransform();
  tensor.forwardTransform();
  EXPECT_LT(maxDifference(tensor, psi), 1e-13) << "Psi0";
}

std::vector<SpectrumCase> realFieldCases() {
  std::vector<SpectrumCase> cases;
  for (G v : {G::Basic, G::ForwardDifference, G::CentralDifference, G::BackwardDifference,
              G::StaggeredGrid, G::TrilinearFE, G::Q1FE, G::Hex8RHourGlassControl, G::Helmholtz})
    cases.push_back({v, {5, 3, 7}});
  // Even axes have a Nyquist index, whose vector must be its own conjugate. The continuous
  // vector i xi is not (the two even-grid planes of "Basic" and "Helmholtz" are left to the
  // transform), and the central difference and the reduced element have a zero symbol there.
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

// The divergence of a real stress field, taken through the spectrum, against the stencils
// on the voxel grid: forward differences (u[x + 1] - u[x]) / h, backward differences
// (u[x] - u[x - 1]) / h, central differences; the staggered grid differentiates normal
// stresses forward and shear stresses backward.
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
    const auto op = DiscreteGreenOperator::create(
        GreenOperatorSettings::of(scheme.discretisation, FilterType::None, true, kVoxel), g);
    FFTImage stress(6, g[0], g[1], g[2], "stress");
    stress.createPlans("Estimate");
    fillRandom(stress, 43);
    const std::vector<double> original = copyValues(stress);
    const auto at = [&](Index c, std::int64_t i, std::int64_t j, std::int64_t k) {
      const auto wrap = [](std::int64_t m, Index n) {
        return static_cast<Index>((m + static_cast<std::int64_t>(n)) %
                                  static_cast<std::int64_t>(n));
      };
      return original[stress.elementIndex(c, wrap(i, g[0]), wrap(j, g[1]), wrap(k, g[2]))];
    };
    stress.forwardTransform();
    op->applyDivergence(stress);
    stress.backwardTransform();

    double worst = 0.0;
    for (Index i = 0; i < g[0]; ++i)
      for (Index j = 0; j < g[1]; ++j)
        for (Index k = 0; k < g[2]; ++k)
          for (int r = 0; r < 3; ++r) {
            double expected = 0.0;
            for (int d = 0; d < 3; ++d) {
              const auto c = static_cast<Index>(voigt[r][d]);
              std::int64_t x[3] = {static_cast<std::int64_t>(i), static_cast<std::int64_t>(j),
                                   static_cast<std::int64_t>(k)};
              const double here = at(c, x[0], x[1], x[2]);
              ++x[d];
              const double next = at(c, x[0], x[1], x[2]);
              x[d] -= 2;
              const double previous = at(c, x[0], x[1], x[2]);
              const Stencil s = r == d ? scheme.normal : scheme.shear;
              const double h = kVoxel[static_cast<std::size_t>(d)];
              expected += s == Forward    ? (next - here) / h
                          : s == Backward ? (here - previous) / h
                                          : (next - previous) / (2.0 * h);
            }
            worst = std::max(
                worst, std::abs(*stress.elementPointer(static_cast<Index>(r), i, j, k) - expected));
          }
    EXPECT_LT(worst, 1e-13) << wordOf(scheme.discretisation);
  }
}

}  // namespace
}  // namespace gridmoor::test
