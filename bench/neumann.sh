#!/usr/bin/env bash
# Prints the Neumann series table: seconds per iteration of the strain formulation on a
# sphere composite of contrast 10, its ratio to the transform pair (the two FFTW plans alone)
# of the same field in the same process, iterations to 1e-6, and bytes per voxel from the
# peak resident set.
#
#   bench/neumann.sh                        sizes 64 128 256, 2 threads
#   NEUMANN_SIZES="64 128" bench/neumann.sh a subset
#
# From 256^3 on the grid is planned with "Measure": an "Estimate" plan transforms about four
# times slower there, which is not what a run of that size would use. The 256^3 row takes
# about two minutes (planning included) on two cores; NEUMANN_LARGE_ITERATIONS=10 stops those
# solves early, and their iteration column then says where.
set -euo pipefail
cd "$(dirname "$0")/.."

BUILD=${BUILD:-build}
NEUMANN_SIZES=${NEUMANN_SIZES:-64 128 256}
NEUMANN_THREADS=${NEUMANN_THREADS:-2}
NEUMANN_LARGE_ITERATIONS=${NEUMANN_LARGE_ITERATIONS:-}

if [[ ! -x "$BUILD/neumann_iteration" ]]; then
  cmake -S . -B "$BUILD" -G Ninja >/dev/null
  cmake --build "$BUILD" -j2 --target neumann_iteration >/dev/null
fi

echo
echo "Neumann series, strain formulation, sphere composite of contrast 10, \"Basic\" ($(nproc) cores)"
echo
echo "| Grid | Threads | Planner | Iteration [s] | Pair [s] | Ratio | Iterations to 1e-6 | Bytes/voxel (peak RSS) |"
echo "|---|---|---|---|---|---|---|---|"
for size in $NEUMANN_SIZES; do
  args=("$size" "$NEUMANN_THREADS" Estimate)
  if [[ $size -ge 256 ]]; then
    args=("$size" "$NEUMANN_THREADS" Measure ${NEUMANN_LARGE_ITERATIONS:+"$NEUMANN_LARGE_ITERATIONS"})
  fi
  # The progress protocol lines of the solve go to stdout as well; only the row is kept.
  OMP_NUM_THREADS=$NEUMANN_THREADS "$BUILD/neumann_iteration" "${args[@]}" | grep '^|' || true
done
