#include "postprocessing/SurfaceForces.h"

#include <gtest/gtest.h>

#include <vector>

#include "operators/FFTImage.h"

using namespace gridmoor;

// A uniform stress gives sigma n on every face; a stress that varies along x shows only on
// the x faces' layers, with the outward normal's sign. Each voxel holds two points of equal
// weight whose values differ by +-1 around the voxel's stress, in a padded FFT field.
TEST(SurfaceForces, TractionsAreStressTimesOutwardNormalOnTheFaceLayers) {
  const std::array<std::uint64_t, 3> grid = {3, 2, 5};
  FFTImage stress(12, grid[0], grid[1], grid[2], "stress");
  stress = -99.0;  // padding poison
  const double sigma[6] = {1, 2, 3, 4, 5, 6};  // 11, 22, 33, 23, 13, 12
  for (std::uint64_t x = 0; x < grid[0]; ++x)
    for (std::uint64_t y = 0; y < grid[1]; ++y)
      for (std::uint64_t z = 0; z < grid[2]; ++z)
        for (int p = 0; p < 2; ++p)
          for (int c = 0; c < 6; ++c)
            stress.voxelPointer(x, y, z)[6 * p + c] =
                sigma[c] * (c == 0 ? 1.0 + x : 1.0) + (p == 0 ? 1.0 : -1.0);
  const SurfaceForces f = computeSurfaceForces(stress, {6, {0.5, 0.5}}, grid);
  EXPECT_EQ(f.xPlus, (std::vector<double>{3, 6, 5}));    // sigma_11 of the last layer is 3
  EXPECT_EQ(f.xMinus, (std::vector<double>{-1, -6, -5}));
  // Mean of sigma_12 = 6, sigma_22 = 2, sigma_23 = 4 over the y layers.
  EXPECT_EQ(f.yPlus, (std::vector<double>{6, 2, 4}));
  EXPECT_EQ(f.yMinus, (std::vector<double>{-6, -2, -4}));
  // sigma_13 = 5, sigma_23 = 4, sigma_33 = 3.
  EXPECT_EQ(f.zPlus, (std::vector<double>{5, 4, 3}));
  EXPECT_EQ(f.zMinus, (std::vector<double>{-5, -4, -3}));
}
