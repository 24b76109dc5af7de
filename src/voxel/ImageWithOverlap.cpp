#include "voxel/ImageWithOverlap.h"

#include <algorithm>
#include <vector>

namespace gridmoor {

void ImageWithOverlap::neededRange(std::uint64_t begin, std::uint64_t end, const Ratio& ratio,
                                   std::uint64_t marginBefore, std::uint64_t marginAfter,
                                   std::uint64_t& first, std::uint64_t& last) const {
  first = begin < marginBefore ? 0 : floorOf(Ratio(begin - marginBefore) * ratio);
  last = std::min(ceilOf(Ratio(end + marginAfter) * ratio), image->getGlobalSizeX());
}

ImageWithOverlap::ImageWithOverlap(const ColorImage* image, const ColorImage* globalImage,
                                   const Ratio& ratio, std::uint64_t marginBefore,
                                   std::uint64_t marginAfter, MpiExchange& mpi)
    : image(image) {
  std::uint64_t begin = 0, end = 0;
  mpi.getDataRange(globalImage->getGlobalSizeX(), begin, end);
  neededRange(begin, end, ratio, marginBefore, marginAfter, neededBegin, neededEnd);

  const int processes = mpi.getNumberOfProcesses();
  const int rank = mpi.getRank();
  if (processes < 2) return;  // everything needed is in the own slab; the overlaps stay empty

  // Every process's own slab of `image` and its need, so that each side works out the same
  // planes to send and to receive.
  struct Planes {
    std::uint64_t slabBegin, slabEnd, needBegin, needEnd;
  };
  std::vector<Planes> all(static_cast<std::size_t>(processes));
  all[rank] = {image->localXBegin, image->localXEnd, neededBegin, neededEnd};
  mpi.allGather(all.data(), sizeof(Planes));

  const std::uint64_t planeBytes = image->strideX;
  const auto beforePart = [](const Planes& p) {
    return std::pair{p.needBegin, std::min(p.slabBegin, p.needEnd)};
  };
  const auto afterPart = [](const Planes& p) {
    return std::pair{std::max(p.slabEnd, p.needBegin), p.needEnd};
  };
  const auto intersect = [](std::pair<std::uint64_t, std::uint64_t> range, std::uint64_t b,
                            std::uint64_t e) {
    return std::pair{std::max(range.first, b), std::min(range.second, e)};
  };

  const Planes& own = all[rank];
  const auto [beforeBegin, beforeEnd] = beforePart(own);
  const auto [afterBegin, afterEnd] = afterPart(own);
  if (beforeBegin < beforeEnd) overlapBefore.resize(1, beforeEnd - beforeBegin, image->sizeY, image->sizeZ);
  if (afterBegin < afterEnd) overlapAfter.resize(1, afterEnd - afterBegin, image->sizeY, image->sizeZ);

  // Sends first (each keeps its copy in a request record), then the receives.
  for (int p = 0; p < processes; ++p) {
    if (p == rank) continue;
    for (const auto& part : {beforePart(all[p]), afterPart(all[p])}) {
      const auto [b, e] = intersect(part, own.slabBegin, own.slabEnd);
      if (b < e) mpi.sendNonBlocking(image->voxelPointer(b, 0, 0), (e - b) * planeBytes, p);
    }
  }
  for (int p = 0; p < processes; ++p) {
    if (p == rank) continue;
    const auto [bb, be] = intersect({beforeBegin, beforeEnd}, all[p].slabBegin, all[p].slabEnd);
    if (bb < be)
      mpi.receive(overlapBefore.data() + (bb - beforeBegin) * planeBytes, (be - bb) * planeBytes, p);
    const auto [ab, ae] = intersect({afterBegin, afterEnd}, all[p].slabBegin, all[p].slabEnd);
    if (ab < ae)
      mpi.receive(overlapAfter.data() + (ab - afterBegin) * planeBytes, (ae - ab) * planeBytes, p);
  }
  mpi.waitAll();
}

}  // namespace gridmoor
