// The part of the run sequence that solves: fields, plans, the reference material, the step
// loop with its output and averages, and the end of the run with its report.
#include <cinttypes>
#include <cstdio>
#include <fstream>

#include "common/Fatal.h"
#include "common/FileNames.h"
#include "common/Threads.h"
#include "driver/Console.h"
#include "driver/MemoryEstimate.h"
#include "driver/RunReport.h"
#include "driver/RunSequence.h"
#include "formats/DataWriter.h"
#include "formats/RestartFiles.h"
#include "formats/VtiWriter.h"
#include "formats/VtkWriter.h"
#include "input/KeyWordsLattora.h"
#include "materials/IsotropicLinearElasticMaterial.h"
#include "materials/MaterialVector.h"
#include "operators/FFTImage.h"
#include "operators/ReferenceMaterial.h"
#include "postprocessing/ColourAverages.h"
#include "postprocessing/ResultFile.h"
#include "postprocessing/SurfaceForces.h"
#include "solvers/LoadStepSolver.h"
#include "voxel/DebugAllocator.h"
#include "voxel/Geometry.h"

namespace gridmoor {

namespace {

bool endsWith(const std::string& text, const std::string& suffix) {
  return text.size() >= suffix.size() &&
         text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0;
}

}  // namespace

void RunSequence::decideSolve() {
  KeyWordsLattora& kw = *keywords_;
  timers_.thermal.start();
  needsThermal_ = materials_->anyHasThermalExpansion(*geometry_) && !kw.isZeroThermalLoad();
  timers_.thermal.stop();
  if (!kw.useSolver()) {
    // Without the solver only the bounds are computed: nothing is loaded or solved.
    kw.timeStepType.set(TimeStepType::None);
    kw.macroscopicStrainStressType.set("Zero");
    kw.writeEffectiveMatrix.set(false);
    needsThermal_ = false;
  } else if (kw.problemFormulation() != "Strain") {
    stopAtMissingStep("the " + kw.problemFormulation() + " formulation");
  }
  switchToVariationalScheme(kw, *materials_, *geometry_);
  runsSolver_ = kw.numberOfSteps() >= 2 || !kw.isZeroLoad() || needsThermal_ ||
                kw.numberOfLoadCases() > 0 || kw.externalForce();
  // A run that solves nothing keeps its memory free: its fields are empty shells.
  if (!runsSolver_) gridSize_ = {0, 0, 0};
}

void RunSequence::allocateFields() {
  timers_.allocation.start();
  baselineKB_ = realMemoryKB();
  fields_ = std::make_unique<SolverFields>(
      allocateSolverFields(*keywords_, *materials_, *geometry_, gridSize_, pathIndependent_));
  timers_.allocation.stop();
}

void RunSequence::printMemoryEstimate() {
  std::printf("###EstimatedMemoryRequirement### %" PRIu64 " KB\n", allocatedBytes >> 10);
  std::printf("Currently occupying %" PRIu64 " KB\n", realMemoryKB());
}

void RunSequence::makePlans() {
  timers_.allocation.start();
  const KeyWordsLattora& kw = *keywords_;
  threads_ = fields_->deltaE->initThreadsAndPlans(runThreadCount(kw.nThreads()), kw.plannerFlag());
  if (fields_->E != fields_->deltaE) fields_->E->createPlans(kw.plannerFlag());
  timers_.allocation.stop();
  progress(5);
  timers_.referenceMaterial.start();
  reference_ = std::make_unique<IsotropicLinearElasticMaterial>("ReferenceMaterial", 0.0, 0.0);
  // The operator of a run that solves nothing would take the memory the empty fields save.
  if (runsSolver_)
    solver_ = std::make_unique<LoadStepSolver>(kw, *geometry_, *materials_, outputDirectory_,
                                               &timers_.total);
  timers_.referenceMaterial.stop();
  if (fields_->E_old != fields_->deltaE) *fields_->E_old = *fields_->E;
}

void RunSequence::runSteps() {
  const KeyWordsLattora& kw = *keywords_;
  const int steps = kw.numberOfSteps();
  for (int i = firstStep_; i < steps; ++i) {
    counters_.matrixVectorProducts = 0;
    kw.printStepHeader(i);
    selectReference(i);
    extrapolate(i);
    if (!kw.isZeroLoad() || needsThermal_) {
      timers_.solver.start();
      const NeumannResult result =
          solver_->solveStep(i, *fields_, reference_->lambda, reference_->mu,
                             counters_, i, steps);
      timers_.solver.stop();
      iterations_ += result.iterations;
      resetGraph();
    }
    writeStepOutput(i);
    homogenize(i);
    writeBounds(i);
    finishLoadCases();
  }
}

void RunSequence::selectReference(int step) {
  // Due at the first step of this run, which is not step 0 after a restart.
  if (!referenceMaterialDue(*keywords_, step - firstStep_) || !runsSolver_) return;
  timers_.referenceMaterial.start();
  setupReferenceMaterial(keywords_->problemFormulation(), *keywords_, *materials_, *geometry_, 0,
                         fields_->E.get(), *reference_);
  timers_.referenceMaterial.stop();
}

// The start field of a step: the last solution moved by the change of a prescribed strain.
// Stress-controlled components find their mean in the iteration itself.
void RunSequence::extrapolate(int step) {
  if (step == 0) return;
  const KeyWordsLattora& kw = *keywords_;
  if (!macroscopicLoadOf(kw, kw.timeOfStep(step + 1)).isPureStrain()) return;
  if (fields_->E_old != fields_->E) *fields_->E_old = *fields_->E;
  std::vector<double> increment;
  kw.macroscopicLoadIncrement(step, increment);
  fields_->E->addConstantToPoints(increment.data());
}

void RunSequence::writeStepOutput(int step) {
  const KeyWordsLattora& kw = *keywords_;
  FFTImage& strain = *fields_->E;
  // The dual field is computed into a scratch field of the same layout, only when needed.
  std::unique_ptr<FFTImage> stress;
  // A run that solved nothing holds empty shells: there is no field to write or average.
  if (!runsSolver_) return;
  if (kw.writeVtkOutput() || kw.averageStrainStress() || kw.averageSurfaceForces()) {
    stress = std::make_unique<FFTImage>(strain.nComponents, strain.nFirst, strain.nSecond,
                                        strain.nThird, "Stress");
    StepContext ctx;
    ctx.keywords = &kw;
    ctx.materials = materials_.get();
    ctx.geometry = geometry_.get();
    fields_->E->computeStress(*stress, ctx);
  }
  // Every file of the step is closed before the lock goes: a run stopped after that point
  // leaves complete files that a restart may go on from.
  createOutputLock(outputDirectory_);
  if (kw.writeVtkOutput()) writeFields(step, strain, *stress);
  if (kw.averageStrainStress() || kw.averageSurfaceForces())
    writeAveragesOfStep(step, strain, *stress);
  saveRestartState(step);
  removeOutputLock(outputDirectory_);
}

void RunSequence::writeFields(int step, const FFTImage& strain, const FFTImage& stress) {
  timers_.outputVtk.start();
  const KeyWordsLattora& kw = *keywords_;
  const std::string name = stepFileName(kw, solutionFileName(kw, outputDirectory_), step);
  const std::array<std::int64_t, 6> extent = {0, static_cast<std::int64_t>(gridSize_[0]),
                                              0, static_cast<std::int64_t>(gridSize_[1]),
                                              0, static_cast<std::int64_t>(gridSize_[2])};
  const std::array<double, 3> spacing = {geometry_->getResolutionX(), geometry_->getResolutionY(),
                                         geometry_->getResolutionZ()};
  std::unique_ptr<DataWriter> writer;
  if (endsWith(name, ".vtk"))
    writer = std::make_unique<VtkWriter>(name, extent, spacing, std::array<double, 3>{0, 0, 0});
  else
    writer = std::make_unique<VtiWriter>(name, extent, spacing, std::array<double, 3>{0, 0, 0},
                                         kw.compressFiles());
  const std::vector<std::uint32_t> voigt = {0, 1, 2, 3, 4, 5};
  writer->addImageField("Materials", geometry_->RealVoxelImage, {0}, DataWriter::UInt8);
  writer->addImageField(fields_->E->getPrimaryFieldName(), strain, voigt, DataWriter::Float);
  writer->addImageField(fields_->E->getDualFieldName(), stress, voigt, DataWriter::Float, kw.eModulUnit());
  writer->write();
  timers_.outputVtk.stop();
}

void RunSequence::writeAveragesOfStep(int step, const FFTImage& strain, const FFTImage& stress) {
  timers_.averagingStrainStress.start();
  const KeyWordsLattora& kw = *keywords_;
  const ColorImage& colours = geometry_->RealVoxelImage;
  const ColourMeans e = averageOverColours(strain.data(), 6, strain.rowStride, colours);
  const ColourMeans s = averageOverColours(stress.data(), 6, stress.rowStride, colours);
  ResultAverages averages;
  std::copy_n(e.overall.begin(), 6, averages.overall.strain.begin());
  std::copy_n(s.overall.begin(), 6, averages.overall.stress.begin());
  for (size_t c = 0; c < e.colours.size(); ++c) {
    MaterialAverages m;
    m.colour = e.colours[c];
    m.volumeFraction = e.volumeFractions[c];
    std::copy_n(e.byColour[c].begin(), 6, m.values.strain.begin());
    std::copy_n(s.byColour[c].begin(), 6, m.values.stress.begin());
    averages.materials.push_back(m);
  }
  std::ofstream out = openResultFile(kw, outputDirectory_, step);
  writeAverages(out, kw, averages);
  writeSurfaceForces(out, kw, computeSurfaceForces(stress.data(), stress.rowStride, gridSize_));
  writeComputationalCosts(out, kw, counters_.matrixVectorProducts, 0);
  timers_.averagingStrainStress.stop();
}

void RunSequence::finishRun() {
  timers_.allocation.start();
  const std::uint64_t realKB = realMemoryKB();
  if (fields_ && fields_->deltaE) fields_->deltaE->destroyPlansAndCleanupThreads();
  timers_.allocation.stop();
  timers_.total.stop();
  progress(100);
  RunReportFigures figures;
  figures.threads = threads_;
  figures.fftSeconds = FFTImage::totalTransformSeconds();
  figures.allocatedKB = allocatedBytes >> 10;
  MemoryEstimateInputs estimate;
  estimate.grid = gridSize_;
  estimate.valuesPerVoxel = fields_->deltaE->nComponents;
  estimate.allLinear = allLinear_;
  estimate.pathIndependent = pathIndependent_;
  estimate.baselineKB = baselineKB_;
  figures.estimateKB = estimateMemoryKB(*keywords_, estimate);
  figures.realKB = realKB;
  figures.iterations = static_cast<int>(iterations_);
  printRunReport(timers_, figures);
}

}  // namespace gridmoor
