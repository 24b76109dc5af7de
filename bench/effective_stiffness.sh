#!/usr/bin/env bash
# Prints the effective-stiffness table: wall time of the gridmoor binary from start to the
# written effective stiffness (six unit load cases, "Energy", no field output) of a sphere
# composite of contrast 10, with the iterations summed over the cases.
#
#   bench/effective_stiffness.sh                          sizes 64 128, 2 threads
#   EFFECTIVE_SIZES="64" bench/effective_stiffness.sh     a subset
set -euo pipefail
cd "$(dirname "$0")/.."

BUILD=${BUILD:-build}
EFFECTIVE_SIZES=${EFFECTIVE_SIZES:-64 128}
EFFECTIVE_THREADS=${EFFECTIVE_THREADS:-2}

if [[ ! -x "$BUILD/gridmoor" || ! -x "$BUILD/gridmoor-geometry" ]]; then
  cmake -S . -B "$BUILD" -G Ninja >/dev/null
  cmake --build "$BUILD" -j2 --target gridmoor gridmoor-geometry >/dev/null
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

echo
echo "Effective stiffness (six load cases), strain formulation, sphere composite of contrast 10, \"Basic\", tolerance 1e-6 ($(nproc) cores)"
echo
echo "| Grid | Threads | Wall [s] | Iterations (all cases) | Wall per case [s] |"
echo "|---|---|---|---|---|"
for size in $EFFECTIVE_SIZES; do
  dir="$work/$size"
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
    <NumberOfThreads>$EFFECTIVE_THREADS</NumberOfThreads>
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
  start=$(date +%s.%N)
  "$BUILD/gridmoor" "$dir/run.xml" >/dev/null
  end=$(date +%s.%N)
  if ! grep -q '^Matrix:Stiffness:Energy:6 ' "$dir/result.txt"; then
    echo "effective stiffness missing for $size^3" >&2
    exit 1
  fi
  # Every iteration of every case prints one "Iteration N" line to the log.
  iterations=$(grep -c '^Iteration ' "$dir/stdout.txt" || true)
  awk -v n="$size" -v t="$EFFECTIVE_THREADS" -v s="$start" -v e="$end" -v it="$iterations" \
    'BEGIN { printf "| %d^3 | %d | %.1f | %d | %.1f |\n", n, t, e - s, it, (e - s) / 6 }'
done
