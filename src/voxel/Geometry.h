// What the solvers see of the microstructure: the colour grid they compute on, the colours in
// use, voxel lengths and, for voxels merged by resampling, volume fractions and normals.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "common/Types.h"
#include "voxel/ColorImage.h"
#include "voxel/EulerAnglesImage.h"

namespace gridmoor {

// A row of values for each mixed voxel (volume fractions by colour index, or a normal),
// keyed by the voxel's global linear index. Sparse, because only interface voxels of a
// resampled grid carry one.
class InformationImage {
 public:
  explicit InformationImage(std::string name) : name_(std::move(name)) {}

  // Drops all rows and sets the number of values of a row.
  void reset(std::uint64_t valuesPerVoxel);
  void set(std::uint64_t voxel, const Real* values);
  // The row of a voxel, or null when it has none.
  const Real* find(std::uint64_t voxel) const;

  const std::string& getName() const { return name_; }
  std::uint64_t getValuesPerVoxel() const { return width_; }
  std::size_t getNumberOfVoxels() const { return rowOf_.size(); }

 private:
  std::string name_;
  std::uint64_t width_ = 0;
  std::unordered_map<std::uint64_t, std::size_t> rowOf_;
  std::vector<Real> values_;
};

class Geometry {
 public:
  ColorImage originalVoxelImage{"originalVoxelImage"};
  ColorImage RealVoxelImage{"RealVoxelImage"};
  // Orientation of each voxel of the computation grid; empty unless loadOrientation ran.
  gridmoor::EulerAnglesImage EulerAnglesImage{"EulerAnglesImage"};
  // Hybrid colour -> its two source colours; empty unless hybrid voxels are on.
  std::map<Colour, std::pair<Colour, Colour>> hybridColors;
  // The keys of hybridColors, ascending.
  std::vector<Colour> hybridColorList;
  double resolutionX = 1.0;
  double resolutionY = 1.0;
  double resolutionZ = 1.0;
  // Colour -> its place in originalColors.
  std::map<Colour, std::size_t> colorIndex;
  // The colours of the original image in the order of its colour list.
  std::vector<Colour> originalColors;

  Geometry() = default;
  Geometry(const Geometry&) = delete;
  Geometry& operator=(const Geometry&) = delete;
  virtual ~Geometry() = default;

  // Fraction of colour in voxel (x, y, z) of the computation grid. A colour missing from the
  // colour table of a hybrid voxel throws std::out_of_range.
  virtual Real getVolumeFraction(std::uint64_t x, std::uint64_t y, std::uint64_t z,
                                 Colour color) const = 0;
  // Like getVolumeFraction, but 0 for every colour of a pure voxel: the share that the
  // mixing rule of a hybrid voxel gives to colour.
  virtual Real getHybridColorFraction(std::uint64_t x, std::uint64_t y, std::uint64_t z,
                                      Colour color) const = 0;
  // The colour of the greatest fraction; the first in originalColors wins a tie.
  virtual Colour getDominatingColor(std::uint64_t x, std::uint64_t y, std::uint64_t z) const = 0;
  // Makes the tables ready for the hybrid colours in use and numberOfColors original colours.
  virtual void setHybridColors(const std::vector<Colour>& hybridColorList,
                               std::size_t numberOfColors) = 0;
  // Fractions of a mixed voxel, one for each entry of originalColors.
  virtual void setVolumeFractions(std::uint64_t x, std::uint64_t y, std::uint64_t z,
                                  const Real* fractions) = 0;
  virtual void setNormal(std::uint64_t x, std::uint64_t y, std::uint64_t z,
                         const Real* normal) = 0;
  // The interface normal of a mixed voxel; false (and normal untouched) when there is none.
  virtual bool getNormal(std::uint64_t x, std::uint64_t y, std::uint64_t z,
                         Real* normal) const = 0;
  virtual void clearHybridInformation() = 0;

  // Step of the run that reads the geometry file and builds the computation grid. Target
  // sizes of 0 keep the file's size in that axis; fastEstimate is the images' flag.
  void readAndResample(int threads, const std::string& resamplingMode,
                       const std::array<std::uint64_t, 3>& targetSize, bool fastEstimate,
                       const std::string& fileName);
  // Sets the thread count, reads the original image by the file's suffix and builds the
  // colour tables.
  void load(std::uint64_t targetSizeX, const std::string& fileName,
            const std::string& resamplingMode, bool imageFlag, int threads);
  // Builds RealVoxelImage on the target grid.
  void resample(std::uint64_t sizeX, std::uint64_t sizeY, std::uint64_t sizeZ,
                const std::string& mode);
  // Reads the orientation file (relative to directory unless absolute) onto the computation
  // grid; call after resample.
  void loadOrientation(const std::string& fileName, const std::string& directory,
                       bool reducedAngles);
  // A new image of the computation grid in which each hybrid voxel holds its dominating colour.
  std::shared_ptr<ColorImage> makeDominatingColorImage() const;
  // Replaces the voxel lengths of the file; the computation grid keeps its ratio to them.
  void setOriginalResolution(double x, double y, double z);

  bool isHybrid(Colour c) const;
  const std::vector<Colour>& getUsedColors() const { return RealVoxelImage.getColors(); }
  std::uint64_t getSizeX() const { return RealVoxelImage.getGlobalSizeX(); }
  std::uint64_t getSizeY() const { return RealVoxelImage.sizeY; }
  std::uint64_t getSizeZ() const { return RealVoxelImage.sizeZ; }
  double getResolutionX() const { return resolutionX; }
  double getResolutionY() const { return resolutionY; }
  double getResolutionZ() const { return resolutionZ; }

 protected:
  Colour dominatingColorByFractions(std::uint64_t x, std::uint64_t y, std::uint64_t z) const;
  std::uint64_t voxelKey(std::uint64_t x, std::uint64_t y, std::uint64_t z) const {
    return (x * RealVoxelImage.sizeY + y) * RealVoxelImage.sizeZ + z;
  }
};

// The geometry of a run whose voxel image stays fixed; keeps the fractions and normals of
// mixed voxels.
class StaticGeometry : public Geometry {
 public:
  InformationImage StaticGeometryVolumeInformation{"StaticGeometryVolumeInformation"};
  InformationImage StaticGeometryNormalInformation{"StaticGeometryNormalInformation"};

  explicit StaticGeometry(bool writeVolumeInformation = false,
                          bool writeNormalInformation = false);

  Real getVolumeFraction(std::uint64_t x, std::uint64_t y, std::uint64_t z,
                         Colour color) const override;
  Real getHybridColorFraction(std::uint64_t x, std::uint64_t y, std::uint64_t z,
                              Colour color) const override;
  Colour getDominatingColor(std::uint64_t x, std::uint64_t y, std::uint64_t z) const override;
  void setHybridColors(const std::vector<Colour>& list, std::size_t numberOfColors) override;
  void setVolumeFractions(std::uint64_t x, std::uint64_t y, std::uint64_t z,
                          const Real* fractions) override;
  void setNormal(std::uint64_t x, std::uint64_t y, std::uint64_t z, const Real* normal) override;
  bool getNormal(std::uint64_t x, std::uint64_t y, std::uint64_t z, Real* normal) const override;
  void clearHybridInformation() override;

  bool getWriteVolumeInformation() const { return writeVolumeInformation_; }
  bool getWriteNormalInformation() const { return writeNormalInformation_; }

 private:
  bool writeVolumeInformation_;
  bool writeNormalInformation_;
};

// The geometry of a structure that changes during the run. It keeps no per-voxel tables: a
// hybrid voxel counts as an even mix of its two source colours and has no normal.
class DynamicGeometry : public Geometry {
 public:
  DynamicGeometry();

  Real getVolumeFraction(std::uint64_t x, std::uint64_t y, std::uint64_t z,
                         Colour color) const override;
  Real getHybridColorFraction(std::uint64_t x, std::uint64_t y, std::uint64_t z,
                              Colour color) const override;
  Colour getDominatingColor(std::uint64_t x, std::uint64_t y, std::uint64_t z) const override;
  void setHybridColors(const std::vector<Colour>&, std::size_t) override {}
  void setVolumeFractions(std::uint64_t, std::uint64_t, std::uint64_t, const Real*) override {}
  void setNormal(std::uint64_t, std::uint64_t, std::uint64_t, const Real*) override {}
  bool getNormal(std::uint64_t, std::uint64_t, std::uint64_t, Real*) const override {
    return false;
  }
  void clearHybridInformation() override {}
};

}  // namespace gridmoor
