#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <string>

#include "MaterialInterfaceTestLaws.h"
#include "input/KeywordsElasticity.h"
#include "materials/DiscretizedHeatMaterial.h"

namespace gridmoor {
namespace {

using testing_laws::isotropicStiffness;
using testing_laws::LawAnswers;
using testing_laws::TestLaw;

using Vec6 = std::array<double, 6>;
using Vec9 = std::array<double, 9>;

std::string refusal(const std::string& name) {
  return testing_laws::exactLine("The function " + name +
                                 " has not be implemented for all used materials!");
}

TEST(MaterialInterfaceDeathTest, UnansweredOperationsEndTheRunNamingThemselves) {
  TestLaw law;
  KeywordsElasticity keywords;
  EXPECT_EXIT(law.initInternalVariablesStrain(keywords), ::testing::ExitedWithCode(1),
              refusal("initInternalVariablesStrain()"));
  EXPECT_EXIT(law.getCVoigtInverse(), ::testing::ExitedWithCode(1),
              "^getCVoigtInverse\\(\\) not implemented for this material\n$");
  DiscretizedHeatMaterial heat;
  const double gradient[3] = {1, 2, 3};
  double flux[3];
  EXPECT_EXIT(heat.Q(0, 0, 0, 0, gradient, flux), ::testing::ExitedWithCode(1),
              refusal("Q(TVector,QVector)"));
}

// A law with the voxel compliance 3 I, which the linearized strain form needs.
class LinearizableLaw : public TestLaw {
 public:
  static VoigtMatrix scaledIdentity(double s) {
    VoigtMatrix m = VoigtMatrix::identity();
    for (double& v : m.m) v *= s;
    return m;
  }
  VoigtMatrix getCVoigtInverseOfVoxel(int, VoxelIndex, VoxelIndex, VoxelIndex) override {
    return scaledIdentity(3.0);
  }
};

TEST(MaterialInterface, LinearizedFormsAddTheTangentTimesTheIncrementToTheHistoryForm) {
  LinearizableLaw law;  // C = iso(1, 1), tangent = iso(10, 5), history adds the old value
  const Vec6 e{1, 0, 0, 0, 0, 0}, eOld{0, 0, 0, 0, 0, 0.5}, delta{0, 0, 0, 0.2, 0, 0};
  Vec6 s{};
  law.S(0, 1, 2, 3, eOld.data(), e.data(), delta.data(), s.data());
  // C e = (3, 1, 1, 0, 0, 0); tangent times delta = (0, 0, 0, 1, 0, 0).
  EXPECT_EQ(s, (Vec6{3, 1, 1, 1, 0, 0.5}));

  const Vec6 sigma{1, 2, 0, 0, 0, 0}, sigmaOld{0, 0, 1, 0, 0, 0}, deltaSigma{0, 0, 0, 0, 1, 0};
  Vec6 strain{};
  law.E(0, 0, 0, 0, sigmaOld.data(), sigma.data(), deltaSigma.data(), strain.data());
  EXPECT_EQ(strain, (Vec6{2, 4, 1, 0, 3, 0}));
}

TEST(MaterialInterface, ThermalWrappersTakeOffTheThermalStrainOnlyWithThermalExpansion) {
  TestLaw law({.thermal = true});
  law.alpha = 0.1;
  const double T = 2.0;  // thermal strain 0.2 on the normal components
  const Vec6 e{1, 0, 0, 0, 0, 0};
  Vec6 s{}, strain{};
  law.thermalS(0, 0, 0, 0, T, e.data(), s.data());
  EXPECT_NEAR(s[0], 2.0, 1e-14);  // C (0.8, -0.2, -0.2, 0, 0, 0), lambda = mu = 1
  EXPECT_NEAR(s[1], 0.0, 1e-14);
  law.thermalE(0, 0, 0, 0, T, e.data(), strain.data());
  EXPECT_NEAR(strain[1], 0.2, 1e-14);
  law.answers.thermal = false;  // alpha is ignored now
  law.thermalS(0, 0, 0, 0, T, e.data(), s.data());
  EXPECT_EQ(s, (Vec6{3, 1, 1, 0, 0, 0}));
}

// Saint Venant-Kirchhoff: S = C : E with the stiffness tensor, and a thermal strain tensor
// alpha T on the diagonal.
class SaintVenantLaw : public TestLaw {
 public:
  static constexpr double lambda = 2.0, mu = 1.5;
  TensorMatrix c4 = stiffnessTensorOf(isotropicStiffness(lambda, mu));
  using DiscretizedElasticMaterial::secondPiolaKirchhoff;
  void secondPiolaKirchhoff(int, VoxelIndex, VoxelIndex, VoxelIndex, const double*,
                            const double* E9, double* S9) override {
    for (int p = 0; p < 9; ++p) {
      S9[p] = 0.0;
      for (int q = 0; q < 9; ++q) S9[p] += c4(p, q) * E9[q];
    }
  }
  TensorMatrix dSdE(int, VoxelIndex, VoxelIndex, VoxelIndex, const double*) override { return c4; }
  void thermalStrainTensor(int, VoxelIndex, VoxelIndex, VoxelIndex, double T,
                           double* eps9) const override {
    for (int p = 0; p < 9; ++p) eps9[p] = (p % 4 == 0) ? alpha * T : 0.0;
  }
};

// Central differences of a first Piola-Kirchhoff map against a 9x9 tangent.
void expectTangentMatchesDifferences(const std::function<Vec9(const Vec9&)>& P,
                                     const TensorMatrix& tangent, const Vec9& F) {
  const double h = 1e-6;
  for (int q = 0; q < 9; ++q) {
    Vec9 plus = F, minus = F;
    plus[q] += h;
    minus[q] -= h;
    const Vec9 pPlus = P(plus), pMinus = P(minus);
    for (int p = 0; p < 9; ++p)
      EXPECT_NEAR(tangent(p, q), (pPlus[p] - pMinus[p]) / (2 * h), 1e-7)
          << "dP_" << p << " / dF_" << q;
  }
}

TEST(MaterialInterface, LargeStrainChainAndItsThermalFormFromTheSecondPiolaKirchhoffStress) {
  SaintVenantLaw law;
  // Uniaxial stretch: E_xx = ((1 + a)^2 - 1) / 2, S = C : E, P = F S.
  const double a = 0.1, exx = ((1 + a) * (1 + a) - 1) / 2;
  const Vec9 stretch{1 + a, 0, 0, 0, 1, 0, 0, 0, 1};
  Vec9 P{};
  law.firstPiolaKirchhoff(0, 0, 0, 0, stretch.data(), P.data());
  EXPECT_NEAR(P[0], (1 + a) * (law.lambda + 2 * law.mu) * exx, 1e-14);
  EXPECT_NEAR(P[4], law.lambda * exx, 1e-14);
  EXPECT_NEAR(P[1], 0.0, 1e-14);

  const Vec9 F{1.05, 0.02, -0.03, 0.01, 0.97, 0.04, -0.02, 0.03, 1.1};
  auto firstPK = [&](const Vec9& f) {
    Vec9 p{};
    law.firstPiolaKirchhoff(0, 0, 0, 0, f.data(), p.data());
    return p;
  };
  expectTangentMatchesDifferences(firstPK, law.dPdF(0, 0, 0, 0, F.data()), F);

  // Heated: the stress comes from the mechanical strain E - E_th.
  law.answers.thermal = true;
  law.alpha = 0.01;
  const double T = 3.0;
  const Vec9 identity{1, 0, 0, 0, 1, 0, 0, 0, 1};
  // Undeformed: S = -C : E_th, a pressure of 3 K alpha T.
  law.thermalFirstPK(0, 0, 0, 0, T, identity.data(), P.data());
  EXPECT_NEAR(P[0], -(3 * law.lambda + 2 * law.mu) * law.alpha * T, 1e-14);
  EXPECT_NEAR(P[8], P[0], 1e-14);
  EXPECT_NEAR(P[3], 0.0, 1e-14);

  auto thermalFirstPK = [&](const Vec9& f) {
    Vec9 p{};
    law.thermalFirstPK(0, 0, 0, 0, T, f.data(), p.data());
    return p;
  };
  expectTangentMatchesDifferences(thermalFirstPK, law.thermalDPDF(0, 0, 0, 0, T, F.data()), F);
}

TEST(MaterialInterface, MandelEigenvalueRangeIsOverRealParts) {
  // Normal block with the pair 2 +- 5i, shear 0.25 (0.5 in Mandel form). The isotropic cases
  // are the linear elastic laws' own tests.
  VoigtMatrix m;
  m(0, 0) = 2, m(0, 1) = -5, m(1, 0) = 5, m(1, 1) = 2, m(2, 2) = 1;
  for (int a = 3; a < 6; ++a) m(a, a) = 0.25;
  double minimum = 0, maximum = 0;
  stiffnessEigenvalueRange(m, minimum, maximum);
  EXPECT_NEAR(minimum, 0.5, 1e-12);
  EXPECT_NEAR(maximum, 2.0, 1e-12);
}

}  // namespace
}  // namespace gridmoor
