// Properties that pin every operator down for each discretisation: its result is a discrete
// gradient field and balances its input in the discretisation's own divergence.
// GCC 12 reports its own AVX-512 intrinsics as maybe uninitialised inside Eigen's complex
// matrix-vector products; the state at the intrinsics' header decides, so this comes first.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "GreenOperatorTestSupport.h"
#include "operators/DiscreteGreenOperator.h"

namespace gridmoor::test {
namespace {

using G = GreenOperatorType;

// Odd extents: no Nyquist index, so no frequency other than zero has a vanishing symbol.
// Unequal voxel lengths, so that a factor taken from the wrong axis shows.
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

std::string caseName(const ::testing::TestParamInfo<Case>& info) {
  return wordOf(info.param.discretisation) + (info.param.specialize ? "Specialized" : "General");
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
    // The hourglass points' gradient, read off a trilinear element integrated at them.
    if (settings.hourglassRule.count > 0) {
      GreenOperatorSettings q1 = GreenOperatorSettings::of(G::Q1FE, FilterType::None, false, kVoxel);
      q1.mainRule = settings.hourglassRule;
      hourglassDivergence = divergenceMatrices(*DiscreteGreenOperator::create(q1, kGrid), kGrid);
    }
    const Eigen::Matrix<double, 6, 6> c0 = stiffnessMatrix(kReference.lambda0, kReference.mu0);
    stiffness = pointwise(c0, points);
    compliance = pointwise(c0.inverse(), points);
  }

  // At every non-zero frequency: `strain` is B u for some u, and the stress-like `stress`
  // satisfies D stress - A_hourglass u = rhs (rhs = 0 when no force is given).
  void expectBalanced(const FFTImage& strainField, const FFTImage& stressField,
                      const FFTImage* force) const {
    const std::vector<Frequency> all = frequenciesOf(strainField);
    double worstCompatibility = 0.0, worstBalance = 0.0;
    for (std::size_t n = 0; n < all.size(); ++n) {
      if (all[n].isZero()) continue;
      const Eigen::VectorXcd strain = valuesAt(strainField, all[n]);
      const Eigen::VectorXcd stress = valuesAt(stressField, all[n]);
      const Eigen::MatrixXcd b = gradientFromDivergence(divergence[n], settings.mainRule);
      const Eigen::VectorXcd u = b.householderQr().solve(strain);
      worstCompatibility = std::max(worstCompatibility, (b * u - strain).norm() / strain.norm());

      Eigen::Vector3cd residual = divergence[n] * stress;
      double scale = divergence[n].norm() * stress.norm();
      if (!hourglassDivergence.empty()) {
        const Eigen::MatrixXcd bh = gradientFromDivergence(hourglassDivergence[n],
                                                           settings.hourglassRule);
        const Eigen::MatrixXd ch = pointwise(
            stiffnessMatrix(kReference.lambdaHourglass, kReference.muHourglass),
            settings.hourglassRule.count);
        // A_hg u = sum_p w_p B_p^H C_hg B_p u = -D_hg C_hg B_hg u.
        const Eigen::Vector3cd hourglass = -hourglassDivergence[n] * (ch * (bh * u));
        residual -= hourglass;
        scale += hourglass.norm();
      }
      if (force != nullptr) {
        const Eigen::Vector3cd f = valuesAt(*force, all[n]);
        residual -= f;
        scale += f.norm();
      }
      worstBalance = std::max(worstBalance, residual.norm() / scale);
    }
    EXPECT_LT(worstCompatibility, 1e-12) << "result is no discrete gradient";
    EXPECT_LT(worstBalance, 1e-12) << "result does not balance";
  }

  // field = M field at every frequency.
  static void multiply(FFTImage& field, const Eigen::MatrixXd& m) {
    for (const Frequency& q : frequenciesOf(field)) setValuesAt(field, q, m * valuesAt(field, q));
  }
  static void subtract(FFTImage& field, const FFTImage& other) {
    for (std::size_t n = 0; n < field.size(); ++n) field[n] -= other[n];
  }
  static void expectZeroFrequencyKept(const FFTImage& after, const FFTImage& before) {
    EXPECT_EQ(valuesAt(after, {0, 0, 0}), valuesAt(before, {0, 0, 0}));
  }

  GreenOperatorSettings settings;
  std::unique_ptr<DiscreteGreenOperator> op;
  Index points = 0;
  std::vector<Eigen::MatrixXcd> divergence, hourglassDivergence;
  Eigen::MatrixXd stiffness, compliance;
};

TEST_P(GreenOperatorBalance, Gamma0GivesTheCompatibleStrainThatBalancesItsInput) {
  const auto tau = randomSpectrum(6 * points, kGrid, 11);
  auto strain = copyOf(*tau);
  op->applyGamma0(*strain, kReference);
  expectZeroFrequencyKept(*strain, *tau);
  // C0 strain + tau balances.
  auto stress = copyOf(*strain);
  multiply(*stress, stiffness);
  for (std::size_t n = 0; n < stress->size(); ++n) (*stress)[n] += (*tau)[n];
  expectBalanced(*strain, *stress, nullptr);
}

TEST_P(GreenOperatorBalance, Delta0GivesTheStressWhoseStrainIsCompatible) {
  const auto eta = randomSpectrum(6 * points, kGrid, 12);
  auto stress = copyOf(*eta);
  op->applyDelta0(*stress, kReference);
  expectZeroFrequencyKept(*stress, *eta);
  // s = -C0 (eta + e) with e compatible and balanced: e = -(S0 s + eta), stress -s.
  auto strain = copyOf(*stress);
  multiply(*strain, compliance);
  for (std::size_t n = 0; n < strain->size(); ++n) (*strain)[n] = -(*strain)[n] - (*eta)[n];
  auto negated = copyOf(*stress);
  *negated *= -1.0;
  expectBalanced(*strain, *negated, nullptr);
}

TEST_P(GreenOperatorBalance, ForceOperatorsAddTheStrainWhoseStressHasThatDivergence) {
  const auto force = randomSpectrum(3, kGrid, 13);
  const auto before = randomSpectrum(6 * points, kGrid, 14);

  auto strain = copyOf(*before);
  op->applyPsi0(*force, *strain, kReference);
  expectZeroFrequencyKept(*strain, *before);
  subtract(*strain, *before);
  auto stress = copyOf(*strain);
  multiply(*stress, stiffness);
  expectBalanced(*strain, *stress, force.get());

  auto omega = copyOf(*before);
  op->applyOmega0(*force, *omega, kReference);
  expectZeroFrequencyKept(*omega, *before);
  subtract(*omega, *before);
  auto omegaStrain = copyOf(*omega);
  multiply(*omegaStrain, compliance);
  expectBalanced(*omegaStrain, *omega, force.get());
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
                         caseName);

}  // namespace
}  // namespace gridmoor::test
