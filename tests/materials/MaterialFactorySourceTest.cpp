#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "input/Parameter.h"
#include "materials/MaterialFileParser.h"

namespace gridmoor {
namespace {

// A fresh directory per test, with a trailing separator, for the parameter and material files.
std::string testDirectory() {
  const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
  const std::string dir =
      ::testing::TempDir() + "gridmoor_" + info->test_suite_name() + "_" + info->name() + "/";
  std::filesystem::remove_all(dir);
  std::filesystem::create_directories(dir);
  return dir;
}

void writeFile(const std::string& path, const std::string& content) {
  std::ofstream(path, std::ios::binary) << content;
}

XmlNode parse(const std::string& text) {
  XmlResults results;
  const XmlNode node = XmlNode::parseString(text, "", &results);
  EXPECT_EQ(results.error, eXMLErrorNone);
  return node;
}

const MaterialVector table;

std::string numberOf(const XmlNode& entry) { return readParameterText(entry, "MaterNumber", ""); }

TEST(MaterialFactorySource, InlineEntriesComeFirstAndInDocumentOrder) {
  const std::string dir = testDirectory();
  // The named file exists too, but inline entries win.
  writeFile(dir + "materials.xml", "<M><Material><MaterNumber>9</MaterNumber></Material></M>");
  const XmlNode tree = parse(
      "<Settings><input><MaterialData>"
      "<MaterParamFile>materials.xml</MaterParamFile>"
      "<FortranCompiler><value>gfortran</value></FortranCompiler>"
      "<FortranCompilerOptions>-O2</FortranCompilerOptions>"
      "<Material><MaterNumber>2</MaterNumber></Material>"
      "<EModulUnit>GPa</EModulUnit>"
      "<Material><MaterNumber>0</MaterNumber></Material>"
      "</MaterialData><FortranCompiler>ignored</FortranCompiler></input></Settings>");
  const MaterialSource source = readMaterialSource(tree, dir + "run.xml", table);
  ASSERT_EQ(source.entries.size(), 2u);
  EXPECT_EQ(numberOf(source.entries[0]), "2");
  EXPECT_EQ(numberOf(source.entries[1]), "0");
  EXPECT_EQ(source.materialFile, "");
  EXPECT_EQ(source.directory, dir);
  EXPECT_EQ(source.fortranCompiler, "gfortran");
  EXPECT_EQ(source.fortranCompilerOptions, "-O2");
}

TEST(MaterialFactorySource, SeparateFileIsTakenRelativeToTheParameterFile) {
  const std::string dir = testDirectory();
  std::filesystem::create_directories(dir + "data");
  writeFile(dir + "data/materials.xml",
            "<?xml version=\"1.0\"?>\n<Materials>\n"
            "  <Material><MaterNumber>1</MaterNumber><Type>LE</Type></Material>\n"
            "  <Material><MaterNumber>4</MaterNumber></Material>\n</Materials>\n");
  // A copy of a parameter file's material block is read as well.
  writeFile(dir + "block.xml",
            "<Settings><input><MaterialData><Material><MaterNumber>7</MaterNumber></Material>"
            "</MaterialData></input></Settings>");
  const XmlNode tree = parse(
      "<Settings><input><MaterialData><MaterParamFile>data/materials.xml</MaterParamFile>"
      "</MaterialData></input></Settings>");
  const MaterialSource source = readMaterialSource(tree, dir + "run.xml", table);
  EXPECT_EQ(source.materialFile, dir + "data/materials.xml");
  ASSERT_EQ(source.entries.size(), 2u);
  EXPECT_EQ(numberOf(source.entries[0]), "1");
  EXPECT_EQ(numberOf(source.entries[1]), "4");

  const XmlNode blockTree = parse(
      "<Settings><input><MaterialData><MaterParamFile>" + dir +
      "block.xml</MaterParamFile></MaterialData></input></Settings>");
  const MaterialSource fromBlock = readMaterialSource(blockTree, "elsewhere/run.xml", table);
  EXPECT_EQ(fromBlock.materialFile, dir + "block.xml");  // absolute names stay as given
  ASSERT_EQ(fromBlock.entries.size(), 1u);
  EXPECT_EQ(numberOf(fromBlock.entries[0]), "7");
}

TEST(MaterialFactorySource, MissingMaterialFileEndsTheRun) {
  const std::string dir = testDirectory();
  const XmlNode named = parse(
      "<Settings><input><MaterialData><MaterParamFile>gone.xml</MaterParamFile>"
      "</MaterialData></input></Settings>");
  EXPECT_EXIT(readMaterialSource(named, dir + "run.xml", table), ::testing::ExitedWithCode(1),
              "^Material parameter file .*gone\\.xml does not exist!");
  // Neither entries nor a name: the directory alone is no material file.
  const XmlNode empty = parse("<Settings><input><MaterialData/></input></Settings>");
  EXPECT_EXIT(readMaterialSource(empty, dir + "run.xml", table), ::testing::ExitedWithCode(1),
              "^Material parameter file .* does not exist!");
}

TEST(MaterialFactorySource, PdeInputTranslatesTheCffFile) {
  const std::string dir = testDirectory();
  writeFile(dir + "mat.cff", "Materials 1\nType5 IsotropicTE\nYoung5 70\nAlpha5 2e-5\n");
  XmlNode tree = XmlNode::createRoot("gridmoor");
  tree.getChildByPath("input/MaterParamValues/MaterParamFile", true).addText("mat.cff");
  tree.getChildByPath("input/FortranCompiler", true).addText("ifort");
  tree.getChildByPath("input/MaterialData/Material/MaterNumber", true).addText("1");
  const MaterialSource source = readMaterialSource(tree, dir + "run.pde", table);
  EXPECT_EQ(source.materialFile, dir + "mat.cff");
  EXPECT_EQ(source.fortranCompiler, "ifort");
  // Only the .cff file counts for line input, never inline XML entries.
  ASSERT_EQ(source.entries.size(), 1u);
  EXPECT_EQ(numberOf(source.entries[0]), "5");
  EXPECT_EQ(readParameterText(source.entries[0], "Type", ""), "LETE");
  EXPECT_EQ(readParameterText(source.entries[0], "MaterialParameters/alpha", ""), "2e-5");

  XmlNode noFile = XmlNode::createRoot("gridmoor");
  noFile.getChildByPath("input/MaterParamValues/MaterParamFile", true).addText("other.cff");
  EXPECT_EXIT(readMaterialSource(noFile, dir + "run.pde", table), ::testing::ExitedWithCode(1),
              "other\\.cff can not be opened");
}

}  // namespace
}  // namespace gridmoor
