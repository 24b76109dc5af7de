// Read access to a colour image beyond this process's own slab, for boxes of a resampling
// that straddle a slab edge: the planes of the neighbours that are needed are copied here.
#pragma once

#include <algorithm>
#include <cstdint>

#include "common/Types.h"
#include "voxel/ColorImage.h"
#include "voxel/Image.h"
#include "voxel/MpiExchange.h"
#include "voxel/Ratio.h"

namespace gridmoor {

class ImageWithOverlap {
 public:
  const ColorImage* image;  // the own slab, not owned
  Image<Colour> overlapBefore{"ImageWithOverlap_overlapBefore"};
  Image<Colour> overlapAfter{"ImageWithOverlap_overlapAfter"};
  std::uint64_t neededBegin = 0;  // first x plane of `image` needed here
  std::uint64_t neededEnd = 0;    // one past the last

  // globalImage is the grid whose slabs the processes compute on; ratio maps its planes to
  // those of `image` (image size over its size), and the margins widen the range in its planes.
  ImageWithOverlap(const ColorImage* image, const ColorImage* globalImage, const Ratio& ratio,
                   std::uint64_t marginBefore, std::uint64_t marginAfter, MpiExchange& mpi);

  // Address of the colour of voxel (x, y, z), x a global plane of `image`, wherever it is held.
  // Read-only after construction, so many threads may call it.
  const Colour* at(std::uint64_t x, std::uint64_t y, std::uint64_t z) const {
    const std::uint64_t localXBegin = image->localXBegin;
    const std::uint64_t localXEnd = image->localXEnd;
    if (x < localXBegin) {
      const std::uint64_t plane = x + overlapBefore.sizeX - overlapBefore.xOffset -
                                  std::min(localXBegin, neededEnd);
      return overlapBefore.data() + plane * overlapBefore.strideX + y * overlapBefore.strideY + z;
    }
    if (x < localXEnd) return image->voxelPointer(x, y, z);
    const std::uint64_t plane = x - std::max(localXEnd, neededBegin) - overlapAfter.xOffset;
    return overlapAfter.data() + plane * overlapAfter.strideX + y * overlapAfter.strideY + z;
  }

 private:
  void neededRange(std::uint64_t begin, std::uint64_t end, const Ratio& ratio,
                   std::uint64_t marginBefore, std::uint64_t marginAfter,
                   std::uint64_t& first, std::uint64_t& last) const;
};

}  // namespace gridmoor
