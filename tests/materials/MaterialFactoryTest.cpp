#include <gtest/gtest.h>
#include <unistd.h>

#include <typeinfo>

#include "input/KeywordsElasticity.h"
#include "input/Parameter.h"
#include "materials/AnisotropicLinearElasticMaterial.h"
#include "materials/IsotropicLinearElasticMaterial.h"
#include "materials/MaterialFactory.h"
#include "materials/MaterialFactoryTypeNames.h"
#include "materials/OrthotropicLinearElasticMaterial.h"
#include "materials/TransversalIsotropicLinearElasticMaterial.h"

namespace gridmoor {
namespace {

std::string entry(int number, const std::string& type, const std::string& name = "m",
                  const std::string& parameters = "") {
  return "<Material><MaterNumber>" + std::to_string(number) + "</MaterNumber><MaterName>" + name +
         "</MaterName><Type>" + type + "</Type><MaterialParameters>" + parameters +
         "</MaterialParameters></Material>";
}

XmlNode treeWith(const std::string& entries, const std::string& more = "") {
  return XmlNode::parseString("<Settings><input>" + more + "<MaterialData>" + entries +
                              "</MaterialData></input></Settings>");
}

// The factory asks a geometry only for its colour lists.
struct ListGeometry : StaticGeometry {
  ListGeometry(std::vector<Colour> used, std::vector<Colour> hybrids) {
    RealVoxelImage.colors = std::move(used);
    hybridColorList = std::move(hybrids);
  }
};

class MaterialFactoryTest : public ::testing::Test {
 protected:
  std::unique_ptr<MaterialElasticVector> build(const XmlNode& tree, Geometry* geometry) {
    return makeMaterialElasticVector(tree, "run.xml", geometry, keywords, nullptr, nullptr);
  }
  KeywordsElasticity keywords;
};

TEST(MaterialFactoryTypes, LookupIsExactAndFallsBackByKind) {
  const auto index = [](const std::string& name, MaterialKind kind) {
    return MaterialFactory::typeIndexOf(
        kind == MaterialKind::Mechanical ? mechanicalTypeNames() : heatTypeNames(), name, kind);
  };
  EXPECT_EQ(index("", MaterialKind::Mechanical), 28);  // only the empty name finds 28
  EXPECT_EQ(index("leti", MaterialKind::Mechanical), 0);
  EXPECT_EQ(index("LEHTI", MaterialKind::Heat), 3);
  EXPECT_EQ(index("LE", MaterialKind::Heat), 6);  // the mixed hybrid law ends the heat list
}

TEST_F(MaterialFactoryTest, EachLinearTypeNameBuildsItsLaw) {
  const std::pair<const char*, const std::type_info&> cases[] = {
      {"LE", typeid(IsotropicLinearElasticMaterial)},
      {"LEH", typeid(IsotropicLinearElasticMaterial)},
      {"LETE", typeid(IsotropicLinearElasticMaterialWithThermalExpansion)},
      {"LETI", typeid(TransversalIsotropicLinearElasticMaterial)},
      {"LEHTI", typeid(TransversalIsotropicLinearElasticMaterial)},
      {"LETITE", typeid(TransversalIsotropicLinearElasticMaterialWithThermalExpansion)},
      {"LEORTH", typeid(OrthotropicLinearElasticMaterial)},
      {"LEORTHTE", typeid(OrthotropicLinearElasticMaterialWithThermalExpansion)},
      {"LEANISO", typeid(AnisotropicLinearElasticMaterial)},
      {"LEANISOTE", typeid(AnisotropicLinearElasticMaterialWithThermalExpansion)},
      {"Steel", typeid(IsotropicLinearElasticMaterial)}};  // unknown names too
  ListGeometry geometry({1}, {});
  for (const auto& [type, law] : cases) {
    const auto vector = build(treeWith(entry(1, type, "law of 1")), &geometry);
    const DiscretizedElasticMaterial* built = vector->elasticLaw(1);
    ASSERT_NE(built, nullptr) << type;
    EXPECT_EQ(typeid(*built), law) << type;
    EXPECT_EQ(built->getName(), "law of 1");
    EXPECT_EQ(built->getColour(), 1);
    EXPECT_EQ(built->geometry, &geometry);
  }
  // An unknown type without keys is an isotropic law with E = 0, not a failure.
  const auto soft = build(treeWith(entry(1, "Steel")), &geometry);
  EXPECT_TRUE(soft->elasticLaw(1)->isSoft());
  const auto given = build(treeWith(entry(1, "Steel", "s", "<E><value>210</value></E>")), &geometry);
  EXPECT_EQ(dynamic_cast<const IsotropicLinearElasticMaterial&>(*given->elasticLaw(1)).youngsModulus,
            210.0);
}

TEST_F(MaterialFactoryTest, TypesWithoutALawEndTheRunAfterTheFluidWarning) {
  ListGeometry geometry({2, 4}, {});
  for (const char* type : {"NH", "UMAT", "RIGID", ""})
    EXPECT_EXIT(build(treeWith(entry(2, type)), &geometry), ::testing::ExitedWithCode(1),
                "^Material Type not implemented") << type;
  EXPECT_EXIT(makeHeatMaterialVector(treeWith(entry(2, "LH")), "run.xml", &geometry, keywords,
                                     nullptr, nullptr),
              ::testing::ExitedWithCode(1), "^Material Type not implemented");
  // The warning (an end-to-end case) is on the standard output, joined to the error stream
  // here: the fluid colour itself is not warned about.
  keywords.fluidColor.set(4);
  EXPECT_EXIT((dup2(2, 1), build(treeWith(entry(4, "FLUID")), &geometry)),
              ::testing::ExitedWithCode(1), "^Material Type not implemented");
}

TEST_F(MaterialFactoryTest, OnlyServedColoursAreBuiltAndTheTableGrowsToTheLargest) {
  // Each skipped entry would end the run if it were built.
  const auto free = build(treeWith(entry(15, "LE") + entry(16, "NH") + entry(-1, "MR")), nullptr);
  ASSERT_EQ(free->materialsByColour.size(), 16u);
  EXPECT_EQ(free->ownedMaterials.size(), 1u);

  ListGeometry geometry({2, 5, 0}, {});
  const auto vector = build(
      treeWith(entry(5, "LE", "five") + entry(9, "NH") + entry(2, "LETI", "two")), &geometry);
  ASSERT_EQ(vector->materialsByColour.size(), 6u);
  for (int c : {0, 1, 3, 4}) EXPECT_EQ(vector->materialsByColour[c], nullptr) << c;
  ASSERT_EQ(vector->ownedMaterials.size(), 2u);
  EXPECT_EQ(vector->ownedMaterials[0], vector->materialOf(5));
  EXPECT_EQ(vector->elasticLaw(2)->getName(), "two");
  EXPECT_EQ(vector->typeNames, mechanicalTypeNames());
}

TEST_F(MaterialFactoryTest, SameColourTwiceStopsOnlyWhenTheColourIsUsed) {
  const std::string twice = entry(0, "LE") + entry(3, "LE") + entry(3, "NH");
  ListGeometry withoutThree({0}, {});
  EXPECT_EQ(build(treeWith(twice), &withoutThree)->ownedMaterials.size(), 1u);
  ListGeometry usesThree({0, 3}, {});
  // Numbers compare as integers: "03" is colour 3 as well.
  EXPECT_EXIT(build(treeWith(entry(3, "LE") + "<Material><MaterNumber>03</MaterNumber><Type>LE</Type></Material>"),
                    &usesThree),
              ::testing::ExitedWithCode(1),
              "^Specifying the same material number multiple times in the material file is not supported");
}

TEST_F(MaterialFactoryTest, HybridColoursTakeTheFileEntryOrAnAutomaticOne) {
  ListGeometry geometry({0, 1, 2}, {2});
  const std::string entries = entry(2, "LE", "tuned") + entry(0, "LE") + entry(1, "LE");
  const auto vector = build(treeWith(entries), &geometry);
  EXPECT_EQ(vector->elasticLaw(2)->getName(), "tuned");
  EXPECT_EQ(vector->ownedMaterials.size(), 3u);
  // Forced, or without an entry: the automatic mixed hybrid entry, whose law is not built yet.
  EXPECT_EXIT(build(treeWith(entries, "<Mesh><ForceAutomaticHybridMaterials>1"
                                      "</ForceAutomaticHybridMaterials></Mesh>"),
                    &geometry),
              ::testing::ExitedWithCode(1), "^Material Type not implemented");
  EXPECT_EXIT(build(treeWith(entry(0, "LE")), &geometry), ::testing::ExitedWithCode(1),
              "^Material Type not implemented");
  // The word is checked first, by the rules of the table's kind.
  keywords.hybridMixingFormula.set("maximum");
  EXPECT_EXIT(makeHeatMaterialVector(treeWith(entry(16, "LH")), "run.xml", &geometry, keywords,
                                     nullptr, nullptr),
              ::testing::ExitedWithCode(1),
              "^Could not convert the mixing formula maximum to a known mixing rule");
}

TEST(MaterialFactoryHybrid, AutomaticEntryTextAndMixingWords) {
  EXPECT_EQ(autoHybridEntryText(MaterialKind::Heat, 255, "harmonicMean"),
            "<Material><MaterNumber>255</MaterNumber><MaterName>AutoHybrid</MaterName>"
            "<Type>MHH</Type><MaterialParameters><mixingFormula><value>harmonicMean</value>"
            "</mixingFormula></MaterialParameters></Material>");
  const XmlNode e = autoHybridEntry(MaterialKind::Mechanical, 17, "maximum");
  EXPECT_EQ(readParameterText(e, "MaterNumber", ""), "17");
  EXPECT_EQ(readParameterText(e, "Type", ""), "MHE");
  EXPECT_EQ(readParameterText(e, "MaterialParameters/mixingFormula", ""), "maximum");
  EXPECT_EXIT(autoHybridEntry(MaterialKind::Mechanical, 4, "a</value>"),
              ::testing::ExitedWithCode(1), "AutoHybrid.*could not be read");

  EXPECT_EQ(elasticMixingRuleOf("maximum"), ElasticMixingRule::maximum);
  EXPECT_EQ(static_cast<int>(elasticMixingRuleOf("rotatedLaminate")), 5);
  EXPECT_EQ(static_cast<int>(heatMixingRuleOf("rotatedLaminate")), 4);
  EXPECT_EXIT(elasticMixingRuleOf("HarmonicMean"), ::testing::ExitedWithCode(1),
              "^Could not convert the mixing formula HarmonicMean to a known mixing rule");
}

}  // namespace
}  // namespace gridmoor
