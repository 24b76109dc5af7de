// The parameter store of a mechanical run: adds the load, time-step, homogenization and
// elasticity output settings to the base store, and the path or load key schema.
#pragma once

#include <array>
#include <iosfwd>
#include <string>
#include <vector>

#include "input/Keywords.h"
#include "input/LoadComponents.h"

namespace gridmoor {

class KeywordsElasticity : public Keywords {
 public:
  // Key texts of the path schema and parsed defaults; nothing is read.
  KeywordsElasticity() = default;
  // Chooses the schema by "Properties/Version" ("2014": path schema, any other text: load
  // schema) and reads every setting.
  explicit KeywordsElasticity(const XmlNode& tree);

  using Keywords::printParameters;
  void printParameters(std::ostream& out) override;

  // Moves the load keys under "input/Load/" (and the restart file under "input/Solution/").
  void useLoadSchema();

  // Whether the run writes the vtk/vti solution and the DAS file. Here: when a file name is
  // given; the host-application store answers from its own two switches.
  virtual bool writeVtkOutput() const;
  virtual bool writeDasOutput() const;
  virtual bool computeVoigtReussBounds() const;

  // "Strain", "Stress", "Polarization", "Eigenstrain" or "DeformationGradient"; any other
  // combination of the deformation, primary unknown and load type ends the run.
  std::string problemFormulation() const;

  // Time grid. Every query first checks the grid of its type and ends the run, naming the
  // key, on one that can not be walked: fewer than two or non-increasing times, no steps,
  // a stop not after the start, a logarithmic start that is not positive.
  int numberOfSteps() const;
  // Step i runs from timeOfStep(i) to timeOfStep(i + 1).
  double timeOfStep(int i) const;
  double stepLength(int i) const;
  // Share of the whole time span reached at the end of step i.
  double stepFraction(int i) const;
  bool isSingleStep() const;

  // Macroscopic load: the kind the formulation prescribes, by the load type keys. An unknown
  // load type word ends the run, naming its key.
  LoadKind macroscopicLoadKind() const;
  // The load vector at `time` (6 or 9 entries, result is resized), negated with inverseSign.
  void macroscopicLoadAt(double time, std::vector<double>& result, bool inverseSign = false) const;
  // The change of the load over step i, from timeOfStep(i) to timeOfStep(i + 1).
  void macroscopicLoadIncrement(int i, std::vector<double>& result) const;
  // Size of the unit load of the selected kind for homogenization.
  double macroscopicLoadCaseIncrement() const;
  double temperatureChangeAt(double time) const;
  bool isZeroLoad() const;
  bool isZeroThermalLoad() const;
  // Bit i (Voigt slot XX, YY, ZZ, YZ, XZ, XY) set: component i is prescribed as strain,
  // clear: as stress.
  unsigned mixedMask() const;
  // Bit 3 * row + column set: that component of F is prescribed, clear: that of P.
  unsigned mixedTensorMask() const;
  // The nine numbers of CoordinateSystem, row-major.
  std::array<double, 9> coordinateSystemMatrix() const;

  // Load cases of homogenization: 0 to 5 the unit loads in Voigt order, 6 the thermal one.
  bool hasLoadCase(int loadCase) const;
  int numberOfLoadCases() const;
  int numberOfMechanicalLoadCases() const;
  // Bit c set for each mechanical case c that runs.
  unsigned loadCaseMask() const;

  // "Timestep = ", "Time = ", "Temperature Change = " and "Macroscopic Load = " lines at the
  // start of step i; nothing for a run of one step.
  void printStepHeader(int i) const;
  void printStepHeader(int i, std::ostream& out) const;

  // Load and formulation.
  Parameter<std::string> primaryUnknown{parameters_, Elasticity, "input/Solution/PrimaryUnknown",
                                        "Strain"};
  Parameter<std::string> typeOfMacroscopicLoadStrainStress{
      parameters_, Elasticity, "input/Solution/TypeOfMacroscopicLoadStrainStress", "Strain"};
  Parameter<std::string> typeOfMacroscopicLoadPolarizationEigenstrain{
      parameters_, Elasticity, "input/Solution/TypeOfMacroscopicLoadPolarizationEigenstrain",
      "Strain"};
  Parameter<std::string> typeOfDeformation{parameters_, Elasticity,
                                           "input/Solution/TypeOfDeformation", "Small"};

  // Homogenization.
  Parameter<bool> writeEffectiveMatrix{parameters_, Elasticity,
                                       "Postprocessing/WriteEffectiveMatrix", required};
  Parameter<std::string> effectiveMatrixFilename{
      parameters_, Elasticity, "Postprocessing/EffectiveMatrixFilename", required};
  Parameter<int> effectiveMatrixPrecision{parameters_, Elasticity,
                                          "Postprocessing/EffectiveMatrixPrecision", "6"};
  Parameter<bool> useSubvolumeForHomogenization{
      parameters_, Elasticity, "Postprocessing/UseSubvolumeForHomogenization", "0"};
  Parameter<double> subvolumeForHomogenizationSizeX{
      parameters_, Elasticity, "Postprocessing/SubvolumeForHomogenizationSizeX", "1"};
  Parameter<double> subvolumeForHomogenizationSizeY{
      parameters_, Elasticity, "Postprocessing/SubvolumeForHomogenizationSizeY", "1"};
  Parameter<double> subvolumeForHomogenizationSizeZ{
      parameters_, Elasticity, "Postprocessing/SubvolumeForHomogenizationSizeZ", "1"};
  Parameter<bool> usingLinearizedMaterialLawForHomogenization{
      parameters_, Elasticity, "Postprocessing/UsingLinearizedMaterialLawForHomogenization", "0"};

  // Time grid.
  Parameter<TimeStepType> timeStepType{parameters_, Elasticity, "input/Solution/TimeStepType",
                                       "None"};
  Parameter<DoubleList> timeSteps{parameters_, Elasticity, "input/Solution/TimeSteps", ""};
  Parameter<double> timeStart{parameters_, Elasticity, "input/Solution/TimeStart", ""};
  Parameter<int> timeNSteps{parameters_, Elasticity, "input/Solution/TimeNSteps", ""};
  Parameter<double> timeStop{parameters_, Elasticity, "input/Solution/TimeStop", ""};
  Parameter<std::string> timeUnit{parameters_, Elasticity, "input/Solution/TimeUnit", ""};

  // Load cases and output fields.
  Parameter<bool> computeAllLoadCases{parameters_, Elasticity,
                                      "Postprocessing/ComputeAllLoadCases", "0"};
  Parameter<bool> computeThermalExpansion{parameters_, Elasticity,
                                          "Postprocessing/ComputeThermalExpansion", "0"};
  Parameter<WordList> stressComponents{parameters_, Elasticity, "Postprocessing/StressComponents",
                                       required};
  Parameter<WordList> strainComponents{parameters_, Elasticity, "Postprocessing/StrainComponents",
                                       required};
  Parameter<WordList> displacementComponents{parameters_, Elasticity,
                                             "Postprocessing/DisplacementComponents", required};
  Parameter<WordList> residuumComponents{parameters_, Elasticity,
                                         "Postprocessing/ResiduumComponents", ""};
  Parameter<std::string> displacementCalibration{parameters_, Elasticity,
                                                 "Postprocessing/DisplacementCalibration",
                                                 "Average"};
  Parameter<IntList> displacementCalibrationVoxel{
      parameters_, Elasticity, "Postprocessing/DisplacementCalibrationVoxel", "0,0,0"};
  Parameter<bool> internalVariables{parameters_, Elasticity, "Postprocessing/InternalVariables",
                                    ""};
  Parameter<std::string> equivalencePrinciple{parameters_, Elasticity,
                                              "Postprocessing/EquivalencePrinciple", required};
  Parameter<bool> averageStrainStress{parameters_, Elasticity,
                                      "Postprocessing/AverageStrainStress", "0"};
  Parameter<std::string> averageStrainStressCoordinateSystem{
      parameters_, Elasticity, "Postprocessing/AverageStrainStressCoordinateSystem", "User"};
  Parameter<bool> averageInternalVariables{parameters_, Elasticity,
                                           "Postprocessing/AverageInternalVariables", "0"};
  Parameter<bool> minMaxInternalVariables{parameters_, Elasticity,
                                          "Postprocessing/MinMaxInternalVariables", "0"};
  Parameter<bool> averageSurfaceForces{parameters_, Elasticity,
                                       "Postprocessing/AverageSurfaceForces", "0"};

  // Macroscopic load.
  Parameter<std::string> macroscopicStrainStressType{
      parameters_, Elasticity, "input/Solution/MacroscopicStrainStressType", "Zero"};
  Parameter<DoubleList> coordinateSystem{parameters_, Elasticity,
                                         "input/Solution/CoordinateSystem", "1,0,0,0,1,0,0,0,1"};
  Parameter<WordList> strainList{parameters_, Elasticity, "input/Solution/StrainList",
                                 "1,2,3,4,5,6"};
  Parameter<WordList> deformationGradientList{parameters_, Elasticity,
                                              "input/Solution/DeformationGradientList",
                                              "1,2,3,4,5,6,7,8,9"};
  Parameter<std::string> typeOfMacroscopicLoadDeformationGradient{
      parameters_, Elasticity, "input/Solution/TypeOfMacroscopicLoadDeformationGradient",
      "DeformationGradient"};
  Parameter<DoubleList> macroscopicStrain{parameters_, Elasticity,
                                          "input/Solution/MacroscopicStrain", "0,0,0,0,0,0"};
  Parameter<DoubleList> macroscopicStress{parameters_, Elasticity,
                                          "input/Solution/MacroscopicStress", "0,0,0,0,0,0"};
  Parameter<DoubleList> macroscopicStrainStress{
      parameters_, Elasticity, "input/Solution/MacroscopicStrainStress", "0,0,0,0,0,0"};
  Parameter<DoubleList> macroscopicPolarization{
      parameters_, Elasticity, "input/Solution/MacroscopicPolarization", "0,0,0,0,0,0"};
  Parameter<DoubleList> macroscopicEigenstrain{
      parameters_, Elasticity, "input/Solution/MacroscopicEigenstrain", "0,0,0,0,0,0"};
  Parameter<DoubleList> macroscopicDeformationGradient{
      parameters_, Elasticity, "input/Solution/MacroscopicDeformationGradient",
      "1,0,0,0,1,0,0,0,1"};
  Parameter<DoubleList> macroscopicFirstPK{parameters_, Elasticity,
                                           "input/Solution/MacroscopicFirstPK",
                                           "0,0,0,0,0,0,0,0,0"};
  Parameter<DoubleList> macroscopicDeformationGradientFirstPK{
      parameters_, Elasticity, "input/Solution/MacroscopicDeformationGradientFirstPK",
      "1,0,0,0,1,0,0,0,1"};
  Parameter<double> macroscopicTemperatureChange{
      parameters_, Elasticity, "input/Solution/MacroscopicTemperatureChange", "0.0"};
  Parameter<Table> macroscopicStrainValues{parameters_, Elasticity,
                                           "input/Solution/MacroscopicStrainValues", ""};
  Parameter<Table> macroscopicStressValues{parameters_, Elasticity,
                                           "input/Solution/MacroscopicStressValues", ""};
  Parameter<Table> macroscopicStrainStressValues{
      parameters_, Elasticity, "input/Solution/MacroscopicStrainStressValues", ""};
  Parameter<Table> macroscopicPolarizationValues{
      parameters_, Elasticity, "input/Solution/MacroscopicPolarizationValues", ""};
  Parameter<Table> macroscopicEigenstrainValues{
      parameters_, Elasticity, "input/Solution/MacroscopicEigenstrainValues", ""};
  Parameter<Table> macroscopicDeformationGradientValues{
      parameters_, Elasticity, "input/Solution/MacroscopicDeformationGradientValues", ""};
  Parameter<Table> macroscopicFirstPKValues{parameters_, Elasticity,
                                            "input/Solution/MacroscopicFirstPKValues", ""};
  Parameter<Table> macroscopicDeformationGradientFirstPKValues{
      parameters_, Elasticity, "input/Solution/MacroscopicDeformationGradientFirstPKValues", ""};
  Parameter<Table> macroscopicTemperatureChangeValues{
      parameters_, Elasticity, "input/Solution/MacroscopicTemperatureChangeValues",
      "0.0,0.0;1.0,0.0"};
  Parameter<double> macroscopicStrainIncrement{
      parameters_, Elasticity, "input/Solution/MacroscopicStrainIncrement", "0.01"};
  Parameter<double> macroscopicStressIncrement{
      parameters_, Elasticity, "input/Solution/MacroscopicStressIncrement", "0.01"};
  Parameter<double> macroscopicStrainStressIncrement{
      parameters_, Elasticity, "input/Solution/MacroscopicStrainStressIncrement", "0.01"};
  Parameter<double> macroscopicPolarizationIncrement{
      parameters_, Elasticity, "input/Solution/MacroscopicPolarizationIncrement", "0.01"};
  Parameter<double> macroscopicEigenstrainIncrement{
      parameters_, Elasticity, "input/Solution/MacroscopicEigenstrainIncrement", "0.01"};
  Parameter<double> macroscopicDeformationGradientIncrement{
      parameters_, Elasticity, "input/Solution/MacroscopicDeformationGradientIncrement", "0.01"};
  Parameter<double> macroscopicFirstPKIncrement{
      parameters_, Elasticity, "input/Solution/MacroscopicFirstPKIncrement", "0.01"};
  Parameter<double> macroscopicDeformationGradientFirstPKIncrement{
      parameters_, Elasticity, "input/Solution/MacroscopicDeformationGradientFirstPKIncrement",
      "0.01"};
  Parameter<double> macroscopicTemperatureChangeIncrement{
      parameters_, Elasticity, "input/Solution/MacroscopicTemperatureChangeIncrement", "1.0"};

  // Bounds, deformed geometry, residuum.
  Parameter<bool> voigtReussBounds{parameters_, Elasticity, "Postprocessing/VoigtReussBounds",
                                   "0"};
  Parameter<bool> deformGeometry{parameters_, Elasticity, "Postprocessing/DeformGeometry", "0"};
  Parameter<bool> deformGeometryPeriodicX{parameters_, Elasticity,
                                          "Postprocessing/DeformGeometryPeriodicX", "0"};
  Parameter<bool> deformGeometryPeriodicY{parameters_, Elasticity,
                                          "Postprocessing/DeformGeometryPeriodicY", "0"};
  Parameter<bool> deformGeometryPeriodicZ{parameters_, Elasticity,
                                          "Postprocessing/DeformGeometryPeriodicZ", "0"};
  Parameter<std::string> symmetryOrVolumePreserving{
      parameters_, Elasticity, "Postprocessing/SymmetryOrVolumePreserving", "Volume"};
  Parameter<std::string> deformedGeometryFilename{parameters_, Elasticity,
                                                  "Postprocessing/DeformedGeometryFilename", ""};
  Parameter<bool> writeVolumeInformationOnDeformedGeometry{
      parameters_, Elasticity, "Postprocessing/WriteVolumeInformationOnDeformedGeometry", "0"};
  Parameter<bool> writeDeformedSolutionFields{parameters_, Elasticity,
                                              "Postprocessing/WriteDeformedSolutionFields", "0"};
  Parameter<bool> writeInternalForce{parameters_, Elasticity, "Postprocessing/WriteInternalForce",
                                     "0"};
  Parameter<bool> calculateResiduum{parameters_, Elasticity, "input/Solution/CalculateResiduum",
                                    "0"};
  Parameter<bool> calculateOnDeformedGeometry{parameters_, Elasticity,
                                              "input/Solution/CalculateOnDeformedGeometry", "0"};

  // Material state and regularisation.
  Parameter<bool> saveState{parameters_, Elasticity, "input/MaterialData/SaveState", "0"};
  Parameter<std::string> saveStateFilename{parameters_, Elasticity,
                                           "input/MaterialData/SaveStateFilename", ""};
  Parameter<bool> loadState{parameters_, Elasticity, "input/MaterialData/LoadState", "0"};
  Parameter<std::string> loadStateFilename{parameters_, Elasticity,
                                           "input/MaterialData/LoadStateFilename", ""};
  Parameter<bool> tikhonovRegularization{parameters_, Elasticity,
                                         "input/MaterialData/TikhonovRegularization", "0"};
  Parameter<double> tikhonovRegularizationAlpha{
      parameters_, Elasticity, "input/MaterialData/TikhonovRegularizationAlpha", "0.0"};
  Parameter<bool> scaleTemperature{parameters_, Elasticity, "input/Solution/ScaleTemperature",
                                   "0"};
  Parameter<DoubleList> temperatureDiff{parameters_, Elasticity, "input/Solution/TemperatureDiff",
                                        "1,1,1"};
  Parameter<WordList> computeLoadCaseList{parameters_, Elasticity,
                                          "Postprocessing/ComputeLoadCaseList", required};

 private:
  void checkTimeGrid() const;
  [[noreturn]] void unknownTimeStepType() const;
  // The load type word that decides the kind, and the key it was read under.
  const Parameter<std::string>& loadTypeParameter() const;
  const Parameter<DoubleList>& constantLoadOf(LoadKind kind) const;
  const Parameter<Table>& loadTableOf(LoadKind kind) const;
  const Parameter<double>& loadCaseIncrementOf(LoadKind kind) const;
  // The constant load of the kind, ended with a message naming the key when it has not as
  // many entries as the kind has components.
  const DoubleList& checkedConstantLoad(LoadKind kind) const;
};

}  // namespace gridmoor
