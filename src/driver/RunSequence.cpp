#include "driver/RunSequence.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "common/Fatal.h"
#include "common/FileNames.h"
#include "common/Threads.h"
#include "driver/Console.h"
#include "input/KeyWordsLattora.h"
#include "input/Parameter.h"
#include "input/ParameterFile.h"
#include "materials/IsotropicLinearElasticMaterial.h"
#include "materials/MaterialFactory.h"
#include "solvers/LoadStepSolver.h"
#include "voxel/DebugAllocator.h"
#include "voxel/Geometry.h"

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
  return name.empty() ? name : joinPath(directory, name);
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
  readGeometry();
  setEstimateMode();
  buildMaterials();
  findRestartStep();
  finishMaterials();
  readOrientation();
  decideSolve();
  allocateFields();
  if (estimateOnly_) {
    printMemoryEstimate();
  } else {
    makePlans();
    readRestartState();
    runSteps();
    finishRun();
  }
  setRunFinished();
  return 0;
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

void RunSequence::readGeometry() {
  timers_.ldt.start();
  const KeyWordsLattora& kw = *keywords_;
  if (kw.geometry() == "dynamic")
    geometry_ = std::make_unique<DynamicGeometry>();
  else
    geometry_ = std::make_unique<StaticGeometry>(kw.writeVolumeInformation(),
                                                 kw.writeNormalInformation());
  const std::array<std::uint64_t, 3> target = {
      static_cast<std::uint64_t>(std::max(kw.resamplingResolutionX(), 0)),
      static_cast<std::uint64_t>(std::max(kw.resamplingResolutionY(), 0)),
      static_cast<std::uint64_t>(std::max(kw.resamplingResolutionZ(), 0))};
  geometry_->readAndResample(runThreadCount(kw.nThreads()), kw.resamplingMode(), target,
                             kw.fastEstimateSolution(),
                             resolveInputPath(outputDirectory_, kw.inputLdtFile()));
  if (kw.changeResolution()) {
    // A length of zero (also what a word reads as), a negative one, NaN or one beyond the
    // usable range would poison every frequency of the Green operators, and the solve would
    // end in NaN fields.
    for (const Parameter<double>* length : {&kw.resolutionX, &kw.resolutionY, &kw.resolutionZ})
      if (!ColorImage::isUsableVoxelLength((*length)()))
        fatal("The voxel length " + length->key + " must be a positive number from 1e-100 to "
              "1e100, not \"" + length->text() + "\"");
    geometry_->setOriginalResolution(kw.resolutionX(), kw.resolutionY(), kw.resolutionZ());
  }
  gridSize_ = {geometry_->getSizeX(), geometry_->getSizeY(), geometry_->getSizeZ()};
  timers_.ldt.stop();
}

// An estimate run counts the bytes of every field instead of allocating it.
void RunSequence::setEstimateMode() {
  estimateOnly_ = keywords_->estimateMemory();
  memoryEstimateMode = estimateOnly_;
}

void RunSequence::buildMaterials() {
  timers_.materials.start();
  KeyWordsLattora& kw = *keywords_;
  materials_ = makeMaterialElasticVector(tree_, parameterPath_, geometry_.get(), kw,
                                         std::make_shared<const LoadCaseTable>(),
                                         std::make_shared<InternalVariablesStore>());
  orientationRequired_ = materials_->anyNeedsOrientation(*geometry_);
  allLinear_ = materials_->allLinear(*geometry_);
  if (kw.linearizeWithNR() && allLinear_ &&
      materials_->allLinearForFormulation(kw, *geometry_)) {
    std::printf("\nWarning: All used materials are linear. Turning off Newton-Raphson-Iterations!\n");
    kw.linearizeWithNR.set(false);
    kw.maxIterNR.set(1);
  }
  hybrid_ = materials_->containsHybrid(*geometry_);
  timers_.materials.stop();
}

void RunSequence::finishMaterials() {
  timers_.materials.start();
  materials_->checkMaterials(*keywords_, *geometry_);
  pathIndependent_ = !materials_->hasInternalVariables(*geometry_, keywords_->problemFormulation());
  timers_.materials.stop();
  if (keywords_->externalForce() && !estimateOnly_)
    stopAtMissingStep("reading a body force (input/Mesh/ExternalForce)");
}

void RunSequence::readOrientation() {
  timers_.lof.start();
  const KeyWordsLattora& kw = *keywords_;
  if (orientationRequired_ && kw.inputLofFile().empty()) {
    std::fprintf(stderr,
                 "\nOrientation file (*.lof) not specified but necessary for anisotropic material "
                 "parameters.\n");
    std::exit(1);
  }
  // Three angles always: a two-angle law reads the first two.
  if (!kw.inputLofFile().empty())
    geometry_->loadOrientation(kw.inputLofFile(), outputDirectory_, false);
  timers_.lof.stop();

  timers_.materials.start();
  materials_->setOrientation(*geometry_, geometry_->EulerAnglesImage.size() > 0
                                             ? &geometry_->EulerAnglesImage
                                             : nullptr);
  if (!estimateOnly_) materials_->prepareVoxelData(*geometry_);
  timers_.materials.stop();
  timers_.internalVariables.start();
  materials_->initInternalVariables(kw, *geometry_);
  // An estimate reads no state file.
  if (!estimateOnly_) loadMaterialState(kw, *materials_, *geometry_, outputDirectory_);
  timers_.internalVariables.stop();
}

void RunSequence::stopAtMissingStep(const std::string& what) {
  fatal("The run stops here: " + what + " is not available in this build yet.");
}

}  // namespace gridmoor
