#!/usr/bin/env bash
# Prints the Green operator table: seconds of one Gamma0 frequency loop on a 6-component
# spectrum and its ratio to the forward+backward transform pair timed in the same process.
#
#   bench/green_operators.sh                  sizes 64 and 128, 1 and 2 threads
#   SIZES="128" THREADS=2 bench/green_operators.sh
#   BUILD=out bench/green_operators.sh        another build directory
set -euo pipefail
cd "$(dirname "$0")/.."

BUILD=${BUILD:-build}
SIZES=${SIZES:-64 128}
THREADS=${THREADS:-1 2}
PLANNER=${PLANNER:-Estimate}
MIN_SECONDS=${MIN_SECONDS:-1}

if [[ ! -x "$BUILD/green_operator_loop" ]]; then
  cmake -S . -B "$BUILD" -G Ninja >/dev/null
  cmake --build "$BUILD" -j2 --target green_operator_loop >/dev/null
fi

echo "Green operator loop (Gamma0) on a 6-component spectrum, transforms planned with $PLANNER ($(nproc) cores, $(date -u '+%Y-%m-%d %H:%M UTC'))"
echo
echo "| Grid | Threads | Discretisation | Form | Loop [s] median | ns/voxel | Pair [s] median | Loop / pair |"
echo "|---|---|---|---|---|---|---|---|"
for size in $SIZES; do
  for threads in $THREADS; do
    "$BUILD/green_operator_loop" "$size" "$threads" "$PLANNER" "$MIN_SECONDS"
  done
done
