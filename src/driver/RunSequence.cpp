#include "driver/RunSequence.h"

#include <cstdio>
#include <filesystem>

#include "common/Fatal.h"
#include "driver/Console.h"
#include "input/KeyWordsLattora.h"
#include "input/Parameter.h"
#include "input/ParameterFile.h"

#ifndef GRIDMOOR_REVISION
#define GRIDMOOR_REVISION "unknown"
#endif
#ifndef GRIDMOOR_BUILD_DATE
#define GRIDMOOR_BUILD_DATE "unknown"
#endif

namespace gridmoor {

RunSequence::RunSequence(int argc, char** argv) : arguments_(argv, argv + argc) {}

RunSequence::~RunSequence() = default;

std::string RunSequence::directoryOf(const std::string& path) {
  const size_t slash = path.find_last_of("/\\");
  return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

std::string RunSequence::resolveInputPath(const std::string& directory, const std::string& name) {
  if (name.empty()) return name;
  const bool absolute = name[0] == '/' || name[0] == '\\' || (name.size() > 1 && name[1] == ':');
  return absolute ? name : directory + name;
}

int RunSequence::run() {
  checkArguments();
  timers_.total.start();
  timers_.input.start();
  readParameterTree();
  redirectStreams();
  printBanner();
  installHandlers();
  removeStopRequest();
  readKeywords();
  takeLicence();
  startProgress();
  stopAtMissingStep("reading the geometry");
}

void RunSequence::checkArguments() {
  if (arguments_.size() != 2) {
    std::fprintf(stderr, "usage: %s pde-file\n", arguments_.empty() ? "gridmoor" : arguments_[0].c_str());
    std::exit(1);
  }
  parameterPath_ = arguments_[1];
}

void RunSequence::readParameterTree() {
  outputDirectory_ = directoryOf(parameterPath_);
  tree_ = gridmoor::readParameterTree(parameterPath_);
}

void RunSequence::redirectStreams() {
  const std::string errorName = readParameterText(tree_, "output/StderrFile", "error.txt");
  const std::string outputName = readParameterText(tree_, "output/StdoutFile", "stdout.txt");
  redirectStandardStreams(outputDirectory_ + outputName, outputDirectory_ + errorName);
}

void RunSequence::printBanner() {
  std::printf("## Log file for Gridmoor-CEL\n");
  std::printf("## Precision: Double\n");
  std::printf("## Revision:  %s\n", GRIDMOOR_REVISION);
  std::printf("## Built on:  %s\n", GRIDMOOR_BUILD_DATE);
  std::printf("\n");
}

void RunSequence::installHandlers() { installExitAndSignalHandlers(); }

// A stop request counts only when it is made after the start.
void RunSequence::removeStopRequest() {
  std::error_code ignored;
  std::filesystem::remove(outputDirectory_ + "stop", ignored);
}

void RunSequence::readKeywords() { keywords_ = std::make_unique<KeyWordsLattora>(tree_); }

// Licensing is not part of this build: the licence steps succeed.
void RunSequence::takeLicence() {}

void RunSequence::startProgress() {
  progressCaptions("Iterations", "Error[-]");
  progress(0);
  if (keywords_->noisy()) keywords_->printParameters();
  timers_.input.stop();
}

void RunSequence::stopAtMissingStep(const std::string& what) {
  fatal("The run stops here: " + what + " is not available in this build yet.");
}

}  // namespace gridmoor
