#include "formats/VtiReader.h"

#include <zlib.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <sstream>

#include "common/Fatal.h"
#include "formats/ElementConversion.h"
#include "input/XmlNode.h"

namespace gridmoor {

namespace {

// A header larger than this without its appended data is no VTI file.
constexpr std::size_t maximumHeaderBytes = std::size_t(64) << 20;
// A block larger than this is a corrupt block header, not a buffer to allocate.
constexpr std::uint64_t maximumBlockBytes = std::uint64_t(1) << 30;

const char* const typeNames[] = {"Int8",  "UInt8",  "Int16", "UInt16",  "Int32",
                                 "UInt32", "Int64", "UInt64", "Float32", "Float64"};
const std::uint32_t typeSizes[] = {1, 1, 2, 2, 4, 4, 8, 8, 4, 8};

int typeIndex(const std::string& name) {
  for (int i = 0; i < 10; ++i)
    if (name == typeNames[i]) return i;
  return -1;
}

bool endsWith(const std::string& text, const std::string& suffix) {
  return text.size() >= suffix.size() &&
         text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0;
}

bool canOpen(const std::string& path) {
  std::error_code ec;
  if (std::filesystem::is_directory(path, ec)) return false;
  std::ifstream probe(path, std::ios::binary);
  return probe.is_open();
}

template <std::size_t N, class T>
std::array<T, N> parseNumbers(const std::string& text, const std::string& what,
                              const std::string& file) {
  std::istringstream in(text);
  std::array<T, N> values{};
  for (T& v : values)
    if (!(in >> v))
      fatal("VTI file " + file + ": the attribute " + what + " \"" + text + "\" does not hold " +
            std::to_string(N) + " numbers");
  return values;
}

template <class T>
T parseNumber(const std::string& text, const std::string& what, const std::string& file) {
  return parseNumbers<1, T>(text, what, file)[0];
}

// The file's text up to its appended data, where that part starts, and the file's size.
struct HeaderText {
  std::string text;
  std::uint64_t dataStart = 0;
  std::uint64_t fileSize = 0;
  bool hasAppendedData = false;
};

HeaderText readHeaderText(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) fatal("Could not open the vti file " + path);
  HeaderText h;
  in.seekg(0, std::ios::end);
  h.fileSize = static_cast<std::uint64_t>(in.tellg());
  in.seekg(0);
  const std::string tag = "<AppendedData";
  std::string all;
  std::vector<char> chunk(1 << 16);
  std::size_t tagAt = std::string::npos;
  while (in) {
    in.read(chunk.data(), static_cast<std::streamsize>(chunk.size()));
    const std::size_t from = all.size() > tag.size() ? all.size() - tag.size() : 0;
    all.append(chunk.data(), static_cast<std::size_t>(in.gcount()));
    if (tagAt == std::string::npos) tagAt = all.find(tag, from);
    // The tag, its end and the "_" that opens the data must all be there.
    if (tagAt != std::string::npos) {
      const std::size_t close = all.find('>', tagAt);
      if (close != std::string::npos && all.find('_', close) != std::string::npos) break;
    }
    if (all.size() > maximumHeaderBytes)
      fatal("VTI file " + path + " is no VTI file: no XML header ends in its first " +
            std::to_string(maximumHeaderBytes) + " bytes");
  }
  if (tagAt == std::string::npos) {
    h.text = std::move(all);
    return h;
  }
  const std::size_t close = all.find('>', tagAt);
  const std::size_t underscore = close == std::string::npos ? close : all.find('_', close);
  if (underscore == std::string::npos)
    fatal("VTI file " + path + " is truncated: its appended data do not begin");
  const std::string openTag = all.substr(tagAt, close - tagAt);
  if (openTag.find("encoding=\"raw\"") == std::string::npos)
    fatal("VTI file " + path + ": only raw appended data can be read, the file has " + openTag +
          ">");
  h.hasAppendedData = true;
  h.dataStart = underscore + 1;
  h.text = all.substr(0, tagAt);
  return h;
}

XmlNode parseHeader(const std::string& path, const std::string& text) {
  XmlResults results;
  XmlNode root = XmlNode::parseString(text, "VTKFile", &results);
  // The header stops before the appended data, so the end tags after them are missing:
  // that warning is expected.
  if (!root || (results.error != eXMLErrorNone && results.error != eXMLErrorMissingEndTag))
    fatal("VTI file " + path + ": its XML header can not be read (" +
          XmlNode::getError(results.error) + " at line " + std::to_string(results.line) + ")");
  return root;
}

// WholeExtent, Origin and Spacing of an ImageData or PImageData element.
void readGeometry(const XmlNode& image, const std::string& path,
                  std::array<std::int64_t, 6>& extent, std::array<double, 3>& origin,
                  std::array<double, 3>& spacing) {
  extent = parseNumbers<6, std::int64_t>(image.attributeValue("WholeExtent"), "WholeExtent", path);
  origin = parseNumbers<3, double>(image.attributeValue("Origin"), "Origin", path);
  spacing = parseNumbers<3, double>(image.attributeValue("Spacing"), "Spacing", path);
  for (int axis = 0; axis < 3; ++axis) {
    std::int64_t span;
    if (extent[2 * axis + 1] < extent[2 * axis])
      fatal("VTI file " + path + ": its WholeExtent has an upper index below the lower one");
    // A point-data grid has one more point than its span: that must be countable too.
    if (__builtin_sub_overflow(extent[2 * axis + 1], extent[2 * axis], &span) ||
        span == std::numeric_limits<std::int64_t>::max())
      fatal("VTI file " + path + ": its WholeExtent spans more indices than a grid can hold");
  }
}

// The arrays of a piece or an index ("" or "P" in front of the element names): those of the
// cell data, unless only the point data hold arrays.
std::vector<std::pair<VtiReader::Array, XmlNode>> readArrays(const XmlNode& parent,
                                                             const std::string& p,
                                                             const std::string& path,
                                                             bool& points) {
  XmlNode section = parent.childByName(p + "CellData");
  points = false;
  if (!section || !section.childByName(p + "DataArray")) {
    if (XmlNode pointSection = parent.childByName(p + "PointData");
        pointSection && pointSection.childByName(p + "DataArray")) {
      section = pointSection;
      points = true;
    }
  }
  std::vector<std::pair<VtiReader::Array, XmlNode>> arrays;
  for (int a = 0; section && a < section.childCount(); ++a) {
    const XmlNode node = section.child(a);
    if (node.name() != p + "DataArray") continue;
    VtiReader::Array array;
    array.name = node.attributeValue("Name");
    array.type = node.attributeValue("type");
    bool hasCount = false;
    const std::string count = node.attributeValue("NumberOfComponents", &hasCount);
    array.components = hasCount ? parseNumber<std::uint32_t>(count, "NumberOfComponents", path) : 1;
    if (typeIndex(array.type) < 0)
      fatal("VTI file " + path + ": the array " + array.name + " has the unknown type \"" +
            array.type + "\"");
    if (array.components == 0)
      fatal("VTI file " + path + ": the array " + array.name + " has no components");
    arrays.emplace_back(array, node);
  }
  return arrays;
}

// Streams the bytes of one array out of the appended data, plain or block by block.
class ArrayStream {
 public:
  ArrayStream(const std::string& file, bool bigEndian, bool compressed, bool sizeWords64,
              std::uint64_t dataStart, std::uint64_t fileSize, const std::string& arrayName,
              std::uint64_t offset, std::uint64_t expectedBytes)
      : file_(file), array_(arrayName), in_(file, std::ios::binary), bigEndian_(bigEndian),
        sizeWords64_(sizeWords64), compressed_(compressed) {
    if (!in_) fatal("Could not open the vti file " + file);
    std::uint64_t position = dataStart + offset;
    const std::uint64_t word = sizeWords64 ? 8 : 4;
    if (offset > fileSize || position + word > fileSize) truncated();
    in_.seekg(static_cast<std::streamoff>(position));
    if (!compressed) {
      const std::uint64_t bytes = readWord();
      if (bytes != expectedBytes)
        fatal("VTI file " + file_ + ": the array " + array_ + " holds " + std::to_string(bytes) +
              " bytes where its extent needs " + std::to_string(expectedBytes));
      if (position + word + bytes > fileSize) truncated();
      return;
    }
    const std::uint64_t blocks = readWord();
    blockBytes_ = readWord();
    lastBlockBytes_ = readWord();
    if (blockBytes_ == 0 || blockBytes_ > maximumBlockBytes || lastBlockBytes_ > blockBytes_ ||
        blocks > expectedBytes / blockBytes_ + 1)
      corrupt("its block header is inconsistent");
    // A last size of 0 means that the last block is full.
    if (lastBlockBytes_ == 0) lastBlockBytes_ = blockBytes_;
    const std::uint64_t total = blocks == 0 ? 0 : (blocks - 1) * blockBytes_ + lastBlockBytes_;
    if (total != expectedBytes)
      fatal("VTI file " + file_ + ": the array " + array_ + " holds " + std::to_string(total) +
            " bytes where its extent needs " + std::to_string(expectedBytes));
    if (position + (3 + blocks) * word > fileSize) truncated();
    compressedSizes_.resize(blocks);
    std::uint64_t sum = 0;
    for (std::uint64_t& size : compressedSizes_) {
      size = readWord();
      if (size > fileSize) truncated();
      sum += size;
    }
    if (position + (3 + blocks) * word + sum > fileSize) truncated();
  }

  void read(char* out, std::uint64_t n) {
    if (!compressed_) {
      in_.read(out, static_cast<std::streamsize>(n));
      if (static_cast<std::uint64_t>(in_.gcount()) != n) truncated();
      return;
    }
    while (n > 0) {
      if (blockPosition_ == block_.size()) nextBlock();
      const std::uint64_t take = std::min<std::uint64_t>(n, block_.size() - blockPosition_);
      std::memcpy(out, block_.data() + blockPosition_, take);
      blockPosition_ += take;
      out += take;
      n -= take;
    }
  }

 private:
  [[noreturn]] void truncated() const {
    fatal("VTI file " + file_ + " is truncated: the data of the array " + array_ +
          " run past the end of the file");
  }
  [[noreturn]] void corrupt(const std::string& what) const {
    fatal("VTI file " + file_ + ": the compressed data of the array " + array_ +
          " are corrupt: " + what);
  }

  std::uint64_t readWord() {
    unsigned char bytes[8] = {};
    const int n = sizeWords64_ ? 8 : 4;
    in_.read(reinterpret_cast<char*>(bytes), n);
    if (in_.gcount() != n) truncated();
    std::uint64_t value = 0;
    for (int i = 0; i < n; ++i) {
      const int shift = bigEndian_ ? 8 * (n - 1 - i) : 8 * i;
      value |= static_cast<std::uint64_t>(bytes[i]) << shift;
    }
    return value;
  }

  void nextBlock() {
    if (nextBlock_ >= compressedSizes_.size()) corrupt("more bytes were asked for than it holds");
    const std::uint64_t packedBytes = compressedSizes_[nextBlock_];
    const std::uint64_t plainBytes =
        nextBlock_ + 1 == compressedSizes_.size() ? lastBlockBytes_ : blockBytes_;
    packed_.resize(packedBytes);
    in_.read(reinterpret_cast<char*>(packed_.data()), static_cast<std::streamsize>(packedBytes));
    if (static_cast<std::uint64_t>(in_.gcount()) != packedBytes) truncated();
    block_.resize(plainBytes);
    uLongf got = static_cast<uLongf>(plainBytes);
    const int result = uncompress(reinterpret_cast<Bytef*>(block_.data()), &got, packed_.data(),
                                  static_cast<uLong>(packedBytes));
    if (result != Z_OK || got != plainBytes)
      corrupt("block " + std::to_string(nextBlock_) + " does not inflate to " +
              std::to_string(plainBytes) + " bytes");
    blockPosition_ = 0;
    ++nextBlock_;
  }

  std::string file_;
  std::string array_;
  std::ifstream in_;
  bool bigEndian_;
  bool sizeWords64_;
  bool compressed_;
  std::uint64_t blockBytes_ = 0;
  std::uint64_t lastBlockBytes_ = 0;
  std::vector<std::uint64_t> compressedSizes_;
  std::vector<unsigned char> packed_;
  std::vector<char> block_;
  std::uint64_t blockPosition_ = 0;
  std::uint64_t nextBlock_ = 0;
};

template <class E, class T>
void scatterPlane(const char* plane, std::uint64_t nx, std::uint64_t nc, const VoxelBox& piece,
                  const VoxelBox& part, std::uint64_t z, const std::vector<std::uint32_t>& comps,
                  Image<T>& image) {
  for (std::uint64_t y = part.begin[1]; y < part.end[1]; ++y)
    for (std::uint64_t x = part.begin[0]; x < part.end[0]; ++x) {
      const char* voxel =
          plane + (((y - piece.begin[1]) * nx + (x - piece.begin[0])) * nc) * sizeof(E);
      T* out = image.voxelPointer(x, y, z);
      for (std::size_t k = 0; k < comps.size(); ++k) {
        E value;
        std::memcpy(&value, voxel + comps[k] * sizeof(E), sizeof(E));
        out[k] = convertElement<T>(value);
      }
    }
}

template <class T>
void scatterPlaneOfType(int type, const char* plane, std::uint64_t nx, std::uint64_t nc,
                        const VoxelBox& piece, const VoxelBox& part, std::uint64_t z,
                        const std::vector<std::uint32_t>& comps, Image<T>& image) {
  switch (type) {
    case 0: scatterPlane<std::int8_t>(plane, nx, nc, piece, part, z, comps, image); break;
    case 1: scatterPlane<std::uint8_t>(plane, nx, nc, piece, part, z, comps, image); break;
    case 2: scatterPlane<std::int16_t>(plane, nx, nc, piece, part, z, comps, image); break;
    case 3: scatterPlane<std::uint16_t>(plane, nx, nc, piece, part, z, comps, image); break;
    case 4: scatterPlane<std::int32_t>(plane, nx, nc, piece, part, z, comps, image); break;
    case 5: scatterPlane<std::uint32_t>(plane, nx, nc, piece, part, z, comps, image); break;
    case 6: scatterPlane<std::int64_t>(plane, nx, nc, piece, part, z, comps, image); break;
    case 7: scatterPlane<std::uint64_t>(plane, nx, nc, piece, part, z, comps, image); break;
    case 8: scatterPlane<float>(plane, nx, nc, piece, part, z, comps, image); break;
    default: scatterPlane<double>(plane, nx, nc, piece, part, z, comps, image); break;
  }
}

}  // namespace

VtiReader::VtiReader(const std::string& name) {
  // A name with a suffix is opened as given; without one the .vti file comes first.
  if (endsWith(name, ".pvti") || endsWith(name, ".vti")) {
    if (!canOpen(name))
      fatal(std::string("Could not open the ") + (endsWith(name, ".pvti") ? "pvti" : "vti") +
            " file " + name);
    fileName = name;
  } else if (canOpen(name + ".vti")) {
    fileName = name + ".vti";
  } else if (canOpen(name + ".pvti")) {
    fileName = name + ".pvti";
  } else {
    fatal("Could neither open the vti file " + name + ".vti nor the pvti file " + name + ".pvti");
  }

  const HeaderText header = readHeaderText(fileName);
  const XmlNode root = parseHeader(fileName, header.text);
  const std::string type = root.attributeValue("type");
  if (type == "PImageData") {
    readIndexFile(fileName, root);
  } else if (type == "ImageData") {
    sources.push_back(readImageFile(fileName, wholeExtent, origin, spacing, pointData));
    if (!sources.back().pieces.empty()) arrays = sources.back().pieces.front().arrays;
  } else {
    fatal("VTI file " + fileName + " holds no image data but \"" + type + "\"");
  }
}

VtiReader::Source VtiReader::readImageFile(const std::string& path,
                                           std::array<std::int64_t, 6>& extent,
                                           std::array<double, 3>& orig,
                                           std::array<double, 3>& spac, bool& points) const {
  const HeaderText header = readHeaderText(path);
  const XmlNode root = parseHeader(path, header.text);
  if (root.attributeValue("type") != "ImageData")
    fatal("VTI file " + path + " holds no image data but \"" + root.attributeValue("type") + "\"");

  Source source;
  source.fileName = path;
  source.fileSize = header.fileSize;
  source.dataStart = header.dataStart;
  const std::string order = root.attributeValue("byte_order");
  if (order == "BigEndian") source.bigEndian = true;
  else if (order != "LittleEndian" && !order.empty())
    fatal("VTI file " + path + ": unknown byte order \"" + order + "\"");
  const std::string compressor = root.attributeValue("compressor");
  if (compressor == "vtkZLibDataCompressor") source.compressed = true;
  else if (!compressor.empty())
    fatal("VTI file " + path + ": the compressor \"" + compressor + "\" is not supported");
  // The 0.1 format counts sizes in 32 bits unless the header says otherwise.
  const std::string headerType = root.attributeValue("header_type");
  if (headerType == "UInt64") source.sizeWords64 = true;
  else if (!headerType.empty() && headerType != "UInt32")
    fatal("VTI file " + path + ": the header type \"" + headerType + "\" is not supported");

  const XmlNode image = root.childByName("ImageData");
  if (!image) fatal("VTI file " + path + " has no ImageData element");
  readGeometry(image, path, extent, orig, spac);
  for (int i = 0; i < image.childCount(); ++i) {
    const XmlNode pieceNode = image.child(i);
    if (pieceNode.name() != "Piece") continue;
    Piece piece;
    piece.extent = parseNumbers<6, std::int64_t>(pieceNode.attributeValue("Extent"), "Extent", path);
    for (auto& [array, node] : readArrays(pieceNode, "", path, points)) {
      const std::string format = node.attributeValue("format");
      if (format != "appended")
        fatal("VTI file " + path + ": the array " + array.name + " is stored as \"" + format +
              "\"; only appended data can be read");
      if (!header.hasAppendedData)
        fatal("VTI file " + path + ": the array " + array.name +
              " refers to appended data that the file does not have");
      array.offset = parseNumber<std::uint64_t>(node.attributeValue("offset"), "offset", path);
      piece.arrays.push_back(array);
    }
    source.pieces.push_back(std::move(piece));
  }
  return source;
}

void VtiReader::readIndexFile(const std::string& path, const XmlNode& root) {
  const XmlNode image = root.childByName("PImageData");
  if (!image) fatal("VTI file " + path + " has no PImageData element");
  readGeometry(image, path, wholeExtent, origin, spacing);
  for (const auto& entry : readArrays(image, "P", path, pointData)) arrays.push_back(entry.first);

  // Sources are named relative to the index's directory.
  const std::filesystem::path directory = std::filesystem::path(path).parent_path();
  for (int i = 0; i < image.childCount(); ++i) {
    const XmlNode pieceNode = image.child(i);
    if (pieceNode.name() != "Piece") continue;
    const std::string sourceName = pieceNode.attributeValue("Source");
    if (sourceName.empty()) fatal("VTI file " + path + ": a piece names no Source file");
    const std::string piecePath = (directory / sourceName).string();
    if (!canOpen(piecePath))
      fatal("Could not open the vti file " + piecePath + ", a piece of " + path);
    std::array<std::int64_t, 6> extent;
    std::array<double, 3> o, s;
    bool points = false;
    sources.push_back(readImageFile(piecePath, extent, o, s, points));
  }
}

std::uint64_t VtiReader::getSize(int axis) const {
  return static_cast<std::uint64_t>(wholeExtent[2 * axis + 1] - wholeExtent[2 * axis]);
}

const VtiReader::Array* VtiReader::findArray(const std::vector<Array>& list,
                                             const std::string& name) {
  for (const Array& array : list)
    if (array.name == name) return &array;
  return nullptr;
}

void VtiReader::selectCheck(const Array* found, const std::string& name, const std::string& type,
                            std::uint32_t components) const {
  if (!found)
    fatal("Could not set the field " + name + " since it does not exist in this VTI file.");
  if ((!type.empty() && found->type != type) || (components != 0 && found->components != components))
    fatal("Could not set the field " + name +
          " since it does not exist with the exact parameters in this VTI file.");
}

void VtiReader::setField(const std::string& name, const std::string& type,
                         std::uint32_t components) {
  const Array* found = findArray(arrays, name);
  selectCheck(found, name, type, components);
  selected = static_cast<int>(found - arrays.data());
}

const VtiReader::Array& VtiReader::getField() const {
  if (selected < 0) fatal("VtiReader: no field of " + fileName + " has been set");
  return arrays[selected];
}

template <class T>
void VtiReader::readFields(Image<T>& image, const VoxelBox& box,
                           const std::vector<std::uint32_t>& components) const {
  const Array& field = getField();
  std::vector<std::uint32_t> comps = components;
  if (comps.empty())
    for (std::uint32_t c = 0; c < field.components; ++c) comps.push_back(c);
  for (const std::uint32_t c : comps)
    if (c >= field.components)
      fatal("VtiReader: component " + std::to_string(c) + " of the field " + field.name +
            " asked for, the field has " + std::to_string(field.components));
  if (comps.size() != image.getNumberOfComponents())
    fatal("VtiReader: the field " + field.name + " gives " + std::to_string(comps.size()) +
          " components to an image of " + std::to_string(image.getNumberOfComponents()));
  for (int axis = 0; axis < 3; ++axis)
    if (box.begin[axis] > box.end[axis] || box.end[axis] > getGridSize(axis))
      fatal("VtiReader: the voxels asked for lie outside the grid of " + fileName);
  const std::uint64_t planes = image.strideX == 0 ? 0 : image.size() / image.strideX;
  if (box.count() > 0 && (box.begin[0] < image.xOffset || box.end[0] > image.xOffset + planes ||
                          box.end[1] > image.sizeY || box.end[2] > image.sizeZ))
    fatal("VtiReader: the image " + image.getName() + " does not hold the voxels asked for");
  if (image.estimateOnly() || box.count() == 0) return;

  const int type = typeIndex(field.type);
  const std::uint64_t elementBytes = typeSizes[type];
  std::uint64_t filled = 0;
  for (const Source& source : sources) {
    const bool swap = source.bigEndian != (std::endian::native == std::endian::big);
    for (const Piece& piece : source.pieces) {
      // The piece's voxels in grid indices.
      VoxelBox pieceBox;
      for (int axis = 0; axis < 3; ++axis) {
        std::int64_t b, e;
        const bool overflow =
            __builtin_sub_overflow(piece.extent[2 * axis], wholeExtent[2 * axis], &b) ||
            __builtin_sub_overflow(piece.extent[2 * axis + 1], wholeExtent[2 * axis], &e) ||
            __builtin_add_overflow(e, pointData ? 1 : 0, &e);
        if (overflow || b < 0 || e < b || static_cast<std::uint64_t>(e) > getGridSize(axis))
          fatal("VTI file " + source.fileName + ": a piece's Extent lies outside the WholeExtent");
        pieceBox.begin[axis] = static_cast<std::uint64_t>(b);
        pieceBox.end[axis] = static_cast<std::uint64_t>(e);
      }
      VoxelBox part;
      for (int axis = 0; axis < 3; ++axis) {
        part.begin[axis] = std::max(box.begin[axis], pieceBox.begin[axis]);
        part.end[axis] = std::max(part.begin[axis], std::min(box.end[axis], pieceBox.end[axis]));
      }
      if (part.count() == 0) continue;

      const Array* array = findArray(piece.arrays, field.name);
      if (!array)
        fatal("VTI file " + source.fileName + " holds no array " + field.name + ", which " +
              fileName + " lists");
      if (array->type != field.type || array->components != field.components)
        fatal("VTI file " + source.fileName + ": the array " + field.name +
              " differs in type or components from its entry in " + fileName);

      const std::uint64_t nc = field.components;
      const std::uint64_t planeBytes = pieceBox.size(0) * pieceBox.size(1) * nc * elementBytes;
      ArrayStream stream(source.fileName, source.bigEndian, source.compressed,
                         source.sizeWords64, source.dataStart, source.fileSize, field.name,
                         array->offset, planeBytes * pieceBox.size(2));
      std::vector<char> plane(planeBytes);
      for (std::uint64_t z = pieceBox.begin[2]; z < part.end[2]; ++z) {
        stream.read(plane.data(), planeBytes);
        if (z < part.begin[2]) continue;
        if (swap && elementBytes > 1)
          for (std::uint64_t i = 0; i < planeBytes; i += elementBytes)
            std::reverse(plane.data() + i, plane.data() + i + elementBytes);
        scatterPlaneOfType(type, plane.data(), pieceBox.size(0), nc, pieceBox, part, z, comps,
                           image);
      }
      filled += part.count();
    }
  }
  if (filled < box.count())
    fatal("VTI file " + fileName + ": its pieces do not cover the voxels asked for");
}

template void VtiReader::readFields(Image<double>&, const VoxelBox&,
                                    const std::vector<std::uint32_t>&) const;
template void VtiReader::readFields(Image<float>&, const VoxelBox&,
                                    const std::vector<std::uint32_t>&) const;
template void VtiReader::readFields(Image<unsigned char>&, const VoxelBox&,
                                    const std::vector<std::uint32_t>&) const;
template void VtiReader::readFields(Image<int>&, const VoxelBox&,
                                    const std::vector<std::uint32_t>&) const;

void readFieldFromVti(Image<double>& image, const std::string& fileName,
                      const std::string& fieldName) {
  VtiReader reader(fileName);
  reader.setField(fieldName);
  const std::uint32_t fileComponents = reader.getField().components;
  const std::uint64_t nx = reader.getGridSize(0), ny = reader.getGridSize(1),
                      nz = reader.getGridSize(2);
  if (image.size() == 0 && !image.estimateOnly()) {
    const std::uint64_t components =
        image.getNumberOfComponents() > 0 ? image.getNumberOfComponents() : fileComponents;
    image.xOffset = 0;
    image.resize(components, nx, ny, nz);
  }
  std::vector<std::uint32_t> components;
  if (image.getNumberOfComponents() == 6 && fileComponents == 9) {
    // A full tensor stored row by row gives its symmetric part in Voigt order.
    components = {0, 4, 8, 7, 6, 3};
  } else if (image.getNumberOfComponents() != fileComponents) {
    fatal("The field " + fieldName + " of " + reader.getFileName() + " has " +
          std::to_string(fileComponents) + " components, the image " + image.getName() +
          " needs " + std::to_string(image.getNumberOfComponents()));
  }
  if (image.sizeY != ny || image.sizeZ != nz)
    fatal("The field " + fieldName + " of " + reader.getFileName() + " has a grid of " +
          std::to_string(nx) + " x " + std::to_string(ny) + " x " + std::to_string(nz) +
          " voxels, which does not match the image " + image.getName());
  const std::uint64_t planes = image.strideX == 0 ? 0 : image.size() / image.strideX;
  VoxelBox box;
  box.begin = {image.xOffset, 0, 0};
  box.end = {image.xOffset + planes, ny, nz};
  reader.readFields(image, box, components);
}

}  // namespace gridmoor
