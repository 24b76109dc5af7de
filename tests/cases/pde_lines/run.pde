input:LicenseFileName licence.dat
# Gridmoor parameters in line form: a path with ':' and one value per line
input:GeometryDescriptionFile geometry.ldt
input:MaxRunTime 1800
input:BoxelLengthX 1.0
input:BoxelLengthY 1.0
input:BoxelLengthZ 1.0
input:BoxelUnits um
input:MaterParamValues:EModulUnit GPa
input:IterativeMethod NeumannSeries
input:Scheme Basic StaggeredGrid
input:MaxIterationNumber 250 # comment lines are skipped whole
input:MaxRunTime 3600
input:StoppingTolerance 1e-6
  input:EstimateMemory   0  
input:MethodList CEL;Voigt
output:Verbose 1
output:WriteEffectiveMatrix 0
output:EffectiveMatrixFileName result.txt
output:SaveRestartFile 0
output:StressComponents XX,YY,ZZ,XY,XZ,YZ
output:StrainComponents XX,YY,ZZ,XY,XZ,YZ
output:DisplacementComponents X,Y,Z
output:EquivalencePrinciple Energy
output:ComputeLoadCaseList 1,2,3,4,5,6
output:WriteSolutionVtk 1
	output:WriteDasFile	0

lonely
