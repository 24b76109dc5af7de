#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "input/Parameter.h"
#include "materials/MaterialFileParser.h"

namespace gridmoor {
namespace {

class MaterialFactorySource : public ::testing::Test {
 protected:
  // A fresh directory for each test, with a trailing separator.
  void SetUp() override {
    dir = ::testing::TempDir() + "gridmoor_source_" +
          ::testing::UnitTest::GetInstance()->current_test_info()->name() + "/";
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
  }
  void write(const std::string& name, const std::string& text) {
    std::ofstream(dir + name, std::ios::binary) << text;
  }
  static XmlNode settings(const std::string& materialData) {
    return XmlNode::parseString("<Settings><input><MaterialData>" + materialData +
                                "</MaterialData></input></Settings>");
  }
  static std::string number(const XmlNode& entry) {
    return readParameterText(entry, "MaterNumber", "");
  }
  std::string dir;
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
      dir + "run.xml", table);
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
      settings("<MaterParamFile>" + dir + "block.xml</MaterParamFile>"), "x/run.xml", table);
  EXPECT_EQ(block.materialFile, dir + "block.xml");
  ASSERT_EQ(block.entries.size(), 1u);
  EXPECT_EQ(number(block.entries[0]), "7");
  // Neither entries nor a name: the directory alone is no material file.
  EXPECT_EXIT(readMaterialSource(settings(""), dir + "run.xml", table),
              ::testing::ExitedWithCode(1), "^Material parameter file .* does not exist!");
}

TEST_F(MaterialFactorySource, LineInputReadsOnlyTheCffFile) {
  write("mat.cff", "Type5 IsotropicTE\nAlpha5 2e-5\n");
  XmlNode tree = XmlNode::createRoot("gridmoor");
  tree.getChildByPath("input/MaterParamValues/MaterParamFile", true).addText("mat.cff");
  tree.getChildByPath("input/FortranCompiler", true).addText("ifort");
  tree.getChildByPath("input/MaterialData/Material/MaterNumber", true).addText("1");
  const MaterialSource source = readMaterialSource(tree, dir + "run.pde", table);
  EXPECT_EQ(source.materialFile, dir + "mat.cff");
  EXPECT_EQ(source.fortranCompiler, "ifort");
  ASSERT_EQ(source.entries.size(), 1u);
  EXPECT_EQ(number(source.entries[0]), "5");
  EXPECT_EQ(readParameterText(source.entries[0], "Type", ""), "LETE");
}

}  // namespace
}  // namespace gridmoor
