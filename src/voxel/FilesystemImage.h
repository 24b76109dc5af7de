// Read-only view of a field stored on disk by Vector::writeToFile, or of the difference of
// two such fields; reading in memory order reads the files straight through without seeking.
#pragma once

#include <cstdint>
#include <fstream>
#include <string>

namespace gridmoor {

// Not shared between threads: each thread copies the view before a parallel loop (a copy
// opens streams of its own) and sums into a shared total with atomicAdd at the end.
class FilesystemImage {
 public:
  // secondFileName may be empty; then value() reads the first file alone.
  FilesystemImage(std::uint64_t quadraturePoints, std::uint64_t components, std::uint64_t sizeX,
                  std::uint64_t sizeY, std::uint64_t sizeZ, std::uint64_t xOffset,
                  const std::string& fileName, const std::string& secondFileName);
  FilesystemImage(const FilesystemImage& other);
  FilesystemImage& operator=(const FilesystemImage&) = delete;
  virtual ~FilesystemImage() = default;

  // Element i of quadrature point q at voxel (x, y, z), x global; with a second file the
  // first file's value minus the second's.
  double value(std::uint64_t i, std::uint64_t x, std::uint64_t y, std::uint64_t z,
               std::uint64_t q);

 private:
  void open();
  double readAt(std::ifstream& stream, const std::string& name, std::uint64_t target);

  std::uint64_t numberOfQuadraturePoints;
  std::uint64_t numberOfComponents;
  std::uint64_t sizeX;
  std::uint64_t sizeY;
  std::uint64_t sizeZ;
  std::uint64_t xOffset;
  std::uint64_t position = 0;  // element index at which the streams stand
  std::string fileName;
  std::string secondFileName;
  std::ifstream stream;
  std::ifstream secondStream;
};

}  // namespace gridmoor
