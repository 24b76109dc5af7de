#include "voxel/FixedVector.h"

#include <gtest/gtest.h>

#include <sstream>

#include "voxel/AbstractFile.h"

namespace gridmoor {
namespace {

TEST(VectorFixed, FillsAndConvertsToANamedVector) {
  const FixedVector<6> zero;
  const FixedVector<36> ones(1.0);
  for (double v : zero) EXPECT_EQ(v, 0.0);
  for (double v : ones) EXPECT_EQ(v, 1.0);
  ComplexFixedVector21 c(std::complex<double>(1.0, -2.0));
  c[20] = {3.0, 4.0};
  const std::uint64_t before = allocatedBytes;
  {
    const Vector<std::complex<double>> v = c.toVector();
    EXPECT_EQ(v.getName(), "FixedVector");
    ASSERT_EQ(v.size(), 21u);
    EXPECT_EQ(v[0], std::complex<double>(1.0, -2.0));
    EXPECT_EQ(v[20], std::complex<double>(3.0, 4.0));
    EXPECT_EQ(allocatedBytes - before, 21u * 16);
  }
  EXPECT_EQ(allocatedBytes, before);
}

TEST(VectorFileSinks, MemoryAndDiskFilesReceiveTheBytes) {
  const std::uint64_t before = allocatedBytes;
  {
    MemoryFile memory(8);
    EXPECT_EQ(memory.getName(), "DataWriterMemoryFile");
    AbstractFile& sink = memory;
    sink.write("abc", 3);
    sink.write("", 0);
    sink.write("defgh", 5);
    EXPECT_EQ(std::string(memory.data(), memory.size()), "abcdefgh");
    EXPECT_EQ(memory.getPosition(), 8u);
    EXPECT_EQ(allocatedBytes - before, 8u);
  }
  EXPECT_EQ(allocatedBytes, before) << "the buffer's capacity is given back";

  std::ostringstream stream;
  DiskFile<std::ostream> disk(&stream);
  AbstractFile& sink = disk;
  sink.write("xyz\0w", 5);
  EXPECT_EQ(stream.str(), std::string("xyz\0w", 5));
}

TEST(VectorFileSinksDeathTest, MemoryFileRefusesToGrow) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  MemoryFile memory(4);
  memory.write("abc", 3);
  EXPECT_EXIT(memory.write("de", 2), testing::ExitedWithCode(1), "does not fit");
}

}  // namespace
}  // namespace gridmoor
