// Means of a voxel field over the whole grid (or a box of it) and over each colour in use,
// with the volume fraction of each colour, gathered in one parallel pass over the field.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "common/Types.h"
#include "voxel/ColorImage.h"
#include "voxel/Image.h"

namespace gridmoor {

class KeywordsElasticity;

// How the values of a voxel split into integration points: componentsPerPoint values per
// point, points in a row, each with its weight (the weights of a voxel sum to 1).
struct PointLayout {
  std::uint64_t componentsPerPoint = 6;
  std::vector<Real> weights{1.0};

  std::uint64_t valuesPerVoxel() const { return componentsPerPoint * weights.size(); }
};

// The box of voxels [begin, end) on each axis over which averages are taken.
struct Subvolume {
  std::array<std::uint64_t, 3> begin{};
  std::array<std::uint64_t, 3> end{};

  static Subvolume whole(const std::array<std::uint64_t, 3>& grid) { return {{0, 0, 0}, grid}; }
  std::uint64_t voxels() const {
    return (end[0] - begin[0]) * (end[1] - begin[1]) * (end[2] - begin[2]);
  }
};

// The whole grid, or with UseSubvolumeForHomogenization the centred box whose edges are the
// fractions SubvolumeForHomogenizationSizeX, ...Y, ...Z of the grid's edges (at least one
// voxel each; a fraction above 1 or not positive takes the whole edge). The sizes are read as
// fractions because their default of 1 must mean the whole cell whatever the voxel length.
Subvolume subvolumeOf(const KeywordsElasticity& keywords, const std::array<std::uint64_t, 3>& grid);

struct ColourMeans {
  // One value per component of a point.
  std::vector<Real> overall;
  // The colours in use, in the order the image lists them, and for each its means and its
  // voxel count over the voxel count of the subvolume. A colour without voxels there has a
  // fraction of 0 and zero means.
  std::vector<Colour> colours;
  std::vector<std::vector<Real>> byColour;
  std::vector<Real> volumeFractions;
};

// Voxel means of `field` (each voxel's points averaged with their weights), over the voxels
// of `region` and over those of each colour. The field and the colour image address voxels by
// global x; the planes of the region that this process does not hold are left out.
ColourMeans averageOverColours(const Image<Real>& field, const PointLayout& layout,
                               const ColorImage& colours, const Subvolume& region);

}  // namespace gridmoor
