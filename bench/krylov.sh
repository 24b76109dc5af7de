#!/usr/bin/env bash
# Prints the iterative-method tables: iterations to 1e-6 of every method on the sphere
# composite at contrasts 10, 100 and 1000, and the time per iteration of CG and BiCGSTAB as
# a ratio to the transform pair measured in the same process.
#
#   bench/krylov.sh                                 64^3, 2 threads
#   KRYLOV_SIZE=32 KRYLOV_CONTRASTS="10 100" bench/krylov.sh
set -euo pipefail
cd "$(dirname "$0")/.."

BUILD=${BUILD:-build}
KRYLOV_SIZE=${KRYLOV_SIZE:-64}
KRYLOV_THREADS=${KRYLOV_THREADS:-2}
KRYLOV_CONTRASTS=${KRYLOV_CONTRASTS:-10 100 1000}
KRYLOV_MAXITER=${KRYLOV_MAXITER:-2000}

if [[ ! -x "$BUILD/krylov_iterations" ]]; then
  cmake -S . -B "$BUILD" -G Ninja >/dev/null
  cmake --build "$BUILD" -j2 --target krylov_iterations >/dev/null
fi

rows=()
times=()
for contrast in $KRYLOV_CONTRASTS; do
  out=$("$BUILD/krylov_iterations" "$KRYLOV_SIZE" "$KRYLOV_THREADS" "$contrast" "$KRYLOV_MAXITER")
  while IFS= read -r line; do
    case "$line" in
      "I|"*) rows+=("${line#I}") ;;
      "T|"*) times+=("${line#T}") ;;
    esac
  done <<<"$out"
done

echo
echo "Iterations to 1e-6, sphere composite (20 %) of the given stiffness contrast, ${KRYLOV_SIZE}^3, strain formulation"
echo
echo "| Contrast | NeumannSeries \"Basic\" | NeumannSeries \"StaggeredGrid\" | CG | slowCG | BiCGSTAB | MINRES | LSQR |"
echo "|---|---|---|---|---|---|---|---|"
printf '%s\n' "${rows[@]}"
echo
echo "Time per iteration against the transform pair of the same run (\"Basic\")"
echo
echo "| Method | Contrast | Grid | Threads | Iteration [s] | Pair [s] | Ratio |"
echo "|---|---|---|---|---|---|---|"
printf '%s\n' "${times[@]}"
