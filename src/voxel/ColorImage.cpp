#include "voxel/ColorImage.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <limits>
#include <memory>
#include <unordered_set>

#include "common/Fatal.h"
#include "formats/DataWriter.h"
#include "formats/VtiReader.h"
#include "voxel/MpiExchange.h"
#include "voxel/Ratio.h"

namespace gridmoor {

namespace {

constexpr std::size_t ldtHeaderBytes = 20;
constexpr long rekDataOffset = 0x800;

struct FileCloser {
  void operator()(std::FILE* f) const {
    if (f) std::fclose(f);
  }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

std::uint32_t readLe32(const unsigned char* p) {
  return std::uint32_t(p[0]) | std::uint32_t(p[1]) << 8 | std::uint32_t(p[2]) << 16 |
         std::uint32_t(p[3]) << 24;
}

void putLe32(unsigned char* p, std::uint32_t v) {
  for (int i = 0; i < 4; ++i) p[i] = static_cast<unsigned char>(v >> (8 * i));
}

std::uint64_t fileSizeOf(std::FILE* f) {
  const long here = std::ftell(f);
  std::fseek(f, 0, SEEK_END);
  const long end = std::ftell(f);
  std::fseek(f, here, SEEK_SET);
  return end < 0 ? 0 : static_cast<std::uint64_t>(end);
}

std::string gridText(std::uint64_t x, std::uint64_t y, std::uint64_t z) {
  return std::to_string(x) + " x " + std::to_string(y) + " x " + std::to_string(z);
}

// The largest grid a run addresses. The transforms take each axis length as an int, and with
// at most 2^42 voxels every byte count of the run's fields (voxels times components times
// bytes times fields) stays far inside 64 bits, also in a memory estimate.
constexpr std::uint64_t maxAxisVoxels = (std::uint64_t(1) << 31) - 1;
constexpr std::uint64_t maxGridVoxels = std::uint64_t(1) << 42;

void requireVoxels(const std::string& kind, const std::string& fileName, std::uint64_t x,
                   std::uint64_t y, std::uint64_t z) {
  if (x == 0 || y == 0 || z == 0)
    fatal(kind + " file " + fileName + " has an empty grid: " + gridText(x, y, z));
  if (x > maxAxisVoxels || y > maxAxisVoxels || z > maxAxisVoxels ||
      static_cast<unsigned __int128>(x) * y * z > maxGridVoxels)
    fatal(kind + " file " + fileName + " has a grid too large to solve: " + gridText(x, y, z));
}

// Byte source over a FILE with its own buffer: the run data are read pair by pair, and
// stdio's per-call locking would dominate.
class ByteReader {
 public:
  explicit ByteReader(std::FILE* f) : file_(f) {}
  bool next(unsigned char& c) {
    if (pos_ == len_) {
      len_ = std::fread(buffer_.data(), 1, buffer_.size(), file_);
      pos_ = 0;
      if (len_ == 0) return false;
    }
    c = buffer_[pos_++];
    return true;
  }
  // The next blank-separated word, as scanf's "%s" gives it; false at the end of the file.
  bool word(std::string& out) {
    out.clear();
    unsigned char c;
    do {
      if (!next(c)) return false;
    } while (std::isspace(c));
    do {
      out += static_cast<char>(c);
    } while (next(c) && !std::isspace(c));
    return true;
  }

 private:
  std::FILE* file_;
  std::array<unsigned char, 1 << 16> buffer_{};
  std::size_t pos_ = 0;
  std::size_t len_ = 0;
};

}  // namespace

ColorImage::ColorImage(const std::string& name, bool flag) : Image<Colour>(name), imageFlag(flag) {}

ColorImage::ColorImage(std::uint64_t sx, std::uint64_t sy, std::uint64_t sz, Colour value,
                       const std::string& name, bool flag)
    : Image<Colour>(1, sx, sy, sz, value, name), localXBegin(0), localXEnd(sx), imageFlag(flag) {}

void ColorImage::setAllResolutions(double value) {
  resolutionX = resolutionY = resolutionZ = value;
}

void ColorImage::setSize(std::uint64_t sx, std::uint64_t sy, std::uint64_t sz,
                         std::uint64_t targetSizeX, const std::string& resamplingMode) {
  const MpiExchange mpi;
  if (targetSizeX != 0 && targetSizeX != sx && resamplingMode != "None") {
    // This process's slab of the target grid, mapped back with the exact ratio
    // sx / targetSizeX: floor of the begin, ceiling of the end.
    std::uint64_t begin, end;
    mpi.getDataRange(targetSizeX, begin, end);
    mapRange(begin, end, Ratio(sx, targetSizeX), localXBegin, localXEnd);
    localXEnd = std::min(localXEnd, sx);
  } else {
    mpi.getDataRange(sx, localXBegin, localXEnd);
  }
  xOffset = localXBegin;
  resize(1, sx, sy, sz, (localXEnd - localXBegin) * sy * sz);
}

void ColorImage::collectColors() {
  // The colours in the order of a hash set of 10 buckets filled in memory order. A set only
  // changes on a colour's first occurrence, so inserting the first occurrences alone gives
  // the same set at one table lookup per voxel.
  bool seen[256] = {};
  std::vector<Colour> firstSeen;
  const Colour* voxels = data();
  for (std::uint64_t i = 0, n = size(); i < n; ++i) {
    const Colour c = voxels[i];
    if (seen[c]) continue;
    seen[c] = true;
    firstSeen.push_back(c);
    if (firstSeen.size() == 256) break;
  }
  std::unordered_set<Colour> set(10);
  for (const Colour c : firstSeen) set.insert(c);
  colors.assign(set.begin(), set.end());
}

double ColorImage::getResolution() const {
  if (resolutionX != resolutionY || resolutionX != resolutionZ)
    std::cout << "Warning: Resolution is anisotropic. This function returns rx only!\n";
  return resolutionX;
}

void ColorImage::readSize(const std::string& fileName, std::uint64_t& sx, std::uint64_t& sy,
                          std::uint64_t& sz) {
  File f(std::fopen(fileName.c_str(), "rb"));
  if (!f) fatal("COULD NOT OPEN THE FILE!" + fileName);
  unsigned char header[ldtHeaderBytes];
  if (std::fread(header, 1, ldtHeaderBytes, f.get()) != ldtHeaderBytes)
    fatal("ldt file " + fileName + " is truncated: its 20-byte header is incomplete");
  // The tag and the trailer offset are not needed to read the runs.
  sx = readLe32(header + 8);
  sy = readLe32(header + 12);
  sz = readLe32(header + 16);
  std::cout << "Size is: " << sx << " " << sy << " " << sz << "\n";
}

void ColorImage::readLdt(const std::string& fileName, std::uint64_t targetSizeX,
                         const std::string& resamplingMode) {
  std::uint64_t sx, sy, sz;
  readSize(fileName, sx, sy, sz);
  requireVoxels("ldt", fileName, sx, sy, sz);

  File f(std::fopen(fileName.c_str(), "rb"));
  if (!f) fatal("COULD NOT OPEN THE FILE!" + fileName);
  // A plane needs at least one pair per 255 voxels: a header that promises more voxels than
  // the file can hold is refused before anything is allocated for it.
  const std::uint64_t planeVoxels = sy * sz;
  const unsigned __int128 minimumBytes =
      ldtHeaderBytes + static_cast<unsigned __int128>(2) * sx * ((planeVoxels + 254) / 255);
  const std::uint64_t fileBytes = fileSizeOf(f.get());
  if (minimumBytes > fileBytes)
    fatal("ldt file " + fileName + " is truncated: a grid of " + gridText(sx, sy, sz) +
          " needs more run data than its " + std::to_string(fileBytes) + " bytes");

  std::cout << "Size of Geometry: " << gridText(sx, sy, sz) << "\n";
  setSize(sx, sy, sz, targetSizeX, resamplingMode);
  if (estimateOnly()) return;  // nothing is stored in a memory estimate

  std::fseek(f.get(), ldtHeaderBytes, SEEK_SET);
  ByteReader in(f.get());
  // Runs fill a plane in memory order (z fastest, then y); a run may cross a line end but
  // never a plane end, where its rest is dropped.
  for (std::uint64_t x = 0; x < sx; ++x) {
    const bool local = x >= localXBegin && x < localXEnd;
    Colour* plane = local ? voxelPointer(x, 0, 0) : nullptr;
    std::uint64_t filled = 0;
    while (filled < planeVoxels) {
      unsigned char count, colour;
      if (!in.next(count) || !in.next(colour))
        fatal("ldt file " + fileName + " is truncated: its run data end in plane " +
              std::to_string(x) + " of " + std::to_string(sx));
      const std::uint64_t n = std::min<std::uint64_t>(count, planeVoxels - filled);
      if (local) std::memset(plane + filled, colour, n);
      filled += n;
    }
  }

  std::string token;
  bool resolutionFound = false;
  while (in.word(token)) {
    if (token == "VoxelLength") {
      std::string number;
      char* end = nullptr;
      const double value = in.word(number) ? std::strtod(number.c_str(), &end) : 0.0;
      // A voxel length that is no usable number would poison every later length and
      // frequency, so it is refused here rather than carried into the solve.
      if (end == nullptr || end == number.c_str() || !isUsableVoxelLength(value))
        fatal("ldt file " + fileName + " has an invalid VoxelLength: \"" + number + "\"");
      setAllResolutions(value);
      std::cout << "Resolution of Geometry: " << value << "\n\n";
      resolutionFound = true;
      break;
    }
    if (token.compare(0, 20, "ConstituentMaterials") == 0) {
      if (description.empty()) description = token;
      else description += token + "\n";
    } else {
      description += token + " ";
    }
  }
  if (!resolutionFound) {
    std::cout << "No resolution found in ldt-File. Setting resolution to 1\n\n";
    setAllResolutions(1.0);
  }
  f.reset();
  collectColors();
}

void ColorImage::readRek(const std::string& fileName, std::uint64_t targetSizeX,
                         const std::string& resamplingMode) {
  File f(std::fopen(fileName.c_str(), "rb"));
  if (!f) fatal("COULD NOT OPEN THE FILE!" + fileName);
  // sizeX, sizeY, bits per voxel, sizeZ: unsigned 16-bit, little-endian.
  std::uint64_t header[4];
  for (std::uint64_t& value : header) {
    const int lo = std::fgetc(f.get());
    const int hi = std::fgetc(f.get());
    if (lo == EOF || hi == EOF)
      fatal("rek file " + fileName + " is truncated: its header is incomplete");
    value = static_cast<std::uint64_t>(lo) | static_cast<std::uint64_t>(hi) << 8;
  }
  const std::uint64_t sx = header[0], sy = header[1], bits = header[2], sz = header[3];
  requireVoxels("rek", fileName, sx, sy, sz);
  const std::uint64_t bytesPerVoxel = bits == 8 ? 1 : 2;
  const std::uint64_t fileBytes = fileSizeOf(f.get());
  const std::uint64_t dataBytes = sx * sy * sz * bytesPerVoxel;
  if (fileBytes < rekDataOffset || fileBytes - rekDataOffset < dataBytes)
    fatal("rek file " + fileName + " is truncated: " + std::to_string(dataBytes) +
          " voxel bytes expected from byte 2048, file size " + std::to_string(fileBytes));

  std::cout << "Size of Geometry: " << gridText(sx, sy, sz) << "\n";
  setSize(sx, sy, sz, targetSizeX, resamplingMode);
  if (!estimateOnly()) {
    if (std::fseek(f.get(), rekDataOffset, SEEK_SET) != 0)
      fatal("rek file " + fileName + " is truncated: no voxel data at byte 2048");
    // x fastest, z slowest in the file: one z slice at a time, spread into the image.
    std::vector<unsigned char> slice(sx * sy * bytesPerVoxel);
    for (std::uint64_t z = 0; z < sz; ++z) {
      if (std::fread(slice.data(), 1, slice.size(), f.get()) != slice.size())
        fatal("rek file " + fileName + " is truncated in slice z = " + std::to_string(z));
      for (std::uint64_t y = 0; y < sy; ++y)
        for (std::uint64_t x = localXBegin; x < localXEnd; ++x)
          at(x, y, z) = slice[(y * sx + x) * bytesPerVoxel];
    }
  }
  std::cout << "Setting resolution to 1\n";
  setAllResolutions(1.0);
  f.reset();
  if (!estimateOnly()) collectColors();
}

void ColorImage::readVtk(const std::string& fileName, std::uint64_t targetSizeX,
                         const std::string& resamplingMode) {
  std::ifstream in(fileName, std::ios::binary);
  if (!in) fatal(fileName + " can not be opened \n");
  std::string line, word;
  for (int i = 0; i < 4; ++i) std::getline(in, line);
  long long dims[3] = {0, 0, 0};
  double origin[3] = {0, 0, 0}, spacing[3] = {0, 0, 0};
  in >> word >> dims[0] >> dims[1] >> dims[2];
  in >> word >> origin[0] >> origin[1] >> origin[2];
  in >> word >> spacing[0] >> spacing[1] >> spacing[2];
  std::getline(in, line);
  std::string dataKind;
  in >> dataKind;
  std::getline(in, line);
  std::getline(in, line);  // data name and type
  std::getline(in, line);  // lookup table
  if (!in) fatal("VTK file " + fileName + " has an incomplete header");
  for (int a = 0; a < 3; ++a) {
    if (dims[a] < 1 || dims[a] > (1LL << 31))
      fatal("VTK file " + fileName + " has invalid DIMENSIONS");
    if (!isUsableVoxelLength(spacing[a]))
      fatal("VTK file " + fileName + " has an invalid SPACING");
  }

  // Point data carry one value more than voxels in each axis; anything else is read as one
  // value per voxel with the dimensions as the voxel counts.
  const bool pointData = dataKind == "POINT_DATA";
  const std::uint64_t shrink = pointData ? 1 : 0;
  const std::uint64_t sx = dims[0] - shrink, sy = dims[1] - shrink, sz = dims[2] - shrink;
  requireVoxels("VTK", fileName, sx, sy, sz);
  const std::uint64_t px = dims[0], py = dims[1], pz = dims[2];
  const std::uint64_t start = static_cast<std::uint64_t>(in.tellg());
  in.seekg(0, std::ios::end);
  const std::uint64_t fileBytes = static_cast<std::uint64_t>(in.tellg());
  if (fileBytes - start < px * py * pz)
    fatal("VTK file " + fileName + " is truncated: " + std::to_string(px * py * pz) +
          " voxel bytes expected, " + std::to_string(fileBytes - start) + " found");
  in.seekg(static_cast<std::streamoff>(start));

  std::cout << "Size of Geometry: " << gridText(sx, sy, sz) << "\n";
  setSize(sx, sy, sz, targetSizeX, resamplingMode);
  originX = origin[0];
  originY = origin[1];
  originZ = origin[2];
  resolutionX = spacing[0];
  resolutionY = spacing[1];
  resolutionZ = spacing[2];
  if (estimateOnly()) return;

  // Values in file order (x fastest); a point index past the last voxel falls on the last
  // voxel, so the last point of a line wins.
  std::vector<char> slice(px * py);
  for (std::uint64_t z = 0; z < pz; ++z) {
    in.read(slice.data(), static_cast<std::streamsize>(slice.size()));
    if (!in) fatal("VTK file " + fileName + " is truncated in slice z = " + std::to_string(z));
    const std::uint64_t vz = std::min(z, sz - 1);
    for (std::uint64_t y = 0; y < py; ++y) {
      const std::uint64_t vy = std::min(y, sy - 1);
      for (std::uint64_t x = 0; x < px; ++x) {
        const std::uint64_t vx = std::min(x, sx - 1);
        if (vx >= localXBegin && vx < localXEnd)
          at(vx, vy, vz) = static_cast<Colour>(slice[y * px + x]);
      }
    }
  }
  collectColors();
}

void ColorImage::readVti(const std::string& fileName, std::uint64_t targetSizeX,
                         const std::string& resamplingMode) {
  VtiReader reader(fileName);
  const std::array<std::int64_t, 6>& extent = reader.getWholeExtent();
  const std::uint64_t sx = reader.getSize(0), sy = reader.getSize(1), sz = reader.getSize(2);
  requireVoxels("vti", fileName, sx, sy, sz);
  std::string field;
  for (const char* name : {"Materials", "Material", "Substance"})
    if (reader.hasField(name)) {
      field = name;
      break;
    }
  if (field.empty()) fatal("vti-File " + fileName + " does not contain material information.");

  // Extents may start anywhere; the image counts its voxels from the lower corner and keeps
  // the lower indices.
  extentBeginX = static_cast<std::uint64_t>(extent[0]);
  extentBeginY = static_cast<std::uint64_t>(extent[2]);
  extentBeginZ = static_cast<std::uint64_t>(extent[4]);
  originX = reader.getOrigin()[0];
  originY = reader.getOrigin()[1];
  originZ = reader.getOrigin()[2];
  resolutionX = reader.getSpacing()[0];
  resolutionY = reader.getSpacing()[1];
  resolutionZ = reader.getSpacing()[2];
  for (const double length : reader.getSpacing())
    if (!isUsableVoxelLength(length))
      fatal("vti-File " + fileName + " has an invalid Spacing: " + std::to_string(length));

  std::cout << "Size of Geometry: " << gridText(sx, sy, sz) << "\n";
  setSize(sx, sy, sz, targetSizeX, resamplingMode);
  if (estimateOnly()) return;

  reader.setField(field);
  if (reader.getField().components != 1)
    fatal("vti-File " + fileName + ": its material array " + field + " has " +
          std::to_string(reader.getField().components) + " components instead of one");
  VoxelBox box;
  box.begin = {localXBegin, 0, 0};
  box.end = {localXEnd, sy, sz};
  reader.readFields(*this, box, {0});
  collectColors();
}

void ColorImage::writeLdt(const std::string& fileName) const {
  std::cout << "###EXPORT### " << fileName << "\n";
  const std::uint64_t limit = std::numeric_limits<std::uint32_t>::max();
  if (sizeX > limit || sizeY > limit || sizeZ > limit)
    fatal("Can not write " + fileName + ": a grid of " + gridText(sizeX, sizeY, sizeZ) +
          " does not fit the ldt header");
  // The slabs go to the file in rank order: rank 0 starts it with the header, every other
  // rank appends after receiving the running offset from the rank before it.
  MpiExchange mpi;
  const int rank = mpi.getRank();
  const int processes = mpi.getNumberOfProcesses();
  std::uint64_t offset = ldtHeaderBytes;
  File f;
  bool ok = true;
  if (rank == 0) {
    f.reset(std::fopen(fileName.c_str(), "wb"));
    if (!f) fatal("COULD NOT OPEN THE FILE!" + fileName);
    unsigned char header[ldtHeaderBytes];
    std::memcpy(header, "ldt1", 4);
    putLe32(header + 4, static_cast<std::uint32_t>(ldtHeaderBytes));
    putLe32(header + 8, static_cast<std::uint32_t>(sizeX));
    putLe32(header + 12, static_cast<std::uint32_t>(sizeY));
    putLe32(header + 16, static_cast<std::uint32_t>(sizeZ));
    ok = std::fwrite(header, 1, ldtHeaderBytes, f.get()) == ldtHeaderBytes;
  } else {
    mpi.receive(&offset, sizeof offset, rank - 1);
    f.reset(std::fopen(fileName.c_str(), "ab"));
    if (!f) fatal("Could not open the file " + fileName);
  }

  // Runs never cross a line end and never exceed 255.
  std::vector<unsigned char> pairs;
  pairs.reserve(2 * sizeZ);
  for (std::uint64_t x = localXBegin; x < localXEnd && ok; ++x) {
    for (std::uint64_t y = 0; y < sizeY; ++y) {
      pairs.clear();
      const Colour* line = voxelPointer(x, y, 0);
      unsigned count = 1;
      Colour colour = line[0];
      for (std::uint64_t z = 1; z < sizeZ; ++z) {
        if (line[z] == colour && count < 255) {
          ++count;
        } else {
          pairs.push_back(static_cast<unsigned char>(count));
          pairs.push_back(colour);
          count = 1;
          colour = line[z];
        }
      }
      pairs.push_back(static_cast<unsigned char>(count));
      pairs.push_back(colour);
      offset += pairs.size();
      ok = ok && std::fwrite(pairs.data(), 1, pairs.size(), f.get()) == pairs.size();
    }
  }
  ok = std::fclose(f.release()) == 0 && ok;
  if (!ok) fatal("Failed to write the file " + fileName);
  if (processes > 1) mpi.send(&offset, sizeof offset, (rank + 1) % processes);
  if (rank != 0) {
    std::cout << "Export o.k.\n";
    return;
  }
  if (processes > 1) mpi.receive(&offset, sizeof offset, processes - 1);
  if (offset > limit)
    fatal("Can not write " + fileName + ": its run data exceed the 4 GB of the ldt offset");

  f.reset(std::fopen(fileName.c_str(), "r+b"));
  if (!f) fatal("COULD NOT OPEN THE FILE!" + fileName);
  unsigned char offsetBytes[4];
  putLe32(offsetBytes, static_cast<std::uint32_t>(offset));
  ok = std::fseek(f.get(), 4, SEEK_SET) == 0 && std::fwrite(offsetBytes, 1, 4, f.get()) == 4;
  std::cout << "Offset " << offset << "\n";
  ok = ok && std::fseek(f.get(), 0, SEEK_END) == 0;
  ok = ok && std::fprintf(f.get(), "\nNX %d\nNY %d\nNZ %d\n%s\nVoxelLength %1.6e\n",
                          static_cast<int>(sizeX), static_cast<int>(sizeY),
                          static_cast<int>(sizeZ), description.c_str(), resolutionX) > 0;
  ok = std::fclose(f.release()) == 0 && ok;
  if (!ok) fatal("Failed to write the file " + fileName);
  std::cout << "Export o.k.\n";
}

void ColorImage::addMaterialsToFile(DataWriter& writer) const {
  const std::array<std::uint64_t, 3> sizes = {sizeX, sizeY, sizeZ};
  const std::array<double, 3> lengths = {resolutionX, resolutionY, resolutionZ};
  const std::array<double, 3> corner = {originX, originY, originZ};
  std::array<double, 3> spacing{}, origin{};
  for (int axis = 0; axis < 3; ++axis) {
    const std::uint64_t written = writer.gridSize(axis);
    const double ratio =
        written == 0 ? 1.0 : static_cast<double>(sizes[axis]) / static_cast<double>(written);
    spacing[axis] = lengths[axis] * ratio;
    origin[axis] = corner[axis] * ratio;
  }
  writer.setSpacing(spacing);
  writer.setOrigin(origin);
  writer.addImageField("Materials", *this, {0}, DataWriter::UInt8);
}

void ColorImage::writeRaw(const std::string& fileName) const {
  std::cout << "EXPORT DAT: " << fileName << "\n";
  File f(std::fopen(fileName.c_str(), "wb"));
  if (!f) fatal("COULD NOT OPEN THE FILE!" + fileName);
  const std::uint64_t nx = localXEnd - localXBegin;
  std::vector<unsigned char> slice(nx * sizeY);
  bool ok = true;
  for (std::uint64_t z = 0; z < sizeZ && ok; ++z) {
    for (std::uint64_t y = 0; y < sizeY; ++y)
      for (std::uint64_t x = 0; x < nx; ++x) slice[y * nx + x] = at(localXBegin + x, y, z);
    ok = std::fwrite(slice.data(), 1, slice.size(), f.get()) == slice.size();
  }
  ok = std::fclose(f.release()) == 0 && ok;
  if (!ok) fatal("Failed to write the file " + fileName);
}

void ColorImage::writeMetaImage(const std::string& fileName) const {
  // The data file sits beside the header; MetaImage names it relative to the header.
  const std::size_t slash = fileName.find_last_of("/\\");
  const std::size_t dot = fileName.find_last_of('.');
  const bool hasExtension = dot != std::string::npos && (slash == std::string::npos || dot > slash);
  const std::string dataFile = (hasExtension ? fileName.substr(0, dot) : fileName) + ".raw";
  const std::string dataName = slash == std::string::npos ? dataFile : dataFile.substr(slash + 1);

  std::cout << "EXPORT DAT: " << fileName << "\n";
  std::ofstream out(fileName);
  if (!out) fatal("COULD NOT OPEN THE FILE!" + fileName);
  out << "NDims = 3\n";
  out << "DimSize = " << sizeX << " " << sizeY << " " << sizeZ << "\n";
  out << "Offset = " << originX << " " << originY << " " << originZ << "\n";
  out << "ElementSize  = " << resolutionX << " " << resolutionY << " " << resolutionZ << "\n";
  out << "ElementSpacing  = " << resolutionX << " " << resolutionY << " " << resolutionZ << "\n";
  out << "ElementType = MET_UCHAR\n";
  out << "ElementByteOrderMSB = False\n";
  out << "ElementDataFile = " << dataName << "\n";
  out.close();
  if (!out) fatal("Failed to write the file " + fileName);
  writeRaw(dataFile);
}

}  // namespace gridmoor
