// The closed one-point forms against the general form, the element forms against each other,
// and the settings with which an operator stops the run.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"  // GCC 12 on Eigen's AVX-512 code
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "GreenOperatorTestSupport.h"

namespace gridmoor::test {
namespace {

const Grid kGrid = {5, 3, 7};
const std::array<double, 3> kVoxel = {1.0, 0.7, 1.3};
const ReferenceConstants kReference = ReferenceConstants::of(0.8, 1.7, 0.3, 0.45);

std::unique_ptr<DiscreteGreenOperator> make(G v, bool specialize) {
  return DiscreteGreenOperator::create(
      GreenOperatorSettings::of(v, FilterType::None, specialize, kVoxel), kGrid);
}

using Apply = std::function<void(const DiscreteGreenOperator&, FFTImage&)>;

// Both operators on copies of one random field: the results agree to rounding, and differ
// from the input.
void expectSameResult(const DiscreteGreenOperator& a, const DiscreteGreenOperator& b,
                      const Apply& apply, const char* what) {
  const auto input = randomSpectrum(a.valuesPerVoxel(), kGrid, 21);
  auto ra = copyOf(*input);
  auto rb = copyOf(*input);
  apply(a, *ra);
  apply(b, *rb);
  EXPECT_LT(maxDifference(*ra, *rb), 1e-12) << what;
  EXPECT_GT(maxDifference(*ra, *input), 1e-3) << what;
}

const Apply kGamma0 = [](const DiscreteGreenOperator& op, FFTImage& f) {
  op.applyGamma0(f, kReference);
};

class GreenOperatorForms : public ::testing::TestWithParam<G> {};

TEST_P(GreenOperatorForms, SpecializedAndGeneralFormsAgree) {
  const auto specialized = make(GetParam(), true);
  const auto general = make(GetParam(), false);
  ASSERT_TRUE(specialized->isSpecialized());
  ASSERT_FALSE(general->isSpecialized());
  const auto force = randomSpectrum(3, kGrid, 22);
  expectSameResult(*specialized, *general, kGamma0, "Gamma0");
  expectSameResult(
      *specialized, *general,
      [](const DiscreteGreenOperator& op, FFTImage& f) { op.applyDelta0(f, kReference); },
      "Delta0");
  expectSameResult(
      *specialized, *general,
      [&](const DiscreteGreenOperator& op, FFTImage& f) { op.applyPsi0(*force, f, kReference); },
      "Psi0");
  expectSameResult(
      *specialized, *general,
      [&](const DiscreteGreenOperator& op, FFTImage& f) { op.applyOmega0(*force, f, kReference); },
      "Omega0");
}

INSTANTIATE_TEST_SUITE_P(GreenOperator, GreenOperatorForms,
                         ::testing::Values(G::Basic, G::ForwardDifference, G::CentralDifference,
                                           G::BackwardDifference, G::StaggeredGrid, G::TrilinearFE),
                         [](const ::testing::TestParamInfo<G>& info) {
                           return wordOf(info.param);
                         });

TEST(GreenOperatorElements, FullElementAtTheCentreAndHourglassWithoutStiffnessAreTheReducedOne) {
  const auto reduced = make(G::TrilinearFE, false);
  // The corner sum at the centre is the reduced vector times a phase of modulus one.
  GreenOperatorSettings centred =
      GreenOperatorSettings::of(G::Q1FE, FilterType::None, false, kVoxel);
  centred.mainRule = IntegrationRule::centre();
  expectSameResult(*reduced, *DiscreteGreenOperator::create(centred, kGrid), kGamma0, "centre");
  const auto hourglass = make(G::Hex8RHourGlassControl, false);
  const ReferenceConstants noHourglass = ReferenceConstants::of(0.8, 1.7);
  const Apply gammaWithout = [&](const DiscreteGreenOperator& op, FFTImage& f) {
    op.applyGamma0(f, noHourglass);
  };
  expectSameResult(*reduced, *hourglass, gammaWithout, "no hourglass stiffness");
}

TEST(GreenOperatorFailures, ValuesWithoutVectorsOrClosedFormsStop) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto settings = [](G v, FilterType filter = FilterType::None) {
    return GreenOperatorSettings::of(v, filter, true);
  };
  EXPECT_EXIT(DiscreteGreenOperator::create(settings(G::Bilaplacian), kGrid),
              ::testing::ExitedWithCode(1), "^Unknown finite difference 9\n$");
  EXPECT_EXIT(makeSpecializedGreenOperator(settings(G::Q1FE), kGrid), ::testing::ExitedWithCode(1),
              "^Operator not specialized.\n$");
  EXPECT_EXIT(makeSpecializedGreenOperator(settings(G::Helmholtz), kGrid),
              ::testing::ExitedWithCode(1), "^Operator not specialized.\n$");
  EXPECT_EXIT(DiscreteGreenOperator::create(settings(G::Basic, static_cast<FilterType>(3)), kGrid),
              ::testing::ExitedWithCode(1), "^The filter is not known.\n$");
}

}  // namespace
}  // namespace gridmoor::test
