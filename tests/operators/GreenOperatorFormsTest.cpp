// The closed one-point forms against the general matrix form, the element forms against each
// other, the projector property and the exact laminate solution of every discretisation.
// GCC 12 reports its own AVX-512 intrinsics as maybe uninitialised inside Eigen's complex
// matrix-vector products; the state at the intrinsics' header decides, so this comes first.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "GreenOperatorTestSupport.h"
#include "operators/DiscreteGreenOperator.h"

namespace gridmoor::test {
namespace {

using G = GreenOperatorType;

const Grid kGrid = {5, 3, 7};
const std::array<double, 3> kVoxel = {1.0, 0.7, 1.3};
const ReferenceConstants kReference = ReferenceConstants::of(0.8, 1.7, 0.3, 0.45);

double maxAbs(const FFTImage& f) {
  double m = 0.0;
  for (double v : f) m = std::max(m, std::abs(v));
  return m;
}

double maxDifference(const FFTImage& a, const FFTImage& b) {
  double m = 0.0;
  for (std::size_t n = 0; n < a.size(); ++n) m = std::max(m, std::abs(a[n] - b[n]));
  return m;
}

using Apply = std::function<void(const DiscreteGreenOperator&, FFTImage&)>;

// Runs `apply` with two operators on copies of one random field with `components` values;
// the results must agree to rounding.
void expectSameResult(const DiscreteGreenOperator& a, const DiscreteGreenOperator& b,
                      Index components, const Apply& apply, const std::string& what) {
  const auto input = randomSpectrum(components, kGrid, 21);
  auto ra = copyOf(*input);
  auto rb = copyOf(*input);
  apply(a, *ra);
  apply(b, *rb);
  EXPECT_LT(maxDifference(*ra, *rb), 1e-13 * maxAbs(*ra)) << what;
  EXPECT_GT(maxDifference(*ra, *input), 1e-3) << what << " left its input as it was";
}

void expectSameTensorOperators(const DiscreteGreenOperator& a, const DiscreteGreenOperator& b,
                               Index components) {
  expectSameResult(a, b, components,
                   [](const DiscreteGreenOperator& op, FFTImage& f) { op.applyGamma0(f, kReference); },
                   "Gamma0");
  expectSameResult(a, b, components,
                   [](const DiscreteGreenOperator& op, FFTImage& f) { op.applyDelta0(f, kReference); },
                   "Delta0");
}

void expectSameOperators(const DiscreteGreenOperator& a, const DiscreteGreenOperator& b,
                         Index components) {
  expectSameTensorOperators(a, b, components);
  const auto force = randomSpectrum(3, kGrid, 22);
  expectSameResult(
      a, b, components,
      [&](const DiscreteGreenOperator& op, FFTImage& f) { op.applyPsi0(*force, f, kReference); },
      "Psi0");
  expectSameResult(
      a, b, components,
      [&](const DiscreteGreenOperator& op, FFTImage& f) { op.applyOmega0(*force, f, kReference); },
      "Omega0");
}

class GreenOperatorForms : public ::testing::TestWithParam<G> {};

TEST_P(GreenOperatorForms, SpecializedAndGeneralFormsAgree) {
  const auto specialized =
      DiscreteGreenOperator::create(GreenOperatorSettings::of(GetParam(), FilterType::None, true, kVoxel), kGrid);
  const auto general =
      DiscreteGreenOperator::create(GreenOperatorSettings::of(GetParam(), FilterType::None, false, kVoxel), kGrid);
  ASSERT_TRUE(specialized->isSpecialized());
  ASSERT_FALSE(general->isSpecialized());
  expectSameOperators(*specialized, *general, 6);
}

INSTANTIATE_TEST_SUITE_P(GreenOperator, GreenOperatorForms,
                         ::testing::Values(G::Basic, G::ForwardDifference, G::CentralDifference,
                                           G::BackwardDifference, G::StaggeredGrid, G::TrilinearFE),
                         [](const ::testing::TestParamInfo<G>& info) { return wordOf(info.param); });

TEST(GreenOperatorElements, TrilinearVectorsAgreeAtTheCentreAndWithoutHourglassStiffness) {
  const auto reduced = DiscreteGreenOperator::create(
      GreenOperatorSettings::of(G::TrilinearFE, FilterType::None, false, kVoxel), kGrid);
  // The full element's corner sum at the centre point is the reduced element's vector times
  // a phase of modulus one, which the operators on tensors do not see.
  GreenOperatorSettings centred = GreenOperatorSettings::of(G::Q1FE, FilterType::None, false, kVoxel);
  centred.mainRule = IntegrationRule::centre();
  expectSameTensorOperators(*reduced, *DiscreteGreenOperator::create(centred, kGrid), 6);
  // Hourglass points without stiffness add nothing.
  const auto hourglass = DiscreteGreenOperator::create(
      GreenOperatorSettings::of(G::Hex8RHourGlassControl, FilterType::None, false, kVoxel), kGrid);
  const auto input = randomSpectrum(6, kGrid, 23);
  auto a = copyOf(*input);
  auto b = copyOf(*input);
  const ReferenceConstants noHourglass = ReferenceConstants::of(0.8, 1.7);
  reduced->applyGamma0(*a, noHourglass);
  hourglass->applyGamma0(*b, noHourglass);
  EXPECT_LT(maxDifference(*a, *b), 1e-13 * maxAbs(*a));
  // With stiffness they differ: the hourglass points reach the operator.
  auto c = copyOf(*input);
  hourglass->applyGamma0(*c, kReference);
  EXPECT_GT(maxDifference(*a, *c), 1e-3);
}

TEST(GreenOperatorProjector, BasicAppliedTwiceEqualsOnce) {
  // P e = Gamma0 C0 e projects onto compatible strains: P P e = P e.
  const Eigen::MatrixXd c0 = stiffnessMatrix(kReference.lambda0, kReference.mu0);
  auto project = [&](const DiscreteGreenOperator& op, const FFTImage& strain) {
    auto p = copyOf(strain);
    for (const Frequency& q : frequenciesOf(*p)) setValuesAt(*p, q, c0 * valuesAt(*p, q));
    op.applyGamma0(*p, kReference);
    *p *= -1.0;
    return p;
  };
  for (bool specialize : {true, false}) {
    const auto op = DiscreteGreenOperator::create(
        GreenOperatorSettings::of(G::Basic, FilterType::None, specialize, kVoxel), kGrid);
    const auto strain = randomSpectrum(6, kGrid, 24);
    // The operator leaves the mean to the solver: a strain without mean keeps it at zero.
    setValuesAt(*strain, {0, 0, 0}, Eigen::VectorXcd::Zero(6));
    const auto once = project(*op, *strain);
    const auto twice = project(*op, *once);
    EXPECT_LT(maxDifference(*once, *twice), 1e-13 * maxAbs(*once)) << specialize;
    // A random field is no compatible strain: the projection changes it.
    EXPECT_GT(maxDifference(*once, *strain), 0.1) << specialize;
  }
}

// A laminate: the polarisation varies along one axis only. Every discretisation then solves
// the one-dimensional balance exactly: normal strain -tau_dd / (lambda + 2 mu), shear strain
// -tau_de / mu on that axis, nothing elsewhere (the hourglass points add their stiffness).
class GreenOperatorLaminate : public ::testing::TestWithParam<G> {};

TEST_P(GreenOperatorLaminate, StrainOfALaminateIsExact) {
  const GreenOperatorSettings settings = GreenOperatorSettings::of(GetParam(), FilterType::None, true, kVoxel);
  const auto op = DiscreteGreenOperator::create(settings, kGrid);
  const Index points = settings.mainRule.count;
  const double hl = GetParam() == G::Hex8RHourGlassControl ? kReference.lambdaHourglass : 0.0;
  const double hm = GetParam() == G::Hex8RHourGlassControl ? kReference.muHourglass : 0.0;
  const double normal = kReference.lambda0 + 2.0 * kReference.mu0 + hl + 2.0 * hm;
  const double shear = kReference.mu0 + hm;
  const int voigt[3][3] = {{0, 5, 4}, {5, 1, 3}, {4, 3, 2}};
  std::mt19937 gen(25);
  std::uniform_real_distribution<double> dist(-1.0, 1.0);

  for (int axis = 0; axis < 3; ++axis) {
    const Index n = kGrid[static_cast<std::size_t>(axis)];
    // Per plane along the axis, six values with zero mean.
    std::vector<std::array<double, 6>> tau(n);
    for (auto& t : tau)
      for (double& v : t) v = dist(gen);
    for (int c = 0; c < 6; ++c) {
      double mean = 0.0;
      for (const auto& t : tau) mean += t[static_cast<std::size_t>(c)] / static_cast<double>(n);
      for (auto& t : tau) t[static_cast<std::size_t>(c)] -= mean;
    }
    FFTImage field(6 * points, kGrid[0], kGrid[1], kGrid[2], "laminate");
    field.createPlans("Estimate");
    const auto planeOf = [&](Index i, Index j, Index k) { return axis == 0 ? i : axis == 1 ? j : k; };
    for (Index i = 0; i < kGrid[0]; ++i)
      for (Index j = 0; j < kGrid[1]; ++j)
        for (Index k = 0; k < kGrid[2]; ++k)
          for (Index c = 0; c < 6 * points; ++c)
            *field.elementPointer(c, i, j, k) = tau[planeOf(i, j, k)][c % 6];
    field.forwardTransform();
    op->applyGamma0(field, kReference);
    field.backwardTransform();

    double worst = 0.0;
    for (Index i = 0; i < kGrid[0]; ++i)
      for (Index j = 0; j < kGrid[1]; ++j)
        for (Index k = 0; k < kGrid[2]; ++k) {
          const auto& t = tau[planeOf(i, j, k)];
          std::array<double, 6> expected{};
          for (int e = 0; e < 3; ++e) {
            const auto c = static_cast<std::size_t>(voigt[axis][e]);
            expected[c] = -t[c] / (e == axis ? normal : shear);
          }
          for (Index c = 0; c < 6 * points; ++c)
            worst = std::max(worst, std::abs(*field.elementPointer(c, i, j, k) - expected[c % 6]));
        }
    EXPECT_LT(worst, 1e-13) << "laminate along axis " << axis;
  }
}

INSTANTIATE_TEST_SUITE_P(GreenOperator, GreenOperatorLaminate,
                         ::testing::Values(G::Basic, G::ForwardDifference, G::CentralDifference,
                                           G::BackwardDifference, G::StaggeredGrid, G::TrilinearFE,
                                           G::Q1FE, G::Hex8RHourGlassControl, G::Helmholtz),
                         [](const ::testing::TestParamInfo<G>& info) { return wordOf(info.param); });

}  // namespace
}  // namespace gridmoor::test
