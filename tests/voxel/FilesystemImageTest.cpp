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
// 3 x 2 x 4 grid, each element holding a value that names its place.
constexpr std::uint64_t Q = 2, C = 3, NX = 3, NY = 2, NZ = 4, X0 = 5;

double label(std::uint64_t i, std::uint64_t x, std::uint64_t y, std::uint64_t z, std::uint64_t q) {
  return static_cast<double>(i + 10 * q + 100 * z + 1000 * y + 10000 * x);
}

// Calls f(i, x, y, z, q) in memory order over the planes [X0 + from, X0 + to).
template <class F>
void inMemoryOrder(F f, std::uint64_t from = 0, std::uint64_t to = NX) {
  for (std::uint64_t x = X0 + from; x < X0 + to; ++x)
    for (std::uint64_t y = 0; y < NY; ++y)
      for (std::uint64_t z = 0; z < NZ; ++z)
        for (std::uint64_t q = 0; q < Q; ++q)
          for (std::uint64_t i = 0; i < C; ++i) f(i, x, y, z, q);
}

std::string storeField(const std::string& name, double scale) {
  Vector<double> field(Q * C * NX * NY * NZ, "field");
  std::uint64_t e = 0;
  inMemoryOrder([&](auto i, auto x, auto y, auto z, auto q) { field[e++] = scale * label(i, x, y, z, q); });
  const std::string path = testing::TempDir() + "gridmoor_fsimage_" + name;
  field.writeToFile(path);
  return path;
}

TEST(FilesystemImage, ValuesInAnyOrderAndTheDifferenceOfTwoFiles) {
  const std::string file = storeField("a.bin", 1.0);
  FilesystemImage view(Q, C, NX, NY, NZ, X0, file, "");
  inMemoryOrder([&](auto i, auto x, auto y, auto z, auto q) {
    ASSERT_EQ(view.value(i, x, y, z, q), label(i, x, y, z, q));
  });
  // Backwards and skipping: the relative moves must land on the right element.
  EXPECT_EQ(view.value(1, X0, 1, 2, 0), label(1, X0, 1, 2, 0));
  EXPECT_EQ(view.value(0, X0 + 2, 0, 3, 1), label(0, X0 + 2, 0, 3, 1));
  EXPECT_EQ(view.value(2, X0, 0, 0, 0), label(2, X0, 0, 0, 0));

  // With a second file: the first file's value minus the second's.
  FilesystemImage difference(Q, C, NX, NY, NZ, X0, storeField("b.bin", 3.0), file);
  EXPECT_EQ(difference.value(2, X0 + 1, 1, 3, 1), 2.0 * label(2, X0 + 1, 1, 3, 1));
  EXPECT_EQ(difference.value(1, X0, 0, 0, 0), 2.0 * label(1, X0, 0, 0, 0));
}

TEST(FilesystemImage, SequentialReadsNeverSeek) {
  // A pipe cannot seek: the view reads it to the end only if memory order means no move.
  const std::string fifo = testing::TempDir() + "gridmoor_fsimage_fifo";
  std::remove(fifo.c_str());
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  const std::string source = storeField("pipe_source.bin", 1.0);
  std::thread writer([&] {
    Vector<double> field(Q * C * NX * NY * NZ, "field");
    field.readFromFile(source);
    field.writeToFile(fifo);
  });
  FilesystemImage view(Q, C, NX, NY, NZ, X0, fifo, "");
  double sum = 0.0, expected = 0.0;
  inMemoryOrder([&](auto i, auto x, auto y, auto z, auto q) {
    sum += view.value(i, x, y, z, q);
    expected += label(i, x, y, z, q);
  });
  writer.join();
  EXPECT_EQ(sum, expected);
  std::remove(fifo.c_str());
}

TEST(FilesystemImage, ThreadCopiesReadIndependently) {
  const FilesystemImage shared(Q, C, NX, NY, NZ, X0, storeField("threads.bin", 1.0), "");
  double total = 0.0, expected = 0.0;
  inMemoryOrder([&](auto i, auto x, auto y, auto z, auto q) { expected += label(i, x, y, z, q); });
#pragma omp parallel num_threads(3)
  {
    FilesystemImage own(shared);
    const IndexRange r = staticPartition(NX, static_cast<std::uint64_t>(omp_get_thread_num()),
                                         static_cast<std::uint64_t>(omp_get_num_threads()));
    double partial = 0.0;
    inMemoryOrder([&](auto i, auto x, auto y, auto z, auto q) { partial += own.value(i, x, y, z, q); },
                  r.begin, r.end);
    atomicAdd(total, partial);
  }
  EXPECT_EQ(total, expected);
}

}  // namespace
}  // namespace gridmoor
