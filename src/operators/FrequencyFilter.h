// Filters of the Green operator: the per-axis filter values of the "Periodize" and
// "NonConsistent" schemes and the alias shifts over which the non-consistent one sums.
#pragma once

#include <array>
#include <cstdint>

#include "input/SolverEnums.h"
#include "operators/ComplexValue.h"

namespace gridmoor {

// Filter value of index m on an axis of extent n, for the alias shifted by `alias` periods.
// "None" gives 1; "Periodize" gives 1 at m = 0 and (sin t / t)^2, t = f pi / n, elsewhere
// (f the signed frequency, so the Nyquist index of an even axis uses -n / 2); "NonConsistent"
// gives cos^2 t, t = (f + alias n) pi / (2 n). Any other filter stops the run.
double getFilterValue(FilterType filter, std::int64_t m, std::int64_t n, int alias);

// The alias shifts (a0, a1, a2) in {-1, 0, 1}^3: the frequency itself first, then the 26
// others.
using AliasTriple = std::array<int, 3>;
constexpr std::array<AliasTriple, 27> makeAliasTriples() {
  std::array<AliasTriple, 27> triples{};
  triples[0] = {0, 0, 0};
  std::size_t n = 1;
  for (int a0 = -1; a0 <= 1; ++a0)
    for (int a1 = -1; a1 <= 1; ++a1)
      for (int a2 = -1; a2 <= 1; ++a2)
        if (a0 != 0 || a1 != 0 || a2 != 0) triples[n++] = {a0, a1, a2};
  return triples;
}
inline constexpr std::array<AliasTriple, 27> kAliasTriples = makeAliasTriples();

// Adds the operator's values of one alias, weighted by that alias's filter value, to the
// filtered result: the filter scales the operator's real and imaginary parts alike.
inline void applyFilter(double filterValue, const ComplexValue* aliasValues, std::size_t count,
                        ComplexValue* filtered) {
  for (std::size_t c = 0; c < count; ++c) filtered[c] += filterValue * aliasValues[c];
}

}  // namespace gridmoor
