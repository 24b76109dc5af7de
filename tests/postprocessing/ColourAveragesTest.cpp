#include <gtest/gtest.h>
#include <omp.h>

#include <cstdint>
#include <limits>
#include <vector>

#include "postprocessing/ColourAverages.h"

namespace gridmoor {
namespace {

// A 5 x 3 x 4 grid of six-component values laid out like an FFT field: the third axis padded
// to 2 * (4 / 2 + 1) = 6 voxels, the padding filled with NaN so that reading it shows.
TEST(ResultFileColourAverages, MatchDirectLoopOnPaddedField) {
  constexpr std::uint64_t nx = 5, ny = 3, nz = 4, components = 6, paddedZ = 6;
  constexpr std::uint64_t rowStride = components * paddedZ;
  ColorImage colours(nx, ny, nz, 0, "colours");
  std::vector<Real> field(nx * ny * rowStride, std::numeric_limits<Real>::quiet_NaN());
  for (std::uint64_t x = 0; x < nx; ++x)
    for (std::uint64_t y = 0; y < ny; ++y)
      for (std::uint64_t z = 0; z < nz; ++z) {
        colours.at(x, y, z) = static_cast<Colour>((x + 2 * y + z) % 3 == 0 ? 9 : (x + z) % 2 + 1);
        for (std::uint64_t k = 0; k < components; ++k)
          field[(x * ny + y) * rowStride + z * components + k] =
              static_cast<Real>(k + 1) * (0.5 * x - 1.25 * y + 0.125 * z * z) + 3.0 * k;
      }
  colours.collectColors();
  colours.colors.push_back(200);  // listed but without voxels

  // Direct loop over the same voxels.
  std::vector<Real> overall(components, 0.0);
  std::vector<std::vector<Real>> sums(256, std::vector<Real>(components, 0.0));
  std::vector<std::uint64_t> counts(256, 0);
  for (std::uint64_t x = 0; x < nx; ++x)
    for (std::uint64_t y = 0; y < ny; ++y)
      for (std::uint64_t z = 0; z < nz; ++z) {
        const Colour c = colours.at(x, y, z);
        ++counts[c];
        for (std::uint64_t k = 0; k < components; ++k) {
          const Real v = field[(x * ny + y) * rowStride + z * components + k];
          sums[c][k] += v;
          overall[k] += v / static_cast<Real>(nx * ny * nz);
        }
      }

  const int savedThreads = omp_get_max_threads();
  for (int threads : {1, 2, 3}) {
    omp_set_num_threads(threads);
    const ColourMeans means = averageOverColours(field.data(), components, rowStride, colours);
    ASSERT_EQ(means.colours, colours.getColors());
    ASSERT_EQ(means.byColour.size(), means.colours.size());
    for (std::uint64_t k = 0; k < components; ++k)
      EXPECT_NEAR(means.overall[k], overall[k], 1e-12) << "component " << k;
    Real fractionSum = 0.0;
    for (std::size_t i = 0; i < means.colours.size(); ++i) {
      const Colour c = means.colours[i];
      EXPECT_DOUBLE_EQ(means.volumeFractions[i],
                       static_cast<Real>(counts[c]) / static_cast<Real>(nx * ny * nz));
      fractionSum += means.volumeFractions[i];
      for (std::uint64_t k = 0; k < components; ++k) {
        const Real expected = counts[c] ? sums[c][k] / static_cast<Real>(counts[c]) : 0.0;
        EXPECT_NEAR(means.byColour[i][k], expected, 1e-12) << "colour " << int(c);
      }
    }
    EXPECT_DOUBLE_EQ(fractionSum, 1.0);
    EXPECT_EQ(means.volumeFractions.back(), 0.0);  // colour 200
  }
  omp_set_num_threads(savedThreads);
}

}  // namespace
}  // namespace gridmoor
