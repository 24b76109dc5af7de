#include "formats/DataWriter.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstring>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <utility>

#include "common/Fatal.h"
#include "common/FileNames.h"
#include "formats/ElementConversion.h"
#include "formats/VtiWriter.h"
#include "formats/VtkWriter.h"

namespace gridmoor {

namespace {

// The writer hands the filler a few z planes at a time; this bounds the scratch buffer.
constexpr std::uint64_t chunkBytes = std::uint64_t(4) << 20;

// The image is walked in its own memory order (z, then y, then x slowest) and the values
// are scattered into the file order (x fastest): reads stream, writes stay in the buffer.
// value(voxel, c) gives the voxel's c-th written value.
template <class Out, class T, class Value>
void fillVoxels(const Image<T>& image, std::size_t nc, const VoxelBox& box, Out* out,
                const Value& value) {
  const std::uint64_t nx = box.size(0), ny = box.size(1);
  const std::uint64_t zStride = nx * ny * nc;
  for (std::uint64_t x = box.begin[0]; x < box.end[0]; ++x)
    for (std::uint64_t y = box.begin[1]; y < box.end[1]; ++y) {
      const T* voxel = image.voxelPointer(x, y, box.begin[2]);
      Out* target = out + ((y - box.begin[1]) * nx + (x - box.begin[0])) * nc;
      for (std::uint64_t z = box.begin[2]; z < box.end[2]; ++z) {
        for (std::size_t c = 0; c < nc; ++c) target[c] = convertElement<Out>(value(voxel, c));
        voxel += image.strideZ;
        target += zStride;
      }
    }
}

// fill(out) with the buffer typed as the field's data type.
template <class Fill>
void fillAs(int dataType, char* buffer, const Fill& fill) {
  switch (dataType) {
    case DataWriter::UInt8: fill(reinterpret_cast<unsigned char*>(buffer)); break;
    case DataWriter::Int32: fill(reinterpret_cast<std::int32_t*>(buffer)); break;
    default: fill(reinterpret_cast<float*>(buffer)); break;
  }
}

template <class T>
void requireCovered(const std::string& name, const Image<T>& image, const VoxelBox& box) {
  // The image holds the planes [xOffset, xOffset + stored planes); a box outside them is a
  // mismatch of the caller's slab and the writer's grid.
  const std::uint64_t planes = image.strideX == 0 ? 0 : image.size() / image.strideX;
  if (box.begin[0] < image.xOffset || box.end[0] > image.xOffset + planes ||
      box.end[1] > image.sizeY || box.end[2] > image.sizeZ)
    fatal("DataWriter: the field " + name + " does not cover the written grid: it holds " +
          std::to_string(planes) + " x " + std::to_string(image.sizeY) + " x " +
          std::to_string(image.sizeZ) + " voxels from x = " + std::to_string(image.xOffset));
}

template <class T>
DataWriter::ValueFiller imageFiller(const std::string& name, const Image<T>& image,
                                    std::vector<std::uint32_t> components, int dataType) {
  for (const std::uint32_t c : components)
    if (c >= image.getNumberOfComponents())
      fatal("DataWriter: the field " + name + " asks for component " + std::to_string(c) +
            " of an image with " + std::to_string(image.getNumberOfComponents()) +
            " components");
  return [&image, name, components = std::move(components), dataType](const VoxelBox& box,
                                                                     char* buffer) {
    requireCovered(name, image, box);
    fillAs(dataType, buffer, [&](auto* out) {
      fillVoxels(image, components.size(), box, out,
                 [&](const T* voxel, std::size_t c) { return voxel[components[c]]; });
    });
  };
}

void swapElements(char* data, std::uint64_t bytes, std::uint32_t elementBytes) {
  if (elementBytes < 2) return;
  for (std::uint64_t i = 0; i + elementBytes <= bytes; i += elementBytes)
    std::reverse(data + i, data + i + elementBytes);
}

}  // namespace

DataWriter::DataWriter(std::string name, const std::array<std::int64_t, 6>& extent,
                       const std::array<double, 3>& s, const std::array<double, 3>& o)
    : fileName(std::move(name)), gridExtent(extent), spacing(s), origin(o) {
  for (int axis = 0; axis < 3; ++axis)
    if (extent[2 * axis + 1] < extent[2 * axis])
      fatal("DataWriter: the extent of " + fileName + " has an upper index below the lower one");
}

std::string DataWriter::vtiTypeName(int dataType) {
  switch (dataType) {
    case UInt8: return "UInt8";
    case Int32: return "Int32";
    case Float: case Float3: case Float4: return "Float32";
    default: throw std::invalid_argument("Invalid type specified");
  }
}

std::string DataWriter::vtkTypeName(int dataType) {
  switch (dataType) {
    case UInt8: return "unsigned_char";
    case Int32: return "int";
    case Float: case Float3: case Float4: return "float";
    default: throw std::invalid_argument("Invalid type specified");
  }
}

std::uint32_t DataWriter::typeBytes(int dataType) {
  switch (dataType) {
    case UInt8: return 1;
    case Int32: case Float: case Float3: case Float4: return 4;
    default: throw std::invalid_argument("Invalid type specified");
  }
}

std::string DataWriter::formatNumber(double value) {
  char text[64];
  const auto result = std::to_chars(text, text + sizeof text, value);
  return std::string(text, result.ptr);
}

bool DataWriter::warnIfTooLarge(std::uint64_t sizeX, std::uint64_t sizeY, std::uint64_t sizeZ) {
  const unsigned __int128 voxels = static_cast<unsigned __int128>(sizeX) * sizeY * sizeZ;
  if (voxels <= 2146688999u) return false;
  std::cerr << "Too many geometry points, exceeds VTI capabilities\nThe file will be saved "
               "anyway, but it is a broken file and maybe cannot be opened correctly.\n";
  std::cerr.flush();
  return true;
}

std::uint64_t DataWriter::gridSize(int axis) const {
  return static_cast<std::uint64_t>(gridExtent[2 * axis + 1] - gridExtent[2 * axis]) +
         (pointData ? 1 : 0);
}

void DataWriter::addSectionField(bool point, Field field) {
  // Every kind is checked when it is registered, so that a bad kind is found before a file
  // is half written.
  typeBytes(field.dataType);
  if (!fields.empty() && point != pointData)
    fatal("DataWriter: the field " + field.name + " of " + fileName +
          " mixes point data and cell data in one file");
  if (field.components.empty())
    fatal("DataWriter: the field " + field.name + " of " + fileName + " has no components");
  pointData = point;
  fields.push_back(std::move(field));
}

void DataWriter::addField(const std::string& name, Hook beforeWrite, Hook afterWrite,
                          ValueFiller getValues, const std::vector<std::uint32_t>& components,
                          int dataType, const std::string& units,
                          const std::string& description) {
  addCellField(name, std::move(beforeWrite), std::move(afterWrite), std::move(getValues),
               components, dataType, units, description);
}

void DataWriter::addCellField(const std::string& name, Hook beforeWrite, Hook afterWrite,
                              ValueFiller getValues, const std::vector<std::uint32_t>& components,
                              int dataType, const std::string& units,
                              const std::string& description) {
  addSectionField(false, Field{name, std::move(beforeWrite), std::move(afterWrite),
                               std::move(getValues), components, dataType, units, description});
}

void DataWriter::addPointField(const std::string& name, Hook beforeWrite, Hook afterWrite,
                               ValueFiller getValues,
                               const std::vector<std::uint32_t>& components, int dataType,
                               const std::string& units, const std::string& description) {
  addSectionField(true, Field{name, std::move(beforeWrite), std::move(afterWrite),
                              std::move(getValues), components, dataType, units, description});
}

void DataWriter::addImageField(const std::string& name, const Image<double>& image,
                               const std::vector<std::uint32_t>& components, int dataType,
                               const std::string& units, const std::string& description,
                               bool point) {
  typeBytes(dataType);
  addSectionField(point, Field{name, {}, {}, imageFiller(name, image, components, dataType),
                               components, dataType, units, description});
}

void DataWriter::addPointMeanField(const std::string& name, const Image<double>& image,
                                   std::uint64_t componentsPerPoint,
                                   const std::vector<double>& weights,
                                   const std::vector<std::uint32_t>& components, int dataType,
                                   const std::string& units) {
  typeBytes(dataType);
  for (const std::uint32_t c : components)
    if (c >= componentsPerPoint || componentsPerPoint * weights.size() > image.getNumberOfComponents())
      fatal("DataWriter: the field " + name + " asks for component " + std::to_string(c) +
            " of " + std::to_string(weights.size()) + " points of " +
            std::to_string(componentsPerPoint) + " in an image with " +
            std::to_string(image.getNumberOfComponents()) + " values per voxel");
  ValueFiller filler = [&image, name, componentsPerPoint, weights, components, dataType](
                           const VoxelBox& box, char* buffer) {
    requireCovered(name, image, box);
    // Each voxel is the weighted mean of its points.
    fillAs(dataType, buffer, [&](auto* out) {
      fillVoxels(image, components.size(), box, out, [&](const double* voxel, std::size_t c) {
        double mean = 0.0;
        for (std::size_t p = 0; p < weights.size(); ++p)
          mean += weights[p] * voxel[p * componentsPerPoint + components[c]];
        return mean;
      });
    });
  };
  addSectionField(false, Field{name, {}, {}, std::move(filler), components, dataType, units, ""});
}

void DataWriter::addImageField(const std::string& name, const Image<Colour>& image,
                               const std::vector<std::uint32_t>& components, int dataType,
                               const std::string& units, const std::string& description,
                               bool point) {
  typeBytes(dataType);
  addSectionField(point, Field{name, {}, {}, imageFiller(name, image, components, dataType),
                               components, dataType, units, description});
}

std::uint64_t DataWriter::fieldBytes(const Field& field, const VoxelBox& box) {
  return box.count() * field.components.size() * typeBytes(field.dataType);
}

void DataWriter::writeFieldValues(const Field& field, const VoxelBox& box, AbstractFile& out,
                                  bool bigEndian) const {
  if (box.count() == 0) return;
  const std::uint32_t elementBytes = typeBytes(field.dataType);
  const std::uint64_t planeBytes =
      box.size(0) * box.size(1) * field.components.size() * elementBytes;
  const std::uint64_t planesPerChunk = std::max<std::uint64_t>(1, chunkBytes / planeBytes);
  std::vector<char> buffer(std::min(planesPerChunk, box.size(2)) * planeBytes);
  const bool swap = bigEndian != (std::endian::native == std::endian::big);
  for (std::uint64_t z = box.begin[2]; z < box.end[2]; z += planesPerChunk) {
    VoxelBox chunk = box;
    chunk.begin[2] = z;
    chunk.end[2] = std::min(box.end[2], z + planesPerChunk);
    const std::uint64_t bytes = chunk.size(2) * planeBytes;
    field.getValues(chunk, buffer.data());
    if (swap) swapElements(buffer.data(), bytes, elementBytes);
    out.write(buffer.data(), static_cast<std::int64_t>(bytes));
  }
}

void saveVtkOrVti(const std::string& fileName, const std::array<std::int64_t, 6>& extent,
                  bool compressed, const std::function<void(DataWriter&)>& registerFields) {
  const std::array<double, 3> unit = {1.0, 1.0, 1.0}, zero = {0.0, 0.0, 0.0};
  std::unique_ptr<DataWriter> writer;
  if (extensionOf(fileName) == "vtk")
    writer = std::make_unique<VtkWriter>(fileName, extent, unit, zero);
  else
    writer = std::make_unique<VtiWriter>(fileName, extent, unit, zero, compressed);
  registerFields(*writer);
  writer->write();
}

}  // namespace gridmoor
