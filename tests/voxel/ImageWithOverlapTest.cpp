#include "voxel/ImageWithOverlap.h"

#include <gtest/gtest.h>

namespace gridmoor {
namespace {

Colour label(std::uint64_t x, std::uint64_t y, std::uint64_t z) {
  return static_cast<Colour>(x * 16 + y * 4 + z);
}

TEST(MpiExchangeOverlap, OneProcessReadsEveryPlaneThroughTheOwnSlab) {
  ColorImage fine(8, 3, 2, 0, "fine");
  for (std::uint64_t x = 0; x < 8; ++x)
    for (std::uint64_t y = 0; y < 3; ++y)
      for (std::uint64_t z = 0; z < 2; ++z) fine.at(x, y, z) = label(x, y, z);
  const ColorImage coarse(3, 1, 1, 0, "coarse");
  MpiExchange mpi;
  // Coarse slab [0, 3) with margins 1 and 2 in coarse planes, ratio 8/3: the need is capped
  // to the fine grid.
  const ImageWithOverlap overlap(&fine, &coarse, Ratio(8, 3), 1, 2, mpi);
  EXPECT_EQ(overlap.neededBegin, 0u);
  EXPECT_EQ(overlap.neededEnd, 8u);
  EXPECT_EQ(overlap.overlapBefore.size(), 0u);
  EXPECT_EQ(overlap.overlapAfter.size(), 0u);
  for (std::uint64_t x = 0; x < 8; ++x)
    for (std::uint64_t y = 0; y < 3; ++y)
      for (std::uint64_t z = 0; z < 2; ++z) {
        ASSERT_EQ(overlap.at(x, y, z), fine.voxelPointer(x, y, z));
        ASSERT_EQ(*overlap.at(x, y, z), label(x, y, z));
      }
}

TEST(MpiExchangeOverlap, PlanesBesideASlabAreReadFromTheOverlaps) {
  // A slab holding planes [2, 4) of a grid of 6, as a neighbour's exchange would leave it:
  // planes 0 and 1 in overlapBefore, 4 and 5 in overlapAfter.
  ColorImage slab("slab");
  slab.resize(1, 6, 2, 3, 2 * 2 * 3);
  slab.localXBegin = 2;
  slab.localXEnd = 4;
  slab.xOffset = 2;
  MpiExchange mpi;
  ImageWithOverlap overlap(&slab, &slab, Ratio(1), 0, 0, mpi);
  ASSERT_EQ(overlap.neededBegin, 0u);
  ASSERT_EQ(overlap.neededEnd, 6u);
  overlap.overlapBefore.resize(1, 2, 2, 3);
  overlap.overlapAfter.resize(1, 2, 2, 3);
  for (std::uint64_t x = 0; x < 6; ++x)
    for (std::uint64_t y = 0; y < 2; ++y)
      for (std::uint64_t z = 0; z < 3; ++z) {
        if (x < 2)
          *overlap.overlapBefore.voxelPointer(x, y, z) = label(x, y, z);
        else if (x < 4)
          slab.at(x, y, z) = label(x, y, z);
        else
          *overlap.overlapAfter.voxelPointer(x - 4, y, z) = label(x, y, z);
      }
  for (std::uint64_t x = 0; x < 6; ++x)
    for (std::uint64_t y = 0; y < 2; ++y)
      for (std::uint64_t z = 0; z < 3; ++z) ASSERT_EQ(*overlap.at(x, y, z), label(x, y, z)) << x;
}

}  // namespace
}  // namespace gridmoor
