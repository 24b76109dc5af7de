#include "voxel/FilesystemImage.h"

#include "common/Fatal.h"

namespace gridmoor {

FilesystemImage::FilesystemImage(std::uint64_t quadraturePoints, std::uint64_t components,
                                 std::uint64_t sizeX, std::uint64_t sizeY, std::uint64_t sizeZ,
                                 std::uint64_t xOffset, const std::string& fileName,
                                 const std::string& secondFileName)
    : numberOfQuadraturePoints(quadraturePoints),
      numberOfComponents(components),
      sizeX(sizeX),
      sizeY(sizeY),
      sizeZ(sizeZ),
      xOffset(xOffset),
      fileName(fileName),
      secondFileName(secondFileName) {
  open();
}

FilesystemImage::FilesystemImage(const FilesystemImage& other)
    : numberOfQuadraturePoints(other.numberOfQuadraturePoints),
      numberOfComponents(other.numberOfComponents),
      sizeX(other.sizeX),
      sizeY(other.sizeY),
      sizeZ(other.sizeZ),
      xOffset(other.xOffset),
      fileName(other.fileName),
      secondFileName(other.secondFileName) {
  open();
}

void FilesystemImage::open() {
  stream.open(fileName, std::ios::in | std::ios::binary);
  if (!stream.is_open()) fatal("Could not open the image file " + fileName);
  if (secondFileName.empty()) return;
  secondStream.open(secondFileName, std::ios::in | std::ios::binary);
  if (!secondStream.is_open()) fatal("Could not open the image file " + secondFileName);
}

// Moves relative to where the stream stands, and only when the target is not the next
// element, so that a loop in memory order never seeks.
double FilesystemImage::readAt(std::ifstream& s, const std::string& name, std::uint64_t target) {
  if (target != position)
    s.seekg(static_cast<std::streamoff>(target - position) * 8, std::ios::cur);
  double v = 0.0;
  s.read(reinterpret_cast<char*>(&v), sizeof v);
  if (!s) fatal("Failed to read the file " + name);
  return v;
}

double FilesystemImage::value(std::uint64_t i, std::uint64_t x, std::uint64_t y, std::uint64_t z,
                              std::uint64_t q) {
  const std::uint64_t target =
      ((((x - xOffset) * sizeY + y) * sizeZ + z) * numberOfQuadraturePoints + q) *
          numberOfComponents + i;
  double v = readAt(stream, fileName, target);
  if (!secondFileName.empty()) v -= readAt(secondStream, secondFileName, target);
  position = target + 1;
  return v;
}

}  // namespace gridmoor
