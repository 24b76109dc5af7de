# Sourced by the effective-stiffness and memory benches, so that both measure the same runs.
# effective_input DIR SIZE THREADS writes DIR/geometry.ldt (a sphere of 20 % in SIZE^3
# voxels, contrast 10) and DIR/run.xml: the six unit load cases, "Energy", no field output,
# "Simple" criterion at 1e-6. Needs $BUILD/gridmoor-geometry.

effective_input() {
  local dir=$1 size=$2 threads=$3
  mkdir -p "$dir"
  "$BUILD/gridmoor-geometry" sphere --size "$size" --fraction 0.2 --output "$dir/geometry.ldt" >/dev/null
  cat >"$dir/run.xml" <<XML
<?xml version="1.0" encoding="utf-8"?>
<Settings>
  <input>
    <LicenseFileName>none</LicenseFileName>
    <GeometryDescriptionFile>geometry.ldt</GeometryDescriptionFile>
    <BoxelLengthX>1.0</BoxelLengthX>
    <BoxelLengthY>1.0</BoxelLengthY>
    <BoxelLengthZ>1.0</BoxelLengthZ>
    <BoxelUnits>um</BoxelUnits>
    <MaterParamValues><EModulUnit>GPa</EModulUnit></MaterParamValues>
    <MaterialData>
      <Material><MaterNumber>0</MaterNumber><MaterName>Matrix</MaterName><Type>LE</Type>
        <MaterialParameters><E><value>1</value></E><nu><value>0.3</value></nu></MaterialParameters></Material>
      <Material><MaterNumber>1</MaterNumber><MaterName>Sphere</MaterName><Type>LE</Type>
        <MaterialParameters><E><value>10</value></E><nu><value>0.3</value></nu></MaterialParameters></Material>
    </MaterialData>
    <IterativeMethod>NeumannSeries</IterativeMethod>
    <Scheme>Basic</Scheme>
    <MaxIterationNumber>10000</MaxIterationNumber>
    <MaxRunTime>36000</MaxRunTime>
    <StoppingTolerance>1e-6</StoppingTolerance>
    <NumberOfThreads>$threads</NumberOfThreads>
    <EstimateMemory>0</EstimateMemory>
    <MethodList>CEL</MethodList>
    <ProblemFormulation>Strain</ProblemFormulation>
    <MacroscopicLoadType>Zero</MacroscopicLoadType>
    <MacroscopicLoad>0,0,0,0,0,0</MacroscopicLoad>
  </input>
  <output>
    <Verbose>0</Verbose>
    <WriteEffectiveMatrix>1</WriteEffectiveMatrix>
    <EffectiveMatrixFileName>result.txt</EffectiveMatrixFileName>
    <EquivalencePrinciple>Energy</EquivalencePrinciple>
    <ComputeAllLoadCases>1</ComputeAllLoadCases>
    <ComputeLoadCaseList>1,2,3,4,5,6</ComputeLoadCaseList>
    <SaveRestartFile>0</SaveRestartFile>
    <WriteSolutionVtk>0</WriteSolutionVtk>
    <WriteDasFile>0</WriteDasFile>
    <StressComponents>XX,YY,ZZ,XY,XZ,YZ</StressComponents>
    <StrainComponents>XX,YY,ZZ,XY,XZ,YZ</StrainComponents>
    <DisplacementComponents>X,Y,Z</DisplacementComponents>
  </output>
</Settings>
XML
}
