// The orientation field: three Euler angles per voxel in the internal convention XZX (two
// with reduced angles), read from a .lof file and brought to the grid of the computation.
#pragma once

#include <cstdint>
#include <string>

#include "voxel/Image.h"

namespace gridmoor {

class EulerAnglesImage : public Image<double> {
 public:
  // Global extent along x of the grid the angles stand on; the image holds one slab of it.
  std::uint64_t sizeXGlobal = 0;

  explicit EulerAnglesImage(const std::string& name) : Image<double>(name) {}
  EulerAnglesImage(std::uint64_t components, std::uint64_t sizeX, std::uint64_t sizeY,
                   std::uint64_t sizeZ, const std::string& name)
      : Image<double>(components, sizeX, sizeY, sizeZ, name), sizeXGlobal(sizeX) {}

  // The file name is taken relative to the run's directory unless it is absolute. sizeX is
  // the x extent of the computation grid, which decides the slab read.
  void loadOrientation(const std::string& fileName, const std::string& directory,
                       std::uint64_t sizeX, bool reducedAngles);
  void readLof(const std::string& fileName, std::uint64_t sizeX, bool reducedAngles);

  // Puts the field on a grid of the given global sizes (0 keeps an axis), by exact boxes of
  // the file's voxels; a grid equal to the present one leaves the field as it is.
  void resampleTo(std::uint64_t targetSizeX, std::uint64_t targetSizeY, std::uint64_t targetSizeZ);

  // What the geometry calls: read and resample onto the computation grid. In memory-estimate
  // mode no file is read; a stand-in of the target's size counts the bytes and is dropped.
  void loadOrientationOnGrid(const std::string& fileName, const std::string& directory,
                             std::uint64_t targetSizeX, std::uint64_t targetSizeY,
                             std::uint64_t targetSizeZ, bool reducedAngles);
};

}  // namespace gridmoor
