// Properties that pin every operator down for each discretisation: its result is a discrete
// gradient field and balances its input in the discretisation's own divergence. Balance holds
// only where G inverts the acoustic tensor of the discretisation's own gradient and
// divergence: for the closed forms (the staggered grid's sign of Im G among them) this is
// the test that G times that tensor is the identity, at every frequency of the grid. As the
// balanced result is unique, a closed form and the general one that both pass agree. Then the
// element forms against each other, and the discretisation with which an operator stops.
// GCC 12 reports its own AVX-512 intrinsics as maybe uninitialised inside Eigen's complex
// matrix-vector products; the state at the intrinsics' header decides, so this comes first.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "GreenOperatorTestSupport.h"

namespace gridmoor::test {
namespace {

struct Case {
  G discretisation;
  bool specialize;
};
void PrintTo(const Case& c, std::ostream* os) {
  *os << wordOf(c.discretisation) << (c.specialize ? " specialized" : " general");
}

class GreenOperatorBalance : public ::testing::TestWithParam<Case> {
 protected:
  void SetUp() override {
    settings = GreenOperatorSettings::of(GetParam().discretisation, FilterType::None,
                                         GetParam().specialize, kVoxel);
    op = DiscreteGreenOperator::create(settings, kGrid);
    ASSERT_EQ(op->isSpecialized(), GetParam().specialize);
    points = settings.mainRule.count;
    divergence = divergenceMatrices(*op, kGrid);
    // The hourglass points' gradient, read off a full element integrated at them.
    if (settings.hourglassRule.count > 0) {
      GreenOperatorSettings full =
          GreenOperatorSettings::of(G::Q1FE, FilterType::None, false, kVoxel);
      full.mainRule = settings.hourglassRule;
      hourglass = divergenceMatrices(*DiscreteGreenOperator::create(full, kGrid), kGrid);
    }
  }

  // At every non-zero frequency `strain` is B u for some u, and the stress-like `stress`
  // balances: D stress - A_hourglass u = force (zero without force).
  void expectBalanced(const FFTImage& strainField, const FFTImage& stressField,
                      const FFTImage* force) const {
    const std::vector<Frequency> all = frequenciesOf(strainField);
    double worstCompatibility = 0.0, worstBalance = 0.0;
    for (std::size_t n = 1; n < all.size(); ++n) {
      const Eigen::VectorXcd strain = valuesAt(strainField, all[n]);
      const Eigen::VectorXcd stress = valuesAt(stressField, all[n]);
      const Eigen::MatrixXcd b = gradientFromDivergence(divergence[n], settings.mainRule);
      const Eigen::VectorXcd u = b.householderQr().solve(strain);
      worstCompatibility = std::max(worstCompatibility, (b * u - strain).norm() / strain.norm());
      Eigen::Vector3cd residual = divergence[n] * stress;
      if (!hourglass.empty()) {
        // A_hg u = sum_p w_p B_p^H C_hg B_p u = -D_hg C_hg B_hg u.
        const Eigen::MatrixXcd bh = gradientFromDivergence(hourglass[n], settings.hourglassRule);
        residual +=
            hourglass[n] * (stiffnessMatrix(kReference.lambdaHourglass, kReference.muHourglass,
                                            settings.hourglassRule.count) *
                            (bh * u));
      }
      if (force != nullptr) residual -= valuesAt(*force, all[n]);
      worstBalance = std::max(worstBalance, residual.norm() / stress.norm());
    }
    EXPECT_LT(worstCompatibility, 1e-12) << "no discrete gradient";
    EXPECT_LT(worstBalance, 1e-12) << "not balanced";
  }

  GreenOperatorSettings settings;
  std::unique_ptr<DiscreteGreenOperator> op;
  Index points = 0;
  std::vector<Eigen::MatrixXcd> divergence, hourglass;
};

TEST_P(GreenOperatorBalance, TensorOperatorsBalanceTheirInput) {
  const Eigen::MatrixXd c0 = stiffnessMatrix(kReference.lambda0, kReference.mu0, points);
  // Gamma0: strain e compatible with C0 e + tau balanced.
  const auto tau = randomSpectrum(6 * points, kGrid, 11);
  auto strain = copyOf(*tau);
  op->applyGamma0(*strain, kReference);
  EXPECT_EQ(valuesAt(*strain, {0, 0, 0}), valuesAt(*tau, {0, 0, 0}));
  auto stress = copyOf(*strain);
  multiply(*stress, c0);
  *stress += *tau;
  expectBalanced(*strain, *stress, nullptr);

  // Delta0: s = -C0 (eta + e) with e compatible and balanced.
  auto delta = copyOf(*tau);
  op->applyDelta0(*delta, kReference);
  EXPECT_EQ(valuesAt(*delta, {0, 0, 0}), valuesAt(*tau, {0, 0, 0}));
  auto e = copyOf(*delta);
  multiply(*e, -c0.inverse());
  *e -= *tau;
  *delta *= -1.0;
  expectBalanced(*e, *delta, nullptr);
}

TEST_P(GreenOperatorBalance, ForceOperatorsAddTheStrainWhoseStressHasThatDivergence) {
  const Eigen::MatrixXd c0 = stiffnessMatrix(kReference.lambda0, kReference.mu0, points);
  const auto force = randomSpectrum(3, kGrid, 13);
  const auto before = randomSpectrum(6 * points, kGrid, 14);
  auto strain = copyOf(*before);
  op->applyPsi0(*force, *strain, kReference);
  EXPECT_EQ(valuesAt(*strain, {0, 0, 0}), valuesAt(*before, {0, 0, 0}));
  *strain -= *before;
  auto stress = copyOf(*strain);
  multiply(*stress, c0);
  expectBalanced(*strain, *stress, force.get());

  auto omega = copyOf(*before);
  op->applyOmega0(*force, *omega, kReference);
  *omega -= *before;
  // Omega0 is the reference stress of that strain.
  EXPECT_LT(maxDifference(*omega, *stress), 1e-12);
}

std::vector<Case> allCases() {
  std::vector<Case> cases;
  for (G v : {G::Basic, G::ForwardDifference, G::CentralDifference, G::BackwardDifference,
              G::StaggeredGrid, G::TrilinearFE, G::Q1FE, G::Hex8RHourGlassControl, G::Helmholtz}) {
    cases.push_back({v, false});
    if (isOperatorSpecialized(v)) cases.push_back({v, true});
  }
  return cases;
}

INSTANTIATE_TEST_SUITE_P(GreenOperator, GreenOperatorBalance, ::testing::ValuesIn(allCases()),
                         [](const ::testing::TestParamInfo<Case>& info) {
                           return wordOf(info.param.discretisation) +
                                  (info.param.specialize ? "Specialized" : "General");
                         });

// The full element integrated at the centre and the hourglass element without hourglass
// stiffness are the reduced element: on one random field their results agree to rounding (the
// corner sum at the centre is the reduced vector times a phase of modulus one).
TEST(GreenOperatorElements, FullElementAtTheCentreAndHourglassWithoutStiffnessAreTheReducedOne) {
  const auto settings = [](G v) {
    return GreenOperatorSettings::of(v, FilterType::None, false, kVoxel);
  };
  GreenOperatorSettings centred = settings(G::Q1FE);
  centred.mainRule = IntegrationRule::centre();
  const ReferenceConstants noHourglass = ReferenceConstants::of(0.8, 1.7);
  const auto input = randomSpectrum(6, kGrid, 21);
  auto reduced = copyOf(*input);
  DiscreteGreenOperator::create(settings(G::TrilinearFE), kGrid)->applyGamma0(*reduced, noHourglass);
  EXPECT_GT(maxDifference(*reduced, *input), 1e-3);
  for (const GreenOperatorSettings& other : {centred, settings(G::Hex8RHourGlassControl)}) {
    auto result = copyOf(*input);
    DiscreteGreenOperator::create(other, kGrid)->applyGamma0(*result, noHourglass);
    EXPECT_LT(maxDifference(*result, *reduced), 1e-12) << wordOf(other.discretisation);
  }
}

TEST(GreenOperatorFailures, DiscretisationWithoutVectorsStops) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(DiscreteGreenOperator::create(
                  GreenOperatorSettings::of(G::Bilaplacian, FilterType::None, true), kGrid),
              ::testing::ExitedWithCode(1), "^Unknown finite difference 9\n$");
}

}  // namespace
}  // namespace gridmoor::test
