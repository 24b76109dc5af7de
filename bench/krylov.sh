#!/usr/bin/env bash
# Prints the iterative-method tables: iterations to 1e-6 of every method on the sphere
# composite at contrasts 10, 100 and 1000, each method with the reference material a run
# chooses for it, and the time per iteration of CG and BiCGSTAB as a ratio to the transform
# pair measured in the same process (medians of KRYLOV_REPEATS rounds that time both side
# by side), and as a ratio to the time the same iterations spent in their own transforms
# ("own pair"), which does not move with the machine's speed between pair and solves.
#
#   bench/krylov.sh                                 64^3, 2 threads
#   KRYLOV_SIZE=32 KRYLOV_CONTRASTS="10 100" bench/krylov.sh
#   KRYLOV_TABLES=times bench/krylov.sh             only the time table
#   KRYLOV_SIZE=256 KRYLOV_PLANNER=Measure KRYLOV_TABLES=times KRYLOV_CONTRASTS=10 bench/krylov.sh
set -euo pipefail
cd "$(dirname "$0")/.."

BUILD=${BUILD:-build}
KRYLOV_SIZE=${KRYLOV_SIZE:-64}
KRYLOV_THREADS=${KRYLOV_THREADS:-2}
KRYLOV_CONTRASTS=${KRYLOV_CONTRASTS:-10 100 1000}
KRYLOV_MAXITER=${KRYLOV_MAXITER:-2000}
KRYLOV_REPEATS=${KRYLOV_REPEATS:-5}
KRYLOV_PLANNER=${KRYLOV_PLANNER:-Estimate}
KRYLOV_TABLES=${KRYLOV_TABLES:-both}

if [[ ! -x "$BUILD/krylov_iterations" ]]; then
  cmake -S . -B "$BUILD" -G Ninja >/dev/null
  cmake --build "$BUILD" -j2 --target krylov_iterations >/dev/null
fi

rows=()
times=()
for contrast in $KRYLOV_CONTRASTS; do
  out=$("$BUILD/krylov_iterations" "$KRYLOV_SIZE" "$KRYLOV_THREADS" "$contrast" \
    "$KRYLOV_MAXITER" "$KRYLOV_TABLES" "$KRYLOV_REPEATS" "$KRYLOV_PLANNER")
  while IFS= read -r line; do
    case "$line" in
      "I|"*) rows+=("${line#I}") ;;
      "T|"*) times+=("${line#T}") ;;
    esac
  done <<<"$out"
done

echo "$(nproc) cores, $(date -u '+%Y-%m-%d %H:%M UTC'), load average at the end: $(cut -d' ' -f1-3 /proc/loadavg)"
if [[ ${#rows[@]} -gt 0 ]]; then
  echo
  echo "Iterations to 1e-6, sphere composite (20 %) of the given stiffness contrast, ${KRYLOV_SIZE}^3, strain formulation, limit ${KRYLOV_MAXITER}"
  echo
  echo "| Contrast | NeumannSeries \"Basic\" | NeumannSeries \"StaggeredGrid\" | CG | slowCG | BiCGSTAB | MINRES | LSQR |"
  echo "|---|---|---|---|---|---|---|---|"
  printf '%s\n' "${rows[@]}"
fi
if [[ ${#times[@]} -gt 0 ]]; then
  echo
  echo "Time per iteration against the transform pair of the same process (\"Basic\", medians of ${KRYLOV_REPEATS} rounds; BiCGSTAB makes two products per iteration)"
  echo
  echo "| Method | Contrast | Grid | Threads | Iteration [s] | Pair [s] | Ratio | Own pair [s] | Ratio to own |"
  echo "|---|---|---|---|---|---|---|---|---|"
  printf '%s\n' "${times[@]}"
fi
