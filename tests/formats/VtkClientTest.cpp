// VTK's own readers (Debian's python3-vtk9) open the files our writers produce and must find
// the same grid and values; the expected values come from the pattern, not from our reader.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "FieldFileTestSupport.h"
#include "formats/VtiReader.h"
#include "formats/VtiWriter.h"
#include "formats/VtkWriter.h"

using namespace gridmoor;
using gridmoor::testing::patternImage;
using gridmoor::testing::patternValue;

namespace {

std::string number(double v) {
  char text[64];
  return std::string(text, std::to_chars(text, text + sizeof text, v).ptr);
}

// One expectation block of vtk_read_check.py.
class Expectation {
 public:
  Expectation(const std::string& file, std::array<std::uint64_t, 3> dims,
              std::array<double, 3> origin, std::array<double, 3> spacing, bool point)
      : dims_(dims) {
    text_ = "file " + file + "\ndims " + std::to_string(dims[0]) + " " + std::to_string(dims[1]) +
            " " + std::to_string(dims[2]) + "\norigin " + number(origin[0]) + " " +
            number(origin[1]) + " " + number(origin[2]) + "\nspacing " + number(spacing[0]) +
            " " + number(spacing[1]) + " " + number(spacing[2]) + "\nsection " +
            (point ? "point" : "cell") + "\n";
  }
  // Values of `value(c, x, y, z)` for the given components, x fastest as VTK stores them.
  template <class F>
  Expectation& field(const std::string& name, const std::vector<std::uint32_t>& components,
                     F value) {
    text_ += "field " + name + " " + std::to_string(components.size()) + " " +
             std::to_string(dims_[0] * dims_[1] * dims_[2]) + "\n";
    std::string line;
    for (std::uint64_t z = 0; z < dims_[2]; ++z)
      for (std::uint64_t y = 0; y < dims_[1]; ++y)
        for (std::uint64_t x = 0; x < dims_[0]; ++x)
          for (const std::uint32_t c : components) line += number(value(c, x, y, z)) + " ";
    text_ += line + "\n";
    return *this;
  }
  const std::string& text() const { return text_; }

 private:
  std::array<std::uint64_t, 3> dims_;
  std::string text_;
};

double asFloat(std::uint32_t c, std::uint64_t x, std::uint64_t y, std::uint64_t z) {
  return static_cast<float>(patternValue(c, x, y, z));
}

Image<Colour> markerImage(std::uint64_t nx, std::uint64_t ny, std::uint64_t nz) {
  Image<Colour> image(1, nx, ny, nz, "marker");
  for (std::uint64_t x = 0; x < nx; ++x)
    for (std::uint64_t y = 0; y < ny; ++y)
      for (std::uint64_t z = 0; z < nz; ++z) *image.voxelPointer(x, y, z) = (x + 7 * y + 31 * z) % 256;
  return image;
}

double markerValue(std::uint32_t, std::uint64_t x, std::uint64_t y, std::uint64_t z) {
  return static_cast<double>((x + 7 * y + 31 * z) % 256);
}

class VtkClient : public gridmoor::testing::ScratchDirectory {
 protected:
  // Runs the checker on all expectations; its report is shown when it fails.
  void expectVtkReadsTheSame(const std::vector<Expectation>& expectations) {
    std::string all;
    for (const Expectation& e : expectations) all += e.text();
    writeBytes(path("expected.txt"), all);
    const std::string script = std::string(GRIDMOOR_SOURCE_DIR) + "/tests/formats/vtk_read_check.py";
    const std::string command = "/usr/bin/python3 " + script + " " + path("expected.txt") +
                                " > " + path("report.txt") + " 2>&1";
    const int status = std::system(command.c_str());
    const std::string report = readBytes(path("report.txt"));
    ASSERT_TRUE(WIFEXITED(status)) << report;
    EXPECT_EQ(WEXITSTATUS(status), 0) << report;
    EXPECT_EQ(report.find("MISMATCH"), std::string::npos) << report;
    EXPECT_NE(report.find("OK"), std::string::npos) << report;
  }

  // Has VTK's XML writer produce the sample image of vtk_write_sample.py.
  void writeWithVtk(const std::string& file, const std::string& options) {
    const std::string script =
        std::string(GRIDMOOR_SOURCE_DIR) + "/tests/formats/vtk_write_sample.py";
    const std::string command = "/usr/bin/python3 " + script + " " + file + " " + options +
                                " > " + path("report.txt") + " 2>&1";
    const int status = std::system(command.c_str());
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << readBytes(path("report.txt"));
  }
};

TEST_F(VtkClient, ReadsVtiFilesRawCompressedAndBigEndian) {
  // 20 x 18 x 16 voxels of 6 floats: 138240 bytes, five compressed blocks.
  const std::array<double, 3> origin{0.5, -1.0, 2.25}, spacing{0.1, 0.2, 0.3};
  const Image<double> stress = patternImage(6, 20, 18, 16);
  const Image<Colour> marker = markerImage(20, 18, 16);
  std::vector<Expectation> expected;
  for (const bool compressed : {false, true})
    for (const bool big : {false, true}) {
      const std::string name = path(std::string(compressed ? "packed" : "raw") + (big ? "_be" : "_le"));
      VtiWriter writer(name, {0, 20, 0, 18, 0, 16}, spacing, origin, compressed);
      writer.setBigEndian(big);
      writer.addImageField("stress", stress, {0, 1, 2, 3, 4, 5}, DataWriter::Float, "MPa");
      writer.addImageField("marker", marker, {0}, DataWriter::UInt8);
      // An integer field from the same doubles, components picked out of order.
      writer.addImageField("picked", stress, {4, 1}, DataWriter::Int32);
      writer.write();
      expected.push_back(Expectation(name + ".vti", {20, 18, 16}, origin, spacing, false)
                             .field("stress", {0, 1, 2, 3, 4, 5}, asFloat)
                             .field("marker", {0}, markerValue)
                             .field("picked", {4, 1}, [](std::uint32_t c, auto x, auto y, auto z) {
                               return static_cast<double>(static_cast<std::int32_t>(patternValue(c, x, y, z)));
                             }));
    }
  expectVtkReadsTheSame(expected);
}

TEST_F(VtkClient, ReadsPvtiPiecesAndPointData) {
  const std::array<double, 3> origin{0, 0, 0}, spacing{1e-6, 2.5e-6, 1e-6};
  const Image<double> strain = patternImage(3, 7, 5, 4);
  std::vector<Expectation> expected;
  for (const bool compressed : {false, true}) {
    const std::string name = path(compressed ? "pieces_z.pvti" : "pieces.pvti");
    // Extents need not start at 0.
    VtiWriter writer(name, {3, 10, -2, 3, 0, 4}, spacing, origin, compressed, 3);
    writer.addImageField("strain", strain, {0, 1, 2}, DataWriter::Float);
    writer.write();
    expected.push_back(
        Expectation(name, {7, 5, 4}, origin, spacing, false).field("strain", {0, 1, 2}, asFloat));
  }
  // Point data: 7 x 5 x 4 points, extent 0..6 0..4 0..3, in two pieces.
  VtiWriter points(path("points.pvti"), {0, 6, 0, 4, 0, 3}, spacing, origin, true, 2);
  points.addImageField("strain", strain, {2, 0}, DataWriter::Float, "", "", true);
  points.write();
  expected.push_back(Expectation(path("points.pvti"), {7, 5, 4}, origin, spacing, true)
                         .field("strain", {2, 0}, asFloat));
  expectVtkReadsTheSame(expected);
}

TEST_F(VtkClient, ReadsLegacyVtkFiles) {
  const std::array<double, 3> origin{1.5, 0, -0.125}, spacing{0.5, 0.25, 2};
  const Image<double> field = patternImage(9, 6, 5, 4);
  const Image<Colour> marker = markerImage(6, 5, 4);
  VtkWriter writer(path("legacy.vtk"), {0, 6, 0, 5, 0, 4}, spacing, origin);
  writer.addImageField("scalar", field, {8}, DataWriter::Float);
  writer.addImageField("vector", field, {0, 1, 2}, DataWriter::Float);
  writer.addImageField("tensor", field, {0, 1, 2, 3, 4, 5, 6, 7, 8}, DataWriter::Float);
  writer.addImageField("Materials", marker, {0}, DataWriter::UInt8);
  writer.addImageField("count", field, {3}, DataWriter::Int32);
  writer.write();
  expectVtkReadsTheSame({Expectation(path("legacy.vtk"), {6, 5, 4}, origin, spacing, false)
                             .field("scalar", {8}, asFloat)
                             .field("vector", {0, 1, 2}, asFloat)
                             .field("tensor", {0, 1, 2, 3, 4, 5, 6, 7, 8}, asFloat)
                             .field("Materials", {0}, markerValue)
                             .field("count", {3}, [](std::uint32_t c, auto x, auto y, auto z) {
                               return static_cast<double>(static_cast<std::int32_t>(patternValue(c, x, y, z)));
                             })});
}

TEST_F(VtkClient, FilesWrittenByVtkReadBack) {
  // VTK's own files differ from ours: version 1.0, 64-bit size words, a line break before
  // the "_", empty PointData, extra attributes and elements around the arrays.
  for (const std::string options : {"none UInt32 little", "zlib UInt64 big", "zlib UInt32 little",
                                    "none UInt64 big"}) {
    SCOPED_TRACE(options);
    const std::string file = path("vtk.vti");
    writeWithVtk(file, options);
    VtiReader reader(file);
    EXPECT_EQ(reader.getWholeExtent()[0], 1);
    EXPECT_EQ(reader.getSize(0), 5u);
    EXPECT_EQ(reader.getSpacing()[1], 2.0);
    EXPECT_EQ(reader.getOrigin()[0], 0.5);
    VoxelBox box;
    box.end = {5, 4, 3};
    Image<double> strain(3, 5, 4, 3, "strain");
    reader.setField("strain", "Float32", 3);
    reader.readFields(strain, box, {});
    Image<int> phase(1, 5, 4, 3, "phase");
    reader.setField("phase", "Int16", 1);
    reader.readFields(phase, box, {});
    for (std::uint64_t x = 0; x < 5; ++x)
      for (std::uint64_t y = 0; y < 4; ++y)
        for (std::uint64_t z = 0; z < 3; ++z) {
          for (std::uint64_t c = 0; c < 3; ++c)
            ASSERT_EQ(*strain.elementPointer(c, x, y, z), asFloat(c, x, y, z));
          ASSERT_EQ(*phase.voxelPointer(x, y, z), int(x) - 2 * int(y) + int(z));
        }
  }
}

}  // namespace
