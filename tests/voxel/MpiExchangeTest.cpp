// The exchange of a single process and the overlap planes of a slab built on it.
#include "voxel/MpiExchange.h"

#include <gtest/gtest.h>

#include "voxel/ImageWithOverlap.h"
#include "voxel/Ratio.h"
#include "voxel/ResamplingBox.h"

namespace gridmoor {
namespace {

TEST(MpiExchange, CompletedRequestsReleaseOnlyTheirOwnRecords) {
  MpiExchange mpi;
  char buffer[2] = {'a', 'b'};
  MpiExchange::Request send = mpi.sendNonBlocking(buffer, 2, 0);
  MpiExchange::Request receive = mpi.receiveNonBlocking(buffer, 2, 0);
  EXPECT_EQ(mpi.test(send), 1);
  EXPECT_EQ(mpi.pendingRequests(), 1u);
  MpiExchange::Request next = mpi.sendNonBlocking(buffer, 1, 0);
  EXPECT_EQ(mpi.test(send), 1) << "a completed request stays complete";
  EXPECT_EQ(mpi.pendingRequests(), 2u) << "and does not release another's record";
  EXPECT_EQ(mpi.test(receive) + mpi.test(next), 2);
  EXPECT_EQ(mpi.pendingRequests(), 0u);
}

TEST(MpiExchange, SlabRangesAndBoxesMapExactlyBetweenGrids) {
  std::uint64_t begin, end;
  mapRange(3, 7, Ratio(3, 2), begin, end);  // [4.5, 10.5)
  EXPECT_EQ(begin, 4u);
  EXPECT_EQ(end, 11u);

  // Ratio 3/2: target voxel 0 covers originals 0 and 1 with weights 1 and 1/2.
  const AxisBox box = axisBox(0, Ratio(3, 2));
  EXPECT_EQ(box.first, 0u);
  EXPECT_EQ(box.end, 2u);
  EXPECT_EQ(overlapWeight(0, 0, Ratio(3, 2)), Ratio(1));
  EXPECT_EQ(overlapWeight(1, 0, Ratio(3, 2)), Ratio(1, 2));
  // Boxes of an uneven ratio tile the original grid: the weights of every original voxel
  // add up to 1 over the target voxels.
  const Ratio ratio(7, 3);  // 7 originals onto 3 targets
  for (std::uint64_t k = 0; k < 7; ++k) {
    Ratio total(0);
    for (std::uint64_t i = 0; i < 3; ++i) {
      const AxisBox b = axisBox(i, ratio);
      if (k >= b.first && k < b.end) total += overlapWeight(k, i, ratio);
    }
    EXPECT_EQ(total, Ratio(1)) << "original " << k;
  }
  EXPECT_EQ(axisBox(2, ratio).end, 7u);
}

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
