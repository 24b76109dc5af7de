// Mean tractions on the six faces of the periodic cell, from a stress field with six Voigt
// values per integration point (plain shear), for the result file.
#pragma once

#include <array>
#include <cstdint>

#include "common/Types.h"
#include "postprocessing/ColourAverages.h"
#include "postprocessing/ResultFile.h"

namespace gridmoor {

// The traction of a face is sigma n with its outward normal n, averaged over the voxels next
// to that face, each voxel taken with the weighted mean of its points: a face's three values
// are the force per unit area in x, y and z. The field addresses voxels by global x.
SurfaceForces computeSurfaceForces(const Image<Real>& stress, const PointLayout& layout,
                                   const std::array<std::uint64_t, 3>& grid);

}  // namespace gridmoor
