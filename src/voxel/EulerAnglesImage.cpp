#include "voxel/EulerAnglesImage.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "common/Fatal.h"
#include "common/FileNames.h"
#include "formats/LufHeader.h"
#include "voxel/EulerConversion.h"
#include "voxel/MpiExchange.h"
#include "voxel/Ratio.h"
#include "voxel/ResamplingBox.h"
#include "voxel/StaticPartition.h"

namespace gridmoor {

namespace {

// A positive grid size or the end of the run.
std::uint64_t gridSize(const LufHeaderReader& header, const std::string& key) {
  const std::string& text = header.get(key);
  char* end = nullptr;
  const long long value = std::strtoll(text.c_str(), &end, 10);
  if (end == text.c_str() || *end != '\0' || value <= 0)
    fatal("Orientation file " + header.fileName() + ": " + key + " " + text +
          " is not a positive grid size");
  return static_cast<std::uint64_t>(value);
}

// Little-endian values of 4, 8 or 16 bytes (IEEE single, double, quadruple) as doubles;
// the machines this runs on are little-endian themselves.
double decode(const char* bytes, int elementSize) {
  switch (elementSize) {
    case 4: {
      float f;
      std::memcpy(&f, bytes, 4);
      return f;
    }
    case 8: {
      double d;
      std::memcpy(&d, bytes, 8);
      return d;
    }
    default: {
      __float128 q;
      std::memcpy(&q, bytes, 16);
      return static_cast<double>(q);
    }
  }
}

// This process's planes of a grid of `fileSize` planes when the computation grid has
// `targetSize` planes in x: the own slab of the computation grid, mapped back exactly.
void fileSlab(std::uint64_t fileSize, std::uint64_t targetSize, std::uint64_t& begin,
              std::uint64_t& end) {
  const MpiExchange mpi;
  if (targetSize != 0 && targetSize != fileSize) {
    std::uint64_t targetBegin, targetEnd;
    mpi.getDataRange(targetSize, targetBegin, targetEnd);
    mapRange(targetBegin, targetEnd, Ratio(fileSize, targetSize), begin, end);
  } else {
    mpi.getDataRange(fileSize, begin, end);
  }
}

}  // namespace

void EulerAnglesImage::loadOrientation(const std::string& fileName, const std::string& directory,
                                       std::uint64_t sizeX, bool reducedAngles) {
  const std::string path = joinPath(directory, fileName);
  // In a distributed run the first process would first make the file visible to all
  // (copy it to the working directory); one process reads it where it stands.
  MpiExchange mpi;
  mpi.barrier();
  readLof(path, sizeX, reducedAngles);
}

void EulerAnglesImage::readLof(const std::string& fileName, std::uint64_t sizeX,
                               bool reducedAngles) {
  LufHeaderReader header(fileName);
  header.require({"HeaderLength", "Nx", "Ny", "Nz", "EntriesOfImages", "Image1:Types",
                  "Image1:Format", "Image1:ReferenceSystem", "Image1:ObjectSystem"});

  const std::string& reference = header.get("Image1:ReferenceSystem");
  const std::string& object = header.get("Image1:ObjectSystem");
  if (reference != "XYZ" || object != "TP1P2")
    fatal("not implemented combination of reference and object system: " + reference + " - " +
          object);

  const std::string& types = header.get("Image1:Types");
  const int elementSize = lufElementSize(types, std::atoi(header.get("EntriesOfImages").c_str()));
  if (elementSize == 0) fatal("unknown data type in lof file: " + types);

  const std::uint64_t nx = gridSize(header, "Nx");
  const std::uint64_t ny = gridSize(header, "Ny");
  const std::uint64_t nz = gridSize(header, "Nz");

  const std::string& format = header.get("Image1:Format");
  const bool fromZXZ = format == "Eul_AngZXZ";
  // Every grid has a first voxel, where an unknown format ends the run.
  if (!fromZXZ && format != "Eul_AngXZX") fatal("not implemented orientation format: " + format);

  // Three values per voxel whatever EntriesOfImages says; the file must hold all of them
  // before anything is allocated or read.
  const std::uint64_t voxelBytes = 3 * static_cast<std::uint64_t>(elementSize);
  std::uint64_t lineBytes = 0, dataBytes = 0;
  const bool overflow = __builtin_mul_overflow(nx, voxelBytes, &lineBytes) ||
                        __builtin_mul_overflow(lineBytes, ny, &dataBytes) ||
                        __builtin_mul_overflow(dataBytes, nz, &dataBytes);
  const std::uint64_t available =
      header.truncated() ? 0 : header.fileSize() - static_cast<std::uint64_t>(header.headerLength());
  if (overflow || dataBytes > available)
    fatal("Orientation file " + fileName + " is truncated: the angles of " + std::to_string(nx) +
          " x " + std::to_string(ny) + " x " + std::to_string(nz) + " voxels need more data than " +
          std::to_string(available) + " bytes");

  std::uint64_t begin = 0, end = 0;
  fileSlab(nx, sizeX, begin, end);
  const std::uint64_t components = reducedAngles ? 2 : 3;
  resize(components, end - begin, ny, nz);
  xOffset = begin;
  sizeXGlobal = nx;
  if (estimateOnly()) return;  // an image built for a memory estimate holds no data

  // Voxels stand with x fastest and z slowest, the reverse of memory order; a whole x line
  // is read at a time, and voxels outside the own slab are read and skipped.
  std::vector<char> line(lineBytes);
  std::ifstream& in = header.stream();
  for (std::uint64_t z = 0; z < nz; ++z) {
    for (std::uint64_t y = 0; y < ny; ++y) {
      in.read(line.data(), static_cast<std::streamsize>(lineBytes));
      if (!in) fatal("Failed to read the file " + fileName);
      for (std::uint64_t x = begin; x < end; ++x) {
        const char* v = line.data() + x * voxelBytes;
        EulerTriple angles{decode(v, elementSize), decode(v + elementSize, elementSize),
                           decode(v + 2 * elementSize, elementSize)};
        // A NaN or infinite angle would turn the voxel's law into NaN and the whole solve
        // with it, without a word.
        if (!std::isfinite(angles[0] + angles[1] + angles[2]))
          fatal("Orientation file " + fileName + ": the angles of voxel (" + std::to_string(x) +
                ", " + std::to_string(y) + ", " + std::to_string(z) + ") are not finite numbers");
        if (fromZXZ) angles = convertZXZToXZX(angles);
        double* target = voxelPointer(x, y, z);
        for (std::uint64_t c = 0; c < components; ++c) target[c] = angles[c];
      }
    }
  }
}

void EulerAnglesImage::resampleTo(std::uint64_t targetSizeX, std::uint64_t targetSizeY,
                                  std::uint64_t targetSizeZ) {
  if (targetSizeX == 0) targetSizeX = sizeXGlobal;
  if (targetSizeY == 0) targetSizeY = sizeY;
  if (targetSizeZ == 0) targetSizeZ = sizeZ;
  if (targetSizeX == sizeXGlobal && targetSizeY == sizeY && targetSizeZ == sizeZ) return;

  std::uint64_t begin = 0, end = 0;
  MpiExchange().getDataRange(targetSizeX, begin, end);
  const std::uint64_t components = getNumberOfComponents();
  if (estimateOnly()) {  // no data to carry over: the new geometry is only counted
    resize(components, end - begin, targetSizeY, targetSizeZ);
    xOffset = begin;
    sizeXGlobal = targetSizeX;
    return;
  }

  if (size() == 0) fatal("EulerAnglesImage " + getName() + ": no orientation to resample");

  const Ratio ratios[3] = {Ratio(sizeXGlobal, targetSizeX), Ratio(sizeY, targetSizeY),
                           Ratio(sizeZ, targetSizeZ)};

  // Angles can't be averaged (the mean of two frames is no frame between them, and angles
  // wrap), so a target voxel takes the angles of the one file voxel with the largest overlap
  // in its box; the first in memory order wins a tie. The weights factor by axis, so that
  // voxel is the one of the largest weight along each axis.
  const auto pickAlong = [](std::uint64_t from, std::uint64_t to, const Ratio& ratio) {
    std::vector<std::uint64_t> picks;
    picks.reserve(to - from);
    for (std::uint64_t i = from; i < to; ++i) {
      const AxisBox box = axisBox(i, ratio);
      std::uint64_t best = box.first;
      Ratio bestWeight(0);
      for (std::uint64_t k = box.first; k < box.end; ++k) {
        const Ratio w = overlapWeight(k, i, ratio);
        if (w > bestWeight) {
          bestWeight = w;
          best = k;
        }
      }
      picks.push_back(best);
    }
    return picks;
  };
  const std::vector<std::uint64_t> pickX = pickAlong(begin, end, ratios[0]);
  const std::vector<std::uint64_t> pickY = pickAlong(0, targetSizeY, ratios[1]);
  const std::vector<std::uint64_t> pickZ = pickAlong(0, targetSizeZ, ratios[2]);

  Image<double> resampled(components, end - begin, targetSizeY, targetSizeZ,
                          "EulerAnglesResampledFromLof");
  resampled.xOffset = begin;
  const auto fill = [&](std::uint64_t first, std::uint64_t last) {
    for (std::uint64_t lx = first; lx < last; ++lx)
      for (std::uint64_t y = 0; y < targetSizeY; ++y)
        for (std::uint64_t z = 0; z < targetSizeZ; ++z) {
          const double* source = voxelPointer(pickX[lx], pickY[y], pickZ[z]);
          double* target = resampled.voxelPointer(begin + lx, y, z);
          for (std::uint64_t c = 0; c < components; ++c) target[c] = source[c];
        }
  };
  if (!resampled.estimateOnly()) parallelForStatic(end - begin, fill);
  Image<double>::operator=(std::move(resampled));
  sizeXGlobal = targetSizeX;
}

void EulerAnglesImage::loadOrientationOnGrid(const std::string& fileName,
                                             const std::string& directory,
                                             std::uint64_t targetSizeX, std::uint64_t targetSizeY,
                                             std::uint64_t targetSizeZ, bool reducedAngles) {
  if (memoryEstimateMode) {
    std::uint64_t begin = 0, end = 0;
    MpiExchange().getDataRange(targetSizeX, begin, end);
    Image<double> standIn(reducedAngles ? 2 : 3, end - begin, targetSizeY, targetSizeZ,
                          "EulerAnglesImageMemoryEstimate");
    return;
  }
  loadOrientation(fileName, directory, targetSizeX, reducedAngles);
  resampleTo(targetSizeX, targetSizeY, targetSizeZ);
}

}  // namespace gridmoor
