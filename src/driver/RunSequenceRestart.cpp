// The part of the run sequence that lets a long load history stop and go on: the scan for the
// last finished step of an earlier run, its removal of stale files, the restart state read
// back into the fields, and the state every step stores.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "common/Fatal.h"
#include "common/FileNames.h"
#include "driver/RunSequence.h"
#include "formats/RestartFiles.h"
#include "formats/VtiReader.h"
#include "input/KeyWordsLattora.h"
#include "materials/MaterialVector.h"
#include "operators/DiscreteGreenOperator.h"
#include "operators/FFTImage.h"
#include "postprocessing/LoadCaseResponses.h"
#include "postprocessing/ResultFile.h"
#include "solvers/LoadStepSolver.h"

namespace gridmoor {

namespace fs = std::filesystem;

namespace {

bool exists(const std::string& path) {
  std::error_code ignored;
  return fs::exists(path, ignored);
}

// The .pvti index that a field file written in several pieces has instead of the .vti file.
std::string indexFileOf(const std::string& vtiName) {
  return vtiName.substr(0, vtiName.size() - 4) + ".pvti";
}

// The stored material state of a step. No law of this build keeps history, so the table of
// internal variables is empty; it is written and read all the same, so that a restart only
// goes on from a step whose state was stored completely.
InternalVariables materialStateOfRun() { return InternalVariables(0, {}, 0, "InternalVariables"); }

}  // namespace

void loadMaterialState(const KeywordsElasticity& keywords, const MaterialElasticVector& materials,
                       const Geometry& geometry, const std::string& outputDirectory) {
  if (keywords.loadState())
    materials.loadState(keywords, geometry, joinPath(outputDirectory, keywords.loadStateFilename()));
}

void saveMaterialState(const KeywordsElasticity& keywords, const MaterialElasticVector& materials,
                       const Geometry& geometry, const std::string& outputDirectory) {
  if (keywords.saveState())
    materials.saveState(keywords, geometry, joinPath(outputDirectory, keywords.saveStateFilename()));
}

std::string RunSequence::fieldFileName(int step) const {
  return stepFileName(*keywords_, solutionFileName(*keywords_, outputDirectory_), step);
}

// Each step stores its own state under the step's name ("state_3.gmr" for the third step),
// as the field files are named. A state is small beside the field files of its step, and a
// step's files then stay together.
std::string RunSequence::stateFileName(int step) const {
  return stepFileName(*keywords_, restartFileName(*keywords_, outputDirectory_, -1, 0), step);
}

// What a run writes for a step and what an earlier run of the same input may have left:
// the result file, the field file (or its index) and the stored state.
std::vector<std::string> RunSequence::stepFiles(int step) const {
  std::vector<std::string> files = {resultFileName(*keywords_, outputDirectory_, step)};
  const std::string field = fieldFileName(step);
  files.push_back(field);
  if (extensionOf(field) == "vti") files.push_back(indexFileOf(field));
  if (savesStates_) files.push_back(stateFileName(step));
  return files;
}

// The state is stored last, after the step's matrices and bounds and inside the output lock:
// with the lock gone, a stored state says that every file of its step is complete.
bool RunSequence::stepIsComplete(int step) const {
  const std::string field = fieldFileName(step);
  const bool fieldOnDisk =
      exists(field) || (extensionOf(field) == "vti" && exists(indexFileOf(field)));
  return fieldOnDisk && exists(stateFileName(step));
}

// Whether the fields and the state of `step` can start the next one. Field files of another
// grid come from some other input in the same folder: they are no state of this run.
bool RunSequence::canGoOnFrom(int step) const {
  const KeyWordsLattora& kw = *keywords_;
  if (extensionOf(solutionFileName(kw, outputDirectory_)) != "vti") return false;
  if (kw.problemFormulation() != "Strain") return false;
  // The field files hold one value per voxel, the mean of its points: a discretisation with
  // several points per voxel could not take its field back from them, so it starts afresh.
  if (GreenOperatorSettings::of(kw.greenOperator(), kw.filter(), kw.specializeOperators())
          .mainRule.count != 1)
    return false;
  const std::string field = fieldFileName(step);
  VtiReader reader(field.substr(0, field.size() - 4));
  for (int axis = 0; axis < 3; ++axis)
    if (reader.getGridSize(axis) != gridSize_[axis] || reader.isPointData()) return false;
  for (const char* name : {"Strain", "Stress"}) {
    bool found = false;
    for (const VtiReader::Array& array : reader.getArrays())
      if (array.name == name && array.components == 6) found = true;
    if (!found) return false;
  }
  return std::ifstream(stateFileName(step), std::ios::binary).is_open();
}

bool RunSequence::isInputFile(const std::string& path) const {
  const KeyWordsLattora& kw = *keywords_;
  for (const std::string& input :
       {parameterPath_, resolveInputPath(outputDirectory_, kw.inputLdtFile()),
        resolveInputPath(outputDirectory_, kw.inputLofFile())}) {
    std::error_code ignored;
    if (!input.empty() && fs::equivalent(path, input, ignored)) return true;
  }
  return false;
}

// From fromStep on, also past the last step of this input: a longer history run before in
// the same folder leaves files that would read as results of this one.
void RunSequence::removeStepFiles(int fromStep) const {
  const int steps = keywords_->numberOfSteps();
  for (int step = fromStep;; ++step) {
    bool removed = false;
    for (const std::string& file : stepFiles(step)) {
      std::error_code ignored;
      if (fs::is_regular_file(file, ignored) && !isInputFile(file))
        removed = fs::remove(file, ignored) || removed;
    }
    if (step >= steps - 1 && !removed) break;
  }
}

// Markers and responses of load cases belong to one attempt at one step: only a restart that
// goes on with that very step may take them (its cases finished before the stop are not solved
// again). All others, from any step and also past the end of this history, come from another
// run or another input and are removed.
void RunSequence::removeStaleLoadCaseFiles() const {
  const int steps = keywords_->numberOfSteps();
  const int resumed = restart_ ? firstStep_ : -1;
  for (int step = 0;; ++step) {
    const bool removed = step != resumed && loadCaseResponses(step).removeAll();
    if (step >= steps - 1 && step != resumed && !removed) break;
  }
}

// The scan for the step to go on from. It walks the steps upwards from 0 and stops at the
// first one that is not complete, so that files of later steps, left by an older run, are
// never used. A lock left behind says that the output of some step was cut: when the first
// incomplete step has no file at all, the cut output is that of the step before, which is
// then done again. A complete history starts again from step 0, like a new run.
void RunSequence::findRestartStep() {
  const KeyWordsLattora& kw = *keywords_;
  savesStates_ = savesRestartStates(kw);
  // An estimate writes no file, and it leaves the files of an earlier run alone as well.
  if (estimateOnly_) return;
  const int steps = kw.numberOfSteps();
  int found = 0;
  if (savesStates_ && !kw.isSingleStep()) {
    while (found < steps && stepIsComplete(found)) ++found;
    if (found > 0 && exists(outputLockName(outputDirectory_))) {
      bool anyFile = false;
      for (const std::string& file : stepFiles(found)) anyFile = anyFile || exists(file);
      if (!anyFile) --found;
    }
  }
  restart_ = found > 0 && found < steps && canGoOnFrom(found - 1);
  firstStep_ = restart_ ? found : 0;
  removeStepFiles(firstStep_);
  removeStaleLoadCaseFiles();
  removeOutputLock(outputDirectory_);
  if (restart_)
    std::printf("Restart: the load history goes on at step %d of %d from the state %s\n",
                firstStep_ + 1, steps, stateFileName(firstStep_ - 1).c_str());
}

// The field files hold 32-bit floats, so a restarted run starts from the stored fields
// rounded to float; it then iterates to the same tolerance as a run that never stopped, and
// the results agree to that tolerance rather than bit for bit.
void RunSequence::readPrimaryField(FFTImage& field, const std::string& fileName,
                                   const std::string& fieldName) const {
  VtiReader reader(fileName.substr(0, fileName.size() - 4));
  reader.setField(fieldName, "", static_cast<std::uint32_t>(field.nComponents));
  if (reader.getGridSize(0) != field.nFirst || reader.getGridSize(1) != field.nSecond ||
      reader.getGridSize(2) != field.nThird)
    fatal("The field " + fieldName + " of " + reader.getFileName() +
          " does not have the grid of the run");
  // Straight into the padded rows of the field: no second field-sized buffer.
  VoxelBox box;
  box.begin = {field.firstBegin, 0, 0};
  box.end = {field.firstEnd, field.nSecond, field.nThird};
  reader.readFields(field, box, {});
}

// The state at the start of step i is the solution of step i - 1 and, as the last converged
// state, that of step i - 2 (zero, the initial condition, before step 1).
void RunSequence::readRestartState() {
  if (!restart_) return;
  const std::string name = fields_->E->getPrimaryFieldName();
  readPrimaryField(*fields_->E, fieldFileName(firstStep_ - 1), name);
  const bool oldFieldOfItsOwn = fields_->E_old != fields_->E && fields_->E_old != fields_->deltaE;
  if (!pathIndependent_ && oldFieldOfItsOwn) {
    if (firstStep_ >= 2)
      readPrimaryField(*fields_->E_old, fieldFileName(firstStep_ - 2), name);
    else
      static_cast<FFTImage&>(*fields_->E_old) = 0.0;
  }
  InternalVariables state = materialStateOfRun();
  state.load(stateFileName(firstStep_ - 1));
}

// The end of a step's output: its stored state, the mark of a complete step, goes last, and
// then the lock.
void RunSequence::closeStepOutput(int step) const {
  if (savesStates_) materialStateOfRun().save(stateFileName(step));
  removeOutputLock(outputDirectory_);
}

}  // namespace gridmoor
