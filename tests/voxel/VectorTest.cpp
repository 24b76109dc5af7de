#include "voxel/Vector.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <cmath>
#include <complex>
#include <cstdio>
#include <fstream>
#include <random>
#include <sstream>
#include <streambuf>
#include <vector>

namespace gridmoor {
namespace {

std::string tempPath(const std::string& name) { return testing::TempDir() + "gridmoor_vector_" + name; }

// Records the size of every write the stream passes on, to see the block rounds.
class RecordingBuffer : public std::streambuf {
 public:
  std::vector<std::streamsize> writes;
  std::string bytes;

 protected:
  std::streamsize xsputn(const char* s, std::streamsize n) override {
    writes.push_back(n);
    bytes.append(s, static_cast<std::size_t>(n));
    return n;
  }
};

std::vector<std::streamsize> writeSizes(std::size_t length) {
  Vector<double> v(length, 1.5, "v");
  RecordingBuffer buffer;
  std::ostream stream(&buffer);
  v.writeBinary(stream);
  EXPECT_EQ(buffer.bytes.size(), length * sizeof(double));
  return buffer.writes;
}

TEST(VectorBinary, WritesWholeBlocksAndOneRestRound) {
  using W = std::vector<std::streamsize>;
  EXPECT_EQ(writeSizes(0), W({0}));
  EXPECT_EQ(writeSizes(32767), W({262136}));
  EXPECT_EQ(writeSizes(32768), W({262144, 0}));
  EXPECT_EQ(writeSizes(32769), W({262144, 8}));
  EXPECT_EQ(writeSizes(65537), W({262144, 262144, 8}));
}

TEST(VectorBinary, FileRoundTripAtBlockBoundaries) {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> uniform(-1.0, 1.0);
  for (std::size_t length : {0u, 1u, 32767u, 32768u, 32769u, 100000u}) {
    Vector<double> v(length, "v");
    for (auto& e : v) e = uniform(random);
    const std::string file = tempPath("roundtrip.bin");
    v.writeToFile(file);
    std::ifstream in(file, std::ios::binary | std::ios::ate);
    EXPECT_EQ(static_cast<std::size_t>(in.tellg()), length * sizeof(double));
    Vector<double> back(length, "back");
    back.readFromFile(file);
    EXPECT_EQ(back, v) << "length " << length;
  }
  // One-byte elements use the same block in bytes: 262144 + 1 bytes.
  Vector<unsigned char> colours(262145, "colours");
  for (std::size_t i = 0; i < colours.size(); ++i) colours[i] = static_cast<unsigned char>(i * 31);
  colours.writeToFile(tempPath("colours.bin"));
  Vector<unsigned char> back(262145, "back");
  back.readFromFile(tempPath("colours.bin"));
  EXPECT_EQ(back, colours);
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
  const std::string missing = tempPath("does_not_exist.bin");
  EXPECT_EXIT(eleven.readFromFile(missing), testing::ExitedWithCode(1),
              "^File " + missing + " can not be opened\n$");
  EXPECT_EXIT(eleven.subtractFromFile(missing), testing::ExitedWithCode(1),
              "^File " + missing + " can not be opened\n$");
  const std::string notWritable = tempPath("no_such_dir/x.bin");
  EXPECT_EXIT(eleven.writeToFile(notWritable), testing::ExitedWithCode(1),
              "^File " + notWritable + " can not be opened\n$");
  if (std::ofstream("/dev/full")) {
    EXPECT_EXIT(Vector<double>(100000, "big").writeToFile("/dev/full"),
                testing::ExitedWithCode(1), "^Failed to write the file /dev/full\n$");
  }
}

TEST(VectorBinary, SubtractFromFileMatchesSubtractionInMemory) {
  std::mt19937 random(11);
  std::uniform_real_distribution<double> uniform(-10.0, 10.0);
  for (std::size_t length : {0u, 5u, 32768u, 70001u}) {
    Vector<double> stored(length, "stored"), field(length, "field");
    for (auto& e : stored) e = uniform(random);
    for (auto& e : field) e = uniform(random);
    stored.writeToFile(tempPath("stored.bin"));
    Vector<double> expected = field;
    expected -= stored;
    const std::uint64_t before = allocatedBytes;
    field.subtractFromFile(tempPath("stored.bin"));
    EXPECT_EQ(allocatedBytes, before) << "the scratch block is freed";
    EXPECT_EQ(field, expected) << "length " << length;
  }
}

TEST(VectorMemory, CountsBytesAndClearGivesStorageBack) {
  const std::uint64_t before = allocatedBytes;
  {
    Vector<double> v(1000, "x");
    EXPECT_EQ(allocatedBytes - before, 8000u);
    v.resize(10);
    EXPECT_EQ(allocatedBytes - before, 8000u) << "shrinking keeps the capacity";
    v.clear();
    EXPECT_EQ(v.capacity(), 0u);
    EXPECT_EQ(allocatedBytes, before);
    Vector<std::complex<double>> z(3, "z");
    EXPECT_EQ(allocatedBytes - before, 48u);
  }
  EXPECT_EQ(allocatedBytes, before) << "destruction gives everything back";
}

TEST(VectorMemory, EstimateModeCountsWithoutAllocating) {
  const std::uint64_t before = allocatedBytes;
  memoryEstimateMode = true;
  Vector<double> v(1000, "x");
  Vector<unsigned char> c(5, 7, "c");
  memoryEstimateMode = false;
  EXPECT_EQ(v.data(), nullptr);
  EXPECT_EQ(v.size(), 0u);
  EXPECT_EQ(c.data(), nullptr);
  EXPECT_EQ(allocatedBytes - before, 8005u);
  // The mode is fixed at construction, not read again later.
  v.resize(20);
  EXPECT_EQ(v.size(), 0u);
  EXPECT_EQ(allocatedBytes - before, 8165u);
  v.clear();
  EXPECT_EQ(allocatedBytes - before, 8165u) << "nothing was allocated, so nothing is subtracted";
  Vector<double> normal(4, "normal");
  EXPECT_NE(normal.data(), nullptr);
  allocatedBytes = before;
}

TEST(VectorMemory, ResizeKeepsLeadingElementsAndZeroFills) {
  Vector<double> v(5, 3.0, "v");
  v[0] = 1.0;
  v.resize(8);
  const std::vector<double> grown(v.begin(), v.end());
  EXPECT_EQ(grown, (std::vector<double>{1, 3, 3, 3, 3, 0, 0, 0}));
  v.resize(3);
  v.resize(2);
  EXPECT_EQ(std::vector<double>(v.begin(), v.end()), (std::vector<double>{1, 3}));
  EXPECT_EQ(v.getName(), "v");
}

TEST(VectorArithmetic, StaticPartitionTilesTheRange) {
  for (std::uint64_t threads = 1; threads <= 8; ++threads) {
    for (std::uint64_t n = 0; n <= 40; ++n) {
      std::uint64_t next = 0;
      for (std::uint64_t t = 0; t < threads; ++t) {
        const IndexRange r = staticPartition(n, t, threads);
        EXPECT_EQ(r.begin, next);
        EXPECT_EQ(r.end - r.begin, n / threads + (t < n % threads ? 1 : 0));
        next = r.end;
      }
      EXPECT_EQ(next, n);
    }
  }
}

TEST(VectorArithmetic, ElementWiseOperatorsOnAnyTeamSize) {
  const int savedThreads = omp_get_max_threads();
  for (int threads : {1, 3, 7}) {
    omp_set_num_threads(threads);
    for (std::size_t n : {0u, 2u, 10u, 1001u}) {
      Vector<double> a(n, "a"), b(n, "b");
      for (std::size_t i = 0; i < n; ++i) {
        a[i] = 0.5 * static_cast<double>(i) + 1.0;
        b[i] = std::sin(static_cast<double>(i));
      }
      Vector<double> r = a;
      (((r *= 3.0) += b) -= a).addScaled(b, -0.25);
      for (std::size_t i = 0; i < n; ++i)
        ASSERT_DOUBLE_EQ(r[i], a[i] * 3.0 + b[i] - a[i] - 0.25 * b[i]) << i << " on " << threads;
      r = 2.5;
      for (std::size_t i = 0; i < n; ++i) ASSERT_EQ(r[i], 2.5);
    }
  }
  omp_set_num_threads(savedThreads);
}

TEST(VectorArithmetic, DivisionIsExactNotByInverse) {
  Vector<double> v(200, "v");
  for (std::size_t i = 0; i < v.size(); ++i) v[i] = 0.1 * static_cast<double>(i + 1);
  const Vector<double> original = v;
  v /= 3.0;
  int differsFromInverse = 0;
  for (std::size_t i = 0; i < v.size(); ++i) {
    EXPECT_EQ(v[i], original[i] / 3.0);
    if (original[i] * (1.0 / 3.0) != original[i] / 3.0) ++differsFromInverse;
  }
  EXPECT_GT(differsFromInverse, 0) << "the sample must tell the two apart";
}

TEST(VectorArithmeticDeathTest, UnequalSizesEndTheRun) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  Vector<double> a(3, "a"), b(4, "b");
  EXPECT_EXIT(a += b, testing::ExitedWithCode(1),
              "^Function Vector::operator\\+= can not be called for two Vectors with different "
              "size\\.\n$");
  EXPECT_EXIT(a -= b, testing::ExitedWithCode(1),
              "^Function Vector::operator-= can not be called for two Vectors with different "
              "size\\.\n$");
  EXPECT_EXIT(a.addScaled(b, 2.0), testing::ExitedWithCode(1),
              "^Function Vector::addScaled can not be called for two Vectors with different "
              "size\\.\n$");
}

TEST(VectorByteOrder, ScalarHelpersSwapBytesOnRequest) {
  std::ostringstream plain, swapped;
  Vector<double>::writeInt(plain, 0x01020304, false);
  Vector<double>::writeInt(swapped, 0x01020304, true);
  EXPECT_EQ(plain.str(), std::string("\x04\x03\x02\x01", 4));
  EXPECT_EQ(swapped.str(), std::string("\x01\x02\x03\x04", 4));

  std::ostringstream f;
  Vector<double>::writeFloat(f, 1.0, true);  // 1.0f is 3f 80 00 00 in big-endian order
  EXPECT_EQ(f.str(), std::string("\x3f\x80\x00\x00", 4));

  std::stringstream d;
  Vector<double>::writeDouble(d, -2.0, true);  // c0 00 .. 00 big-endian
  EXPECT_EQ(d.str(), std::string("\xc0\x00\x00\x00\x00\x00\x00\x00", 8));
  Vector<double>::writeDouble(d, 0.1, false);
  EXPECT_EQ(Vector<double>::readDouble(d, true), -2.0);
  EXPECT_EQ(Vector<double>::readDouble(d, false), 0.1);
}

}  // namespace
}  // namespace gridmoor
