#include "postprocessing/ColourAverages.h"

#include <omp.h>

#include <array>

#include "common/Fatal.h"
#include "voxel/StaticPartition.h"

namespace gridmoor {

namespace {

constexpr std::size_t kColourCount = 256;

// Sums of one thread over every possible colour: no lookup of the colour list per voxel.
struct PartialSums {
  std::vector<Real> sums;
  std::array<std::uint64_t, kColourCount> counts{};
};

}  // namespace

ColourMeans averageOverColours(const Real* field, std::uint64_t components, std::uint64_t rowStride,
                               const ColorImage& colours) {
  const std::uint64_t sizeX = colours.getSizeX();
  const std::uint64_t sizeY = colours.sizeY;
  const std::uint64_t sizeZ = colours.sizeZ;
  if (rowStride < components * sizeZ) {
    fatal("averageOverColours: row stride " + std::to_string(rowStride) +
          " is shorter than a row of " + std::to_string(sizeZ) + " voxels with " +
          std::to_string(components) + " components");
  }

  std::vector<PartialSums> partials(static_cast<std::size_t>(omp_get_max_threads()));
  parallelForStatic(sizeX, [&](std::uint64_t begin, std::uint64_t end) {
    PartialSums& mine = partials[static_cast<std::size_t>(omp_get_thread_num())];
    mine.sums.assign(kColourCount * components, 0.0);
    for (std::uint64_t x = begin; x < end; ++x) {
      for (std::uint64_t y = 0; y < sizeY; ++y) {
        const Colour* colourRow = colours.data() + x * colours.strideX + y * colours.strideY;
        const Real* values = field + (x * sizeY + y) * rowStride;
        for (std::uint64_t z = 0; z < sizeZ; ++z, values += components) {
          const Colour c = colourRow[z * colours.strideZ];
          ++mine.counts[c];
          Real* sum = mine.sums.data() + c * components;
          for (std::uint64_t k = 0; k < components; ++k) sum[k] += values[k];
        }
      }
    }
  });

  std::vector<Real> sums(kColourCount * components, 0.0);
  std::array<std::uint64_t, kColourCount> counts{};
  for (const PartialSums& p : partials) {
    if (p.sums.empty()) continue;  // a thread that got no planes
    for (std::size_t i = 0; i < sums.size(); ++i) sums[i] += p.sums[i];
    for (std::size_t c = 0; c < kColourCount; ++c) counts[c] += p.counts[c];
  }

  // Fractions and the overall mean are over the global grid: with one process the slab is it.
  const Real total = static_cast<Real>(colours.getGlobalSizeX()) * static_cast<Real>(sizeY * sizeZ);
  ColourMeans result;
  result.overall.assign(components, 0.0);
  for (std::size_t c = 0; c < kColourCount; ++c) {
    for (std::uint64_t k = 0; k < components; ++k) result.overall[k] += sums[c * components + k];
  }
  if (total > 0) {
    for (Real& value : result.overall) value /= total;
  }
  for (Colour c : colours.getColors()) {
    std::vector<Real> mean(components, 0.0);
    if (counts[c] > 0) {
      for (std::uint64_t k = 0; k < components; ++k) {
        mean[k] = sums[c * components + k] / static_cast<Real>(counts[c]);
      }
    }
    result.colours.push_back(c);
    result.byColour.push_back(std::move(mean));
    result.volumeFractions.push_back(total > 0 ? static_cast<Real>(counts[c]) / total : 0.0);
  }
  return result;
}

}  // namespace gridmoor
