#include <gtest/gtest.h>

#include <sstream>

#include "input/Parameter.h"
#include "materials/CffFile.h"

namespace gridmoor {
namespace {

XmlNode translate(const std::string& text) {
  std::istringstream in(text);
  return translateCff(in);
}

// The entry whose "MaterNumber" text is number, or the empty node.
XmlNode entryOf(const XmlNode& root, const std::string& number) {
  for (int i = 0; i < root.childCount(); ++i)
    if (readParameterText(root.child(i), "MaterNumber", "") == number) return root.child(i);
  return XmlNode();
}

std::string at(const XmlNode& root, const std::string& number, const std::string& path) {
  const XmlNode entry = entryOf(root, number);
  return entry ? readParameterText(entry, path, "<absent>") : "<no entry>";
}

std::string parameter(const XmlNode& root, const std::string& number, const std::string& key) {
  return at(root, number, "MaterialParameters/" + key);
}

TEST(CffTypes, LongerWordsAreFoundBeforeTheWordsTheyContain) {
  const struct {
    const char* word;
    const char* name;
  } cases[] = {
      {"IsotropicTE", "LETE"},        {"Isotropic", "LE"},
      {"TransverseIsotropic", "LETI"}, {"TransverseIsotropicTE", "LETITE"},
      {"TransverseIsotropicHeat", "LHTI"}, {"OrthotropicHeat", ""},
      {"OrthotropicTE", "LEORTHTE"},  {"Orthotropic", "LEORTH"},
      {"AnisotropicTE", "LEANISOTE"}, {"Anisotropic", "LEANISO"},
      {"CompressibleFluidTE", "COMPRESSIBLE_FLUID_TE"}, {"CompressibleFluid", "COMPRESSIBLE_FLUID"},
      {"UMATTE", "UMATTE"},           {"UMAT", "UMAT"},
      {"NeoHookeTE", "NHTE"},         {"NeoHooke", "NH"},
      {"MooneyRivlinTE", "MRTE"},     {"MooneyRivlin", "MR"},
      // The search is for a substring of the value.
      {"LinearIsotropicTEMaterial", "LETE"},
  };
  for (const auto& c : cases) {
    const XmlNode root = translate(std::string("Type14 ") + c.word + "\n");
    EXPECT_EQ(at(root, "14", "Type"), c.name) << c.word;
  }
}

TEST(CffTypes, UnknownTypeWordEndsTheRun) {
  EXPECT_EXIT(translate("Type0 Plastic\n"), ::testing::ExitedWithCode(1),
              "unknown material Type Plastic in cff-File");
  // Case matters: "isotropic" is not "Isotropic".
  EXPECT_EXIT(translate("Type0 isotropic\n"), ::testing::ExitedWithCode(1),
              "unknown material Type isotropic in cff-File");
}

TEST(CffParameters, WordsMapToTheirTargetsInSearchOrder) {
  const XmlNode root = translate(
      "Materials 2\n"
      "Type0 TransverseIsotropic\n"
      "YoungInDirection0 5\n"
      "YoungOrthogonal0 6\n"
      "PoissonsParallel0 0.1\n"
      "PoissonsOrthogonal0 0.2\n"
      "Shear0 7\n"
      "AlphaInDirection0 1e-5\n"
      "Type1 Orthotropic\n"
      "YoungX1 11\n"
      "YoungZ1 13\n"
      "ShearXZ1 4\n"
      "PoissonsYZ1 0.3\n"
      "AlphaY1 2e-6\n"
      "Alpha1 3e-6\n"
      "Young1 99\n"
      "Poisson1 0.25\n"
      "BulkModulus1 40\n"
      "ConductivityZ1 8\n"
      "ConductivityInDirection1 9\n"
      "StiffnessMatrix1 1,2,3\n"
      "UMATFile1 law.f\n"
      "IsoMaterialLaw1 1\n"
      "NameMaterialLaw1 my\n"
      "Precision1 Double\n");
  ASSERT_EQ(root.childCount(), 2);
  EXPECT_EQ(root.child(0).name(), "Material");
  EXPECT_EQ(at(root, "0", "MaterName"), "Material 0");
  EXPECT_EQ(at(root, "0", "Type"), "LETI");
  EXPECT_EQ(parameter(root, "0", "E1"), "5");  // not caught by "Young"
  EXPECT_EQ(parameter(root, "0", "E"), "<absent>");
  EXPECT_EQ(parameter(root, "0", "E2"), "6");
  EXPECT_EQ(parameter(root, "0", "nu12"), "0.1");
  EXPECT_EQ(parameter(root, "0", "nu23"), "0.2");
  EXPECT_EQ(parameter(root, "0", "G12"), "7");
  EXPECT_EQ(parameter(root, "0", "alpha1"), "1e-5");
  EXPECT_EQ(parameter(root, "0", "alpha"), "<absent>");

  EXPECT_EQ(at(root, "1", "MaterName"), "Material 1");
  EXPECT_EQ(parameter(root, "1", "E1"), "11");
  EXPECT_EQ(parameter(root, "1", "E3"), "13");
  EXPECT_EQ(parameter(root, "1", "G13"), "4");
  EXPECT_EQ(parameter(root, "1", "nu23"), "0.3");
  EXPECT_EQ(parameter(root, "1", "alpha2"), "2e-6");
  EXPECT_EQ(parameter(root, "1", "alpha"), "3e-6");
  EXPECT_EQ(parameter(root, "1", "E"), "99");
  EXPECT_EQ(parameter(root, "1", "nu"), "0.25");
  EXPECT_EQ(parameter(root, "1", "K"), "40");
  EXPECT_EQ(parameter(root, "1", "kappa3"), "8");
  EXPECT_EQ(parameter(root, "1", "kappa1"), "9");
  EXPECT_EQ(parameter(root, "1", "C"), "1,2,3");
  EXPECT_EQ(parameter(root, "1", "UMat"), "law.f");
  EXPECT_EQ(parameter(root, "1", "IsotropicMaterialLaw"), "1");
  EXPECT_EQ(parameter(root, "1", "MaterialLaw"), "my");
  EXPECT_EQ(parameter(root, "1", "Precision"), "Double");
}

TEST(CffParameters, OnlyLinesOfExactlyTwoBlankSeparatedTokensCount) {
  const XmlNode root = translate(
      "\xEF\xBB\xBFType3 Isotropic\r\n"
      "Young3 210 GPa\n"       // three tokens: ignored, no error for the unit
      "Poisson3  0.3\n"        // two blanks make an empty token: ignored
      "Poisson3\t0.4\n"        // a tab is no separator: one token
      "Bogus\n"
      "\n"
      "Young3 70\r\n"
      "Young3 71\n"            // a later line wins
      "Young03 5\n");          // another entry that claims colour 3 as well
  ASSERT_EQ(root.childCount(), 2);
  EXPECT_EQ(readParameterText(root.child(0), "MaterNumber", ""), "3");
  EXPECT_EQ(readParameterText(root.child(0), "Type", ""), "LE");
  EXPECT_EQ(readParameterText(root.child(0), "MaterialParameters/E", ""), "71");
  EXPECT_EQ(readParameterText(root.child(0), "MaterialParameters/nu", "<absent>"), "<absent>");
  EXPECT_EQ(readParameterText(root.child(1), "MaterNumber", ""), "03");
  EXPECT_EQ(readParameterText(root.child(1), "MaterName", ""), "Material 03");
}

TEST(CffParameters, UnknownWordEndsTheRunButMaterialsLinesAreSkipped) {
  EXPECT_EQ(translate("Materials 4\nNumberOfMaterials 4\n").childCount(), 0);
  EXPECT_EXIT(translate("Type0 Isotropic\nDensity0 7.8\n"), ::testing::ExitedWithCode(1),
              "unknown parameter in cff-File: Density0");
  // A values line without its names line is just an unknown word.
  EXPECT_EXIT(translate("ParametersValues0 1,2\n"), ::testing::ExitedWithCode(1),
              "unknown parameter in cff-File: ParametersValues0");
}

TEST(CffPairs, NamesAndValuesAreJoinedPairwise) {
  const XmlNode root = translate(
      "Type2 UMAT\n"
      "ParametersNames2 E,nu,sigma0\n"
      "ParametersValues2 210,0.3,0.5\n"
      "InternalNames2 eps_p\n"
      "InternalValues2 0\n"
      "UMATFile2 plastic.f\n");
  EXPECT_EQ(parameter(root, "2", "Parameters"), "E,210;nu,0.3;sigma0,0.5");
  EXPECT_EQ(parameter(root, "2", "InternalVariables"), "eps_p,0");
  EXPECT_EQ(parameter(root, "2", "UMat"), "plastic.f");
}

TEST(CffPairs, BrokenPairsEndTheRun) {
  EXPECT_EXIT(translate("ParametersNames0 a,b\nYoung0 1\n"), ::testing::ExitedWithCode(1),
              "Error in cff-File: The keyword ParametersNames is not followed by the keyword "
              "ParametersValues");
  EXPECT_EXIT(translate("ParametersNames0 a,b\n"), ::testing::ExitedWithCode(1),
              "The keyword ParametersNames is not followed by the keyword ParametersValues");
  EXPECT_EXIT(translate("ParametersNames0 a,b\nParametersValues0 1\n"),
              ::testing::ExitedWithCode(1),
              "Error in cff-File: The number of ParametersNames and ParametersValues do not "
              "coincide\\.");
  EXPECT_EXIT(translate("InternalNames0 a\nParametersValues0 1\n"), ::testing::ExitedWithCode(1),
              "Error in cff-File: The keyword InternalNames is not followed by the keyword "
              "InternalValues");
  EXPECT_EXIT(translate("InternalNames0 a,b,c\nInternalValues0 1,2\n"),
              ::testing::ExitedWithCode(1),
              "Error in cff-File: The number of InternalNames and InternalValues do not "
              "coincide\\.");
}

TEST(CffFile, MissingFileEndsTheRun) {
  const std::string path = ::testing::TempDir() + "gridmoor_no_such_material.cff";
  EXPECT_EXIT(translateCffFile(path), ::testing::ExitedWithCode(1), "no_such_material.cff can not be opened");
  EXPECT_EXIT(translateCffFile(::testing::TempDir()), ::testing::ExitedWithCode(1),
              "can not be opened");
}

}  // namespace
}  // namespace gridmoor
