#!/usr/bin/env bash
# Prints the effective-stiffness table: wall time of the gridmoor binary from start to the
# written effective stiffness (six unit load cases, "Energy", no field output) of a sphere
# composite of contrast 10 (bench/effective_input.sh), with the iterations summed over the
# cases. bench/memory_estimate.sh measures the memory of the same runs.
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

source bench/effective_input.sh

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

echo
echo "Effective stiffness (six load cases), strain formulation, sphere composite of contrast 10, \"Basic\", tolerance 1e-6 ($(nproc) cores)"
echo
echo "| Grid | Threads | Wall [s] | Iterations (all cases) | Wall per case [s] |"
echo "|---|---|---|---|---|"
for size in $EFFECTIVE_SIZES; do
  dir="$work/$size"
  effective_input "$dir" "$size" "$EFFECTIVE_THREADS"
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
