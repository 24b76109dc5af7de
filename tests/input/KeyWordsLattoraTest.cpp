#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "input/KeyWordsLattora.h"
#include "KeywordsTestTree.h"

namespace gridmoor {
namespace {

using ::testing::UnorderedElementsAreArray;
using testing::linesOf;
using testing::setKey;

const char* const kRequiredFlatKeys[] = {
    "input/BoxelLengthX",       "input/BoxelLengthY",
    "input/BoxelLengthZ",       "input/GeometryDescriptionFile",
    "input/BoxelUnits",         "input/MaterParamValues/EModulUnit",
    "output/Verbose",           "input/IterativeMethod",
    "input/Scheme",             "input/MaxIterationNumber",
    "input/MaxRunTime",         "input/StoppingTolerance",
    "input/EstimateMemory",     "output/WriteEffectiveMatrix",
    "output/EffectiveMatrixFileName", "output/SaveRestartFile",
    "output/StressComponents",  "output/StrainComponents",
    "output/DisplacementComponents", "output/EquivalencePrinciple",
    "output/ComputeLoadCaseList", "input/LicenseFileName",
    "output/WriteSolutionVtk",  "output/WriteDasFile",
    "input/MethodList"};

XmlNode completeFlatTree() {
  XmlNode root = XmlNode::createRoot("Settings");
  for (const char* key : kRequiredFlatKeys) setKey(root, key, "1");
  return root;
}

TEST(KeywordsLattora, EmptyTreeReportsEveryRequiredFlatKey) {
  std::vector<std::string> expected;
  for (const char* key : kRequiredFlatKeys) {
    expected.push_back(std::string("Problem reading the parameter ") + key);
  }
  ::testing::internal::CaptureStderr();
  KeyWordsLattora kw(XmlNode::createRoot("gridmoor"));
  EXPECT_THAT(linesOf(::testing::internal::GetCapturedStderr()),
              UnorderedElementsAreArray(expected));
}

TEST(KeywordsLattora, ConstructorWithoutTreeSetsFlatKeysOnly) {
  KeyWordsLattora kw;
  EXPECT_EQ(kw.nThreads.key, "input/NumberOfThreads");
  EXPECT_EQ(kw.greenOperator.key, "input/Scheme");
  EXPECT_EQ(kw.macroscopicStrainValues.key, "input/MacroscopicLoad");
  EXPECT_EQ(kw.typeOfMacroscopicLoadDeformationGradient.key, "input/ProblemFormulation");
  // Settings without a flat spelling keep their path text, including the polarization load.
  EXPECT_EQ(kw.linearizeWithNR.key, "input/Solution/linearizeWithNR");
  EXPECT_EQ(kw.macroscopicPolarization.key, "input/Solution/MacroscopicPolarization");
  EXPECT_EQ(kw.macroscopicEigenstrainIncrement.key,
            "input/Solution/MacroscopicEigenstrainIncrement");
  EXPECT_EQ(kw.nThreads(), 0);
  // No tree is read, so a later read with the flat keys works.
  XmlNode root = completeFlatTree();
  setKey(root, "input/NumberOfThreads", "3");
  kw.readParameters(root);
  EXPECT_EQ(kw.nThreads(), 3);
}

TEST(KeywordsLattora, SharedFlatKeysFillEveryMemberByItsOwnType) {
  XmlNode root = completeFlatTree();
  setKey(root, "input/MacroscopicLoad", "0.1,0,0,0,0,0");
  setKey(root, "input/ProblemFormulation", "Stress");
  setKey(root, "input/MacroscopicTemperatureChange", "25");
  setKey(root, "input/Solution/MacroscopicPolarization", "0,0,0,0,0,2");
  ::testing::internal::CaptureStderr();
  KeyWordsLattora kw(root);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
  const DoubleList load{0.1, 0, 0, 0, 0, 0};
  EXPECT_EQ(kw.macroscopicStrain(), load);
  EXPECT_EQ(kw.macroscopicStress(), load);
  EXPECT_EQ(kw.macroscopicStrainStress(), load);
  EXPECT_EQ(kw.macroscopicFirstPK(), load);
  EXPECT_EQ(kw.macroscopicStrainValues(), Table{load});
  EXPECT_EQ(kw.macroscopicPolarization(), (DoubleList{0, 0, 0, 0, 0, 2}));
  EXPECT_EQ(kw.typeOfMacroscopicLoadStrainStress(), "Stress");
  EXPECT_EQ(kw.typeOfMacroscopicLoadPolarizationEigenstrain(), "Stress");
  EXPECT_EQ(kw.typeOfMacroscopicLoadDeformationGradient(), "Stress");
  EXPECT_DOUBLE_EQ(kw.macroscopicTemperatureChange(), 25.0);
  EXPECT_EQ(kw.macroscopicTemperatureChangeValues(), (Table{{25.0}}));
}

TEST(KeywordsLattora, RenamedSettingsIgnoreTheirPathSpelling) {
  XmlNode root = completeFlatTree();
  setKey(root, "input/Solution/nThreads", "7");
  setKey(root, "input/Solution/linearizeWithNR", "1");
  KeyWordsLattora kw(root);
  EXPECT_EQ(kw.nThreads(), 0);
  EXPECT_TRUE(kw.linearizeWithNR());
}

TEST(KeywordsLattora, MethodListSetsTheSolverAndBoundFlags) {
  struct Case {
    const char* methods;
    bool solver, voigt, reuss;
  };
  for (const Case& c : {Case{"Voigt,Reuss", false, true, true}, Case{"CEL", true, false, false},
                        Case{"CEL;Reuss", true, false, true}, Case{"CELL Voigts", false, false, false}}) {
    XmlNode root = completeFlatTree();
    setKey(root, "input/MethodList", c.methods);
    setKey(root, "Postprocessing/VoigtReussBounds", "1");
    KeyWordsLattora kw(root);
    EXPECT_EQ(kw.useSolver(), c.solver) << c.methods;
    EXPECT_EQ(kw.useVoigt(), c.voigt) << c.methods;
    EXPECT_EQ(kw.useReuss(), c.reuss) << c.methods;
    EXPECT_EQ(kw.computeVoigtReussBounds(), c.voigt || c.reuss) << c.methods;
  }
  XmlNode root = completeFlatTree();
  setKey(root, "input/MethodList", "Voigt");
  KeyWordsLattora withoutSwitch(root);
  EXPECT_FALSE(withoutSwitch.computeVoigtReussBounds());
}

TEST(KeywordsLattora, OutputSwitchesComeFromTheirOwnKeys) {
  XmlNode root = completeFlatTree();
  setKey(root, "output/WriteSolutionVtk", "True");
  setKey(root, "output/WriteDasFile", "0");
  setKey(root, "output/SolutionOutputFile", "result.das");
  KeyWordsLattora kw(root);
  EXPECT_TRUE(kw.writeVtkOutput());
  EXPECT_FALSE(kw.writeDasOutput());  // a file name alone does not switch the output on
  const KeywordsElasticity& base = kw;
  EXPECT_FALSE(base.writeDasOutput());
}

TEST(KeywordsPrint, BlocksInOrderWithKeyValueLines) {
  XmlNode root = completeFlatTree();
  setKey(root, "input/NumberOfThreads", "4");
  setKey(root, "input/Scheme", "Discretized");
  setKey(root, "output/StressComponents", "XX;YY ZZ");
  setKey(root, "input/MacroscopicLoad", "0,0;1,0.5");
  setKey(root, "input/MethodList", "CEL,Voigt");
  KeyWordsLattora kw(root);
  std::ostringstream out;
  kw.printParameters(out);
  const std::vector<std::string> lines = linesOf(out.str());

  const std::string headings[] = {"                 Mesh parameters ",
                                  "                 End mesh parameters ",
                                  "                 Solution parameters ",
                                  "                 End solution parameters ",
                                  "                 Postprocessing parameters ",
                                  "                 End postprocessing parameters ",
                                  "                 Elastictiy parameters ",
                                  "                 End Elastictiy parameters ",
                                  "                 Lattora parameters ",
                                  "                 End Lattora parameters "};
  std::vector<std::size_t> at;
  for (const std::string& heading : headings) {
    const auto it = std::find(lines.begin(), lines.end(), heading);
    ASSERT_NE(it, lines.end()) << heading;
    at.push_back(static_cast<std::size_t>(it - lines.begin()));
  }
  EXPECT_TRUE(std::is_sorted(at.begin(), at.end()));
  for (std::size_t block = 0; block < 5; ++block) {
    EXPECT_EQ(lines[at[2 * block] - 1], "") << headings[2 * block];  // blank line before
  }
  auto indexOf = [&](const std::string& line) {
    const auto it = std::find(lines.begin(), lines.end(), line);
    EXPECT_NE(it, lines.end()) << line;
    return static_cast<std::size_t>(it - lines.begin());
  };
  const std::size_t threads = indexOf("input/NumberOfThreads 4");
  EXPECT_GT(threads, at[2]);
  EXPECT_LT(threads, at[3]);
  const std::size_t scheme = indexOf("input/Scheme StaggeredGrid");
  EXPECT_GT(scheme, at[2]);
  EXPECT_LT(scheme, at[3]);
  const std::size_t ldt = indexOf("input/GeometryDescriptionFile 1");
  EXPECT_GT(ldt, at[0]);
  EXPECT_LT(ldt, at[1]);
  const std::size_t components = indexOf("output/StressComponents XX,YY,ZZ");
  EXPECT_GT(components, at[6]);
  EXPECT_LT(components, at[7]);
  indexOf("input/Filter None");
  indexOf("input/Solution/linearizeWithNR 0");
  indexOf("input/MacroscopicLoad 0,0;1,0.5");
  const std::size_t methods = indexOf("input/MethodList CEL,Voigt");
  EXPECT_GT(methods, at[8]);
  EXPECT_LT(methods, at[9]);
  EXPECT_EQ(lines.back(), headings[9]);
}

TEST(KeywordsPrint, NoArgumentFormWritesToStandardOutput) {
  KeywordsElasticity kw;
  kw.filter.set(static_cast<FilterType>(5));
  ::testing::internal::CaptureStdout();
  kw.printParameters();
  const std::string out = ::testing::internal::GetCapturedStdout();
  EXPECT_NE(out.find("\n                 Mesh parameters \n"), std::string::npos);
  EXPECT_NE(out.find("\ninput/Solution/Filter unset\n"), std::string::npos);
  EXPECT_NE(out.find("                 End Elastictiy parameters \n"), std::string::npos);
  EXPECT_EQ(out.find("Lattora"), std::string::npos);
}

}  // namespace
}  // namespace gridmoor
