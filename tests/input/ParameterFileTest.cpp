#include <gtest/gtest.h>

#include <fstream>

#include "input/KeyWordsLattora.h"
#include "input/ParameterFile.h"

namespace gridmoor {
namespace {

// Writes a file named after the running test, so that parallel test processes do not meet.
std::string writeFile(const std::string& extension, const std::string& content) {
  const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
  const std::string path = ::testing::TempDir() + "gridmoor_" + info->name() + "." + extension;
  std::ofstream(path, std::ios::binary) << content;
  return path;
}

std::string textAt(const XmlNode& tree, const std::string& key) {
  return readParameterText(tree, key, "<absent>");
}

TEST(ParameterFile, PdeLinesWithExactlyTwoTokensBecomeSettings) {
  const std::string path = writeFile("pde",
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

TEST(ParameterFile, PdeFileFeedsTheFlatStore) {
  const std::string path = writeFile("pde",
                                 "\xEF\xBB\xBFinput:NumberOfThreads 2\n"
                                 "input:Scheme Discretized\n"
                                 "input:Solution:FiniteDifference Hex8RHourGlassControl\n"
                                 "input:MethodList Voigt,Reuss\n");
  ::testing::internal::CaptureStderr();
  KeyWordsLattora kw(readParameterTree(path));
  EXPECT_EQ(::testing::internal::GetCapturedStderr().find("input/MethodList"), std::string::npos);
  EXPECT_EQ(kw.nThreads(), 2);
  EXPECT_EQ(kw.greenOperator(), GreenOperatorType::Hex8RHourGlassControl);
  EXPECT_FALSE(kw.useSolver());
}

TEST(ParameterFile, XmlDocumentElementIsTheRoot) {
  const std::string path = writeFile("xml",
                                 "<?xml version=\"1.0\"?>\n"
                                 "<Settings>\n  <input>\n    <NumberOfThreads>3</NumberOfThreads>\n"
                                 "    <MethodList>\n      <value>CEL</value>\n    </MethodList>\n"
                                 "  </input>\n</Settings>\n");
  const XmlNode tree = readParameterTree(path);
  ASSERT_TRUE(tree);
  EXPECT_EQ(tree.name(), "Settings");
  EXPECT_EQ(textAt(tree, "input/NumberOfThreads"), "3");
  EXPECT_EQ(textAt(tree, "input/MethodList"), "CEL");
}

TEST(ParameterFile, OtherExtensionGivesAnEmptyTree) {
  const XmlNode tree = readParameterTree(writeFile("txt", "input:NumberOfThreads 2\n"));
  ASSERT_TRUE(tree);
  EXPECT_EQ(tree.childCount(), 0);
}

TEST(ParameterFile, UnopenablePdeFileEndsTheRun) {
  const std::string path = ::testing::TempDir() + "gridmoor_absent_dir/missing.pde";
  EXPECT_EXIT(readParameterTree(path), ::testing::ExitedWithCode(1),
              "^" + path + " can not be opened\n$");
}

}  // namespace
}  // namespace gridmoor
