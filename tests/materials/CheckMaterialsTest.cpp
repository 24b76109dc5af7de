#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>

#include "MaterialInterfaceTestLaws.h"
#include "input/KeywordsElasticity.h"
#include "input/XmlNode.h"

namespace gridmoor {
namespace {

using testing_laws::addLaw;
using testing_laws::exactLine;
using testing_laws::geometryOf;
using testing_laws::LawAnswers;
using testing_laws::TestLaw;

// A strain run with the Neumann series on the basic scheme unless the tree says otherwise.
// The keys that have no default are left out: the lines that report them are dropped.
std::unique_ptr<KeywordsElasticity> keywordsWith(const std::map<std::string, std::string>& keys) {
  XmlNode root = XmlNode::createRoot("Settings");
  root.getChildByPath("input/Solution/IterativeMethod", true).addText("NeumannSeries", 0);
  root.getChildByPath("input/Solution/GreenOperator", true).addText("Basic", 0);
  for (const auto& [key, text] : keys) root.getChildByPath(key, true).addText(text, 0);
  ::testing::internal::CaptureStderr();
  auto keywords = std::make_unique<KeywordsElasticity>(root);
  ::testing::internal::GetCapturedStderr();
  return keywords;
}

using Keys = std::map<std::string, std::string>;
const Keys kStressRun = {{"input/Solution/PrimaryUnknown", "Stress"}};
const Keys kLargeRun = {{"input/Solution/TypeOfDeformation", "Large"}};
const Keys kPolarizationRun = {
    {"input/Solution/PrimaryUnknown", "PolarizationEigenstrain"},
    {"input/Solution/TypeOfMacroscopicLoadPolarizationEigenstrain", "Polarization"}};

Keys with(Keys keys, const Keys& more) {
  for (const auto& [key, text] : more) keys[key] = text;
  return keys;
}

// Colours 1 and 3 hold plain linear laws, colour 2 the law under test.
struct CheckMaterials : ::testing::Test {
  MaterialElasticVector table;
  std::unique_ptr<StaticGeometry> geometry = geometryOf({1, 1, 2, 3});
  TestLaw* second = nullptr;
  void addLaws(LawAnswers answers = {}) {
    addLaw(table, 1);
    second = addLaw(table, 2, answers);
    addLaw(table, 3);
  }
  void expectStop(const Keys& keys, const std::string& message) {
    auto keywords = keywordsWith(keys);
    EXPECT_EXIT(table.checkMaterials(*keywords, *geometry), ::testing::ExitedWithCode(1),
                exactLine(message));
  }
  // What the check prints when it lets the run go on.
  std::string output(KeywordsElasticity& keywords) {
    ::testing::internal::CaptureStdout();
    table.checkMaterials(keywords, *geometry);
    return ::testing::internal::GetCapturedStdout();
  }
  std::string output(const Keys& keys) { return output(*keywordsWith(keys)); }
};

using CheckMaterialsDeathTest = CheckMaterials;

TEST_F(CheckMaterialsDeathTest, EffectiveMatricesNeedAllSixMechanicalLoadCases) {
  addLaws();
  const Keys effective = {{"Postprocessing/WriteEffectiveMatrix", "1"},
                          {"Postprocessing/ComputeLoadCaseList", "1,2,3,4,5,7"}};
  const std::string prescribed =
      "It is not possible to calculate the effective Matrix (or parts of it) for prescribed "
      "polarization, eigenstrain or deformationGradient if not all six mechanical loadcases "
      "are computed.";
  expectStop(with(kPolarizationRun, effective), prescribed);
  expectStop(with(kLargeRun, effective), prescribed);
  expectStop(with(kStressRun, effective),
             "It is not possible to calculate the effective Matrix (or parts of it) for "
             "prescribed stress/strain if the primary unknown is strain/stress unless all six "
             "mechanical loadcases are computed.");
  // The switch for all cases wins over the list; a strain load on the strain unknown needs
  // no full set.
  EXPECT_EQ(
      output(with(with(kStressRun, effective), {{"Postprocessing/ComputeAllLoadCases", "1"}})), "");
  EXPECT_EQ(output(effective), "");
}

TEST_F(CheckMaterialsDeathTest, MethodsAreRestrictedByFormulationAndLinearity) {
  addLaws({.linear = false, .affinLinear = false});
  const Keys noBounds = {{"input/Solution/CalculateBounds", "0"}};
  const Keys cg = with(noBounds, {{"input/Solution/IterativeMethod", "CG"}});
  EXPECT_EQ(output(cg),
            "For a non-affin-linear problem, the convergence of the CG or BiCGSTAB iteration is "
            "not clear\nUse the Neummann Series iteration or the NR-linearization\n");
  EXPECT_EQ(output(with(cg, {{"input/Solution/linearizeWithNR", "1"}})), "");
  EXPECT_EQ(output(noBounds), "");

  expectStop(with(kPolarizationRun, cg),
             "For the polarization scheme only the Neumann Series does make sense.");
  expectStop(with(kStressRun, {{"input/Solution/IterativeMethod", "slowCG"}}),
             "The Nesterov method (slowCG) can only be used for the strain or deformation "
             "gradient formulation.");
}

TEST_F(CheckMaterialsDeathTest, LimitLawsThatTheFormulationCannotHold) {
  addLaws({.soft = true});
  // A soft phase under a macroscopic load warns on the basic scheme only.
  EXPECT_EQ(output(Keys{}),
            "Infinite contrast of materials. Using variational scheme in case of convergence "
            "problems.\n");
  const Keys periodize = {{"input/Solution/Filter", "Periodize"}};
  EXPECT_EQ(output(periodize), "");
  expectStop(with(kStressRun, periodize),
             "Soft material (E=0) used.\nThis is not possible for the stress formulation, "
             "because the compliance matrix is not defined for soft materials.");
  second->answers = {.incompressible = true};
  expectStop({},
             "Incompressible material (nu = 0.5) used.\nThis is not possible for the strain or "
             "deformationGradient formulation, because the stiffness Matrix C is not defined for "
             "incompressible materials.");
}

// Laws that are not affine linear switch the bounds off and the run goes on.
TEST_F(CheckMaterialsDeathTest, BoundsNeedAffineLinearLaws) {
  addLaws({.affinLinear = false});
  auto keywords = keywordsWith({{"input/Solution/CalculateBounds", "1"}});
  EXPECT_EQ(output(*keywords),
            "Voigt/Reuss bounds can only be calculated for linear elastic materials.\n");
  EXPECT_FALSE(keywords->calculateBounds());
  second->answers = {};
  keywords->calculateBounds.set(true);
  EXPECT_EQ(output(*keywords), "");
  EXPECT_TRUE(keywords->calculateBounds());
}

}  // namespace
}  // namespace gridmoor
