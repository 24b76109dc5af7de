#include "voxel/Geometry.h"

#include <omp.h>

#include <algorithm>
#include <iostream>

#include "common/Fatal.h"
#include "common/Threads.h"

namespace gridmoor {

void InformationImage::reset(std::uint64_t valuesPerVoxel) {
  width_ = valuesPerVoxel;
  rowOf_.clear();
  values_.clear();
}

void InformationImage::set(std::uint64_t voxel, const Real* values) {
  auto [it, inserted] = rowOf_.try_emplace(voxel, values_.size());
  if (inserted) values_.resize(values_.size() + width_);
  std::copy(values, values + width_, values_.begin() + static_cast<std::ptrdiff_t>(it->second));
}

const Real* InformationImage::find(std::uint64_t voxel) const {
  const auto it = rowOf_.find(voxel);
  return it == rowOf_.end() ? nullptr : values_.data() + it->second;
}

void Geometry::readAndResample(int threads, const std::string& resamplingMode,
                               const std::array<std::uint64_t, 3>& targetSize, bool fastEstimate,
                               const std::string& fileName) {
  load(targetSize[0], fileName, resamplingMode, fastEstimate, threads);
  resample(targetSize[0], targetSize[1], targetSize[2], resamplingMode);
}

void Geometry::load(std::uint64_t targetSizeX, const std::string& fileName,
                    const std::string& resamplingMode, bool imageFlag, int threads) {
  // 0 threads asks for half of the processors, rounded up, like the solver's team.
  omp_set_num_threads(runThreadCount(threads));

  const std::size_t dot = fileName.find_last_of('.');
  const std::size_t slash = fileName.find_last_of("/\\");
  const bool hasSuffix = dot != std::string::npos && (slash == std::string::npos || dot > slash);
  const std::string suffix = hasSuffix ? fileName.substr(dot + 1) : std::string();
  originalVoxelImage.setImageFlag(imageFlag);
  if (suffix == "rek") originalVoxelImage.readRek(fileName, targetSizeX, resamplingMode);
  else if (suffix == "ldt") originalVoxelImage.readLdt(fileName, targetSizeX, resamplingMode);
  else if (suffix == "vti" || suffix == "pvti")
    originalVoxelImage.readVti(fileName, targetSizeX, resamplingMode);
  else fatal("ERROR: (Geometry) Unknown Filenamesuffix for the original voxelImage.");

  colorIndex.clear();
  originalColors.clear();
  for (const Colour c : originalVoxelImage.getColors()) {
    colorIndex[c] = originalColors.size();
    originalColors.push_back(c);
  }
}

void Geometry::resample(std::uint64_t sizeX, std::uint64_t sizeY, std::uint64_t sizeZ,
                        const std::string& mode) {
  if (sizeX == 0) sizeX = originalVoxelImage.getGlobalSizeX();
  if (sizeY == 0) sizeY = originalVoxelImage.sizeY;
  if (sizeZ == 0) sizeZ = originalVoxelImage.sizeZ;
  const bool sameGrid = sizeX == originalVoxelImage.getGlobalSizeX() &&
                        sizeY == originalVoxelImage.sizeY && sizeZ == originalVoxelImage.sizeZ;
  if (mode == "None" || sameGrid) {
    std::cout << "(Geometry) No resampling.\n";
    RealVoxelImage = originalVoxelImage;  // keeps its own name
    resolutionX = RealVoxelImage.resolutionX;
    resolutionY = RealVoxelImage.resolutionY;
    resolutionZ = RealVoxelImage.resolutionZ;
    return;
  }
  if (mode == "Naive") std::cout << "(Geometry) Naive resampling.\n";
  else if (mode == "HybridVoxels") std::cout << "(Geometry) Using hybrid voxels.\n";
  else fatal("ERROR: (Geometry) Unknown resampling mode.");
  std::cout << "(Geometry) Voxel image size after resampling: " << sizeX << "x" << sizeY << "x"
            << sizeZ << " voxels\n";
  fatal("ERROR: (Geometry) Resampling to another grid is not available in this build: use "
        "the resampling mode None or the geometry's own size.");
}

void Geometry::loadOrientation(const std::string& fileName, const std::string& directory,
                               bool reducedAngles) {
  EulerAnglesImage.loadOrientationOnGrid(fileName, directory, getSizeX(), getSizeY(), getSizeZ(),
                                         reducedAngles);
}

std::shared_ptr<ColorImage> Geometry::makeDominatingColorImage() const {
  const ColorImage& real = RealVoxelImage;
  auto image = std::make_shared<ColorImage>("DominatingColorImage", real.getImageFlag());
  image->setSize(real.getGlobalSizeX(), real.sizeY, real.sizeZ, 0, "None");
  image->resolutionX = real.resolutionX;
  image->resolutionY = real.resolutionY;
  image->resolutionZ = real.resolutionZ;
  image->originX = real.originX;
  image->originY = real.originY;
  image->originZ = real.originZ;
  for (std::uint64_t x = real.localXBegin; x < real.localXEnd; ++x)
    for (std::uint64_t y = 0; y < real.sizeY; ++y)
      for (std::uint64_t z = 0; z < real.sizeZ; ++z) {
        const Colour c = real.at(x, y, z);
        image->at(x, y, z) = isHybrid(c) ? getDominatingColor(x, y, z) : c;
      }
  image->collectColors();
  return image;
}

void Geometry::setOriginalResolution(double x, double y, double z) {
  std::cout << "Resolution of original geometry will be set to " << x << " " << y << " " << z
            << "\n";
  ColorImage& original = originalVoxelImage;
  ColorImage& real = RealVoxelImage;
  original.resolutionX = x;
  original.resolutionY = y;
  original.resolutionZ = z;
  // The computation grid keeps its voxel lengths in proportion: original length times
  // original size over computed size, in each axis.
  if (real.sizeX && real.sizeY && real.sizeZ) {
    real.resolutionX = x * static_cast<double>(original.sizeX) / static_cast<double>(real.sizeX);
    real.resolutionY = y * static_cast<double>(original.sizeY) / static_cast<double>(real.sizeY);
    real.resolutionZ = z * static_cast<double>(original.sizeZ) / static_cast<double>(real.sizeZ);
    resolutionX = real.resolutionX;
    resolutionY = real.resolutionY;
    resolutionZ = real.resolutionZ;
  }
}

bool Geometry::isHybrid(Colour c) const {
  // Usually empty or a handful of colours: a linear search beats any table here.
  return std::find(hybridColorList.begin(), hybridColorList.end(), c) != hybridColorList.end();
}

Colour Geometry::dominatingColorByFractions(std::uint64_t x, std::uint64_t y,
                                            std::uint64_t z) const {
  double best = -1.0;
  Colour result = 0;
  for (const Colour c : originalColors) {
    const double fraction = getVolumeFraction(x, y, z, c);
    if (fraction > best) {
      best = fraction;
      result = c;
    }
  }
  return result;
}

StaticGeometry::StaticGeometry(bool writeVolumeInformation, bool writeNormalInformation)
    : writeVolumeInformation_(writeVolumeInformation),
      writeNormalInformation_(writeNormalInformation) {
  std::cout << "(Geometry) StaticGeometry Constructor called.\n";
}

Real StaticGeometry::getVolumeFraction(std::uint64_t x, std::uint64_t y, std::uint64_t z,
                                       Colour color) const {
  const Colour c = RealVoxelImage.at(x, y, z);
  if (!isHybrid(c)) return c == color ? 1.0 : 0.0;
  const std::size_t index = colorIndex.at(color);
  const Real* fractions = StaticGeometryVolumeInformation.find(voxelKey(x, y, z));
  return fractions ? fractions[index] : 0.0;
}

Real StaticGeometry::getHybridColorFraction(std::uint64_t x, std::uint64_t y, std::uint64_t z,
                                            Colour color) const {
  return isHybrid(RealVoxelImage.at(x, y, z)) ? getVolumeFraction(x, y, z, color) : 0.0;
}

Colour StaticGeometry::getDominatingColor(std::uint64_t x, std::uint64_t y,
                                          std::uint64_t z) const {
  return dominatingColorByFractions(x, y, z);
}

void StaticGeometry::setHybridColors(const std::vector<Colour>& list,
                                     std::size_t numberOfColors) {
  hybridColorList = list;
  StaticGeometryVolumeInformation.reset(numberOfColors);
  StaticGeometryNormalInformation.reset(3);
}

void StaticGeometry::setVolumeFractions(std::uint64_t x, std::uint64_t y, std::uint64_t z,
                                        const Real* fractions) {
  StaticGeometryVolumeInformation.set(voxelKey(x, y, z), fractions);
}

void StaticGeometry::setNormal(std::uint64_t x, std::uint64_t y, std::uint64_t z,
                               const Real* normal) {
  StaticGeometryNormalInformation.set(voxelKey(x, y, z), normal);
}

bool StaticGeometry::getNormal(std::uint64_t x, std::uint64_t y, std::uint64_t z,
                               Real* normal) const {
  const Real* row = StaticGeometryNormalInformation.find(voxelKey(x, y, z));
  if (!row) return false;
  std::copy(row, row + 3, normal);
  return true;
}

void StaticGeometry::clearHybridInformation() {
  StaticGeometryVolumeInformation.reset(StaticGeometryVolumeInformation.getValuesPerVoxel());
  StaticGeometryNormalInformation.reset(3);
}

DynamicGeometry::DynamicGeometry() {
  std::cout << "(Geometry) DynamicGeometry Constructor called.\n";
}

Real DynamicGeometry::getVolumeFraction(std::uint64_t x, std::uint64_t y, std::uint64_t z,
                                        Colour color) const {
  const Colour c = RealVoxelImage.at(x, y, z);
  if (!isHybrid(c)) return c == color ? 1.0 : 0.0;
  const auto& [first, second] = hybridColors.at(c);
  colorIndex.at(color);  // an unknown colour fails as in the static form
  return (first == color ? 0.5 : 0.0) + (second == color ? 0.5 : 0.0);
}

Real DynamicGeometry::getHybridColorFraction(std::uint64_t x, std::uint64_t y, std::uint64_t z,
                                             Colour color) const {
  return isHybrid(RealVoxelImage.at(x, y, z)) ? getVolumeFraction(x, y, z, color) : 0.0;
}

Colour DynamicGeometry::getDominatingColor(std::uint64_t x, std::uint64_t y,
                                           std::uint64_t z) const {
  return dominatingColorByFractions(x, y, z);
}

}  // namespace gridmoor
