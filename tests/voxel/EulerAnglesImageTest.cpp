#include "voxel/EulerAnglesImage.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <map>
#include <random>
#include <vector>

#include "voxel/EulerConversion.h"

namespace gridmoor {
namespace {

std::string tempDir() { return testing::TempDir(); }

// A .lof file made by hand: "key value" lines, HeaderLength in a 9-character field, the
// blank line, then the values with x fastest and z slowest.
struct LofFile {
  std::map<std::string, std::string> keys{{"Nx", "3"},
                                         {"Ny", "2"},
                                         {"Nz", "2"},
                                         {"EntriesOfImages", "3"},
                                         {"Image1:Types", "double,double,double"},
                                         {"Image1:Format", "Eul_AngXZX"},
                                         {"Image1:ReferenceSystem", "XYZ"},
                                         {"Image1:ObjectSystem", "TP1P2"}};
  std::string data;
  long cutData = 0;  // bytes dropped from the end

  template <class S>
  void add(S value) {
    data.append(reinterpret_cast<const char*>(&value), sizeof value);
  }

  std::string write(const std::string& name) const {
    std::string header = "LufVersion lof1\nHeaderLength          \n";
    for (const auto& [key, value] : keys) header += key + " " + value + "\n";
    header += "\n";
    std::string length = std::to_string(header.size());
    length.resize(9, ' ');
    header.replace(header.find("HeaderLength ") + 13, 9, length);
    const std::string path = tempDir() + "gridmoor_lof_" + name;
    std::ofstream(path, std::ios::binary)
        << header << data.substr(0, data.size() - static_cast<std::size_t>(cutData));
    return path;
  }
};

double label(std::uint64_t x, std::uint64_t y, std::uint64_t z, int c) {
  return 0.001 * static_cast<double>(c + 10 * x + 100 * y + 1000 * z);
}

LofFile labelledXZX(std::uint64_t nx, std::uint64_t ny, std::uint64_t nz) {
  LofFile lof;
  lof.keys["Nx"] = std::to_string(nx);
  lof.keys["Ny"] = std::to_string(ny);
  lof.keys["Nz"] = std::to_string(nz);
  for (std::uint64_t z = 0; z < nz; ++z)
    for (std::uint64_t y = 0; y < ny; ++y)
      for (std::uint64_t x = 0; x < nx; ++x)
        for (int c = 0; c < 3; ++c) lof.add(label(x, y, z, c));
  return lof;
}

TEST(EulerAnglesImage, ReadsXZXInFileOrderIntoMemoryOrder) {
  const std::string file = labelledXZX(3, 2, 4).write("xzx.lof");
  EulerAnglesImage angles("EulerAnglesImage");
  angles.readLof(file, 3, false);
  ASSERT_EQ(angles.getNumberOfComponents(), 3u);
  EXPECT_EQ(angles.sizeXGlobal, 3u);
  EXPECT_EQ(angles.getSizeY(), 2u);
  EXPECT_EQ(angles.getSizeZ(), 4u);
  for (std::uint64_t x = 0; x < 3; ++x)
    for (std::uint64_t y = 0; y < 2; ++y)
      for (std::uint64_t z = 0; z < 4; ++z)
        for (int c = 0; c < 3; ++c) ASSERT_EQ(*angles.elementPointer(c, x, y, z), label(x, y, z, c));

  // Reduced angles: two components, the third value of each voxel is dropped.
  EulerAnglesImage reduced("reduced");
  reduced.readLof(file, 0, true);
  ASSERT_EQ(reduced.getNumberOfComponents(), 2u);
  ASSERT_EQ(reduced.size(), 2u * 3 * 2 * 4);
  EXPECT_EQ(*reduced.elementPointer(0, 2, 1, 3), label(2, 1, 3, 0));
  EXPECT_EQ(*reduced.elementPointer(1, 2, 1, 3), label(2, 1, 3, 1));
  EXPECT_EQ(*reduced.elementPointer(0, 1, 0, 0), label(1, 0, 0, 0));
}

TEST(EulerAnglesImage, ConvertsZXZAndReadsAllElementSizes) {
  std::mt19937 random(3);
  std::uniform_real_distribution<double> angle(-3.0, 3.0);
  LofFile zxz;
  zxz.keys["Nx"] = "2";
  zxz.keys["Ny"] = "1";
  zxz.keys["Nz"] = "1";
  zxz.keys["EntriesOfImages"] = "3";
  zxz.keys["Image1:Types"] = "float,float,float";
  zxz.keys["Image1:Format"] = "Eul_AngZXZ";
  std::vector<float> values;
  for (int i = 0; i < 6; ++i) values.push_back(static_cast<float>(angle(random)));
  for (float v : values) zxz.add(v);
  EulerAnglesImage angles("angles");
  angles.readLof(zxz.write("zxz.lof"), 2, false);
  for (std::uint64_t x = 0; x < 2; ++x) {
    const EulerTriple expected = convertZXZToXZX({values[3 * x], values[3 * x + 1], values[3 * x + 2]});
    for (int c = 0; c < 3; ++c) EXPECT_EQ(*angles.elementPointer(c, x, 0, 0), expected[c]);
  }

  // Quadruple precision, and an EntriesOfImages of 4 (only three values per voxel are read).
  LofFile quad;
  quad.keys["Nx"] = "1";
  quad.keys["Ny"] = "1";
  quad.keys["Nz"] = "2";
  quad.keys["EntriesOfImages"] = "4";
  quad.keys["Image1:Types"] = "quadruple,quadruple,quadruple,quadruple";
  for (int i = 0; i < 6; ++i) quad.add(static_cast<__float128>(0.25 * i - 0.5));
  EulerAnglesImage q("q");
  q.readLof(quad.write("quad.lof"), 1, false);
  EXPECT_EQ(*q.elementPointer(2, 0, 0, 0), 0.0);
  EXPECT_EQ(*q.elementPointer(0, 0, 0, 1), 0.25);
  EXPECT_EQ(*q.elementPointer(2, 0, 0, 1), 0.75);
}

TEST(EulerAnglesImage, ResamplingTakesTheLargestOverlapInTheBox) {
  const std::string file = labelledXZX(3, 4, 2).write("resample.lof");
  EulerAnglesImage angles("EulerAnglesImage");
  angles.loadOrientation(file, "", 2, false);
  const double* before = angles.data();
  angles.resampleTo(3, 4, 2);
  EXPECT_EQ(angles.data(), before) << "an equal grid leaves the image as read";

  // x: 3 -> 2 (target 0 covers 0 and half of 1, target 1 half of 1 and 2);
  // y: 4 -> 2 (ties between two whole voxels go to the first); z: 2 -> 3 (target 1 covers
  // a third of each, the first wins).
  angles.resampleTo(2, 2, 3);
  EXPECT_EQ(angles.getName(), "EulerAnglesImage");
  EXPECT_EQ(angles.sizeXGlobal, 2u);
  ASSERT_EQ(angles.size(), 3u * 2 * 2 * 3);
  const std::uint64_t fromX[2] = {0, 2}, fromY[2] = {0, 2}, fromZ[3] = {0, 0, 1};
  for (std::uint64_t x = 0; x < 2; ++x)
    for (std::uint64_t y = 0; y < 2; ++y)
      for (std::uint64_t z = 0; z < 3; ++z)
        for (int c = 0; c < 3; ++c)
          ASSERT_EQ(*angles.elementPointer(c, x, y, z), label(fromX[x], fromY[y], fromZ[z], c))
              << x << y << z << c;
}

TEST(EulerAnglesImage, LoadsRelativeToTheRunDirectoryAndEstimatesWithoutReading) {
  labelledXZX(2, 2, 2).write("relative.lof");
  EulerAnglesImage angles("EulerAnglesImage");
  angles.loadOrientationOnGrid("gridmoor_lof_relative.lof", tempDir(), 4, 2, 2, false);
  EXPECT_EQ(angles.sizeXGlobal, 4u);
  EXPECT_EQ(*angles.elementPointer(1, 3, 1, 0), label(1, 1, 0, 1));

  const std::uint64_t before = allocatedBytes;
  memoryEstimateMode = true;
  EulerAnglesImage estimate("EulerAnglesImage");
  estimate.loadOrientationOnGrid("no_such_file.lof", tempDir(), 10, 20, 30, true);
  EXPECT_EQ(estimate.size(), 0u);
  EXPECT_EQ(allocatedBytes - before, 2u * 10 * 20 * 30 * 8);
  // Built in estimate mode, the image counts the file's grid and its resampling but stores
  // nothing and writes nowhere.
  EulerAnglesImage counted("EulerAnglesImage");
  memoryEstimateMode = false;
  counted.loadOrientation("gridmoor_lof_relative.lof", tempDir(), 4, false);
  counted.resampleTo(4, 2, 2);
  EXPECT_EQ(counted.size(), 0u);
  EXPECT_EQ(counted.sizeXGlobal, 4u);
  EXPECT_EQ(allocatedBytes - before, 2u * 10 * 20 * 30 * 8 + (3u * 8 + 3u * 16) * 8);
  allocatedBytes = before;
}

void expectLofFailure(const LofFile& lof, const std::string& name, const std::string& message) {
  const std::string file = lof.write(name);
  EXPECT_EXIT(
      {
        EulerAnglesImage angles("angles");
        angles.readLof(file, 0, false);
      },
      testing::ExitedWithCode(1), message)
      << name;
}

TEST(EulerAnglesImageDeathTest, BadFilesEndTheRunWithAClearLine) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const std::string missing = tempDir() + "gridmoor_lof_missing.lof";
  EXPECT_EXIT(EulerAnglesImage("a").readLof(missing, 0, false), testing::ExitedWithCode(1),
              "^File " + missing + " can not be opened\n$");

  LofFile noFormat = labelledXZX(3, 2, 2);
  noFormat.keys.erase("Image1:Format");
  expectLofFailure(noFormat, "noformat.lof", "^Keyword Image1:Format not found in the header\n$");

  LofFile frame = labelledXZX(3, 2, 2);
  frame.keys["Image1:ObjectSystem"] = "TP2P1";
  expectLofFailure(frame, "frame.lof",
                   "^not implemented combination of reference and object system: XYZ - TP2P1\n$");

  LofFile types = labelledXZX(3, 2, 2);
  types.keys["Image1:Types"] = "double,float,double";
  expectLofFailure(types, "types.lof", "^unknown data type in lof file: double,float,double\n$");
  types.keys["Image1:Types"] = "double,double";  // fewer words than EntriesOfImages
  expectLofFailure(types, "types2.lof", "^unknown data type in lof file: double,double\n$");

  LofFile format = labelledXZX(3, 2, 2);
  format.keys["Image1:Format"] = "Eul_AngZYZ";
  expectLofFailure(format, "format.lof", "^not implemented orientation format: Eul_AngZYZ\n$");

  LofFile shortData = labelledXZX(3, 2, 2);
  shortData.cutData = 1;
  expectLofFailure(shortData, "short.lof", "^Orientation file .*short.lof is truncated");
  shortData.cutData = static_cast<long>(shortData.data.size());
  expectLofFailure(shortData, "nodata.lof", "^Orientation file .*nodata.lof is truncated");

  // A corrupt size that would need exabytes must not be allocated, nor overflow.
  LofFile huge = labelledXZX(3, 2, 2);
  huge.keys["Nx"] = "2000000000";
  huge.keys["Ny"] = "2000000000";
  huge.keys["Nz"] = "2000000000";
  expectLofFailure(huge, "huge.lof", "is truncated");

  LofFile zero = labelledXZX(3, 2, 2);
  zero.keys["Ny"] = "0";
  expectLofFailure(zero, "zero.lof", "Ny 0 is not a positive grid size\n$");
  zero.keys["Ny"] = "two";
  expectLofFailure(zero, "word.lof", "Ny two is not a positive grid size\n$");
}

}  // namespace
}  // namespace gridmoor
