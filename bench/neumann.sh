#!/usr/bin/env bash
# Prints the Neumann series table: seconds per iteration of the strain formulation on a
# sphere composite of contrast 10, its ratio to the transform pair of the same field in the
# same process, iterations to 1e-6, and bytes per voxel from the peak resident set.
#
#   bench/neumann.sh                        sizes 64 128 256, 2 threads
#   NEUMANN_SIZES="64 128" bench/neumann.sh a subset
set -euo pipefail
cd "$(dirname "$0")/.."

BUILD=${BUILD:-build}
NEUMANN_SIZES=${NEUMANN_SIZES:-64 128 256}
NEUMANN_THREADS=${NEUMANN_THREADS:-2}

if [[ ! -x "$BUILD/neumann_iteration" ]]; then
  cmake -S . -B "$BUILD" -G Ninja >/dev/null
  cmake --build "$BUILD" -j2 --target neumann_iteration >/dev/null
fi

echo
echo "Neumann series, strain formulation, sphere composite of contrast 10, \"Basic\" ($(nproc) cores)"
echo
echo "| Grid | Threads | Iteration [s] | Pair [s] | Ratio | Iterations to 1e-6 | Bytes/voxel (peak RSS) |"
echo "|---|---|---|---|---|---|---|"
for size in $NEUMANN_SIZES; do
  # The progress protocol lines of the solve go to stdout as well; only the row is kept.
  "$BUILD/neumann_iteration" "$size" "$NEUMANN_THREADS" | grep '^|' || true
done
