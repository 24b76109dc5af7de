// A Vector read as a voxel grid with several components per voxel. Memory order is fixed
// system-wide: component fastest, then z, then y, x slowest (x is the axis cut into slabs).
#pragma once

#include <cstdint>
#include <string>

#include "voxel/Vector.h"

namespace gridmoor {

template <class T>
class Image : public Vector<T> {
 public:
  // Elements from one x plane, y line and voxel to the next; strideZ is the number of
  // components.
  std::uint64_t strideX = 0;
  std::uint64_t strideY = 0;
  std::uint64_t strideZ = 0;
  std::uint64_t sizeX = 0;
  std::uint64_t sizeY = 0;
  std::uint64_t sizeZ = 0;
  // Global x index of the first stored plane of a slab, and the second word of the slab
  // range (kept at 0 by this class).
  std::uint64_t xOffset = 0;
  std::uint64_t xOffsetEnd = 0;

  explicit Image(const std::string& name) : Vector<T>(name) {}
  Image(std::uint64_t components, std::uint64_t sizeX, std::uint64_t sizeY, std::uint64_t sizeZ,
        const std::string& name)
      : Image(components, sizeX, sizeY, sizeZ, T{}, name) {}
  Image(std::uint64_t components, std::uint64_t sizeX, std::uint64_t sizeY, std::uint64_t sizeZ,
        const T& value, const std::string& name)
      : Vector<T>(components * sizeX * sizeY * sizeZ, value, name) {
    setGeometry(components, sizeX, sizeY, sizeZ);
  }

  virtual std::uint64_t getNumberOfComponents() const { return strideZ; }
  virtual std::uint64_t getSizeX() const { return sizeX; }
  virtual std::uint64_t getSizeY() const { return sizeY; }
  virtual std::uint64_t getSizeZ() const { return sizeZ; }

  void resize(std::uint64_t sizeX, std::uint64_t sizeY, std::uint64_t sizeZ) {
    resize(1, sizeX, sizeY, sizeZ);
  }
  void resize(std::uint64_t components, std::uint64_t sizeX, std::uint64_t sizeY,
              std::uint64_t sizeZ) {
    resize(components, sizeX, sizeY, sizeZ, components * sizeX * sizeY * sizeZ);
  }
  // A slab or a padded field stores other than the full product: the length is given.
  void resize(std::uint64_t components, std::uint64_t sizeX, std::uint64_t sizeY,
              std::uint64_t sizeZ, std::uint64_t length) {
    setGeometry(components, sizeX, sizeY, sizeZ);
    Vector<T>::resize(length);
  }

  // Addresses by global x: xOffset is subtracted.
  T* voxelPointer(std::uint64_t x, std::uint64_t y, std::uint64_t z) {
    return this->data() + (x - xOffset) * strideX + y * strideY + z * strideZ;
  }
  const T* voxelPointer(std::uint64_t x, std::uint64_t y, std::uint64_t z) const {
    return this->data() + (x - xOffset) * strideX + y * strideY + z * strideZ;
  }
  T* elementPointer(std::uint64_t c, std::uint64_t x, std::uint64_t y, std::uint64_t z) {
    return voxelPointer(x, y, z) + c;
  }
  const T* elementPointer(std::uint64_t c, std::uint64_t x, std::uint64_t y,
                          std::uint64_t z) const {
    return voxelPointer(x, y, z) + c;
  }
  // Linear index by local x: xOffset is not subtracted.
  std::uint64_t elementIndex(std::uint64_t c, std::uint64_t x, std::uint64_t y,
                             std::uint64_t z) const {
    return x * strideX + y * strideY + z * strideZ + c;
  }
  // Inverse of elementIndex on an image with at least one element.
  void coordinatesOfIndex(std::uint64_t index, std::uint64_t& c, std::uint64_t& x,
                          std::uint64_t& y, std::uint64_t& z) const {
    x = index / strideX;
    index -= x * strideX;
    y = index / strideY;
    index -= y * strideY;
    z = index / strideZ;
    c = index - z * strideZ;
  }

 private:
  void setGeometry(std::uint64_t components, std::uint64_t sx, std::uint64_t sy,
                   std::uint64_t sz) {
    sizeX = sx;
    sizeY = sy;
    sizeZ = sz;
    strideZ = components;
    strideY = components * sz;
    strideX = components * sz * sy;
  }
};

}  // namespace gridmoor
