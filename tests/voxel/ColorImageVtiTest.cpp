#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <string>

#include "../formats/FieldFileTestSupport.h"
#include "formats/VtiWriter.h"
#include "voxel/ColorImage.h"

using namespace gridmoor;
using ::testing::internal::CaptureStdout;
using ::testing::internal::GetCapturedStdout;

namespace {

ColorImage randomColours(std::uint64_t nx, std::uint64_t ny, std::uint64_t nz, unsigned seed) {
  ColorImage image(nx, ny, nz, 0, "colours");
  std::mt19937 random(seed);
  for (std::uint64_t x = 0; x < nx; ++x)
    for (std::uint64_t y = 0; y < ny; ++y)
      for (std::uint64_t z = 0; z < nz; ++z) image.at(x, y, z) = static_cast<Colour>(random() % 5 * 40);
  return image;
}

class ColorImageVti : public gridmoor::testing::ScratchDirectory {
 protected:
  // A geometry file with a float field in front of the colour arrays, as result files have.
  std::string writeGeometry(const std::string& name, const std::vector<std::pair<std::string, const ColorImage*>>& colourFields,
                            bool compressed, std::uint32_t pieces) {
    const ColorImage& first = *colourFields.front().second;
    VtiWriter writer(path(name), {2, 2 + std::int64_t(first.sizeX), 0, std::int64_t(first.sizeY), -1,
                                  std::int64_t(first.sizeZ) - 1},
                     {0.5, 0.5, 0.75}, {-1, 0, 4}, compressed, pieces);
    writer.addImageField("density", distractor_, {0}, DataWriter::Float);
    for (const auto& [field, image] : colourFields)
      writer.addImageField(field, *image, {0}, DataWriter::UInt8);
    writer.write();
    return pieces > 1 ? writer.indexFileName() : path(name) + ".vti";
  }

  Image<double> distractor_ = gridmoor::testing::patternImage(1, 9, 7, 5);
};

TEST_F(ColorImageVti, ReadsAGeometryWrittenByTheVtiWriter) {
  // Byte orders, compression and pieces are the reader's own tests; one kind suffices here.
  const ColorImage written = randomColours(9, 7, 5, 11);
  const std::string file = writeGeometry("packed", {{"Materials", &written}}, true, 3);
  ColorImage read("read");
  CaptureStdout();
  read.readVti(file, 0, "None");
  EXPECT_EQ(GetCapturedStdout(), "Size of Geometry: 9 x 7 x 5\n");
  ASSERT_EQ(read.getGlobalSizeX(), 9u);
  ASSERT_EQ(read.sizeY, 7u);
  ASSERT_EQ(read.sizeZ, 5u);
  EXPECT_TRUE(std::equal(read.begin(), read.end(), written.begin(), written.end()));
  EXPECT_EQ(read.extentBeginX, 2u);
  EXPECT_EQ(read.resolutionZ, 0.75);
  EXPECT_EQ(read.originX, -1.0);
  EXPECT_EQ(read.originZ, 4.0);
  const std::set<Colour> colours(read.getColors().begin(), read.getColors().end());
  EXPECT_EQ(colours, (std::set<Colour>{0, 40, 80, 120, 160}));
}

TEST_F(ColorImageVti, TakesMaterialsThenMaterialThenSubstanceOrEndsTheRun) {
  const ColorImage a = randomColours(9, 7, 5, 1), b = randomColours(9, 7, 5, 2);
  ColorImage read("read"), only("only");
  CaptureStdout();
  read.readVti(writeGeometry("both", {{"Substance", &a}, {"Material", &b}}, false, 1), 0, "None");
  only.readVti(writeGeometry("substance", {{"Substance", &a}}, false, 1), 0, "None");
  GetCapturedStdout();
  EXPECT_TRUE(std::equal(read.begin(), read.end(), b.begin(), b.end()));
  EXPECT_TRUE(std::equal(only.begin(), only.end(), a.begin(), a.end()));

  const std::string file = writeGeometry("phases", {{"Phase", &a}}, false, 1);
  EXPECT_EXIT(read.readVti(file, 0, "None"), ::testing::ExitedWithCode(1),
              "^vti-File .*phases.vti does not contain material information.\n$");
}

}  // namespace
