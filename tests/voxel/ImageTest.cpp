#include "voxel/Image.h"

#include <gtest/gtest.h>

namespace gridmoor {
namespace {

TEST(Image, CoordinatesOfIndexInvertsElementIndexOverAWholeImage) {
  const Image<double> image(6, 3, 4, 5, "field");
  ASSERT_EQ(image.size(), 6u * 3 * 4 * 5);
  std::uint64_t expected = 0;  // memory order: component fastest, then z, then y, x slowest
  for (std::uint64_t x = 0; x < 3; ++x)
    for (std::uint64_t y = 0; y < 4; ++y)
      for (std::uint64_t z = 0; z < 5; ++z)
        for (std::uint64_t c = 0; c < 6; ++c, ++expected) {
          ASSERT_EQ(image.elementIndex(c, x, y, z), expected);
          std::uint64_t c2, x2, y2, z2;
          image.coordinatesOfIndex(expected, c2, x2, y2, z2);
          ASSERT_TRUE(c2 == c && x2 == x && y2 == y && z2 == z) << expected;
        }
}

TEST(Image, PointersAddressASlabByGlobalX) {
  Image<double> slab(2, 2, 3, 4, "slab");  // global planes 4 and 5, two components
  slab.xOffset = 4;
  EXPECT_EQ(slab.voxelPointer(4, 0, 0), slab.data());
  EXPECT_EQ(slab.elementPointer(1, 5, 2, 3), slab.data() + slab.size() - 1);
  EXPECT_EQ(slab.elementPointer(1, 4, 1, 2) - slab.data(),
            static_cast<std::ptrdiff_t>(slab.elementIndex(1, 0, 1, 2)));
}

TEST(Image, ResizeFormsSetGeometryAndLength) {
  Image<unsigned char> colours("colours");
  colours.resize(2, 3, 4);
  EXPECT_EQ(colours.getNumberOfComponents(), 1u);
  EXPECT_EQ(colours.size(), 24u);
  EXPECT_EQ(colours.strideX, 12u);

  Image<double> field(6, 2, 2, 2, 1.0, "field");
  field.resize(3, 4, 5, 6);
  EXPECT_EQ(field.size(), 360u);
  EXPECT_EQ(field[0], 1.0) << "resize keeps the leading elements";
  EXPECT_EQ(field[359], 0.0);
  EXPECT_EQ(field.getSizeX() * 10 + field.getSizeY(), 45u);
  EXPECT_EQ(field.strideX, 90u);
  EXPECT_EQ(field.strideY, 18u);
  // A padded field stores z with 2 * (6 / 2 + 1) = 8 entries per line.
  field.resize(1, 4, 5, 6, 4 * 5 * 8);
  EXPECT_EQ(field.size(), 160u);
  EXPECT_EQ(field.strideX, 30u);

  const std::uint64_t before = allocatedBytes;
  memoryEstimateMode = true;
  Image<double> estimate(6, 10, 20, 30, "estimate");
  memoryEstimateMode = false;
  EXPECT_EQ(estimate.data(), nullptr);
  EXPECT_EQ(estimate.getSizeY(), 20u) << "the geometry is kept without data";
  EXPECT_EQ(allocatedBytes - before, 6u * 10 * 20 * 30 * 8);
  allocatedBytes = before;
}

}  // namespace
}  // namespace gridmoor
