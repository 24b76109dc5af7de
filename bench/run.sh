#!/usr/bin/env bash
# Prints the transform table: planning time and seconds per forward+backward pair of a
# 6-component field, for each grid size, planner word and thread count; then the table of
# the Green operator loop (bench/green_operators.sh).
#
#   bench/run.sh                      all sizes (64 128 256)
#   SIZES="64 128" bench/run.sh       a subset
#   BUILD=out bench/run.sh            another build directory
#
# Measure planning at 256^3 takes the better part of a minute, so those rows run last.
set -euo pipefail
cd "$(dirname "$0")/.."

BUILD=${BUILD:-build}
SIZES=${SIZES:-64 128 256}
PLANNERS=${PLANNERS:-Estimate Measure}
THREADS=${THREADS:-1 2}
COMPONENTS=${COMPONENTS:-6}
MIN_SECONDS=${MIN_SECONDS:-1}

if [[ ! -x "$BUILD/fft_transform_pair" ]]; then
  cmake -S . -B "$BUILD" -G Ninja >/dev/null
  cmake --build "$BUILD" -j2 --target fft_transform_pair >/dev/null
fi

runs=()
late=()
for size in $SIZES; do
  for planner in $PLANNERS; do
    for threads in $THREADS; do
      if [[ $size -ge 256 && $planner == Measure ]]; then
        late+=("$size $planner $threads")
      else
        runs+=("$size $planner $threads")
      fi
    done
  done
done

echo "Transform pair of a ${COMPONENTS}-component field ($(nproc) cores, $(date -u '+%Y-%m-%d %H:%M UTC'))"
echo
echo "| Grid | Planner | Threads | Planning [s] | Pair [s] median | Pair [s] min | ns/voxel | Pairs | Round-trip error |"
echo "|---|---|---|---|---|---|---|---|---|"
for run in "${runs[@]}" "${late[@]}"; do
  read -r size planner threads <<<"$run"
  "$BUILD/fft_transform_pair" "$size" "$planner" "$threads" "$COMPONENTS" "$MIN_SECONDS"
done

# The Green operator loop against the transform pair, on the same sizes and thread counts.
echo
SIZES="$SIZES" BUILD="$BUILD" THREADS="$THREADS" MIN_SECONDS="$MIN_SECONDS" \
  bench/green_operators.sh

# The solver rows, in a table of their own.
BUILD="$BUILD" NEUMANN_SIZES="$SIZES" bench/neumann.sh

# Wall time to the full effective stiffness through the binary; 256^3 would take most of an
# hour on two cores, so only the smaller sizes run unless EFFECTIVE_SIZES says otherwise.
default_effective=""
for size in $SIZES; do [[ $size -lt 256 ]] && default_effective+="$size "; done
if [[ -n "${EFFECTIVE_SIZES:-$default_effective}" ]]; then
  BUILD="$BUILD" EFFECTIVE_SIZES="${EFFECTIVE_SIZES:-$default_effective}" bench/effective_stiffness.sh
fi

# The run report's memory estimate against the peak of the same runs, and of the example.
BUILD="$BUILD" MEMORY_SIZES="${EFFECTIVE_SIZES:-$default_effective}" bench/memory_estimate.sh

# The iterative methods: iterations against contrast, and the cost of a Krylov iteration.
BUILD="$BUILD" bench/krylov.sh
