#!/usr/bin/env bash
# Prints the memory table: the run report's memory estimate beside the peak resident set of
# the same run, for the runs of the effective-stiffness bench (bench/effective_input.sh: six
# load cases of a sphere composite, 2 threads) and for the shipped example as it stands.
#
#   bench/memory_estimate.sh                    sizes 64 128, then the example
#   MEMORY_SIZES="64" bench/memory_estimate.sh
set -euo pipefail
cd "$(dirname "$0")/.."

BUILD=${BUILD:-build}
MEMORY_SIZES=${MEMORY_SIZES:-64 128}
MEMORY_THREADS=${MEMORY_THREADS:-2}

if [[ ! -x "$BUILD/gridmoor" || ! -x "$BUILD/gridmoor-geometry" ]]; then
  cmake -S . -B "$BUILD" -G Ninja >/dev/null
  cmake --build "$BUILD" -j2 --target gridmoor gridmoor-geometry >/dev/null
fi

source bench/effective_input.sh

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# measure NAME DIR: runs DIR/run.xml and prints its row; the peak is the child's maximum
# resident set (KB), the estimate the report's " - Memory usage estimate" line.
measure() {
  local name=$1 dir=$2 peak estimate
  peak=$(python3 -c '
import resource, subprocess, sys
subprocess.run([sys.argv[1], sys.argv[2]], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=True)
print(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss)' "$BUILD/gridmoor" "$dir/run.xml")
  estimate=$(sed -n 's/^ - Memory usage estimate *\([0-9]*\) KB/\1/p' "$dir/stdout.txt")
  awk -v n="$name" -v e="$estimate" -v p="$peak" \
    'BEGIN { printf "| %s | %.1f | %.1f | %.3f |\n", n, e / 1024, p / 1024, e / p }'
}

echo
echo "Memory estimate of the run report against the peak resident set of the same run ($(nproc) cores)"
echo
echo "| Run | Estimate [MB] | Peak RSS [MB] | Estimate / peak |"
echo "|---|---|---|---|"
for size in $MEMORY_SIZES; do
  effective_input "$work/$size" "$size" "$MEMORY_THREADS"
  measure "effective stiffness, $size^3" "$work/$size"
done
cp -r examples/fibres "$work/example"
measure "examples/fibres" "$work/example"
