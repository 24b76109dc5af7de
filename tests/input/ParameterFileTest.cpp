#include <gtest/gtest.h>

#include <fstream>

#include "input/Parameter.h"
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
  // A byte order mark before the first key is not part of it.
  const std::string path = writeFile("pde",
                                 "\xEF\xBB\xBFinput:Solution:Noisy 1\n"
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
  EXPECT_EQ(textAt(tree, "input/Solution/Noisy"), "1");
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

}  // namespace
}  // namespace gridmoor
