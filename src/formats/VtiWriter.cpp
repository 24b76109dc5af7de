#include "formats/VtiWriter.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <fstream>
#include <memory>

#include "common/Fatal.h"
#include "formats/ZStream.h"
#include "voxel/MpiExchange.h"
#include "voxel/StaticPartition.h"

namespace gridmoor {

namespace {

bool endsWith(const std::string& text, const std::string& suffix) {
  return text.size() >= suffix.size() &&
         text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0;
}

std::string stripSuffix(const std::string& name) {
  for (const char* suffix : {".pvti", ".vti"})
    if (endsWith(name, suffix)) return name.substr(0, name.size() - std::string(suffix).size());
  return name;
}

// The piece file's name as the index refers to it: relative to the index's directory,
// which is the pieces' directory too.
std::string leafName(const std::string& path) {
  const std::size_t slash = path.find_last_of("/\\");
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

// Numbers separated by blanks. Appending piece by piece also keeps g++ 12 from a false
// -Wrestrict warning on "literal + temporary string".
std::string joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) {
    if (!text.empty()) text += ' ';
    text += word;
  }
  return text;
}

// One open piece file: either a plain stream or the compressing one, behind one sink.
struct PieceOutput {
  std::ofstream plain;
  std::unique_ptr<zstream> packed;
  std::unique_ptr<AbstractFile> sink;

  PieceOutput(const std::string& fileName, bool compress) {
    if (compress) {
      packed = std::make_unique<zstream>(fileName);
      sink = std::make_unique<DiskFile<zstream>>(packed.get());
    } else {
      plain.open(fileName, std::ios::binary | std::ios::trunc);
      sink = std::make_unique<DiskFile<std::ofstream>>(&plain);
    }
  }
  void text(const std::string& s) { sink->write(s.data(), static_cast<std::int64_t>(s.size())); }
  bool close() {
    if (packed) return packed->close();
    plain.close();
    return !plain.fail();
  }
};

}  // namespace

VtiWriter::VtiWriter(std::string name, const std::array<std::int64_t, 6>& extent,
                     const std::array<double, 3>& s, const std::array<double, 3>& o,
                     bool compress, std::uint32_t pieces)
    : DataWriter(std::move(name), extent, s, o),
      baseName(stripSuffix(fileName)),
      piecesPerProcess(std::max<std::uint32_t>(1, pieces)) {
  compressed = compress;
}

std::vector<VtiWriter::Piece> VtiWriter::allPieces() const {
  const MpiExchange mpi;
  const std::uint64_t planes = gridSize(0);
  std::vector<VoxelBox> boxes;
  for (int rank = 0; rank < mpi.getNumberOfProcesses(); ++rank) {
    std::uint64_t begin, end;
    mpi.getDataRange(planes, begin, end, rank);
    const std::uint64_t count = std::min<std::uint64_t>(piecesPerProcess, end - begin);
    for (std::uint64_t i = 0; i < count; ++i) {
      const IndexRange r = staticPartition(end - begin, i, count);
      VoxelBox box;
      box.begin = {begin + r.begin, 0, 0};
      box.end = {begin + r.end, gridSize(1), gridSize(2)};
      // Point pieces share their boundary plane with the next piece: VTK fills the cells
      // between two pieces only from a piece that holds both of their points.
      if (isPointData() && box.end[0] < planes) ++box.end[0];
      boxes.push_back(box);
    }
  }
  std::vector<Piece> pieces;
  for (std::size_t i = 0; i < boxes.size(); ++i)
    pieces.push_back({boxes[i], boxes.size() == 1
                                    ? baseName + ".vti"
                                    : baseName + "_" + std::to_string(i) + ".vti"});
  return pieces;
}

std::string VtiWriter::byteOrderText() const {
  return useBigEndian ? "BigEndian" : "LittleEndian";
}

// A box of voxels in VTK's point indices: cells [b, e) span the points b..e, points [b, e)
// are the points b..e-1.
std::string VtiWriter::extentText(const VoxelBox& box) const {
  std::vector<std::string> words;
  for (int axis = 0; axis < 3; ++axis) {
    const std::int64_t lower = gridExtent[2 * axis];
    const std::int64_t b = lower + static_cast<std::int64_t>(box.begin[axis]);
    const std::int64_t e =
        lower + static_cast<std::int64_t>(box.end[axis]) - (isPointData() ? 1 : 0);
    words.push_back(std::to_string(b));
    words.push_back(std::to_string(e));
  }
  return joined(words);
}

std::string VtiWriter::imageAttributes() const {
  std::vector<std::string> extent, o, s;
  for (const std::int64_t e : gridExtent) extent.push_back(std::to_string(e));
  for (int axis = 0; axis < 3; ++axis) {
    o.push_back(formatNumber(origin[axis]));
    s.push_back(formatNumber(spacing[axis]));
  }
  return "WholeExtent=\"" + joined(extent) + "\" Origin=\"" + joined(o) + "\" Spacing=\"" +
         joined(s) + "\"";
}

std::string VtiWriter::pieceHeader(const Piece& piece) const {
  const std::string section = isPointData() ? "PointData" : "CellData";
  std::string h = "<?xml version=\"1.0\"?>\n";
  h += "<VTKFile type=\"ImageData\" version=\"0.1\" byte_order=\"" + byteOrderText() + "\"";
  h += compressed ? " compressor=\"vtkZLibDataCompressor\">" : ">";
  h += "\n";
  h += "  <ImageData " + imageAttributes() + ">\n";
  h += "    <Piece Extent=\"" + extentText(piece.box) + "\">\n";
  h += "      <" + section + ">\n";
  // The raw offsets: each array is its 4-byte size and its bytes. They are 32-bit numbers
  // like the size words of the 0.1 format; the compressing stream replaces them.
  std::uint32_t offset = 0;
  for (const Field& field : fields) {
    h += "        <DataArray type=\"" + vtiTypeName(field.dataType) + "\" Name=\"" + field.name +
         "\" NumberOfComponents=\"" + std::to_string(field.components.size()) +
         "\" format=\"appended\" offset=\"" + std::to_string(offset) + "\"/>\n";
    offset += 4 + static_cast<std::uint32_t>(fieldBytes(field, piece.box));
  }
  h += "      </" + section + ">\n";
  h += "    </Piece>\n";
  h += "  </ImageData>\n";
  h += "  <AppendedData encoding=\"raw\">_";
  return h;
}

std::string VtiWriter::indexText(const std::vector<Piece>& pieces) const {
  const std::string section = isPointData() ? "PPointData" : "PCellData";
  std::string t = "<?xml version=\"1.0\"?>\n";
  t += "<VTKFile type=\"PImageData\" version=\"0.1\" byte_order=\"" + byteOrderText() + "\"";
  t += compressed ? " compressor=\"vtkZLibDataCompressor\">" : ">";
  t += "\n";
  t += "  <PImageData " + imageAttributes() + ">\n";
  t += "    <" + section + ">\n";
  for (const Field& field : fields)
    t += "      <PDataArray type=\"" + vtiTypeName(field.dataType) + "\" Name=\"" + field.name +
         "\" NumberOfComponents=\"" + std::to_string(field.components.size()) + "\" />\n";
  t += "    </" + section + ">\n";
  for (const Piece& piece : pieces)
    t += "    <Piece Extent=\"" + extentText(piece.box) + "\" Source=\"" +
         leafName(piece.fileName) + "\"/>\n";
  t += "  </PImageData>\n</VTKFile>\n";
  return t;
}

void VtiWriter::write() {
  warnIfTooLarge(gridSize(0), gridSize(1), gridSize(2));
  const MpiExchange mpi;
  const std::vector<Piece> pieces = allPieces();
  // This process writes the pieces of its own x range.
  std::uint64_t begin, end;
  mpi.getDataRange(gridSize(0), begin, end);
  std::vector<Piece> own;
  for (const Piece& piece : pieces)
    if (piece.box.begin[0] >= begin && piece.box.begin[0] < end) own.push_back(piece);

  // All pieces are open at once so that each field's hooks run once, not once per piece.
  std::vector<std::unique_ptr<PieceOutput>> outputs;
  for (const Piece& piece : own) {
    outputs.push_back(std::make_unique<PieceOutput>(piece.fileName, compressed));
    outputs.back()->text(pieceHeader(piece));
  }
  const bool swap = useBigEndian != (std::endian::native == std::endian::big);
  for (const Field& field : fields) {
    if (field.beforeWrite) field.beforeWrite();
    for (std::size_t p = 0; p < own.size(); ++p) {
      std::uint32_t size = static_cast<std::uint32_t>(fieldBytes(field, own[p].box));
      char sizeBytes[4];
      std::memcpy(sizeBytes, &size, 4);
      if (swap) std::reverse(sizeBytes, sizeBytes + 4);
      outputs[p]->sink->write(sizeBytes, 4);
      writeFieldValues(field, own[p].box, *outputs[p]->sink, useBigEndian);
    }
    if (field.afterWrite) field.afterWrite();
  }
  bool ok = true;
  for (auto& output : outputs) {
    output->text("\n  </AppendedData>\n</VTKFile>\n");
    ok = output->close() && ok;
  }
  if (pieces.size() > 1 && mpi.getRank() == 0) {
    std::ofstream index(indexFileName(), std::ios::binary | std::ios::trunc);
    const std::string text = indexText(pieces);
    index.write(text.data(), static_cast<std::streamsize>(text.size()));
    index.close();
    ok = ok && !index.fail();
  }
  if (!ok)
    fatal("Error while writing the VTI-file " + fileName + " (or one of the child files.");
}

}  // namespace gridmoor
