#include "voxel/FixedVector.h"

#include <gtest/gtest.h>

#include "voxel/AbstractFile.h"

namespace gridmoor {
namespace {

TEST(VectorFixed, ConvertsToANamedCountedVector) {
  ComplexFixedVector21 c(std::complex<double>(1.0, -2.0));
  c[20] = {3.0, 4.0};
  EXPECT_EQ(FixedVector<6>()[5], 0.0);
  const std::uint64_t before = allocatedBytes;
  const Vector<std::complex<double>> v = c.toVector();
  ASSERT_EQ(v.size(), 21u);
  EXPECT_EQ(v[0], std::complex<double>(1.0, -2.0));
  EXPECT_EQ(v[20], std::complex<double>(3.0, 4.0));
  EXPECT_EQ(allocatedBytes - before, 21u * 16);
}

TEST(VectorFileSinks, MemoryFileReceivesTheBytesCountsItsBufferAndRefusesToGrow) {
  const std::uint64_t before = allocatedBytes;
  {
    MemoryFile memory(8);
    AbstractFile& sink = memory;
    sink.write("abc", 3);
    sink.write("defgh", 5);
    EXPECT_EQ(std::string(memory.data(), memory.size()), "abcdefgh");
    EXPECT_EQ(allocatedBytes - before, 8u);
    EXPECT_EXIT(sink.write("i", 1), testing::ExitedWithCode(1), "does not fit");
  }
  EXPECT_EQ(allocatedBytes, before) << "the buffer's capacity is given back";
}

}  // namespace
}  // namespace gridmoor
