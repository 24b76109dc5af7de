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

using testing_laws::geometryOf;

// An isotropic entry of the material table by E and nu.
std::string isotropicEntry(int colour, double E, double nu) {
  return "<Material><MaterNumber>" + std::to_string(colour) +
         "</MaterNumber><MaterName>m</MaterName><Type>LE</Type><MaterialParameters><E><value>" +
         std::to_string(E) + "</value></E><nu><value>" + std::to_string(nu) +
         "</value></nu></MaterialParameters></Material>";
}

// Shear modulus, bulk modulus and lambda of (E, nu), by the textbook formulas.
struct Moduli {
  double mu, K, lambda;
};
Moduli moduliOf(double E, double nu) {
  return {E / (2.0 * (1.0 + nu)), E / (3.0 * (1.0 - 2.0 * nu)),
          E * nu / ((1.0 + nu) * (1.0 - 2.0 * nu))};
}

class ReferenceMaterialTest : public ::testing::Test {
 protected:
  ReferenceMaterialTest() {
    keywords.noisy.set(false);
    keywords.iterativeMethod.set("NeumannSeries");
    keywords.greenOperator.set(GreenOperatorType::Basic);
    keywords.filter.set(FilterType::None);
    keywords.calculateBounds.set(false);
  }

  // One voxel per entry of colours; the laws are listed as material table entries.
  void useTable(const std::vector<Colour>& colours, const std::string& entries) {
    geometry = geometryOf(colours);
    const XmlNode tree = XmlNode::parseString("<Settings><input><MaterialData>" + entries +
                                              "</MaterialData></input></Settings>");
    table = makeMaterialElasticVector(tree, "run.xml", geometry.get(), keywords, nullptr, nullptr);
  }

  ReferenceMaterialChoice choose(const std::string& formulation) {
    return setupReferenceMaterial(formulation, keywords, *table, *geometry, 0, nullptr, reference);
  }

  // Laws with 2 mu = 0.8, 3 K = 2 and 2 mu = 3.2, 3 K = 8 (lambda 0.4 and 1.6).
  void useSoftAndStiff() {
    useTable({1, 2}, isotropicEntry(1, 1.0, 0.25) + isotropicEntry(2, 4.0, 0.25));
  }

  KeywordsElasticity keywords;
  std::unique_ptr<StaticGeometry> geometry;
  std::unique_ptr<MaterialElasticVector> table;
  IsotropicLinearElasticMaterial reference{"reference", 0.0, 1.0};
};

TEST_F(ReferenceMaterialTest, IdenticalIsotropicLawsAreTheirOwnReferenceInEveryFormulation) {
  const double E = 210.0, nu = 0.3;
  const Moduli law = moduliOf(E, nu);
  useTable({1, 2, 1}, isotropicEntry(1, E, nu) + isotropicEntry(2, E, nu));
  for (const char* formulation : {"Strain", "Stress", "Polarization", "Eigenstrain"}) {
    SCOPED_TRACE(formulation);
    const ReferenceMaterialChoice c = choose(formulation);
    EXPECT_NEAR(c.mu0, law.mu, 1e-9 * law.mu);
    EXPECT_NEAR(c.K0, law.K, 1e-9 * law.K);
    EXPECT_NEAR(c.lambda0, law.lambda, 1e-9 * law.lambda);
    // Stored into the reference law, which rebuilds its E and nu from them.
    EXPECT_EQ(reference.lambda, c.lambda0);
    EXPECT_EQ(reference.mu, c.mu0);
    EXPECT_NEAR(reference.poissonRatio, nu, 1e-12);
    EXPECT_NEAR(reference.youngsModulus, E, 1e-9 * E);
  }

  // A Krylov method on the basic scheme wants a multiple of the identity: lambda0 = 0 with
  // the same shear modulus, on the stiffness and on the compliance side.
  keywords.iterativeMethod.set("CG");
  for (const char* formulation : {"Strain", "Stress"}) {
    SCOPED_TRACE(formulation);
    const ReferenceMaterialChoice c = choose(formulation);
    EXPECT_EQ(c.lambda0, 0.0);
    EXPECT_NEAR(c.mu0, law.mu, 1e-9 * law.mu);
  }
  keywords.filter.set(FilterType::NonConsistent);
  EXPECT_EQ(choose("Strain").lambda0, 0.0);
}

TEST_F(ReferenceMaterialTest, OperatorFilterAndBoundsPickTheRule) {
  useSoftAndStiff();  // lo = 0.8, hi = 8
  struct Case {
    GreenOperatorType op;
    FilterType filter;
    bool bounds;
    double mu0, K0, lambda0;
  };
  const double geometricMu = std::sqrt(0.8 * 8.0) / 2.0;
  const Case cases[] = {
      // Shear and bulk means separately for isotropic linear laws.
      {GreenOperatorType::Basic, FilterType::None, false, 1.0, 10.0 / 6.0, 1.0},
      // The variational scheme: geometric mean, or the stiffest values with bounds.
      {GreenOperatorType::Basic, FilterType::Periodize, false, geometricMu,
       2.0 * geometricMu / 3.0, 0.0},
      {GreenOperatorType::Basic, FilterType::Periodize, true, 1.6, 8.0 / 3.0, 1.6},
      // Discretised operators: the mean of the extremes on strains.
      {GreenOperatorType::StaggeredGrid, FilterType::None, true, 2.2, 2.2 * 2.0 / 3.0, 0.0},
      {GreenOperatorType::Q1FE, FilterType::Periodize, false, 2.2, 2.2 * 2.0 / 3.0, 0.0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(wordOf(c.op) + " " + wordOf(c.filter) + (c.bounds ? " bounds" : ""));
    keywords.greenOperator.set(c.op);
    keywords.filter.set(c.filter);
    keywords.calculateBounds.set(c.bounds);
    const ReferenceMaterialChoice r = choose("Strain");
    EXPECT_NEAR(r.mu0, c.mu0, 1e-12);
    EXPECT_NEAR(r.K0, c.K0, 1e-12);
    EXPECT_NEAR(r.lambda0, c.lambda0, 1e-12);
    EXPECT_EQ(r.muHourglass, 0.0);
  }
}

TEST_F(ReferenceMaterialTest, NonIsotropicOrNonLinearTablesUseTheExtremes) {
  ReferenceMaterialFacts facts;
  facts.range = {0.8, 3.2, 2.0, 8.0};
  facts.isotropicMaterials = false;
  EXPECT_NEAR(chooseReferenceMaterial("Strain", facts, keywords).mu0, 2.2, 1e-12);
  EXPECT_EQ(chooseReferenceMaterial("Strain", facts, keywords).lambda0, 0.0);
  facts.isotropicMaterials = true;
  facts.linearMaterials = false;
  keywords.filter.set(FilterType::Periodize);
  keywords.calculateBounds.set(true);
  EXPECT_NEAR(chooseReferenceMaterial("Strain", facts, keywords).mu0, 2.2, 1e-12);

  // A limit law has no say in linearity: the linear rule with bounds still holds.
  useTable({1, 2, 3}, isotropicEntry(1, 1.0, 0.25) + isotropicEntry(2, 4.0, 0.25));
  testing_laws::addLaw(*table, 3, {.soft = true, .linear = false, .affinLinear = false});
  EXPECT_TRUE(gatherReferenceMaterialFacts("Strain", *table, *geometry, 0, nullptr).linearMaterials);
  EXPECT_NEAR(choose("Strain").mu0, 1.6, 1e-12);
}

TEST_F(ReferenceMaterialTest, TikhonovMovesTheReferenceTowardsTheStiffestLawOnlyWithASoftOne) {
  keywords.tikhonovRegularizationAlpha.set(0.5);
  useTable({1, 2}, isotropicEntry(1, 4.0, 0.25) + isotropicEntry(2, 0.0, 0.25));  // 2 is soft
  ReferenceMaterialChoice c = choose("Strain");  // no regularisation: law 1 alone
  EXPECT_NEAR(c.mu0, 1.6, 1e-12);
  EXPECT_NEAR(c.lambda0, 1.6, 1e-12);

  keywords.tikhonovRegularization.set(true);
  c = choose("Strain");
  EXPECT_NEAR(c.mu0, 8.0 / (2.0 * 1.5), 1e-12);
  EXPECT_NEAR(c.K0, 2.0 * c.mu0 / 3.0, 1e-12);
  EXPECT_EQ(c.lambda0, 0.0);

  useSoftAndStiff();  // regularised, but nothing soft: the plain rule
  EXPECT_NEAR(choose("Strain").mu0, 1.0, 1e-12);
}

TEST_F(ReferenceMaterialTest, OnlyAllIncompressibleTablesWarnAndTheRunGoesOn) {
  const std::string warning =
      "Warning: Only incompressible materials used. Reference material can not be "
      "incompressible.\nSetting lambda0 = 0\n";
  useTable({1, 2}, isotropicEntry(1, 3.0, 0.5) + isotropicEntry(2, 6.0, 0.5));
  testing::internal::CaptureStdout();
  const ReferenceMaterialChoice c = choose("Stress");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), warning);
  // Shear compliances 0.5 and 0.25: their mean 0.375 = 1 / (2 mu0); a finite bulk modulus.
  EXPECT_NEAR(c.mu0, 1.0 / 0.75, 1e-12);
  EXPECT_NEAR(c.lambda0, 0.0, 1e-12);
  EXPECT_NEAR(reference.mu, c.mu0, 1e-12);

  useTable({1, 2}, isotropicEntry(1, 3.0, 0.5) + isotropicEntry(2, 6.0, 0.3));
  testing::internal::CaptureStdout();
  choose("Stress");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(ReferenceMaterialTest, SlowCGTakesHalfTheLargestEigenvalueAndPrintsItsRestartLimits) {
  useSoftAndStiff();
  keywords.iterativeMethod.set("slowCG");
  keywords.restartMinIter.set(7);
  keywords.restartMaxIter.set(40);
  testing::internal::CaptureStdout();
  const ReferenceMaterialChoice c = choose("Strain");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "restart_min= 7\nrestart_max= 40\n");
  EXPECT_NEAR(c.mu0, 4.0, 1e-12);
  EXPECT_NEAR(c.K0, 8.0 / 3.0, 1e-12);
  EXPECT_EQ(c.lambda0, 0.0);

  // The stress scheme refuses the method elsewhere and has no such rule.
  testing::internal::CaptureStdout();
  choose("Stress");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(ReferenceMaterialTest, NoisyPrintsTheConstantsAndTheHourglassStiffness) {
  useSoftAndStiff();
  keywords.noisy.set(true);
  testing::internal::CaptureStdout();
  choose("Strain");
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Reference Material:\nLambda = 1\n    Mu = 1\n     K = 1.66667\n");

  keywords.greenOperator.set(GreenOperatorType::Hex8RHourGlassControl);
  keywords.hourGlassControl.set(0.5);
  testing::internal::CaptureStdout();
  const ReferenceMaterialChoice c = choose("Strain");
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Reference Material:\nLambda = 0\n    Mu = 2.2\n     K = 1.46667\n"
            "Hourglass Control Stiffness:\nLambda_hg = 0\n    Mu_hg = 0.2\n     K_hg = "
            "0.133333\n");
  EXPECT_NEAR(c.muHourglass, 0.5 * 0.8 / 2.0, 1e-15);
  EXPECT_NEAR(c.KHourglass, 2.0 * c.muHourglass / 3.0, 1e-15);
  EXPECT_EQ(c.lambdaHourglass, 0.0);

  // On the compliance side the hourglass term still scales the smallest stiffness.
  keywords.noisy.set(false);
  EXPECT_NEAR(choose("Stress").muHourglass, 0.5 * 0.8 / 2.0, 1e-12);
}

TEST_F(ReferenceMaterialTest, LargeStrainRuleOnTheTangentRange) {
  ReferenceMaterialFacts facts;
  facts.range = {1.0, 2.0, 3.0, 5.0};
  ReferenceMaterialChoice c = chooseReferenceMaterial("DeformationGradient", facts, keywords);
  EXPECT_EQ(c.mu0, 1.5);
  EXPECT_EQ(c.lambda0, 0.0);
  facts.range = {1.0, 1.0, 5.0, 5.0};  // every law with the same extremes
  c = chooseReferenceMaterial("DeformationGradient", facts, keywords);
  EXPECT_EQ(c.mu0, 3.0);
  EXPECT_EQ(c.K0, 2.0);
  facts.range = {1.0, 2.0, 3.0, 5.0};
  facts.hasSoft = true;
  keywords.tikhonovRegularization.set(true);
  keywords.tikhonovRegularizationAlpha.set(1.0);
  EXPECT_EQ(chooseReferenceMaterial("DeformationGradient", facts, keywords).mu0, 2.5);
}

TEST_F(ReferenceMaterialTest, AutomaticSwitchToTheVariationalScheme) {
  geometry = geometryOf({1, 2, 3});
  table = std::make_unique<MaterialElasticVector>();
  testing_laws::addLaw(*table, 1);
  testing_laws::addLaw(*table, 2, {.rigid = true});
  testing::internal::CaptureStdout();
  EXPECT_TRUE(switchToVariationalScheme(keywords, *table, *geometry));
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Infinite contrast of materials too high for basic scheme. Using variational "
            "scheme.\n");
  EXPECT_EQ(keywords.filter(), FilterType::Periodize);
  EXPECT_FALSE(switchToVariationalScheme(keywords, *table, *geometry));  // already variational

  keywords.filter.set(FilterType::NonConsistent);
  keywords.greenOperator.set(GreenOperatorType::StaggeredGrid);
  EXPECT_FALSE(switchToVariationalScheme(keywords, *table, *geometry));
  keywords.greenOperator.set(GreenOperatorType::Basic);
  testing_laws::addLaw(*table, 3, {.soft = true});  // soft and rigid: no switch
  testing::internal::CaptureStdout();
  EXPECT_FALSE(switchToVariationalScheme(keywords, *table, *geometry));
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(keywords.filter(), FilterType::NonConsistent);
}

using ReferenceMaterialDeathTest = ReferenceMaterialTest;

TEST_F(ReferenceMaterialDeathTest, OperatorsWithoutARuleEndTheRun) {
  useSoftAndStiff();
  keywords.greenOperator.set(GreenOperatorType::Helmholtz);
  EXPECT_EXIT(choose("Strain"), ::testing::ExitedWithCode(1),
              "^Reference material not implemented for Green operator Helmholtz\n$");
  keywords.greenOperator.set(GreenOperatorType::Bilaplacian);
  EXPECT_EXIT(choose("Stress"), ::testing::ExitedWithCode(1),
              "^Reference material not implemented for Green operator Bilaplacian\n$");
}

}  // namespace
}  // namespace gridmoor
