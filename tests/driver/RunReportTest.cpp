#include "driver/RunReport.h"

#include <gtest/gtest.h>

#include <string>

#include "voxel/Vector.h"

using namespace gridmoor;

TEST(RunReport, TableAndLogMapCarryTheHostsSpellings) {
  RunTimers timers;
  RunReportFigures figures;
  figures.threads = 2;
  figures.allocatedKB = 123;
  figures.iterations = 17;
  ::testing::internal::CaptureStdout();
  printRunReport(timers, figures);
  const std::string out = ::testing::internal::GetCapturedStdout();
  // A run without a solve prints zeros everywhere.
  EXPECT_NE(out.find("\n\nNumber of threads:                                          2\n\n"),
            std::string::npos);
  EXPECT_NE(out.find(" - Iterative Solver                                      0.00 sec (FFT 0.00 sec)\n"),
            std::string::npos);
  EXPECT_NE(out.find("\n\n\n<LogMap>\n\tNumberOfThreads 2 [1]\n\tMemory:Estimate 123 [KB]\n"),
            std::string::npos);
  EXPECT_NE(out.find("\tIterations 17 [1]\n"), std::string::npos);
  EXPECT_NE(out.find("\tRuntime:VoigtReusBounds 0.00 [s]\n</LogMap>\n"), std::string::npos);
  // The min/max timer has a table row but no LogMap line.
  EXPECT_NE(out.find(" - Min/Max of Internal Variables"), std::string::npos);
  EXPECT_EQ(out.find("MinMax"), std::string::npos);
}

TEST(RunReport, MemoryAndDiskFigures) {
  const std::uint64_t before = realMemoryKB();
  EXPECT_GT(before, 0u);
  {
    Vector<double> big(32 * 1024 * 1024 / 8, 1.0, "big");  // 32 MiB, touched by the fill
    EXPECT_GE(realMemoryKB(), before + 30 * 1024);
  }
  EXPECT_EQ(freeDiskSpace("\\\\server\\share\\run.xml"), 0u);
  EXPECT_GT(diskSize("/tmp/run.xml"), 0u);
  EXPECT_LE(freeDiskSpace("/tmp/run.xml"), diskSize("/tmp/run.xml"));
}
