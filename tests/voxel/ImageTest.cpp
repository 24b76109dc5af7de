#include "voxel/Image.h"

#include <gtest/gtest.h>

namespace gridmoor {
namespace {

TEST(Image, CoordinatesOfIndexInvertsElementIndexOverAWholeImage) {
  Image<double> image(6, 3, 4, 5, "field");
  ASSERT_EQ(image.size(), 6u * 3 * 4 * 5);
  std::uint64_t expected = 0;
  for (std::uint64_t x = 0; x < 3; ++x)
    for (std::uint64_t y = 0; y < 4; ++y)
      for (std::uint64_t z = 0; z < 5; ++z)
        for (std::uint64_t c = 0; c < 6; ++c, ++expected) {
          // Memory order: component fastest, then z, then y, x slowest.
          ASSERT_EQ(image.elementIndex(c, x, y, z), expected);
          std::uint64_t c2, x2, y2, z2;
          image.coordinatesOfIndex(expected, c2, x2, y2, z2);
          ASSERT_EQ(c2, c);
          ASSERT_EQ(x2, x);
          ASSERT_EQ(y2, y);
          ASSERT_EQ(z2, z);
        }
  std::uint64_t c, x, y, z;
  image.coordinatesOfIndex(image.size() - 1, c, x, y, z);
  EXPECT_EQ(c, 5u);
  EXPECT_EQ(x, 2u);
  EXPECT_EQ(y, 3u);
  EXPECT_EQ(z, 4u);
}

TEST(Image, PointersAddressASlabByGlobalX) {
  // A slab holding global planes 4 and 5 of a field with 2 components.
  Image<double> slab(2, 2, 3, 4, "slab");
  slab.xOffset = 4;
  EXPECT_EQ(slab.voxelPointer(4, 0, 0), slab.data());
  EXPECT_EQ(slab.elementPointer(1, 5, 2, 3), slab.data() + slab.size() - 1);
  EXPECT_EQ(slab.elementPointer(1, 4, 1, 2) - slab.data(),
            static_cast<std::ptrdiff_t>(slab.elementIndex(1, 0, 1, 2)));
  *slab.elementPointer(0, 5, 1, 0) = 9.0;
  const Image<double>& view = slab;
  EXPECT_EQ(view.voxelPointer(5, 1, 0)[0], 9.0);
}

TEST(Image, ResizeFormsSetGeometryAndLength) {
  Image<unsigned char> colours("colours");
  EXPECT_EQ(colours.getNumberOfComponents(), 0u);
  EXPECT_EQ(colours.size(), 0u);
  colours.resize(2, 3, 4);
  EXPECT_EQ(colours.getNumberOfComponents(), 1u);
  EXPECT_EQ(colours.size(), 24u);
  EXPECT_EQ(colours.strideX, 12u);
  EXPECT_EQ(colours.strideY, 4u);

  Image<double> field(6, 2, 2, 2, 1.0, "field");
  EXPECT_EQ(field.size(), 48u);
  field.resize(3, 4, 5, 6);
  EXPECT_EQ(field.size(), 360u);
  EXPECT_EQ(field[0], 1.0) << "resize keeps the leading elements";
  EXPECT_EQ(field[359], 0.0);
  EXPECT_EQ(field.getSizeX(), 4u);
  EXPECT_EQ(field.getSizeY(), 5u);
  EXPECT_EQ(field.getSizeZ(), 6u);
  EXPECT_EQ(field.strideX, 90u);
  EXPECT_EQ(field.strideY, 18u);
  EXPECT_EQ(field.strideZ, 3u);
  // A padded field: z is stored with 2 * (6 / 2 + 1) = 8 entries per line.
  field.resize(1, 4, 5, 6, 4 * 5 * 8);
  EXPECT_EQ(field.size(), 160u);
  EXPECT_EQ(field.strideX, 30u);
}

TEST(Image, EstimateModeCountsTheWholeGrid) {
  const std::uint64_t before = allocatedBytes;
  memoryEstimateMode = true;
  Image<double> field(6, 10, 20, 30, "field");
  memoryEstimateMode = false;
  EXPECT_EQ(field.data(), nullptr);
  EXPECT_EQ(field.getSizeY(), 20u) << "the geometry is kept even without data";
  EXPECT_EQ(allocatedBytes - before, 6u * 10 * 20 * 30 * 8);
  field.resize(3, 10, 20, 30);
  EXPECT_EQ(allocatedBytes - before, 9u * 10 * 20 * 30 * 8);
  allocatedBytes = before;
}

}  // namespace
}  // namespace gridmoor
