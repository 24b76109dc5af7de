// The macroscopic load and temperature tables, the load kinds and masks, and the time grids.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "input/KeyWordsLattora.h"

namespace gridmoor {
namespace {

using ::testing::DoubleNear;
using ::testing::ElementsAre;
using ::testing::Pointwise;
using Values = std::vector<double>;

Values loadAt(const KeywordsElasticity& kw, double time) {
  Values load;
  kw.macroscopicLoadAt(time, load);
  return load;
}

// Strain formulation with a strain table over [0, 3] and a temperature table over [0, 1].
void useTables(KeywordsElasticity& kw) {
  kw.macroscopicStrainStressType.set("LinearInterpolation");
  kw.macroscopicStrainValues.set(
      {{0, 0, 0, 0, 0, 0, 0}, {1, 0.01, 0, 0, 0, 0, 0.02}, {3, 0.03, 0, 0, 0, 0, -0.02}});
  kw.macroscopicTemperatureChangeValues.set({{0, 0}, {1, 8}});
}

TEST(LoadCases, TablesInterpolateBetweenAndAtRows) {
  KeywordsElasticity kw;
  useTables(kw);
  EXPECT_THAT(loadAt(kw, 0.25), Pointwise(DoubleNear(1e-15), Values{0.0025, 0, 0, 0, 0, 0.005}));
  EXPECT_THAT(loadAt(kw, 1.0), ElementsAre(0.01, 0, 0, 0, 0, 0.02));
  EXPECT_THAT(loadAt(kw, 2.0), Pointwise(DoubleNear(1e-15), Values{0.02, 0, 0, 0, 0, 0}));
  EXPECT_THAT(loadAt(kw, 3.0), ElementsAre(0.03, 0, 0, 0, 0, -0.02));
  Values negated;
  kw.macroscopicLoadAt(1.0, negated, true);
  EXPECT_THAT(negated, ElementsAre(-0.01, 0, 0, 0, 0, -0.02));

  EXPECT_DOUBLE_EQ(kw.temperatureChangeAt(0.25), 2.0);
  EXPECT_EQ(kw.temperatureChangeAt(2.5), 8.0);  // held after the last row, without a message
  EXPECT_FALSE(kw.isZeroThermalLoad());        // a table counts as a load

  kw.timeStepType.set(TimeStepType::UserDefined);
  kw.timeSteps.set({0, 1, 3});
  Values increment;
  kw.macroscopicLoadIncrement(1, increment);  // from time 1 to time 3
  EXPECT_THAT(increment, Pointwise(DoubleNear(1e-15), Values{0.02, 0, 0, 0, 0, -0.04}));

  // A single row at the requested time has no interval: the caller's values stay.
  kw.macroscopicStrainValues.set({{2, 0.5, 0.5, 0.5, 0.5, 0.5, 0.5}});
  Values kept{1, 2, 3, 4, 5, 6};
  kw.macroscopicLoadAt(2.0, kept);
  EXPECT_THAT(kept, ElementsAre(1, 2, 3, 4, 5, 6));
}

TEST(LoadCases, FormulationAndLoadTypeSelectTheLoadAndItsZeroTest) {
  struct Case {
    const char* deformation;
    const char* unknown;
    const char* loadType;
    LoadKind kind;
  };
  for (const Case& c : {Case{"Small", "Strain", "Stress", LoadKind::Stress},
                        Case{"Small", "Stress", "Mixed", LoadKind::StrainStress},
                        Case{"Small", "PolarizationEigenstrain", "Strain", LoadKind::Strain},
                        Case{"Small", "PolarizationEigenstrain", "Eigenstrain",
                             LoadKind::Eigenstrain},
                        Case{"Large", "Strain", "Mixed", LoadKind::DeformationGradientFirstPK},
                        Case{"Large", "Strain", "Strain", LoadKind::DeformationGradient}}) {
    KeywordsElasticity kw;
    kw.typeOfDeformation.set(c.deformation);
    kw.primaryUnknown.set(c.unknown);
    kw.typeOfMacroscopicLoadStrainStress.set(c.loadType);
    kw.typeOfMacroscopicLoadPolarizationEigenstrain.set(c.loadType);
    kw.typeOfMacroscopicLoadDeformationGradient.set(c.loadType);
    EXPECT_TRUE(kw.isZeroLoad());  // "Zero"
    kw.macroscopicStrainStressType.set("Constant");
    EXPECT_TRUE(kw.isZeroLoad()) << c.loadType;  // every default constant load is unloaded
    // Each kind's constant load carries its own marker in the last entry.
    Parameter<DoubleList>* loads[] = {
        &kw.macroscopicStrain,       &kw.macroscopicStress,
        &kw.macroscopicStrainStress, &kw.macroscopicPolarization,
        &kw.macroscopicEigenstrain,  &kw.macroscopicDeformationGradient,
        &kw.macroscopicFirstPK,      &kw.macroscopicDeformationGradientFirstPK};
    for (int k = 0; k < 8; ++k) {
      DoubleList values = (*loads[k])();
      values.back() = k + 10;
      loads[k]->set(values);
    }
    ASSERT_EQ(kw.macroscopicLoadKind(), c.kind) << c.unknown << ' ' << c.loadType;
    EXPECT_EQ(loadAt(kw, 0.0).back(), static_cast<int>(c.kind) + 10) << c.loadType;
    EXPECT_FALSE(kw.isZeroLoad()) << c.loadType;
  }

  KeywordsElasticity kw;
  kw.macroscopicStrainStressType.set("Constant");
  kw.typeOfDeformation.set("Large");
  kw.typeOfMacroscopicLoadDeformationGradient.set("FirstPK");
  kw.macroscopicFirstPK.set({0, 5, 0, 0, 0, 0, 0, 0, 5});
  EXPECT_TRUE(kw.isZeroLoad());  // only the first entry of P counts
  // Mixed: a prescribed diagonal entry of F is unloaded at 1, one of P at 0.
  kw.typeOfMacroscopicLoadDeformationGradient.set("Mixed");
  kw.deformationGradientList.set({"XX", "ZZ"});
  kw.macroscopicDeformationGradientFirstPK.set({1, 0, 0, 0, 0, 0, 0, 0, 1});
  EXPECT_TRUE(kw.isZeroLoad());
  kw.macroscopicDeformationGradientFirstPK.set({1, 0, 0, 0, 1, 0, 0, 0, 1});
  EXPECT_FALSE(kw.isZeroLoad());
}

TEST(LoadCases, MasksOfMixedLoadsAndHomogenizationCases) {
  KeywordsElasticity kw;
  EXPECT_EQ(kw.mixedMask(), 0x3Fu);  // "Strain"
  kw.typeOfMacroscopicLoadStrainStress.set("Mixed");
  kw.strainList.set({"XX", "XY"});
  EXPECT_EQ(kw.mixedMask(), 0b100001u);           // XY is the last Voigt slot
  EXPECT_EQ(kw.mixedTensorMask(), 0b000001011u);  // XX, XY and YX
  kw.strainList.set({"YZ", "3"});
  EXPECT_EQ(kw.mixedMask(), 0b001100u);
  EXPECT_EQ(kw.mixedTensorMask(), 0b110100000u);  // YZ, ZY and ZZ
  kw.typeOfDeformation.set("Large");
  kw.typeOfMacroscopicLoadDeformationGradient.set("Mixed");
  kw.deformationGradientList.set({"YX", "9"});
  EXPECT_EQ(kw.mixedTensorMask(), 0b100001000u);

  kw.computeLoadCaseList.set({"1", "XY"});
  kw.computeThermalExpansion.set(true);
  EXPECT_EQ(kw.numberOfLoadCases(), 0);  // no effective matrix, no cases
  kw.writeEffectiveMatrix.set(true);
  EXPECT_EQ(kw.loadCaseMask(), 0b100001u);
  EXPECT_EQ(kw.numberOfLoadCases(), 3);
  EXPECT_TRUE(kw.hasLoadCase(5));
  EXPECT_FALSE(kw.hasLoadCase(1));
  EXPECT_TRUE(kw.hasLoadCase(6));
  kw.computeAllLoadCases.set(true);
  EXPECT_EQ(kw.numberOfMechanicalLoadCases(), 6);
  kw.computeAllLoadCases.set(false);
  kw.computeLoadCaseList.set({});
  EXPECT_EQ(kw.numberOfLoadCases(), 1);  // the thermal case alone
}

TEST(LoadCases, FlatSchemaSharedLoadKeyServesEveryFormulation) {
  for (const char* formulation : {"Strain", "Stress", "Mixed"}) {
    XmlNode root = XmlNode::createRoot("gridmoor");
    root.getChildByPath("input/ProblemFormulation", true).addText(formulation, 0);
    root.getChildByPath("input/MacroscopicLoadType", true).addText("LinearInterpolation", 0);
    root.getChildByPath("input/MacroscopicLoad", true).addText("0,0,0,0,0,0,0;2,0,0,4,0,0,2", 0);
    root.getChildByPath("input/MacroscopicTemperatureChange", true).addText("0,0;2,10", 0);
    ::testing::internal::CaptureStderr();  // the required keys that this tree lacks
    KeyWordsLattora kw(root);
    ::testing::internal::GetCapturedStderr();
    EXPECT_THAT(loadAt(kw, 1.0), ElementsAre(0, 0, 2, 0, 0, 1)) << formulation;
    EXPECT_DOUBLE_EQ(kw.temperatureChangeAt(1.0), 5.0);
  }
}

TEST(LoadCasesDeathTest, BadTablesAndListsNameTheirKey) {
  KeywordsElasticity kw;
  useTables(kw);
  EXPECT_EXIT(loadAt(kw, 3.0000001), ::testing::ExitedWithCode(1),
              "^input/Solution/MacroscopicStrainValues do not cover the time steps!\n$");
  kw.macroscopicStrainValues.set({{0, 0, 0, 0, 0, 0, 0}, {1, 0.01, 0, 0, 0, 0}});
  EXPECT_EXIT(loadAt(kw, 0.5), ::testing::ExitedWithCode(1),
              "^input/Solution/MacroscopicStrainValues: row 2 holds 6 numbers, but a row is a "
              "time and 6 values\n$");
  const double nan = std::nan("");
  kw.macroscopicStrainValues.set({{0, 0, 0, 0, 0, 0, 0}, {1, 0.01, 0, nan, 0, 0, 0}});
  EXPECT_EXIT(loadAt(kw, 0.5), ::testing::ExitedWithCode(1),
              "^input/Solution/MacroscopicStrainValues: row 2 holds nan, which is not a finite "
              "number\n$");
  kw.macroscopicTemperatureChangeValues.set({{0, 0}, {0, 1}});
  EXPECT_EXIT(kw.temperatureChangeAt(0.0), ::testing::ExitedWithCode(1),
              "^input/Solution/MacroscopicTemperatureChangeValues: the times of the rows must "
              "increase, but row 2 has time 0 after 0\n$");

  kw.macroscopicStrainStressType.set("Constant");
  kw.macroscopicStrain.set({0.1, 0, 0});
  EXPECT_EXIT(kw.isZeroLoad(), ::testing::ExitedWithCode(1),
              "^input/Solution/MacroscopicStrain holds 3 values, but a Strain load has 6\n$");
  kw.macroscopicStrain.set({0.1, 0, 0, 0, HUGE_VAL, 0});
  EXPECT_EXIT(kw.isZeroLoad(), ::testing::ExitedWithCode(1),
              "^input/Solution/MacroscopicStrain holds a value that is not a finite number: "
              "\"0.1,0,0,0,inf,0\"\n$");
  kw.typeOfMacroscopicLoadStrainStress.set("Shear");
  EXPECT_EXIT(kw.macroscopicLoadKind(), ::testing::ExitedWithCode(1),
              "^input/Solution/TypeOfMacroscopicLoadStrainStress: unknown load type \"Shear\" "
              "for the formulation Strain\n$");
  kw.typeOfMacroscopicLoadStrainStress.set("Mixed");
  kw.strainList.set({"XX", "xy"});
  EXPECT_EXIT(kw.mixedMask(), ::testing::ExitedWithCode(1),
              "^input/Solution/StrainList: \"xy\" names no load component\n$");
}

void useGrid(KeywordsElasticity& kw, TimeStepType type, double start, double stop, int steps) {
  kw.timeStepType.set(type);
  kw.timeStart.set(start);
  kw.timeStop.set(stop);
  kw.timeNSteps.set(steps);
}

TEST(TimeSteps, EachGridTypeGivesItsCountTimesAndFractions) {
  KeywordsElasticity kw;  // "None": one step at time 0, the other settings not looked at
  kw.timeSteps.set({3.0, 1.0});
  EXPECT_EQ(kw.numberOfSteps(), 1);
  EXPECT_TRUE(kw.isSingleStep());
  EXPECT_EQ(kw.timeOfStep(1), 0.0);
  EXPECT_EQ(kw.stepLength(0), 0.0);
  EXPECT_EQ(kw.stepFraction(0), 1.0);  // a body force is scaled by nothing

  kw.timeStepType.set(TimeStepType::UserDefined);
  kw.timeSteps.set({1.0, 1.5, 3.0, 4.0, 5.0});
  EXPECT_EQ(kw.numberOfSteps(), 4);
  EXPECT_FALSE(kw.isSingleStep());
  EXPECT_DOUBLE_EQ(kw.timeOfStep(4), 5.0);
  EXPECT_DOUBLE_EQ(kw.stepLength(3), 1.0);  // the last difference
  EXPECT_DOUBLE_EQ(kw.stepFraction(0), 0.125);  // measured from the first time, not from 0

  useGrid(kw, TimeStepType::Constant, 1.0, 3.0, 4);
  EXPECT_EQ(kw.numberOfSteps(), 4);
  EXPECT_DOUBLE_EQ(kw.timeOfStep(3), 2.5);
  EXPECT_DOUBLE_EQ(kw.stepLength(2), 0.5);
  EXPECT_DOUBLE_EQ(kw.stepFraction(1), 0.5);
  kw.timeNSteps.set(1);
  EXPECT_FALSE(kw.isSingleStep());  // one step, but on a time grid

  useGrid(kw, TimeStepType::Logarithmic, 0.01, 1.0, 2);
  EXPECT_EQ(kw.numberOfSteps(), 2);
  EXPECT_NEAR(kw.timeOfStep(1), 0.1, 1e-15);
  EXPECT_NEAR(kw.stepLength(1), 0.9, 1e-15);
  EXPECT_FALSE(kw.isSingleStep());
  kw.timeNSteps.set(1);
  EXPECT_TRUE(kw.isSingleStep());  // unlike a constant grid of one step
}

TEST(TimeStepsDeathTest, GridsThatCanNotBeWalked) {
  KeywordsElasticity kw;
  kw.timeStepType.set(TimeStepType::UserDefined);
  kw.timeSteps.set({0.5});
  EXPECT_EXIT(kw.numberOfSteps(), ::testing::ExitedWithCode(1),
              "^input/Solution/TimeSteps holds 1 times, but a time grid needs at least two\n$");
  kw.timeSteps.set({0.0, 1.0, 1.0});
  EXPECT_EXIT(kw.timeOfStep(1), ::testing::ExitedWithCode(1),
              "^input/Solution/TimeSteps: the times must increase, but 1 follows 1\n$");
  useGrid(kw, TimeStepType::Constant, 0.0, 1.0, 0);
  EXPECT_EXIT(kw.stepLength(0), ::testing::ExitedWithCode(1),
              "^input/Solution/TimeNSteps must be at least 1, not 0\n$");
  useGrid(kw, TimeStepType::Constant, 2.0, 1.0, 4);
  EXPECT_EXIT(kw.stepFraction(0), ::testing::ExitedWithCode(1),
              "^input/Solution/TimeStop \\(1\\) must lie after input/Solution/TimeStart \\(2\\)\n$");
  useGrid(kw, TimeStepType::Logarithmic, 0.0, 1.0, 4);
  EXPECT_EXIT(kw.timeOfStep(1), ::testing::ExitedWithCode(1),
              "^input/Solution/TimeStart must be positive for a logarithmic time grid, not 0\n$");
}

}  // namespace
}  // namespace gridmoor
