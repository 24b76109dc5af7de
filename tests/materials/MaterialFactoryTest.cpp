#include <gtest/gtest.h>

#include <unistd.h>


#include <filesystem>
#include <fstream>
#include <typeinfo>

#include "input/KeywordsElasticity.h"
#include "materials/AnisotropicLinearElasticMaterial.h"
#include "materials/IsotropicLinearElasticMaterial.h"
#include "materials/OrthotropicLinearElasticMaterial.h"
#include "materials/TransversalIsotropicLinearElasticMaterial.h"
#include "materials/MaterialFactory.h"
#include "materials/MaterialFactoryTypeNames.h"
#include "voxel/Geometry.h"

namespace gridmoor {
namespace {

// A parameter tree with the given inline entries (and further settings) in its material block.
XmlNode treeWith(const std::string& materialData, const std::string& more = "") {
  XmlResults results;
  const XmlNode tree = XmlNode::parseString(
      "<Settings><input>" + more + "<MaterialData>" + materialData +
          "</MaterialData></input></Settings>",
      "", &results);
  EXPECT_EQ(results.error, eXMLErrorNone);
  return tree;
}

std::string entry(int number, const std::string& type, const std::string& name = "m",
                  const std::string& parameters = "") {
  return "<Material><MaterNumber>" + std::to_string(number) + "</MaterNumber><MaterName>" + name +
         "</MaterName><Type>" + type + "</Type><MaterialParameters>" + parameters +
         "</MaterialParameters></Material>";
}

// A geometry that only knows its colour lists, which is all the factory asks of it.
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
  const auto& mechanical = mechanicalTypeNames();
  const auto& heat = heatTypeNames();
  ASSERT_EQ(mechanical.size(), static_cast<std::size_t>(MechanicalType::Count));
  ASSERT_EQ(heat.size(), static_cast<std::size_t>(HeatType::Count));
  const auto index = [](const std::vector<std::string>& names, const std::string& name,
                        MaterialKind kind) { return MaterialFactory::typeIndexOf(names, name, kind); };
  EXPECT_EQ(index(mechanical, "LETE", MaterialKind::Mechanical), 14);
  EXPECT_EQ(index(mechanical, "LEANISOTE", MaterialKind::Mechanical), 20);
  EXPECT_EQ(index(mechanical, "LHTI", MaterialKind::Mechanical), 27);
  // The nameless last place is found by the empty name only.
  EXPECT_EQ(index(mechanical, "", MaterialKind::Mechanical), 28);
  // Not found: the isotropic law; a prefix or another case is not a match.
  EXPECT_EQ(index(mechanical, "LETIX", MaterialKind::Mechanical), 0);
  EXPECT_EQ(index(mechanical, "leti", MaterialKind::Mechanical), 0);
  EXPECT_EQ(index(heat, "LEHTI", MaterialKind::Heat), 3);
  EXPECT_EQ(index(heat, "ISOLATE", MaterialKind::Heat), 4);
  // Not found in the heat list: the mixed hybrid law at its end.
  EXPECT_EQ(index(heat, "LE", MaterialKind::Heat), 6);
  EXPECT_EQ(index(heat, "", MaterialKind::Heat), 6);
}

TEST_F(MaterialFactoryTest, ServedColoursAreTheUsedOriginalsOrTheFirstSixteen) {
  MaterialElasticVector vector;
  EXPECT_EQ(MaterialFactory(MaterialKind::Mechanical, vector, nullptr, keywords, nullptr, nullptr)
                .servedColours()
                .size(),
            16u);
  ListGeometry geometry({7, 0, 9, 3}, {9});
  EXPECT_EQ(MaterialFactory(MaterialKind::Mechanical, vector, &geometry, keywords, nullptr, nullptr)
                .servedColours(),
            (std::vector<Colour>{7, 0, 3}));
}

TEST_F(MaterialFactoryTest, EntriesForColoursNotServedAreSkippedSilently) {
  // Each of these entries would end the run if it were built.
  const XmlNode tree = treeWith(entry(16, "NH") + entry(200, "UMAT") + entry(-1, "MR") +
                                entry(300, "KNOWLES") + entry(3, "LVE"));
  const auto withoutGeometry = build(
      treeWith(entry(16, "NH") + entry(200, "UMAT") + entry(-1, "MR") + entry(300, "KNOWLES")),
      nullptr);
  EXPECT_TRUE(withoutGeometry->ownedMaterials.empty());
  ListGeometry geometry({0, 1}, {});
  const auto withGeometry = build(tree, &geometry);
  EXPECT_TRUE(withGeometry->ownedMaterials.empty());
  EXPECT_TRUE(withGeometry->materialsByColour.empty());
  EXPECT_EQ(withGeometry->typeNames, mechanicalTypeNames());
}

TEST_F(MaterialFactoryTest, TypesWithoutALawEndTheRun) {
  ListGeometry geometry({2}, {});
  for (const char* type : {"NH", "MHE", "UMAT", "RIGID", "KNOWLES", "LHTI"})
    EXPECT_EXIT(build(treeWith(entry(2, type)), &geometry), ::testing::ExitedWithCode(1),
                "^Material Type not implemented")
        << type;
  // The empty name selects the nameless last place, which has no law here.
  EXPECT_EXIT(build(treeWith(entry(2, "")), &geometry), ::testing::ExitedWithCode(1),
              "^Material Type not implemented");
  // No heat law exists yet, whatever the name.
  EXPECT_EXIT(makeHeatMaterialVector(treeWith(entry(2, "LH")), "run.xml", &geometry, keywords,
                                     nullptr, nullptr),
              ::testing::ExitedWithCode(1), "^Material Type not implemented");
}

TEST_F(MaterialFactoryTest, FluidOutsideTheFluidColourIsWarnedAbout) {
  keywords.fluidColor.set(4);
  ListGeometry geometry({3, 4}, {});
  // The warning goes to the standard output; joined to the error stream here to be matched.
  EXPECT_EXIT(
      {
        dup2(2, 1);
        build(treeWith(entry(3, "FLUID")), &geometry);
      },
      ::testing::ExitedWithCode(1),
      "Warning: IncompressibleFluid used for color 3\n"
      "         Fluid color should be equal to 4\n"
      "Material Type not implemented");
  EXPECT_EXIT(
      {
        dup2(2, 1);
        build(treeWith(entry(4, "FLUID")), &geometry);
      },
      ::testing::ExitedWithCode(1), "^Material Type not implemented");
}

TEST_F(MaterialFactoryTest, HybridColoursWithoutEntriesGetAutomaticEntries) {
  ListGeometry geometry({0, 5}, {5});
  // An inline entry for a colour that is not in use: no material file is looked for.
  const XmlNode tree = treeWith(entry(16, "NH"));
  // The automatic entry reaches the factory as a mixed hybrid law (not built yet).
  EXPECT_EXIT(build(tree, &geometry), ::testing::ExitedWithCode(1),
              "^Material Type not implemented");
  // The word is checked first, by the rules of the table's kind.
  keywords.hybridMixingFormula.set("maximum");
  EXPECT_EXIT(makeHeatMaterialVector(tree, "run.xml", &geometry, keywords, nullptr,
                                     nullptr),
              ::testing::ExitedWithCode(1),
              "^Could not convert the mixing formula maximum to a known mixing rule");
  keywords.hybridMixingFormula.set("geometricMean");
  EXPECT_EXIT(build(tree, &geometry), ::testing::ExitedWithCode(1),
              "^Could not convert the mixing formula geometricMean to a known mixing rule");
}

TEST_F(MaterialFactoryTest, EachLinearTypeNameBuildsItsLaw) {
  const struct {
    const char* type;
    const std::type_info& law;
  } cases[] = {
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
  };
  ListGeometry geometry({1}, {});
  for (const auto& c : cases) {
    const auto vector = build(treeWith(entry(1, c.type, "law of 1")), &geometry);
    const DiscretizedElasticMaterial* law = vector->elasticLaw(1);
    ASSERT_NE(law, nullptr) << c.type;
    EXPECT_EQ(typeid(*law), c.law) << c.type;
    EXPECT_EQ(law->getName(), "law of 1");
    EXPECT_EQ(law->getColour(), 1);
    EXPECT_EQ(law->geometry, &geometry);
    EXPECT_EQ(vector->materialOf(1)->heat, nullptr);
  }
}

TEST_F(MaterialFactoryTest, UnknownTypeBuildsTheIsotropicLawFromItsParameters) {
  ListGeometry geometry({0, 1}, {});
  const auto vector = build(
      treeWith(entry(0, "Steel") +
               entry(1, "steel", "given", "<E><value>210</value></E><nu>0.3</nu>")),
      &geometry);
  const auto* missing = dynamic_cast<const IsotropicLinearElasticMaterial*>(vector->elasticLaw(0));
  ASSERT_NE(missing, nullptr);
  EXPECT_EQ(typeid(*missing), typeid(IsotropicLinearElasticMaterial));
  // Missing keys read as 0: a soft law, not a failure.
  EXPECT_EQ(missing->youngsModulus, 0.0);
  EXPECT_TRUE(missing->isSoft());
  const auto* given = dynamic_cast<const IsotropicLinearElasticMaterial*>(vector->elasticLaw(1));
  ASSERT_NE(given, nullptr);
  EXPECT_EQ(given->youngsModulus, 210.0);
  EXPECT_EQ(given->poissonRatio, 0.3);
}

TEST_F(MaterialFactoryTest, TableGrowsToTheLargestColourInEntryOrder) {
  ListGeometry geometry({2, 5, 0}, {});
  const auto vector =
      build(treeWith(entry(5, "LE", "five") + entry(9, "LE") + entry(2, "LETI", "two")),
            &geometry);
  ASSERT_EQ(vector->materialsByColour.size(), 6u);
  for (int c : {0, 1, 3, 4}) EXPECT_EQ(vector->materialsByColour[c], nullptr) << c;
  ASSERT_EQ(vector->ownedMaterials.size(), 2u);
  EXPECT_EQ(vector->ownedMaterials[0], vector->materialsByColour[5]);
  EXPECT_EQ(vector->ownedMaterials[1], vector->materialsByColour[2]);
  EXPECT_EQ(vector->elasticLaw(5)->getName(), "five");
  EXPECT_EQ(vector->elasticLaw(2)->getName(), "two");
  EXPECT_EQ(vector->materialFilePath, "");

  // Without a geometry colour 15 is still served.
  const auto fifteen = build(treeWith(entry(15, "LE") + entry(16, "LE")), nullptr);
  EXPECT_EQ(fifteen->materialsByColour.size(), 16u);
  EXPECT_NE(fifteen->elasticLaw(15), nullptr);
}

TEST_F(MaterialFactoryTest, SameColourTwiceStopsOnlyWhenTheColourIsUsed) {
  const std::string twice = entry(0, "LE") + entry(3, "LE") + entry(3, "LETI");
  ListGeometry usesThree({0, 3}, {});
  EXPECT_EXIT(build(treeWith(twice), &usesThree), ::testing::ExitedWithCode(1),
              "^Specifying the same material number multiple times in the material file is not "
              "supported");
  ListGeometry withoutThree({0}, {});
  const auto vector = build(treeWith(twice), &withoutThree);
  EXPECT_EQ(vector->ownedMaterials.size(), 1u);
  // The number is compared as an integer: "03" is colour 3 as well.
  EXPECT_EXIT(build(treeWith(entry(0, "LE") + entry(3, "LE") +
                             "<Material><MaterNumber>03</MaterNumber><Type>LE</Type></Material>"),
                    &usesThree),
              ::testing::ExitedWithCode(1), "^Specifying the same material number");
}

TEST_F(MaterialFactoryTest, FileEntryOfAHybridColourIsUsedUnlessAutomaticEntriesAreForced) {
  ListGeometry geometry({0, 1, 2}, {2});
  const std::string entries = entry(2, "LE", "tuned interface") + entry(0, "LE") + entry(1, "LE");
  const auto vector = build(treeWith(entries), &geometry);
  ASSERT_NE(vector->elasticLaw(2), nullptr);
  EXPECT_EQ(vector->elasticLaw(2)->getName(), "tuned interface");
  EXPECT_EQ(vector->ownedMaterials.size(), 3u);
  // A hybrid colour listed twice is a duplicate like any other.
  EXPECT_EXIT(build(treeWith(entries + entry(2, "LE")), &geometry), ::testing::ExitedWithCode(1),
              "^Specifying the same material number");
  // Forced: the file's entry is passed over and the automatic (mixed hybrid) entry is built.
  const XmlNode forced =
      treeWith(entries, "<Mesh><ForceAutomaticHybridMaterials>1</ForceAutomaticHybridMaterials></Mesh>");
  EXPECT_EXIT(build(forced, &geometry), ::testing::ExitedWithCode(1),
              "^Material Type not implemented");
}

TEST_F(MaterialFactoryTest, LineInputBuildsTheLawsOfTheCffFile) {
  const std::string dir = ::testing::TempDir() + "gridmoor_MaterialFactoryCff/";
  std::filesystem::create_directories(dir);
  std::ofstream(dir + "table.cff") << "Materials 2\n"
                                      "Type0 IsotropicTE\n"
                                      "Young0 70\n"
                                      "Poisson0 0.33\n"
                                      "Alpha0 2.3e-5\n"
                                      "Type1 TransverseIsotropic\n"
                                      "YoungInDirection1 230\n";
  XmlNode tree = XmlNode::createRoot("gridmoor");
  tree.getChildByPath("input/MaterParamValues/MaterParamFile", true).addText("table.cff");
  ListGeometry geometry({0, 1}, {});
  const auto vector =
      makeMaterialElasticVector(tree, dir + "run.pde", &geometry, keywords, nullptr, nullptr);
  EXPECT_EQ(vector->materialFilePath, dir + "table.cff");
  const auto* thermal = dynamic_cast<const IsotropicLinearElasticMaterialWithThermalExpansion*>(
      vector->elasticLaw(0));
  ASSERT_NE(thermal, nullptr);
  EXPECT_EQ(thermal->getName(), "Material 0");
  EXPECT_EQ(thermal->youngsModulus, 70.0);
  EXPECT_EQ(thermal->alpha, 2.3e-5);
  EXPECT_TRUE(thermal->hasThermalExpansion());
  ASSERT_NE(vector->elasticLaw(1), nullptr);
  EXPECT_EQ(typeid(*vector->elasticLaw(1)), typeid(TransversalIsotropicLinearElasticMaterial));
}

}  // namespace
}  // namespace gridmoor
