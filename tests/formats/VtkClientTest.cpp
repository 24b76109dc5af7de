// VTK's own readers (Debian's python3-vtk9) must find in our files the grid and values that
// the pattern gives, and our reader must read VTK's own files.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <charconv>
#include <cstdlib>
#include <fstream>
#include <string>
#include <tuple>
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
  return std::string(text, std::to_chars(text, text + sizeof text, v).ptr) + " ";
}

// Values as the writers narrow them: floats, or integers for the integer kinds.
double written(int kind, std::uint32_t c, std::uint64_t x, std::uint64_t y, std::uint64_t z) {
  if (kind == DataWriter::UInt8) return (x + 7 * y + 31 * z + c) % 256;
  if (kind == DataWriter::Int32) return static_cast<std::int32_t>(patternValue(c, x, y, z));
  return static_cast<float>(patternValue(c, x, y, z));
}

class VtkClient : public gridmoor::testing::ScratchDirectory {
 protected:
  // Registers the pattern's components with the writer and the expectation of the checker.
  void addField(DataWriter& writer, const std::string& name, int kind,
                const std::vector<std::uint32_t>& components, bool point = false) {
    if (kind == DataWriter::UInt8) writer.addImageField(name, marker_, components, kind, "", "", point);
    else writer.addImageField(name, pattern_, components, kind, "", "", point);
    expected_ += "field " + name + " " + std::to_string(components.size()) + "\n";
    for (std::uint64_t z = 0; z < voxels_[2]; ++z)
      for (std::uint64_t y = 0; y < voxels_[1]; ++y)
        for (std::uint64_t x = 0; x < voxels_[0]; ++x)
          for (const std::uint32_t c : components) expected_ += number(written(kind, c, x, y, z));
    expected_ += "\n";
  }
  void expectFile(const std::string& file, bool point, const std::array<double, 6>& geometry) {
    expected_ += "file " + file + (point ? " point " : " cell ");
    for (const std::uint64_t n : voxels_) expected_ += std::to_string(n) + " ";
    for (const double g : geometry) expected_ += number(g);
    expected_ += "\n";
  }
  std::string runPython(const std::string& script, const std::string& arguments) {
    const std::string command = "/usr/bin/python3 " + std::string(GRIDMOOR_SOURCE_DIR) +
                                "/tests/formats/" + script + " " + arguments + " > " +
                                path("report.txt") + " 2>&1";
    const int status = std::system(command.c_str());
    const std::string report = readBytes(path("report.txt"));
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << report;
    return report;
  }

  std::array<std::uint64_t, 3> voxels_{7, 5, 4};
  Image<double> pattern_ = patternImage(9, 7, 5, 4);
  Image<Colour> marker_{1, 7, 5, 4, "marker"};
  std::string expected_;
};

TEST_F(VtkClient, VtkReadsOurVtiPvtiAndLegacyFiles) {
  for (std::uint64_t x = 0; x < 7; ++x)
    for (std::uint64_t y = 0; y < 5; ++y)
      for (std::uint64_t z = 0; z < 4; ++z) *marker_.voxelPointer(x, y, z) = (x + 7 * y + 31 * z) % 256;
  const std::array<double, 6> geometry{0.5, -1, 2.25, 0.1, 1e-6, 0.3};
  const std::array<double, 3> origin{0.5, -1, 2.25}, spacing{0.1, 1e-6, 0.3};
  // Plain and compressed, both byte orders, one piece and three, each pair of them once
  // (extents need not start at 0).
  const std::tuple<bool, bool, std::uint32_t> kinds[] = {
      {false, false, 1}, {false, true, 3}, {true, false, 3}, {true, true, 1}};
  for (const auto& [compressed, big, pieces] : kinds) {
    const std::string name = path("f" + std::to_string(compressed) + std::to_string(big) +
                                  std::to_string(pieces));
    VtiWriter writer(name, {3, 10, -2, 3, 0, 4}, spacing, origin, compressed, pieces);
    writer.setBigEndian(big);
    expectFile(pieces > 1 ? writer.indexFileName() : name + ".vti", false, geometry);
    addField(writer, "stress", DataWriter::Float, {0, 1, 2, 3, 4, 5});
    addField(writer, "Materials", DataWriter::UInt8, {0});
    addField(writer, "picked", DataWriter::Int32, {4, 1});
    writer.write();
  }
  // Point data in two pieces: 7 x 5 x 4 points.
  VtiWriter points(path("points.pvti"), {0, 6, 0, 4, 0, 3}, spacing, origin, true, 2);
  expectFile(path("points.pvti"), true, geometry);
  addField(points, "strain", DataWriter::Float, {2, 0}, true);
  points.write();
  // Legacy: scalars, vectors and tensors; float origin and spacing.
  VtkWriter legacy(path("legacy.vtk"), {0, 7, 0, 5, 0, 4}, {0.5, 0.25, 2}, {1.5, 0, -0.125});
  expectFile(path("legacy.vtk"), false, {1.5, 0, -0.125, 0.5, 0.25, 2});
  addField(legacy, "scalar", DataWriter::Float, {8});
  addField(legacy, "vector", DataWriter::Float, {0, 1, 2});
  addField(legacy, "tensor", DataWriter::Float, {0, 1, 2, 3, 4, 5, 6, 7, 8});
  addField(legacy, "Materials", DataWriter::UInt8, {0});
  addField(legacy, "count", DataWriter::Int32, {3});
  legacy.write();

  writeBytes(path("expected.txt"), expected_);
  const std::string report = runPython("vtk_read_check.py", path("expected.txt"));
  EXPECT_EQ(report.find("MISMATCH"), std::string::npos) << report;
  EXPECT_NE(report.find("OK " + path("legacy.vtk")), std::string::npos) << report;
}

// The field files of runs of the binary: a homogeneous cell (two colours of one law) under a
// strain, on the eight-point "Q1FE" scheme, whose colour source is a .vti file with an origin
// and an extent that starts away from 0. VTK must find the colour source's grid, the colours,
// the strain and C strain as each voxel's mean, the full strain as six Voigt values in the
// XML file and as nine in the legacy one, and one scalar array per listed stress component.
// The writers' other kinds are the test above.
TEST_F(VtkClient, VtkReadsTheFieldFilesOfRuns) {
  const std::array<double, 3> origin{0.5, -1, 2.25};
  VtiWriter geometry(path("geometry.vti"), {2, 6, 1, 4, 0, 3}, {1, 1, 1}, origin);
  voxels_ = {4, 3, 3};
  Image<Colour> colours(1, 4, 3, 3, "colours");
  for (std::uint64_t x = 0; x < 4; ++x)
    for (std::uint64_t y = 0; y < 3; ++y)
      for (std::uint64_t z = 0; z < 3; ++z) *colours.voxelPointer(x, y, z) = 1 + (x + y + z) % 2;
  geometry.addImageField("Materials", colours, {0}, DataWriter::UInt8);
  geometry.write();
  // The law of both colours in vtk_run.xml, and the run's strain.
  const double youngs = 100.0, poisson = 0.25;
  const double lambda = youngs * poisson / ((1 + poisson) * (1 - 2 * poisson));
  const double mu = youngs / (2 * (1 + poisson));
  const double e[6] = {0.01, -0.002, 0.003, 0.004, -0.001, 0.002};
  double s[6];
  for (int k = 0; k < 6; ++k) s[k] = k < 3 ? lambda * (e[0] + e[1] + e[2]) + 2 * mu * e[k] : mu * e[k];
  auto expectValues = [&](const std::string& name, const std::vector<int>& slots,
                          const double* values, const char* tolerance) {
    expected_ += "field " + name + " " + std::to_string(slots.size()) + " " + tolerance + "\n";
    for (std::uint64_t i = 0; i < 36; ++i)
      for (const int slot : slots) expected_ += number(static_cast<float>(values[slot]));
    expected_ += "\n";
  };
  const std::array<double, 6> grid{0.5, -1, 2.25, 0.5, 0.25, 2};
  const std::vector<int> voigt{0, 1, 2, 3, 4, 5}, full{0, 5, 4, 5, 1, 3, 4, 3, 2};
  for (const std::string file : {"packed.vti", "plain.vtk"}) {
    SCOPED_TRACE(file);
    const bool legacy = file.ends_with(".vtk");
    std::string parameters = readBytes(std::string(GRIDMOOR_SOURCE_DIR) + "/tests/formats/vtk_run.xml");
    parameters.replace(parameters.find(">FILE<") + 1, 4, file);
    parameters.replace(parameters.find(">COMPRESS<") + 1, 8, legacy ? "0" : "1");
    writeBytes(path("run.xml"), parameters);
    const std::string command = std::string(GRIDMOOR_BINARY) + " " + path("run.xml") + " > " +
                                path("run.log") + " 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0) << readBytes(path("run.log"));
    expectFile(path(file), false, grid);
    expected_ += "field Materials 1\n";
    for (std::uint64_t z = 0; z < 3; ++z)
      for (std::uint64_t y = 0; y < 3; ++y)
        for (std::uint64_t x = 0; x < 4; ++x) expected_ += number(1 + (x + y + z) % 2);
    expected_ += "\n";
    expectValues("Strain", legacy ? full : voigt, e, "1e-6");
    expectValues("Stress_XX", {0}, s, "1e-6");
    expectValues("Stress_YZ", {3}, s, "1e-6");
  }
  writeBytes(path("expected.txt"), expected_);
  const std::string report = runPython("vtk_read_check.py", path("expected.txt"));
  EXPECT_EQ(report.find("MISMATCH"), std::string::npos) << report;
  EXPECT_NE(report.find("OK " + path("plain.vtk")), std::string::npos) << report;
}

TEST_F(VtkClient, OurReaderReadsVtkFiles) {
  // VTK's files differ from ours: version 1.0, 64-bit size words, a line break before the
  // "_", an empty PointData, extra attributes and elements around the arrays.
  for (const std::string options : {"none UInt32 little", "zlib UInt64 big"}) {
    SCOPED_TRACE(options);
    runPython("vtk_write_sample.py", path("vtk.vti") + " " + options);
    VtiReader reader(path("vtk.vti"));
    EXPECT_EQ(reader.getWholeExtent()[0], 1);
    EXPECT_EQ(reader.getSize(0), 5u);
    EXPECT_EQ(reader.getSpacing()[1], 2.0);
    VoxelBox box;
    box.end = {5, 4, 3};
    Image<double> strain(3, 5, 4, 3, "strain");
    reader.setField("strain", "Float32", 3);
    reader.readFields(strain, box, {});
    Image<int> phase(1, 5, 4, 3, "phase");
    reader.setField("phase", "Int16");
    reader.readFields(phase, box, {});
    for (std::uint64_t x = 0; x < 5; ++x)
      for (std::uint64_t y = 0; y < 4; ++y)
        for (std::uint64_t z = 0; z < 3; ++z) {
          for (std::uint32_t c = 0; c < 3; ++c)
            ASSERT_EQ(*strain.elementPointer(c, x, y, z), written(DataWriter::Float, c, x, y, z));
          ASSERT_EQ(*phase.voxelPointer(x, y, z), int(x) - 2 * int(y) + int(z));
        }
  }
}

}  // namespace
