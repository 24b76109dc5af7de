#!/usr/bin/env bash
# Prints the memory table: the run report's memory estimate beside the peak resident set of
# the same run, for the shipped example's material pair on a sphere composite. The solve is
# cut to a few iterations: the fields, not the iteration count, set the memory.
#
#   bench/memory_estimate.sh                    sizes 64 128 256
#   MEMORY_SIZES="64 128" bench/memory_estimate.sh
set -euo pipefail
cd "$(dirname "$0")/.."

BUILD=${BUILD:-build}
MEMORY_SIZES=${MEMORY_SIZES:-64 128 256}
ROOT=$(pwd)

if [[ ! -x "$BUILD/gridmoor" || ! -x "$BUILD/gridmoor-geometry" ]]; then
  cmake -S . -B "$BUILD" -G Ninja >/dev/null
  cmake --build "$BUILD" -j2 --target gridmoor gridmoor-geometry >/dev/null
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

echo
echo "Memory estimate of the run report against the peak resident set (example materials, NeumannSeries)"
echo
echo "| Grid | Method | Estimate [MB] | Peak RSS [MB] | Estimate / peak |"
echo "|---|---|---|---|---|"
for size in $MEMORY_SIZES; do
  for method in NeumannSeries; do
    dir="$work/$size-$method"
    mkdir -p "$dir"
    "$ROOT/$BUILD/gridmoor-geometry" sphere --size "$size" --fraction 0.2 --output "$dir/geometry.ldt" >/dev/null
    sed -e "s#<MaxIterationNumber>[0-9]*#<MaxIterationNumber>3#" \
        -e "s#<IterativeMethod>[A-Za-z]*#<IterativeMethod>$method#" \
        -e "s#<WriteEffectiveMatrix>1#<WriteEffectiveMatrix>0#" \
        examples/fibres/run.xml >"$dir/run.xml"
    peak=$(python3 -c '
import resource, subprocess, sys
subprocess.run([sys.argv[1], sys.argv[2]], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
print(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss)' "$ROOT/$BUILD/gridmoor" "$dir/run.xml")
    estimate=$(sed -n 's/^ - Memory usage estimate *\([0-9]*\) KB/\1/p' "$dir/stdout.txt")
    awk -v g="$size" -v m="$method" -v e="$estimate" -v p="$peak" \
      'BEGIN { printf "| %d^3 | %s | %.0f | %.0f | %.2f |\n", g, m, e / 1024, p / 1024, e / p }'
  done
done
