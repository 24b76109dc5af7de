#include <gtest/gtest.h>

#include "input/KeywordsElasticity.h"

namespace gridmoor {
namespace {

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

TEST(TimeStepsDeathTest, UnknownTypesAndGridsThatCanNotBeWalked) {
  KeywordsElasticity kw;
  kw.timeStepType.set(static_cast<TimeStepType>(7));
  EXPECT_EXIT(kw.isSingleStep(), ::testing::ExitedWithCode(1), "^Unknown timeStepType 7\n$");
  useGrid(kw, TimeStepType::Logarithmic, 0.1, 1.0, 3);
  EXPECT_EXIT(kw.stepFraction(0), ::testing::ExitedWithCode(1), "^Unknown timeStepType 3\n$");

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
