#include <gtest/gtest.h>

#include <unistd.h>

#include <memory>

#include "input/KeywordsElasticity.h"
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

}  // namespace
}  // namespace gridmoor
