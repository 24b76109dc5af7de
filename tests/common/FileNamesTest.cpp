#include <gtest/gtest.h>

#include "common/FileNames.h"
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
  EXPECT_EXIT(loadCaseSuffix(7), testing::ExitedWithCode(1), "Load case 7 does not exist");
}

}  // namespace
}  // namespace gridmoor
