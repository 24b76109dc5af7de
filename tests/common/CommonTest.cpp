#include <gtest/gtest.h>

#include <thread>

#include "common/FileNames.h"
#include "common/Timer.h"
#include "input/KeywordsElasticity.h"

namespace gridmoor {
namespace {

TEST(FileNames, SuffixGoesBeforeTheExtensionOfTheLastElementOnly) {
  EXPECT_EQ(insertBeforeExtension("out/result.txt", "_3"), "out/result_3.txt");
  EXPECT_EQ(insertBeforeExtension("out.d/result", "_3"), "out.d/result_3");
  EXPECT_EQ(insertBeforeExtension("dir\\.result", "_XX"), "dir\\.result_XX");
  EXPECT_EQ(joinPath("run", "a.vti"), "run/a.vti");
  EXPECT_EQ(joinPath("run\\", "a.vti"), "run\\a.vti");
  EXPECT_EQ(joinPath("run/", "C:\\a.vti"), "C:\\a.vti");
}

TEST(FileNames, MarkersCarryTheCaseSuffixOfTheStepsSolutionFile) {
  KeywordsElasticity kw;
  EXPECT_EQ(finishedFileName(kw, "run/", 0, 0), "run/solution_XX.finished");
  kw.exportSolutionVtkFileName.set("fields.vtk");
  EXPECT_EQ(finishedFileName(kw, "run/", 0, 5), "run/fields_XY.finished");
  EXPECT_EQ(loadCaseResponseFileName(kw, "run/", 0, 6), "run/fields_Thermal.response");
  // In a history the step number keeps the markers of one step from another's.
  kw.timeStepType.set(TimeStepType::Constant);
  kw.timeStop.set(1.0);
  kw.timeNSteps.set(4);
  ASSERT_FALSE(kw.isSingleStep());
  EXPECT_EQ(finishedFileName(kw, "run/", 2, 1), "run/fields_3_YY.finished");
}

TEST(Timer, AccumulatesOverRestartsAndIgnoresRepeatedStop) {
  Timer t;
  EXPECT_EQ(t.seconds(), 0.0);
  t.start();
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  t.stop();
  const double first = t.seconds();
  EXPECT_GE(first, 0.019);
  t.stop();
  EXPECT_EQ(t.seconds(), first);
  t.start();
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_GT(t.seconds(), first + 0.019);  // running part counts
  t.stop();
  EXPECT_GE(t.seconds(), first + 0.019);
}

}  // namespace
}  // namespace gridmoor
