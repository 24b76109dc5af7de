#include "voxel/FilesystemImage.h"

#include <gtest/gtest.h>
#include <omp.h>
#include <sys/stat.h>

#include <cstdio>
#include <thread>

#include "voxel/AtomicAdd.h"
#include "voxel/StaticPartition.h"
#include "voxel/Vector.h"

namespace gridmoor {
namespace {

// A field of 2 quadrature points and 3 components on a slab of planes 5..7 of a
// 3 x 2 x 4 grid, stored with element e holding a value that names its place.
constexpr std::uint64_t Q = 2, C = 3, NX = 3, NY = 2, NZ = 4, X0 = 5;
constexpr std::uint64_t N = Q * C * NX * NY * NZ;

double label(std::uint64_t i, std::uint64_t x, std::uint64_t y, std::uint64_t z, std::uint64_t q) {
  return static_cast<double>(i + 10 * q + 100 * z + 1000 * y + 10000 * x);
}

std::string storeField(const std::string& name, double scale) {
  Vector<double> field(N, "field");
  std::uint64_t e = 0;
  for (std::uint64_t x = X0; x < X0 + NX; ++x)
    for (std::uint64_t y = 0; y < NY; ++y)
      for (std::uint64_t z = 0; z < NZ; ++z)
        for (std::uint64_t q = 0; q < Q; ++q)
          for (std::uint64_t i = 0; i < C; ++i) field[e++] = scale * label(i, x, y, z, q);
  const std::string path = testing::TempDir() + "gridmoor_fsimage_" + name;
  field.writeToFile(path);
  return path;
}

TEST(FilesystemImage, ValuesInMemoryOrderAndOutOfOrder) {
  const std::string file = storeField("a.bin", 1.0);
  FilesystemImage view(Q, C, NX, NY, NZ, X0, file, "");
  for (std::uint64_t x = X0; x < X0 + NX; ++x)
    for (std::uint64_t y = 0; y < NY; ++y)
      for (std::uint64_t z = 0; z < NZ; ++z)
        for (std::uint64_t q = 0; q < Q; ++q)
          for (std::uint64_t i = 0; i < C; ++i)
            ASSERT_EQ(view.value(i, x, y, z, q), label(i, x, y, z, q));
  // Backwards and skipping: the relative moves must land on the right element.
  EXPECT_EQ(view.value(1, X0, 1, 2, 0), label(1, X0, 1, 2, 0));
  EXPECT_EQ(view.value(0, X0 + 2, 0, 3, 1), label(0, X0 + 2, 0, 3, 1));
  EXPECT_EQ(view.value(2, X0, 0, 0, 0), label(2, X0, 0, 0, 0));
  EXPECT_EQ(view.value(2, X0, 0, 0, 0), label(2, X0, 0, 0, 0));
}

TEST(FilesystemImage, SecondFileGivesTheDifference) {
  const std::string first = storeField("first.bin", 3.0);
  const std::string second = storeField("second.bin", 1.0);
  FilesystemImage view(Q, C, NX, NY, NZ, X0, first, second);
  EXPECT_EQ(view.value(2, X0 + 1, 1, 3, 1), 2.0 * label(2, X0 + 1, 1, 3, 1));
  EXPECT_EQ(view.value(0, X0, 0, 0, 0), 2.0 * label(0, X0, 0, 0, 0));
  EXPECT_EQ(view.value(1, X0 + 2, 1, 1, 0), 2.0 * label(1, X0 + 2, 1, 1, 0));
}

TEST(FilesystemImage, SequentialReadsNeverSeek) {
  // A pipe cannot seek: the view reads it to the end only if memory order means no move.
  const std::string fifo = testing::TempDir() + "gridmoor_fsimage_fifo";
  std::remove(fifo.c_str());
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  const std::string source = storeField("pipe_source.bin", 1.0);
  std::thread writer([&] {
    Vector<double> field(N, "field");
    field.readFromFile(source);
    field.writeToFile(fifo);
  });
  FilesystemImage view(Q, C, NX, NY, NZ, X0, fifo, "");
  double sum = 0.0, expected = 0.0;
  for (std::uint64_t x = X0; x < X0 + NX; ++x)
    for (std::uint64_t y = 0; y < NY; ++y)
      for (std::uint64_t z = 0; z < NZ; ++z)
        for (std::uint64_t q = 0; q < Q; ++q)
          for (std::uint64_t i = 0; i < C; ++i) {
            sum += view.value(i, x, y, z, q);
            expected += label(i, x, y, z, q);
          }
  writer.join();
  EXPECT_EQ(sum, expected);
  std::remove(fifo.c_str());
}

TEST(FilesystemImage, ThreadCopiesReadIndependently) {
  const std::string file = storeField("threads.bin", 1.0);
  const FilesystemImage shared(Q, C, NX, NY, NZ, X0, file, "");
  double total = 0.0, expected = 0.0;
  for (std::uint64_t x = X0; x < X0 + NX; ++x)
    for (std::uint64_t y = 0; y < NY; ++y)
      for (std::uint64_t z = 0; z < NZ; ++z)
        for (std::uint64_t q = 0; q < Q; ++q)
          for (std::uint64_t i = 0; i < C; ++i) expected += label(i, x, y, z, q);
#pragma omp parallel num_threads(3)
  {
    FilesystemImage own(shared);
    const IndexRange r = staticPartition(NX, static_cast<std::uint64_t>(omp_get_thread_num()),
                                         static_cast<std::uint64_t>(omp_get_num_threads()));
    double partial = 0.0;
    for (std::uint64_t x = X0 + r.begin; x < X0 + r.end; ++x)
      for (std::uint64_t y = 0; y < NY; ++y)
        for (std::uint64_t z = 0; z < NZ; ++z)
          for (std::uint64_t q = 0; q < Q; ++q)
            for (std::uint64_t i = 0; i < C; ++i) partial += own.value(i, x, y, z, q);
    atomicAdd(total, partial);
  }
  EXPECT_EQ(total, expected);
}

TEST(FilesystemImageDeathTest, MissingOrShortFilesEndTheRun) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const std::string file = storeField("short.bin", 1.0);
  const std::string missing = testing::TempDir() + "gridmoor_fsimage_missing.bin";
  EXPECT_EXIT(FilesystemImage(Q, C, NX, NY, NZ, X0, missing, ""), testing::ExitedWithCode(1),
              "^Could not open the image file " + missing + "\n$");
  EXPECT_EXIT(FilesystemImage(Q, C, NX, NY, NZ, X0, file, missing), testing::ExitedWithCode(1),
              "^Could not open the image file " + missing + "\n$");
  // A view larger than the stored field: the element past the end is not there.
  EXPECT_EXIT(FilesystemImage(Q, C, NX + 1, NY, NZ, X0, file, "").value(0, X0 + NX, 0, 0, 0),
              testing::ExitedWithCode(1), "^Failed to read the file " + file + "\n$");
}

}  // namespace
}  // namespace gridmoor
