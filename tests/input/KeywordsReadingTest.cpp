#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "input/KeywordsElasticity.h"
#include "input/Parameter.h"
#include "KeywordsTestTree.h"

namespace gridmoor {
namespace {

using ::testing::ElementsAreArray;
using ::testing::UnorderedElementsAreArray;
using testing::completePathTree;
using testing::linesOf;
using testing::setKey;

TEST(KeywordsReading, TextComesFromTheNodeOrItsValueChildren) {
  XmlNode root = XmlNode::createRoot("Settings");
  XmlNode plain = root.getChildByPath("input/Plain", true);
  plain.addText("plain");
  plain.addText("second");
  XmlNode listed = root.getChildByPath("input/Listed", true);
  listed.addChild("value").addText("first");
  listed.addChild("comment").addText("ignored");
  listed.addChild("values").addText("last");
  listed.addChild("value");  // holds no text, so it does not clear the result
  XmlNode foreign = root.getChildByPath("input/Foreign", true);
  foreign.addChild("entry").addText("7");

  EXPECT_EQ(readParameterText(root, "input/Plain", "default"), "plain");
  EXPECT_EQ(readParameterText(root, "input/Listed", "default"), "last");
  // Other children make the node read as empty, not as its default.
  EXPECT_EQ(readParameterText(root, "input/Foreign", "default"), "");
  EXPECT_EQ(readParameterText(root, "input/Absent", "default"), "default");
  // A node without text is empty too.
  root.getChildByPath("input/Bare", true);
  EXPECT_EQ(readParameterText(root, "input/Bare", "default"), "");
}

TEST(KeywordsReading, NodeWithForeignChildrenOverridesTheDefaultOfATypedSetting) {
  XmlNode root = completePathTree();
  root.getChildByPath("input/Solution/maxIterNR", true).addChild("entry").addText("5");
  root.getChildByPath("input/Mesh/ResamplingMode", true).addChild("entry").addText("x");
  ::testing::internal::CaptureStderr();
  KeywordsElasticity kw(root);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(kw.maxIterNR(), 0);  // default "1" would give 1
  EXPECT_EQ(kw.resamplingMode(), "");
}

// Every setting without a default, written out here independently of the declarations.
const std::vector<std::string> kRequiredPathKeys = {
    "input/Mesh/ResolutionX",           "input/Mesh/ResolutionY",
    "input/Mesh/ResolutionZ",           "input/Mesh/InputLdtFile",
    "input/Mesh/BoxelUnits",            "input/MaterialData/EModulUnit",
    "input/Solution/Noisy",             "input/Solution/IterativeMethod",
    "input/Solution/GreenOperator",     "input/Solution/maxIter",
    "input/Solution/maxRunTime",        "input/Solution/ConvergenceCriterion",
    "input/Solution/EstimateMemory",    "Postprocessing/WriteEffectiveMatrix",
    "Postprocessing/EffectiveMatrixFilename", "Postprocessing/SaveRestartFile",
    "Postprocessing/StressComponents",  "Postprocessing/StrainComponents",
    "Postprocessing/DisplacementComponents", "Postprocessing/EquivalencePrinciple",
    "Postprocessing/ComputeLoadCaseList"};

std::vector<std::string> problemLines(const std::vector<std::string>& keys) {
  std::vector<std::string> lines;
  for (const std::string& key : keys) lines.push_back("Problem reading the parameter " + key);
  return lines;
}

TEST(KeywordsReading, EmptyTreeReportsEveryRequiredKeyOnceAndAppliesDefaults) {
  ::testing::internal::CaptureStderr();
  KeywordsElasticity kw(XmlNode::createRoot("Settings"));
  const std::vector<std::string> lines = linesOf(::testing::internal::GetCapturedStderr());
  EXPECT_THAT(lines, UnorderedElementsAreArray(problemLines(kRequiredPathKeys)));

  // Missing required settings read as empty.
  EXPECT_EQ(kw.maxIter(), 0);
  EXPECT_EQ(kw.inputLdtFile(), "");
  EXPECT_TRUE(kw.stressComponents().empty());
  // Defaults pass through the same parsing as file values.
  EXPECT_TRUE(kw.changeResolution());
  EXPECT_FALSE(kw.linearizeWithNR());
  EXPECT_EQ(kw.restartMaxIter(), 100);
  EXPECT_DOUBLE_EQ(kw.beta(), -2.0);
  EXPECT_EQ(kw.filter(), FilterType::None);
  EXPECT_EQ(kw.finiteDifference(), GreenOperatorType::StaggeredGrid);
  EXPECT_EQ(kw.extrapolation(), ExtrapolationType::MemoryEfficient);
  EXPECT_EQ(kw.timeStepType(), TimeStepType::None);
  EXPECT_EQ(kw.coordinateSystem(), (DoubleList{1, 0, 0, 0, 1, 0, 0, 0, 1}));
  EXPECT_EQ(kw.macroscopicDeformationGradientFirstPK(), (DoubleList{1, 0, 0, 0, 1, 0, 0, 0, 1}));
  EXPECT_EQ(kw.macroscopicTemperatureChangeValues(), (Table{{0.0, 0.0}, {1.0, 0.0}}));
  EXPECT_EQ(kw.displacementCalibrationVoxel(), (IntList{0, 0, 0}));
  EXPECT_EQ(kw.strainList(), (WordList{"1", "2", "3", "4", "5", "6"}));
  EXPECT_DOUBLE_EQ(kw.macroscopicTemperatureChangeIncrement(), 1.0);
  EXPECT_EQ(kw.symmetryOrVolumePreserving(), "Volume");
}

TEST(KeywordsReading, CompleteTreeReportsNothingAndValuesReachTheirMembers) {
  XmlNode root = completePathTree();
  setKey(root, "input/Solution/nThreads", "4");
  setKey(root, "input/Solution/ConvergenceCriterion", "1e-5");
  setKey(root, "input/Solution/TimeSteps", "0,0.5,1");
  setKey(root, "input/Solution/MacroscopicStrainValues", "0,0,0,0,0,0,0;1,0.01,0,0,0,0,0");
  ::testing::internal::CaptureStderr();
  KeywordsElasticity kw(root);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(kw.nThreads(), 4);
  EXPECT_EQ(kw.nThreads.key, "input/Solution/nThreads");
  EXPECT_DOUBLE_EQ(kw.convergenceCriterion(), 1e-5);
  EXPECT_EQ(kw.timeSteps(), (DoubleList{0, 0.5, 1}));
  ASSERT_EQ(kw.macroscopicStrainValues().size(), 2u);
  EXPECT_DOUBLE_EQ(kw.macroscopicStrainValues()[1][1], 0.01);
}

TEST(KeywordsReading, DiscretizedGreenOperatorTakesTheFiniteDifferenceWord) {
  XmlNode root = completePathTree();
  setKey(root, "input/Solution/GreenOperator", "Discretized");
  KeywordsElasticity byDefault(root);
  EXPECT_EQ(byDefault.greenOperator(), GreenOperatorType::StaggeredGrid);

  setKey(root, "input/Solution/FiniteDifference", "Q1FE");
  KeywordsElasticity byWord(root);
  EXPECT_EQ(byWord.greenOperator(), GreenOperatorType::Q1FE);

  XmlNode twice = completePathTree();
  setKey(twice, "input/Solution/GreenOperator", "Discretized");
  setKey(twice, "input/Solution/FiniteDifference", "Discretized");
  KeywordsElasticity circular(twice);
  // Neither word is in the table, so the operator keeps its starting value.
  EXPECT_EQ(circular.greenOperator(), GreenOperatorType::Basic);
  EXPECT_EQ(circular.finiteDifference(), GreenOperatorType::StaggeredGrid);
}

TEST(KeywordsReading, UnknownFilterWordKeepsTheDefaultSilently) {
  XmlNode root = completePathTree();
  setKey(root, "input/Solution/Filter", "Smooth");
  setKey(root, "input/Solution/Extrapolation", "Quadratic");
  ::testing::internal::CaptureStderr();
  KeywordsElasticity kw(root);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(kw.filter(), FilterType::None);
  EXPECT_EQ(kw.extrapolation(), ExtrapolationType::MemoryEfficient);
}

TEST(KeywordsReading, DriverCanChangeValuesAfterReading) {
  KeywordsElasticity kw(completePathTree());
  kw.linearizeWithNR.set(true);
  kw.maxIterNR.set(1);
  kw.timeStepType.set(TimeStepType::None);
  kw.macroscopicStrainStressType.set("Zero");
  kw.writeEffectiveMatrix.set(false);
  EXPECT_TRUE(kw.linearizeWithNR());
  EXPECT_EQ(kw.macroscopicStrainStressType(), "Zero");
  EXPECT_FALSE(kw.writeEffectiveMatrix());
}

TEST(KeywordsSchema, Version2014OrAbsentReadsThePathSchema) {
  for (const char* version : {"", "2014"}) {
    XmlNode root = completePathTree();
    if (*version) setKey(root, "Properties/Version", version);
    setKey(root, "input/Solution/TimeSteps", "0,1,2");
    setKey(root, "input/Load/TimeSteps", "0,5");
    KeywordsElasticity kw(root);
    EXPECT_EQ(kw.timeSteps(), (DoubleList{0, 1, 2})) << version;
  }
}

TEST(KeywordsSchema, OtherVersionMovesLoadKeysUnderInputLoad) {
  XmlNode root = completePathTree();
  setKey(root, "Properties/Version", "2015");
  setKey(root, "input/Solution/TimeSteps", "0,1,2");
  setKey(root, "input/Load/TimeSteps", "0,5");
  setKey(root, "input/Load/MacroscopicStressIncrement", "0.5");
  setKey(root, "input/Load/ExternalForce", "1");
  setKey(root, "input/Solution/SaveRestartFile", "restart.gmr");
  for (const char* key : {"input/Load/WriteEffectiveMatrix", "input/Load/ComputeLoadCaseList",
                          "input/Load/EquivalencePrinciple"}) {
    setKey(root, key, "1");
  }
  ::testing::internal::CaptureStderr();
  KeywordsElasticity kw(root);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(kw.timeSteps(), (DoubleList{0, 5}));
  EXPECT_DOUBLE_EQ(kw.macroscopicStressIncrement(), 0.5);
  EXPECT_TRUE(kw.externalForce());
  EXPECT_EQ(kw.saveRestartFile(), "restart.gmr");
  EXPECT_EQ(kw.macroscopicEigenstrainValues.key, "input/Load/MacroscopicEigenstrainValues");
  EXPECT_EQ(kw.typeOfDeformation.key, "input/Load/TypeOfDeformation");
  // Keys outside the load group stay where they were.
  EXPECT_EQ(kw.maxIter.key, "input/Solution/maxIter");
  EXPECT_EQ(kw.externalForceFile.key, "input/Load/ExternalForceFile");
  EXPECT_EQ(kw.stressComponents.key, "Postprocessing/StressComponents");
}

struct FormulationCase {
  const char* deformation;
  const char* unknown;
  const char* loadType;
  const char* word;
};

TEST(KeywordsFormulation, WordFollowsDeformationUnknownAndLoadType) {
  const FormulationCase cases[] = {
      {"Large", "Stress", "Eigenstrain", "DeformationGradient"},
      {"Small", "Strain", "Eigenstrain", "Strain"},
      {"Small", "Stress", "Polarization", "Stress"},
      {"Small", "PolarizationEigenstrain", "Polarization", "Polarization"},
      {"Small", "PolarizationEigenstrain", "Strain", "Polarization"},
      {"Small", "PolarizationEigenstrain", "Eigenstrain", "Eigenstrain"},
      {"Small", "PolarizationEigenstrain", "Stress", "Eigenstrain"}};
  for (const FormulationCase& c : cases) {
    KeywordsElasticity kw;
    kw.typeOfDeformation.set(c.deformation);
    kw.primaryUnknown.set(c.unknown);
    kw.typeOfMacroscopicLoadPolarizationEigenstrain.set(c.loadType);
    EXPECT_EQ(kw.problemFormulation(), c.word) << c.deformation << ' ' << c.unknown << ' '
                                               << c.loadType;
  }
}

TEST(KeywordsFormulationDeathTest, UndeterminedFormulationEndsTheRun) {
  KeywordsElasticity unknownWord;
  unknownWord.primaryUnknown.set("Displacement");
  EXPECT_EXIT(unknownWord.problemFormulation(), ::testing::ExitedWithCode(1),
              "^Problem formulation can not be determined!\n$");
  KeywordsElasticity mixedLoad;
  mixedLoad.primaryUnknown.set("PolarizationEigenstrain");
  mixedLoad.typeOfMacroscopicLoadPolarizationEigenstrain.set("Mixed");
  EXPECT_EXIT(mixedLoad.problemFormulation(), ::testing::ExitedWithCode(1),
              "Problem formulation can not be determined!");
}

}  // namespace
}  // namespace gridmoor
