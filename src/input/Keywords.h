// The parameter store of a run, base part: mesh and file settings, the solver settings and
// the general output settings, read once from the parameter tree into typed members.
#pragma once

#include <iosfwd>
#include <string>

#include "input/Parameter.h"
#include "input/XmlNode.h"

namespace gridmoor {

class Keywords {
 public:
  // Key texts of the path schema and the parsed defaults; nothing is read.
  Keywords() = default;
  // Path schema, all settings of this class read from the tree.
  explicit Keywords(const XmlNode& tree);
  virtual ~Keywords() = default;

  // Members register themselves by address, so a store is never copied or moved.
  Keywords(const Keywords&) = delete;
  Keywords& operator=(const Keywords&) = delete;

  // Reads every registered setting with its current key text, in declaration order.
  virtual void readParameters(const XmlNode& tree);
  // The parameter blocks on the standard output or the given stream.
  void printParameters();
  virtual void printParameters(std::ostream& out);

  // All settings of the store, base members first.
  const ParameterList& parameters() const { return parameters_; }

 protected:
  // The block: a blank line, the heading, one "key value" line per setting, the closing line.
  void printBlock(std::ostream& out, ParameterBlock block, const std::string& heading,
                  const std::string& closing) const;

  ParameterList parameters_;  // declared first: every member below registers into it

  using enum ParameterBlock;

 public:
  // Mesh and geometry files.
  Parameter<bool> changeResolution{parameters_, Mesh, "input/Mesh/ChangeResolution", "1"};
  Parameter<double> resolutionX{parameters_, Mesh, "input/Mesh/ResolutionX", required};
  Parameter<double> resolutionY{parameters_, Mesh, "input/Mesh/ResolutionY", required};
  Parameter<double> resolutionZ{parameters_, Mesh, "input/Mesh/ResolutionZ", required};
  Parameter<std::string> inputLdtFile{parameters_, Mesh, "input/Mesh/InputLdtFile", required};
  Parameter<std::string> inputLofFile{parameters_, Mesh, "input/Mesh/InputLofFile", ""};
  Parameter<std::string> boxelUnits{parameters_, Mesh, "input/Mesh/BoxelUnits", required};
  Parameter<std::string> eModulUnit{parameters_, Mesh, "input/MaterialData/EModulUnit",
                                    required};
  Parameter<std::string> hybridMixingFormula{parameters_, Mesh, "input/Mesh/HybridMixingFormula",
                                             "rotatedLaminate"};
  Parameter<std::string> resamplingMode{parameters_, Mesh, "input/Mesh/ResamplingMode", "None"};
  Parameter<bool> fastEstimateSolution{parameters_, Mesh, "input/Mesh/FastEstimateSolution", "0"};
  Parameter<bool> reconstructSolution{parameters_, Mesh, "input/Mesh/ReconstructSolution", "0"};
  Parameter<bool> saveResampledGeometry{parameters_, Mesh, "input/Mesh/SaveResampledGeometry",
                                        "0"};
  Parameter<std::string> resampledGeometryFilename{parameters_, Mesh,
                                                   "input/Mesh/ResampledGeometryFilename", ""};
  Parameter<int> resamplingResolutionX{parameters_, Mesh, "input/mesh/ResamplingResolutionX",
                                       "0"};
  Parameter<int> resamplingResolutionY{parameters_, Mesh, "input/mesh/ResamplingResolutionY",
                                       "0"};
  Parameter<int> resamplingResolutionZ{parameters_, Mesh, "input/mesh/ResamplingResolutionZ",
                                       "0"};
  Parameter<std::string> geometry{parameters_, Mesh, "input/mesh/Geometry", "static"};
  Parameter<int> fluidColor{parameters_, Mesh, "Postprocessing/FluidColor", "0"};
  Parameter<bool> externalForce{parameters_, Mesh, "input/Mesh/ExternalForce", "0"};
  Parameter<bool> scaleExternalForce{parameters_, Mesh, "input/Mesh/ScaleExternalForce", "1"};
  Parameter<std::string> externalForceFile{parameters_, Mesh, "input/Mesh/ExternalForceFile", ""};
  Parameter<std::string> externalForceField{parameters_, Mesh, "input/Mesh/ExternalForceField",
                                            ""};
  Parameter<bool> volumeInformation{parameters_, Mesh, "input/mesh/VolumeInformation", "0"};
  Parameter<std::string> volumeInformationFile{parameters_, Mesh,
                                               "input/mesh/VolumeInformationFile", ""};
  Parameter<bool> normalInformation{parameters_, Mesh, "input/mesh/NormalInformation", "0"};
  Parameter<std::string> normalInformationFile{parameters_, Mesh,
                                               "input/mesh/NormalInformationFile", ""};
  Parameter<bool> referenceSolution{parameters_, Mesh, "input/Mesh/ReferenceSolution", "0"};
  Parameter<std::string> referenceSolutionFile{parameters_, Mesh,
                                               "input/Mesh/ReferenceSolutionFile", ""};
  Parameter<bool> referenceGradient{parameters_, Mesh, "input/Mesh/ReferenceGradient", "0"};
  Parameter<std::string> referenceGradientFile{parameters_, Mesh,
                                               "input/Mesh/ReferenceGradientFile", ""};
  Parameter<bool> referenceFlux{parameters_, Mesh, "input/Mesh/ReferenceFlux", "0"};
  Parameter<std::string> referenceFluxFile{parameters_, Mesh, "input/Mesh/ReferenceFluxFile", ""};

  // Solver.
  Parameter<bool> updateReferenceMaterial{parameters_, Solution,
                                          "input/Solution/UpdateReferenceMaterial", "1"};
  Parameter<bool> noisy{parameters_, Solution, "input/Solution/Noisy", required};
  Parameter<std::string> iterativeMethod{parameters_, Solution, "input/Solution/IterativeMethod",
                                         required};
  Parameter<bool> accelerateWithEyreMilton{parameters_, Solution,
                                           "input/Solution/accelerateWithEyreMilton", "0"};
  Parameter<std::string> plannerFlag{parameters_, Solution, "input/Solution/PlannerFlag",
                                     "Estimate"};
  Parameter<double> alpha{parameters_, Solution, "input/Solution/Alpha", "2.0"};
  Parameter<double> beta{parameters_, Solution, "input/Solution/Beta", "-2.0"};
  Parameter<FilterType> filter{parameters_, Solution, "input/Solution/Filter", "None"};
  // Must stay before greenOperator: "Discretized" there takes this member's word.
  Parameter<GreenOperatorType> finiteDifference{parameters_, Solution,
                                                "input/Solution/FiniteDifference",
                                                "StaggeredGrid"};
  Parameter<GreenOperatorType> greenOperator{parameters_, Solution, "input/Solution/GreenOperator",
                                             required};
  Parameter<bool> specializeOperators{parameters_, Solution, "input/Solution/SpecializeOperators",
                                      "0"};
  Parameter<bool> precalculateG0{parameters_, Solution, "input/Solution/PrecalculateG0", "0"};
  Parameter<double> hourGlassControl{parameters_, Solution, "input/Solution/HourGlassControl",
                                     "0"};
  Parameter<bool> calculateBounds{parameters_, Solution, "input/Solution/CalculateBounds", "1"};
  Parameter<ExtrapolationType> extrapolation{parameters_, Solution,
                                             "input/Solution/Extrapolation", "MemoryEfficient"};
  Parameter<int> restartMaxIter{parameters_, Solution, "input/Solution/restartMaxIter", "100"};
  Parameter<int> restartMinIter{parameters_, Solution, "input/Solution/restartMinIter", "5"};
  Parameter<int> maxIter{parameters_, Solution, "input/Solution/maxIter", required};
  Parameter<bool> linearizeWithNR{parameters_, Solution, "input/Solution/linearizeWithNR", "0"};
  Parameter<int> maxIterNR{parameters_, Solution, "input/Solution/maxIterNR", "1"};
  Parameter<int> maxRunTime{parameters_, Solution, "input/Solution/maxRunTime", required};
  Parameter<int> nThreads{parameters_, Solution, "input/Solution/nThreads", "0"};
  Parameter<double> convergenceCriterion{parameters_, Solution,
                                         "input/Solution/ConvergenceCriterion", required};
  Parameter<int> checkIntervallLength{parameters_, Solution,
                                      "input/Solution/checkIntervallLength", "1"};
  Parameter<double> convergenceCriterionNR{parameters_, Solution,
                                           "input/Solution/ConvergenceCriterionNR", "1"};
  Parameter<int> maxIterNRMaterialLaw{parameters_, Solution,
                                      "input/Solution/maxIterNRMaterialLaw", "1"};
  Parameter<double> convergenceCriterionNRMaterialLaw{
      parameters_, Solution, "input/Solution/ConvergenceCriterionNRMaterialLaw", "1"};
  Parameter<bool> estimateMemory{parameters_, Solution, "input/Solution/EstimateMemory",
                                 required};
  Parameter<std::string> convergenceNorm{parameters_, Solution, "input/Solution/ConvergenceNorm",
                                         "Simple"};
  Parameter<int> vtiOutputFactor{parameters_, Solution, "input/Solution/VTIOutputFactor", "1"};
  Parameter<bool> simulation{parameters_, Solution, "mpi/Simulation", "0"};
  Parameter<int> numberOfProcesses{parameters_, Solution, "mpi/NumberOfProcesses", "1"};

  // General output.
  Parameter<bool> writeVolumeInformation{parameters_, Postprocessing,
                                         "Postprocessing/WriteVolumeInformation", "0"};
  Parameter<bool> writeNormalInformation{parameters_, Postprocessing,
                                         "Postprocessing/WriteNormalInformation", "0"};
  Parameter<std::string> exportSolution{parameters_, Postprocessing,
                                        "Postprocessing/ExportSolution", "vtk"};
  Parameter<std::string> exportSolutionVtkFileName{
      parameters_, Postprocessing, "Postprocessing/ExportSolutionVtkFileName", ""};
  Parameter<std::string> writeDasFilename{parameters_, Postprocessing,
                                          "Postprocessing/WriteDasFilename", ""};
  Parameter<bool> compressFiles{parameters_, Postprocessing, "Postprocessing/CompressFiles", "1"};
  Parameter<bool> exportReferenceSolution{parameters_, Postprocessing,
                                          "Postprocessing/ExportReferenceSolution", "0"};
  Parameter<bool> exportReferenceSolutionError{parameters_, Postprocessing,
                                               "Postprocessing/ExportReferenceSolutionError", "0"};
  Parameter<bool> exportReferenceGradient{parameters_, Postprocessing,
                                          "Postprocessing/ExportReferenceGradient", "0"};
  Parameter<bool> exportReferenceGradientError{parameters_, Postprocessing,
                                               "Postprocessing/ExportReferenceGradientError", "0"};
  Parameter<bool> exportReferenceFlux{parameters_, Postprocessing,
                                      "Postprocessing/ExportReferenceFlux", "0"};
  Parameter<bool> exportReferenceFluxError{parameters_, Postprocessing,
                                           "Postprocessing/ExportReferenceFluxError", "0"};
  Parameter<std::string> saveRestartFile{parameters_, Postprocessing,
                                         "Postprocessing/SaveRestartFile", required};
  Parameter<bool> writeExternalForce{parameters_, Postprocessing,
                                     "Postprocessing/WriteExternalForce", "0"};
  Parameter<bool> writeNumberOfMatrixVectorProductsAndNewtonRaphsonSteps{
      parameters_, Postprocessing,
      "Postprocessing/WriteNumberOfMatrixVectorProductsAndNewtonRaphsonSteps", "0"};
};

}  // namespace gridmoor
