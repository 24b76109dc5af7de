// The orientation field: .lof files, resampling, estimates, and the conversion of ZXZ angles.
#include "voxel/EulerAnglesImage.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <fstream>
#include <map>
#include <random>
#include <vector>

#include "../materials/LinearElasticTestSupport.h"
#include "voxel/EulerConversion.h"

namespace gridmoor {
namespace {

std::string tempDir() { return testing::TempDir(); }

double label(std::uint64_t x, std::uint64_t y, std::uint64_t z, int c) {
  return 0.001 * static_cast<double>(c + 10 * x + 100 * y + 1000 * z);
}

// A .lof file made by hand: "key value" lines, HeaderLength in a 9-character field, the
// blank line, then three labelled doubles per voxel with x fastest and z slowest.
struct LofFile {
  std::map<std::string, std::string> keys{{"EntriesOfImages", "3"},
                                         {"Image1:Types", "double,double,double"},
                                         {"Image1:Format", "Eul_AngXZX"},
                                         {"Image1:ReferenceSystem", "XYZ"},
                                         {"Image1:ObjectSystem", "TP1P2"}};
  std::string data;
  std::size_t cutData = 0;  // bytes dropped from the end

  LofFile(std::uint64_t nx, std::uint64_t ny, std::uint64_t nz) {
    keys["Nx"] = std::to_string(nx);
    keys["Ny"] = std::to_string(ny);
    keys["Nz"] = std::to_string(nz);
    for (std::uint64_t z = 0; z < nz; ++z)
      for (std::uint64_t y = 0; y < ny; ++y)
        for (std::uint64_t x = 0; x < nx; ++x)
          for (int c = 0; c < 3; ++c) add(label(x, y, z, c));
  }
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
    std::ofstream(path, std::ios::binary) << header << data.substr(0, data.size() - cutData);
    return path;
  }
};

TEST(EulerAnglesImage, ReadsFileOrderIntoMemoryOrderAndDropsTheThirdWhenReduced) {
  const std::string file = LofFile(3, 2, 4).write("xzx.lof");
  for (bool reduced : {false, true}) {
    EulerAnglesImage angles("EulerAnglesImage");
    angles.readLof(file, 3, reduced);
    const std::uint64_t components = reduced ? 2 : 3;
    ASSERT_EQ(angles.getNumberOfComponents(), components);
    ASSERT_EQ(angles.size(), components * 3 * 2 * 4);
    EXPECT_EQ(angles.sizeXGlobal, 3u);
    for (std::uint64_t x = 0; x < 3; ++x)
      for (std::uint64_t y = 0; y < 2; ++y)
        for (std::uint64_t z = 0; z < 4; ++z)
          for (std::uint64_t c = 0; c < components; ++c)
            ASSERT_EQ(*angles.elementPointer(c, x, y, z), label(x, y, z, static_cast<int>(c)));
  }
}

TEST(EulerAnglesImage, ConvertsZXZAndReadsFloatAndQuadruple) {
  LofFile zxz(0, 0, 0);
  zxz.keys["Nx"] = "2";
  zxz.keys["Ny"] = zxz.keys["Nz"] = "1";
  zxz.keys["Image1:Types"] = "float,float,float";
  zxz.keys["Image1:Format"] = "Eul_AngZXZ";
  const std::vector<float> values{0.5f, 1.25f, -2.0f, 3.0f, 1e-9f, 0.75f};
  for (float v : values) zxz.add(v);
  EulerAnglesImage angles("angles");
  angles.readLof(zxz.write("zxz.lof"), 2, false);
  for (std::uint64_t x = 0; x < 2; ++x) {
    const EulerTriple expected = convertZXZToXZX({values[3 * x], values[3 * x + 1], values[3 * x + 2]});
    for (int c = 0; c < 3; ++c) EXPECT_EQ(*angles.elementPointer(c, x, 0, 0), expected[c]);
  }

  // Quadruple precision, with EntriesOfImages 4: still three values per voxel are read.
  LofFile quad(0, 0, 0);
  quad.keys["Nx"] = quad.keys["Ny"] = "1";
  quad.keys["Nz"] = "2";
  quad.keys["EntriesOfImages"] = "4";
  quad.keys["Image1:Types"] = "quadruple,quadruple,quadruple,quadruple";
  for (int i = 0; i < 6; ++i) quad.add(static_cast<__float128>(0.25 * i - 0.5));
  EulerAnglesImage q("q");
  q.readLof(quad.write("quad.lof"), 1, false);
  EXPECT_EQ(*q.elementPointer(2, 0, 0, 0), 0.0);
  EXPECT_EQ(*q.elementPointer(2, 0, 0, 1), 0.75);
}

TEST(EulerAnglesImage, ResamplingTakesTheLargestOverlapInTheBox) {
  EulerAnglesImage angles("EulerAnglesImage");
  angles.loadOrientation(LofFile(3, 4, 2).write("resample.lof"), "", 2, false);
  const double* before = angles.data();
  angles.resampleTo(3, 4, 2);
  EXPECT_EQ(angles.data(), before) << "an equal grid leaves the image as read";

  // x: 3 -> 2 (target 0 covers 0 and half of 1, target 1 half of 1 and 2); y: 4 -> 2 (a tie
  // of two whole voxels goes to the first); z: 2 -> 3 (target 1 covers a third of each).
  angles.resampleTo(2, 2, 3);
  EXPECT_EQ(angles.sizeXGlobal, 2u);
  ASSERT_EQ(angles.size(), 3u * 2 * 2 * 3);
  const std::uint64_t fromX[2] = {0, 2}, fromY[2] = {0, 2}, fromZ[3] = {0, 0, 1};
  for (std::uint64_t x = 0; x < 2; ++x)
    for (std::uint64_t y = 0; y < 2; ++y)
      for (std::uint64_t z = 0; z < 3; ++z)
        for (int c = 0; c < 3; ++c)
          ASSERT_EQ(*angles.elementPointer(c, x, y, z), label(fromX[x], fromY[y], fromZ[z], c));
}

TEST(EulerAnglesImage, LoadsRelativeToTheRunDirectoryAndEstimatesWithoutReading) {
  LofFile(2, 2, 2).write("relative.lof");
  EulerAnglesImage angles("EulerAnglesImage");
  angles.loadOrientationOnGrid("gridmoor_lof_relative.lof", tempDir(), 4, 2, 2, false);
  EXPECT_EQ(*angles.elementPointer(1, 3, 1, 0), label(1, 1, 0, 1));

  const std::uint64_t before = allocatedBytes;
  memoryEstimateMode = true;
  EulerAnglesImage estimate("EulerAnglesImage");
  estimate.loadOrientationOnGrid("no_such_file.lof", tempDir(), 10, 20, 30, true);
  EXPECT_EQ(allocatedBytes - before, 2u * 10 * 20 * 30 * 8);
  // Built in estimate mode, an image counts the file's grid and its resampling but stores
  // nothing and writes nowhere.
  memoryEstimateMode = false;
  estimate.loadOrientation("gridmoor_lof_relative.lof", tempDir(), 4, false);
  estimate.resampleTo(4, 2, 2);
  EXPECT_EQ(estimate.size(), 0u);
  EXPECT_EQ(allocatedBytes - before, 2u * 10 * 20 * 30 * 8 + (3u * 8 + 3u * 16) * 8);
  allocatedBytes = before;
}

TEST(EulerAnglesImageDeathTest, BadFilesEndTheRunWithAClearLine) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const std::string missing = tempDir() + "gridmoor_lof_missing.lof";
  EXPECT_EXIT(EulerAnglesImage("a").readLof(missing, 0, false), testing::ExitedWithCode(1),
              "^File " + missing + " can not be opened\n$");

  const auto fails = [](const std::string& key, const std::string& value, std::size_t cut,
                        const std::string& message) {
    LofFile lof(3, 2, 2);
    lof.keys[key] = value;  // a missing key is the header reader's own test
    lof.cutData = cut == ~std::size_t{0} ? lof.data.size() : cut;
    const std::string file = lof.write("bad.lof");
    EXPECT_EXIT(EulerAnglesImage("a").readLof(file, 0, false), testing::ExitedWithCode(1), message)
        << key << " " << value;
  };
  fails("Image1:ObjectSystem", "TP2P1", 0,
        "^not implemented combination of reference and object system: XYZ - TP2P1\n$");
  fails("Image1:Types", "double,float,double", 0,
        "^unknown data type in lof file: double,float,double\n$");
  fails("Image1:Format", "Eul_AngZYZ", 0, "^not implemented orientation format: Eul_AngZYZ\n$");
  fails("Nx", "3", 1, "^Orientation file .*bad.lof is truncated");
  fails("Nx", "3", ~std::size_t{0}, "^Orientation file .*bad.lof is truncated");
  // A corrupt size that would need exabytes is neither allocated nor overflows.
  fails("Nx", "2000000000000000000", 0, "is truncated");
  fails("Ny", "0", 0, "Ny 0 is not a positive grid size\n$");
  fails("Ny", "two", 0, "Ny two is not a positive grid size\n$");

  // A NaN angle in voxel (2, 1, 0), the sixth voxel of the file.
  LofFile nan(3, 2, 2);
  const double value = std::nan("");
  std::memcpy(nan.data.data() + (5 * 3 + 1) * sizeof(double), &value, sizeof value);
  EXPECT_EXIT(EulerAnglesImage("a").readLof(nan.write("nan.lof"), 0, false),
              testing::ExitedWithCode(1),
              "^Orientation file .*nan.lof: the angles of voxel \\(2, 1, 0\\) are not finite "
              "numbers\n$");
}

using linear_elastic_test::axisRotation;
using linear_elastic_test::product;
using linear_elastic_test::xzxRotation;

// Rz(a) Rx(b) Rz(c), built independently of the conversion, against the converted angles.
double conversionError(double a, double b, double c) {
  const EulerTriple t = convertZXZToXZX({a, b, c});
  const RotationMatrix zxz = product(product(axisRotation(2, a), axisRotation(0, b)), axisRotation(2, c));
  const RotationMatrix xzx = xzxRotation(t[0], t[1], t[2]);
  double error = 0.0;
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) error = std::max(error, std::abs(zxz[i][j] - xzx[i][j]));
  return error;
}

TEST(EulerAngles, ZXZToXZXKeepsTheRotationForRandomAngles) {
  std::mt19937 random(2024);
  std::uniform_real_distribution<double> angle(-M_PI, M_PI);
  std::uniform_real_distribution<double> tilt(0.0, M_PI);
  for (int n = 0; n < 2000; ++n) {
    const double a = angle(random), b = tilt(random), c = angle(random);
    ASSERT_LT(conversionError(a, b, c), 1e-12) << a << " " << b << " " << c;
  }
}

TEST(EulerAngles, ZXZToXZXNearTheDegenerateTilts) {
  std::mt19937 random(99);
  std::uniform_real_distribution<double> angle(-M_PI, M_PI);
  for (double b : {0.0, 1e-9, 1e-7, 1e-5, M_PI - 1e-7, M_PI, -1e-8}) {
    for (int n = 0; n < 200; ++n) {
      const double a = angle(random), c = angle(random);
      // Below the threshold of 2^-19 the gimbal branch drops a term of that size.
      ASSERT_LT(conversionError(a, b, c), 4e-6) << a << " " << b << " " << c;
    }
  }
  // Rotations about x alone are the degenerate case on the XZX side: the middle angle is 0
  // and the whole turn is the first angle.
  for (double b : {0.3, -2.0, 3.0}) {
    const EulerTriple t = convertZXZToXZX({0.0, b, 0.0});
    EXPECT_NEAR(t[0], b, 1e-12);
    EXPECT_EQ(t[1], 0.0);
    EXPECT_EQ(t[2], 0.0);
  }
  // (a, 0, 0) is a turn about z: in XZX the middle angle takes it.
  const EulerTriple t = convertZXZToXZX({0.7, 0.0, 0.0});
  EXPECT_NEAR(std::abs(t[1]), 0.7, 1e-12);
  EXPECT_LT(conversionError(0.7, 0.0, 0.0), 1e-12);
}

}  // namespace
}  // namespace gridmoor
