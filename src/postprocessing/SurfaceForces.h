// Mean tractions on the six faces of the periodic cell, from a stress field with six Voigt
// values per voxel (plain shear), for the result file.
#pragma once

#include <array>
#include <cstdint>

#include "common/Types.h"
#include "postprocessing/ResultFile.h"

namespace gridmoor {

// stress holds six values per voxel, x slowest, then y, then z; rowStride is the number of
// doubles from one (x, y) row to the next (padded FFT fields are read in place). The traction
// of a face is sigma n with its outward normal n, averaged over the voxels next to that face:
// a face's three values are the force per unit area in x, y and z.
SurfaceForces computeSurfaceForces(const Real* stress, std::uint64_t rowStride,
                                   const std::array<std::uint64_t, 3>& grid);

}  // namespace gridmoor
