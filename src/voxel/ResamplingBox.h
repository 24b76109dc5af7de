// The box of original voxels that one voxel of a resampled grid covers, axis by axis:
// target index i with ratio r covers [i r, (i + 1) r), weighted by exact overlap lengths.
#pragma once

#include <algorithm>
#include <cstdint>

#include "voxel/Ratio.h"

namespace gridmoor {

struct AxisBox {
  std::uint64_t first;  // floor of the lower bound
  std::uint64_t end;    // ceiling of the upper bound
};

inline AxisBox axisBox(std::uint64_t index, const Ratio& ratio) {
  return {floorOf(Ratio(index) * ratio), ceilOf(Ratio(index + 1) * ratio)};
}

// Length of the overlap of original voxel [k, k + 1) with the interval of target index
// `index`: 1 inside the box, less only at its two ends.
inline Ratio overlapWeight(std::uint64_t k, std::uint64_t index, const Ratio& ratio) {
  const Ratio lower = Ratio(index) * ratio;
  const Ratio upper = Ratio(index + 1) * ratio;
  const Ratio from = std::max(Ratio(k), lower);
  const Ratio to = std::min(Ratio(k + 1), upper);
  return to > from ? to - from : Ratio(0);
}

}  // namespace gridmoor
