#include "voxel/MpiExchange.h"

#include <gtest/gtest.h>

#include <vector>

#include "voxel/Ratio.h"
#include "voxel/ResamplingBox.h"

namespace gridmoor {
namespace {

TEST(MpiExchange, AnswersAsACommunicatorOfOne) {
  MpiExchange mpi;
  EXPECT_EQ(mpi.getRank(), 0);
  EXPECT_EQ(mpi.getNumberOfProcesses(), 1);
  for (int rank : {-1, 0, 3}) {
    std::uint64_t begin = 7, end = 7;
    mpi.getDataRange(100, begin, end, rank);
    EXPECT_EQ(begin, 0u);
    EXPECT_EQ(end, 100u);
  }
  std::vector<double> data{1.0, 2.0, 3.0};
  const std::vector<double> original = data;
  mpi.broadcast(data.data(), 24);
  mpi.allGather(data.data(), 24);
  mpi.sendReceive(data.data(), 8, 0, data.data() + 1, 8, 0);
  mpi.receive(data.data(), 24, 0);
  mpi.barrier();
  EXPECT_EQ(data, original);
  EXPECT_EQ(mpi.reduceSum(2.5), 2.5);
  EXPECT_EQ(mpi.reduceMax(std::uint64_t{9}), 9u);
  EXPECT_EQ(mpi.reduceMin(-4.0), -4.0);
  EXPECT_EQ(mpi.getProcessLocalName("out/field.vti"), "out/field.vti");
}

TEST(MpiExchange, NonBlockingRequestsCompleteAndReleaseTheirRecords) {
  MpiExchange mpi;
  std::vector<char> buffer{'a', 'b'};
  MpiExchange::Request send = mpi.sendNonBlocking(buffer.data(), 2, 0);
  MpiExchange::Request receive = mpi.receiveNonBlocking(buffer.data(), 2, 0);
  buffer[0] = 'z';  // the send owns its copy; the caller's buffer is free again
  EXPECT_EQ(mpi.pendingRequests(), 2u);
  EXPECT_EQ(mpi.test(send), 1);
  EXPECT_EQ(send, MpiExchange::noRequest);
  EXPECT_EQ(mpi.pendingRequests(), 1u);
  MpiExchange::Request next = mpi.sendNonBlocking(buffer.data(), 1, 0);
  EXPECT_EQ(mpi.test(send), 1) << "a completed request stays complete";
  EXPECT_EQ(mpi.pendingRequests(), 2u) << "and does not release another's record";
  EXPECT_EQ(mpi.test(receive), 1);
  EXPECT_EQ(mpi.test(next), 1);
  EXPECT_EQ(mpi.pendingRequests(), 0u);
  EXPECT_EQ(buffer[0], 'z');
}

TEST(MpiExchange, SlabRangesAndBoxesMapExactlyBetweenGrids) {
  std::uint64_t begin, end;
  mapRange(3, 7, Ratio(3, 2), begin, end);  // [4.5, 10.5)
  EXPECT_EQ(begin, 4u);
  EXPECT_EQ(end, 11u);
  mapRange(2, 4, Ratio(2), begin, end);
  EXPECT_EQ(begin, 4u);
  EXPECT_EQ(end, 8u);

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

}  // namespace
}  // namespace gridmoor
