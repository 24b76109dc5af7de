// The containers: block-wise files, the byte count, element-wise arithmetic, the byte sinks
// and helpers, and the voxel addressing of images.
#include "voxel/Vector.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <cmath>
#include <complex>
#include <random>
#include <sstream>
#include <streambuf>
#include <vector>

#include "voxel/AbstractFile.h"
#include "voxel/Image.h"

namespace gridmoor {
namespace {

std::string tempPath(const std::string& name) { return testing::TempDir() + "gridmoor_vector_" + name; }

Vector<double> randomVector(std::size_t length, unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> uniform(-10.0, 10.0);
  Vector<double> v(length, "random");
  for (auto& e : v) e = uniform(random);
  return v;
}

// Records the size of every write the stream passes on, to see the block rounds.
class RecordingBuffer : public std::streambuf {
 public:
  std::vector<std::streamsize> writes;

 protected:
  std::streamsize xsputn(const char*, std::streamsize n) override {
    writes.push_back(n);
    return n;
  }
};

TEST(VectorBinary, WritesWholeBlocksAndOneRestRound) {
  const auto rounds = [](std::size_t length) {
    RecordingBuffer buffer;
    std::ostream stream(&buffer);
    Vector<double>(length, "v").writeBinary(stream);
    return buffer.writes;
  };
  using W = std::vector<std::streamsize>;
  EXPECT_EQ(rounds(0), W({0}));
  EXPECT_EQ(rounds(32767), W({262136}));
  EXPECT_EQ(rounds(32768), W({262144, 0}));
  EXPECT_EQ(rounds(32769), W({262144, 8}));
}

TEST(VectorBinary, FileRoundTripAndSubtractionAtBlockBoundaries) {
  for (std::size_t length : {0u, 32768u, 32769u, 70001u}) {
    const Vector<double> stored = randomVector(length, 7);
    const std::string file = tempPath("stored.bin");
    stored.writeToFile(file);
    Vector<double> back(length, "back");
    back.readFromFile(file);
    EXPECT_EQ(back, stored) << length;

    Vector<double> field = randomVector(length, 8);
    Vector<double> expected = field;
    expected -= stored;
    const std::uint64_t before = allocatedBytes;
    field.subtractFromFile(file);
    EXPECT_EQ(allocatedBytes, before) << "the scratch block is freed";
    EXPECT_EQ(field, expected) << length;
  }
}

TEST(VectorBinaryDeathTest, FileFaultsEndTheRun) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const std::string shortFile = tempPath("short.bin");
  Vector<double>(10, 2.0, "ten").writeToFile(shortFile);
  Vector<double> eleven(11, "eleven");
  EXPECT_EXIT(eleven.readFromFile(shortFile), testing::ExitedWithCode(1),
              "^Failed to read the file " + shortFile + "\n$");
  EXPECT_EXIT(eleven.subtractFromFile(shortFile), testing::ExitedWithCode(1),
              "^Failed to read the file " + shortFile + "\n$");
  const std::string missing = tempPath("no_such_dir/x.bin");
  EXPECT_EXIT(eleven.readFromFile(missing), testing::ExitedWithCode(1),
              "^File " + missing + " can not be opened\n$");
  EXPECT_EXIT(eleven.writeToFile(missing), testing::ExitedWithCode(1),
              "^File " + missing + " can not be opened\n$");
}

TEST(VectorMemory, CountsBytesClearGivesStorageBackEstimateModeOnlyCounts) {
  const std::uint64_t before = allocatedBytes;
  {
    Vector<double> v(1000, 1.0, "x");
    EXPECT_EQ(allocatedBytes - before, 8000u);
    v.resize(10);
    EXPECT_EQ(allocatedBytes - before, 8000u) << "shrinking keeps the capacity";
    v.resize(12);
    EXPECT_EQ(v[9], 1.0) << "resize keeps the leading elements";
    EXPECT_EQ(v[11], 0.0);
    v.clear();
    EXPECT_EQ(v.capacity(), 0u);
    EXPECT_EQ(allocatedBytes, before);
    Vector<std::complex<double>> z(3, "z");
    EXPECT_EQ(allocatedBytes - before, 48u);
  }
  EXPECT_EQ(allocatedBytes, before);

  memoryEstimateMode = true;
  Vector<double> estimate(1000, "x");
  memoryEstimateMode = false;
  EXPECT_EQ(estimate.data(), nullptr);
  EXPECT_EQ(allocatedBytes - before, 8000u);
  estimate.resize(20);  // the mode was fixed at construction
  EXPECT_EQ(estimate.size(), 0u);
  estimate.clear();
  EXPECT_EQ(allocatedBytes - before, 8160u) << "nothing allocated, nothing subtracted";
  allocatedBytes = before;
}

TEST(VectorArithmetic, StaticPartitionTilesTheRange) {
  for (std::uint64_t threads = 1; threads <= 8; ++threads)
    for (std::uint64_t n = 0; n <= 40; ++n) {
      std::uint64_t next = 0;
      for (std::uint64_t t = 0; t < threads; ++t) {
        const IndexRange r = staticPartition(n, t, threads);
        ASSERT_EQ(r.begin, next);
        ASSERT_EQ(r.end - r.begin, n / threads + (t < n % threads ? 1 : 0));
        next = r.end;
      }
      ASSERT_EQ(next, n);
    }
}

TEST(VectorArithmetic, ElementWiseOperatorsOnAnyTeamSize) {
  const int savedThreads = omp_get_max_threads();
  for (int threads : {1, 3, 7}) {
    omp_set_num_threads(threads);
    for (std::size_t n : {0u, 2u, 1001u}) {
      const Vector<double> a = randomVector(n, 1), b = randomVector(n, 2);
      Vector<double> r = a;
      (((r *= 3.0) += b) -= a).addScaled(b, -0.25);
      for (std::size_t i = 0; i < n; ++i)
        ASSERT_NEAR(r[i], 2.0 * a[i] + 0.75 * b[i], 1e-12) << i << " on " << threads;
      r = 2.5;
      for (std::size_t i = 0; i < n; ++i) ASSERT_EQ(r[i], 2.5);
    }
  }
  omp_set_num_threads(savedThreads);

  // A true division: some of these differ in the last bit from a product by 1/3.
  Vector<double> v(200, "v");
  int differs = 0;
  for (std::size_t i = 0; i < v.size(); ++i) v[i] = 0.1 * static_cast<double>(i + 1);
  const Vector<double> original = v;
  v /= 3.0;
  for (std::size_t i = 0; i < v.size(); ++i) {
    EXPECT_EQ(v[i], original[i] / 3.0);
    differs += original[i] * (1.0 / 3.0) != original[i] / 3.0;
  }
  EXPECT_GT(differs, 0) << "the sample must tell the two apart";
}

TEST(VectorArithmeticDeathTest, UnequalSizesEndTheRun) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  Vector<double> a(3, "a"), b(4, "b");
  EXPECT_EXIT(a.addScaled(b, 2.0), testing::ExitedWithCode(1),
              "^Function Vector::addScaled can not be called for two Vectors with different size\\.\n$");
}

TEST(VectorFileSinks, MemoryFileReceivesTheBytesAndCountsItsBuffer) {
  const std::uint64_t before = allocatedBytes;
  {
    MemoryFile memory(8);
    AbstractFile& sink = memory;
    sink.write("abc", 3);
    sink.write("defgh", 5);
    EXPECT_EQ(std::string(memory.data(), memory.size()), "abcdefgh");
    EXPECT_EQ(allocatedBytes - before, 8u);
  }
  EXPECT_EQ(allocatedBytes, before) << "the buffer's capacity is given back";
}

TEST(VectorByteOrder, ScalarHelpersSwapBytesOnRequest) {
  std::stringstream s;
  Vector<double>::writeInt(s, 0x01020304, false);
  Vector<double>::writeInt(s, 0x01020304, true);
  Vector<double>::writeFloat(s, 1.0, true);
  Vector<double>::writeDouble(s, -2.0, true);
  EXPECT_EQ(s.str(), std::string("\x04\x03\x02\x01\x01\x02\x03\x04\x3f\x80\x00\x00"
                                 "\xc0\x00\x00\x00\x00\x00\x00\x00", 20));
  Vector<double>::writeDouble(s, 0.1, false);
  s.seekg(12);
  EXPECT_EQ(Vector<double>::readDouble(s, true), -2.0);
  EXPECT_EQ(Vector<double>::readDouble(s, false), 0.1);
}

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
