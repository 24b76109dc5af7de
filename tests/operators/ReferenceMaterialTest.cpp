#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "../materials/MaterialInterfaceTestLaws.h"
#include "input/KeywordsElasticity.h"
#include "materials/IsotropicLinearElasticMaterial.h"
#include "materials/MaterialFactory.h"
#include "operators/ReferenceMaterial.h"

namespace gridmoor {
namespace {

using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;
using testing_laws::addLaw;

std::string isotropicEntry(int colour, double E, double nu) {
  return "<Material><MaterNumber>" + std::to_string(colour) +
         "</MaterNumber><MaterName>m</MaterName><Type>LE</Type><MaterialParameters><E><value>" +
         std::to_string(E) + "</value></E><nu><value>" + std::to_string(nu) +
         "</value></nu></MaterialParameters></Material>";
}

class ReferenceMaterialTest : public ::testing::Test {
 protected:
  ReferenceMaterialTest() {
    keywords.noisy.set(false);
    keywords.iterativeMethod.set("NeumannSeries");
    keywords.greenOperator.set(GreenOperatorType::Basic);
    keywords.calculateBounds.set(false);
    // Two laws with 2 mu = 0.8, 3 K = 2 and 2 mu = 3.2, 3 K = 8: lo = 0.8, hi = 8.
    useTable({1, 2}, isotropicEntry(1, 1.0, 0.25) + isotropicEntry(2, 4.0, 0.25));
  }
  // One voxel per entry of colours.
  void useTable(const std::vector<Colour>& colours, const std::string& entries) {
    geometry = testing_laws::geometryOf(colours);
    table = makeMaterialElasticVector(
        XmlNode::parseString("<Settings><input><MaterialData>" + entries +
                             "</MaterialData></input></Settings>"),
        "run.xml", geometry.get(), keywords, nullptr, nullptr);
  }
  ReferenceMaterialChoice choose(const std::string& formulation) {
    return setupReferenceMaterial(formulation, keywords, *table, *geometry, 0, nullptr, reference);
  }

  KeywordsElasticity keywords;
  std::unique_ptr<StaticGeometry> geometry;
  std::unique_ptr<MaterialElasticVector> table;
  IsotropicLinearElasticMaterial reference{"reference", 0.0, 1.0};
};

TEST_F(ReferenceMaterialTest, IdenticalIsotropicLawsAreTheirOwnReferenceInEveryFormulation) {
  const double E = 210.0, nu = 0.3, mu = E / 2.6, K = E / 1.2, lambda = K - 2.0 * mu / 3.0;
  useTable({1, 2, 1}, isotropicEntry(1, E, nu) + isotropicEntry(2, E, nu));
  for (const char* formulation : {"Strain", "Stress", "Polarization", "Eigenstrain"}) {
    SCOPED_TRACE(formulation);
    const ReferenceMaterialChoice c = choose(formulation);
    EXPECT_NEAR(c.mu0, mu, 1e-9 * mu);
    EXPECT_NEAR(c.K0, K, 1e-9 * K);
    EXPECT_NEAR(c.lambda0, lambda, 1e-9 * lambda);
    EXPECT_EQ(reference.mu, c.mu0);  // stored, and E and nu rebuilt from them
    EXPECT_NEAR(reference.poissonRatio, nu, 1e-12);
  }
  // A Krylov method on the basic scheme wants a multiple of the identity.
  keywords.iterativeMethod.set("CG");
  for (const char* formulation : {"Strain", "Stress"}) {
    EXPECT_EQ(choose(formulation).lambda0, 0.0) << formulation;
    EXPECT_NEAR(choose(formulation).mu0, mu, 1e-9 * mu) << formulation;
  }
}

TEST_F(ReferenceMaterialTest, OperatorFilterBoundsAndLinearityPickTheRule) {
  using enum GreenOperatorType;
  const double gm = std::sqrt(0.8 * 8.0) / 2.0;
  const struct {
    GreenOperatorType op;
    FilterType filter;
    bool bounds;
    double mu0, K0, lambda0;
  } cases[] = {{Basic, FilterType::None, false, 1.0, 10.0 / 6.0, 1.0},
               {Basic, FilterType::Periodize, false, gm, 2.0 * gm / 3.0, 0.0},
               {Basic, FilterType::Periodize, true, 1.6, 8.0 / 3.0, 1.6},
               {StaggeredGrid, FilterType::None, true, 2.2, 2.2 * 2.0 / 3.0, 0.0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(wordOf(c.op) + wordOf(c.filter) + (c.bounds ? " bounds" : ""));
    keywords.greenOperator.set(c.op);
    keywords.filter.set(c.filter);
    keywords.calculateBounds.set(c.bounds);
    const ReferenceMaterialChoice r = choose("Strain");
    EXPECT_NEAR(r.mu0, c.mu0, 1e-12);
    EXPECT_NEAR(r.K0, c.K0, 1e-12);
    EXPECT_NEAR(r.lambda0, c.lambda0, 1e-12);
  }
  // A non-linear law drops the bounds rule, a limit law has no say in linearity.
  keywords.greenOperator.set(Basic);
  keywords.filter.set(FilterType::Periodize);
  ReferenceMaterialFacts facts{{0.8, 3.2, 2.0, 8.0}, false};
  EXPECT_NEAR(chooseReferenceMaterial("Strain", facts, keywords).mu0, 2.2, 1e-12);
  useTable({1, 2, 3}, isotropicEntry(1, 1.0, 0.25) + isotropicEntry(2, 4.0, 0.25));
  addLaw(*table, 3, {.soft = true, .linear = false, .affinLinear = false});
  EXPECT_NEAR(choose("Strain").mu0, 1.6, 1e-12);
}

TEST_F(ReferenceMaterialTest, TikhonovMovesTheReferenceOnlyWithASoftLaw) {
  keywords.tikhonovRegularizationAlpha.set(0.5);
  keywords.tikhonovRegularization.set(true);
  EXPECT_NEAR(choose("Strain").mu0, 1.0, 1e-12);  // nothing soft
  useTable({1, 2}, isotropicEntry(1, 4.0, 0.25) + isotropicEntry(2, 0.0, 0.25));
  const ReferenceMaterialChoice c = choose("Strain");
  EXPECT_NEAR(c.mu0, 8.0 / 3.0, 1e-12);  // hi / (2 (2 - alpha))
  EXPECT_EQ(c.lambda0, 0.0);
  keywords.tikhonovRegularization.set(false);
  EXPECT_NEAR(choose("Strain").mu0, 1.6, 1e-12);  // the stiff law alone
}

TEST_F(ReferenceMaterialTest, OnlyAllIncompressibleTablesWarnAndTheRunGoesOn) {
  useTable({1, 2}, isotropicEntry(1, 3.0, 0.5) + isotropicEntry(2, 6.0, 0.5));
  CaptureStdout();
  const ReferenceMaterialChoice c = choose("Stress");
  EXPECT_EQ(GetCapturedStdout(),
            "Warning: Only incompressible materials used. Reference material can not be "
            "incompressible.\nSetting lambda0 = 0\n");
  EXPECT_NEAR(c.mu0, 1.0 / 0.75, 1e-12);  // mean shear compliance 0.375 = 1 / (2 mu0)
  EXPECT_NEAR(c.lambda0, 0.0, 1e-12);
  useTable({1, 2}, isotropicEntry(1, 3.0, 0.5) + isotropicEntry(2, 6.0, 0.3));
  CaptureStdout();
  choose("Stress");
  EXPECT_EQ(GetCapturedStdout(), "");
}

TEST_F(ReferenceMaterialTest, SlowCGPrintsItsRestartLimitsInTheStrainFormulationOnly) {
  keywords.iterativeMethod.set("slowCG");
  keywords.restartMinIter.set(7);
  CaptureStdout();
  const ReferenceMaterialChoice c = choose("Strain");
  EXPECT_EQ(GetCapturedStdout(), "restart_min= 7\nrestart_max= 100\n");
  EXPECT_NEAR(c.mu0, 4.0, 1e-12);
  EXPECT_EQ(c.lambda0, 0.0);
  CaptureStdout();
  choose("Stress");
  EXPECT_EQ(GetCapturedStdout(), "");
}

TEST_F(ReferenceMaterialTest, NoisyPrintsAndHourglassStiffness) {
  keywords.noisy.set(true);
  keywords.greenOperator.set(GreenOperatorType::Hex8RHourGlassControl);
  keywords.hourGlassControl.set(0.5);
  CaptureStdout();
  const ReferenceMaterialChoice c = choose("Strain");
  EXPECT_EQ(GetCapturedStdout(),
            "Reference Material:\nLambda = 0\n    Mu = 2.2\n     K = 1.46667\n"
            "Hourglass Control Stiffness:\nLambda_hg = 0\n    Mu_hg = 0.2\n     K_hg = "
            "0.133333\n");
  EXPECT_NEAR(c.muHourglass, 0.2, 1e-15);
  keywords.noisy.set(false);
  EXPECT_NEAR(choose("Stress").muHourglass, 0.2, 1e-12);  // still the smallest stiffness
}

TEST_F(ReferenceMaterialTest, LargeStrainRuleOnTheTangentRange) {
  ReferenceMaterialFacts facts{{1.0, 2.0, 3.0, 5.0}};
  EXPECT_EQ(chooseReferenceMaterial("DeformationGradient", facts, keywords).mu0, 1.5);
  facts.range = {1.0, 1.0, 5.0, 5.0};  // every law with the same extremes
  EXPECT_EQ(chooseReferenceMaterial("DeformationGradient", facts, keywords).mu0, 3.0);
}

TEST_F(ReferenceMaterialTest, RigidLawSwitchesTheBasicSchemeToTheVariationalOne) {
  geometry = testing_laws::geometryOf({1, 2, 3});
  table = std::make_unique<MaterialElasticVector>();
  addLaw(*table, 1);
  addLaw(*table, 2, {.rigid = true});
  CaptureStdout();
  EXPECT_TRUE(switchToVariationalScheme(keywords, *table, *geometry));
  EXPECT_EQ(GetCapturedStdout(),
            "Infinite contrast of materials too high for basic scheme. Using variational "
            "scheme.\n");
  EXPECT_EQ(keywords.filter(), FilterType::Periodize);
  keywords.filter.set(FilterType::NonConsistent);
  addLaw(*table, 3, {.soft = true});
  EXPECT_FALSE(switchToVariationalScheme(keywords, *table, *geometry));
}

using ReferenceMaterialDeathTest = ReferenceMaterialTest;

TEST_F(ReferenceMaterialDeathTest, OperatorWithoutARuleEndsTheRun) {
  keywords.greenOperator.set(GreenOperatorType::Helmholtz);
  EXPECT_EXIT(choose("Strain"), ::testing::ExitedWithCode(1),
              "^Reference material not implemented for Green operator Helmholtz\n$");
}

}  // namespace
}  // namespace gridmoor
