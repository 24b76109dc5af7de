#include "postprocessing/SurfaceForces.h"

namespace gridmoor {

namespace {

// Voigt slots of the stress tensor's row a (11, 22, 33, 23, 13, 12 order).
constexpr int row[3][3] = {{0, 5, 4}, {5, 1, 3}, {4, 3, 2}};

}  // namespace

SurfaceForces computeSurfaceForces(const Image<Real>& stress, const PointLayout& layout,
                                   const std::array<std::uint64_t, 3>& grid) {
  const std::uint64_t width = layout.componentsPerPoint;
  // Mean of sigma_a. over the voxel layer at index `layer` of axis a: only that layer is
  // visited, the other two axes run in full.
  auto layerMean = [&](int axis, std::uint64_t layer) {
    std::array<double, 3> sum{0.0, 0.0, 0.0};
    std::uint64_t begin[3] = {0, 0, 0}, end[3] = {grid[0], grid[1], grid[2]};
    begin[axis] = layer;
    end[axis] = layer + 1;
    for (std::uint64_t x = begin[0]; x < end[0]; ++x)
      for (std::uint64_t y = begin[1]; y < end[1]; ++y)
        for (std::uint64_t z = begin[2]; z < end[2]; ++z) {
          const Real* voxel = stress.voxelPointer(x, y, z);
          for (std::size_t p = 0; p < layout.weights.size(); ++p)
            for (int j = 0; j < 3; ++j)
              sum[j] += layout.weights[p] * voxel[p * width + row[axis][j]];
        }
    const double count = static_cast<double>((end[0] - begin[0]) * (end[1] - begin[1]) *
                                             (end[2] - begin[2]));
    for (double& v : sum) v /= count;
    return sum;
  };
  auto face = [&](int axis, bool plus) {
    const std::uint64_t layer = plus ? grid[axis] - 1 : 0;
    std::array<double, 3> t = layerMean(axis, layer);
    std::vector<Real> out(t.begin(), t.end());
    if (!plus)
      for (Real& v : out) v = 0.0 - v;  // no "-0" in the result file
    return out;
  };
  SurfaceForces forces;
  if (grid[0] == 0 || grid[1] == 0 || grid[2] == 0) return forces;
  forces.xPlus = face(0, true);
  forces.xMinus = face(0, false);
  forces.yPlus = face(1, true);
  forces.yMinus = face(1, false);
  forces.zPlus = face(2, true);
  forces.zMinus = face(2, false);
  return forces;
}

}  // namespace gridmoor
