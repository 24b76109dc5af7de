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
#include "input/KeyWordsLattora.h"
#include "materials/IsotropicLinearElasticMaterial.h"
#include "materials/MaterialVector.h"
#include "operators/FFTImage.h"
#include "operators/ReferenceMaterial.h"
#include "postprocessing/InternalVariableAverages.h"
#include "postprocessing/ResultFile.h"
#include "solvers/LoadStepSolver.h"
#include "voxel/DebugAllocator.h"
#include "voxel/Geometry.h"

namespace gridmoor {

void RunSequence::decideSolve() {
  KeyWordsLattora& kw = *keywords_;
  // Laws with rate-dependent state learn the time grid's first step before any solve.
  timers_.eigenstrain.start();
  materials_->setStepNumber(*geometry_, 0);
  materials_->setStepLength(*geometry_, kw.stepLength(0));
  timers_.eigenstrain.stop();
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
  // Before the solve, not after it: the run would otherwise end only once its fields are due.
  if (runsSolver_ && kw.writeDasOutput() && !estimateOnly_)
    stopAtMissingStep("the DAS field output (.das files, output/WriteDasFile)");
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
  // The estimate knows the methods of every solve; MINRES and LSQR solve only load cases.
  const std::string& method = keywords_->iterativeMethod();
  if (method != "NeumannSeries" && method != "CG" && method != "slowCG" && method != "BiCGSTAB")
    fatal("Unknown iterative method " + method);
  std::printf("###EstimatedMemoryRequirement### %" PRIu64 " KB\n", allocatedBytes >> 10);
  std::printf("Currently occupying %" PRIu64 "\n", realMemoryKB());
}

void RunSequence::makePlans() {
  timers_.allocation.start();
  const std::uint64_t beforePlansKB = realMemoryKB();
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
  // The fields are resident already: what grew is the plans, the threads and the operator.
  const std::uint64_t afterPlansKB = realMemoryKB();
  planKB_ = afterPlansKB > beforePlansKB ? afterPlansKB - beforePlansKB : 0;
  if (fields_->E_old != fields_->deltaE) *fields_->E_old = *fields_->E;
}

// The main progress bar gives the step's own solve and each of its load cases one equal part,
// so that it moves evenly through a history with effective matrices.
int RunSequence::progressPartsPerStep() const { return 1 + keywords_->numberOfLoadCases(); }

void RunSequence::runSteps() {
  const KeyWordsLattora& kw = *keywords_;
  const int steps = kw.numberOfSteps();
  const int parts = progressPartsPerStep();
  for (int i = firstStep_; i < steps; ++i) {
    counters_.matrixVectorProducts = 0;
    kw.printStepHeader(i);
    closeLastStep(i);
    selectReference(i);
    extrapolate(i);
    if (!kw.isZeroLoad() || needsThermal_) {
      timers_.solver.start();
      const NeumannResult result =
          solver_->solveStep(i, *fields_, reference_->lambda, reference_->mu, counters_,
                             i * parts, steps * parts);
      timers_.solver.stop();
      iterations_ += result.iterations;
      resetGraph();
    }
    writeStepOutput(i);
    homogenize(i);
    writeBounds(i);
    closeStepOutput(i);
    finishLoadCases(i);
    // The main bar moves with the steps; a single solve's bar follows its iterations.
    if (steps * parts > 1) progress(mainProgress((i + 1) * parts, steps * parts));
  }
}

// The material side of a new step: the last step's state becomes the old one (a run with
// effective matrices does that before its load cases), and the laws learn the step.
void RunSequence::closeLastStep(int step) {
  const KeyWordsLattora& kw = *keywords_;
  if (step > firstStep_ && !kw.writeEffectiveMatrix()) {
    timers_.internalVariables.start();
    fields_->E->updateInternalVariables(outputContext(step));
    timers_.internalVariables.stop();
  }
  // The laws take one temperature change per call, that of the step's end, from the solve.
  materials_->setStepNumber(*geometry_, step);
  materials_->setStepLength(*geometry_, kw.stepLength(step));
}

void RunSequence::selectReference(int step) {
  // Due at the first step of this run, which is not step 0 after a restart.
  if (!referenceMaterialDue(*keywords_, step - firstStep_) || !runsSolver_) return;
  timers_.referenceMaterial.start();
  setupReferenceMaterial(keywords_->problemFormulation(), *keywords_, *materials_, *geometry_, 0,
                         fields_->E.get(), *reference_);
  timers_.referenceMaterial.stop();
}

void RunSequence::extrapolate(int step) {
  if (!runsSolver_) return;
  extrapolateStartField(*fields_->E, *fields_->E_old, *keywords_, step, firstStep_,
                        pathIndependent_);
}

// What evaluates the solution of a step after its solve: its temperature change and, for
// laws with history, the last converged state.
StepContext RunSequence::outputContext(int step) const {
  const KeyWordsLattora& kw = *keywords_;
  StepContext ctx;
  ctx.keywords = &kw;
  ctx.materials = materials_.get();
  ctx.geometry = geometry_.get();
  ctx.temperatureChange = kw.temperatureChangeAt(kw.timeOfStep(step + 1));
  if (solver_ && solver_->routineSet() == RoutineSet::Fixed) ctx.oldField = fields_->E_old.get();
  return ctx;
}

void RunSequence::writeStepOutput(int step) {
  const KeyWordsLattora& kw = *keywords_;
  // A run that solved nothing holds empty shells: there is no field to write or average.
  if (!runsSolver_) return;
  const ElasticityHyperelasticityImage& field = *fields_->E;
  // The dual field is computed into a scratch field of the same layout, only when needed.
  std::unique_ptr<FFTImage> dual;
  if (kw.writeVtkOutput() || kw.averageStrainStress() || kw.averageSurfaceForces()) {
    dual = std::make_unique<FFTImage>(field.nComponents, field.nFirst, field.nSecond,
                                      field.nThird, field.getDualFieldName());
    field.computeStress(*dual, outputContext(step));
  }
  // The lock stays until the step's matrices and bounds are written and its state is stored
  // (closeStepOutput): a run stopped before leaves a step that a restart does again.
  createOutputLock(outputDirectory_);
  if (kw.writeVtkOutput()) writeFields(fieldFileName(step), field, *dual);
  writeAveragesOfStep(step, field, dual.get());
}

void RunSequence::writeFields(const std::string& fileName, const ElasticityHyperelasticityImage& field,
                              const FFTImage& dual) {
  timers_.outputVtk.start();
  const KeyWordsLattora& kw = *keywords_;
  const ColorImage& colours = geometry_->RealVoxelImage;
  // The fields lie where the colour source put its grid: a .vti geometry keeps its extent.
  const std::array<std::uint64_t, 3> begin = {colours.extentBeginX, colours.extentBeginY,
                                              colours.extentBeginZ};
  std::array<std::int64_t, 6> extent{};
  for (int axis = 0; axis < 3; ++axis) {
    extent[2 * axis] = static_cast<std::int64_t>(begin[axis]);
    extent[2 * axis + 1] = static_cast<std::int64_t>(begin[axis] + gridSize_[axis]);
  }
  saveVtkOrVti(fileName, extent, kw.compressFiles(), [&](DataWriter& writer) {
    colours.addMaterialsToFile(writer);
    // A restart reads the solution back from these files: a run that stores its states
    // writes every component, whatever the component lists say.
    field.addStrainStressToFile(writer, dual, kw, savesStates_);
  });
  timers_.outputVtk.stop();
}

// The result file's lines of the step before its effective matrices; the file is written
// only when one of them is asked for.
void RunSequence::writeAveragesOfStep(int step, const ElasticityHyperelasticityImage& field,
                                      const FFTImage* dual) {
  const KeyWordsLattora& kw = *keywords_;
  const bool costs = kw.writeNumberOfMatrixVectorProductsAndNewtonRaphsonSteps();
  if (!kw.averageInternalVariables() && !kw.minMaxInternalVariables() &&
      !kw.averageStrainStress() && !kw.averageSurfaceForces() && !costs)
    return;
  std::ofstream out = openResultFile(kw, outputDirectory_, step);
  const std::string formulation = kw.problemFormulation();
  if (kw.averageInternalVariables()) {
    timers_.averagingInternalVariables.start();
    writeInternalVariableAverages(out, *materials_, *geometry_, formulation);
    timers_.averagingInternalVariables.stop();
  }
  if (kw.minMaxInternalVariables()) {
    timers_.minMaxInternalVariables.start();
    writeInternalVariableMinMax(out, *materials_, *geometry_, formulation);
    timers_.minMaxInternalVariables.stop();
  }
  timers_.averagingStrainStress.start();
  const StepContext ctx = outputContext(step);
  if (kw.averageStrainStress()) writeAverages(out, kw, field.computeAverages(*dual, ctx));
  if (kw.averageSurfaceForces())
    writeSurfaceForces(out, kw, field.computeSurfaceForces(*dual, ctx));
  writeComputationalCosts(out, kw, counters_.matrixVectorProducts, 0);
  timers_.averagingStrainStress.stop();
}

void RunSequence::finishRun() {
  timers_.allocation.start();
  const std::uint64_t realKB = realMemoryKB();
  if (fields_ && fields_->deltaE) fields_->deltaE->destroyPlansAndCleanupThreads();
  timers_.allocation.stop();
  saveMaterialState(*keywords_, *materials_, *geometry_, outputDirectory_);
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
  estimate.planKB = planKB_;
  figures.estimateKB = estimateMemoryKB(*keywords_, estimate);
  figures.realKB = realKB;
  figures.iterations = static_cast<int>(iterations_);
  printRunReport(timers_, figures);
}

}  // namespace gridmoor
