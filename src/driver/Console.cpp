#include "driver/Console.h"

#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "driver/StreamRedirector.h"

namespace gridmoor {

namespace {

// File-level state of the console; the exit handler reaches it after main has returned.
StreamRedirector stdoutRedirector(STDOUT_FILENO);
StreamRedirector stderrRedirector(STDERR_FILENO);
std::string errorFilePath;
bool runFinished = false;

void stopRedirectors() {
  std::fflush(stdout);
  std::fflush(stderr);
  stdoutRedirector.stop();
  stderrRedirector.stop();
}

// Only a regular file is removed: an error stream sent to a device such as /dev/null or
// /dev/full also reads as empty, and unlinking it would break the machine for everyone.
void removeErrorFileWhenEmpty() {
  struct stat info;
  if (!errorFilePath.empty() && ::stat(errorFilePath.c_str(), &info) == 0 &&
      S_ISREG(info.st_mode) && info.st_size == 0)
    ::unlink(errorFilePath.c_str());
}

void exitHandler() {
  stopRedirectors();
  removeErrorFileWhenEmpty();
  // A normal end would finalize the message-passing layer here; a single-process build has
  // nothing to finalize, so runFinished only records the kind of end.
  (void)runFinished;
}

// SIGINT and SIGTERM end the run with status 1 after what the exit handler does, but not
// through exit(): the signal may come while this thread holds a lock of the allocator or of
// a stream, and the handlers and destructors that exit() runs would wait for it for ever.
// Only calls that are safe at any point are made: the pipes are drained into the log files,
// an empty error file is removed, and _exit ends the process. Standard output is line
// buffered, so no more than a line being written can be lost.
void terminationHandler(int) {
  stdoutRedirector.drain();
  stderrRedirector.drain();
  removeErrorFileWhenEmpty();
  ::_exit(1);
}

void crashHandler(int) {
  stopRedirectors();
  std::signal(SIGABRT, SIG_DFL);
  std::abort();
}

void writeProtocol(const std::string& line) {
  std::fflush(stdout);
  stdoutRedirector.writeRaw(line);
}

}  // namespace

void redirectStandardStreams(const std::string& stdoutPath, const std::string& stderrPath) {
  // Text written before the redirection belongs to the console only.
  std::fflush(stdout);
  std::fflush(stderr);
  errorFilePath = stderrPath;
  const bool outOpen = stdoutRedirector.open(stdoutPath);
  const bool errOpen = stderrRedirector.open(stderrPath);
  stdoutRedirector.start();
  stderrRedirector.start();
  // A pipe makes stdio buffer fully; the host reads the log while the run goes on, and a
  // termination signal loses no finished line. The buffer is given: without one, a stream
  // that was written to before keeps buffering fully.
  static char lineBuffer[BUFSIZ];
  std::setvbuf(stdout, lineBuffer, _IOLBF, sizeof lineBuffer);
  if (!outOpen) std::fprintf(stderr, "Could not open the file %s for writing\n", stdoutPath.c_str());
  if (!errOpen) {
    errorFilePath.clear();
    std::fprintf(stderr, "Could not open the file %s for writing\n", stderrPath.c_str());
  }
}

void installExitAndSignalHandlers() {
  std::atexit(exitHandler);
  std::signal(SIGINT, terminationHandler);
  std::signal(SIGTERM, terminationHandler);
  std::signal(SIGSEGV, crashHandler);
  std::signal(SIGABRT, crashHandler);
}

void setRunFinished() { runFinished = true; }

void progress(int percent) { writeProtocol("###PROGRESS### " + std::to_string(percent) + "\n"); }

void subProgress(int percent) {
  writeProtocol("###SUBPROGRESS### " + std::to_string(percent) + "\n");
}

void progressCaptions(const std::string& x, const std::string& y) {
  writeProtocol("###PROGRESS### xCaption " + x + "\n");
  writeProtocol("###PROGRESS### yCaption " + y + "\n");
}

void subProgressCaptions(const std::string& x, const std::string& y) {
  writeProtocol("###SUBPROGRESS### xCaption " + x + "\n");
  writeProtocol("###SUBPROGRESS### yCaption " + y + "\n");
}

void progressPoint(int percent, double x, double y) {
  char line[128];
  std::snprintf(line, sizeof line, "###PROGRESS### %d %le %le\n", percent, x, y);
  writeProtocol(line);
}

void resetGraph() { writeProtocol("###PROGRESS### ResetGraph\n"); }

void resetSubGraph() { writeProtocol("###SUBPROGRESS### ResetGraph\n"); }

}  // namespace gridmoor
