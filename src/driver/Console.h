// The process console: redirection of stdout/stderr into the run's files, the exit and
// crash handlers, and the machine-read progress protocol lines for the host application.
#pragma once

#include <string>

namespace gridmoor {

// Opens both copy files and starts both redirectors. A copy file that does not open is
// reported on the error stream; its stream then still reaches the console.
void redirectStandardStreams(const std::string& stdoutPath, const std::string& stderrPath);

// Registers the exit handler (flush, stop redirectors, remove an empty error file) and the
// signal handlers: SIGINT and SIGTERM leave through exit(), SIGSEGV and SIGABRT abort after
// flushing.
void installExitAndSignalHandlers();

// Marks a normal end of the run for the exit handler.
void setRunFinished();

// Progress protocol: written around the stdout pipe, so the host sees it but stdout.txt not.
void progress(int percent);
void subProgress(int percent);
void progressCaptions(const std::string& x, const std::string& y);
void subProgressCaptions(const std::string& x, const std::string& y);
// A point of the host's graph: the main bar's percentage, then x (the iteration) and y (the
// relative error) of the captions "Iterations" and "Error[-]".
void progressPoint(int percent, double x, double y);
void resetGraph();
void resetSubGraph();

}  // namespace gridmoor
