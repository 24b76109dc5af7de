// Reader of VTK's XML image files (.vti and the .pvti index of pieces) with raw appended
// data, plain or zlib-compressed, either byte order, 32- or 64-bit size words.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "formats/DataWriter.h"
#include "voxel/Image.h"

namespace gridmoor {

class XmlNode;

class VtiReader {
 public:
  struct Array {
    std::string name;
    std::string type;  // one of the type table's names: "Int8" ... "Float64"
    std::uint32_t components = 1;
    std::uint64_t offset = 0;  // into the appended data; unused for an index's arrays
  };

  // Opens a .vti or .pvti file, or, for a name without either suffix, name + ".vti" and
  // then name + ".pvti". Reads the headers of the file and of every piece it names.
  explicit VtiReader(const std::string& fileName);

  const std::string& getFileName() const { return fileName; }
  const std::array<std::int64_t, 6>& getWholeExtent() const { return wholeExtent; }
  const std::array<double, 3>& getOrigin() const { return origin; }
  const std::array<double, 3>& getSpacing() const { return spacing; }
  // upper - lower of the whole extent on an axis.
  std::uint64_t getSize(int axis) const;
  // Values on an axis: getSize for cell data, one more for point data.
  std::uint64_t getGridSize(int axis) const { return getSize(axis) + (pointData ? 1 : 0); }
  bool isPointData() const { return pointData; }
  // The arrays the file offers, in file order.
  const std::vector<Array>& getArrays() const { return arrays; }
  bool hasField(const std::string& name) const { return findArray(arrays, name) != nullptr; }

  // Selects the array that readFields reads. An empty type or 0 components accept any; a
  // name that is absent, or present with another type or count, ends the run.
  void setField(const std::string& name, const std::string& type = "",
                std::uint32_t components = 0);
  const Array& getField() const;

  // Fills the voxels of `box` (grid indices from the lower corner of the whole extent) in
  // `image`, whose voxel (x, y, z) is the grid's; x is global (the image's xOffset applies).
  // Image component k takes the selected array's component components[k]; an empty list
  // takes them all in order. Values are converted to T.
  template <class T>
  void readFields(Image<T>& image, const VoxelBox& box,
                  const std::vector<std::uint32_t>& components) const;

 private:
  // A piece stored in some .vti file, with the arrays of its data section.
  struct Piece {
    std::array<std::int64_t, 6> extent{};
    std::vector<Array> arrays;
  };
  // A .vti file that holds appended data.
  struct Source {
    std::string fileName;
    bool bigEndian = false;
    bool compressed = false;
    bool sizeWords64 = false;
    std::uint64_t dataStart = 0;  // position of the first byte after "_"
    std::uint64_t fileSize = 0;
    std::vector<Piece> pieces;
  };

  static const Array* findArray(const std::vector<Array>& list, const std::string& name);
  // Reads an ImageData file; returns its whole extent, origin, spacing and section in the
  // out parameters.
  Source readImageFile(const std::string& path, std::array<std::int64_t, 6>& extent,
                       std::array<double, 3>& orig, std::array<double, 3>& spac,
                       bool& points) const;
  void readIndexFile(const std::string& path, const XmlNode& root);
  void selectCheck(const Array* found, const std::string& name, const std::string& type,
                   std::uint32_t components) const;

  std::string fileName;
  std::array<std::int64_t, 6> wholeExtent{};
  std::array<double, 3> origin{};
  std::array<double, 3> spacing{1.0, 1.0, 1.0};
  bool pointData = false;
  std::vector<Array> arrays;
  std::vector<Source> sources;
  int selected = -1;
};

// Reads the named field of a .vti or .pvti file into `image`. An image without elements is
// sized to the file's whole grid first (its component count kept when set, else the file's).
// Component counts must agree, except that an image of 6 takes the symmetric part of a file
// array of 9 as the entries 0, 4, 8, 7, 6, 3.
void readFieldFromVti(Image<double>& image, const std::string& fileName,
                      const std::string& fieldName);

}  // namespace gridmoor
