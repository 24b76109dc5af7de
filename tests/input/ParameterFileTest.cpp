#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include <unistd.h>

#include "input/KeyWordsLattora.h"
#include "input/ParameterFile.h"

namespace gridmoor {
namespace {

namespace fs = std::filesystem;

// A file in a directory of its own, removed with the fixture.
class ParameterFile : public ::testing::Test {
 protected:
  void SetUp() override {
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    dir_ = fs::temp_directory_path() /
           ("gridmoor_parameterfile_" + std::string(info->name()) + "_" +
            std::to_string(::getpid()));
    fs::create_directories(dir_);
  }
  void TearDown() override { fs::remove_all(dir_); }

  std::string write(const std::string& name, const std::string& content) {
    const fs::path path = dir_ / name;
    std::ofstream(path, std::ios::binary) << content;
    return path.string();
  }

  fs::path dir_;
};

std::string textAt(const XmlNode& tree, const std::string& key) {
  return readParameterText(tree, key, "<absent>");
}

TEST_F(ParameterFile, PdeLinesWithExactlyTwoTokensBecomeSettings) {
  const std::string path = write("run.pde",
                                 "input:Solution:maxIter 100\n"
                                 "input:Solution:maxRunTime 100 # comment\n"
                                 "# input:Solution:nThreads 2\n"
                                 "input:Solution:IterativeMethod\tCG\r\n"
                                 "  input:NumberOfThreads   3  \r\n"
                                 "input:MacroscopicLoad 0.1, 0, 0, 0, 0, 0\n"
                                 "input:StrainList XX,YY;ZZ\n"
                                 "lonely\n"
                                 "\n"
                                 "input:Solution:maxIter 250\n");
  const XmlNode tree = readParameterTree(path);
  ASSERT_TRUE(tree);
  EXPECT_EQ(tree.name(), "gridmoor");
  EXPECT_EQ(textAt(tree, "input/Solution/maxIter"), "250");  // the later line wins
  EXPECT_EQ(textAt(tree, "input/Solution/maxRunTime"), "<absent>");
  EXPECT_EQ(textAt(tree, "input/Solution/nThreads"), "<absent>");
  EXPECT_EQ(textAt(tree, "input/Solution/IterativeMethod"), "CG");
  EXPECT_EQ(textAt(tree, "input/NumberOfThreads"), "3");
  // A blank inside the value makes more than two tokens: the line does not count.
  EXPECT_EQ(textAt(tree, "input/MacroscopicLoad"), "<absent>");
  EXPECT_EQ(textAt(tree, "input/StrainList"), "XX,YY;ZZ");
  EXPECT_EQ(textAt(tree, "lonely"), "<absent>");
}

TEST_F(ParameterFile, PdeFileFeedsTheFlatStore) {
  const std::string path = write("flat.pde",
                                 "\xEF\xBB\xBFinput:NumberOfThreads 2\n"
                                 "input:Scheme Discretized\n"
                                 "input:Solution:FiniteDifference Hex8RHourGlassControl\n"
                                 "input:MethodList Voigt,Reuss\n"
                                 "output:Verbose True\n");
  ::testing::internal::CaptureStderr();
  KeyWordsLattora kw(readParameterTree(path));
  const std::string errors = ::testing::internal::GetCapturedStderr();
  EXPECT_EQ(kw.nThreads(), 2);
  EXPECT_EQ(kw.greenOperator(), GreenOperatorType::Hex8RHourGlassControl);
  EXPECT_TRUE(kw.noisy());
  EXPECT_FALSE(kw.useSolver());
  EXPECT_TRUE(kw.useVoigt());
  EXPECT_EQ(errors.find("input/NumberOfThreads"), std::string::npos);
  EXPECT_NE(errors.find("Problem reading the parameter input/LicenseFileName\n"),
            std::string::npos);
}

TEST_F(ParameterFile, XmlDocumentElementIsTheRoot) {
  const std::string path = write("run.xml",
                                 "<?xml version=\"1.0\"?>\n"
                                 "<Settings><input><NumberOfThreads>3</NumberOfThreads>"
                                 "<MethodList><value>CEL</value></MethodList></input></Settings>\n");
  const XmlNode tree = readParameterTree(path);
  ASSERT_TRUE(tree);
  EXPECT_EQ(tree.name(), "Settings");
  EXPECT_EQ(textAt(tree, "input/NumberOfThreads"), "3");
  EXPECT_EQ(textAt(tree, "input/MethodList"), "CEL");
}

TEST_F(ParameterFile, OtherExtensionGivesAnEmptyTreeAndEveryRequiredKeyReportsItself) {
  const std::string path = write("run.txt", "input:NumberOfThreads 2\n");
  const XmlNode tree = readParameterTree(path);
  ASSERT_TRUE(tree);
  EXPECT_EQ(tree.childCount(), 0);
  ::testing::internal::CaptureStderr();
  KeyWordsLattora kw(tree);
  const std::string errors = ::testing::internal::GetCapturedStderr();
  EXPECT_EQ(kw.nThreads(), 0);
  EXPECT_NE(errors.find("Problem reading the parameter input/MethodList\n"), std::string::npos);
}

TEST_F(ParameterFile, UnopenablePdeFileEndsTheRun) {
  const std::string path = (dir_ / "missing.pde").string();
  EXPECT_EXIT(readParameterTree(path), ::testing::ExitedWithCode(1),
              "^" + path + " can not be opened\n$");
}

}  // namespace
}  // namespace gridmoor
