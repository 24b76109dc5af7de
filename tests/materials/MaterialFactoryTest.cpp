// The material table from the parameter file: type names and the laws they build, which
// entries are built, hybrid entries, the material file or .cff translation as the source.
#include <gtest/gtest.h>
#include <unistd.h>

#include <sstream>
#include <typeinfo>

#include "../formats/FieldFileTestSupport.h"
#include "input/KeywordsElasticity.h"
#include "input/Parameter.h"
#include "materials/AnisotropicLinearElasticMaterial.h"
#include "materials/CffFile.h"
#include "materials/IsotropicLinearElasticMaterial.h"
#include "materials/MaterialFactory.h"
#include "materials/MaterialFactoryTypeNames.h"
#include "materials/MaterialFileParser.h"
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

TEST_F(MaterialFactoryTest, NonFiniteNumbersAmongTheParametersEndTheRun) {
  ListGeometry geometry({3}, {});
  const auto dies = [&](const std::string& type, const std::string& parameters,
                        const std::string& message) {
    EXPECT_EXIT(build(treeWith(entry(3, type, "matrix", parameters)), &geometry),
                ::testing::ExitedWithCode(1), message)
        << parameters;
  };
  dies("LE", "<E><value>nan</value></E><nu><value>0.3</value></nu>",
       "^Material 3 \\(matrix\\): the parameter E is not a finite number: \"nan\"\n$");
  dies("LETE", "<E>2</E><nu>0.3</nu><alpha><values>-inf</values></alpha>", "parameter alpha .*\"-inf\"");
  dies("LEANISO", "<C><value>1,2,1e400,4</value></C>", "parameter C .*\"1e400\"");
  // Words and finite lists pass.
  const auto built = build(
      treeWith(entry(3, "LEANISO", "m",
                     "<C><value>" + std::string("1,0,0,0,0,0,1,0,0,0,0,1,0,0,0,1,0,0,1,0,1") +
                         "</value></C><IsotropicMaterialLaw>false</IsotropicMaterialLaw>")),
      &geometry);
  EXPECT_NE(built->elasticLaw(3), nullptr);
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

  EXPECT_EQ(elasticMixingRuleOf("maximum"), ElasticMixingRule::maximum);
  EXPECT_EQ(static_cast<int>(elasticMixingRuleOf("rotatedLaminate")), 5);
  EXPECT_EQ(static_cast<int>(heatMixingRuleOf("rotatedLaminate")), 4);
  EXPECT_EXIT(elasticMixingRuleOf("HarmonicMean"), ::testing::ExitedWithCode(1),
              "^Could not convert the mixing formula HarmonicMean to a known mixing rule");
}

XmlNode translate(const std::string& text) {
  std::istringstream in(text);
  return translateCff(in);
}

// Text at path in the i-th entry, "<absent>" when the key is missing.
std::string at(const XmlNode& root, int i, const std::string& path) {
  return readParameterText(root.child(i), path, "<absent>");
}

TEST(CffTypes, LongerWordsAreFoundBeforeTheWordsTheyContain) {
  const std::pair<const char*, const char*> cases[] = {
      {"IsotropicTE", "LETE"}, {"Isotropic", "LE"}, {"TransverseIsotropicTE", "LETITE"},
      {"TransverseIsotropicHeat", "LHTI"}, {"TransverseIsotropic", "LETI"},
      {"OrthotropicHeat", ""}, {"OrthotropicTE", "LEORTHTE"}, {"AnisotropicTE", "LEANISOTE"},
      {"Anisotropic", "LEANISO"}, {"CompressibleFluidTE", "COMPRESSIBLE_FLUID_TE"},
      {"UMATTE", "UMATTE"}, {"NeoHooke", "NH"}, {"MooneyRivlinTE", "MRTE"},
      {"MyIsotropicTEMaterial", "LETE"}};  // a substring of the value is enough
  for (const auto& [word, name] : cases)
    EXPECT_EQ(at(translate(std::string("Type14 ") + word + "\n"), 0, "Type"), name) << word;
  EXPECT_EXIT(translate("Type0 isotropic\n"), ::testing::ExitedWithCode(1),
              "^unknown material Type isotropic in cff-File");
}

TEST(CffParameters, WordOrderAndLineRules) {
  const XmlNode root = translate(
      "\xEF\xBB\xBFMaterials 2\r\n"
      "Type3 TransverseIsotropic\r\n"
      "YoungInDirection3 5\n"   // not caught by "Young"
      "Young3 7\n"
      "ShearXY3 1\n"
      "Shear3 2\n"
      "AlphaX3 3\n"
      "Alpha3 4\n"
      "PoissonsParallel3 0.1\n"
      "Poisson3 0.2 GPa\n"      // three tokens: ignored without a word
      "Poisson3  0.3\n"         // two blanks make an empty token: ignored
      "Poisson3\t0.4\n"         // a tab is no separator: one token
      "\n"
      "Young3 8\n"              // a later line wins
      "ConductivityY3 9\n"
      "Young03 6\n");           // another entry (that will claim colour 3 too)
  ASSERT_EQ(root.childCount(), 2);
  EXPECT_EQ(root.child(0).name(), "Material");
  EXPECT_EQ(at(root, 0, "MaterNumber"), "3");
  EXPECT_EQ(at(root, 0, "MaterName"), "Material 3");
  EXPECT_EQ(at(root, 0, "Type"), "LETI");
  const std::pair<const char*, const char*> expected[] = {
      {"E1", "5"}, {"E", "8"},   {"G12", "2"},  {"alpha1", "3"}, {"alpha", "4"},
      {"nu12", "0.1"}, {"nu", "<absent>"}, {"kappa2", "9"}};
  for (const auto& [key, value] : expected)
    EXPECT_EQ(at(root, 0, std::string("MaterialParameters/") + key), value) << key;
  EXPECT_EQ(at(root, 1, "MaterNumber"), "03");  // an unknown word is an end-to-end case
}

TEST(CffPairs, NamesAndValuesAreJoinedPairwiseOrEndTheRun) {
  const XmlNode root = translate(
      "ParametersNames2 E,nu,s0\nParametersValues2 210,0.3,0.5\n"
      "InternalNames2 eps_p\nInternalValues2 0\n");
  EXPECT_EQ(at(root, 0, "MaterialParameters/Parameters"), "E,210;nu,0.3;s0,0.5");
  EXPECT_EQ(at(root, 0, "MaterialParameters/InternalVariables"), "eps_p,0");

  EXPECT_EXIT(translate("ParametersNames0 a,b\nYoung0 1\n"), ::testing::ExitedWithCode(1),
              "^Error in cff-File: The keyword ParametersNames is not followed by the keyword "
              "ParametersValues");
  EXPECT_EXIT(translate("InternalNames0 a\n"), ::testing::ExitedWithCode(1),
              "^Error in cff-File: The keyword InternalNames is not followed by the keyword "
              "InternalValues");
  EXPECT_EXIT(translate("ParametersNames0 a,b\nParametersValues0 1\n"),
              ::testing::ExitedWithCode(1),
              "^Error in cff-File: The number of ParametersNames and ParametersValues do not "
              "coincide\\.");
  EXPECT_EXIT(translate("InternalNames0 a,b,c\nInternalValues0 1,2\n"),
              ::testing::ExitedWithCode(1),
              "^Error in cff-File: The number of InternalNames and InternalValues do not "
              "coincide\\.");
}

TEST(CffFile, UnreadableFileEndsTheRun) {
  EXPECT_EXIT(translateCffFile(::testing::TempDir() + "gridmoor_none.cff"),
              ::testing::ExitedWithCode(1), "gridmoor_none\\.cff can not be opened");
  EXPECT_EXIT(translateCffFile(::testing::TempDir()), ::testing::ExitedWithCode(1),
              "can not be opened");
  EXPECT_EXIT(translateCffFile("/dev/null"), ::testing::ExitedWithCode(1), "can not be opened");
}

class MaterialFactorySource : public gridmoor::testing::ScratchDirectory {
 protected:
  void write(const std::string& name, const std::string& text) { writeBytes(path(name), text); }
  static XmlNode settings(const std::string& materialData) {
    return XmlNode::parseString("<Settings><input><MaterialData>" + materialData +
                                "</MaterialData></input></Settings>");
  }
  static std::string number(const XmlNode& entry) {
    return readParameterText(entry, "MaterNumber", "");
  }
  const MaterialVector table;
};

TEST_F(MaterialFactorySource, InlineEntriesWinOverTheNamedFile) {
  write("materials.xml", "<M><Material><MaterNumber>9</MaterNumber></Material></M>");
  const MaterialSource source = readMaterialSource(
      settings("<MaterParamFile>materials.xml</MaterParamFile>"
               "<FortranCompiler><value>gfortran</value></FortranCompiler>"
               "<FortranCompilerOptions>-O2</FortranCompilerOptions>"
               "<Material><MaterNumber>2</MaterNumber></Material><EModulUnit>GPa</EModulUnit>"
               "<Material><MaterNumber>0</MaterNumber></Material>"),
      path("run.xml"), table);
  ASSERT_EQ(source.entries.size(), 2u);
  EXPECT_EQ(number(source.entries[0]), "2");
  EXPECT_EQ(number(source.entries[1]), "0");
  EXPECT_EQ(source.materialFile, "");
  EXPECT_EQ(source.fortranCompiler, "gfortran");
  EXPECT_EQ(source.fortranCompilerOptions, "-O2");
}

TEST_F(MaterialFactorySource, SeparateFileByAbsoluteNameOrNone) {
  // A file next to the parameter file, and one that is missing, are end-to-end cases. An
  // absolute name stays as given; a copy of a parameter file's material block reads too.
  write("block.xml", "<S><input><MaterialData><Material><MaterNumber>7</MaterNumber></Material>"
                     "</MaterialData></input></S>");
  const MaterialSource block = readMaterialSource(
      settings("<MaterParamFile>" + path("block.xml") + "</MaterParamFile>"), "x/run.xml", table);
  EXPECT_EQ(block.materialFile, path("block.xml"));
  ASSERT_EQ(block.entries.size(), 1u);
  EXPECT_EQ(number(block.entries[0]), "7");
  // Neither entries nor a name: the directory alone is no material file.
  EXPECT_EXIT(readMaterialSource(settings(""), path("run.xml"), table),
              ::testing::ExitedWithCode(1), "^Material parameter file .* does not exist!");
}

TEST_F(MaterialFactorySource, LineInputReadsOnlyTheCffFile) {
  write("mat.cff", "Type5 IsotropicTE\nAlpha5 2e-5\n");
  XmlNode tree = XmlNode::createRoot("gridmoor");
  tree.getChildByPath("input/MaterParamValues/MaterParamFile", true).addText("mat.cff");
  tree.getChildByPath("input/FortranCompiler", true).addText("ifort");
  tree.getChildByPath("input/MaterialData/Material/MaterNumber", true).addText("1");
  const MaterialSource source = readMaterialSource(tree, path("run.pde"), table);
  EXPECT_EQ(source.materialFile, path("mat.cff"));
  EXPECT_EQ(source.fortranCompiler, "ifort");
  ASSERT_EQ(source.entries.size(), 1u);
  EXPECT_EQ(number(source.entries[0]), "5");
  EXPECT_EQ(readParameterText(source.entries[0], "Type", ""), "LETE");
}

}  // namespace
}  // namespace gridmoor
