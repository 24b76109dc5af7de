// The colour field: one material colour per voxel, with its voxel lengths, origin and trailer
// text, read from .ldt, raw "rek", legacy VTK and VTI volumes and written as .ldt, MetaImage or raw.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "common/Types.h"
#include "voxel/Image.h"

namespace gridmoor {

class DataWriter;

class ColorImage : public Image<Colour> {
 public:
  // Free text of the .ldt trailer: every token but the voxel length, read back in order.
  std::string description;
  std::uint64_t extentBeginX = 0;
  std::uint64_t extentBeginY = 0;
  std::uint64_t extentBeginZ = 0;
  // The global grid is Image's sizeX, sizeY, sizeZ; this process holds the x planes
  // [localXBegin, localXEnd), and xOffset equals localXBegin.
  std::uint64_t localXBegin = 0;
  std::uint64_t localXEnd = 0;
  double resolutionX = 1.0;
  double resolutionY = 1.0;
  double resolutionZ = 1.0;
  double originX = 0.0;
  double originY = 0.0;
  double originZ = 0.0;
  // Distinct colours in the order of collectColors.
  std::vector<Colour> colors;
  // Source colours of each hybrid colour, filled by the hybrid resampling.
  std::unordered_map<Colour, std::vector<Colour>> hybridVoxels;

  explicit ColorImage(const std::string& name, bool imageFlag = false);
  // An image of the whole grid held in this process, every voxel of the given colour.
  ColorImage(std::uint64_t sizeX, std::uint64_t sizeY, std::uint64_t sizeZ, Colour value,
             const std::string& name, bool imageFlag = false);

  // The readers print "Size of Geometry: ...", take this process's slab through setSize
  // (targetSizeX and resamplingMode as there), fill the voxels and collect the colours.
  void readLdt(const std::string& fileName, std::uint64_t targetSizeX,
               const std::string& resamplingMode);
  void readRek(const std::string& fileName, std::uint64_t targetSizeX,
               const std::string& resamplingMode);
  void readVtk(const std::string& fileName, std::uint64_t targetSizeX,
               const std::string& resamplingMode);
  // The colours are the first of the arrays "Materials", "Material", "Substance" that the
  // .vti or .pvti file holds; origin, spacing and the extent's lower indices are kept.
  void readVti(const std::string& fileName, std::uint64_t targetSizeX,
               const std::string& resamplingMode);

  // Whether a voxel length can enter the solve: positive, and within 1e-100 to 1e100, so that
  // the squared frequencies of the Green operators neither overflow nor vanish.
  static bool isUsableVoxelLength(double length) { return length >= 1e-100 && length <= 1e100; }

  // Reads the grid size of a .ldt file from its header and prints "Size is: NX NY NZ".
  static void readSize(const std::string& fileName, std::uint64_t& sizeX, std::uint64_t& sizeY,
                       std::uint64_t& sizeZ);

  // Sets the global grid and allocates this process's slab. When the run resamples to a
  // different x size, the slab is the file's planes that the target slab overlaps.
  void setSize(std::uint64_t sizeX, std::uint64_t sizeY, std::uint64_t sizeZ,
               std::uint64_t targetSizeX, const std::string& resamplingMode);

  // Fills colors with the distinct colours of the slab.
  void collectColors();

  void writeLdt(const std::string& fileName) const;
  // Header to fileName, voxels to the same name with the extension ".raw".
  void writeMetaImage(const std::string& fileName) const;
  // One byte per voxel, x fastest, then y, z slowest.
  void writeRaw(const std::string& fileName) const;
  // Registers the colours as the field "Materials" of `writer` and gives the writer this
  // image's voxel lengths and origin, each multiplied, axis by axis, by the ratio of this
  // image's voxels to the writer's (1 when the writer writes this grid). The image must
  // outlive the writer's write().
  void addMaterialsToFile(DataWriter& writer) const;

  // Local extent in x: the planes held by this process.
  std::uint64_t getSizeX() const override { return localXEnd - localXBegin; }
  std::uint64_t getGlobalSizeX() const { return sizeX; }
  const std::vector<Colour>& getColors() const { return colors; }
  std::size_t getNumberOfColors() const { return colors.size(); }
  // resolutionX; prints a warning when the voxel lengths differ.
  double getResolution() const;
  bool getImageFlag() const { return imageFlag; }
  void setImageFlag(bool flag) { imageFlag = flag; }

  Colour& at(std::uint64_t x, std::uint64_t y, std::uint64_t z) { return *voxelPointer(x, y, z); }
  Colour at(std::uint64_t x, std::uint64_t y, std::uint64_t z) const {
    return *voxelPointer(x, y, z);
  }

 private:
  void setAllResolutions(double value);

  bool imageFlag = false;
};

}  // namespace gridmoor
