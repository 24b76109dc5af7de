// Base of the field writers: the registered fields with their element types, the grid's
// extent, spacing and origin, and the extent-by-extent filling of a file without a field copy.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "common/Types.h"
#include "voxel/AbstractFile.h"
#include "voxel/Image.h"

namespace gridmoor {

// A box of voxels (cells or points) in grid indices counted from the lower corner of the
// whole extent: [begin, end) on each axis.
struct VoxelBox {
  std::array<std::uint64_t, 3> begin{};
  std::array<std::uint64_t, 3> end{};

  std::uint64_t size(int axis) const { return end[axis] - begin[axis]; }
  std::uint64_t count() const { return size(0) * size(1) * size(2); }
};

class DataWriter {
 public:
  // Element kinds of a field. 3 and 4 are further float kinds of the callers; every float
  // kind is written as 32-bit float.
  enum DataType : int { UInt8 = 0, Int32 = 1, Float = 2, Float3 = 3, Float4 = 4 };

  // Fills `buffer` with the values of the box in file order: x fastest, then y, then z, the
  // components of one voxel adjacent, each element of the field's type in native byte order.
  using ValueFiller = std::function<void(const VoxelBox& box, char* buffer)>;
  using Hook = std::function<void()>;

  struct Field {
    std::string name;
    Hook beforeWrite;
    Hook afterWrite;
    ValueFiller getValues;
    std::vector<std::uint32_t> components;
    int dataType = Float;
    std::string units;
    std::string description;
  };

  // extent: lower and upper index on each axis (x0 x1 y0 y1 z0 z1) as VTK's image extents
  // count them; cell data hold upper - lower voxels on an axis, point data one more.
  DataWriter(std::string fileName, const std::array<std::int64_t, 6>& extent,
             const std::array<double, 3>& spacing, const std::array<double, 3>& origin);
  virtual ~DataWriter() = default;

  // addField registers a cell field. All fields of one writer go into the same section.
  void addField(const std::string& name, Hook beforeWrite, Hook afterWrite, ValueFiller getValues,
                const std::vector<std::uint32_t>& components, int dataType,
                const std::string& units = "", const std::string& description = "");
  void addCellField(const std::string& name, Hook beforeWrite, Hook afterWrite,
                    ValueFiller getValues, const std::vector<std::uint32_t>& components,
                    int dataType, const std::string& units = "",
                    const std::string& description = "");
  void addPointField(const std::string& name, Hook beforeWrite, Hook afterWrite,
                     ValueFiller getValues, const std::vector<std::uint32_t>& components,
                     int dataType, const std::string& units = "",
                     const std::string& description = "");

  // Fields read from an image whose voxel (x, y, z) is the grid's voxel (x, y, z); x is
  // global, the image's xOffset tells its first plane. `components` picks and orders the
  // image components that are written. The image must outlive write().
  void addImageField(const std::string& name, const Image<double>& image,
                     const std::vector<std::uint32_t>& components, int dataType,
                     const std::string& units = "", const std::string& description = "",
                     bool pointData = false);
  void addImageField(const std::string& name, const Image<Colour>& image,
                     const std::vector<std::uint32_t>& components, int dataType,
                     const std::string& units = "", const std::string& description = "",
                     bool pointData = false);
  // A cell field of an image whose voxels hold weights.size() integration points of
  // componentsPerPoint values each: a voxel is written as the weighted mean of its points,
  // and `components` picks and orders components of a point.
  void addPointMeanField(const std::string& name, const Image<double>& image,
                         std::uint64_t componentsPerPoint, const std::vector<double>& weights,
                         const std::vector<std::uint32_t>& components, int dataType,
                         const std::string& units = "");

  // The components of a point that hold a symmetric tensor of six Voigt values
  // (11, 22, 33, 23, 13, 12) in this writer's format: the six themselves.
  virtual std::vector<std::uint32_t> symmetricTensorComponents() const {
    return {0, 1, 2, 3, 4, 5};
  }

  virtual void write() = 0;

  void setBigEndian(bool big) { useBigEndian = big; }
  void setCompressed(bool on) { compressed = on; }
  void setSpacing(const std::array<double, 3>& s) { spacing = s; }
  void setOrigin(const std::array<double, 3>& o) { origin = o; }
  const std::vector<Field>& getFields() const { return fields; }
  const std::string& getFileName() const { return fileName; }
  const std::array<std::int64_t, 6>& getGridExtent() const { return gridExtent; }
  const std::array<double, 3>& getSpacing() const { return spacing; }
  const std::array<double, 3>& getOrigin() const { return origin; }
  bool isPointData() const { return pointData; }

  // Voxels of the grid on one axis: upper - lower for cells, one more for points.
  std::uint64_t gridSize(int axis) const;

  // Type names of the XML and legacy formats and the bytes of an element; any kind outside
  // 0..4 throws std::invalid_argument("Invalid type specified").
  static std::string vtiTypeName(int dataType);
  static std::string vtkTypeName(int dataType);
  static std::uint32_t typeBytes(int dataType);

  // Shortest text that reads back to the same double: an origin or spacing keeps every digit.
  static std::string formatNumber(double value);

  // Prints the VTI size warning when the grid holds more voxels than VTK's image readers
  // index safely (more than 1290^3 - 1). Returns whether it did.
  static bool warnIfTooLarge(std::uint64_t sizeX, std::uint64_t sizeY, std::uint64_t sizeZ);

 protected:
  // Writes the values of `box` through `out`, a few z planes at a time, swapping every
  // element when the file's byte order is not the machine's.
  void writeFieldValues(const Field& field, const VoxelBox& box, AbstractFile& out,
                        bool bigEndian) const;
  // Bytes of one field over a box.
  static std::uint64_t fieldBytes(const Field& field, const VoxelBox& box);

  std::vector<Field> fields;
  std::string fileName;
  std::array<std::int64_t, 6> gridExtent;
  std::array<double, 3> spacing;
  std::array<double, 3> origin;
  bool useBigEndian = false;
  bool compressed = false;

 private:
  void addSectionField(bool point, Field field);

  bool pointData = false;
};

// Writes the fields that registerFields adds to a writer of fileName's format: legacy VTK for
// ".vtk", VTK's XML image format otherwise (compressed as asked). The writer starts with
// spacing 1 and origin 0; registering the colour field (ColorImage::addMaterialsToFile) sets
// the geometry's.
void saveVtkOrVti(const std::string& fileName, const std::array<std::int64_t, 6>& extent,
                  bool compressed, const std::function<void(DataWriter&)>& registerFields);

}  // namespace gridmoor
