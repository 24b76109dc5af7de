// Means of a voxel field over the whole grid and over each colour in use, with the volume
// fraction of each colour, gathered in one parallel pass over the field.
#pragma once

#include <cstdint>
#include <vector>

#include "common/Types.h"
#include "voxel/ColorImage.h"

namespace gridmoor {

struct ColourMeans {
  // One value per component.
  std::vector<Real> overall;
  // The colours in use, in the order the image lists them, and for each its means and its
  // voxel count over the total voxel count of the grid. A colour without voxels has a
  // fraction of 0 and zero means.
  std::vector<Colour> colours;
  std::vector<std::vector<Real>> byColour;
  std::vector<Real> volumeFractions;
};

// The field holds `components` values per voxel, x slowest, then y, then z; `rowStride` is the
// number of doubles from one (x, y) row to the next, so a padded FFT field is read in place
// (rowStride = components * sizeZ for an unpadded one). Both the field and the colour image
// start at the first plane this process holds.
ColourMeans averageOverColours(const Real* field, std::uint64_t components, std::uint64_t rowStride,
                               const ColorImage& colours);

}  // namespace gridmoor
