#include <gtest/gtest.h>

#include "input/Parameter.h"
#include "materials/MaterialFactoryHybridEntries.h"

namespace gridmoor {
namespace {

TEST(MaterialFactoryHybrid, AutomaticEntryIsTheExactTextAndReadsAsAnEntry) {
  EXPECT_EQ(autoHybridEntryText(MaterialKind::Mechanical, 17, "harmonicMean"),
            "<Material><MaterNumber>17</MaterNumber><MaterName>AutoHybrid</MaterName>"
            "<Type>MHE</Type><MaterialParameters><mixingFormula><value>harmonicMean</value>"
            "</mixingFormula></MaterialParameters></Material>");
  // The colour is written as a number, not as a character.
  EXPECT_EQ(autoHybridEntryText(MaterialKind::Heat, 255, "rotatedLaminate"),
            "<Material><MaterNumber>255</MaterNumber><MaterName>AutoHybrid</MaterName>"
            "<Type>MHH</Type><MaterialParameters><mixingFormula><value>rotatedLaminate</value>"
            "</mixingFormula></MaterialParameters></Material>");

  const XmlNode entry = autoHybridEntry(MaterialKind::Mechanical, 200, "arithmeticMean");
  ASSERT_TRUE(entry);
  EXPECT_EQ(entry.name(), "Material");
  EXPECT_EQ(readParameterText(entry, "MaterNumber", ""), "200");
  EXPECT_EQ(readParameterText(entry, "MaterName", ""), "AutoHybrid");
  EXPECT_EQ(readParameterText(entry, "Type", ""), "MHE");
  EXPECT_EQ(readParameterText(entry, "MaterialParameters/mixingFormula", ""), "arithmeticMean");
  EXPECT_EQ(readParameterText(autoHybridEntry(MaterialKind::Heat, 3, "maximum"), "Type", ""),
            "MHH");
}

TEST(MaterialFactoryHybrid, MixingWordsOfEachKind) {
  EXPECT_EQ(elasticMixingRuleOf("boundsPreserving"), ElasticMixingRule::boundsPreserving);
  EXPECT_EQ(elasticMixingRuleOf("avgHarmonicArithmeticMean"),
            ElasticMixingRule::avgHarmonicArithmeticMean);
  EXPECT_EQ(static_cast<int>(elasticMixingRuleOf("maximum")), 4);
  EXPECT_EQ(static_cast<int>(elasticMixingRuleOf("rotatedLaminate")), 5);
  EXPECT_EQ(static_cast<int>(heatMixingRuleOf("harmonicMean")), 1);
  EXPECT_EQ(static_cast<int>(heatMixingRuleOf("rotatedLaminate")), 4);

  const char* message = "^Could not convert the mixing formula maximum to a known mixing rule";
  EXPECT_EXIT(heatMixingRuleOf("maximum"), ::testing::ExitedWithCode(1), message);
  EXPECT_EXIT(checkMixingFormula(MaterialKind::Heat, "maximum"), ::testing::ExitedWithCode(1),
              message);
  EXPECT_EXIT(elasticMixingRuleOf("HarmonicMean"), ::testing::ExitedWithCode(1),
              "mixing formula HarmonicMean to a known");
  EXPECT_EXIT(checkMixingFormula(MaterialKind::Mechanical, ""), ::testing::ExitedWithCode(1),
              "mixing formula  to a known");
}

TEST(MaterialFactoryHybrid, WordWithMarkupCannotMakeAnEntry) {
  EXPECT_EXIT(autoHybridEntry(MaterialKind::Mechanical, 4, "a</value>"),
              ::testing::ExitedWithCode(1), "AutoHybrid.*could not be read");
}

}  // namespace
}  // namespace gridmoor
