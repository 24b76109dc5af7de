// Writer of VTK's XML image files: raw appended data, optionally compressed by zlib blocks,
// with the grid cut along x into pieces and a .pvti index when there is more than one.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "formats/DataWriter.h"

namespace gridmoor {

class VtiWriter : public DataWriter {
 public:
  // One piece of the grid: its x range in voxels and the file that holds it.
  struct Piece {
    VoxelBox box;
    std::string fileName;
  };

  // fileName may carry ".vti" or ".pvti"; either is dropped to give the base name. Each
  // process cuts its own x range into piecesPerProcess pieces (fewer when it holds fewer
  // planes).
  VtiWriter(std::string fileName, const std::array<std::int64_t, 6>& extent,
            const std::array<double, 3>& spacing, const std::array<double, 3>& origin,
            bool compressed = false, std::uint32_t piecesPerProcess = 1);

  void write() override;

  // The pieces of every process in index order, and the index file's name.
  std::vector<Piece> allPieces() const;
  std::string indexFileName() const { return baseName + ".pvti"; }

 private:
  std::string pieceHeader(const Piece& piece) const;
  std::string indexText(const std::vector<Piece>& pieces) const;
  std::string extentText(const VoxelBox& box) const;
  std::string byteOrderText() const;
  // WholeExtent, Origin and Spacing attributes of the image element.
  std::string imageAttributes() const;

  std::string baseName;
  std::uint32_t piecesPerProcess;
};

}  // namespace gridmoor
