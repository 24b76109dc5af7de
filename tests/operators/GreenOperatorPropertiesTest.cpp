// Properties that pin every operator down for each discretisation: its result is a discrete
// gradient field and balances its input in the discretisation's own divergence. Balance holds
// only where G inverts the acoustic tensor of the discretisation's own gradient and
// divergence: for the closed forms (the staggered grid's sign of Im G among them) this is
// the test that G times that tensor is the identity, at every frequency of the grid.
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

// Odd extents: no Nyquist index, so no frequency but zero has a vanishing symbol. Unequal
// voxel lengths, so that a factor taken from the wrong axis shows.
const Grid kGrid = {5, 3, 7};
const std::array<double, 3> kVoxel = {1.0, 0.7, 1.3};
const ReferenceConstants kReference = ReferenceConstants::of(0.8, 1.7, 0.3, 0.45);

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

}  // namespace
}  // namespace gridmoor::test
