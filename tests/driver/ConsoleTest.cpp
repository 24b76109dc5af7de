#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <string>

#include "../formats/FieldFileTestSupport.h"
#include "driver/Console.h"
#include "driver/Logger.h"
#include "driver/RunSequence.h"

namespace fs = std::filesystem;
using namespace gridmoor;
using gridmoor::testing::readFile;

namespace {

// Death tests re-run the test in a new process, so the directory name must not depend on
// the process.
fs::path freshDirectory(const std::string& name) {
  const fs::path dir = fs::temp_directory_path() / name;
  fs::remove_all(dir);
  fs::create_directories(dir);
  return dir;
}

}  // namespace

// The log copy and the removal of an empty error file at a normal end are end-to-end cases;
// a termination signal must leave through the same exit handler.
TEST(ConsoleRedirection, TerminationSignalLeavesThroughTheExitHandler) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const fs::path dir = freshDirectory("gridmoor-console-signal");
  auto body = [&] {
    redirectStandardStreams((dir / "stdout.txt").string(), (dir / "error.txt").string());
    installExitAndSignalHandlers();
    std::printf("before the signal\n");
    std::raise(SIGTERM);
    std::printf("never written\n");
    std::exit(0);
  };
  EXPECT_EXIT(body(), ::testing::ExitedWithCode(1), "");
  EXPECT_EQ(readFile(dir / "stdout.txt"), "before the signal\n");
  EXPECT_FALSE(fs::exists(dir / "error.txt"));
  fs::remove_all(dir);
}

// An error stream sent to something that is not a regular file (a pipe here; /dev/null or
// /dev/full in practice) reads as empty at the end and must stay where it is.
TEST(ConsoleRedirection, AnErrorStreamThatIsNoRegularFileIsNotRemoved) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const fs::path dir = freshDirectory("gridmoor-console-fifo");
  const fs::path fifo = dir / "errors";
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  // Held open for reading, so that the run's open for writing does not wait for a reader.
  const int reader = ::open(fifo.c_str(), O_RDWR | O_NONBLOCK);
  ASSERT_GE(reader, 0);
  auto body = [&] {
    redirectStandardStreams((dir / "stdout.txt").string(), fifo.string());
    installExitAndSignalHandlers();
    std::exit(0);
  };
  EXPECT_EXIT(body(), ::testing::ExitedWithCode(0), "");
  EXPECT_TRUE(fs::is_fifo(fifo));
  ::close(reader);
  fs::remove_all(dir);
}

TEST(Logger, NamesRankFilesAndPrefixesDebugLines) {
  const fs::path dir = freshDirectory("gridmoor-logger");
  Logger logger;
  logger.setLogFile((dir / "run.log").string(), 3);
  EXPECT_EQ(logger.logFileName(), (dir / "run_p3.log").string());
  logger.setLogFile((dir / "plain").string());
  EXPECT_EQ(logger.logFileName(), (dir / "plain").string());
  logger.setSilent(true);
  logger.setWriteToFile(true);
  logger.debug("value %d\n", 7);
  logger.progress(50, 1.0, 0.25);
  logger.setDebugPrefix(false);
  logger.debug("bare\n");
  EXPECT_EQ(readFile(dir / "plain"),
            "[DEBUG] value 7\n###PROGRESS### 50 1.000000e+00 2.500000e-01\nbare\n");
  fs::remove_all(dir);
}

TEST(RunPaths, OutputDirectoryAndInputFilesFollowTheParameterFile) {
  EXPECT_EQ(RunSequence::directoryOf("some/dir/run.xml"), "some/dir/");
  EXPECT_EQ(RunSequence::directoryOf("C:\\jobs\\run.xml"), "C:\\jobs\\");
  EXPECT_EQ(RunSequence::directoryOf("run.xml"), "");
  EXPECT_EQ(RunSequence::resolveInputPath("some/dir/", "geometry.ldt"), "some/dir/geometry.ldt");
  EXPECT_EQ(RunSequence::resolveInputPath("some/dir/", "/data/geometry.ldt"), "/data/geometry.ldt");
  EXPECT_EQ(RunSequence::resolveInputPath("some/dir/", "D:\\geometry.ldt"), "D:\\geometry.ldt");
  EXPECT_EQ(RunSequence::resolveInputPath("some/dir/", ""), "");
}
