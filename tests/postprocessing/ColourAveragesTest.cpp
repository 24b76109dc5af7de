// Means over the field: per colour and over a box of it, and the tractions on the faces.
#include <gtest/gtest.h>
#include <omp.h>

#include <cstdint>
#include <limits>
#include <vector>

#include "input/KeywordsElasticity.h"
#include "operators/FFTImage.h"
#include "postprocessing/ColourAverages.h"
#include "postprocessing/SurfaceForces.h"

namespace gridmoor {
namespace {

// A 5 x 3 x 4 grid of two weighted points of six components per voxel in an FFT field, whose
// padding of the third axis holds NaN so that reading it shows. The means of the voxels'
// weighted point means, over the grid and over a box of it, against a direct loop.
TEST(ResultFileColourAverages, WeightedPointMeansOverTheGridAndABox) {
  constexpr std::uint64_t nx = 5, ny = 3, nz = 4, width = 6;
  const PointLayout layout{width, {0.25, 0.75}};
  FFTImage field(2 * width, nx, ny, nz, "field");
  field = std::numeric_limits<Real>::quiet_NaN();
  ColorImage colours(nx, ny, nz, 0, "colours");
  for (std::uint64_t x = 0; x < nx; ++x)
    for (std::uint64_t y = 0; y < ny; ++y)
      for (std::uint64_t z = 0; z < nz; ++z) {
        colours.at(x, y, z) = static_cast<Colour>((x + 2 * y + z) % 3 == 0 ? 9 : (x + z) % 2 + 1);
        for (std::uint64_t k = 0; k < 2 * width; ++k)
          field.voxelPointer(x, y, z)[k] =
              static_cast<Real>(k + 1) * (0.5 * x - 1.25 * y + 0.125 * z * z) + 3.0 * k;
      }
  colours.collectColors();
  colours.colors.push_back(200);  // listed but without voxels

  KeywordsElasticity keywords;
  keywords.useSubvolumeForHomogenization.set(true);
  keywords.subvolumeForHomogenizationSizeX.set(0.5);
  keywords.subvolumeForHomogenizationSizeY.set(0.1);
  keywords.subvolumeForHomogenizationSizeZ.set(1.0);
  const Subvolume box = subvolumeOf(keywords, {nx, ny, nz});
  EXPECT_EQ(box.begin, (std::array<std::uint64_t, 3>{1, 1, 0}));
  EXPECT_EQ(box.end, (std::array<std::uint64_t, 3>{4, 2, 4}));
  keywords.useSubvolumeForHomogenization.set(false);
  EXPECT_EQ(subvolumeOf(keywords, {nx, ny, nz}).end, (std::array<std::uint64_t, 3>{nx, ny, nz}));

  const int savedThreads = omp_get_max_threads();
  for (const Subvolume& region : {Subvolume::whole({nx, ny, nz}), box}) {
    std::vector<Real> overall(width, 0.0);
    std::vector<std::vector<Real>> sums(256, std::vector<Real>(width, 0.0));
    std::vector<std::uint64_t> counts(256, 0);
    const Real voxels = static_cast<Real>(region.voxels());
    for (std::uint64_t x = region.begin[0]; x < region.end[0]; ++x)
      for (std::uint64_t y = region.begin[1]; y < region.end[1]; ++y)
        for (std::uint64_t z = region.begin[2]; z < region.end[2]; ++z) {
          const Colour c = colours.at(x, y, z);
          ++counts[c];
          for (std::uint64_t k = 0; k < width; ++k) {
            const Real* v = field.voxelPointer(x, y, z);
            const Real mean = 0.25 * v[k] + 0.75 * v[width + k];
            sums[c][k] += mean;
            overall[k] += mean / voxels;
          }
        }
    for (int threads : {1, 2, 3}) {
      omp_set_num_threads(threads);
      const ColourMeans means = averageOverColours(field, layout, colours, region);
      ASSERT_EQ(means.colours, colours.getColors());
      ASSERT_EQ(means.byColour.size(), means.colours.size());
      for (std::uint64_t k = 0; k < width; ++k)
        EXPECT_NEAR(means.overall[k], overall[k], 1e-12) << "component " << k;
      Real fractionSum = 0.0;
      for (std::size_t i = 0; i < means.colours.size(); ++i) {
        const Colour c = means.colours[i];
        EXPECT_DOUBLE_EQ(means.volumeFractions[i], static_cast<Real>(counts[c]) / voxels);
        fractionSum += means.volumeFractions[i];
        for (std::uint64_t k = 0; k < width; ++k) {
          const Real expected = counts[c] ? sums[c][k] / static_cast<Real>(counts[c]) : 0.0;
          EXPECT_NEAR(means.byColour[i][k], expected, 1e-12) << "colour " << int(c);
        }
      }
      EXPECT_DOUBLE_EQ(fractionSum, 1.0);
      EXPECT_EQ(means.volumeFractions.back(), 0.0);  // colour 200
    }
  }
  omp_set_num_threads(savedThreads);
}

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

}  // namespace
}  // namespace gridmoor
