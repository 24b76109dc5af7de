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
}

}  // namespace
}  // namespace gridmoor
