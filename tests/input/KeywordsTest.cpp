// The keyword store: required keys, both schemas, the parameter print, and the text forms of
// the values.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <sstream>

#include "input/KeyWordsLattora.h"
#include "input/Parameter.h"

namespace gridmoor {
namespace {

using ::testing::UnorderedElementsAreArray;

// Every setting without a default, written out independently of the declarations.
const std::vector<std::string> kRequiredPathKeys = {
    "input/Mesh/ResolutionX", "input/Mesh/ResolutionY", "input/Mesh/ResolutionZ",
    "input/Mesh/InputLdtFile", "input/Mesh/BoxelUnits", "input/MaterialData/EModulUnit",
    "input/Solution/Noisy", "input/Solution/IterativeMethod", "input/Solution/GreenOperator",
    "input/Solution/maxIter", "input/Solution/maxRunTime", "input/Solution/ConvergenceCriterion",
    "input/Solution/EstimateMemory", "Postprocessing/WriteEffectiveMatrix",
    "Postprocessing/EffectiveMatrixFilename", "Postprocessing/SaveRestartFile",
    "Postprocessing/StressComponents", "Postprocessing/StrainComponents",
    "Postprocessing/DisplacementComponents", "Postprocessing/EquivalencePrinciple",
    "Postprocessing/ComputeLoadCaseList"};
const std::vector<std::string> kRequiredFlatKeys = {
    "input/BoxelLengthX", "input/BoxelLengthY", "input/BoxelLengthZ",
    "input/GeometryDescriptionFile", "input/BoxelUnits", "input/MaterParamValues/EModulUnit",
    "output/Verbose", "input/IterativeMethod", "input/Scheme", "input/MaxIterationNumber",
    "input/MaxRunTime", "input/StoppingTolerance", "input/EstimateMemory",
    "output/WriteEffectiveMatrix", "output/EffectiveMatrixFileName", "output/SaveRestartFile",
    "output/StressComponents", "output/StrainComponents", "output/DisplacementComponents",
    "output/EquivalencePrinciple", "output/ComputeLoadCaseList", "input/LicenseFileName",
    "output/WriteSolutionVtk", "output/WriteDasFile", "input/MethodList"};

// The text goes first, where it is read, so a later call overrides an earlier one.
void setKey(XmlNode& root, const std::string& path, const std::string& text) {
  root.getChildByPath(path, true).addText(text, 0);
}

XmlNode treeWith(const std::vector<std::string>& keys) {
  XmlNode root = XmlNode::createRoot("Settings");
  for (const std::string& key : keys) setKey(root, key, "1");
  return root;
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

std::vector<std::string> problemLines(const std::vector<std::string>& keys) {
  std::vector<std::string> lines;
  for (const std::string& key : keys) lines.push_back("Problem reading the parameter " + key);
  return lines;
}

TEST(KeywordsReading, EmptyTreeReportsEveryRequiredKeyOnceAndKeepsDefaults) {
  ::testing::internal::CaptureStderr();
  KeywordsElasticity kw(XmlNode::createRoot("Settings"));
  EXPECT_THAT(linesOf(::testing::internal::GetCapturedStderr()),
              UnorderedElementsAreArray(problemLines(kRequiredPathKeys)));
  EXPECT_EQ(kw.maxIter(), 0);
  EXPECT_TRUE(kw.changeResolution());
  EXPECT_DOUBLE_EQ(kw.beta(), -2.0);
  EXPECT_EQ(kw.extrapolation(), ExtrapolationType::MemoryEfficient);
  EXPECT_EQ(kw.coordinateSystem(), (DoubleList{1, 0, 0, 0, 1, 0, 0, 0, 1}));
  EXPECT_EQ(kw.macroscopicTemperatureChangeValues(), (Table{{0.0, 0.0}, {1.0, 0.0}}));

  ::testing::internal::CaptureStderr();
  KeyWordsLattora flat(XmlNode::createRoot("gridmoor"));
  EXPECT_THAT(linesOf(::testing::internal::GetCapturedStderr()),
              UnorderedElementsAreArray(problemLines(kRequiredFlatKeys)));
}

TEST(KeywordsReading, DiscretizedGreenOperatorAndUnknownWords) {
  XmlNode root = treeWith(kRequiredPathKeys);
  setKey(root, "input/Solution/GreenOperator", "Discretized");
  setKey(root, "input/Solution/Filter", "Smooth");
  ::testing::internal::CaptureStderr();
  KeywordsElasticity byDefault(root);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");  // unknown words are silent
  EXPECT_EQ(byDefault.greenOperator(), GreenOperatorType::StaggeredGrid);
  EXPECT_EQ(byDefault.filter(), FilterType::None);

  setKey(root, "input/Solution/FiniteDifference", "Q1FE");
  EXPECT_EQ(KeywordsElasticity(root).greenOperator(), GreenOperatorType::Q1FE);
  setKey(root, "input/Solution/FiniteDifference", "Discretized");
  KeywordsElasticity twice(root);
  EXPECT_EQ(twice.greenOperator(), GreenOperatorType::Basic);  // keeps its starting value
  EXPECT_EQ(twice.finiteDifference(), GreenOperatorType::StaggeredGrid);
}

TEST(KeywordsSchema, VersionSelectsPathOrLoadSchema) {
  for (const char* version : {"", "2014", "2015"}) {
    XmlNode root = treeWith(kRequiredPathKeys);
    if (*version) setKey(root, "Properties/Version", version);
    setKey(root, "input/Solution/TimeSteps", "0,1,2");
    setKey(root, "input/Load/TimeSteps", "0,5");
    setKey(root, "input/Load/ExternalForce", "1");
    setKey(root, "input/Solution/SaveRestartFile", "restart.gmr");
    ::testing::internal::CaptureStderr();
    KeywordsElasticity kw(root);
    const bool load = std::string(version) == "2015";
    // The required load keys of the tree stand at their path places only.
    const std::vector<std::string> missing =
        problemLines({"input/Load/WriteEffectiveMatrix", "input/Load/ComputeLoadCaseList",
                      "input/Load/EquivalencePrinciple"});
    EXPECT_THAT(linesOf(::testing::internal::GetCapturedStderr()),
                UnorderedElementsAreArray(load ? missing : std::vector<std::string>{}));
    EXPECT_EQ(kw.timeSteps(), (load ? DoubleList{0, 5} : DoubleList{0, 1, 2})) << version;
    EXPECT_EQ(kw.externalForce(), load) << version;
    EXPECT_EQ(kw.saveRestartFile(), load ? "restart.gmr" : "1") << version;
    EXPECT_EQ(kw.macroscopicEigenstrainValues.key,
              load ? "input/Load/MacroscopicEigenstrainValues"
                   : "input/Solution/MacroscopicEigenstrainValues");
  }
}

TEST(KeywordsSchema, FlatSharedKeysFillEveryMemberByItsOwnType) {
  XmlNode root = treeWith(kRequiredFlatKeys);
  setKey(root, "input/MacroscopicLoad", "0.1,0,0,0,0,0");
  setKey(root, "input/ProblemFormulation", "Stress");
  setKey(root, "input/MacroscopicTemperatureChange", "25");
  setKey(root, "input/Solution/MacroscopicPolarization", "0,0,0,0,0,2");
  setKey(root, "input/Solution/nThreads", "7");  // path spelling of a renamed key
  KeyWordsLattora kw(root);
  const DoubleList load{0.1, 0, 0, 0, 0, 0};
  EXPECT_EQ(kw.macroscopicStrain(), load);
  EXPECT_EQ(kw.macroscopicStress(), load);
  EXPECT_EQ(kw.macroscopicStrainValues(), Table{load});
  EXPECT_EQ(kw.macroscopicPolarization(), (DoubleList{0, 0, 0, 0, 0, 2}));
  EXPECT_EQ(kw.typeOfMacroscopicLoadStrainStress(), "Stress");
  EXPECT_EQ(kw.typeOfMacroscopicLoadDeformationGradient(), "Stress");
  EXPECT_EQ(kw.macroscopicTemperatureChangeValues(), (Table{{25.0}}));
  EXPECT_EQ(kw.nThreads(), 0);

  KeyWordsLattora keysOnly;  // nothing read; a later read uses the flat keys
  setKey(root, "input/NumberOfThreads", "3");
  keysOnly.readParameters(root);
  EXPECT_EQ(keysOnly.nThreads(), 3);
}

TEST(KeywordsLattora, MethodListFlagsAndOutputSwitches) {
  struct Case {
    const char* methods;
    bool solver, voigt, reuss;
  };
  for (const Case& c : {Case{"Voigt,Reuss", false, true, true}, Case{"CEL", true, false, false},
                        Case{"CEL;Reuss", true, false, true}, Case{"CELL Voigts", false, false, false}}) {
    XmlNode root = treeWith(kRequiredFlatKeys);
    setKey(root, "input/MethodList", c.methods);
    setKey(root, "Postprocessing/VoigtReussBounds", "1");
    KeyWordsLattora kw(root);
    EXPECT_EQ(kw.useSolver(), c.solver) << c.methods;
    EXPECT_EQ(kw.useVoigt(), c.voigt) << c.methods;
    EXPECT_EQ(kw.useReuss(), c.reuss) << c.methods;
    EXPECT_EQ(kw.computeVoigtReussBounds(), c.voigt || c.reuss) << c.methods;
  }
  XmlNode root = treeWith(kRequiredFlatKeys);
  setKey(root, "input/MethodList", "Voigt");
  setKey(root, "output/WriteDasFile", "0");
  setKey(root, "output/SolutionOutputFile", "result.das");
  KeyWordsLattora kw(root);
  EXPECT_FALSE(kw.computeVoigtReussBounds());  // the bounds switch is off
  EXPECT_TRUE(kw.writeVtkOutput());
  EXPECT_FALSE(static_cast<const KeywordsElasticity&>(kw).writeDasOutput());
}

TEST(KeywordsFormulation, WordFollowsDeformationUnknownAndLoadType) {
  const std::array<const char*, 4> cases[] = {
      {"Large", "Stress", "Eigenstrain", "DeformationGradient"},
      {"Small", "Strain", "Eigenstrain", "Strain"},
      {"Small", "Stress", "Polarization", "Stress"},
      {"Small", "PolarizationEigenstrain", "Polarization", "Polarization"},
      {"Small", "PolarizationEigenstrain", "Strain", "Polarization"},
      {"Small", "PolarizationEigenstrain", "Eigenstrain", "Eigenstrain"},
      {"Small", "PolarizationEigenstrain", "Stress", "Eigenstrain"}};
  for (const auto& [deformation, unknown, loadType, word] : cases) {
    KeywordsElasticity kw;
    kw.typeOfDeformation.set(deformation);
    kw.primaryUnknown.set(unknown);
    kw.typeOfMacroscopicLoadPolarizationEigenstrain.set(loadType);
    EXPECT_EQ(kw.problemFormulation(), word) << unknown << ' ' << loadType;
  }
}

TEST(KeywordsFormulationDeathTest, UndeterminedFormulationEndsTheRun) {
  KeywordsElasticity kw;
  kw.primaryUnknown.set("PolarizationEigenstrain");
  kw.typeOfMacroscopicLoadPolarizationEigenstrain.set("Mixed");
  EXPECT_EXIT(kw.problemFormulation(), ::testing::ExitedWithCode(1),
              "^Problem formulation can not be determined!\n$");
}

TEST(KeywordsPrint, BlocksInOrderWithKeyValueLines) {
  XmlNode root = treeWith(kRequiredFlatKeys);
  setKey(root, "input/NumberOfThreads", "4");
  setKey(root, "input/Scheme", "Discretized");
  setKey(root, "output/StressComponents", "XX;YY ZZ");
  setKey(root, "input/MacroscopicLoad", "0,0;1,0.5");
  KeyWordsLattora kw(root);
  std::ostringstream out;
  kw.printParameters(out);
  // The frame lines, the blank line before each block, and the first line of each probed key:
  // the block that holds the key, and its value in the key's own text form.
  const std::vector<std::string> probes = {
      "input/GeometryDescriptionFile 1", "input/Scheme StaggeredGrid",
      "input/Solution/linearizeWithNR 0", "input/NumberOfThreads 4",
      "output/StressComponents XX,YY,ZZ", "input/MacroscopicLoad 0,0;1,0.5", "input/MethodList 1"};
  std::vector<std::string> skeleton;
  for (const std::string& line : linesOf(out.str()))
    if (line.empty() || line.ends_with(" parameters ") ||
        (std::count(probes.begin(), probes.end(), line) &&
         !std::count(skeleton.begin(), skeleton.end(), line)))
      skeleton.push_back(line);
  const std::string pad(17, ' ');
  EXPECT_EQ(skeleton,
            (std::vector<std::string>{
                "", pad + "Mesh parameters ", probes[0], pad + "End mesh parameters ",
                "", pad + "Solution parameters ", probes[1], probes[2], probes[3],
                pad + "End solution parameters ", "", pad + "Postprocessing parameters ",
                pad + "End postprocessing parameters ", "", pad + "Elastictiy parameters ",
                probes[4], probes[5], pad + "End Elastictiy parameters ", "",
                pad + "Lattora parameters ", probes[6], pad + "End Lattora parameters "}));
  EXPECT_TRUE(out.str().ends_with(pad + "End Lattora parameters \n"));
}

TEST(KeywordsParsing, ScalarsFollowAtoiAndAtof) {
  for (const char* text : {"true", "True", "1", "1.9", " 1"}) {
    bool value = false;
    parseValue(text, value);
    EXPECT_TRUE(value) << text;
  }
  for (const char* text : {"TRUE", "yes", "2", "0", "", "false"}) {
    bool value = true;
    parseValue(text, value);
    EXPECT_FALSE(value) << text;
  }
  int count = -1;
  parseValue("12abc", count);
  EXPECT_EQ(count, 12);
  double number = -1;
  parseValue("1e-3", number);
  EXPECT_DOUBLE_EQ(number, 1e-3);
  parseValue("abc", number);
  EXPECT_EQ(number, 0.0);
}

TEST(KeywordsParsing, ListsAndTablesDropEmptyTokens) {
  DoubleList numbers{9.0};
  parseValue("0.1, 0.2;;0.3\n-4,", numbers);
  EXPECT_EQ(numbers, (DoubleList{0.1, 0.2, 0.3, -4.0}));
  WordList words;
  parseValue("XX YY,ZZ;\nXY", words);
  EXPECT_EQ(words, (WordList{"XX", "YY", "ZZ", "XY"}));
  Table table;
  parseValue("0, 1, 2;\n 1, 3, 4 ;\n", table);  // rows over lines, trailing separator
  EXPECT_EQ(table, (Table{{0, 1, 2}, {1, 3, 4}}));
  EXPECT_EQ(formatValue(Table{{0, 1}, {2.5, 3}}), "0,1;2.5,3");
  EXPECT_EQ(formatValue(WordList{"XX", "YY"}), "XX,YY");
}

TEST(KeywordsParsing, EnumerationWordsAndUnknownWordsKeepingThePreviousValue) {
  const char* const greenWords[] = {"Basic", "ForwardDifference", "CentralDifference",
                                    "BackwardDifference", "StaggeredGrid", "TrilinearFE", "Q1FE",
                                    "Hex8RHourGlassControl", "Helmholtz", "Bilaplacian"};
  GreenOperatorType green = GreenOperatorType::Helmholtz;
  for (int number = 0; number < 10; ++number) {
    parseValue(greenWords[number], green);
    EXPECT_EQ(static_cast<int>(green), number) << greenWords[number];
    EXPECT_EQ(formatValue(green), greenWords[number]);
  }
  parseValue("bilaplacian", green);  // compared exactly
  EXPECT_EQ(green, GreenOperatorType::Bilaplacian);

  FilterType filter = FilterType::Periodize;
  parseValue("Bogus", filter);
  EXPECT_EQ(filter, FilterType::Periodize);
  parseValue("NonConsistent", filter);
  EXPECT_EQ(static_cast<int>(filter), 2);
  EXPECT_EQ(formatValue(static_cast<FilterType>(7)), "unset");
  TimeStepType steps = TimeStepType::UserDefined;
  parseValue("Logarithmic", steps);
  EXPECT_EQ(static_cast<int>(steps), 3);
}

TEST(KeywordsParsing, TextComesFromTheNodeOrItsLastValueChild) {
  XmlNode root = XmlNode::createRoot("Settings");
  XmlNode plain = root.getChildByPath("input/Plain", true);
  plain.addText("plain");
  plain.addText("second");
  XmlNode listed = root.getChildByPath("input/Listed", true);
  listed.addChild("value").addText("first");
  listed.addChild("comment").addText("ignored");
  listed.addChild("values").addText("last");
  listed.addChild("value");  // no text: does not clear the result
  root.getChildByPath("input/Foreign", true).addChild("entry").addText("7");
  root.getChildByPath("input/Bare", true);

  EXPECT_EQ(readParameterText(root, "input/Plain", "default"), "plain");
  EXPECT_EQ(readParameterText(root, "input/Listed", "default"), "last");
  // Other children make the node read as empty, not as its default.
  EXPECT_EQ(readParameterText(root, "input/Foreign", "default"), "");
  EXPECT_EQ(readParameterText(root, "input/Bare", "default"), "");
  EXPECT_EQ(readParameterText(root, "input/Absent", "default"), "default");
}

}  // namespace
}  // namespace gridmoor
