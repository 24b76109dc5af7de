#include "postprocessing/ColourAverages.h"

#include <omp.h>

#include <algorithm>
#include <cmath>

#include "common/Fatal.h"
#include "input/KeywordsElasticity.h"
#include "voxel/StaticPartition.h"

namespace gridmoor {

namespace {

constexpr std::size_t kColourCount = 256;

// Sums of one thread over every possible colour: no lookup of the colour list per voxel.
struct PartialSums {
  std::vector<Real> sums;
  std::array<std::uint64_t, kColourCount> counts{};
};

// Voxels of a centred box that covers `fraction` of an edge of n voxels.
std::array<std::uint64_t, 2> centredRange(std::uint64_t n, double fraction) {
  if (!(fraction > 0.0) || fraction >= 1.0) return {0, n};
  const std::uint64_t size =
      std::clamp<std::uint64_t>(static_cast<std::uint64_t>(std::llround(fraction * n)), 1, n);
  const std::uint64_t begin = (n - size) / 2;
  return {begin, begin + size};
}

}  // namespace

Subvolume subvolumeOf(const KeywordsElasticity& keywords, const std::array<std::uint64_t, 3>& grid) {
  Subvolume region = Subvolume::whole(grid);
  if (!keywords.useSubvolumeForHomogenization()) return region;
  const double fractions[3] = {keywords.subvolumeForHomogenizationSizeX(),
                               keywords.subvolumeForHomogenizationSizeY(),
                               keywords.subvolumeForHomogenizationSizeZ()};
  for (int axis = 0; axis < 3; ++axis) {
    const std::array<std::uint64_t, 2> r = centredRange(grid[axis], fractions[axis]);
    region.begin[axis] = r[0];
    region.end[axis] = r[1];
  }
  return region;
}

ColourMeans averageOverColours(const Image<Real>& field, const PointLayout& layout,
                               const ColorImage& colours, const Subvolume& region) {
  const std::uint64_t width = layout.componentsPerPoint;
  const std::uint64_t points = layout.weights.size();
  if (field.getNumberOfComponents() < layout.valuesPerVoxel())
    fatal("averageOverColours: the field " + field.getName() + " holds " +
          std::to_string(field.getNumberOfComponents()) + " values per voxel, fewer than " +
          std::to_string(points) + " points of " + std::to_string(width) + " components");
  for (int axis = 1; axis < 3; ++axis)
    if (region.end[axis] > (axis == 1 ? colours.sizeY : colours.sizeZ))
      fatal("averageOverColours: the averaging box leaves the grid");
  // This process's planes of the box.
  const std::uint64_t xBegin = std::max(region.begin[0], colours.localXBegin);
  const std::uint64_t xEnd = std::min(region.end[0], colours.localXEnd);
  const std::uint64_t planes = xEnd > xBegin ? xEnd - xBegin : 0;
  const Real* weights = layout.weights.data();

  std::vector<PartialSums> partials(static_cast<std::size_t>(omp_get_max_threads()));
  parallelForStatic(planes, [&](std::uint64_t begin, std::uint64_t end) {
    PartialSums& mine = partials[static_cast<std::size_t>(omp_get_thread_num())];
    mine.sums.assign(kColourCount * width, 0.0);
    for (std::uint64_t x = xBegin + begin; x < xBegin + end; ++x)
      for (std::uint64_t y = region.begin[1]; y < region.end[1]; ++y)
        for (std::uint64_t z = region.begin[2]; z < region.end[2]; ++z) {
          const Colour c = colours.at(x, y, z);
          ++mine.counts[c];
          Real* sum = mine.sums.data() + c * width;
          const Real* values = field.voxelPointer(x, y, z);
          for (std::uint64_t p = 0; p < points; ++p)
            for (std::uint64_t k = 0; k < width; ++k) sum[k] += weights[p] * values[p * width + k];
        }
  });

  std::vector<Real> sums(kColourCount * width, 0.0);
  std::array<std::uint64_t, kColourCount> counts{};
  for (const PartialSums& p : partials) {
    if (p.sums.empty()) continue;  // a thread that got no planes
    for (std::size_t i = 0; i < sums.size(); ++i) sums[i] += p.sums[i];
    for (std::size_t c = 0; c < kColourCount; ++c) counts[c] += p.counts[c];
  }

  // Fractions and the overall mean are over the whole box: with one process the slab holds it.
  const Real total = static_cast<Real>(region.voxels());
  ColourMeans result;
  result.overall.assign(width, 0.0);
  for (std::size_t c = 0; c < kColourCount; ++c)
    for (std::uint64_t k = 0; k < width; ++k) result.overall[k] += sums[c * width + k];
  if (total > 0)
    for (Real& value : result.overall) value /= total;
  for (Colour c : colours.getColors()) {
    std::vector<Real> mean(width, 0.0);
    if (counts[c] > 0)
      for (std::uint64_t k = 0; k < width; ++k)
        mean[k] = sums[c * width + k] / static_cast<Real>(counts[c]);
    result.colours.push_back(c);
    result.byColour.push_back(std::move(mean));
    result.volumeFractions.push_back(total > 0 ? static_cast<Real>(counts[c]) / total : 0.0);
  }
  return result;
}

}  // namespace gridmoor
