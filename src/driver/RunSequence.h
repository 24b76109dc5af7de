// The run sequence of one solver process: parameter file, console, parameters, geometry,
// materials, fields, time steps, output and report, one short operation per step.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "driver/RunTimers.h"
#include "solvers/NeumannSeries.h"
#include "input/XmlNode.h"

namespace gridmoor {

class Geometry;
class KeyWordsLattora;
class KeywordsElasticity;
class MaterialElasticVector;
class FFTImage;
class IsotropicLinearElasticMaterial;
class LoadStepSolver;
struct SolverFields;
class LoadCaseResponses;
struct LoadCaseRecord;

// The materials' own stored state (input/MaterialData): with LoadState it is read at the start
// from LoadStateFilename, with SaveState written at the end to SaveStateFilename, both names
// taken in the output directory. Each store of each law with history has its own file; laws
// without history store nothing.
void loadMaterialState(const KeywordsElasticity& keywords, const MaterialElasticVector& materials,
                       const Geometry& geometry, const std::string& outputDirectory);
void saveMaterialState(const KeywordsElasticity& keywords, const MaterialElasticVector& materials,
                       const Geometry& geometry, const std::string& outputDirectory);

class RunSequence {
 public:
  RunSequence(int argc, char** argv);
  ~RunSequence();
  // Walks the sequence; returns the exit code of a normal end (failures exit on their own).
  int run();

  // Directory part of a path, with its trailing separator ('/' or '\\'); empty without one.
  static std::string directoryOf(const std::string& path);
  // An input file named in the parameter file: relative names are taken relative to the
  // parameter file's directory, so a run works from any current directory.
  static std::string resolveInputPath(const std::string& directory, const std::string& name);

 private:
  void checkArguments();
  void readParameterTree();
  void redirectStreams();
  void printBanner();
  void installHandlers();
  void removeStopRequest();
  void readKeywords();
  void takeLicence();
  void startProgress();
  void readGeometry();
  void setEstimateMode();
  void buildMaterials();
  void findRestartStep();
  void finishMaterials();
  void readOrientation();
  void decideSolve();
  void allocateFields();
  void printMemoryEstimate();
  void makePlans();
  void runSteps();
  void closeLastStep(int step);
  int progressPartsPerStep() const;
  void selectReference(int step);
  void extrapolate(int step);
  StepContext outputContext(int step) const;
  void writeStepOutput(int step);
  // The field file `fileName` (.vti, or .vtk for the legacy format) of the colours, `field`
  // and its dual field.
  void writeFields(const std::string& fileName, const ElasticityHyperelasticityImage& field,
                   const FFTImage& dual);
  // dual: the dual field, or null when neither the averages nor the surface forces are due.
  void writeAveragesOfStep(int step, const ElasticityHyperelasticityImage& field,
                           const FFTImage* dual);
  void homogenize(int step);
  void writeEffectiveMatrices(int step, const std::array<LoadCaseRecord, 7>& records);
  void writeBounds(int step);
  void finishLoadCases(int step);
  LoadCaseResponses loadCaseResponses(int step) const;
  void writeResultText(int step, const std::string& text);
  void finishRun();
  [[noreturn]] void stopAtMissingStep(const std::string& what);

  // Going on from an earlier, stopped run of the same load history (RunSequenceRestart.cpp).
  std::string fieldFileName(int step) const;
  std::string stateFileName(int step) const;
  std::vector<std::string> stepFiles(int step) const;
  bool stepIsComplete(int step) const;
  bool canGoOnFrom(int step) const;
  void removeStepFiles(int fromStep) const;
  void removeStaleLoadCaseFiles() const;
  bool isInputFile(const std::string& path) const;
  void readRestartState();
  void readPrimaryField(FFTImage& field, const std::string& fileName,
                        const std::string& fieldName) const;
  void closeStepOutput(int step) const;

  std::vector<std::string> arguments_;
  std::string parameterPath_;
  std::string outputDirectory_;
  XmlNode tree_;
  std::unique_ptr<KeyWordsLattora> keywords_;
  std::unique_ptr<Geometry> geometry_;
  std::array<std::uint64_t, 3> gridSize_{};
  std::unique_ptr<MaterialElasticVector> materials_;
  bool estimateOnly_ = false;
  bool orientationRequired_ = false;
  bool allLinear_ = false;
  bool hybrid_ = false;
  bool restart_ = false;
  // The step the loop starts at: 0, or the step a restart goes on from.
  int firstStep_ = 0;
  // SaveRestartFile names a .gmr file: every step stores its state, and a run may restart.
  bool savesStates_ = false;
  bool pathIndependent_ = true;
  bool needsThermal_ = false;
  bool runsSolver_ = false;
  int threads_ = 0;
  std::int64_t iterations_ = 0;
  // Resident size before the solver fields: the base of the report's memory estimate.
  std::uint64_t baselineKB_ = 0;
  // What the plans, the threads and the Green operator added to it.
  std::uint64_t planKB_ = 0;
  std::unique_ptr<SolverFields> fields_;
  std::unique_ptr<IsotropicLinearElasticMaterial> reference_;
  std::unique_ptr<LoadStepSolver> solver_;
  SolverCounters counters_;
  RunTimers timers_;
};

}  // namespace gridmoor
