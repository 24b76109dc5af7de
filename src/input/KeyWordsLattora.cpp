#include "input/KeyWordsLattora.h"

#include <algorithm>
#include <initializer_list>
#include <iostream>

namespace gridmoor {

KeyWordsLattora::KeyWordsLattora() { useFlatSchema(); }

KeyWordsLattora::KeyWordsLattora(const XmlNode& tree) {
  useFlatSchema();
  KeyWordsLattora::readParameters(tree);
}

void KeyWordsLattora::printParameters(std::ostream& out) {
  KeywordsElasticity::printParameters(out);
  printBlock(out, Lattora, "                 Lattora parameters ",
             "                 End Lattora parameters ");
}

bool KeyWordsLattora::hasMethod(const std::string& word) const {
  const WordList& words = methodList();
  return std::find(words.begin(), words.end(), word) != words.end();
}

// The host application's spelling. Settings not named here keep their path text. Several
// members share "input/ProblemFormulation", "input/MacroscopicLoad" and
// "input/MacroscopicTemperatureChange" on purpose: one value fills every member that the
// formulation might read, each parsed by its own type.
void KeyWordsLattora::useFlatSchema() {
  // Mesh and files.
  resolutionX.key = "input/BoxelLengthX";
  resolutionY.key = "input/BoxelLengthY";
  resolutionZ.key = "input/BoxelLengthZ";
  inputLdtFile.key = "input/GeometryDescriptionFile";
  inputLofFile.key = "input/OrientationDescriptionFile";
  boxelUnits.key = "input/BoxelUnits";
  eModulUnit.key = "input/MaterParamValues/EModulUnit";
  hybridMixingFormula.key = "input/CompositeVoxel";
  fastEstimateSolution.key = "input/Downsampling";
  reconstructSolution.key = "output/ReconstructSolution";
  fluidColor.key = "input/FluidColor";

  // Solver.
  noisy.key = "output/Verbose";
  iterativeMethod.key = "input/IterativeMethod";
  filter.key = "input/Filter";
  greenOperator.key = "input/Scheme";
  restartMaxIter.key = "input/RestartMaxIterationNumber";
  restartMinIter.key = "input/RestartMinIterationNumber";
  maxIter.key = "input/MaxIterationNumber";
  maxRunTime.key = "input/MaxRunTime";
  nThreads.key = "input/NumberOfThreads";
  convergenceCriterion.key = "input/StoppingTolerance";
  checkIntervallLength.key = "input/CheckIntervallLength";
  estimateMemory.key = "input/EstimateMemory";

  // General output.
  exportSolutionVtkFileName.key = "output/SolutionVtkFileName";
  writeDasFilename.key = "output/SolutionOutputFile";
  saveRestartFile.key = "output/SaveRestartFile";
  writeNumberOfMatrixVectorProductsAndNewtonRaphsonSteps.key = "output/WriteComputationalCosts";

  // Formulation, homogenization and output fields.
  primaryUnknown.key = "input/PrimaryUnknown";
  typeOfMacroscopicLoadStrainStress.key = "input/ProblemFormulation";
  typeOfMacroscopicLoadPolarizationEigenstrain.key = "input/ProblemFormulation";
  typeOfMacroscopicLoadDeformationGradient.key = "input/ProblemFormulation";
  typeOfDeformation.key = "input/TypeOfDeformation";
  writeEffectiveMatrix.key = "output/WriteEffectiveMatrix";
  effectiveMatrixFilename.key = "output/EffectiveMatrixFileName";
  computeAllLoadCases.key = "output/ComputeAllLoadCases";
  computeThermalExpansion.key = "output/ComputeThermalExpansion";
  computeLoadCaseList.key = "output/ComputeLoadCaseList";
  stressComponents.key = "output/StressComponents";
  strainComponents.key = "output/StrainComponents";
  displacementComponents.key = "output/DisplacementComponents";
  internalVariables.key = "output/InternalVariables";
  equivalencePrinciple.key = "output/EquivalencePrinciple";
  averageStrainStress.key = "output/AverageStrainStress";
  averageInternalVariables.key = "output/AverageInternalVariables";
  averageSurfaceForces.key = "output/AverageSurfaceForces";

  // Time grid and load.
  timeStepType.key = "input/SolverTimeStepType";
  timeSteps.key = "input/SolverTimeSteps";
  macroscopicStrainStressType.key = "input/MacroscopicLoadType";
  coordinateSystem.key = "input/CoordinateSystem";
  strainList.key = "input/StrainList";
  deformationGradientList.key = "input/DeformationGradientList";
  for (ParameterBase* load : std::initializer_list<ParameterBase*>{
           &macroscopicStrain, &macroscopicStress,
        &macroscopicStrainStress, &macroscopicDeformationGradient, &macroscopicFirstPK,
        &macroscopicDeformationGradientFirstPK, &macroscopicStrainValues,
        &macroscopicStressValues, &macroscopicStrainStressValues,
        &macroscopicDeformationGradientValues, &macroscopicFirstPKValues,
        &macroscopicDeformationGradientFirstPKValues}) {
    load->key = "input/MacroscopicLoad";
  }
  macroscopicTemperatureChange.key = "input/MacroscopicTemperatureChange";
  macroscopicTemperatureChangeValues.key = "input/MacroscopicTemperatureChange";
  macroscopicStrainIncrement.key = "input/MacroscopicStrainIncrement";
  macroscopicStressIncrement.key = "input/MacroscopicStressIncrement";
  macroscopicDeformationGradientIncrement.key = "input/MacroscopicDeformationGradientIncrement";
  macroscopicTemperatureChangeIncrement.key = "input/MacroscopicTemperatureChangeIncrement";

  // Deformed geometry, material state, temperature.
  deformGeometry.key = "input/WriteDeformedGeometry";
  deformGeometryPeriodicX.key = "input/DeformPeriodicX";
  deformGeometryPeriodicY.key = "input/DeformPeriodicY";
  deformGeometryPeriodicZ.key = "input/DeformPeriodicZ";
  symmetryOrVolumePreserving.key = "output/Resampling";
  deformedGeometryFilename.key = "input/DeformedGeometryFileName";
  writeVolumeInformationOnDeformedGeometry.key = "input/WriteVolumeInformation";
  writeDeformedSolutionFields.key = "input/WriteDeformedSolutionFields";
  calculateOnDeformedGeometry.key = "input/CalculateOnDeformedGeometry";
  tikhonovRegularization.key = "input/TikhonovRegularization";
  tikhonovRegularizationAlpha.key = "input/TikhonovRegularizationAlpha";
  scaleTemperature.key = "output/ScaleTemperature";
  temperatureDiff.key = "output/TemperatureDiff";
}

}  // namespace gridmoor
